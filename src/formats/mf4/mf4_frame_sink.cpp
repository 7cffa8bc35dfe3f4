// Writing frames as an MF4 file.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/mdf_block_output.hpp"
#include "formats/mf4/mdf_frame_codes.hpp"
#include "formats/mf4/mdf_frame_schema.hpp"
#include "formats/mf4/mf4_frames.hpp"
#include "io/buffered_output.hpp"
#include "messages/can_dlc.hpp"
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
    const std::uint32_t position = attribute(FrameAttribute::ErrorPosition, kMdfFirstBitPosition);
    return attribute(FrameAttribute::ErrorType, 0) <= kOtherError && position >= kMdfFirstBitPosition &&
           position - kMdfFirstBitPosition < kMdfNoErrorDetail;
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
  Mf4FrameSink(const std::string& path, const StreamHead& head, const SinkSettings& settings)
      : capacity_(capacityOfVersion(kCapacities, settings.version)), compact_(settings.compact) {
    output_.open(path);
    writeTree(head);
    blocks_.emplace(output_, end_, dataLink_, settings.zipped);
  }

  void write(const FrameBatch& batch, Account& account) override {
    for (std::size_t row = 0; row < batch.size(); ++row) {
      const Frame frame = batch.at(row);
      if (const std::optional<Remark> reason = whyNotHeld(capacity_, frame)) {
        account.addDropped(*reason, frame.place);
        continue;
      }
      account.addWritten(1);
      append(reducedTo(capacity_, frame, account));
    }
  }

  void close() override {
    blocks_->flush();
    for (const Group& group : groups_) {
      if (group.countPosition != 0) {
        blocks_->patch(group.countPosition, group.count);
      }
    }
    // Last of all: until here the file says that it is not finished.
    output_.seek(0);
    output_.write("MDF     ");
    output_.seek(kUnfinishedFlagsPosition);
    output_.write(std::string_view("\0\0", 2));
    output_.close();
  }

 private:
  static constexpr std::uint64_t kUnfinishedFlagsPosition = 60;
  static constexpr std::size_t kShortPayload = 8;
  static constexpr std::size_t kBytesBeforePayload = 1 + 8 + 8;

  struct Group {
    std::uint64_t countPosition = 0;  // 0: the file does not have it
    std::uint64_t count = 0;
  };

  void writeTree(const StreamHead& head);
  void addGroup(MdfFrameGroup kind);
  [[nodiscard]] MdfFrameGroup groupOf(const Frame& frame) const;
  void append(const Frame& frame);
  [[nodiscard]] RecordFiller begin(const Frame& frame, MdfFrameGroup group, std::size_t bytesAfterTime);
  void appendCan(const Frame& frame, MdfFrameGroup group);
  void appendError(const Frame& frame);
  void appendLin(const Frame& frame, MdfFrameGroup group);

  const FrameCapacity& capacity_;
  bool compact_;
  BufferedOutput output_;
  std::uint64_t end_ = 0;
  std::uint64_t dataLink_ = 0;       // the place of the data group's link
  std::uint64_t nextGroupLink_ = 0;  // the place of the last group's link to the next one
  std::array<Group, kMdfFrameGroupCount> groups_;
  std::optional<MdfBlockOutput> blocks_;
};

void setStart(HeaderBlockData& data, const std::optional<TraceStart>& start) {
  constexpr std::int64_t kNsOfMinute = 60'000'000'000;
  std::int64_t ns = start ? start->sinceEpochNs : 0;
  if (start && start->zoneMinutes) {
    data.hdTimeFlags = kTimeOffsetsValid;
    data.hdTzOffsetMin = static_cast<std::int16_t>(*start->zoneMinutes);
    ns = shiftedTime(ns, -*start->zoneMinutes * kNsOfMinute);
  }
  data.hdStartTimeNs = static_cast<std::uint64_t>(std::max<std::int64_t>(0, ns));
}

void Mf4FrameSink::writeTree(const StreamHead& head) {
  constexpr std::uint16_t kOnlyCountsAreMissing = 0x1;
  constexpr std::string_view kUnfinished = "UnFinMF ";
  const MdfLayoutOptions options{.largePayload = !compact_};
  const auto header = HeaderBlock::createTree(options, UnsignedNanoseconds(0), FileHistoryBlock::createInUtc());
  setStart(header->data, head.start);
  DataGroupBlock& dataGroup = *header->firstDataGroup();
  dataGroup.setLink(DataGroupBlock::kData, 0);
  dataLink_ = dataGroup.dataLinkPosition();
  for (ChannelGroupBlock& group : dataGroup.channelGroups()) {
    completeMdfGroup(group);
    groups_[static_cast<std::size_t>(group.data.cgRecordId)].countPosition = group.cycleCountPosition();
    nextGroupLink_ = group.position() + kHeaderSectionSize;
  }
  FileIdentificationBlock identification = FileIdentificationBlock::forVersion(capacity_.version);
  std::copy(kUnfinished.begin(), kUnfinished.end(), identification.idFile.begin());
  identification.idUnfinishedFlags = kOnlyCountsAreMissing;
  Bytes bytes;
  appendFields(bytes, identification);
  header->appendTreeBytes(bytes);
  output_.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  end_ = bytes.size();
}

