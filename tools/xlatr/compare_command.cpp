#include "compare_command.hpp"

#include <cstdint>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "command_failure.hpp"
#include "comparison_report.hpp"
#include "conversions.hpp"
#include "job.hpp"
#include "open_trace.hpp"
#include "output.hpp"
#include "progress.hpp"
#include "report.hpp"
#include "signals.hpp"
#include "source_list.hpp"
#include "values.hpp"
#include "wanted.hpp"
#include "xlatr/frames.h"
#include "xlatr/frames.hpp"

namespace xlatr::cli {
namespace {

std::uint32_t limitOf(const Arguments& arguments) {
  constexpr std::uint32_t kMost = 100'000;
  constexpr std::uint32_t kUsual = 20;
  return arguments.limit.empty() ? kUsual : numberValue("--limit", arguments.limit, kMost);
}

xlatr_comparison_options comparisonOptions(const Arguments& arguments, const Wanted& wanted) {
  xlatr_comparison_options options{};
  options.size = sizeof options;
  if (!arguments.tolerance.empty()) {
    options.tolerance_known = 1;
    options.tolerance_ns = toleranceValue("--tolerance", arguments.tolerance);
  }
  options.texts = arguments.texts ? 1 : 0;
  options.attributes = arguments.attributes ? 1 : 0;
  options.most_differences = limitOf(arguments);
  // Comments are compared by those who ask for them.
  options.kinds = wanted.selection().kinds;
  return options;
}

ComparedTrace traceOf(const std::string& path, const Stream& stream) {
  return {path, stream.head().places_are_records != 0};
}

void tellDamage(const std::string& path, const Stream& stream) {
  if (!isWhole(stream)) {
    printDamage(path, stream);
  }
}

ExitCode compare(const Arguments& arguments) {
  const Wanted wanted(arguments);
  const xlatr_comparison_options options = comparisonOptions(arguments, wanted);
  const TraceFormat format = sourceFormatOf(arguments);
  watchSignals();
  Progress progress(progressForm(arguments), arguments.paths.size(), sizeOfFiles(arguments.paths));
  Watch watchFirst(progress);
  Watch watchSecond(progress);
  Stream first = openTrace(arguments.paths[0], format, wanted, &watchFirst);
  Stream second = openTrace(arguments.paths[1], format, wanted, &watchSecond);
  Comparison comparison(&options);
  comparison.run(first, second);
  progress.fileDone();
  progress.fileDone();
  progress.hide();
  const ComparedTrace one = traceOf(arguments.paths[0], first);
  const ComparedTrace other = traceOf(arguments.paths[1], second);
  std::cout << (arguments.json ? jsonText(comparisonJson(one, other, comparison, limitOf(arguments)))
                               : comparisonText(one, other, comparison, limitOf(arguments)));
  tellDamage(one.name, first);
  tellDamage(other.name, second);
  return comparison.summary().same != 0 ? ExitCode::Done : ExitCode::DoneWithLosses;
}

}  // namespace

ExitCode runCompare(const Arguments& arguments) {
  if (arguments.paths.size() != 2) {
    throw CommandFailure(ExitCode::WrongUsage, "two traces are compared; name them, see 'xlatr compare --help'");
  }
  try {
    return compare(arguments);
  } catch (const Error& error) {
    const ReadFailure failure = failureOf(error);
    throw CommandFailure(failure.exitCode, failure.text);
  }
}

}  // namespace xlatr::cli
