// What binary records and blocks have in common.
#pragma once

#include <cstdint>
#include <vector>

namespace xlatr {

// Something that has an image in a file.
class ISerializable {
 public:
  virtual ~ISerializable();
  // The bytes of the object as they stand in a file; owned by the caller.
  [[nodiscard]] virtual std::vector<std::uint8_t> Serialize() const = 0;

 protected:
  ISerializable() = default;
  ISerializable(const ISerializable&) = default;
  ISerializable(ISerializable&&) = default;
  ISerializable& operator=(const ISerializable&) = default;
  ISerializable& operator=(ISerializable&&) = default;
};

// A record whose time can be moved.
class ITimestampAdjustable {
 public:
  virtual ~ITimestampAdjustable();
  // Adds to every time of the record, modulo 2^64.
  virtual void AdjustTimestamp(std::uint64_t delta) = 0;

 protected:
  ITimestampAdjustable() = default;
  ITimestampAdjustable(const ITimestampAdjustable&) = default;
  ITimestampAdjustable(ITimestampAdjustable&&) = default;
  ITimestampAdjustable& operator=(const ITimestampAdjustable&) = default;
  ITimestampAdjustable& operator=(ITimestampAdjustable&&) = default;
};

}  // namespace xlatr
