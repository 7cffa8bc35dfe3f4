// The head of a BTRC file.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "formats/native/native_record.hpp"
#include "io/block_input.hpp"
#include "util/date_time.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// The first record of a file, which identifies it, and the second one, which says when the trace began. A file that is
// not there, or is shorter than both records, has the header that one without a path has. std::ios_base::failure when
// the system refuses.
class BtrcFileHeader {
 public:
  BtrcFileHeader() { reset(); }
  explicit BtrcFileHeader(std::string path);

  // The bytes of a block; 0 in a damaged file.
  [[nodiscard]] std::uint32_t blockBytes() const { return std::uint32_t{info.blockSize} * kBlockUnit; }
  // The calibration record as two hexadecimal digits and a blank for each of its bytes.
  [[nodiscard]] std::string getRTCRawDataString() const;

  static constexpr std::uint32_t kBlockUnit = 1024;

  Native_RecordInfo info;
  Native_RecordTimeCalibration timeCalibration;
  std::string sourcePath;
  std::uint32_t firstFramePosition = 0;  // where reading starts
  bool errorOnRtc = false;               // the calibration record holds a date that does not exist
  bool valid = false;                    // the first record is the one that a file begins with
  DateTime startDateTime;
  UnsignedMicroseconds systemTime{};  // the timestamp at the start of the trace, 0 if there is none

 private:
  void reset();
  [[nodiscard]] bool read();
  void readCalibration();
};

}  // namespace xlatr
