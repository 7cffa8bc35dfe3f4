#include "check_command.hpp"

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "conversions.hpp"
#include "formats.hpp"
#include "job.hpp"
#include "measure.hpp"
#include "open_trace.hpp"
#include "output.hpp"
#include "report.hpp"
#include "signals.hpp"
#include "source_list.hpp"

namespace xlatr::cli {
namespace {

struct Checked {
  std::string path;
  ExitCode exitCode = ExitCode::Failed;
  std::string error;
  xlatr_head head{};  // without its texts
  xlatr_account account = emptyAccount();
};

std::uint64_t sizeOf(const std::vector<SourceFile>& sources) {
  std::uint64_t bytes = 0;
  for (const SourceFile& source : sources) {
    bytes += sizeOfFile(source.path);
  }
  return bytes;
}

Checked check(const std::string& path, TraceFormat format, const Wanted& all, Progress& progress) {
  Checked checked;
  checked.path = path;
  try {
    Watch watch(progress);
    Stream stream = openTrace(path, format, all, &watch);
    while (stream.next()) {
    }
    checked.head = stream.head();
    checked.head.path = nullptr;
    checked.head.producer = nullptr;
    checked.account = stream.account();
    checked.exitCode = isWhole(stream) ? ExitCode::Done : ExitCode::DoneWithLosses;
  } catch (const Error& error) {
    auto failure = failureOf(error);
    checked.error = std::move(failure.text);
    checked.exitCode = failure.exitCode;
  }
  return checked;
}

std::string lineOf(const Checked& checked) {
  if (!checked.error.empty()) {
    return checked.error;
  }
  return checked.path + ": " + formatName(checked.head.format) + ", " + countedFrames(checked.account.read) +
         (checked.exitCode == ExitCode::Done ? ", whole" : remarksText(checked.account, checked.head));
}

nlohmann::ordered_json jsonOf(const Checked& checked) {
  nlohmann::ordered_json json;
  json["file"] = checked.path;
  json["whole"] = checked.exitCode == ExitCode::Done;
  json["error"] = nullptr;
  if (!checked.error.empty()) {
    json["error"] = checked.error;
  }
  json["format"] = formatName(checked.head.format);
  json["frames"] = checked.account.read;
  json["unfinished"] = checked.head.unfinished != 0;
  json["remarks"] = remarksJson(checked.account);
  return json;
}

}  // namespace

ExitCode runCheck(const Arguments& arguments) {
  const TraceFormat format = sourceFormatOf(arguments);
  const Wanted all{Arguments()};
  const std::vector<SourceFile> sources = sourceList(arguments, arguments.paths);
  const std::size_t threads = jobCount(arguments, sources.size());
  const ProgressForm form = progressForm(arguments);
  watchSignals();
  std::vector<Checked> checked(sources.size());
  {
    Progress progress(form, sources.size(), sizeOf(sources));
    inParallel(sources.size(), threads, [&](std::size_t at) {
      checked[at] = check(sources[at].path, format, all, progress);
      progress.fileDone();
    });
  }
  ExitCode code = interruption().value_or(ExitCode::Done);
  auto array = nlohmann::ordered_json::array();
  for (const Checked& file : checked) {
    if (file.path.empty()) {
      continue;  // it was not begun when the program was interrupted
    }
    code = worse(code, file.exitCode);
    if (arguments.json) {
      array.push_back(jsonOf(file));
    }
    if (!file.error.empty()) {
      printError(file.error);
    } else if (!arguments.json && (arguments.quiet == 0 || (arguments.quiet == 1 && file.exitCode != ExitCode::Done))) {
      std::cout << oneLine(lineOf(file)) + "\n";
    }
  }
  if (arguments.json) {
    std::cout << jsonText(array);
  }
  return code;
}

}  // namespace xlatr::cli
