#include "job.hpp"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <memory>

#include "command_failure.hpp"
#include "formats.hpp"
#include "output.hpp"
#include "signals.hpp"
#include "standard_streams.hpp"
#include "values.hpp"
#include "xlatr/frames.hpp"

namespace xlatr::cli {
namespace {

double versionValue(const std::string& text) {
  double version = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), version);
  if (error != std::errc() || end != text.data() + text.size() || !(version > 0.0 && version < 1000.0)) {
    failValue("--target-version", text, "this is no version, such as 2.1");
  }
  return version;
}

std::string separatorValue(const std::string& text) {
  if (text == "tab" || text == "\\t") {
    return "\t";
  }
  if (text.size() != 1) {
    failValue("--separator", text, "this is not one character; use for example , or tab");
  }
  return text;
}

// The versions that a format is written in; none if it is not written.
std::vector<double> writtenVersions(TraceFormat format) {
  std::vector<double> versions;
  xlatr_capacity row{};
  row.size = sizeof row;
  for (std::uint32_t at = 0; xlatr_get_capacity(at, &row) == XLATR_OK; ++at) {
    if (row.format == format) {
      versions.push_back(row.version);
    }
  }
  return versions;
}

// Hands each row of a table that a job has to a function.
template <class Record, typename Take>
void eachRow(xlatr_job* job, xlatr_code (*get)(xlatr_job*, std::uint32_t, Record*), Take take) {
  Record row{};
  row.size = sizeof row;
  for (std::uint32_t at = 0; get(job, at, &row) == XLATR_OK; ++at) {
    take(row);
  }
}

std::string nameOf(const JobPaths& paths) {
  return paths.target == kStandardStream ? "standard output" : paths.target;
}

struct CloseJob {
  void operator()(xlatr_job* job) const { xlatr_job_close(job); }
};

}  // namespace

TraceFormat formatValue(const char* option, const std::string& name) {
  const TraceFormat format = formatFromName(name);
  if (format == XLATR_FORMAT_NONE) {
    failValue(option, name, "there is no such format; use one of " + nameList(~XLATR_FORMAT_NONE));
  }
  return format;
}

TraceFormat sourceFormatOf(const Arguments& arguments) {
  return arguments.from.empty() ? TraceFormat{XLATR_FORMAT_NONE} : formatValue("--from", arguments.from);
}

JobSettings::JobSettings(const Arguments& arguments) : sourceFormat_(sourceFormatOf(arguments)), wanted_(arguments) {
  sink_.size = sizeof sink_;
  if (!arguments.to.empty()) {
    sink_.format = formatValue("--to", arguments.to);
  }
  if (!arguments.targetVersion.empty()) {
    sink_.version = versionValue(arguments.targetVersion);
  }
  if (!arguments.separator.empty()) {
    separator_ = separatorValue(arguments.separator);
  }
  sink_.replace = arguments.force ? 1 : 0;
  sink_.zipped = arguments.zipped ? 1 : 0;
  sink_.compact = arguments.compact ? 1 : 0;
  sink_.keep_partial = arguments.keepPartial ? 1 : 0;
  sink_.split_buses = arguments.splitBus ? 1 : 0;
  if (!arguments.splitSize.empty()) {
    sink_.split_bytes = sizeValue("--split-size", arguments.splitSize);
  }
  if (!arguments.splitTime.empty()) {
    sink_.split_ns = durationValue("--split-time", arguments.splitTime);
  }
  strict_ = arguments.strict;
  alignsStarts_ = !arguments.align.empty() && choiceValue("--align", arguments.align, {"absolute", "start"}) == 1;
  closesGaps_ = !arguments.gap.empty() && choiceValue("--gap", arguments.gap, {"keep", "close"}) == 1;
}

TraceFormat JobSettings::formatOfTarget(const std::string& target) const {
  const TraceFormat format = sink_.format != 0 ? sink_.format : formatFromName(extensionOf(target));
  if (format == XLATR_FORMAT_NONE) {
    throw CommandFailure(ExitCode::WrongUsage, target + ": the extension names no trace format; name one with --to: " +
                                                   nameList(writtenFormats()));
  }
  const std::vector<double> versions = writtenVersions(format);
  if (versions.empty()) {
    throw CommandFailure(
        ExitCode::WrongUsage,
        target + ": " + formatName(format) + " is read and not written; choose one of " + nameList(writtenFormats()));
  }
  if (sink_.version != 0.0 && std::ranges::find(versions, sink_.version) == versions.end()) {
    failValue("--target-version", versionText(sink_.version),
              formatName(format) + " has no such version; use one of " + versionListText(versions));
  }
  return format;
}

