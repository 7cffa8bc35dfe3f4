// The sectors of a BTR file that is written.
#pragma once

#include <cstddef>

#include "formats/native/btr_layout.hpp"
#include "io/buffered_output.hpp"

namespace xlatr {

// Writes a directory of one session and its sectors after it, one after the other and never circularly. One thread at a
// time; failures are std::ios_base::failure.
class BtrSectorOutput {
 public:
  // Writes into the output, which must stay.
  explicit BtrSectorOutput(BufferedOutput& output) : output_(output) {}

  // Writes the directory. Called again, it writes from the beginning of the file.
  void begin(const SessionDescriptor& session);
  void write(const MsgEntry& entry);
  // The last sector is written whatever it holds, so that every file ends in one that is not full.
  void flushSector();

  static constexpr std::uint32_t kFirstDataSector = 1;

 private:
  void writeSector(const SectorImage& image);

  BufferedOutput& output_;
  SessionDescriptor session_;
  DataSector sector_;
  std::size_t entryCount_ = 0;  // slots of the sector in use
};

}  // namespace xlatr
