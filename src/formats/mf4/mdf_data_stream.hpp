// The data that a link leads to as one row of bytes, of which a window is in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "formats/mf4/mdf_data_file.hpp"
#include "formats/mf4/mdf_data_parts.hpp"
#include "formats/mf4/mdf_inflater.hpp"

namespace xlatr {

// What the streams of a file may hold, worked out from their number.
struct MdfStreamLimits {
  std::size_t window = std::size_t{256} << 10;  // bytes at hand
};

// Reading forward costs each byte once. Reading backward begins again, at the part or at the first list, and is charged
// to the file.
class MdfDataStream {
 public:
  static constexpr std::size_t kPadding = 16;  // readable bytes of any value after what is handed out

  MdfDataStream(MdfDataFile& file, std::uint64_t link, MdfDataRole role, const MdfStreamLimits& limits)
      : file_(file), parts_(file, link, role), limits_(limits) {}

  // The bytes there, and kPadding readable ones after them. Null if they are not all there; then available() and
  // gapEnd() say more. They stay until the next call.
  [[nodiscard]] const std::uint8_t* at(std::uint64_t offset, std::size_t count) {
    const std::uint8_t* const bytes = peek(offset, count);
    return bytes != nullptr ? bytes : refill(offset, count);
  }
  // The same of bytes that are at hand already, without moving those.
  [[nodiscard]] const std::uint8_t* peek(std::uint64_t offset, std::size_t count) const {
    return offset >= begin_ && offset - begin_ <= filled_ &&
                   count <= filled_ - static_cast<std::size_t>(offset - begin_)
               ? buffer_.data() + (offset - begin_)
               : nullptr;
  }
  // Bytes at this offset before the data end or have a gap, after at() found that they are too few.
  [[nodiscard]] std::uint64_t available(std::uint64_t offset) const {
    return offset >= begin_ && offset - begin_ < filled_ ? filled_ - (offset - begin_) : 0;
  }
  // Where the data go on after bytes that can't be read; 0 if there is no such place.
  [[nodiscard]] std::uint64_t gapEnd() const { return gapEnd_; }
  // Whether some of the data could not be found, and whether the file ended before they did.
  [[nodiscard]] bool damaged() const { return damaged_ || parts_.damaged(); }
  [[nodiscard]] bool isCut() const { return cut_; }
  // Whether the part at hand has values alone.
  [[nodiscard]] bool isValues() const { return part_.isValues; }
  // Frees what is held. Nothing can be read any more.
  void close();

 private:
  static constexpr std::size_t kSmallestPiece = 1024;  // after a jump backward

  [[nodiscard]] const std::uint8_t* refill(std::uint64_t offset, std::size_t count);
  void goBack(std::uint64_t offset);
  [[nodiscard]] bool skipTo(std::uint64_t offset);
  void discard();
  [[nodiscard]] bool openPart();
  [[nodiscard]] bool startPart();
  // Whether reading can go back in the part at no cost.
  [[nodiscard]] bool isOpenAnywhere() const {
    return part_.form == MdfPartForm::Plain || (part_.form == MdfPartForm::Zipped && held_ && held_->isHeld());
  }
  void releaseParts();
  [[nodiscard]] std::size_t produce(std::span<std::uint8_t> out);
  void loseRest();

  MdfDataFile& file_;
  MdfDataParts parts_;
  MdfStreamLimits limits_;
  std::vector<std::uint8_t> buffer_;
  std::uint64_t begin_ = 0;  // the offset of the first byte at hand
  std::size_t filled_ = 0;   // bytes at hand
  std::size_t piece_ = 0;    // bytes that the next refill takes in

  MdfDataPart part_;
  bool hasPart_ = false;
  bool ended_ = false;
  bool closed_ = false;
  std::uint64_t partBegin_ = 0;  // the offset of its first byte
  std::uint64_t produced_ = 0;   // the offset of the next byte that comes from the part
  std::uint64_t gapEnd_ = 0;     // while the part is broken from `produced_` on
  bool damaged_ = false;
  bool cut_ = false;
  std::unique_ptr<MdfHeldPart> held_;
  std::unique_ptr<MdfInflater> inflater_;
  std::unique_ptr<MdfTransposedPart> transposed_;
};

}  // namespace xlatr