ExitCode exitCodeOf(xlatr_code code) {
  switch (code) {
    case XLATR_ERROR_ARGUMENT:
      return ExitCode::WrongUsage;
    case XLATR_ERROR_TARGET_EXISTS:
      return ExitCode::TargetExists;
    case XLATR_ERROR_TARGET:
      return ExitCode::TargetRefused;
    case XLATR_ERROR_INCOMPLETE:
      return ExitCode::DoneWithLosses;
    case XLATR_ERROR_CANCELLED:
      return interruption().value_or(ExitCode::Interrupted);
    default:
      return code < 0 ? ExitCode::Failed : ExitCode::Done;
  }
}

// A friend of the settings, of which it makes the library's records.
class Job {
 public:
  Job(const JobSettings& settings, const JobPaths& paths, Progress& progress) : watch_(progress) {
    const xlatr_input input = standardInput();
    const xlatr_input* const inputs[] = {&input};
    std::vector<const char*> sources;
    xlatr_job_options options{};
    options.size = sizeof options;
    for (const std::string& source : paths.sources) {
      if (source == kStandardStream) {
        options.inputs = inputs;
        options.input_count = 1;
      } else {
        sources.push_back(source.c_str());
      }
    }
    options.sources = sources.data();
    options.source_count = static_cast<std::uint32_t>(sources.size());
    options.source_format = settings.sourceFormat_;
    xlatr_sink_options sink = settings.sink_;
    sink.separator = settings.separator_.empty() ? nullptr : settings.separator_.c_str();
    options.sink = &sink;
    const xlatr_output output = standardOutput("standard output");
    if (paths.target == kStandardStream) {
      options.output = &output;
    } else {
      options.target = paths.target.c_str();
    }
    const xlatr_selection selection = settings.wanted_.selection();
    const xlatr_changes changes = settings.wanted_.changes();
    options.selection = &selection;
    options.changes = &changes;
    options.strict = settings.strict_ ? 1 : 0;
    options.align_starts = settings.alignsStarts_ ? 1 : 0;
    options.close_gaps = settings.closesGaps_ ? 1 : 0;
    options.progress = Watch::see;
    options.context = &watch_;
    xlatr_job* job = nullptr;
    code_ = xlatr_job_create(&options, &job);
    job_.reset(job);
  }

  void run(JobReport& report) {
    if (code_ == XLATR_OK) {
      code_ = xlatr_job_run(job_.get());
    }
    report.head.size = sizeof report.head;
    report.account = emptyAccount();
    static_cast<void>(xlatr_job_get_head(job_.get(), &report.head));
    static_cast<void>(xlatr_job_get_account(job_.get(), &report.account));
    report.producer = report.head.producer == nullptr ? "" : report.head.producer;
    report.head.path = nullptr;
    report.head.producer = nullptr;
    eachRow(job_.get(), xlatr_job_get_written, [&report](const xlatr_written& row) {
      report.written.push_back({row.path, row.bytes, row.frames});
    });
    eachRow(job_.get(), xlatr_job_get_passed_over,
            [&report](const xlatr_passed_over& row) { report.passedOver.emplace_back(row.name, row.count); });
    report.exitCode = exitCodeOf(code_);
    if (code_ != XLATR_OK && interruption()) {
      report.exitCode = *interruption();
      report.error = "interrupted; " + nameOf(report.paths) + " was not written";
    } else if (code_ != XLATR_OK) {
      const char* const text = xlatr_job_error(job_.get());
      report.error = oneLine(text == nullptr || *text == '\0' ? xlatr_code_text(code_) : text);
      report.error += code_ == XLATR_ERROR_TARGET_EXISTS ? "; -f replaces it, -n leaves it out" : "";
    } else if (report.account.complete == 0) {
      report.exitCode = ExitCode::DoneWithLosses;
    }
  }

 private:
  Watch watch_;
  std::unique_ptr<xlatr_job, CloseJob> job_;
  xlatr_code code_ = XLATR_OK;
};

JobReport runJob(const JobSettings& settings, const JobPaths& paths, Progress& progress) {
  const auto start = std::chrono::steady_clock::now();
  JobReport report;
  report.paths = paths;
  Job(settings, paths, progress).run(report);
  report.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return report;
}

}  // namespace xlatr::cli
