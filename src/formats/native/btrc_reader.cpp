#include "formats/native/btrc_reader.hpp"

#include <algorithm>
#include <exception>
#include <utility>

namespace xlatr {

BtrcReader::BtrcReader(BtrcInfo info)
    : info_(std::move(info)), timeScale_(info_.GetHeader().info.timeScalingExponent) {}

double BtrcReader::getPercentDone() const {
  return static_cast<double>(position_) * 100.0 / static_cast<double>(info_.getFileSize());
}

bool BtrcReader::open() {
  close();
  lineCount_ = 0;
  invalidCount_ = 0;
  failure_ = info_.failure();
  if (!failure_.empty()) {
    return false;
  }
  try {
    input_.emplace(info_.getPath());
    input_->seek(info_.getHeaderLength());
    position_ = info_.getHeaderLength();
    active_ = true;
  } catch (const std::exception& failure) {
    failure_ = failure.what();
    close();
  }
  return active_;
}

void BtrcReader::close() {
  active_ = false;
  input_.reset();
}

// Nothing at the end of the file, on a failure to read, and for a record whose size can't be.
std::optional<std::span<const std::uint8_t>> BtrcReader::nextRecord(Native_RecordHeader& header) {
  // A file that grows while it is read ends where it ended when its information object was made.
  if (!active_ || position_ == info_.getFileSize()) {
    return std::nullopt;
  }
  try {
    if (!tryReadFields(input_->peek(kRecordHeaderSize), header)) {
      return std::nullopt;
    }
    const std::size_t size = std::max<std::size_t>(header.size, kRecordHeaderSize);
    const auto record = input_->peek(size);
    input_->skip(record.size());
    if (record.size() < size) {
      return std::nullopt;
    }
    position_ = input_->position();
    ++lineCount_;
    return header.size == size ? std::optional(record) : std::nullopt;
  } catch (const std::exception& failure) {
    failure_ = failure.what();
    return std::nullopt;
  }
}

bool BtrcReader::readInto(ZelkBinaryMessage& message) {
  Native_RecordHeader header;
  const auto record = nextRecord(header);
  if (!record) {
    return false;
  }
  message.readRecord(header.type, *record, timeScale_);
  if (message.getValid()) {
    message.timestamp -= info_.GetHeader().systemTime;
  } else {
    ++invalidCount_;
  }
  return true;
}

std::unique_ptr<ZelkBinaryMessage> BtrcReader::ReadNextMessage() {
  auto message = std::make_unique<ZelkBinaryMessage>();
  return readInto(*message) ? std::move(message) : nullptr;
}

std::string BtrcReader::SkipCurrentBlock() {
  if (!active_) {
    return {};
  }
  const std::uint64_t block = info_.GetHeader().blockBytes();
  const std::uint64_t from = input_->position();
  // Blocks of no length, in a damaged file, have no end to go to.
  const std::uint64_t count = block == 0 ? 0 : block - from % block;
  input_->seek(from + count);
  return "Block Size: " + std::to_string(block) + " | Old position: " + std::to_string(from) + " | New position " +
         std::to_string(from + count) + " | " + std::to_string(count) + " bytes advanced";
}

}  // namespace xlatr
