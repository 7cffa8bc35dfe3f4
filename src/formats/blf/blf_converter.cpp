#include "formats/blf/blf_converter.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

#include "platform/module_path.hpp"
#include "util/host.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kProgramName = "BLF2CSV.exe";
constexpr std::int32_t kNoAnswer = -1;

// Above this are negative answers, of which an exit code keeps eight bits, and ends by a signal.
constexpr std::uint32_t kLargestExitAnswer = 127;

// More than the longest number and its line end; a longer output is no answer.
constexpr std::size_t kMostOutput = 64;

// The number that is the only line of the output.
std::optional<std::int32_t> parseAnswer(std::string_view output) {
  for (const char lineEnd : {'\n', '\r'}) {
    if (output.ends_with(lineEnd)) {
      output.remove_suffix(1);
    }
  }
  std::int32_t number = 0;
  const char* const end = output.data() + output.size();
  const auto [stop, error] = std::from_chars(output.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

// Two decimal digits each, and what the others leave in front.
std::array<std::int32_t, 4> versionPairs(std::int32_t version) {
  constexpr std::int32_t kPair = 100;
  const std::int32_t code = std::max(version, 0);
  return {code / (kPair * kPair * kPair), code / (kPair * kPair) % kPair, code / kPair % kPair, code % kPair};
}

}  // namespace

BlfConverter::BlfConverter() : BlfConverter(getLibraryDirectory()) {}

BlfConverter::BlfConverter(const std::string& folder) : path_(folder) {
  path_ += platform::pathSeparator();
  path_ += kProgramName;
}

std::int32_t BlfConverter::queryApiVersion() const {
  return ask({"-GetApiVersion"});
}

std::int32_t BlfConverter::queryFileVersion(const std::string& source) const {
  return ask({"-GetFileVersion", source});
}

std::int32_t BlfConverter::queryObjectsCount(const std::string& source) const {
  return ask({"-GetObjectsCount", source});
}

std::int32_t BlfConverter::ask(const std::vector<std::string>& arguments) const {
  const auto answer = runCommandAndRead(path_, arguments, kMostOutput);
  if (!answer) {
    return kNoAnswer;
  }
  if (const auto number = parseAnswer(answer->output)) {
    return *number;
  }
  return answer->exitCode <= kLargestExitAnswer ? static_cast<std::int32_t>(answer->exitCode) : kNoAnswer;
}

bool BlfConverter::start(const std::string& source, const std::string& table, const std::string& blockName,
                         platform::Process& process) const {
  return startCommand(path_, {source, table, blockName}, process);
}

double blfVersionNumber(std::int32_t version) {
  const auto [major, minor, release, build] = versionPairs(version);
  return major + minor / 100.0 + release / 10000.0 + build / 1000000.0;
}

std::string blfVersionText(std::int32_t version) {
  std::string text;
  for (const std::int32_t pair : versionPairs(version)) {
    text.append(text.empty() ? "" : ".").append(std::to_string(pair));
  }
  return text.append("\n");
}

double blfCurrentVersion() {
  static const double version = blfVersionNumber(BlfConverter().queryApiVersion());
  return version;
}

}  // namespace xlatr
