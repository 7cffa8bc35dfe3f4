#include "util/date_names.hpp"

namespace xlatr {

namespace {

constexpr std::array<std::string_view, 12> kEnglishMonthForms = {
    "january jan", "february feb", "march mar",          "april apr",   "may",          "june jun",
    "july jul",    "august aug",   "september sep sept", "october oct", "november nov", "december dec",
};
constexpr std::array<std::string_view, 7> kEnglishWeekdayForms = {
    "sunday sun", "monday mon", "tuesday tue", "wednesday wed", "thursday thu", "friday fri", "saturday sat",
};

// Two-letter Spanish weekdays and the German "mrz" come from older C libraries.
constexpr DateNames kAllDateNames[] = {
    {"en-US", kEnglishMonthForms, kEnglishWeekdayForms},
    {"en-GB", kEnglishMonthForms, kEnglishWeekdayForms},
    {"de-DE",
     {"januar jan", "februar feb febr", "marz mar mrz", "april apr", "mai", "juni jun", "juli jul", "august aug",
      "september sep sept", "oktober okt", "november nov", "dezember dez"},
     {"sonntag so", "montag mo", "dienstag di", "mittwoch mi", "donnerstag do", "freitag fr", "samstag sonnabend sa"}},
    {"fr-FR",
     {"janvier janv", "fevrier fevr", "mars", "avril avr", "mai", "juin", "juillet juil", "aout", "septembre sept",
      "octobre oct", "novembre nov", "decembre dec"},
     {"dimanche dim", "lundi lun", "mardi mar", "mercredi mer", "jeudi jeu", "vendredi ven", "samedi sam"}},
    {"nl-NL",
     {"januari jan", "februari feb", "maart mrt", "april apr", "mei", "juni jun", "juli jul", "augustus aug",
      "september sep", "oktober okt", "november nov", "december dec"},
     {"zondag zo", "maandag ma", "dinsdag di", "woensdag wo", "donderdag do", "vrijdag vr", "zaterdag za"}},
    {"es-ES",
     {"enero ene", "febrero feb", "marzo mar", "abril abr", "mayo may", "junio jun", "julio jul", "agosto ago",
      "septiembre sep sept", "octubre oct", "noviembre nov", "diciembre dic"},
     {"domingo dom do", "lunes lun lu", "martes mar ma", "miercoles mie mi", "jueves jue ju", "viernes vie vi",
      "sabado sab sa"}},
    {"it-IT",
     {"gennaio gen", "febbraio feb", "marzo mar", "aprile apr", "maggio mag", "giugno giu", "luglio lug", "agosto ago",
      "settembre set sett", "ottobre ott", "novembre nov", "dicembre dic"},
     {"domenica dom", "lunedi lun", "martedi mar", "mercoledi mer", "giovedi gio", "venerdi ven", "sabato sab"}},
};

}  // namespace

std::span<const DateNames> allDateNames() {
  return kAllDateNames;
}

const DateNames* findDateNames(std::string_view locale) {
  for (const DateNames& names : kAllDateNames) {
    if (names.locale == locale) {
      return &names;
    }
  }
  return nullptr;
}

}  // namespace xlatr
