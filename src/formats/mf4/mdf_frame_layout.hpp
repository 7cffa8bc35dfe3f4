// How frames are taken from the records of a group on the complete way, worked out once for all of them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "formats/mf4/mdf_channel_search.hpp"
#include "formats/mf4/mdf_conversion.hpp"
#include "formats/mf4/mdf_data_stream.hpp"
#include "formats/mf4/mdf_number_field.hpp"
#include "formats/mf4/mdf_time_scale.hpp"
#include "formats/mf4/mdf_tree.hpp"
#include "formats/mf4/mdf_variable_records.hpp"
#include "frames/account.hpp"
#include "frames/frame.hpp"

namespace xlatr {

// The records that make a frame: one, or of a file that is stored by columns one of each column.
struct MdfRow {
  static constexpr std::size_t kMostColumns = 24;

  std::array<const std::uint8_t*, kMostColumns> records{};  // with MdfDataStream::kPadding readable bytes after each
  std::array<const std::uint8_t*, kMostColumns> invalid{};  // their invalidation bits; null where there are none
  std::uint64_t index = 0;                                  // of the record in its group
};

// A number of a record.
class MdfValue {
 public:
  // Nothing for a channel that has no number, or lies outside of records of this size.
  [[nodiscard]] static std::optional<MdfValue> of(MdfTree& tree, const MdfChannel& channel,
                                                  const ChannelGroupBlockData& group);

  // Nothing if the record says that the value is invalid, and for what the conversion says nothing of.
  [[nodiscard]] std::optional<std::uint64_t> read(const MdfRow& row) const {
    return isPlain_ ? std::optional(number_.read(row.records[column_])) : readConverted(row);
  }
  [[nodiscard]] bool isValid(const MdfRow& row) const;
  // Of times: the value before any conversion.
  [[nodiscard]] std::optional<std::int64_t> readTime(const MdfRow& row, const MdfTimeScale& scale) const;
  [[nodiscard]] std::optional<double> readReal(const MdfRow& row) const;

 private:
  enum class Form : std::uint8_t { Unsigned, Signed, Real16, Real32, Real64, Index };
  static constexpr std::int64_t kAlwaysValid = -1;
  static constexpr std::int64_t kNeverValid = -2;
  static constexpr std::uint32_t kMostPrepared = 8;  // bits of a number whose results are worked out before

  friend class MdfTimeReader;

  [[nodiscard]] std::uint64_t bits(const MdfRow& row) const {
    return form_ == Form::Index ? row.index : number_.read(row.records[column_]);
  }
  [[nodiscard]] double realOf(std::uint64_t bits) const;
  [[nodiscard]] std::int64_t signedOf(std::uint64_t bits) const;
  [[nodiscard]] std::optional<std::uint64_t> converted(std::uint64_t bits) const;
  [[nodiscard]] std::optional<std::uint64_t> readConverted(const MdfRow& row) const;

  MdfNumberField number_;
  std::uint32_t column_ = 0;
  bool isPlain_ = false;
  Form form_ = Form::Unsigned;
  std::uint32_t bitCount_ = 0;
  std::int64_t invalidBit_ = kAlwaysValid;
  bool lacksConversion_ = false;  // there is one that can't be read
  std::shared_ptr<const MdfConversion> conversion_;
  std::shared_ptr<const std::vector<std::optional<std::uint64_t>>> prepared_;
};

// The time of a record.
class MdfTimeReader {
 public:
  [[nodiscard]] static std::optional<MdfTimeReader> of(MdfTree& tree, const MdfChannel& channel,
                                                       const ChannelGroupBlockData& group);

  [[nodiscard]] std::optional<std::int64_t> read(const MdfRow& row) const;
  // Whether the file does not say in which unit its times are.
  [[nodiscard]] bool isGuessed() const { return guessed_; }

 private:
  MdfValue value_;
  std::optional<MdfTimeScale> scale_;  // nothing for a conversion that is not linear
  std::int64_t nsPerUnit_ = 1'000'000'000;
  bool guessed_ = false;
};

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

  // Fills a frame, which must be like a new one, but for its place. False for a record that is invalid or is no frame.
  // What the frame refers to stays until the next call. What had to be guessed is noted.
  [[nodiscard]] bool read(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account);
  // Frees what is held.
  void close();

 private:
  static constexpr std::size_t kNoValue = 0xFF;

  struct Payload {
    std::uint32_t offset = 0;  // in the record
    std::uint32_t size = 0;
    std::size_t column = 0;
    std::optional<MdfValue> position;  // of values elsewhere
    std::unique_ptr<MdfDataStream> stored;
    std::unique_ptr<MdfVariableRecords> variable;
    bool inOrder = false;
    std::optional<MdfValue> validity;
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
  [[nodiscard]] bool isSet(MdfMember member, const MdfRow& row) const { return get(member, row).value_or(0) != 0; }

  void readBus(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account) const;
  [[nodiscard]] bool readId(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account) const;
  void readDirection(const MdfRow& row, Frame& frame) const;
  void readRemote(const MdfRow& row, Frame& frame) const;
  [[nodiscard]] bool readData(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account);
  [[nodiscard]] bool readLin(const MdfRow& row, Frame& frame, std::uint64_t place, Account& account);
  void readError(const MdfRow& row, Frame& frame) const;
  void readLinEvent(const MdfRow& row, Frame& frame);
  // The payload of a frame that has `length` bytes, where that is stated. Nothing if it can't be found.
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> readPayload(const MdfRow& row,
                                                                         std::optional<std::uint64_t> length);
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> storedPayload(const MdfRow& row);

  const MdfFrameName* name_ = nullptr;
  std::optional<MdfTimeReader> time_;
  std::optional<MdfValue> whole_;  // whose invalidation bit counts
  std::array<std::uint8_t, kMdfMemberCount> slots_{};
  std::vector<MdfValue> values_;
  std::optional<Payload> payload_;
  std::uint16_t busNumber_ = 0;
  std::string eventText_;
};

}  // namespace xlatr
