// What all messages have in common, whatever trace they came from.
#pragma once

#include <cstdint>
#include <vector>

#include "messages/enumerations.hpp"

namespace xlatr {

// A message as a writer takes it. Writers map each class that they know to their own; there is no neutral message.
class IMessage {
 public:
  virtual ~IMessage();
  // The frame identifier; 0xFFFFFFFF if there is none.
  [[nodiscard]] virtual std::uint32_t getIdentifier() const = 0;
  // Whether the record was understood and may be written.
  [[nodiscard]] virtual bool getValid() const = 0;
  // Data length in bytes, never the DLC.
  [[nodiscard]] virtual std::uint32_t getLength() const = 0;
  // The first data byte; owned by the message.
  [[nodiscard]] virtual const std::uint8_t* getData() const = 0;

 protected:
  IMessage() = default;
  IMessage(const IMessage&) = default;
  IMessage(IMessage&&) = default;
  IMessage& operator=(const IMessage&) = default;
  IMessage& operator=(IMessage&&) = default;
};

// The value of a missing identifier.
inline constexpr std::uint32_t kNoIdentifier = 0xFFFFFFFF;

// The common fields. Messages are plain values that parsers and mappings fill, so their fields are public.
class Message : public IMessage {
 public:
  [[nodiscard]] std::uint32_t getIdentifier() const override { return id; }
  [[nodiscard]] bool getValid() const override { return valid; }
  [[nodiscard]] std::uint32_t getLength() const override { return length; }
  [[nodiscard]] const std::uint8_t* getData() const override { return data.data(); }

  std::uint32_t id = kNoIdentifier;
  bool valid = false;
  std::uint32_t length = 0;        // bytes, which may be more than `data` holds (a remote frame has a length, no data)
  std::vector<std::uint8_t> data;  // the payload

 protected:
  // Sets what a message without content has; `data` keeps its storage, so that a message can be reused.
  void resetCommonFields() {
    id = kNoIdentifier;
    valid = false;
    length = 0;
    data.clear();
  }
};

// The fields of a message on a CAN bus.
class MessageStyleCan : public Message {
 public:
  std::uint32_t bus = 255;  // counted from 1; 255 before it is set
  MessageType type = MessageType::Unknown;
  MessageDirection direction = MessageDirection::None;
  bool extended = false;  // 29-bit identifier

 protected:
  // `noBus`: the format's value for an unknown bus.
  void resetCommonFields(std::uint32_t noBus) {
    Message::resetCommonFields();
    bus = noBus;
    type = MessageType::Unknown;
    direction = MessageDirection::None;
    extended = false;
  }
};

}  // namespace xlatr
