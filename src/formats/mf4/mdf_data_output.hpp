// Writes the data block of a data group while its records come in.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "io/buffered_output.hpp"

namespace xlatr {

// A DT block, or a DZ block whose bytes are those that zlib's compress makes of all records at once. The block's head
// is completed at the end, so that memory does not grow with the data. Failures are those of the output, and
// kDeflateFailure.
class MdfDataOutput {
 public:
  // `output` stands at `position`, a multiple of 8, and is used by nobody else up to finish.
  MdfDataOutput(BufferedOutput& output, std::uint64_t position, bool zipped);
  ~MdfDataOutput();
  MdfDataOutput(const MdfDataOutput&) = delete;
  MdfDataOutput& operator=(const MdfDataOutput&) = delete;

  void append(std::string_view records);

  // Completes the block and leaves the output after it. Returns the block's position; 0 where data to be zipped have
  // no records and so no block.
  std::uint64_t finish();

  // Where the next byte goes.
  [[nodiscard]] std::uint64_t end() const { return dataPosition_ + writtenBytes_; }

 private:
  class Deflater;

  void begin();
  void write(std::string_view bytes);
  void writeHead();

  BufferedOutput& output_;
  const std::uint64_t position_;
  std::uint64_t dataPosition_;          // after the head and its fields; `position_` while nothing was written
  std::uint64_t recordBytes_ = 0;       // as they came in
  std::uint64_t writtenBytes_ = 0;      // as they stand in the file
  std::unique_ptr<Deflater> deflater_;  // null for plain data
};

}  // namespace xlatr
