#include "cat_command.hpp"

#include <cstddef>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "command_failure.hpp"
#include "formats.hpp"
#include "frame_lines.hpp"
#include "job.hpp"
#include "open_trace.hpp"
#include "output.hpp"
#include "signals.hpp"
#include "standard_streams.hpp"

namespace xlatr::cli {
namespace {

// Where the frames of all sources go.
class FrameOutput {
 public:
  virtual ~FrameOutput() = default;
  FrameOutput(const FrameOutput&) = delete;
  FrameOutput& operator=(const FrameOutput&) = delete;

  virtual void write(const BatchView& batch) = 0;
  virtual void finish() = 0;

 protected:
  FrameOutput() = default;
};

class LineOutput final : public FrameOutput {
 public:
  using AppendLine = void (*)(const xlatr_batch& batch, std::size_t row, std::string& out);
  explicit LineOutput(AppendLine append) : append_(append) {}

  void write(const BatchView& batch) override {
    lines_.clear();
    for (std::size_t row = 0; row < batch.size(); ++row) {
      append_(batch.columns(), row, lines_);
    }
    std::cout.write(lines_.data(), static_cast<std::streamsize>(lines_.size()));
  }
  // Whoever reads the lines may be waiting for them.
  void finish() override { finishOutput(); }

 private:
  AppendLine append_;
  std::string lines_;
};

class TableOutput final : public FrameOutput {
 public:
  TableOutput() {
    xlatr_sink_options options{};
    options.size = sizeof options;
    options.format = XLATR_FORMAT_CSV;
    options.version = kTableVersion;
    const xlatr_output output = standardOutput("standard output");
    sink_.emplace(output, nullptr, &options);
  }

  void write(const BatchView& batch) override { sink_->write(batch); }
  void finish() override { sink_->finish(); }

 private:
  static constexpr double kTableVersion = 2.0;
  std::optional<Sink> sink_;
};

std::unique_ptr<FrameOutput> outputOf(const Arguments& arguments) {
  if (arguments.csv) {
    return std::make_unique<TableOutput>();
  }
  return std::make_unique<LineOutput>(arguments.json ? appendJsonLine : appendTextLine);
}

ExitCode print(const std::string& path, TraceFormat format, const Wanted& wanted, FrameOutput& output) {
  Stream stream = openTrace(path, format, wanted, nullptr);
  while (const auto batch = stream.next()) {
    output.write(*batch);
    if (const auto code = interruption()) {
      return *code;
    }
  }
  if (isWhole(stream)) {
    return ExitCode::Done;
  }
  printDamage(path, stream);
  return ExitCode::DoneWithLosses;
}

}  // namespace

ExitCode runCat(const Arguments& arguments) {
  if (arguments.csv && arguments.json) {
    throw CommandFailure(ExitCode::WrongUsage, "--csv and --json: say one of them");
  }
  const TraceFormat format = sourceFormatOf(arguments);
  const Wanted wanted(arguments);
  watchSignals();
  const auto output = outputOf(arguments);
  ExitCode code = ExitCode::Done;
  for (const std::string& path : arguments.paths) {
    try {
      code = worse(code, print(path, format, wanted, *output));
    } catch (const Error& error) {
      const ReadFailure failure = failureOf(error);
      printError(failure.text);
      code = worse(code, failure.exitCode);
    }
    if (interruption()) {
      break;
    }
  }
  output->finish();
  return code;
}

}  // namespace xlatr::cli
