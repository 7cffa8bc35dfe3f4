#include "support/mf4_layout.hpp"

#include <bit>
#include <cctype>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace xlatr::test {
namespace {

std::string littleEndian(std::uint64_t value, std::size_t size) {
  std::string bytes;
  for (std::size_t index = 0; index < size; ++index) {
    bytes.push_back(static_cast<char>(value >> (8 * index) & 0xFF));
  }
  return bytes;
}

// Cuts a line into tokens; a quoted text is one token with its quotes, "(" and ")" are tokens of their own.
std::vector<std::string> tokensOf(const std::string& line) {
  std::vector<std::string> tokens;
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
        throw LayoutError("text without an end: " + line);
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

class LineLayer {
 public:
  LineLayer(const LayoutNames& names, std::uint64_t start) : names_(names), start_(start) {}

  void lay(const std::string& line) {
    const std::vector<std::string> tokens = tokensOf(line);
    if (tokens.empty()) {
      return;
    }
    std::size_t next = 0;
    if (tokens[0].front() != '@') {
      layFields(tokens, next);
      return;
    }
    const std::uint64_t begin = start_ + bytes_.size();
    require(number(tokens[0].substr(1)) == begin, line, "stands at " + std::to_string(begin));
    const std::string& id = tokens.at(1);
    if (id == "end") {
      return;
    }
    const std::uint64_t length = number(tokens.at(2));
    next = 3;
    if (id != "raw") {
      layHead(id, length, tokens, next);
    }
    layFields(tokens, next);
    const std::uint64_t laid = start_ + bytes_.size() - begin;
    require(laid == length, line, "has length " + std::to_string(laid));
  }

  [[nodiscard]] const std::string& bytes() const { return bytes_; }

 private:
  static void require(bool condition, const std::string& line, const std::string& what) {
    if (!condition) {
      throw LayoutError(what + ": " + line);
    }
  }

  void layHead(const std::string& id, std::uint64_t length, const std::vector<std::string>& tokens, std::size_t& next) {
    std::string links;
    if (tokens.at(next++) != "(") {
      throw LayoutError("a block has links in brackets: " + id);
    }
    while (tokens.at(next) != ")") {
      links += littleEndian(number(tokens.at(next++)), 8);
    }
    ++next;
    bytes_ += "##" + id + std::string(4, '\0') + littleEndian(length, 8) + littleEndian(links.size() / 8, 8) + links;
  }

  void layFields(const std::vector<std::string>& tokens, std::size_t next) {
    for (; next < tokens.size(); ++next) {
      bytes_ += field(tokens[next]);
    }
  }

  [[nodiscard]] std::string field(const std::string& token) const {
    if (token.front() == '"') {
      return token.substr(1, token.size() - 2);
    }
    const std::size_t colon = token.find(':');
    const std::string value = colon == std::string::npos ? "" : token.substr(colon + 1);
    if (colon == std::string::npos) {
      if (token.front() == 'z') {
        return std::string(std::stoul(token.substr(1)), '\0');
      }
      if (token.size() != 2) {
        throw LayoutError("no field: " + token);
      }
      return {static_cast<char>(std::stoul(token, nullptr, 16))};
    }
    const std::size_t size = std::stoul(token.substr(1, colon - 1));
    switch (token.front()) {
      case 's': {
        std::string text = value.front() == '$' ? names_.texts.at(value.substr(1)) : value;
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
    if (text.front() == '$') {
      return names_.numbers.at(text.substr(1));
    }
    return std::stoull(text, nullptr, 0);
  }

  const LayoutNames& names_;
  std::uint64_t start_;
  std::string bytes_;
};

}  // namespace

std::string layOut(std::string_view layout, const LayoutNames& names, std::uint64_t start) {
  LineLayer layer(names, start);
  std::istringstream lines{std::string(layout)};
  for (std::string line; std::getline(lines, line);) {
    layer.lay(line);
  }
  return layer.bytes();
}

std::string layOutFile(const std::filesystem::path& path, const LayoutNames& names) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    throw LayoutError("cannot read " + path.string());
  }
  return layOut(std::string{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()}, names);
}

}  // namespace xlatr::test
