#include "stats_command.hpp"

#include <cstddef>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "conversions.hpp"
#include "job.hpp"
#include "open_trace.hpp"
#include "output.hpp"
#include "progress.hpp"
#include "report.hpp"
#include "signals.hpp"
#include "source_list.hpp"
#include "sparkline.hpp"
#include "stats_report.hpp"
#include "terminal.hpp"
#include "values.hpp"
#include "wanted.hpp"
#include "xlatr/frames.h"
#include "xlatr/frames.hpp"

namespace xlatr::cli {
namespace {

xlatr_analysis_options analysisOptions(const Arguments& arguments) {
  xlatr_analysis_options options{};
  options.size = sizeof options;
  if (!arguments.bitRate.empty()) {
    const BitRatePair rates = bitRatesValue("--bitrate", arguments.bitRate);
    options.nominal_rate = rates.nominal;
    options.data_rate = rates.data;
  }
  if (!arguments.linBitRate.empty()) {
    options.lin_rate = bitRateValue("--lin-bitrate", arguments.linBitRate);
  }
  if (!arguments.stuffing.empty()) {
    options.stuffing =
        static_cast<std::uint32_t>(choiceValue("--stuffing", arguments.stuffing, {"mean", "worst", "none"}));
  }
  return options;
}

class StatsRun {
 public:
  StatsRun(const Arguments& arguments, Progress& progress)
      : progress_(progress),
        wanted_(arguments),
        options_(analysisOptions(arguments)),
        format_(sourceFormatOf(arguments)),
        json_(arguments.json) {}

  ExitCode run(const std::string& path) {
    try {
      Watch watch(progress_);
      Stream stream = openTrace(path, format_, wanted_, &watch);
      Analysis analysis(&options_);
      analysis.run(stream);
      progress_.hide();
      show(path, stream, analysis);
      return isWhole(stream) ? ExitCode::Done : ExitCode::DoneWithLosses;
    } catch (const Error& error) {
      progress_.hide();
      const ReadFailure failure = failureOf(error);
      printError(failure.text);
      return failure.exitCode;
    }
  }

  void finish() const {
    if (json_) {
      std::cout << jsonText(traces_);
    }
  }

 private:
  void show(const std::string& path, Stream& stream, const Analysis& analysis) {
    if (json_) {
      nlohmann::ordered_json trace = statsJson(path, stream.head().places_are_records != 0, analysis);
      trace["remarks"] = remarksJson(stream.account());
      traces_.push_back(std::move(trace));
    } else {
      std::cout << (shown_++ == 0 ? "" : "\n") << statsText(path, analysis, showsUtf8(), width_);
    }
    if (!isWhole(stream)) {
      printDamage(path, stream);
    }
  }

  Progress& progress_;
  Wanted wanted_;
  xlatr_analysis_options options_;
  TraceFormat format_;
  bool json_;
  std::size_t width_ = outputIsTerminal() ? terminalWidth() : 0;
  int shown_ = 0;
  nlohmann::ordered_json traces_ = nlohmann::ordered_json::array();
};

}  // namespace

ExitCode runStats(const Arguments& arguments) {
  watchSignals();
  Progress progress(progressForm(arguments), arguments.paths.size(), sizeOfFiles(arguments.paths));
  StatsRun run(arguments, progress);
  ExitCode code = ExitCode::Done;
  for (const std::string& path : arguments.paths) {
    code = worse(code, run.run(path));
    if (interruption()) {
      return code;
    }
    progress.fileDone();
  }
  progress.hide();
  run.finish();
  return code;
}

}  // namespace xlatr::cli
