// A message of a BTR file.
#pragma once

#include <array>
#include <cstdint>

#include "formats/native/btr_layout.hpp"
#include "messages/message.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// A frame slot that holds a frame, with its time in the recording. The bus counts from 0.
class SessionMessage final : public IMessage {
 public:
  SessionMessage() = default;
  SessionMessage(const MsgEntry& slot, RealMilliseconds timeOfFrame) : entry(slot), time(timeOfFrame) {}

  [[nodiscard]] std::uint32_t getIdentifier() const override { return entry.id; }
  // Whether the slot holds a frame with an identifier, or an error or status frame of a bus.
  [[nodiscard]] bool getValid() const override;
  // The low half of the slot's source byte, which in a damaged file can be more than the eight data bytes.
  [[nodiscard]] std::uint32_t getLength() const override { return entry.getLength(); }
  [[nodiscard]] const std::uint8_t* getData() const override { return entry.data.data(); }

  MsgEntry entry;
  RealMilliseconds time{};  // since the start of the session, at which its time stamps begin
};

}  // namespace xlatr
