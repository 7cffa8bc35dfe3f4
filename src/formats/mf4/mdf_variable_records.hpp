// Values of varying length that stand between the records of a data group.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>

#include "formats/mf4/mdf_data_stream.hpp"

namespace xlatr {

// What of a data group is needed to go through its records: their sizes by record id.
struct MdfRecordSizes {
  static constexpr std::uint32_t kVariable = 0xFFFFFFFF;

  std::uint8_t idSize = 0;
  std::unordered_map<std::uint64_t, std::uint64_t> sizes;  // without record id, with invalidation bytes
};

// Goes through the data of a group a second time, for the values of one of its channel groups. An offset counts the
// values' bytes with the four of their lengths, as if they stood one after the other.
class MdfVariableRecords {
 public:
  // The sizes must outlive it.
  MdfVariableRecords(MdfDataFile& file, std::uint64_t dataLink, const MdfRecordSizes& sizes, std::uint64_t recordId,
                     const MdfStreamLimits& limits)
      : file_(file), stream_(file, dataLink, MdfDataRole::Values, limits), sizes_(sizes), recordId_(recordId) {}

  // The value at this offset, up to `longest` bytes. Nothing if there is none. It stays until the next call.
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> at(std::uint64_t offset, std::size_t longest);
  // The value after the last one that was found: for offsets that the writer never filled in.
  [[nodiscard]] std::optional<std::span<const std::uint8_t>> next(std::size_t longest) { return at(next_, longest); }
  void close() { stream_.close(); }

 private:
  static constexpr std::size_t kLengthSize = 4;

  // Goes to the next value; false at the end.
  [[nodiscard]] bool findValue(std::uint32_t& length);

  MdfDataFile& file_;
  MdfDataStream stream_;
  const MdfRecordSizes& sizes_;
  std::uint64_t recordId_;
  std::uint64_t position_ = 0;  // in the data: of a record that was not looked at yet
  std::uint64_t next_ = 0;      // the offset of the next value
};

}  // namespace xlatr
