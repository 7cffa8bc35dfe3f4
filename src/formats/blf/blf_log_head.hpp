// The head of a BLF log.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "io/input_file.hpp"

namespace xlatr::blf_log {

struct FileHeader {
  std::uint64_t firstObject = 0;  // offset in the file
  std::uint32_t apiNumber = 0;    // as it stands
  std::uint32_t objectCount = 0;  // as it stands; a log that was not closed may have 0
  std::array<std::uint16_t, 8>
      startTime{};  // by DateField, all 0 without a date or for one that does not exist; local time
};

// From the first bytes of a file; nothing when they are no BLF log.
[[nodiscard]] std::optional<FileHeader> parseFileHeader(std::span<const std::uint8_t> bytes);

// The same from the file. Throws std::ios_base::failure when it can't be read.
[[nodiscard]] std::optional<FileHeader> readFileHeader(const InputSource& source);

// The version of the log in four decimal pairs, AABBCCDD; 0 if the number in the header is not one.
[[nodiscard]] std::int32_t fileVersion(const FileHeader& header);

}  // namespace xlatr::blf_log
