#include "formats/blf/blf_log_content.hpp"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <new>
#include <span>
#include <utility>

#include "formats/blf/blf_log_layout.hpp"

namespace xlatr::blf_log {
namespace {

// How much is read, and how much content is made, in one step.
constexpr std::size_t kStep = std::size_t{256} * 1024;

// Producers fill a container with some hundred kilobytes. Beyond this it is a bomb.
constexpr std::uint64_t kMostContent = std::uint64_t{256} << 20;

// Up to this size, packed or not, a container is inflated at once. Those of most producers have 128 KiB.
constexpr std::uint64_t kMostAtOnce = std::uint64_t{1} << 20;

}  // namespace

// The zlib stream of one container after the other.
class ContentInput::Inflater {
 public:
  Inflater() {
    if (::inflateInit(&stream_) != Z_OK) {
      throw std::bad_alloc();
    }
  }
  ~Inflater() { ::inflateEnd(&stream_); }
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  enum class Outcome : std::uint8_t { GoesOn, Ended, Broken };
  struct Result {
    Outcome outcome;
    std::size_t consumed;
    std::size_t produced;
  };

  void restart() { ::inflateReset(&stream_); }

  // Both sizes are those of a step and fit.
  Result inflate(std::span<const std::uint8_t> packed, std::span<std::uint8_t> out) {
    stream_.next_in = const_cast<std::uint8_t*>(packed.data());  // zlib only reads it
    stream_.avail_in = static_cast<uInt>(packed.size());
    stream_.next_out = out.data();
    stream_.avail_out = static_cast<uInt>(out.size());
    const int answer = ::inflate(&stream_, Z_SYNC_FLUSH);
    const std::size_t consumed = packed.size() - stream_.avail_in;
    const std::size_t produced = out.size() - stream_.avail_out;
    switch (answer) {
      case Z_OK:
      case Z_BUF_ERROR:  // no step could be taken; more input may help
        return {Outcome::GoesOn, consumed, produced};
      case Z_STREAM_END:
        return {Outcome::Ended, consumed, produced};
      default:
        return {Outcome::Broken, consumed, produced};
    }
  }

