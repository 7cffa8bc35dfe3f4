#include "compat/compat_command.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <limits>
#include <optional>
#include <string_view>
#include <system_error>

#include "command_failure.hpp"
#include "compat/conversion_run.hpp"
#include "compat/source_file.hpp"
#include "compat/target_files.hpp"
#include "conversions.hpp"
#include "formats.hpp"
#include "options.hpp"
#include "output.hpp"
#include "signals.hpp"
#include "source_list.hpp"
#include "standard_streams.hpp"
#include "values.hpp"
#include "xlatr/objects.h"

namespace xlatr::cli {

namespace {

[[noreturn]] void refuseUsage(const std::string& text) {
  throw CommandFailure(ExitCode::WrongUsage, text);
}

[[noreturn]] void fail(const std::string& text) {
  throw CommandFailure(ExitCode::Failed, text);
}

// One file after the other.
struct CompatFile {
  std::string source;
  std::string target;
};

TraceFormat requireTargetFormat(const Arguments& arguments, const std::string& target) {
  const TraceFormat format = formatFromName(arguments.to.empty() ? extensionOf(target) : arguments.to);
  if (format == XLATR_FORMAT_NONE && !arguments.to.empty()) {
    refuseUsage("--to " + arguments.to + ": no such format; use one of " + nameList(targetFormats()));
  }
  if (format == XLATR_FORMAT_NONE) {
    refuseUsage(target + ": the extension names no trace format; use one of " + extensionList(targetFormats()) +
                ", or name the format with --to");
  }
  return format;
}

std::optional<double> versionOf(const Arguments& arguments) {
  if (arguments.targetVersion.empty()) {
    return std::nullopt;
  }
  double version = 0.0;
  const std::string& text = arguments.targetVersion;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), version);
  if (error != std::errc() || end != text.data() + text.size()) {
    refuseUsage("--target-version " + text + ": this is no version, such as 2.1");
  }
  return version;
}

double requireTargetVersion(const Arguments& arguments, TraceFormat format) {
  const std::optional<double> version = versionOf(arguments);
  if (!version) {
    return BaseTraceInfo_GetTraceCurrentVersion(format);
  }
  const auto versions = formatVersions(format);
  if (std::find(versions.begin(), versions.end(), *version) == versions.end()) {
    refuseUsage("--target-version " + arguments.targetVersion + ": " + formatName(format) + " has no such version; " +
                (versions.empty() ? "leave the option out" : "use one of " + versionListText(versions)));
  }
  return *version;
}

char requireSeparator(const Arguments& arguments) {
  const std::string& text = arguments.separator;
  if (text == "tab" || text == "\\t") {
    return '\t';
  }
  if (text.size() != 1) {
    refuseUsage("--separator " + text + ": is not one character; use for example ',' or 'tab'");
  }
  return text.front();
}

ConversionOption flagOption(std::int32_t tag) {
  ConversionOption option{};
  option.tag = tag;
  option.value.flag = 1;
  return option;
}

