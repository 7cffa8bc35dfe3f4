// Writing frames as an MF4 file.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "formats/mf4/mdf_frame_codes.hpp"
#include "formats/mf4/mdf_frame_output.hpp"
#include "formats/mf4/mdf_frame_schema.hpp"
#include "formats/mf4/mdf_payload_choice.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "messages/error_type.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

constexpr std::uint32_t kHighestBus = 255;  // a byte
constexpr std::uint16_t kLongestFdData = 64;

constexpr auto kChecksumBit = static_cast<std::uint32_t>(ErrorCode::Checksum);
constexpr auto kNoResponseBit = static_cast<std::uint32_t>(ErrorCode::SlaveNotResponding);

// Whether the numbers of a record can say it.
bool fitsRecord(const Frame& frame) {
  constexpr std::uint32_t kHighestByte = 0xFF;
  const auto attribute = [&frame](FrameAttribute name, std::uint32_t absent) {
    return frame.attributes.get(name).value_or(absent);
  };
  if (frame.kind == FrameKind::Error) {
    return attribute(FrameAttribute::ErrorType, 0) <= kOtherError;
  }
  if (frame.kind == FrameKind::Lin) {
    const auto errors = frame.attributes.get(FrameAttribute::LinErrors);
    return (!errors || *errors == kChecksumBit || *errors == kNoResponseBit) &&
           attribute(FrameAttribute::Checksum, 0) <= kHighestByte &&
           attribute(FrameAttribute::ChecksumModel, 0) < kMdfChecksumModels.size();
  }
  return true;
}

consteval FrameCapacity rowOfVersion(double version) {
  FrameCapacity capacity;
  capacity.version = version;
  const KindCapacity frame = {.held = true, .direction = true, .needsDirection = true};
  for (const FrameKind kind :
       {FrameKind::Data, FrameKind::Remote, FrameKind::Error, FrameKind::Overload, FrameKind::Lin}) {
    capacity.of(kind) = frame;
  }
  capacity.of(FrameKind::Error).attributes = attributeBits(FrameAttribute::ErrorType, FrameAttribute::ErrorPosition);
  capacity.lowestErrorPosition = kMdfFirstBitPosition;
  capacity.highestErrorPosition = kMdfFirstBitPosition + kMdfNoErrorDetail - 1;
  capacity.of(FrameKind::Lin).attributes =
      attributeBits(FrameAttribute::Checksum, FrameAttribute::ChecksumModel, FrameAttribute::LinErrors);
  capacity.of(FrameKind::Lin).filled = attributeBits(FrameAttribute::Checksum);
  capacity.fd = true;
  capacity.bitsOfFd = true;
  capacity.longestData = kLongestFdData;
  capacity.longDlc = true;
  capacity.remoteDlc = true;
  capacity.longRemoteDlc = true;
  capacity.needsRemoteDlc = true;
  capacity.enhancedChecksum = true;
  capacity.hiddenLinData = true;
  capacity.hasRoomFor = fitsRecord;
  capacity.highestBus = kHighestBus;
  capacity.zone = true;
  return capacity;
}

constexpr std::array kCapacities = {rowOfVersion(4.1), rowOfVersion(4.11), rowOfVersion(4.2)};

// Bits of the flags byte.
constexpr std::uint8_t kSentBit = 0x01;
constexpr std::uint8_t kFdBit = 0x02;
constexpr std::uint8_t kBrsBit = 0x04;
constexpr std::uint8_t kEsiBit = 0x08;
constexpr std::uint8_t kExtendedBit = 0x10;

std::uint8_t flagsOfFrame(const Frame& frame) {
  const auto bit = [&frame](std::uint16_t flag, std::uint8_t value) { return frame.has(flag) ? value : 0; };
  return static_cast<std::uint8_t>(bit(frame_flag::kTransmitted, kSentBit) | bit(frame_flag::kFd, kFdBit) |
                                   bit(frame_flag::kBrs, kBrsBit) | bit(frame_flag::kEsi, kEsiBit) |
                                   bit(frame_flag::kExtended, kExtendedBit));
}

MdfFrameGroup groupOfLin(const Frame& frame) {
  const std::uint32_t errors = frame.attributes.get(FrameAttribute::LinErrors).value_or(0);
  if (errors == 0) {
    return MdfFrameGroup::Lin;
  }
  return errors == kChecksumBit ? MdfFrameGroup::LinChecksumError : MdfFrameGroup::LinTransmissionError;
}

