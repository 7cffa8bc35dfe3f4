#include "convert_command.hpp"

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "command_failure.hpp"
#include "compat/compat_command.hpp"
#include "conversions.hpp"
#include "formats.hpp"
#include "job.hpp"
#include "source_list.hpp"
#include "standard_streams.hpp"
#include "terminal.hpp"

namespace xlatr::cli {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failUsage(const std::string& text) {
  throw CommandFailure(ExitCode::WrongUsage, text);
}

bool isFolder(const std::string& path) {
  std::error_code error;
  return path.ends_with('/') || fs::is_directory(path, error);
}

// As cp does: the last path is the folder if there is no other one named.
Arguments withFolder(Arguments arguments) {
  if (arguments.outputFolder.empty() && arguments.paths.size() > 1 && isFolder(arguments.paths.back())) {
    arguments.outputFolder = arguments.paths.back();
    arguments.paths.pop_back();
  }
  return arguments;
}

// "logs/a/b.mf4" below "logs" is "out/a/b.trc".
std::string targetIn(const std::string& folder, const SourceFile& source, TraceFormat format) {
  fs::path below(source.below);
  if (formatFromName(extensionOf(source.below)) != XLATR_FORMAT_NONE) {
    below.replace_extension(formatExtension(format));
  } else {
    below += formatExtension(format);
  }
  return (fs::path(folder) / below).string();
}

std::vector<JobPaths> intoFolder(const Arguments& arguments, const JobSettings& settings) {
  if (settings.targetFormat() == XLATR_FORMAT_NONE) {
    failUsage(arguments.outputFolder + ": say with --to in which format to write: " + nameList(writtenFormats()));
  }
  const TraceFormat format = settings.formatOfTarget(arguments.outputFolder);
  std::vector<JobPaths> conversions;
  std::map<std::string, std::string> sourceOf;
  for (const SourceFile& source : sourceList(arguments, arguments.paths)) {
    if (source.path == kStandardStream) {
      failUsage("-: standard input has no name to write under in a folder; name a target");
    }
    const std::string target = targetIn(arguments.outputFolder, source, format);
    const auto [entry, added] = sourceOf.emplace(target, source.path);
    if (!added) {
      failUsage(entry->second + " and " + source.path + " would both become " + target +
                "; convert them into different folders");
    }
    conversions.push_back({{source.path}, target});
  }
  return conversions;
}

JobPaths oneTarget(const Arguments& arguments, const JobSettings& settings) {
  if (arguments.recursive || !arguments.filesFrom.empty() || !arguments.shard.empty()) {
    failUsage("say with -O into which folder to convert the files");
  }
  if (arguments.paths.size() == 1) {
    failUsage(arguments.paths.front() + ": name a TARGET after it, or a folder with -O");
  }
  if (arguments.paths.size() > 2) {
    failUsage(std::to_string(arguments.paths.size() - 1) + " sources and the target " + arguments.paths.back() +
              ", which is no folder: name a folder to convert each into, or use 'xlatr merge ... -o " +
              arguments.paths.back() + "' to put them into one file");
  }
  JobPaths paths{{arguments.paths.front()}, arguments.paths.back()};
  if (paths.sources.front() == kStandardStream && inputIsTerminal()) {
    failUsage("-: standard input is the terminal; redirect a trace to it");
  }
  if (!arguments.compat) {
    static_cast<void>(settings.formatOfTarget(paths.target));
  }
  return paths;
}

}  // namespace

ExitCode runConvert(const Arguments& typed) {
  const Arguments arguments = withFolder(typed);
  if (arguments.compat) {
    requireCompatOptions(arguments);
  }
  const JobSettings settings(arguments);
  std::vector<JobPaths> conversions;
  if (arguments.outputFolder.empty()) {
    conversions.push_back(oneTarget(arguments, settings));
  } else {
    conversions = intoFolder(arguments, settings);
  }
  if (arguments.compat) {
    return runCompatConversions(arguments, conversions);
  }
  return runConversions(arguments, settings, conversions);
}

}  // namespace xlatr::cli
