#include "conversions/golden_case.hpp"

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;

struct NamedFormat {
  std::string_view name;
  TraceFormat format;
};
constexpr std::array kFormats = {
    NamedFormat{"trc", XLATR_FORMAT_TRC},   NamedFormat{"asc", XLATR_FORMAT_ASC}, NamedFormat{"csv", XLATR_FORMAT_CSV},
    NamedFormat{"lin", XLATR_FORMAT_LIN},   NamedFormat{"btr", XLATR_FORMAT_BTR}, NamedFormat{"mf4", XLATR_FORMAT_MF4},
    NamedFormat{"btrc", XLATR_FORMAT_BTRC},
};

std::string trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \r");
  return begin == std::string_view::npos ? ""
                                         : std::string(text.substr(begin, text.find_last_not_of(" \r") + 1 - begin));
}

std::vector<std::string> words(const std::string& value) {
  std::istringstream stream(value);
  std::vector<std::string> result;
  for (std::string word; stream >> word;) {
    result.push_back(word);
  }
  return result;
}

// A text in quotes, with \n, \" and \\.
std::string quoted(const std::string& value) {
  if (value.size() < 2 || value.front() != '"' || value.back() != '"') {
    throw std::runtime_error("a text stands in quotes");
  }
  std::string text;
  for (std::size_t at = 1; at + 1 < value.size(); ++at) {
    const bool isEscape = value[at] == '\\' && at + 2 < value.size();
    const char character = isEscape ? value[++at] : value[at];
    text += isEscape && character == 'n' ? '\n' : character;
  }
  return text;
}

bool yesOrNo(const std::string& value) {
  if (value != "yes" && value != "no") {
    throw std::runtime_error("yes or no");
  }
  return value == "yes";
}

TraceFormat formatNamed(const std::string& name) {
  const auto* const row = std::ranges::find(kFormats, name, &NamedFormat::name);
  if (row == kFormats.end()) {
    throw std::runtime_error("the pair does not end in the name of a format: " + name);
  }
  return row->format;
}

char separatorNamed(const std::string& value) {
  if (value == "tab") {
    return '\t';
  }
  if (value.size() != 1) {
    throw std::runtime_error("a separator is one character, or \"tab\"");
  }
  return value[0];
}

std::int32_t codeNamed(const std::string& value) {
  static const std::map<std::string, std::int32_t> codes = {
      {"success", XLATR_SUCCESS}, {"failed", XLATR_FAILED}, {"nothing converted", XLATR_NOTHING_CONVERTED}};
  return codes.at(value);
}

using Setter = std::function<void(GoldenTarget&, const std::string&)>;

const std::map<std::string, Setter>& setters() {
  using Target = GoldenTarget;
  using Value = const std::string&;
  static const std::map<std::string, Setter> table = {
      {"target", [](Target& target, Value value) { target.path = value; }},
      {"version",
       [](Target& target, Value value) {
         target.versions.clear();
         for (const std::string& word : words(value)) {
           target.versions.emplace_back(std::stod(word));
         }
       }},
      {"separator", [](Target& target, Value value) { target.separator = separatorNamed(value); }},
      {"sorted", [](Target& target, Value value) { target.sorted = yesOrNo(value); }},
      {"zipped", [](Target& target, Value value) { target.zipped = yesOrNo(value); }},
      {"sessions",
       [](Target& target, Value value) {
         for (const std::string& word : words(value)) {
           target.sessions.push_back(static_cast<std::uint32_t>(std::stoul(word)));
         }
       }},
      {"code", [](Target& target, Value value) { target.code = codeNamed(value); }},
      {"text", [](Target& target, Value value) { target.text += quoted(value); }},
      {"text begins",
       [](Target& target, Value value) {
         target.text = quoted(value);
         target.textGoesOn = true;
       }},
      {"files", [](Target& target, Value value) { target.files = words(value); }},
      {"folders", [](Target& target, Value value) { target.folders = words(value); }},
  };
  return table;
}

// The one file in the folder that is called source, whatever its ending.
fs::path ownSource(const fs::path& folder) {
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.path().filename().string().starts_with("source.")) {
      return entry.path();
    }
  }
  throw std::runtime_error("neither a source nor a line that names one");
}

// A case while its lines are read.
class Reader {
 public:
  explicit Reader(const fs::path& folder) {
    case_.folder = folder;
    const std::string pair = folder.parent_path().filename().string();
    common_.folder = folder;
    common_.format = formatNamed(pair.substr(pair.find('-') + 1));
    common_.path = "out." + pair.substr(pair.find('-') + 1);
    common_.versions = {std::nullopt};
  }

  void take(const std::string& line) {
    if (line.empty() || line.starts_with('#')) {
      return;
    }
    if (line.front() == '[' && line.back() == ']') {
      GoldenTarget section = common_;
      section.name = line.substr(1, line.size() - 2);
      section.folder = case_.folder / section.name;
      case_.targets.push_back(section);
      return;
    }
    const std::size_t sign = line.find('=');
    if (sign == std::string::npos) {
      throw std::runtime_error("no KEY = VALUE");
    }
    set(trimmed(std::string_view(line).substr(0, sign)), trimmed(std::string_view(line).substr(sign + 1)));
  }

  [[nodiscard]] GoldenCase ended() {
    if (case_.targets.empty()) {
      case_.targets.push_back(common_);
    }
    if (case_.source.empty()) {
      case_.source = ownSource(case_.folder);
    }
    case_.sourceName =
        case_.source.extension() == kLayoutEnding ? case_.source.stem().string() : case_.source.filename().string();
    return std::move(case_);
  }

 private:
  void set(const std::string& key, const std::string& value) {
    if (key == "source") {
      case_.source = (case_.folder / value).lexically_normal();
      return;
    }
    GoldenTarget& target = case_.targets.empty() ? common_ : case_.targets.back();
    if (key == "unit tests") {
      for (const std::string& name : words(value)) {
        case_.unitTestFiles.push_back((target.folder / name).lexically_normal());
      }
      return;
    }
    if (key == "modified") {
      case_.modified = std::stoll(value);
      return;
    }
    const auto setter = setters().find(key);
    if (setter == setters().end()) {
      throw std::runtime_error("no such key");
    }
    setter->second(target, value);
  }

  GoldenCase case_;
  GoldenTarget common_;  // what every section begins with
};

}  // namespace

std::vector<fs::path> goldenCaseFolders() {
  std::vector<fs::path> folders;
  for (const fs::directory_entry& pair : fs::directory_iterator(XLATR_GOLDEN_DIR)) {
    if (pair.is_directory()) {
      for (const fs::directory_entry& entry : fs::directory_iterator(pair)) {
        if (fs::exists(entry.path() / "options")) {
          folders.push_back(entry.path());
        }
      }
    }
  }
  std::ranges::sort(folders);
  return folders;
}

GoldenCase readGoldenCase(const fs::path& folder) {
  const fs::path path = folder / "options";
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    throw std::runtime_error("cannot read " + path.string());
  }
  Reader reader(folder);
  std::size_t number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    try {
      reader.take(trimmed(line));
    } catch (const std::exception& error) {
      throw std::runtime_error(path.string() + ":" + std::to_string(number) + ": " + error.what() + ": " + line);
    }
  }
  return reader.ended();
}

fs::path expectedFile(const GoldenTarget& target, const std::string& name) {
  const fs::path layout = target.folder / (name + std::string(kLayoutEnding));
  return fs::exists(layout) ? layout : target.folder / name;
}

}  // namespace xlatr::conversions
