#include "convert_command.hpp"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>

#include "blf_conversion.hpp"
#include "command_failure.hpp"
#include "conversion_run.hpp"
#include "formats.hpp"
#include "interrupt.hpp"
#include "output.hpp"
#include "progress_bar.hpp"
#include "source_file.hpp"
#include "target_files.hpp"
#include "terminal.hpp"
#include "xlatr/objects.h"

namespace xlatr::cli {

namespace {

[[noreturn]] void failUsage(const std::string& text) {
  throw CommandFailure(ExitCode::WrongUsage, text);
}

[[noreturn]] void fail(const std::string& text) {
  throw CommandFailure(ExitCode::Failed, text);
}

TraceFormat requireTargetFormat(const ConvertArguments& arguments) {
  if (!arguments.to.empty()) {
    const TraceFormat format = formatFromName(arguments.to);
    if (format == XLATR_FORMAT_NONE) {
      failUsage("--to " + arguments.to + ": no such format; use one of " + nameList(targetFormats()));
    }
    return format;
  }
  const TraceFormat format = formatFromName(extensionOf(arguments.target));
  if (format == XLATR_FORMAT_NONE) {
    failUsage(arguments.target + ": the extension names no trace format; use one of " + extensionList(targetFormats()) +
              ", or name the format with --to");
  }
  return format;
}

double requireTargetVersion(const ConvertArguments& arguments, TraceFormat format) {
  if (!arguments.targetVersion) {
    return BaseTraceInfo_GetTraceCurrentVersion(format);
  }
  const auto versions = formatVersions(format);
  if (std::find(versions.begin(), versions.end(), *arguments.targetVersion) == versions.end()) {
    failUsage("--target-version " + versionText(*arguments.targetVersion) + ": " + formatName(format) +
              " has no such version; " +
              (versions.empty() ? "leave the option out" : "use one of " + versionListText(versions)));
  }
  return *arguments.targetVersion;
}

char requireSeparator(const ConvertArguments& arguments) {
  const std::string text = arguments.separator.value_or(";");
  if (text == "tab" || text == "\\t") {
    return '\t';
  }
  if (text.size() != 1) {
    failUsage("--separator " + text + ": is not one character; use for example ',' or 'tab'");
  }
  return text.front();
}

ConversionOption flagOption(std::int32_t tag) {
  ConversionOption option{};
  option.tag = tag;
  option.value.flag = 1;
  return option;
}

std::vector<ConversionOption> conversionOptions(const ConvertArguments& arguments) {
  std::vector<ConversionOption> options;
  if (arguments.targetVersion) {
    options.emplace_back().tag = XLATR_OPTION_TARGET_VERSION;
    options.back().value.version = *arguments.targetVersion;
  }
  for (const std::uint32_t session : arguments.sessions) {
    options.emplace_back().tag = XLATR_OPTION_SESSION;
    options.back().value.session = session;
  }
  if (arguments.separator) {
    options.emplace_back().tag = XLATR_OPTION_SEPARATOR;
    options.back().value.separator = requireSeparator(arguments);
  }
  if (arguments.zipped) {
    options.push_back(flagOption(XLATR_OPTION_ZIPPED));
  }
  if (arguments.sorted) {
    options.push_back(flagOption(XLATR_OPTION_SORTED));
  }
  return options;
}

void requirePossiblePair(const std::string& source, TraceFormat from, TraceFormat to) {
  const TraceFormat targets = xlatr_get_formats_convertible_from(from);
  if ((targets & to) != 0) {
    return;
  }
  const std::string pair = source + ": " + formatName(from) + " can't be converted into " + formatName(to);
  fail(pair + (targets == XLATR_FORMAT_NONE ? std::string("; it is a target only, never a source")
                                            : "; choose one of " + nameList(targets)));
}

void requireNamedFile(const std::string& target) {
  std::error_code error;
  if (target.empty() || std::filesystem::path(target).filename().empty() ||
      std::filesystem::is_directory(target, error)) {
    fail(target + ": is not a file name; name a file in that folder, for example drive.trc");
  }
}

// A target that is the source under another name would be emptied before it is read.
void requireFreeTarget(const ConvertArguments& arguments, const TargetFiles& files) {
  const auto existing = files.existing();
  for (const auto& path : existing) {
    std::error_code error;
    if (std::filesystem::equivalent(path, arguments.source, error)) {
      fail(path + ": is the source itself, which would be lost; choose another target");
    }
  }
  if (!existing.empty() && !arguments.force) {
    throw CommandFailure(ExitCode::TargetExists,
                         firstAndCount(existing) + ": exists already; choose another target or overwrite with -f");
  }
}

// What becomes of a source that is not valid. Only the lines of TRC can't be understood without the header; frames of
// the other formats are converted without it.
std::string consequence(TraceFormat source, TraceFormat target) {
  if (target == XLATR_FORMAT_MF4) {
    return "the target is empty";
  }
  if (target == XLATR_FORMAT_BTR) {
    return "the target holds no messages";  // a session has no comments
  }
  return source == XLATR_FORMAT_TRC ? "its lines were carried over as comments" : "the target has no header";
}

bool warnIfNotValid(const std::string& source, TraceFormat format, TraceFormat target) {
  const auto header = readTraceHeader(format, source);
  if (!header || header->valid) {
    return false;
  }
  printWarning(source + ": is not a valid " + formatName(format) + " file, so " + consequence(format, target) +
               "; look at its header");
  return true;
}

void printWritten(const TargetFiles& files, const std::vector<std::string>& names) {
  if (names.empty()) {
    std::cout << "nothing to write: the source holds no messages\n";
  }
  for (const auto& name : names) {
    const std::string path = files.directory + name;
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    std::cout << "wrote " << path;
    if (!error) {
      std::cout << " (" << sizeText(size) << ")";
    }
    std::cout << "\n";
  }
}

// What became of the target of a conversion that failed, and how to repeat it.
struct Leftover {
  std::string state;
  std::string retry;
};

Leftover leftoverOf(const std::vector<std::string>& existing, const std::vector<std::string>& written) {
  return {written.empty() ? "nothing was written"
                          : firstAndCount(written) + (written.size() == 1 ? " is" : " are") + " incomplete",
          existing.empty() ? "convert again" : "convert again with -f"};
}

[[noreturn]] void failConversion(const std::string& source, const TargetFiles& files, const ConversionOutcome& outcome,
                                 const std::string& reason) {
  std::vector<std::string> written;
  for (const auto& name : outcome.files) {
    written.push_back(files.directory + name);
  }
  const Leftover leftover = leftoverOf(files.existing(), written);
  fail(source + ": " + reason + "; " + leftover.state + "; fix the problem and " + leftover.retry);
}

void requireSuccess(const ConversionRequest& request, const TargetFiles& files, const ConversionOutcome& outcome) {
  switch (outcome.status) {
    case XLATR_SUCCESS:
      return;
    case XLATR_NOTHING_CONVERTED:
      fail(request.source + ": holds nothing to convert; check the file and the sessions that you named");
    case XLATR_FAILED:
      failConversion(request.source, files, outcome, outcome.text.empty() ? "the conversion failed" : outcome.text);
    default:
      failConversion(request.source, files, outcome,
                     "the conversion ended with the unknown status " + std::to_string(outcome.status));
  }
}

}  // namespace

ExitCode runConvert(const ConvertArguments& arguments) {
  const TraceFormat format = requireTargetFormat(arguments);
  const double version = requireTargetVersion(arguments, format);
  ConversionRequest request{
      .source = arguments.source, .target = {}, .format = format, .options = conversionOptions(arguments)};

  requireReadable(arguments.source);
  const TraceFormat sourceFormat = requireTraceFormat(arguments.source);
  requirePossiblePair(arguments.source, sourceFormat, format);
  requireNamedFile(arguments.target);
  const TargetFiles files = targetFiles(arguments.target, format, version, sourceFormat);
  requireFreeTarget(arguments, files);
  request.target = files.pathForLibrary();
  const bool fromBlf = sourceFormat == XLATR_FORMAT_BLF;
  if (fromBlf) {
    requireBlfConverter(arguments.source);
  }

  watchForInterrupt();
  ConversionOutcome outcome;
  {
    ProgressBar bar(!arguments.quiet && errorOutputIsTerminal());
    const auto onProgress = [&bar](double percent) { bar.show(percent); };
    outcome = fromBlf ? runBlfConversion(request, {files, version, requireSeparator(arguments)}, onProgress)
                      : runConversion(request, onProgress);
  }
  if (outcome.interrupted) {
    // A conversion that still runs names no files: whatever exists there may be its own.
    const auto existing = files.existing();
    const Leftover leftover = leftoverOf(existing, existing);
    printError(arguments.source + ": interrupted; " + leftover.state + "; " + leftover.retry);
    return ExitCode::Interrupted;
  }
  requireSuccess(request, files, outcome);

  if (!arguments.quiet) {
    printWritten(files, outcome.files);
  }
  bool warned = warnIfNotValid(arguments.source, sourceFormat, format);
  if (!outcome.text.empty()) {
    printWarning(arguments.source + ": " + outcome.text);
    warned = true;
  }
  return warned ? ExitCode::DoneWithWarnings : ExitCode::Done;
}

}  // namespace xlatr::cli
