#include "topics.hpp"

namespace xlatr::cli {
namespace {

constexpr CommandSet kTopicConvert = bitOf(CommandName::Convert);
constexpr CommandSet kTopicWriters = kTopicConvert | bitOf(CommandName::Merge);
constexpr CommandSet kTopicReaders =
    kTopicWriters | bitOf(CommandName::Cat) | bitOf(CommandName::Stats) | bitOf(CommandName::Compare);
constexpr CommandSet kTopicMany = kTopicConvert | bitOf(CommandName::Check);
constexpr CommandSet kTopicAll = ~CommandSet{0};

// Local, so that no static of another file is needed before it is there.
const std::vector<Topic>& topics() {
  static const std::vector<Topic> kTopics = {
      {.title = "Targets",
       .commands = kTopicWriters,
       .paragraphs =
           {"The extension of the target names its format. With `--to` the name may be any, and stays as it is. In a "
            "folder a target has the name of its source with the extension of its format; below a folder that was "
            "named with `-r` it has the same place: `logs/a/drive.mf4` becomes `out/a/drive.trc`.",
            "A target is written under a hidden name beside its own and renamed when it is complete. Until then there "
            "is the old file under its name, or none. A failure, an interruption or a full disk leaves nothing behind, "
            "unless `--keep-partial` is given.",
            "A target that exists is not touched (exit code 4): `-f` replaces it, and `-n` skips the source. A file is "
            "never replaced by what is made from it, under whatever name or link."},
       .terms = {},
       .lines = {},
       .closing = {}},
      {.title = "Splitting",
       .commands = kTopicWriters,
       .paragraphs = {"Each part is a whole trace, whose times count from the start of all. The options may be "
                      "combined. The name of the target may contain these; if it does, `%b` must be there "
                      "with `--split-bus` and `%n` with the others, so that each part has a name of its own:"},
       .terms = {{"%b", "the number of the bus"},
                 {"%n", "the number of the part; `%3n` for 001"},
                 {"%t", "when the part begins: `20240301-080000`, or in seconds if the trace states no start"},
                 {"%%", "a percent sign"}},
       .lines = {"xlatr convert drive.mf4 'drive_%3n_%t.trc' --split-time 10m"},
       .closing = {"A name without any of these gets `_BUS1` for the bus and `_001` for the part. Frames of no bus go "
                   "where the frame before them went."}},
      {.title = "Choosing frames",
       .commands = kTopicReaders,
       .paragraphs = {"A frame is taken if it passes each of the options that are given; what was left out counts as "
                      "`dropped`, for the reason `not_selected`, and is no loss. Several values are separated by "
                      "commas, or the option is given again. `!` before a list means all but these; quote it for the "
                      "shell."},
       .terms = {{"--from-time, --until-time",
                  "seconds since the start (`12.5`), or a date and time on the clock of the trace "
                  "(`2024-03-01T08:00:05.5`); the end itself is not included"},
                 {"--bus", "numbers and ranges: `1,3-5`"},
                 {"--id",
                  "decimal or hexadecimal numbers, ranges, values with a mask: `0x123,291,0x100-0x1FF,0x700/0x7F0`; "
                  "with `x` at the end only extended identifiers: `0x123x`"},
                 {"--kind",
                  "`data`, `remote`, `error` and `overload` frames; `status` of a bus and error `counters`; frames "
                  "(`lin`) and events (`lin_event`) of LIN buses; `event` for what a user or a logger noted; `comment` "
                  "for lines that are no frames"},
                 {"--direction", "`rx` for received, `tx` for transmitted"}},
       .lines = {"xlatr cat drive.mf4 --id '!0x700-0x7FF' --kind data,remote --bus 1"},
       .closing = {}},
      {.title = "Standard input and output",
       .commands = kTopicReaders,
       .paragraphs =
           {"`-` is standard input as a source, whose format is told from what it contains, and standard output as a "
            "target, whose format `--to` names. Files of the formats mf4, btr and blf are not read in order, and those "
            "of mf4 and btr not written so: they need a name. Traces and results alone go to standard output; "
            "everything else goes to standard error."},
       .terms = {},
       .lines = {"zcat drive.asc.gz | xlatr convert - - --to csv | head"},
       .closing = {}},
      {.title = "Many files",
       .commands = kTopicMany,
       .paragraphs =
           {"`-r` takes all files below a folder that have the extension of a trace format, but for hidden ones. "
            "`--files-from` reads more names from a file or from standard input. With `-j` several files are converted "
            "at a time, and `--shard` shares them among machines: docs/scale.md says more.",
            "A file that fails does not stop the others. Each has a line of its own on standard error, a last line "
            "sums them up, and the exit code is that of the file that fared worst. `-n` takes a run up again that was "
            "broken off."},
       .terms = {},
       .lines = {"find logs -type f -mtime -1 -print0 |", "  xlatr convert --files-from - --null -O out --to mf4 -j 0"},
       .closing = {}},
      {.title = "What was converted",
       .commands = kTopicWriters,
       .paragraphs = {"A line on standard error says what became of all frames. Whatever was read was written or "
                      "dropped: the numbers add up."},
       .terms = {},
       .lines = {"$ xlatr convert samples/drive.trc drive.mf4",
                 "xlatr: samples/drive.trc -> drive.mf4: 2,012 frames read, 1,950 written;",
                 "62 dropped: the target has no such kind of frame (the first is line 263);",
                 "36 noted: the target keeps no such details (the first is line 542)"},
       .closing = {}},
      {.title = "Statistics",
       .commands = bitOf(CommandName::Stats),
       .paragraphs =
           {"A table of buses and one of identifiers. Its columns in milliseconds are the times between a frame "
            "and the next one of its identifier; 99 % of them are no longer than the one under P99, which is "
            "right to 3.2 %.",
            "The load counts the bits of each frame and the space after it; `--stuffing` says how many stuff "
            "bits are assumed. What HIGHEST shows is the load of the busiest second. Where the terminal shows "
            "no UTF-8, as `LC_ALL`, `LC_CTYPE` or `LANG` say, the frames over time are drawn in ASCII."},
       .terms = {},
       .lines = {"xlatr stats drive.trc --bitrate 500k,2M --bus 3"},
       .closing = {}},
      {.title = "Comparing",
       .commands = bitOf(CommandName::Compare),
       .paragraphs = {"Frames are equal if kind, identifier, flags, DLC, data and bus are, and the times within "
                      "`--tolerance`. What a trace does not state is no difference: a bus, a direction, the DLC of a "
                      "remote frame. Comments are not compared, unless `--kind` names them; `--texts` and "
                      "`--attributes` compare those too. The traces are lined up by time and content, so that a frame "
                      "that only one of them has makes no others differ."},
       .terms = {},
       .lines = {"xlatr compare drive.trc drive.btr --limit 2"},
       .closing = {}},
      {.title = "Reasons",
       .commands = kTopicWriters | bitOf(CommandName::Check) | bitOf(CommandName::Info),
       .paragraphs = {"Each reason has a name, such as `kind_not_held`, and belongs to a class:"},
       .terms = {{"selection", "the options do not ask for the frame; no loss"},
                 {"damage", "a line or a record can't be understood, or the source ends within it"},
                 {"guess", "the source leaves something out that had to be assumed: a bus, a length, a unit"},
                 {"not_held",
                  "the target has no form for the frame; it is a comment there, from which xlatr reads it "
                  "again, or it is dropped if the format has no comments"},
                 {"reduced",
                  "the frame was written without something that the target does not keep; a time that is "
                  "rounded to the step of the target is no loss"},
                 {"passed_over", "the source holds something of other buses, such as FlexRay"}},
       .lines = {},
       .closing = {"Anything but a selection and a rounded time makes the exit code 3. With `--strict` it is a failure "
                   "that leaves no target. `xlatr formats` shows what each format can hold."}},
      {.title = "JSON",
       .commands = kTopicAll,
       .paragraphs = {"docs/report.schema.json is the JSON schema of what `--json` prints, docs/stats.schema.json and "
                      "docs/compare.schema.json are those of `stats` and `compare`. New keys may be added; those that "
                      "are there keep their names and meanings."},
       .terms =
           {{"convert, merge", "an object: `xlatr` (version of the program), `conversions`, `exit_code`"},
            {"each conversion",
             "`sources`, `target`, `status` (`complete`, `incomplete`, `failed`, `skipped`), `exit_code`, `error`, "
             "`head` (`format`, `version`, `producer`, `start`, `unfinished`), `read`, `written`, `commented`, "
             "`dropped`, `remarks`, `passed_over` (`name`, `count`), `files` (`path`, `bytes`, `frames`), "
             "`seconds`; `read` is the sum of `written` and `dropped`"},
            {"each remark",
             "`remark` (name of the reason), `class`, `effect` (`dropped`, `commented`, `noted`), `text`, `count`, "
             "`first` (the first line or record; 0 if there is none), `met` (how that line begins if it is not "
             "understood, or that record in hexadecimal digits)"},
            {"stats", "an array with an object for each trace: docs/stats.schema.json"},
            {"compare", "an object: docs/compare.schema.json"},
            {"check", "an array: `file`, `whole`, `error`, `format`, `frames`, `unfinished`, `remarks`"},
            {"info",
             "an array: `file`, `format`, `description`, `version`, `producer`, `start`, `zone_known`, `size`, "
             "`unfinished`, `frames`; with `--count` also `duration_ns`, `buses`, `whole`, `remarks`; for btr "
             "`sessions`; for mf4 `sorted`, `data_groups`, `groups_complete`; or only `file` and `error`"},
            {"cat",
             "an object a line: `time_ns`, `kind`, `bus`, `id` (hexadecimal), `dir` (0 received, 1 transmitted), "
             "`ide`, `edl`, `brs`, `esi`, `dlc`, `length`, `data`, `err`, `text`, and what few formats have, such "
             "as `tx_errors`; what a frame does not have is left out"},
            {"formats",
             "an array: `format`, `extension`, `description`, `reads`, `versions` (what each can hold), "
             "`compat_targets`"}},
       .lines = {"xlatr convert drive.blf drive.mf4 --json | jq '.conversions[0].dropped'"},
       .closing = {}},
      {.title = "The compatible way",
       .commands = kTopicConvert,
       .paragraphs =
           {"`--compat` converts as the function `xlatr_convert` of the library always has, to the byte: from one "
            "format only into some others, without BLF logs, and without a word about much of what a target can't "
            "hold. Targets then always have the extension of their format; formats without a column for the bus become "
            "one file per bus (`drive_BUS1.trc`), and sessions of a btr file one file each (`drive_S1.trc`). It has "
            "none of the options that choose, change or split, no `--json`, no `--report`, and converts one file after "
            "the other."},
       .terms = {},
       .lines = {"xlatr convert log.btr log.trc --compat --session 1 --session 3"},
       .closing = {}},
      {.title = "Environment",
       .commands = kTopicAll,
       .paragraphs = {},
       .terms = {{"XLATR_DEFAULTS",
                  "options that stand before those of the command line, cut as a shell cuts words; a command takes "
                  "those that it has: `XLATR_DEFAULTS='-j 0 --progress none'`"}},
       .lines = {},
       .closing = {}},
      {.title = "Signals",
       .commands = kTopicAll & ~bitOf(CommandName::Formats),
       .paragraphs = {},
       .terms = {{"SIGINT, SIGTERM, SIGHUP",
                  "end the program: what was not finished is removed, and the exit code is 130, 143 or 129; a second "
                  "one does not wait for that"},
                 {"SIGUSR1", "prints a line with the progress to standard error, for `convert`, `merge` and `check`"}},
       .lines = {},
       .closing = {}},
  };
  return kTopics;
}

}  // namespace

std::span<const Topic> topicTable() {
  return topics();
}

}  // namespace xlatr::cli
