// Frames as short texts, for tests that compare what a reader made of a file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "frames/frame_stream.hpp"

namespace xlatr::test {

// "1500 data 2 1ABC x Rx FD BRS dlc9 [0102] "text" error_type=1": the time in nanoseconds, the kind, the bus, the
// identifier, the flags, the DLC unless it is 0, the bytes, the text, and the attributes.
inline std::string textOf(const Frame& frame) {
  struct Flag {
    std::uint16_t bit;
    const char* word;
  };
  static constexpr Flag kFlags[] = {
      {frame_flag::kExtended, " x"}, {frame_flag::kReceived, " Rx"},    {frame_flag::kTransmitted, " Tx"},
      {frame_flag::kFd, " FD"},      {frame_flag::kBrs, " BRS"},        {frame_flag::kEsi, " ESI"},
      {frame_flag::kXl, " XL"},      {frame_flag::kDlcKnown, " known"}, {frame_flag::kEnhancedChecksum, " enhanced"},
  };
  const auto hex = [](std::uint32_t number, const char* form) {
    char digits[16];
    std::snprintf(digits, sizeof digits, form, number);
    return std::string(digits);
  };
  std::string text = std::to_string(frame.timeNs) + " " + std::string(frameKindName(frame.kind)) + " " +
                     std::to_string(frame.bus) + " " + hex(frame.id, "%X");
  for (const Flag& flag : kFlags) {
    text += frame.has(flag.bit) ? flag.word : "";
  }
  text += frame.dlc != 0 ? " dlc" + std::to_string(frame.dlc) : "";
  if (!frame.data.empty()) {
    text += " [";
    for (const std::uint8_t byte : frame.data) {
      text += hex(byte, "%02X");
    }
    text += "]";
  }
  text += frame.text ? " \"" + std::string(*frame.text) + "\"" : "";
  for (std::size_t at = 0; at < kFrameAttributeCount; ++at) {
    const auto attribute = static_cast<FrameAttribute>(at);
    if (const auto value = frame.attributes.get(attribute)) {
      text += " " + std::string(frameAttributeName(attribute)) + "=" + std::to_string(*value);
    }
  }
  return text;
}

// Reads a stream to its end.
inline std::vector<std::string> textsOf(FrameSource& source, Account& account) {
  std::vector<std::string> texts;
  FrameBatch batch;
  while (source.read(batch, account)) {
    for (std::size_t row = 0; row < batch.size(); ++row) {
      texts.push_back(textOf(batch.at(row)));
    }
    batch.clear();
  }
  return texts;
}

}  // namespace xlatr::test