constexpr std::size_t kShortPayload = 8;
constexpr std::size_t kBytesOfCanFrame = 8;  // without the payload

// Puts numbers and bytes one after the other.
class RecordFiller {
 public:
  explicit RecordFiller(std::uint8_t* at) : at_(at) {}

  template <class Number>
  void put(Number value) {
    storeLittle(at_, value);
    at_ += sizeof(Number);
  }
  void putByte(std::size_t value) { put(static_cast<std::uint8_t>(value)); }
  // What data and remote frames have before the payload.
  void putCanFrame(const Frame& frame, std::size_t length) {
    put(frame.id);
    putByte(frame.bus);
    put(flagsOfFrame(frame));
    putByte(frame.dlc);
    putByte(length);
  }
  // Filled up with zeros.
  void putBytes(std::span<const std::uint8_t> bytes, std::size_t room) {
    at_ = std::copy(bytes.begin(), bytes.end(), at_);
    at_ = std::fill_n(at_, room - bytes.size(), std::uint8_t{0});
  }

 private:
  std::uint8_t* at_;
};

class Mf4FrameSink final : public FrameSink {
 public:
  Mf4FrameSink(const OutputTarget& target, const StreamHead& head, const SinkSettings& settings)
      : capacity_(capacityOfVersion(kCapacities, settings.version)),
        compact_(settings.compact),
        zipped_(settings.zipped),
        output_(target, head.start, formOf(capacity_.version, settings)) {}

  void write(const FrameBatch& batch, Account& account) override {
    for (std::size_t row = 0; row < batch.size(); ++row) {
      batch.get(row, frame_);
      if (const std::optional<Remark> reason = whyNotHeld(capacity_, frame_)) {
        account.addDropped(*reason, frame_.place);
        continue;
      }
      account.addWritten(1);
      reduceTo(capacity_, frame_, account);
      take(frame_);
    }
  }

  void close() override {
    if (waiting_) {
      endWaiting();
    }
    output_.close();
  }

  [[nodiscard]] std::uint64_t bytesWritten() const override { return output_.end(); }

 private:
  static MdfFrameOutputForm formOf(double version, const SinkSettings& settings);
  [[nodiscard]] MdfFrameGroup groupOf(const Frame& frame) const;
  void take(const Frame& frame);
  void endWaiting();
  void append(const Frame& frame);
  [[nodiscard]] RecordFiller begin(const Frame& frame, MdfFrameGroup group, std::size_t bytesAfterTime);
  void appendCan(const Frame& frame, MdfFrameGroup group);
  void appendRemote(const Frame& frame);
  void appendError(const Frame& frame);
  void appendOverload(const Frame& frame);
  void appendLin(const Frame& frame, MdfFrameGroup group);

  const FrameCapacity& capacity_;
  bool compact_;
  bool zipped_;
  MdfFrameOutput output_;
  Frame frame_;  // the one that is being written
  // Of a compact file: whether it is decided what the records of CAN FD frames hold, and the frames that wait for that.
  bool longDecided_ = false;
  std::unique_ptr<FrameBatch> waiting_;
};

MdfFrameOutputForm Mf4FrameSink::formOf(double version, const SinkSettings& settings) {
  MdfFrameOutputForm form{.version = version, .zipped = settings.zipped};
  form.payloads.fill(MdfPayload::Long);
  if (settings.compact) {
    form.payloads[static_cast<std::size_t>(MdfFrameGroup::Data)] = MdfPayload::Short;
  }
  return form;
}

MdfFrameGroup Mf4FrameSink::groupOf(const Frame& frame) const {
  switch (frame.kind) {
    case FrameKind::Remote:
      return MdfFrameGroup::Remote;
    case FrameKind::Error:
      return MdfFrameGroup::Error;
    case FrameKind::Overload:
      return MdfFrameGroup::Overload;
    case FrameKind::Lin:
      return groupOfLin(frame);
    default:
      return compact_ && frame.has(frame_flag::kFd) ? MdfFrameGroup::LongData : MdfFrameGroup::Data;
  }
}

// From the first CAN FD frame of a compact file on, as many frames wait as a batch holds: by them it is decided where
// the payloads of such frames go.
void Mf4FrameSink::take(const Frame& frame) {
  if (!waiting_ && (longDecided_ || groupOf(frame) != MdfFrameGroup::LongData)) {
    append(frame);
    return;
  }
  if (!waiting_) {
    waiting_ = std::make_unique<FrameBatch>();
  }
  waiting_->append(frame);
  if (waiting_->full()) {
    endWaiting();
  }
}

