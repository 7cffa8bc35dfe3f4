#include "formats/mf4/mdf_inflater.hpp"

#include <algorithm>
#include <array>
#include <limits>

#include "formats/mf4/zipped_bytes.hpp"

namespace xlatr {
namespace {

// Writers make blocks of four megabytes.
constexpr std::uint64_t kLargestHeld = std::uint64_t{8} << 20;

}  // namespace

MdfInflater::MdfInflater(MdfDataFile& file) : file_(file) {}

MdfInflater::MdfInflater(const MdfInflater& other)
    : file_(other.file_), ended_(other.ended_), position_(other.position_), left_(other.left_) {
  ready_ = other.ready_ && inflateCopy(&stream_, const_cast<z_stream*>(&other.stream_)) == Z_OK;
  // What was handed to the other one and not used yet is read again.
  position_ -= other.stream_.avail_in;
  left_ += other.stream_.avail_in;
  stream_.avail_in = 0;
  input_.resize(kCopiedInputSize);
}

MdfInflater::~MdfInflater() {
  if (ready_) {
    inflateEnd(&stream_);
  }
}

void MdfInflater::start(std::uint64_t position, std::uint64_t stored) {
  ready_ = ready_ ? inflateReset(&stream_) == Z_OK : inflateInit(&stream_) == Z_OK;
  ended_ = !ready_;
  whole_ = false;
  stream_.avail_in = 0;
  position_ = position;
  left_ = stored;
}

void MdfInflater::feed() {
  if (input_.empty()) {
    input_.resize(kInputSize);
  }
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left_, input_.size()));
  const std::size_t got = file_.read(position_, std::span(input_).first(wanted));
  position_ += got;
  left_ = got == wanted ? left_ - got : 0;
  stream_.next_in = input_.data();
  stream_.avail_in = static_cast<uInt>(got);
}

std::size_t MdfInflater::inflate(std::span<std::uint8_t> out) {
  constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;  // zlib counts in 32 bits
  std::size_t done = 0;
  while (done < out.size() && !ended_) {
    if (stream_.avail_in == 0) {
      feed();
    }
    const std::size_t piece = std::min(out.size() - done, kMostAtOnce);
    stream_.next_out = out.data() + done;
    stream_.avail_out = static_cast<uInt>(piece);
    const int result = ::inflate(&stream_, Z_NO_FLUSH);
    done += piece - stream_.avail_out;
    // Z_BUF_ERROR: nothing came in and nothing went out.
    ended_ = result != Z_OK;
    whole_ = result == Z_STREAM_END;
  }
  return done;
}

bool MdfInflater::isWhole() {
  std::uint8_t more = 0;
  return inflate({&more, 1}) == 0 && whole_;
}

bool MdfInflater::skip(std::uint64_t count) {
  std::array<std::uint8_t, 16384> scratch;
  while (count > 0) {
    const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(count, scratch.size()));
    if (inflate(std::span(scratch).first(piece)) < piece) {
      return false;
    }
    count -= piece;
  }
  return true;
}

bool inflateWhole(MdfDataFile& file, const MdfDataPart& part, std::span<std::uint8_t> out) {
  if (part.stored > kLargestHeld) {
    return false;
  }
  std::vector<std::uint8_t>& zipped = file.scratch;
  zipped.resize(static_cast<std::size_t>(part.stored));
  return file.readAll(part.position, zipped) && inflateWhole(zipped, out);
}

bool MdfHeldPart::start(const MdfDataPart& part) {
  file_.release(granted_);
  granted_ = 0;
  if (part.length == 0 || part.length > kLargestHeld || !file_.hold(part.length)) {
    return false;
  }
  granted_ = part.length;
  bytes_.resize(static_cast<std::size_t>(part.length));
  if (!inflateWhole(file_, part, bytes_)) {
    release();
  }
  return isHeld();
}

void MdfHeldPart::release() {
  file_.release(granted_);
  granted_ = 0;
  bytes_ = {};
}

void MdfTransposedPart::release() {
  columns_.clear();
  held_ = {};
  file_.release(granted_);
  granted_ = 0;
}

bool MdfTransposedPart::start(const MdfDataPart& part) {
  release();
  length_ = part.length;
  width_ = part.width;
  rowCount_ = length_ / width_;
  heldBegin_ = 0;
  first_.start(part.position, part.stored);
  if (length_ > kLargestHeld || !file_.hold(length_)) {
    return startColumns();
  }
  granted_ = length_;
  columnBytes_.resize(static_cast<std::size_t>(length_));
  held_.resize(columnBytes_.size());
  whole_ = inflateWhole(file_, part, columnBytes_);
  const std::size_t got = whole_ ? columnBytes_.size() : first_.inflate(columnBytes_);
  std::fill(columnBytes_.begin() + static_cast<std::ptrdiff_t>(got), columnBytes_.end(), std::uint8_t{0});
  const auto whole = static_cast<std::size_t>(rowCount_ * width_);
  transpose(std::span(columnBytes_).first(whole), static_cast<std::size_t>(width_), std::span(held_).first(whole));
  std::copy(columnBytes_.begin() + static_cast<std::ptrdiff_t>(whole), columnBytes_.end(),
            held_.begin() + static_cast<std::ptrdiff_t>(whole));
  columnBytes_ = {};
  // Bytes of every row are in every part of the stream: rows are whole only if all of it is.
  return got == length_;
}

bool MdfTransposedPart::startColumns() {
  const std::uint64_t needed = (width_ + 1) * kBytesOfColumn;
  if (!file_.hold(needed)) {
    return false;
  }
  granted_ = needed;
  for (std::uint64_t column = 0; column <= width_; ++column) {
    columns_.push_back(std::make_unique<MdfInflater>(first_));
    if (column < width_ && !first_.skip(rowCount_)) {
      columns_.clear();
      return false;
    }
  }
  whole_ = first_.skip(length_ % width_) && first_.isWhole();
  return true;
}

// The rows after those at hand.
bool MdfTransposedPart::readRows() {
  heldBegin_ += held_.size();
  const std::uint64_t row = heldBegin_ / width_;
  if (row >= rowCount_) {
    held_.resize(static_cast<std::size_t>(length_ - std::min(length_, heldBegin_)));
    held_.resize(columns_.back()->inflate(held_));
    return !held_.empty();
  }
  const auto rows = static_cast<std::size_t>(std::min<std::uint64_t>(kRowsAtOnce, rowCount_ - row));
  held_.resize(rows * static_cast<std::size_t>(width_));
  columnBytes_.resize(held_.size());
  for (std::size_t column = 0; column < width_; ++column) {
    if (columns_[column]->inflate(std::span(columnBytes_).subspan(column * rows, rows)) < rows) {
      held_.clear();
      return false;
    }
  }
  transpose(columnBytes_, static_cast<std::size_t>(width_), held_);
  return true;
}

std::size_t MdfTransposedPart::read(std::uint64_t offset, std::span<std::uint8_t> out) {
  std::size_t done = 0;
  while (done < out.size() && offset >= heldBegin_) {
    const std::uint64_t at = offset - heldBegin_;
    if (at >= held_.size()) {
      if (isHeld() || !readRows()) {
        break;
      }
      continue;
    }
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(held_.size() - at, out.size() - done));
    std::copy_n(held_.begin() + static_cast<std::ptrdiff_t>(at), count,
                out.begin() + static_cast<std::ptrdiff_t>(done));
    done += count;
    offset += count;
  }
  return done;
}

}  // namespace xlatr
