#include "util/text.hpp"

#include <array>
#include <climits>
#include <cstddef>
#include <unordered_set>

namespace xlatr {

namespace {

// Lines are cut once per message, so a separator test is one table look-up for a set of any size.
class CharacterSet {
 public:
  explicit CharacterSet(std::string_view characters) {
    for (const char character : characters) {
      members_[static_cast<unsigned char>(character)] = true;
    }
  }
  [[nodiscard]] bool contains(char character) const { return members_[static_cast<unsigned char>(character)]; }

 private:
  std::array<bool, UCHAR_MAX + 1> members_{};
};

// The end of the span from `start` on whose characters are all in the set, or all out of it.
std::size_t endOfSpan(std::string_view text, std::size_t start, const CharacterSet& set, bool in) {
  while (start < text.size() && set.contains(text[start]) == in) {
    ++start;
  }
  return start;
}

// Calls `take` with each token, from the first to the last.
template <typename Take>
void forEachToken(std::string_view text, const CharacterSet& separators, bool collapse, Take take) {
  std::size_t start = collapse ? endOfSpan(text, 0, separators, true) : 0;
  while (!collapse || start < text.size()) {
    const std::size_t end = endOfSpan(text, start, separators, false);
    take(text.substr(start, end - start));
    if (end == text.size()) {
      return;
    }
    start = collapse ? endOfSpan(text, end, separators, true) : end + 1;
  }
}

template <typename Token>
void split(std::string_view text, std::string_view separators, std::vector<Token>& tokens, bool collapse, bool unique) {
  tokens.clear();
  // A set, because a search through the list would take minutes for a damaged file that is one long line.
  std::unordered_set<std::string_view> seen;
  forEachToken(text, CharacterSet(separators), collapse, [&](std::string_view token) {
    if (!unique || seen.insert(token).second) {
      tokens.emplace_back(token);
    }
  });
}

std::string_view firstToken(std::string_view text, const CharacterSet& separators) {
  const std::size_t start = endOfSpan(text, 0, separators, true);
  return text.substr(start, endOfSpan(text, start, separators, false) - start);
}

std::string_view lastToken(std::string_view text, const CharacterSet& separators) {
  std::string_view last;
  forEachToken(text, separators, true, [&last](std::string_view token) { last = token; });
  return last;
}

}  // namespace

void splitText(std::string_view text, std::string_view separators, std::vector<std::string>& tokens, bool collapse,
               bool unique) {
  split(text, separators, tokens, collapse, unique);
}

void splitText(std::string_view text, std::string_view separators, std::vector<std::string_view>& tokens, bool collapse,
               bool unique) {
  split(text, separators, tokens, collapse, unique);
}

void parseKeyValues(std::string_view text, std::string_view separators, KeyValues& values) {
  values.clear();
  const CharacterSet blanks(separators);
  std::string_view key;
  bool first = true;
  forEachToken(text, CharacterSet("="), false, [&](std::string_view piece) {
    if (!first && !key.empty()) {
      values.insert_or_assign(std::string(key), std::string(firstToken(piece, blanks)));
    }
    key = lastToken(piece, blanks);
    first = false;
  });
}

void trimBlanks(std::string& text) {
  trimCharacters(text, kBlanks);
}

void trimCharacters(std::string& text, std::string_view characters) {
  // From the end first, so that the front is moved once over what stays.
  text.erase(text.find_last_not_of(characters) + 1);
  text.erase(0, text.find_first_not_of(characters));
}

std::string normalizeBlanks(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  forEachToken(text, CharacterSet(" "), true, [&result](std::string_view word) {
    if (!result.empty()) {
      result += ' ';
    }
    result += word;
  });
  return result;
}

std::string toUpperAscii(std::string_view text) {
  std::string result(text);
  for (char& character : result) {
    character = toUpperAscii(character);
  }
  return result;
}

std::size_t findIgnoreCase(std::string_view text, std::string_view upperCase) {
  const auto found = std::search(text.begin(), text.end(), upperCase.begin(), upperCase.end(),
                                 [](char character, char wanted) { return toUpperAscii(character) == wanted; });
  return found == text.end() && !upperCase.empty() ? std::string_view::npos
                                                   : static_cast<std::size_t>(found - text.begin());
}

}  // namespace xlatr
