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
      failUsage("--to " + arguments.to + ": no such format; use one of " + nameList(~XLATR_FORMAT_NONE));
    }
    return format;
  }
  const TraceFormat format = formatFromName(extensionOf(arguments.target));
  if (format == XLATR_FORMAT_NONE) {
    failUsage(arguments.target + ": the extension names no trace format; use one of " + extensionList() +
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
    fail(target + ": is no file name; name a file in that folder, for example drive.trc");
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

// What becomes of a source that is not valid.
std::string consequence(TraceFormat source, TraceFormat target) {
  if (target == XLATR_FORMAT_MF4) {
    return "the target is empty";
  }
  return source == XLATR_FORMAT_MF4 ? "the target has no header" : "its lines were carried over as comments";
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

// What became of the target when the conversion did not end well, and how to repeat it.
struct Leftover {
  std::string state;
  std::string retry;
};

Leftover leftoverOf(const TargetFiles& files) {
  const auto existing = files.existing();
  if (existing.empty()) {
    return {"nothing was written", "convert again"};
  }
  return {firstAndCount(existing) + (existing.size() == 1 ? " is" : " are") + " incomplete", "convert again with -f"};
}

[[noreturn]] void failConversion(const std::string& source, const TargetFiles& files, const std::string& reason) {
  const Leftover leftover = leftoverOf(files);
  fail(source + ": " + reason + "; " + leftover.state + ": mend that and " + leftover.retry);
}

// The library's own words for a pair of formats that it has no reader or no writer for don't say which.
bool isMissingReaderOrWriter(const std::string& reason) {
  return reason.find("specified conversion is invalid") != std::string::npos ||
         reason.find("converting object is invalid") != std::string::npos;
}

void requireSuccess(const ConversionRequest& request, const TargetFiles& files, const ConversionOutcome& outcome) {
  switch (outcome.status) {
    case XLATR_SUCCESS:
      return;
    case XLATR_NOTHING_CONVERTED:
      fail(request.source + ": there is nothing to convert in it; check the file and the sessions you named");
    case XLATR_FAILED:
      if (isMissingReaderOrWriter(outcome.text)) {
        fail(request.source + ": this version of xlatr can't convert " + formatName(formatOfFile(request.source)) +
             " into " + formatName(request.format) + " (" + outcome.text + "); choose another target format");
      }
      failConversion(request.source, files, outcome.text.empty() ? "the conversion failed" : outcome.text);
    default:
      failConversion(request.source, files,
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
    const Leftover leftover = leftoverOf(files);
    printError(arguments.source + ": interrupted; " + leftover.state + ", " + leftover.retry);
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
