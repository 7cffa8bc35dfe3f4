// How frames are taken from the records of a group, worked out once for all of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/mf4/mdf_channel_search.hpp"
#include "formats/mf4/mdf_data_stream.hpp"
#include "formats/mf4/mdf_record_value.hpp"
#include "formats/mf4/mdf_tree.hpp"
#include "formats/mf4/mdf_variable_records.hpp"
#include "formats/mf4/record_bytes.hpp"
#include "frames/account.hpp"
#include "frames/frame.hpp"
#include "frames/frame_batch.hpp"
#include "util/little_endian.hpp"

namespace xlatr {

class MdfCanMessage;
struct MdfCanMembers;

// What a layout is made with on the complete way.
struct MdfLayoutContext {
  MdfTree& tree;
  MdfDataFile& file;
  const std::vector<MdfGroupInfo>& groups;
  const MdfStreamLimits& limits;
  // The sizes of records by the position of the data group; they stay where they are.
  const std::unordered_map<std::uint64_t, MdfRecordSizes>& sizes;
  bool offsetsUnknown = false;  // the offsets of values in variable-length groups were never filled in
};

class MdfFrameLayout {
 public:
  static constexpr std::size_t kLongestPayload = 2048;  // that of CAN XL

  // Null if the group's frames can't be told: without a time, an identifier where the kind has one. `columns` are the
  // groups of the table; the first of them says what it holds.
  [[nodiscard]] static std::unique_ptr<MdfFrameLayout> make(const MdfLayoutContext& context,
                                                            const std::vector<const MdfGroupInfo*>& columns);

  // On the compatible way: that of the frames of a channel whose parts are its composition. Null if they are too many.
  // Raises the failures of the blocks, and one for payloads that stand in a stream.
  [[nodiscard]] static std::unique_ptr<MdfFrameLayout> ofComposition(MdfTree& tree, const MdfFrameName& name,
                                                                     ChannelBlock& frame, std::string_view separator,
                                                                     const ChannelGroupBlockData& group);

  // Puts what the rows have of times; those without a time, or marked as invalid, are no frames.
  void readTimes(const MdfRows& rows, std::int64_t* times, bool* known) const;
  // Adds the frames of `count` rows from the row on, which have these times, to a batch that has room for them. The
  // record before the first of them has the number `record`; what had to be guessed, or is no frame, is noted.
  void readFrames(const MdfRow& first, std::size_t count, const std::int64_t* times, std::uint64_t record,
                  FrameBatch& batch, Account& account);
  // On the compatible way, in mdf_message_decoding.cpp: the message of a record. False for one that lacks what a frame
  // needs. A message of another bus than CAN raises a failure.
  [[nodiscard]] bool readMessage(const std::uint8_t* record, MdfCanMessage& message) const;
  // No frame has more bytes.
  [[nodiscard]] std::size_t longestData() const;
  // Frees what is held.
  void close();

 private:
  // A frame with more parts of known names than this is not read on the compatible way; there are 22 names.
  static constexpr std::size_t kMostParts = 64;
  static constexpr std::size_t kNoValue = 0xFF;
  static constexpr std::array<std::uint8_t, 8> kNoBytes{};
  static constexpr std::span<const std::uint8_t> kNoData{kNoBytes.data(), 0};

  struct Payload {
    std::uint32_t offset = 0;  // in the record
    std::uint32_t size = 0;
    std::size_t column = 0;
    std::optional<MdfValue> position;  // of values elsewhere
    std::unique_ptr<MdfDataStream> stored;
    std::unique_ptr<MdfVariableRecords> variable;
    bool inOrder = false;
    MdfValue validity;
  };

  // Where the payload stands in its record, or what says where it stands elsewhere. Nothing if it lies outside of the
  // record. Raises a failure for a stream on the compatible way.
  [[nodiscard]] static std::optional<Payload> payloadOf(MdfTree& tree, const MdfChannel& channel,
                                                        const ChannelGroupBlockData& group);

  struct Field {
    MdfMember member;
    std::uint32_t found = 0;    // its bit in the fields that a message has
    std::uint32_t payload = 0;  // of DataBytes: the index of them
    MdfValue value;             // of all others
  };

  MdfFrameLayout() = default;

