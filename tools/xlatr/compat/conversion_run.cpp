#include "compat/conversion_run.hpp"

#include <algorithm>
#include <chrono>
#include <thread>

#include "output.hpp"
#include "signals.hpp"

namespace xlatr::cli {

namespace {

// Short at first, so that a small file is done at once; then long enough to take no time from the conversion.
constexpr std::chrono::milliseconds kFirstPause{1};
constexpr std::chrono::milliseconds kLongestPause{8};

// Not on the stack: the library fills the record when the conversion ends, which after an interruption may be after
// main.
ConversionResult conversionResult{};

}  // namespace

ConversionOutcome runConversion(const ConversionRequest& request, const std::function<void(double)>& onProgress) {
  conversionResult = {};
  ConversionProgress progress{};
  ConversionOptions options{};
  options.target_format = request.format;
  options.asynchronous = 1;
  options.progress = &progress;
  options.option_count = static_cast<std::uint32_t>(request.options.size());
  options.options = request.options.data();
  // It returns the state of the moment; the result says how the conversion ended.
  xlatr_convert(request.source.c_str(), request.target.c_str(), &options, &conversionResult);

  ConversionOutcome outcome;
  auto pause = kFirstPause;
  while (xlatr_get_progress(&progress) == XLATR_SUCCESS) {
    if (interruption()) {
      outcome.interrupted = true;
      return outcome;
    }
    onProgress(progress.percent);
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, kLongestPause);
  }

  outcome.status = conversionResult.status;
  outcome.text = conversionResult.text == nullptr ? std::string() : oneLine(conversionResult.text);
  // The count alone is not enough: without files the array is null.
  if (conversionResult.files != nullptr) {
    outcome.files.assign(conversionResult.files, conversionResult.files + conversionResult.file_count);
  }
  xlatr_free(&conversionResult);
  return outcome;
}

}  // namespace xlatr::cli