// Before the block with its first record is in the file.
void Mf4FrameSink::addGroup(MdfFrameGroup kind) {
  constexpr std::uint64_t kAlignment = 8;
  BlockChain<ChannelGroupBlock> list;
  ChannelGroupBlock& group = list.add(makeMdfFrameGroup(kind));
  const std::uint64_t position = (end_ + kAlignment - 1) / kAlignment * kAlignment;
  std::uint64_t nextFree = position;
  placeTree(list, nextFree);
  completeMdfGroup(group);
  Bytes bytes;
  appendTree(list, bytes);
  blocks_->appendBlock(bytes);
  blocks_->patch(nextGroupLink_, position);
  nextGroupLink_ = position + kHeaderSectionSize;
  groups_[static_cast<std::size_t>(kind)].countPosition = group.cycleCountPosition();
}

MdfFrameGroup Mf4FrameSink::groupOf(const Frame& frame) const {
  switch (frame.kind) {
    case FrameKind::Remote:
      return MdfFrameGroup::Remote;
    case FrameKind::Error:
      return MdfFrameGroup::Error;
    case FrameKind::Overload:
      return MdfFrameGroup::Overload;
    case FrameKind::Lin: {
      const std::uint32_t errors = frame.attributes.get(FrameAttribute::LinErrors).value_or(0);
      return errors == 0
                 ? MdfFrameGroup::Lin
                 : (errors == kChecksumBit ? MdfFrameGroup::LinChecksumError : MdfFrameGroup::LinTransmissionError);
    }
    default:
      return compact_ && frame.has(frame_flag::kFd) ? MdfFrameGroup::LongData : MdfFrameGroup::Data;
  }
}

void Mf4FrameSink::append(const Frame& frame) {
  const MdfFrameGroup kind = groupOf(frame);
  Group& group = groups_[static_cast<std::size_t>(kind)];
  if (group.countPosition == 0) {
    addGroup(kind);
  }
  ++group.count;
  switch (frame.kind) {
    case FrameKind::Error:
      appendError(frame);
      break;
    case FrameKind::Overload: {
      RecordFiller record = begin(frame, kind, 2);
      record.putByte(frame.bus);
      record.put(flagsOfFrame(frame));
      break;
    }
    case FrameKind::Lin:
      appendLin(frame, kind);
      break;
    default:
      appendCan(frame, kind);
      break;
  }
}

RecordFiller Mf4FrameSink::begin(const Frame& frame, MdfFrameGroup group, std::size_t bytesAfterTime) {
  RecordFiller record(blocks_->append(1 + sizeof(frame.timeNs) + bytesAfterTime));
  record.put(static_cast<std::uint8_t>(group));
  record.put(static_cast<std::uint64_t>(frame.timeNs));
  return record;
}

void Mf4FrameSink::appendCan(const Frame& frame, MdfFrameGroup group) {
  constexpr std::size_t kBytesOfFrame = 8;
  const bool remote = frame.kind == FrameKind::Remote;
  const std::size_t room = remote ? 0 : group == MdfFrameGroup::LongData || !compact_ ? kLongestFdData : kShortPayload;
  RecordFiller record = begin(frame, group, kBytesOfFrame + room);
  record.put(frame.id);
  record.putByte(frame.bus);
  record.put(flagsOfFrame(frame));
  record.putByte(frame.dlc);
  record.putByte(remote ? std::min<std::size_t>(frame.dlc, kShortPayload) : frame.data.size());
  record.putBytes(frame.data, room);
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
  record.put(std::uint8_t{0});
  record.putBytes(frame.data, kShortPayload);
}

}  // namespace

std::span<const FrameCapacity> mf4Capacities() {
  return kCapacities;
}

std::unique_ptr<FrameSink> createMf4Frames(const std::string& path, const StreamHead& head,
                                           const SinkSettings& settings) {
  return std::make_unique<Mf4FrameSink>(path, head, settings);
}

}  // namespace xlatr