void Mf4FrameSink::endWaiting() {
  longDecided_ = true;
  output_.setPayload(MdfFrameGroup::LongData, shorterPayload(*waiting_, zipped_));
  const std::unique_ptr<FrameBatch> frames = std::move(waiting_);
  for (std::size_t row = 0; row < frames->size(); ++row) {
    append(frames->at(row));
  }
}

void Mf4FrameSink::append(const Frame& frame) {
  switch (frame.kind) {
    case FrameKind::Remote:
      appendRemote(frame);
      break;
    case FrameKind::Error:
      appendError(frame);
      break;
    case FrameKind::Overload:
      appendOverload(frame);
      break;
    case FrameKind::Lin:
      appendLin(frame, groupOf(frame));
      break;
    default:
      appendCan(frame, groupOf(frame));
      break;
  }
}

RecordFiller Mf4FrameSink::begin(const Frame& frame, MdfFrameGroup group, std::size_t bytesAfterTime) {
  RecordFiller record(output_.append(group, frame.bus, sizeof(frame.timeNs) + bytesAfterTime));
  record.put(static_cast<std::uint64_t>(frame.timeNs));
  return record;
}

void Mf4FrameSink::appendCan(const Frame& frame, MdfFrameGroup group) {
  const MdfPayload payload = output_.payloadOf(group);
  const std::size_t room = payload == MdfPayload::Long ? kLongestFdData : kShortPayload;
  const std::uint64_t place = payload == MdfPayload::Stored ? output_.store(group, frame.bus, frame.data) : 0;
  RecordFiller record = begin(frame, group, kBytesOfCanFrame + room);
  record.putCanFrame(frame, frame.data.size());
  if (payload == MdfPayload::Stored) {
    record.put(place);
  } else {
    record.putBytes(frame.data, room);
  }
}

void Mf4FrameSink::appendRemote(const Frame& frame) {
  RecordFiller record = begin(frame, MdfFrameGroup::Remote, kBytesOfCanFrame);
  record.putCanFrame(frame, std::min<std::size_t>(frame.dlc, kShortPayload));
}

void Mf4FrameSink::appendError(const Frame& frame) {
  constexpr std::size_t kBytesOfFrame = 4;
  const auto type = frame.attributes.get(FrameAttribute::ErrorType);
  const auto position = frame.attributes.get(FrameAttribute::ErrorPosition);
  RecordFiller record = begin(frame, MdfFrameGroup::Error, kBytesOfFrame);
  record.putByte(frame.bus);
  record.put(flagsOfFrame(frame));
  record.putByte(type ? (*type == kOtherError ? 0 : *type + 1) : kMdfNoErrorDetail);
  record.putByte(position ? *position - kMdfFirstBitPosition : kMdfNoErrorDetail);
}

void Mf4FrameSink::appendOverload(const Frame& frame) {
  constexpr std::size_t kBytesOfFrame = 2;
  RecordFiller record = begin(frame, MdfFrameGroup::Overload, kBytesOfFrame);
  record.putByte(frame.bus);
  record.put(flagsOfFrame(frame));
}

void Mf4FrameSink::appendLin(const Frame& frame, MdfFrameGroup group) {
  constexpr std::size_t kBytesOfFrame = 16;
  const auto model = frame.attributes.get(FrameAttribute::ChecksumModel);
  RecordFiller record = begin(frame, group, kBytesOfFrame);
  record.putByte(frame.bus);
  record.putByte(frame.id);
  record.put(flagsOfFrame(frame));
  record.putByte(frame.dlc);
  record.putByte(frame.data.size());
  record.putByte(frame.attributes.get(FrameAttribute::Checksum).value_or(0));
  record.put(static_cast<std::uint8_t>(model ? kMdfChecksumModels[*model].number : kMdfNoChecksumModel));
  record.putByte(0);
  record.putBytes(frame.data, kShortPayload);
}

}  // namespace

std::span<const FrameCapacity> mf4Capacities() {
  return kCapacities;
}

std::unique_ptr<FrameSink> createMf4Frames(const OutputTarget& target, const StreamHead& head,
                                           const SinkSettings& settings) {
  return std::make_unique<Mf4FrameSink>(target, head, settings);
}

}  // namespace xlatr
