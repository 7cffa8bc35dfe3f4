// Inflating bytes of a file piece by piece.
#pragma once

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "formats/mf4/mdf_data_file.hpp"
#include "formats/mf4/mdf_data_parts.hpp"

namespace xlatr {

// One zlib stream that is inflated from its beginning on. Takes about 60 kB.
class MdfInflater {
 public:
  explicit MdfInflater(MdfDataFile& file);
  // Where another one is now, to go on from there apart from it.
  MdfInflater(const MdfInflater& other);
  MdfInflater& operator=(const MdfInflater&) = delete;
  ~MdfInflater();

  // Begins anew with these bytes of the file.
  void start(std::uint64_t position, std::uint64_t stored);
  // Fills `out`, or as much of it as there is before the stream ends or goes wrong.
  [[nodiscard]] std::size_t inflate(std::span<std::uint8_t> out);
  // After all bytes that there are meant to be: whether the stream ends there, and its check sum says that they are
  // right.
  [[nodiscard]] bool isWhole();
  // Passes over bytes; false when there are not as many.
  [[nodiscard]] bool skip(std::uint64_t count);

 private:
  static constexpr std::size_t kInputSize = std::size_t{16} << 10;
  static constexpr std::size_t kCopiedInputSize = std::size_t{2} << 10;  // there are many copies at a time

  void feed();

  MdfDataFile& file_;
  z_stream stream_{};
  bool ready_ = false;
  bool ended_ = false;
  bool whole_ = false;          // it ended well
  std::uint64_t position_ = 0;  // of the bytes that were not read yet
  std::uint64_t left_ = 0;      // of them
  std::vector<std::uint8_t> input_;
};

// Bytes of a file, inflated all at once. False if they are not such a stream of as many bytes, which is worth going
// through piece by piece then.
[[nodiscard]] bool inflateWhole(MdfDataFile& file, const MdfDataPart& part, std::span<std::uint8_t> out);

// A part of usual size that is inflated whole, in less time than piece by piece, and can be read anywhere.
class MdfHeldPart {
 public:
  explicit MdfHeldPart(MdfDataFile& file) : file_(file) {}
  MdfHeldPart(const MdfHeldPart&) = delete;
  MdfHeldPart& operator=(const MdfHeldPart&) = delete;
  ~MdfHeldPart() { release(); }

  // False, with nothing held, if it is too large or not whole.
  [[nodiscard]] bool start(const MdfDataPart& part);
  [[nodiscard]] bool isHeld() const { return granted_ != 0; }
  // At the offset, as many as `out` takes; they must be there.
  void read(std::uint64_t offset, std::span<std::uint8_t> out) const {
    std::copy_n(bytes_.data() + offset, out.size(), out.data());
  }
  void release();

 private:
  MdfDataFile& file_;
  std::uint64_t granted_ = 0;  // bytes that may be held
  std::vector<std::uint8_t> bytes_;
};

// Rows that were stored column by column. A block of usual size is inflated whole; of a large one, each column is
// inflated by itself.
class MdfTransposedPart {
 public:
  explicit MdfTransposedPart(MdfDataFile& file) : file_(file), first_(file) {}
  MdfTransposedPart(const MdfTransposedPart&) = delete;
  MdfTransposedPart& operator=(const MdfTransposedPart&) = delete;
  ~MdfTransposedPart() { release(); }

  // False if it can't be read.
  [[nodiscard]] bool start(const MdfDataPart& part);
  // Fills `out`, or as much of it as there is, beginning at `offset`. One that is not after the last one is refused
  // where the columns are inflated by themselves.
  [[nodiscard]] std::size_t read(std::uint64_t offset, std::span<std::uint8_t> out);
  // Whether reading can begin anywhere.
  [[nodiscard]] bool isHeld() const { return columns_.empty(); }
  // Whether the check sum says that all of it is right.
  [[nodiscard]] bool isWhole() const { return whole_; }

 private:
  static constexpr std::size_t kBytesOfColumn = std::size_t{48} << 10;  // of an inflater and its copy of the window
  static constexpr std::size_t kRowsAtOnce = 512;

  void release();
  [[nodiscard]] bool startColumns();
  [[nodiscard]] bool readRows();

  MdfDataFile& file_;
  MdfInflater first_;
  std::uint64_t granted_ = 0;  // bytes that may be held
  std::uint64_t length_ = 0;
  std::uint64_t width_ = 0;
  std::uint64_t rowCount_ = 0;
  bool whole_ = false;
  std::vector<std::uint8_t> held_;                     // the whole part in rows, or the rows at hand
  std::uint64_t heldBegin_ = 0;                        // the offset of its first byte
  std::vector<std::unique_ptr<MdfInflater>> columns_;  // after them the one for what is no whole row
  std::vector<std::uint8_t> columnBytes_;
};

}  // namespace xlatr
