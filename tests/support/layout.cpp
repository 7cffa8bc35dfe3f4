#include "support/layout.hpp"

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

namespace xlatr::test {
namespace {

namespace fs = std::filesystem;
using Tokens = std::vector<std::string>;

std::string littleEndian(std::uint64_t value, std::size_t size) {
  std::string bytes;
  for (std::size_t index = 0; index < size; ++index) {
    bytes.push_back(static_cast<char>(value >> (8 * index) & 0xFF));
  }
  return bytes;
}

// Cuts a line into tokens; a quoted text is one token with its quotes, "(" and ")" are tokens of their own.
Tokens tokensOf(const std::string& line) {
  Tokens tokens;
  std::size_t position = 0;
  while (position < line.size() && line[position] != '#') {
    const char first = line[position];
    std::size_t end = position + 1;
    if (first == ' ') {
      position = end;
      continue;
    }
    if (first == '"') {
      end = line.find('"', end);
      if (end == std::string::npos) {
        throw LayoutError("text without an end");
      }
      ++end;
    } else if (first != '(' && first != ')') {
      end = std::min(line.find_first_of(" ()", position), line.size());
    }
    tokens.push_back(line.substr(position, end - position));
    position = end;
  }
  return tokens;
}

struct Line {
  std::string place;
  Tokens tokens;
};

std::string readText(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    throw LayoutError("cannot read " + path.string());
  }
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Splits a text into its lines that say something, with those that it includes.
void appendLines(const std::string& text, const fs::path& path, std::vector<Line>& lines,
                 std::vector<fs::path>& included) {
  std::istringstream stream(text);
  std::size_t number = 0;
  for (std::string content; std::getline(stream, content);) {
    const std::string place = path.filename().string() + ":" + std::to_string(++number) + ": " + content;
    try {
      Tokens tokens = tokensOf(content);
      if (tokens.empty()) {
        continue;
      }
      if (tokens[0] != "include") {
        lines.push_back({.place = place, .tokens = std::move(tokens)});
        continue;
      }
      const fs::path other = (path.parent_path() / tokens.at(1)).lexically_normal();
      included.push_back(other);
      appendLines(readText(other), other, lines, included);
    } catch (const LayoutError& error) {
      throw LayoutError(std::string(error.what()) + "\n  in " + place);
    } catch (const std::out_of_range&) {
      throw LayoutError("include without a path\n  in " + place);
    }
  }
}

std::string deflated(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string result(size, '\0');
  if (compress(reinterpret_cast<Bytef*>(result.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
               bytes.size()) != Z_OK) {
    throw LayoutError("cannot deflate");
  }
  result.resize(size);
  return result;
}

// Lays the lines once. Places that only later lines name are not known yet the first time; the next time they are.
class Pass {
 public:
  Pass(const std::vector<Line>& lines, LayoutNames names, std::map<std::string, std::uint64_t> places,
       std::uint64_t start, bool checked)
      : lines_(lines), names_(std::move(names)), places_(std::move(places)), start_(start), checked_(checked) {}

  void lay() {
    for (std::size_t next = 0; next < lines_.size();) {
      layLine(next);
    }
  }

  [[nodiscard]] const std::map<std::string, std::uint64_t>& places() const { return places_; }
  [[nodiscard]] LaidOut& result() { return result_; }

 private:
  [[nodiscard]] std::uint64_t offset() const { return start_ + result_.bytes.size(); }

  void require(bool condition, const std::string& what) const {
    if (checked_ && !condition) {
      throw LayoutError(what);
    }
  }

  // Lays the line and the lines that belong to it.
  void layLine(std::size_t& next) {
    const Line& line = lines_[next++];
    try {
      const std::string& first = line.tokens[0];
      if (first == "}") {
        throw LayoutError("no line is open");
      }
      if (first == "repeat") {
        layRepeated(line, next);
      } else if (first == "align") {
        append(line, std::string(gapTo(number(line.tokens.at(1))), '\0'));
      } else if (first.front() == '$' && line.tokens.size() == 3 && line.tokens[1] == "=") {
        define(first.substr(1), line.tokens[2]);
      } else if (first.front() == '@') {
        layPlaced(line, next);
      } else {
        append(line, fields(line.tokens, 0, line.tokens.size()));
      }
    } catch (const LayoutError& error) {
      const std::string what = error.what();
      throw LayoutError(what.find("\n  in ") == std::string::npos ? what + "\n  in " + line.place : what);
    } catch (const std::logic_error& error) {  // at(), stoull()
      throw LayoutError("not understood (" + std::string(error.what()) + ")\n  in " + line.place);
    }
  }

  // The bytes up to the next multiple of a size.
  [[nodiscard]] std::uint64_t gapTo(std::uint64_t size) const {
    if (size == 0) {
      throw LayoutError("no multiple of 0");
    }
    return (size - offset() % size) % size;
  }

  // Lays what belongs to an open line, up to its "}".
  void layInner(std::size_t& next) {
    while (true) {
      if (next == lines_.size()) {
        throw LayoutError("{ without its }");
      }
      if (lines_[next].tokens[0] == "}") {
        ++next;
        return;
      }
      layLine(next);
    }
  }

  void layRepeated(const Line& line, std::size_t& next) {
    const std::uint64_t count = number(line.tokens.at(1));
    if (line.tokens.at(2) != "{" || count == 0) {
      throw LayoutError("a repetition has a count and a {");
    }
    const std::size_t first = next;
    for (std::uint64_t index = 0; index < count; ++index) {
      next = first;
      layInner(next);
    }
  }

  void layPlaced(const Line& line, std::size_t& next) {
    const Tokens& tokens = line.tokens;
    const std::uint64_t begin = offset();
    place(tokens[0].substr(1), begin);
    const std::string& id = tokens.at(1);
    if (id == "end") {
      return;
    }
    if (id == "zipped") {
      layZipped(line, next);
      return;
    }
    const bool open = tokens.back() == "{";
    const std::uint64_t length = number(tokens.at(2));
    std::size_t at = 3;
    std::string bytes;
    if (id != "raw") {
      bytes = head(id, length, tokens, at);
    }
    append(line, bytes + fields(tokens, at, tokens.size() - (open ? 1 : 0)));
    if (open) {
      layInner(next);
    }
    require(offset() - begin == length, "has length " + std::to_string(offset() - begin));
  }

  void layZipped(const Line& line, std::size_t& next) {
    const std::string& id = line.tokens.at(2);
    if (line.tokens.at(3) != "{") {
      throw LayoutError("a zipped block has an ID and a {");
    }
    LaidOut outer = std::exchange(result_, {});
    layInner(next);
    const std::string plain = std::exchange(result_, std::move(outer)).bytes;
    const std::string zipped = deflated(plain);
    append(line, "##DZ" + std::string(4, '\0') + littleEndian(48 + zipped.size(), 8) + littleEndian(0, 8) + id +
                     std::string(6, '\0') + littleEndian(plain.size(), 8) + littleEndian(zipped.size(), 8) + zipped);
  }

  [[nodiscard]] std::string head(const std::string& id, std::uint64_t length, const Tokens& tokens,
                                 std::size_t& next) const {
    if (tokens.at(next++) != "(") {
      throw LayoutError("a block has links in brackets");
    }
    std::string links;
    while (tokens.at(next) != ")") {
      links += littleEndian(number(tokens.at(next++)), 8);
    }
    ++next;
    return "##" + id + std::string(4, '\0') + littleEndian(length, 8) + littleEndian(links.size() / 8, 8) + links;
  }

  void append(const Line& line, const std::string& bytes) {
    result_.bytes += bytes;
    result_.lines.push_back(line.place);
    result_.ends.push_back(result_.bytes.size());
  }

  void place(const std::string& text, std::uint64_t here) {
    if (text.starts_with('$') && !names_.numbers.contains(text.substr(1))) {
      const std::string name = text.substr(1);
      require(!placed_.contains(name), "is the place of two lines");
      placed_[name] = places_[name] = here;
      return;
    }
    require(number(text) == here, "stands at " + std::to_string(here));
  }

  void define(const std::string& name, const std::string& value) {
    if (value.front() == '"') {
      names_.texts[name] = value.substr(1, value.size() - 2);
    } else {
      names_.numbers[name] = number(value);
    }
  }

  [[nodiscard]] std::string fields(const Tokens& tokens, std::size_t begin, std::size_t end) const {
    std::string bytes;
    for (std::size_t next = begin; next < end; ++next) {
      bytes += field(tokens[next]);
    }
    return bytes;
  }

  [[nodiscard]] std::string field(const std::string& token) const {
    if (token.front() == '"') {
      return token.substr(1, token.size() - 2);
    }
    const std::size_t colon = token.find(':');
    if (colon == std::string::npos) {
      if (token.front() == 'z') {
        return std::string(std::stoul(token.substr(1)), '\0');
      }
      if (token.size() != 2 || token.find_first_not_of("0123456789ABCDEF") != std::string::npos) {
        throw LayoutError("no field: " + token);
      }
      return {static_cast<char>(std::stoul(token, nullptr, 16))};
    }
    const std::string value = token.substr(colon + 1);
    const std::size_t size = std::stoul(token.substr(1, colon - 1));
    switch (token.front()) {
      case 's': {
        std::string text = value.starts_with('$') ? names_.texts.at(value.substr(1)) : value;
        text.resize(size);
        return text;
      }
      case 'u':
        return littleEndian(number(value), size / 8);
      case 'f':
        return littleEndian(std::bit_cast<std::uint64_t>(std::stod(value)), 8);
      default:
        throw LayoutError("no field: " + token);
    }
  }

  [[nodiscard]] std::uint64_t number(const std::string& text) const {
    const std::size_t plus = text.find('+');
    if (plus != std::string::npos) {
      return number(text.substr(0, plus)) + number(text.substr(plus + 1));
    }
    if (!text.starts_with('$')) {
      return std::stoull(text, nullptr, 0);
    }
    const std::string name = text.substr(1);
    if (const auto named = names_.numbers.find(name); named != names_.numbers.end()) {
      return named->second;
    }
    const auto there = places_.find(name);
    require(there != places_.end(), "no such name: " + text);
    return there == places_.end() ? 0 : there->second;
  }

  const std::vector<Line>& lines_;
  LayoutNames names_;
  std::map<std::string, std::uint64_t> places_;  // of this pass as far as it has come, of the last one from there on
  std::map<std::string, std::uint64_t> placed_;
  std::uint64_t start_;
  bool checked_;
  LaidOut result_;
};

LaidOut layLines(const std::vector<Line>& lines, const LayoutNames& names, std::uint64_t start) {
  std::map<std::string, std::uint64_t> places;
  for (int round = 0; round < 4; ++round) {  // deflated numbers move the places after them
    Pass trial(lines, names, places, start, false);
    trial.lay();
    if (std::exchange(places, trial.places()) == trial.places()) {
      break;
    }
  }
  Pass pass(lines, names, places, start, true);
  pass.lay();
  if (pass.places() != places) {
    throw LayoutError("the places of the lines do not come to rest");
  }
  return std::move(pass.result());
}

}  // namespace

std::string LaidOut::lineAt(std::size_t offset) const {
  const auto end = std::ranges::upper_bound(ends, offset);
  return end == ends.end() ? "" : lines[static_cast<std::size_t>(end - ends.begin())];
}

std::string layOut(std::string_view layout, const LayoutNames& names, std::uint64_t start) {
  std::vector<Line> lines;
  std::vector<fs::path> included;
  appendLines(std::string(layout), "layout", lines, included);
  return layLines(lines, names, start).bytes;
}

LaidOut laidOutFile(const fs::path& path, const LayoutNames& names) {
  std::vector<Line> lines;
  std::vector<fs::path> included;
  appendLines(readText(path), path, lines, included);
  return layLines(lines, names, 0);
}

std::string layOutFile(const fs::path& path, const LayoutNames& names) {
  return laidOutFile(path, names).bytes;
}

std::vector<fs::path> includesOf(const fs::path& layout) {
  std::vector<Line> lines;
  std::vector<fs::path> included;
  appendLines(readText(layout), layout, lines, included);
  return included;
}

}  // namespace xlatr::test
