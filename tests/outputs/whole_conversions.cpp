#include "outputs/whole_conversions.hpp"

#include <algorithm>
#include <array>
#include <vector>

#include "support/conversion.hpp"
#include "support/object_families.hpp"

namespace outputs {
namespace {

using xlatr::test::Options;
using xlatr::test::Result;

template <class Format>
std::vector<double> versionsOf() {
  const double* const first = Format::getSupportedVersions();
  return {first, first + Format::getSupportedVersionsSize()};
}

struct Target {
  TraceFormat format;
  const char* name;
  std::vector<double> (*versions)();
};

constexpr std::array kTargets = {
    Target{XLATR_FORMAT_TRC, "out.trc", versionsOf<xlatr::test::TrcInfoType>},
    Target{XLATR_FORMAT_BTR, "out.btr", versionsOf<xlatr::test::BtrInfoType>},
    Target{XLATR_FORMAT_ASC, "out.asc", versionsOf<xlatr::test::AscInfoType>},
    Target{XLATR_FORMAT_LIN, "out.ltrc", versionsOf<xlatr::test::KorlInfoType>},
    Target{XLATR_FORMAT_CSV, "out.csv", versionsOf<xlatr::test::CsvInfoType>},
    Target{XLATR_FORMAT_BTRC, "out.btrc", versionsOf<xlatr::test::BtrcInfoType>},
    Target{XLATR_FORMAT_MF4, "out.mf4", versionsOf<xlatr::test::MdfInfoType>},
    Target{XLATR_FORMAT_BLF, "out.blf", versionsOf<xlatr::test::BlfInfoType>},
};

// The sessions of a file end in any order, and the files and texts come in that order. What is left to compare of a
// text is which letters it has.
bool hasSessions(const std::string& source) {
  return source.ends_with(".btr");
}

std::string joined(std::vector<std::string> pieces, bool sort) {
  if (sort) {
    std::ranges::sort(pieces);
  }
  std::string text;
  for (const std::string& piece : pieces) {
    text.append(text.empty() ? "" : ", ").append(piece);
  }
  return text;
}

void reportConversion(Report& report, const std::string& source, const Target& target, const std::string& name,
                      const Options& options) {
  report.begin("convert/" + name);
  Result result;
  report.call("conversion", [&] {
    report.fact("code", std::int64_t{options.convert(source, std::string("./") + target.name, result)});
  });
  report.fact("status", std::int64_t{result.status()});
  report.fact("finished", std::int64_t{result.finished()});
  std::string text = result.text();
  if (hasSessions(source)) {
    std::ranges::sort(text);
  }
  report.fact("text", text);
  report.fact("files", joined(result.files(), hasSessions(source)));
  report.takeFiles();
}

void reportVersions(Report& report, const std::string& source, const Target& target) {
  const std::string name = std::string(target.name).substr(4);
  const auto with = [&](const std::string& what, const Options& options) {
    reportConversion(report, source, target, name + "-" + what, options);
  };
  const Options plain{.format = target.format};
  with("default", plain);
  std::vector<double> versions = target.versions();
  versions.insert(versions.end(), {-1.0, 0.0, 2.14, 9.9});
  for (const double version : versions) {
    with(std::to_string(version), Options(plain).version(version));
  }
  if (target.format == XLATR_FORMAT_CSV) {
    for (const char separator : {',', '\t', '|', '\0'}) {
      with("separator-" + std::to_string(int{separator}), Options(plain).separator(separator));
    }
  }
  if (target.format == XLATR_FORMAT_MF4) {
    with("zipped", Options(plain).flag(XLATR_OPTION_ZIPPED));
    with("sorted", Options(plain).flag(XLATR_OPTION_SORTED));
    with("zipped-sorted", Options(plain).flag(XLATR_OPTION_ZIPPED).flag(XLATR_OPTION_SORTED));
  }
  if (hasSessions(source)) {
    with("session-1", Options(plain).session(1));
    with("sessions-3-2-3", Options(plain).session(3).session(2).session(3));
    with("session-99", Options(plain).session(99));
  }
}

}  // namespace

void reportConversions(Report& report, const std::string& source) {
  for (const Target& target : kTargets) {
    reportVersions(report, source, target);
  }
}

}  // namespace outputs
