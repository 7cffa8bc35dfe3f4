#include "platform/posix/package_note.hpp"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <system_error>

namespace xlatr::platform {

namespace {

constexpr std::uint32_t kPackageNoteType = 0xCAFE1A7E;
constexpr std::string_view kOwner("FDO\0", 4);
constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kJsonBlanks = " \t\r\n";

struct NoteHeader {
  std::uint32_t ownerSize = 0;
  std::uint32_t descriptionSize = 0;
  std::uint32_t type = 0;
};
constexpr std::size_t kNoteHeaderSize = 12;
static_assert(sizeof(NoteHeader) == kNoteHeaderSize);

constexpr std::uint64_t alignUp(std::uint64_t offset, std::uint64_t alignment) {
  return (offset + alignment - 1) / alignment * alignment;
}

std::string_view asText(std::span<const std::byte> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::size_t skipJsonBlanks(std::string_view json, std::size_t position) {
  return std::min(json.find_first_not_of(kJsonBlanks, position), json.size());
}

// The position of the quote that ends the string whose first character is at `position`, or the end of the text.
std::size_t findStringEnd(std::string_view json, std::size_t position) {
  while (position < json.size() && json[position] != '"') {
    position += json[position] == '\\' ? 2U : 1U;
  }
  return std::min(position, json.size());
}

// The text of a field of the outermost object, with its escapes unchanged; nothing if the field holds no text.
std::optional<std::string_view> findTextField(std::string_view json, std::string_view name) {
  std::size_t depth = 0;
  for (std::size_t position = 0; position < json.size(); ++position) {
    const char character = json[position];
    if (character == '{' || character == '[') {
      ++depth;
    } else if ((character == '}' || character == ']') && depth > 0) {
      --depth;
    }
    if (character != '"') {
      continue;
    }
    const std::size_t start = position + 1;
    position = findStringEnd(json, start);
    const std::size_t colon = skipJsonBlanks(json, position + 1);
    if (depth != 1 || json.substr(start, position - start) != name || json.substr(colon, 1) != ":") {
      continue;
    }
    const std::size_t value = skipJsonBlanks(json, colon + 1);
    if (json.substr(value, 1) != "\"") {
      return std::nullopt;
    }
    return json.substr(value + 1, findStringEnd(json, value + 1) - (value + 1));
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string_view> findPackageNote(std::span<const std::byte> notes, std::size_t alignment) {
  const std::uint64_t step = alignment == 8 ? 8 : 4;
  // 64-bit offsets: two 32-bit sizes from the file can't make them overflow.
  std::uint64_t offset = 0;
  while (offset + kNoteHeaderSize <= notes.size()) {
    NoteHeader header;
    std::memcpy(&header, notes.data() + offset, kNoteHeaderSize);
    const std::uint64_t owner = offset + kNoteHeaderSize;
    const std::uint64_t description = alignUp(owner + header.ownerSize, step);
    const std::uint64_t end = description + header.descriptionSize;
    if (end > notes.size()) {
      return std::nullopt;
    }
    if (header.type == kPackageNoteType && asText(notes.subspan(owner, header.ownerSize)) == kOwner) {
      const std::string_view text = asText(notes.subspan(description, header.descriptionSize));
      return text.substr(0, text.find('\0'));
    }
    offset = alignUp(end, step);
  }
  return std::nullopt;
}

std::optional<std::array<std::uint32_t, 4>> packageNoteVersion(std::string_view json) {
  std::string_view rest = findTextField(json, "version").value_or(std::string_view());
  std::array<std::uint32_t, 4> parts{};
  std::size_t count = 0;
  while (count < parts.size()) {
    rest.remove_prefix(std::min(rest.find_first_of(kDigits), rest.size()));
    if (rest.empty()) {
      break;
    }
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), parts[count]);
    if (error == std::errc::result_out_of_range) {
      parts[count] = std::numeric_limits<std::uint32_t>::max();
    }
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    ++count;
  }
  return count == 0 ? std::nullopt : std::optional(parts);
}

}  // namespace xlatr::platform
