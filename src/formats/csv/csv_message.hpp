// A row of a CSV table.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "formats/csv/csv_columns.hpp"
#include "io/quirk.hpp"
#include "messages/message.hpp"
#include "util/text_buffer.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// What the rows of the external BLF converter say about an object. The fields are named like the columns.
struct BlfObjectFields {
  std::uint32_t objectType = 0;
  std::uint64_t objectTicks = 0;  // of 10 microseconds when the object's flag is 1, otherwise nanoseconds
  std::uint32_t objectFlags = 0;
  std::uint32_t blfId = 0;
  std::uint16_t channel = 0;
  std::uint32_t flags = 0;
  std::uint16_t flagsExt = 0;
  std::uint8_t ecc = 0;
  std::uint8_t canFdFlags = 0;
  std::uint8_t dir = 0;
  std::uint16_t crc = 0;
  std::uint16_t objectVersion = 0;
  std::uint8_t checksumModel = 0;
};

// The fields of CAN XL, one bit each.
namespace csv_xl_bit {
inline constexpr std::uint8_t kVcid = 1;
inline constexpr std::uint8_t kSdt = 2;
inline constexpr std::uint8_t kAf = 4;
inline constexpr std::uint8_t kRrs = 8;
inline constexpr std::uint8_t kSec = 16;
}  // namespace csv_xl_bit

// What a row of the table that is written here holds beyond what every message has; the texts are members of the
// message.
struct CsvRowFields {
  MessageKind kind = MessageKind::Unknown;
  RealMilliseconds time{};  // since the start of the trace
  bool remote = false;
  std::uint16_t reserved = 0xFFFF;  // none
  std::uint8_t vcid = 0xFF;         // the five fields of CAN XL
  std::uint8_t sdt = 0xFF;
  std::uint32_t af = 0xFFFFFFFF;
  std::uint8_t rrs = 0;
  std::uint8_t sec = 0;
  bool wideRow = false;  // the row has the columns of CAN XL

  // On the complete way alone.
  std::optional<std::int64_t> timeNs = {};  // counts instead of `time`
  bool lengthUnknown = false;               // of a remote frame
  bool hasText = false;                     // which may be empty
  std::uint8_t missingXlFields = 0;         // csv_xl_bit
};

// What a cell without a value shows.
inline constexpr char kCsvNone = '-';

// One row, of the table that is written here or of the wider one that the external BLF converter writes, and what
// becomes one. Bus numbers count from 1.
class CsvMessage final : public MessageStyleCan, public CsvRowFields, public BlfObjectFields {
 public:
  CsvMessage() = default;
  explicit CsvMessage(std::string columnSeparator) : separator(std::move(columnSeparator)) {}

  static constexpr std::uint16_t kNoReserved = CsvRowFields().reserved;

  // Makes the message as new, except for the separator and the columns; keeps the storage of texts and data.
  void reset();

  // Fills a fresh message from a row, cut at the separator, whose cells are where the columns say. A row that can't be
  // understood leaves the message not valid, with what was read so far; nothing is raised for it, and nothing of `row`
  // is kept. `blfRow`: the row is one of the external converter's, which only
  // the compatible way reads.
  void parseRow(std::string_view row, bool blfRow, Way way = Way::compatible());

  // Appends the message as the row of this number, without line end. The trailing text is not written, and nothing is
  // filled up to the columns of the head: the count of cells depends on the data. On the complete way a cell with the
  // text follows.
  void toRow(TextBuffer& out, std::uint64_t number, Way way = Way::compatible()) const;

  std::string text;         // what follows the data in a row
  std::string parsingText;  // the row as read
  std::string comment;      // of a row of the external converter that is not valid: why

  std::string separator;  // between cells; when reading, each of its characters is one
  CsvColumns columns;     // where a row that is read has its cells
};

}  // namespace xlatr