std::vector<ConversionOption> conversionOptions(const Arguments& arguments) {
  std::vector<ConversionOption> options{flagOption(XLATR_OPTION_SAFE)};
  if (!arguments.force) {
    options.push_back(flagOption(XLATR_OPTION_NEW));  // what comes after this program has looked is kept, too
  }
  if (const std::optional<double> version = versionOf(arguments)) {
    options.emplace_back().tag = XLATR_OPTION_TARGET_VERSION;
    options.back().value.version = *version;
  }
  for (const std::string& session : arguments.sessions) {
    options.emplace_back().tag = XLATR_OPTION_SESSION;
    options.back().value.session = numberValue("--session", session, std::numeric_limits<std::uint32_t>::max());
    if (options.back().value.session == 0) {
      failValue("--session", session, "sessions are counted from 1");
    }
  }
  if (!arguments.separator.empty()) {
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
  const TraceFormat targets = from == XLATR_FORMAT_BLF ? XLATR_FORMAT_NONE : xlatr_get_formats_convertible_from(from);
  if ((targets & to) != 0) {
    return;
  }
  const std::string pair =
      source + ": " + formatName(from) + " can't be converted into " + formatName(to) + " with --compat";
  fail(pair + "; leave --compat out" + (targets == XLATR_FORMAT_NONE ? "" : ", or choose one of " + nameList(targets)));
}

void requireNamedFile(const std::string& target) {
  std::error_code error;
  if (target.empty() || std::filesystem::path(target).filename().empty() ||
      std::filesystem::is_directory(target, error)) {
    fail(target + ": is not a file name; name a file in that folder, for example drive.trc");
  }
}

// A target that is the source under another name would be lost.
void requireFreeTarget(const Arguments& arguments, const CompatFile& file, const TargetFiles& files) {
  const auto existing = files.existing();
  for (const auto& path : existing) {
    std::error_code error;
    if (std::filesystem::equivalent(path, file.source, error)) {
      fail(path + ": is the source itself, which would be lost; choose another target");
    }
  }
  if (!existing.empty() && !arguments.force) {
    throw CommandFailure(ExitCode::TargetExists,
                         firstAndCount(existing) + ": exists already; choose another target or replace it with -f");
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
    std::cerr << "xlatr: nothing to write: the source holds no messages\n";
  }
  for (const auto& name : names) {
    const std::string path = files.directory + name;
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    std::cerr << "xlatr: wrote " + oneLine(path) + (error ? "" : " (" + sizeText(size) + ")") + "\n";
  }
}

[[noreturn]] void failConversion(const std::string& source, const std::string& reason) {
  fail(source + ": " + reason + "; nothing was written");
}

void requireSuccess(const ConversionRequest& request, const ConversionOutcome& outcome) {
  switch (outcome.status) {
    case XLATR_SUCCESS:
      return;
    case XLATR_NOTHING_CONVERTED:
      fail(request.source + ": holds nothing to convert; check the file and the sessions that you named");
    case XLATR_FAILED:
      failConversion(request.source, outcome.text.empty() ? "the conversion failed" : outcome.text);
    default:
      failConversion(request.source, "the conversion ended with the unknown status " + std::to_string(outcome.status));
  }
}

ExitCode convert(const Arguments& arguments, const CompatFile& file, ProgressForm form) {
  const TraceFormat format = requireTargetFormat(arguments, file.target);
  const double version = requireTargetVersion(arguments, format);
  ConversionRequest request{
      .source = file.source, .target = {}, .format = format, .options = conversionOptions(arguments)};

  requireReadable(file.source);
  const TraceFormat sourceFormat = requireTraceFormat(file.source);
  requirePossiblePair(file.source, sourceFormat, format);
  requireNamedFile(file.target);
  const TargetFiles files = targetFiles(file.target, format, version, sourceFormat);
  if (arguments.skipExisting && !files.existing().empty()) {
    return ExitCode::Done;
  }
  requireFreeTarget(arguments, file, files);
  request.target = files.pathForLibrary();

  ConversionOutcome outcome;
  {
    constexpr std::uint64_t kWhole = 10'000;  // parts of a percent, since the library tells nothing else
    Progress progress(form, 1, kWhole);
    std::uint64_t shown = 0;
    outcome = runConversion(request, [&](double percent) {
      // A conversion without anything to do has no percent.
      const double known = std::isnan(percent) ? 0.0 : std::clamp(percent, 0.0, 100.0);
      const auto now = std::max(shown, static_cast<std::uint64_t>(known * 100.0));
      progress.add(now - shown, 0);
      shown = now;
    });
  }
  if (outcome.interrupted) {
    printError(file.source + ": interrupted; nothing was written");
    return interruption().value_or(ExitCode::Interrupted);
  }
  requireSuccess(request, outcome);

  if (arguments.quiet == 0) {
    printWritten(files, outcome.files);
  }
  bool warned = warnIfNotValid(file.source, sourceFormat, format);
  if (!outcome.text.empty()) {
    printWarning(file.source + ": " + outcome.text);
    warned = true;
  }
  return warned ? ExitCode::DoneWithLosses : ExitCode::Done;
}

}  // namespace

void requireCompatOptions(const Arguments& arguments) {
  static constexpr std::array<std::string_view, 17> kOptions = {
      "--recursive", "--files-from", "--null",  "--shard",         "--to",     "--output-dir", "--target-version",
      "--zipped",    "--separator",  "--force", "--skip-existing", "--compat", "--sorted",     "--session",
      "--progress",  "--quiet",      "--help"};
  for (const OptionRow& option : optionTable()) {
    if (isGiven(option, arguments) && std::ranges::find(kOptions, longNameOf(option)) == kOptions.end()) {
      refuseUsage(std::string(longNameOf(option)) + ": there is no such option with --compat");
    }
  }
}

ExitCode runCompatConversions(const Arguments& arguments, const std::vector<JobPaths>& conversions) {
  const ProgressForm form = progressForm(arguments);
  ExitCode code = ExitCode::Done;
  watchSignals();
  for (const JobPaths& paths : conversions) {
    const CompatFile file{paths.sources.front(), paths.target};
    if (file.source == kStandardStream || file.target == kStandardStream) {
      refuseUsage("-: --compat converts files only");
    }
    try {
      code = worse(code, convert(arguments, file, form));
    } catch (const CommandFailure& failure) {
      printError(failure.what());
      code = worse(code, failure.code());
    }
    if (interruption()) {
      break;
    }
  }
  return code;
}

}  // namespace xlatr::cli