  void addMember(const MdfLayoutContext& context, MdfMember member, const MdfChannel& channel,
                 const ChannelGroupBlockData& group);
  void addPayload(const MdfLayoutContext& context, const MdfChannel& channel, const ChannelGroupBlockData& group);
  [[nodiscard]] static bool openStored(const MdfLayoutContext& context, const MdfChannel& channel, Payload& payload);
  void addLengthOf(const MdfLayoutContext& context, const MdfChannel& payload, const ChannelGroupBlockData& group);
  [[nodiscard]] bool hasAllThatIsNeeded() const;
  // The same on the compatible way.
  void addPart(MdfTree& tree, BusEventField field, const ChannelBlock& part, const ChannelGroupBlockData& group);
  void addLoadedPayload(MdfTree& tree, const ChannelBlock& part, const ChannelGroupBlockData& group);
  [[nodiscard]] bool readPart(const Field& field, const std::uint8_t* record, MdfCanMessage& message) const;
  [[nodiscard]] bool readLoadedPayload(const Payload& payload, const std::uint8_t* record,
                                       std::vector<std::uint8_t>& bytes) const;

  [[nodiscard]] bool has(MdfMember member) const { return slots_[static_cast<std::size_t>(member)] != kNoValue; }
  [[nodiscard]] std::optional<std::uint64_t> get(MdfMember member, const MdfRow& row) const {
    const std::size_t slot = slots_[static_cast<std::size_t>(member)];
    return slot == kNoValue ? std::nullopt : fields_[slot].value.read(row);
  }

  // Data and remote frames, in mdf_can_decoding.cpp.
  void readCanFrames(const MdfRow& first, std::size_t count, const std::int64_t* times, std::uint64_t record,
                     FrameBatch& batch, Account& account);
  void readMembers(const MdfRow& first, std::size_t count, MdfCanMembers& members) const;
  void readNumbers(MdfMember member, const MdfRow& first, std::size_t count, MdfNumbers& numbers) const;
  void readBits(MdfMember member, const MdfRow& first, std::size_t count, std::uint16_t bit, std::uint16_t* bits) const;

  // All others, one by one. The frame must be like a new one. False for a record that is no frame. What the frame
  // refers to stays until the next call.
  [[nodiscard]] bool readOther(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account);
  [[nodiscard]] bool readLin(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account);
  void readError(const MdfRow& row, Frame& frame) const;
  void readLinEvent(const MdfRow& row, Frame& frame);

  // A frame that names no bus is one of the group's. False if that, or nothing, had to be taken.
  [[nodiscard]] bool setBus(std::optional<std::uint64_t> named, std::uint16_t& bus) const {
    constexpr std::uint64_t kHighest = 0xFFFF;
    const bool usable = named && *named <= kHighest;
    bus = usable ? static_cast<std::uint16_t>(*named) : busNumber_;
    return usable || (!named && busNumber_ == 0);
  }
  // Outside of records each payload has its length before it. Nothing if it is not there, or too long for any frame.
  template <class Data>
  [[nodiscard]] static std::optional<std::span<const std::uint8_t>> payloadAt(Data& data, std::uint64_t offset) {
    constexpr std::size_t kLengthSize = 4;
    const std::uint8_t* bytes = data.at(offset, kLengthSize);
    const std::uint32_t size = bytes != nullptr ? loadLittle<std::uint32_t>(bytes) : 0;
    if (bytes == nullptr || size > kLongestPayload) {
      return std::nullopt;
    }
    bytes = data.at(offset, kLengthSize + size);
    return bytes != nullptr ? std::optional(std::span(bytes + kLengthSize, size)) : std::nullopt;
  }
  // The payload of a frame that has `length` bytes, where that is stated, and 8 readable bytes after it. Nothing if it
  // can't be found.
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> readPayload(const MdfRow& row,
                                                                         std::optional<std::uint64_t> length) {
    if (plainPayload_ && length && *length <= payload_->size && *length <= kLongestPayload) {
      return std::span(row.record(payload_->column) + payload_->offset, static_cast<std::size_t>(*length));
    }
    return findPayload(row, length);
  }
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> findPayload(const MdfRow& row,
                                                                         std::optional<std::uint64_t> length);
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> storedPayload(const MdfRow& row);

  const MdfFrameName* name_ = nullptr;
  std::optional<MdfTimeReader> time_;
  std::optional<MdfValue> whole_;  // whose invalidation bit counts
  std::array<std::uint8_t, kMdfMemberCount> slots_{};
  std::vector<Field> fields_;      // in the order of their channels
  std::uint32_t alwaysFound_ = 0;  // parts of no matter for a message, as a mask of BusEventField
  std::vector<Payload> payloads_;
  Payload* payload_ = nullptr;  // the first of them, the only one on the complete way
  RecordBytes loaded_;          // on the compatible way: the payloads that stand outside of records
  bool plainPayload_ = false;   // it stands in the record and is always valid
  std::uint16_t busNumber_ = 0;
  std::string eventText_;
};

}  // namespace xlatr
