// How frames are taken from the records of a group on the complete way, worked out once for all of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "formats/mf4/mdf_channel_search.hpp"
#include "formats/mf4/mdf_data_stream.hpp"
#include "formats/mf4/mdf_record_value.hpp"
#include "formats/mf4/mdf_tree.hpp"
#include "formats/mf4/mdf_variable_records.hpp"
#include "frames/account.hpp"
#include "frames/frame.hpp"
#include "frames/frame_batch.hpp"

namespace xlatr {

struct MdfCanMembers;

// What a layout is made with.
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

  // Puts what the rows have of times; those without a time, or marked as invalid, are no frames.
  void readTimes(const MdfRows& rows, std::int64_t* times, bool* known) const;
  // Adds the frames of `count` rows from the row on, which have these times, to a batch that has room for them. The
  // record before the first of them has the number `record`; what had to be guessed, or is no frame, is noted.
  void readFrames(const MdfRow& first, std::size_t count, const std::int64_t* times, std::uint64_t record,
                  FrameBatch& batch, Account& account);
  // No frame has more bytes.
  [[nodiscard]] std::size_t longestData() const;
  // Frees what is held.
  void close();

 private:
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

  MdfFrameLayout() = default;

  void addMember(const MdfLayoutContext& context, MdfMember member, const MdfChannel& channel,
                 const ChannelGroupBlockData& group);
  void addPayload(const MdfLayoutContext& context, const MdfChannel& channel, const ChannelGroupBlockData& group);
  void addLengthOf(const MdfLayoutContext& context, const MdfChannel& payload, const ChannelGroupBlockData& group);
  [[nodiscard]] bool hasAllThatIsNeeded() const;

  [[nodiscard]] bool has(MdfMember member) const { return slots_[static_cast<std::size_t>(member)] != kNoValue; }
  [[nodiscard]] std::optional<std::uint64_t> get(MdfMember member, const MdfRow& row) const {
    const std::size_t slot = slots_[static_cast<std::size_t>(member)];
    return slot == kNoValue ? std::nullopt : values_[slot].read(row);
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
  std::vector<MdfValue> values_;
  std::optional<Payload> payload_;
  bool plainPayload_ = false;  // it stands in the record and is always valid
  std::uint16_t busNumber_ = 0;
  std::string eventText_;
};

}  // namespace xlatr