 private:
  z_stream stream_{};
};

ContentInput::ContentInput(const InputSource& source, std::uint64_t firstObject, Remarks& remarks)
    : remarks_(remarks),
      file_(source),
      fileSize_(source.size().value_or(std::numeric_limits<std::uint64_t>::max())),
      scanner_(remarks, Remark::StrayFileBytes, firstObject),
      inflater_(std::make_unique<Inflater>()) {
  file_.seek(firstObject);
}

ContentInput::~ContentInput() = default;

Piece ContentInput::read(ByteQueue& content) {
  switch (state_) {
    case State::BetweenObjects:
      return findObject();
    case State::Copying:
      return copy(content);
    case State::Inflating:
      return inflate(content);
    case State::Skipping:
      break;
  }
  return skip();
}

std::uint16_t ContentInput::progress() const {
  constexpr double kAll = 10000.0;
  const double share =
      static_cast<double>(scanner_.position()) / static_cast<double>(std::max<std::uint64_t>(fileSize_, 1));
  return static_cast<std::uint16_t>(std::min(share, 1.0) * kAll);
}

Piece ContentInput::findObject() {
  const bool isAll = atEnd_;
  BaseHeader header;
  if (!scanner_.find(input_, isAll, header)) {
    fill();
    return isAll ? Piece::End : Piece::More;
  }
  if (header.type == kContainerType) {
    beginContainer(header.size);
  } else if (header.size <= kLargestObject && scanner_.position() + header.size <= fileSize_) {
    left_ = header.size;
    state_ = State::Copying;
    scanner_.take(input_, 0);
  } else {
    scanner_.refuse(input_);
  }
  return Piece::More;
}

void ContentInput::beginContainer(std::uint64_t size) {
  constexpr std::size_t kHeaderSize = kLayoutSize<ContainerHeader>;
  while (input_.size() < kHeaderSize && !atEnd_) {
    fill();
  }
  ContainerHeader header;
  if (size < kHeaderSize || !tryReadFields(input_.bytes(), header)) {
    scanner_.refuse(input_);
    return;
  }
  containerOffset_ = scanner_.position();
  statedContent_ = header.contentSize;
  content_ = 0;
  left_ = size - kHeaderSize;
  if (containerOffset_ + size > fileSize_) {
    remarks_.note(Remark::CutContainer, containerOffset_);
  }
  scanner_.take(input_, kHeaderSize);
  beginContent(header.method);
}

void ContentInput::beginContent(std::uint32_t method) {
  if (method == kZlib) {
    inflater_->restart();
    containerBegins_ = true;
    state_ = State::Inflating;
  } else if (method == kStored) {
    state_ = State::Copying;
    if (statedContent_ != left_) {
      remarks_.note(Remark::WrongContentSize, containerOffset_);
      // The smaller of two sizes that should be the same does less harm: what follows is looked through.
      left_ = statedContent_ > 0 ? std::min(left_, statedContent_) : left_;
    }
  } else {
    remarks_.note(Remark::UnknownMethod, containerOffset_);
    state_ = State::Skipping;
  }
}

Piece ContentInput::copy(ByteQueue& content) {
  const std::size_t count = available();
  const auto from = input_.bytes().first(count);
  std::copy(from.begin(), from.end(), content.room(count).begin());
  content.add(count);
  take(count);
  if (left_ == 0 || count == 0) {
    state_ = State::BetweenObjects;
  }
  return Piece::More;
}

bool ContentInput::inflateWhole(ByteQueue& content) {
  if (left_ > kMostAtOnce || statedContent_ > kMostAtOnce) {
    return false;
  }
  while (input_.size() < left_ && !atEnd_) {
    fill();
  }
  const auto packed = static_cast<std::size_t>(std::min<std::uint64_t>(left_, input_.size()));
  const auto stated = static_cast<std::size_t>(statedContent_);
  const std::size_t consumed = wholeInflater_.inflate(input_.bytes().first(packed), content.room(stated));
  if (consumed == 0) {
    return false;
  }
  content.add(stated);
  take(consumed);
  return true;
}

Piece ContentInput::inflate(ByteQueue& content) {
  if (std::exchange(containerBegins_, false) && inflateWhole(content)) {
    state_ = State::BetweenObjects;
    return Piece::More;
  }
  const std::size_t packed = available();
  const auto [outcome, consumed, produced] = inflater_->inflate(input_.bytes().first(packed), content.room(kStep));
  content.add(produced);
  content_ += produced;
  take(consumed);
  if (outcome == Inflater::Outcome::Ended) {
    if (content_ != statedContent_) {
      remarks_.note(Remark::WrongContentSize, containerOffset_);
    }
    state_ = State::BetweenObjects;
    return Piece::More;
  }
  const bool isStuck = consumed == 0 && produced == 0;
  if (outcome == Inflater::Outcome::Broken || isStuck || content_ > kMostContent) {
    const bool isCut = isStuck && atEnd_ && left_ > 0;  // and has been told
    if (!isCut) {
      remarks_.note(Remark::BrokenContainer, containerOffset_);
    }
    // What follows in the file is looked through from here on, so that a wrong size costs nothing more.
    scanner_.forgiveNext();
    state_ = State::BetweenObjects;
    return Piece::Hole;
  }
  return Piece::More;
}

Piece ContentInput::skip() {
  const std::size_t count = available();
  take(count);
  if (left_ > 0 && count > 0) {
    return Piece::More;
  }
  state_ = State::BetweenObjects;
  return Piece::Hole;
}

std::size_t ContentInput::available() {
  if (input_.empty() && !atEnd_) {
    fill();
  }
  return static_cast<std::size_t>(std::min<std::uint64_t>(left_, input_.size()));
}

void ContentInput::take(std::size_t count) {
  scanner_.take(input_, count);
  left_ -= count;
}

void ContentInput::fill() {
  const auto room = input_.room(kStep);
  const std::size_t count = file_.read({reinterpret_cast<char*>(room.data()), room.size()});
  input_.add(count);
  atEnd_ = count == 0;
}

}  // namespace xlatr::blf_log
