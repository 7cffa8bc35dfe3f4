#include "conversions.hpp"

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>

#include "command_failure.hpp"
#include "option_effects.hpp"
#include "output.hpp"
#include "report.hpp"
#include "signals.hpp"
#include "source_list.hpp"
#include "standard_streams.hpp"
#include "terminal.hpp"
#include "values.hpp"

namespace xlatr::cli {
namespace {

// A link that leads nowhere exists, too: it would be replaced.
bool exists(const std::string& path) {
  std::error_code error;
  return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

// A folder of a mirrored tree is made when the first file of it is written.
void makeFolderOf(const std::string& target) {
  const std::filesystem::path folder = std::filesystem::path(target).parent_path();
  std::error_code error;
  if (!folder.empty()) {
    std::filesystem::create_directories(folder, error);  // what fails is told when the file is created
  }
}

JobReport convert(const Arguments& arguments, const JobSettings& settings, const JobPaths& paths, Progress& progress) {
  if (arguments.skipExisting && paths.target != kStandardStream && exists(paths.target)) {
    JobReport report;
    report.paths = paths;
    report.skipped = true;
    report.exitCode = ExitCode::Done;
    return report;
  }
  if (!arguments.outputFolder.empty()) {
    makeFolderOf(paths.target);
  }
  return runJob(settings, paths, progress);
}

// Whether the user wants to see the line.
bool isTold(const Arguments& arguments, const JobReport& report) {
  if (!report.error.empty()) {
    return true;
  }
  return arguments.quiet == 0 || (arguments.quiet == 1 && report.exitCode != ExitCode::Done);
}

void writeReport(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  if (!file) {
    throw CommandFailure(ExitCode::TargetRefused, path + ": the report can't be written; the traces are");
  }
}

std::uint64_t bytesOf(const std::vector<JobPaths>& conversions) {
  std::uint64_t bytes = 0;
  for (const JobPaths& paths : conversions) {
    bytes += sizeOfFiles(paths.sources);
  }
  return bytes;
}

}  // namespace

ProgressForm progressForm(const Arguments& arguments) {
  const std::size_t form =
      arguments.progress.empty() ? 0 : choiceValue("--progress", arguments.progress, {"auto", "json", "none"});
  if (form == 1) {
    return ProgressForm::Json;
  }
  return form == 0 && arguments.quiet == 0 && errorOutputIsTerminal() ? ProgressForm::Bar : ProgressForm::None;
}

std::size_t jobCount(const Arguments& arguments, std::size_t files) {
  constexpr std::uint32_t kMost = 1024;
  std::size_t jobs = arguments.jobs.empty() ? 1 : numberValue("--jobs", arguments.jobs, kMost);
  if (jobs == 0) {
    jobs = std::max(1U, std::thread::hardware_concurrency());
  }
  return std::max<std::size_t>(1, std::min(jobs, files));
}

void inParallel(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> next = 0;
  std::atomic<bool> failed = false;
  std::exception_ptr failure;
  const auto run = [&]() noexcept {
    try {
      for (std::size_t at = next++; at < count && !failed && !interruption(); at = next++) {
        work(at);
      }
    } catch (...) {
      if (!failed.exchange(true)) {
        failure = std::current_exception();
      }
    }
  };
  std::vector<std::thread> others;
  others.reserve(threads);
  try {
    for (std::size_t thread = 1; thread < threads; ++thread) {
      others.emplace_back(run);
    }
  } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): those that could be started do the work
  }
  run();
  for (std::thread& other : others) {
    other.join();
  }
  if (failure) {
    std::rethrow_exception(failure);
  }
}

ExitCode runConversions(const Arguments& arguments, const JobSettings& settings,
                        const std::vector<JobPaths>& conversions) {
  const ProgressForm form = progressForm(arguments);
  const std::size_t threads = jobCount(arguments, conversions.size());
  tellOptionsWithoutEffect(arguments, settings, conversions);
  watchSignals();
  std::vector<JobReport> reports(conversions.size());
  std::vector<char> done(conversions.size());  // bytes, since each is written by another thread
  {
    Progress progress(form, conversions.size(), bytesOf(conversions));
    inParallel(conversions.size(), threads, [&](std::size_t at) {
      reports[at] = convert(arguments, settings, conversions[at], progress);
      done[at] = 1;
      progress.fileDone();
      if (isTold(arguments, reports[at])) {
        progress.printLine("xlatr: " + oneLine(reportLine(reports[at])));
      }
    });
  }
  ExitCode code = interruption().value_or(ExitCode::Done);
  std::vector<JobReport> ended;
  for (std::size_t at = 0; at < reports.size(); ++at) {
    if (done[at] != 0) {
      code = worse(code, reports[at].exitCode);
      ended.push_back(std::move(reports[at]));
    }
  }
  if (conversions.size() > 1 && arguments.quiet == 0) {
    printError(summaryLine(ended));
  }
  if (arguments.json) {
    std::cout << jsonText(reportJson(ended));
  }
  if (!arguments.report.empty()) {
    writeReport(arguments.report, jsonText(reportJson(ended)));
  }
  return code;
}

}  // namespace xlatr::cli
