// The numbers of records, one by one or of many records at once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "formats/mf4/mdf_channel_search.hpp"
#include "formats/mf4/mdf_conversion.hpp"
#include "formats/mf4/mdf_number_field.hpp"
#include "formats/mf4/mdf_time_scale.hpp"
#include "formats/mf4/mdf_tree.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// Records of a group that are at hand together. Those of a file that is stored by columns are one of each column.
struct MdfRows {
  static constexpr std::size_t kMostColumns = 24;
  static constexpr std::size_t kMost = 128;

  using Places = std::array<const std::uint8_t*, kMost>;
  struct Column {
    Places records{};  // with MdfDataStream::kPadding readable bytes after each
    Places invalid{};  // their invalidation bits; null where there are none
  };

  std::vector<Column> columns;
  std::uint64_t firstIndex = 0;  // of the first record in its group
  std::size_t count = 0;
};

// One of them.
struct MdfRow {
  const MdfRows& rows;
  std::size_t at;

  [[nodiscard]] const std::uint8_t* record(std::size_t column) const { return rows.columns[column].records[at]; }
  [[nodiscard]] const std::uint8_t* invalid(std::size_t column) const { return rows.columns[column].invalid[at]; }
  [[nodiscard]] std::uint64_t index() const { return rows.firstIndex + at; }
};

// Numbers of successive records.
struct MdfNumbers {
  std::array<std::uint64_t, MdfRows::kMost> values;
  std::array<bool, MdfRows::kMost> known;  // whether the record says anything

  [[nodiscard]] bool isAtMost(std::size_t at, std::uint64_t most) const { return known[at] && values[at] <= most; }
  [[nodiscard]] std::optional<std::uint64_t> get(std::size_t at) const {
    return known[at] ? std::optional(values[at]) : std::nullopt;
  }
};

// A number of a record.
class MdfValue {
 public:
  // Nothing for a channel that has no number, or lies outside of records of this size.
  [[nodiscard]] static std::optional<MdfValue> of(MdfTree& tree, const MdfChannel& channel,
                                                  const ChannelGroupBlockData& group);
  // That of a channel whose number is an index into its conversion's table of bytes. Nothing without a conversion.
  [[nodiscard]] static std::optional<MdfValue> ofTableBytes(MdfTree& tree, const MdfChannel& channel,
                                                            const ChannelGroupBlockData& group);
  // Whether a channel is valid, without its number.
  [[nodiscard]] static MdfValue validityOf(MdfTree& tree, const MdfChannel& channel,
                                           const ChannelGroupBlockData& group);

  // Nothing if the record says that the value is invalid, and for what the conversion says nothing of.
  [[nodiscard]] std::optional<std::uint64_t> read(const MdfRow& row) const {
    return isPlain_ ? std::optional(number_.read(row.record(column_))) : readConverted(row);
  }
  // The same of a record without a row, for values that are always valid and stand in it. False for nothing: this runs
  // for each part of each message, and moves of an optional take longer than all the rest.
  [[nodiscard]] bool readRecord(const std::uint8_t* record, std::uint64_t& value) const {
    value = number_.read(record);
    return isPlain_ || convert(value);
  }
  // The same as read(row) of `count` records from the row on.
  void read(const MdfRow& first, std::size_t count, MdfNumbers& numbers) const;
  // Sets the bit for those that are known and not 0.
  void readBits(const MdfRow& first, std::size_t count, std::uint16_t bit, std::uint16_t* bits) const;
  [[nodiscard]] bool isValid(const MdfRow& row) const { return invalidBit_ == kAlwaysValid || isMarkedValid(row); }
  [[nodiscard]] bool isAlwaysValid() const { return invalidBit_ == kAlwaysValid; }

 private:
  enum class Form : std::uint8_t { Unsigned, Signed, Real16, Real32, Real64, Index };
  static constexpr std::int64_t kAlwaysValid = -1;
  static constexpr std::int64_t kNeverValid = -2;
  static constexpr std::uint32_t kMostPrepared = 8;  // bits of a number whose results are worked out before

  friend class MdfTimeReader;

  // Without its conversion, its form only if `formed`: bits are unsigned.
  [[nodiscard]] static std::optional<MdfValue> rawOf(MdfTree& tree, const MdfChannel& channel,
                                                     const ChannelGroupBlockData& group, bool formed);
  void setConversion(std::unique_ptr<MdfConversion> conversion);
  void prepare();
  void setVirtual(MdfTree& tree);
  [[nodiscard]] bool setNumber(MdfTree& tree, const ChannelBlockData& data, std::uint64_t dataBytes, bool formed);
  [[nodiscard]] bool setForm(const ChannelBlockData& data);
  [[nodiscard]] bool isMarkedValid(const MdfRow& row) const;
  [[nodiscard]] std::uint64_t bits(const MdfRow& row) const {
    return form_ == Form::Index ? row.index() : number_.read(row.record(column_));
  }
  [[nodiscard]] double realOf(std::uint64_t bits) const;
  [[nodiscard]] std::int64_t signedOf(std::uint64_t bits) const;
  [[nodiscard]] std::optional<std::uint64_t> converted(std::uint64_t bits) const;
  [[nodiscard]] std::optional<std::uint64_t> readConverted(const MdfRow& row) const;
  [[nodiscard]] bool convert(std::uint64_t& value) const {
    const auto found = result(value);
    value = found.value_or(0);
    return found.has_value();
  }
  [[nodiscard]] std::optional<std::uint64_t> result(std::uint64_t bits) const {
    return prepared_ ? (*prepared_)[static_cast<std::size_t>(bits)] : converted(bits);
  }

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

// The times of records.
class MdfTimeReader {
 public:
  // Nothing for a channel whose times can't be told.
  [[nodiscard]] static std::optional<MdfTimeReader> of(MdfTree& tree, const MdfChannel& channel,
                                                       const ChannelGroupBlockData& group);

  // Of all the rows, in nanoseconds; `known` says which of them have one.
  void read(const MdfRows& rows, std::int64_t* times, bool* known) const;
  // On the compatible way: of one record, and not rounded.
  [[nodiscard]] std::optional<RealMicroseconds> readReal(const std::uint8_t* record) const;
  // Whether the file does not say in which unit its times are.
  [[nodiscard]] bool isGuessed() const { return guessed_; }

 private:
  [[nodiscard]] bool setUnit(MdfTree& tree, std::uint64_t conversion);
  [[nodiscard]] bool setScale(MdfTree& tree, const MdfChannel& channel);
  [[nodiscard]] std::optional<std::int64_t> converted(std::uint64_t bits) const;

  MdfValue value_;                     // before any conversion, if there is a scale
  std::optional<MdfTimeScale> scale_;  // nothing for a conversion that is not linear
  std::int64_t nsPerUnit_ = 1'000'000'000;
  bool guessed_ = false;
  TimeUnit unit_ = TimeUnit::Nanosecond;  // on the compatible way
};

}  // namespace xlatr
