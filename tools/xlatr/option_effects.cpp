#include "option_effects.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "command_failure.hpp"
#include "formats.hpp"
#include "output.hpp"
#include "standard_streams.hpp"

namespace xlatr::cli {
namespace {

// What the options of a run can work on.
struct Run {
  const Arguments& arguments;
  TraceFormat targets = 0;  // of all its targets
  std::size_t conversions = 0;
  bool standardOutputAlone = false;
};

struct EffectRow {
  bool (*given)(const Arguments& arguments);
  bool (*works)(const Run& run);
  std::string_view text;
};

constexpr std::array kEffects = {
    EffectRow{[](const Arguments& given) { return given.zipped; },
              [](const Run& run) { return (run.targets & XLATR_FORMAT_MF4) != 0; },
              "--zipped: has no effect on a target that is no mf4"},
    EffectRow{[](const Arguments& given) { return given.compact; },
              [](const Run& run) { return (run.targets & XLATR_FORMAT_MF4) != 0; },
              "--compact: has no effect on a target that is no mf4"},
    EffectRow{[](const Arguments& given) { return !given.separator.empty(); },
              [](const Run& run) {
                return (run.targets & XLATR_FORMAT_CSV) != 0 && !run.arguments.targetVersion.starts_with("2");
              },
              "--separator: has no effect on a target that is no csv of version 1.0"},
    EffectRow{[](const Arguments& given) { return !given.jobs.empty(); },
              [](const Run& run) { return run.conversions > 1; }, "--jobs: has no effect on one file"},
    EffectRow{[](const Arguments& given) { return given.null; },
              [](const Run& run) { return !run.arguments.filesFrom.empty(); },
              "--null: has no effect without --files-from"},
    EffectRow{[](const Arguments& given) { return given.force || given.skipExisting || given.keepPartial; },
              [](const Run& run) { return !run.standardOutputAlone; },
              "--force, --skip-existing and --keep-partial: have no effect on standard output"},
};

}  // namespace

void tellOptionsWithoutEffect(const Arguments& arguments, const JobSettings& settings,
                              const std::vector<JobPaths>& conversions) {
  if (arguments.sorted || !arguments.sessions.empty()) {
    throw CommandFailure(ExitCode::WrongUsage,
                         std::string(arguments.sorted ? "--sorted" : "--session") + ": only --compat has this option");
  }
  if (arguments.force && arguments.skipExisting) {
    throw CommandFailure(ExitCode::WrongUsage, "--force and --skip-existing: say one of them");
  }
  Run run{.arguments = arguments, .conversions = conversions.size()};
  for (const JobPaths& paths : conversions) {
    run.targets |= settings.formatOfTarget(paths.target);
  }
  run.standardOutputAlone = conversions.size() == 1 && conversions.front().target == kStandardStream;
  for (const EffectRow& row : kEffects) {
    if (row.given(arguments) && !row.works(run)) {
      printError("note: " + std::string(row.text));
    }
  }
}

}  // namespace xlatr::cli
