#include "options.hpp"

#include <algorithm>
#include <array>

#include "cat_command.hpp"
#include "check_command.hpp"
#include "compare_command.hpp"
#include "convert_command.hpp"
#include "formats_command.hpp"
#include "info_command.hpp"
#include "merge_command.hpp"
#include "stats_command.hpp"

namespace xlatr::cli {
namespace {

constexpr CommandSet kConvert = bitOf(CommandName::Convert);
constexpr CommandSet kMerge = bitOf(CommandName::Merge);
constexpr CommandSet kCat = bitOf(CommandName::Cat);
constexpr CommandSet kStats = bitOf(CommandName::Stats);
constexpr CommandSet kCompare = bitOf(CommandName::Compare);
constexpr CommandSet kCheck = bitOf(CommandName::Check);
constexpr CommandSet kInfo = bitOf(CommandName::Info);
constexpr CommandSet kFormats = bitOf(CommandName::Formats);
constexpr CommandSet kWriters = kConvert | kMerge;
constexpr CommandSet kReaders = kWriters | kCat | kStats | kCompare;
constexpr CommandSet kAll = kReaders | kCheck | kInfo | kFormats;

const std::array kOptions = {
    OptionRow{"--from", "FORMAT", "Format of the sources; by default that of their contents", OptionGroup::Source,
              OptionValue::SourceFormat, kReaders | kCheck, &Arguments::from},
    OptionRow{"-r,--recursive", "", "Take the traces in the folders that are named, and in the folders below them",
              OptionGroup::Source, OptionValue::None, kConvert | kCheck, &Arguments::recursive},
    OptionRow{"--files-from", "FILE", "Read more sources from FILE, one a line; - is standard input",
              OptionGroup::Source, OptionValue::File, kConvert | kCheck, &Arguments::filesFrom},
    OptionRow{"--null", "", "With --files-from: each name ends with a zero byte, as find -print0 writes them",
              OptionGroup::Source, OptionValue::None, kConvert | kCheck, &Arguments::null},
    OptionRow{"--shard", "I/N",
              "Take part I of N of the sources, chosen by their paths, so that N machines can share a folder: 1/4",
              OptionGroup::Source, OptionValue::Text, kConvert | kCheck, &Arguments::shard},
    OptionRow{"--count", "", "Read each file to its end to show frames by kind and bus, duration and damage",
              OptionGroup::Source, OptionValue::None, kInfo, &Arguments::count},

    OptionRow{"--from-time", "TIME",
              "Frames from TIME on: seconds since the start, or a date and time such as 2024-03-01T08:00:05.5",
              OptionGroup::Selection, OptionValue::Text, kReaders, &Arguments::fromTime},
    OptionRow{"--until-time", "TIME", "Frames before TIME", OptionGroup::Selection, OptionValue::Text, kReaders,
              &Arguments::untilTime},
    OptionRow{"--bus", "LIST", "Frames of these buses: 1,3-5; !2 for all but bus 2", OptionGroup::Selection,
              OptionValue::Text, kReaders, &Arguments::buses},
    OptionRow{"--id", "LIST",
              "Frames with these identifiers: 0x123,291,0x100-0x1FF,0x700/0x7F0 (value/mask); an x at the end means an "
              "extended one: 0x123x; !0x7DF for all but that",
              OptionGroup::Selection, OptionValue::Text, kReaders, &Arguments::ids},
    OptionRow{"--kind", "LIST",
              "Frames of these kinds: data, remote, error, overload, status, counters, lin, lin_event, event, comment; "
              "!error for all but those",
              OptionGroup::Selection, OptionValue::WordList, kReaders, &Arguments::kinds,
              "data remote error overload status counters lin lin_event event comment"},
    OptionRow{"--direction", "DIR", "Frames of this direction: rx or tx", OptionGroup::Selection, OptionValue::Word,
              kReaders, &Arguments::directions, "rx tx"},

    OptionRow{"--shift-time", "SECONDS", "Add SECONDS to all times; may be negative", OptionGroup::Change,
              OptionValue::Text, kReaders, &Arguments::shiftTime},
    OptionRow{"--rebase", "", "Let the times start at 0 with the first frame that is selected", OptionGroup::Change,
              OptionValue::None, kReaders, &Arguments::rebase},
    OptionRow{"--map-bus", "LIST", "Renumber buses: 1=2,2=1", OptionGroup::Change, OptionValue::Text, kReaders,
              &Arguments::busMap},
    OptionRow{"--tz", "ZONE", "Time zone of traces that state none: UTC, +01:00, -0330", OptionGroup::Change,
              OptionValue::Text, kReaders, &Arguments::zone},
    OptionRow{"--align", "HOW",
              "absolute: by the starts that the sources state (default); start: as if all had started together",
              OptionGroup::Change, OptionValue::Word, kMerge, &Arguments::align, "absolute start"},
    OptionRow{"--gap", "HOW",
              "keep: leave the time between recordings that follow each other (default); close: take it out",
              OptionGroup::Change, OptionValue::Word, kMerge, &Arguments::gap, "keep close"},

    OptionRow{"--to", "FORMAT", "Format of the target; by default that of its extension", OptionGroup::Target,
              OptionValue::TargetFormat, kWriters, &Arguments::to},
    OptionRow{"-o,--output", "TARGET", "The file to write; - is standard output", OptionGroup::Target,
              OptionValue::File, kMerge, &Arguments::output},
    OptionRow{"-O,--output-dir", "FOLDER", "Write into FOLDER, one file for each source; needs --to",
              OptionGroup::Target, OptionValue::Folder, kConvert, &Arguments::outputFolder},
    OptionRow{"--target-version", "V",
              "File version of the target, one that 'xlatr formats' lists; by default the current one",
              OptionGroup::Target, OptionValue::Text, kWriters, &Arguments::targetVersion},
    OptionRow{"--zipped", "", "Compress the data of an mf4 target", OptionGroup::Target, OptionValue::None, kWriters,
              &Arguments::zipped},
    OptionRow{"--compact", "", "Make the records of an mf4 target as short as their frames", OptionGroup::Target,
              OptionValue::None, kWriters, &Arguments::compact},
    OptionRow{"--separator", "C",
              "Character between the columns of a csv target of version 1.0, or tab; by default a semicolon",
              OptionGroup::Target, OptionValue::Text, kWriters, &Arguments::separator},
    OptionRow{"-f,--force", "", "Replace targets that exist", OptionGroup::Target, OptionValue::None, kWriters,
              &Arguments::force},
    OptionRow{"-n,--skip-existing", "", "Skip sources whose target exists, to resume a run that was broken off",
              OptionGroup::Target, OptionValue::None, kConvert, &Arguments::skipExisting},
    OptionRow{"--keep-partial", "", "Keep what was written before a failure, under a name such as drive.partial.trc",
              OptionGroup::Target, OptionValue::None, kWriters, &Arguments::keepPartial},
    OptionRow{"--compat", "",
              "Write exactly what the library's xlatr_convert writes: fewer pairs of formats, and what a target can't "
              "hold may be left out without a word",
              OptionGroup::Target, OptionValue::None, kConvert, &Arguments::compat},
    OptionRow{"--sorted", "", "With --compat: sort the records of an mf4 target by kind of frame", OptionGroup::Target,
              OptionValue::None, kConvert, &Arguments::sorted},
    OptionRow{"--session", "N", "With --compat: a session of a btr source, counted from 1; by default all",
              OptionGroup::Target, OptionValue::Text, kConvert, &Arguments::sessions},

    OptionRow{"--split-size", "SIZE", "Begin a new file when one reaches SIZE: 100M, 2G", OptionGroup::Split,
              OptionValue::Text, kWriters, &Arguments::splitSize},
    OptionRow{"--split-time", "TIME", "Begin a new file at each multiple of TIME: 30s, 10m, 1h", OptionGroup::Split,
              OptionValue::Text, kWriters, &Arguments::splitTime},
    OptionRow{"--split-bus", "", "Write one file for each bus", OptionGroup::Split, OptionValue::None, kWriters,
              &Arguments::splitBus},

    OptionRow{"--bitrate", "RATE", "Bits per second of CAN, to show the load: 500k; 500k,2M with that of CAN FD data",
              OptionGroup::Traffic, OptionValue::Text, kStats, &Arguments::bitRate},
    OptionRow{"--lin-bitrate", "RATE", "Bits per second of LIN, to show the load: 19200", OptionGroup::Traffic,
              OptionValue::Text, kStats, &Arguments::linBitRate},
    OptionRow{"--stuffing", "HOW",
              "Stuff bits in the load: mean (default), as random data has them; worst, as many as there can be; none",
              OptionGroup::Traffic, OptionValue::Word, kStats, &Arguments::stuffing, "mean worst none"},
    OptionRow{
        "--tolerance", "TIME",
        "Times that are no farther from each other are equal: 0, 10us, 1.5ms; by default the coarser resolution of "
        "the two formats",
        OptionGroup::Traffic, OptionValue::Text, kCompare, &Arguments::tolerance},
    OptionRow{"--texts", "", "Compare texts too", OptionGroup::Traffic, OptionValue::None, kCompare, &Arguments::texts},
    OptionRow{"--attributes", "", "Compare what both frames have besides, such as error counters", OptionGroup::Traffic,
              OptionValue::None, kCompare, &Arguments::attributes},
    OptionRow{"--limit", "N", "Show N differences; by default 20", OptionGroup::Traffic, OptionValue::Text, kCompare,
              &Arguments::limit},

    OptionRow{"-j,--jobs", "N", "Convert N files at a time; 0 for as many as there are cores", OptionGroup::Running,
              OptionValue::Text, kConvert | kCheck, &Arguments::jobs},
    OptionRow{"--strict", "", "Fail, and leave no target, if anything would be dropped, cut, damaged or guessed",
              OptionGroup::Running, OptionValue::None, kWriters, &Arguments::strict},

    OptionRow{"--json", "", "Print the result as JSON", OptionGroup::Output, OptionValue::None, kAll, &Arguments::json},
    OptionRow{"--csv", "", "Print a table (RFC 4180) with a column for each field", OptionGroup::Output,
              OptionValue::None, kCat, &Arguments::csv},
    OptionRow{"--report", "FILE", "Write what --json prints into FILE, too", OptionGroup::Output, OptionValue::File,
              kWriters, &Arguments::report},
    OptionRow{"--progress", "HOW", "auto: a bar on a terminal (default); json: lines of JSON on standard error; none",
              OptionGroup::Output, OptionValue::Word, kWriters | kCheck | kStats | kCompare, &Arguments::progress,
              "auto json none"},
    OptionRow{"-q,--quiet", "", "Report only losses and failures; given twice, only failures", OptionGroup::Output,
              OptionValue::None, kWriters | kCheck, &Arguments::quiet},
    OptionRow{"-h,--help", "", "Show this help", OptionGroup::Output, OptionValue::None, kAll, &Arguments::help},
};

const std::array kCommands = {
    CommandRow{
        CommandName::Convert,
        "convert",
        "SOURCE... TARGET",
        "SOURCE and TARGET",
        "Converts traces into another format or version.",
        "Every format that is read becomes every format that is written. The extension of TARGET names the format, or "
        "--to does. SOURCE may be - for standard input and TARGET for standard output, but for mf4, btr and blf, which "
        "are not read or written in order.\n"
        "Several sources go into a folder, one file each: name it last, or with -O. 'xlatr merge' puts them into one "
        "file.\n"
        "A target gets its name when it is whole: until then there is the old file, or none. At the end one line says "
        "what was converted and what was not.\n"
        "With --split-bus the name of TARGET may contain %b (bus), with the other --split options %n (number of the "
        "part, %3n for 001), and with all of them %t (when the part begins) and %% (a percent sign).",
        {"xlatr convert drive.blf drive.mf4", "xlatr convert logs/*.mf4 -O out --to trc -j 0",
         "xlatr convert drive.trc - --to csv | head", "xlatr convert drive.asc cut.asc --id 0x123 --from-time 12.5",
         "xlatr convert drive.mf4 part.trc --split-time 10m"},
        runConvert},
    CommandRow{CommandName::Merge,
               "merge",
               "SOURCE... -o TARGET",
               "SOURCE",
               "Merges traces into one, by time.",
               "The times of the target count from the earliest start that the sources state. If one states none, all "
               "are taken to have started together.",
               {"xlatr merge can.asc lin.ltrc -o all.mf4", "xlatr merge part_*.trc -o whole.trc --gap close"},
               runMerge},
    CommandRow{CommandName::Cat,
               "cat",
               "SOURCE...",
               "SOURCE",
               "Prints the frames of traces, one a line.",
               "- is standard input. A line has the time in seconds, the bus, the direction, the identifier, the kind, "
               "the length, the data and the text. Several sources are printed one after the other.",
               {"xlatr cat drive.mf4 --id 0x123 --from-time 12.5", "xlatr cat drive.blf --kind error",
                "xlatr cat drive.asc --csv > drive.csv", "xlatr cat drive.trc --json | jq .id"},
               runCat},
    CommandRow{
        CommandName::Stats,
        "stats",
        "TRACE...",
        "TRACE",
        "Shows what the traffic of traces is like, by bus and identifier.",
        "- is standard input. An identifier has its count, its rate, its cycle times in milliseconds (shortest, "
        "mean, longest, 99th percentile), its lengths, its last data and its frames over time. A bus has its load "
        "if --bitrate says how fast it is. A gap is a silence of at least a second, a burst two or more error "
        "frames within 10 ms of each other.",
        {"xlatr stats drive.blf", "xlatr stats drive.mf4 --bitrate 500k,2M", "xlatr stats drive.asc --id 0x123",
         "xlatr stats drive.trc --json | jq '.[0].buses'"},
        runStats},
    CommandRow{
        CommandName::Compare,
        "compare",
        "TRACE TRACE",
        "two traces",
        "Says whether two traces hold the same frames, and where not.",
        "Frames are equal if kind, identifier, flags, DLC, data and bus are, and the times within the tolerance. "
        "What a trace does not state, such as a bus or a direction, is no difference; comments are not compared. "
        "A frame that only one trace has makes no others differ.\n"
        "The exit code is 0 if they are the same, 3 if not, 1 if one can't be read.",
        {"xlatr compare drive.blf drive.mf4", "xlatr compare a.trc b.asc --tolerance 1ms --limit 100"},
        runCompare},
    CommandRow{CommandName::Check,
               "check",
               "FILE...",
               "FILE",
               "Reads traces to their end and says whether they are whole.",
               "The exit code is 0 if all are whole, 3 if something in one is damaged, cut or guessed, 1 if one is no "
               "trace or can't be read.",
               {"xlatr check drive.blf", "xlatr check -r recordings -q"},
               runCheck},
    CommandRow{CommandName::Info,
               "info",
               "FILE...",
               "FILE",
               "Shows what traces are: format, version, producer, start, frames.",
               "Reads no more than a file's head, unless --count is given.",
               {"xlatr info drive.trc", "xlatr info --count drive.mf4", "xlatr info --json *.trc"},
               runInfo},
    CommandRow{CommandName::Formats,
               "formats",
               "",
               "",
               "Lists the formats, their versions and what each can hold.",
               "",
               {"xlatr formats", "xlatr formats --json"},
               runFormats},
};

}  // namespace

std::string_view headingOf(OptionGroup group) {
  static constexpr std::array<std::string_view, 8> kHeadings = {"Sources",       "Which frames", "Changes", "Target",
                                                                "Several files", "Traffic",      "Running", "Output"};
  return kHeadings.at(static_cast<std::size_t>(group));
}

std::span<const CommandRow> commandTable() {
  return kCommands;
}

std::span<const OptionRow> optionTable() {
  return kOptions;
}

const CommandRow& rowOf(CommandName command) {
  return kCommands.at(static_cast<std::size_t>(command));
}

std::string_view longNameOf(const OptionRow& option) {
  return option.names.substr(option.names.rfind(',') + 1);
}

std::string_view shortNameOf(const OptionRow& option) {
  return longNameOf(option) == option.names ? std::string_view() : option.names.substr(0, option.names.find(','));
}

bool isGiven(const OptionRow& option, const Arguments& arguments) {
  struct Given {
    const Arguments& arguments;
    bool operator()(bool Arguments::*flag) const { return arguments.*flag; }
    bool operator()(int Arguments::*count) const { return arguments.*count != 0; }
    bool operator()(std::string Arguments::*text) const { return !(arguments.*text).empty(); }
    bool operator()(std::vector<std::string> Arguments::*texts) const { return !(arguments.*texts).empty(); }
  };
  return std::visit(Given{arguments}, option.place);
}

}  // namespace xlatr::cli
