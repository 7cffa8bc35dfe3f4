#include "formats/mf4/mdf_data_stream.hpp"

#include <algorithm>
#include <cstring>
#include <limits>

namespace xlatr {

void MdfDataStream::close() {
  closed_ = true;
  releaseParts();
  buffer_ = {};
  begin_ = 0;
  filled_ = 0;
}

void MdfDataStream::releaseParts() {
  held_.reset();
  inflater_.reset();
  transposed_.reset();
}

const std::uint8_t* MdfDataStream::refill(std::uint64_t offset, std::size_t count) {
  if (closed_ || count > std::numeric_limits<std::uint64_t>::max() - offset) {
    return nullptr;
  }
  piece_ = std::min(std::max(2 * piece_, kSmallestPiece), limits_.window);
  if (begin_ == 0 && filled_ == 0 && offset == 0) {
    piece_ = limits_.window;
  }
  if (offset < begin_) {
    goBack(offset);
  }
  if (offset > produced_) {
    discard();
    if (!skipTo(offset)) {
      begin_ = produced_;
      return nullptr;
    }
    begin_ = produced_;
  } else if (offset > begin_) {
    // A part of what lies before stays, for values that are not quite in order.
    const std::uint64_t keep = std::min<std::uint64_t>(offset - begin_, limits_.window / 4);
    const auto from = static_cast<std::size_t>(offset - keep - begin_);
    std::memmove(buffer_.data(), buffer_.data() + from, filled_ - from);
    begin_ += from;
    filled_ -= from;
  }
  const auto before = static_cast<std::size_t>(offset - begin_);
  const std::size_t wanted = std::max(before + count, std::max(piece_, filled_));
  if (buffer_.size() < wanted + kPadding) {
    buffer_.resize(wanted + kPadding);
  }
  while (filled_ < wanted) {
    const std::size_t got = produce(std::span(buffer_).subspan(filled_, wanted - filled_));
    if (got == 0) {
      break;
    }
    filled_ += got;
  }
  return filled_ >= before + count ? buffer_.data() + before : nullptr;
}

void MdfDataStream::discard() {
  begin_ = produced_;
  filled_ = 0;
}

void MdfDataStream::goBack(std::uint64_t offset) {
  piece_ = kSmallestPiece;
  gapEnd_ = 0;
  ended_ = false;
  if (hasPart_ && offset >= partBegin_) {
    file_.charge(isOpenAnywhere() ? 0 : part_.stored);
    produced_ = partBegin_;
    hasPart_ = isOpenAnywhere() || startPart();
    if (!hasPart_) {
      ended_ = true;
    }
  } else {
    parts_.restart();
    hasPart_ = false;
    produced_ = 0;
    partBegin_ = 0;
  }
  discard();
}

// Moves on without taking anything in.
bool MdfDataStream::skipTo(std::uint64_t offset) {
  while (produced_ < offset) {
    if (gapEnd_ != 0) {
      if (offset < gapEnd_) {
        return false;
      }
      produced_ = gapEnd_;
      gapEnd_ = 0;
      hasPart_ = false;
      continue;
    }
    if (!hasPart_ && !openPart()) {
      return false;
    }
    if (gapEnd_ != 0) {
      continue;
    }
    const std::uint64_t end = partBegin_ + part_.length;
    const std::uint64_t next = std::min(offset, end);
    if (part_.form == MdfPartForm::Zipped && !isOpenAnywhere() && next < end && !inflater_->skip(next - produced_)) {
      loseRest();
      continue;
    }
    // The rows of a transposed part are passed over when it is read.
    produced_ = next;
    hasPart_ = next < end;
  }
  return true;
}

bool MdfDataStream::openPart() {
  if (ended_ || !parts_.next(part_)) {
    ended_ = true;
    releaseParts();
    return false;
  }
  partBegin_ = produced_;
  part_.length = std::min(part_.length, std::numeric_limits<std::uint64_t>::max() - partBegin_);
  hasPart_ = true;
  cut_ = cut_ || part_.isCut;
  if (!startPart()) {
    loseRest();
  }
  return true;
}

bool MdfDataStream::startPart() {
  switch (part_.form) {
    case MdfPartForm::Plain:
      return true;
    case MdfPartForm::Zipped:
      if (!held_) {
        held_ = std::make_unique<MdfHeldPart>(file_);
      }
      if (held_->start(part_)) {
        return true;
      }
      if (!inflater_) {
        inflater_ = std::make_unique<MdfInflater>(file_);
      }
      inflater_->start(part_.position, part_.stored);
      return true;
    case MdfPartForm::Transposed:
      if (!transposed_) {
        transposed_ = std::make_unique<MdfTransposedPart>(file_);
      }
      if (!transposed_->start(part_)) {
        return false;
      }
      damaged_ = damaged_ || !transposed_->isWhole();
      return true;
    case MdfPartForm::Lost:
      break;
  }
  return false;
}

// What is left of the part can't be read.
void MdfDataStream::loseRest() {
  damaged_ = true;
  gapEnd_ = partBegin_ + part_.length;
  if (gapEnd_ == produced_) {
    gapEnd_ = 0;
    hasPart_ = false;
  }
}

std::size_t MdfDataStream::produce(std::span<std::uint8_t> out) {
  while (gapEnd_ == 0) {
    if (!hasPart_ && !openPart()) {
      return 0;
    }
    if (gapEnd_ != 0 || !hasPart_) {
      continue;
    }
    const std::uint64_t at = produced_ - partBegin_;
    const std::uint64_t left = part_.length - at;
    if (left == 0) {
      damaged_ = damaged_ || (part_.form == MdfPartForm::Zipped && !isOpenAnywhere() && !inflater_->isWhole());
      hasPart_ = false;
      continue;
    }
    const auto piece = out.first(static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), left)));
    std::size_t got = 0;
    if (part_.form == MdfPartForm::Plain) {
      got = file_.read(part_.position + at, piece);
    } else if (isOpenAnywhere()) {
      held_->read(at, piece);
      got = piece.size();
    } else {
      got = part_.form == MdfPartForm::Zipped ? inflater_->inflate(piece) : transposed_->read(at, piece);
    }
    produced_ += got;
    if (got < piece.size()) {
      loseRest();
    }
    if (got > 0) {
      return got;
    }
  }
  return 0;
}

}  // namespace xlatr
