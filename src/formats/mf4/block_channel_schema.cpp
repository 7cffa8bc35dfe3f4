// The groups and channels of a written file: the layout of its records.
#include <array>

#include "formats/mf4/block_groups.hpp"
#include "util/time_units.hpp"

namespace xlatr {
namespace {

constexpr unsigned kInData = 1U << static_cast<unsigned>(BusEventFrameType::DataFrame);
constexpr unsigned kInRemote = 1U << static_cast<unsigned>(BusEventFrameType::RemoteFrame);
constexpr unsigned kInError = 1U << static_cast<unsigned>(BusEventFrameType::ErrorFrame);
constexpr unsigned kInAll = kInData | kInRemote | kInError;

constexpr std::uint8_t kSyncByTime = 1;
constexpr std::uint8_t kAllDecimals = 0xFF;
constexpr std::uint32_t kTimeBits = 64;
constexpr std::uint32_t kFrameOffset = 8;  // after the time

// The fields of a frame in the order of their channels.
struct FieldRow {
  std::string_view name;
  unsigned frames;
  std::uint32_t offset;         // in records of data and remote frames
  std::uint32_t offsetInError;  // in records of error frames
  std::uint8_t bitOffset;
  std::uint32_t bitCount;
  std::uint32_t flags;
};

constexpr std::uint32_t kLimitFlags = kChannelBusEvent | kChannelLimitValid | kChannelPrecisionValid;
constexpr std::string_view kDataBytes = "DataBytes";
constexpr std::string_view kBusChannel = "BusChannel";

constexpr std::array kFields = {
    FieldRow{kBusChannel, kInAll, 12, 8, 0, 8, kChannelBusEvent},
    FieldRow{kDataBytes, kInData, 16, 0, 0, 0, kChannelBusEvent | kChannelPrecisionValid},
    FieldRow{"DataLength", kInData | kInRemote, 15, 0, 0, 8, kLimitFlags},
    FieldRow{"DLC", kInData | kInRemote, 14, 0, 0, 8, kLimitFlags},
    FieldRow{"ID", kInData | kInRemote, 8, 0, 0, 32, kLimitFlags},
    FieldRow{"IDE", kInData | kInRemote, 13, 0, 4, 1, kChannelBusEvent},
    FieldRow{"Flags", kInAll, 13, 9, 0, 8, kChannelBusEvent},
    FieldRow{"Dir", kInAll, 13, 9, 0, 1, kChannelBusEvent},
    FieldRow{"EDL", kInData, 13, 0, 1, 1, kChannelBusEvent},
    FieldRow{"BRS", kInData, 13, 0, 2, 1, kChannelBusEvent},
    FieldRow{"ESI", kInData, 13, 0, 3, 1, kChannelBusEvent},
    FieldRow{"ErrorType", kInError, 0, 10, 0, 8, kChannelBusEvent},
    FieldRow{"BitPosition", kInError, 0, 11, 0, 8, kChannelBusEvent},
};

// What a frame takes in a record, after the time: everything up to the payload, the payload or what stands for it, and
// of error frames what is said of the error.
constexpr std::uint32_t kFrameBytesBeforePayload = 8;
constexpr std::uint32_t kErrorFrameBytes = 4;

std::uint32_t payloadBytes(const MdfLayoutOptions& options) {
  return options.largePayload && !options.usesSignalData() ? 64 : 8;  // 8 are also an offset into signal data
}

std::uint32_t frameBytes(const MdfLayoutOptions& options, BusEventFrameType kind) {
  switch (kind) {
    case BusEventFrameType::DataFrame:
      return kFrameBytesBeforePayload + payloadBytes(options);
    case BusEventFrameType::RemoteFrame:
      return kFrameBytesBeforePayload;
    default:
      return kErrorFrameBytes;
  }
}

template <class Enum>
std::uint8_t number(Enum value) {
  return static_cast<std::uint8_t>(value);
}

std::unique_ptr<ChannelBlock> createTime() {
  auto channel = std::make_unique<ChannelBlock>();
  channel->data.cnType = number(MdfChannelType::Master);
  channel->data.cnSyncType = kSyncByTime;
  channel->data.cnDataType = number(MdfDataType::RealLittle);
  channel->data.cnBitCount = kTimeBits;
  channel->setName("t");
  channel->setConversion(ChannelConversionBlock::createForTime());
  return channel;
}

void describeDataBytes(const MdfLayoutOptions& options, ChannelBlockData& data) {
  data.cnType = number(options.usesSignalData() ? MdfChannelType::VariableLength : MdfChannelType::MaximumLength);
  data.cnDataType = number(MdfDataType::ByteArray);
  data.cnBitCount = 8 * payloadBytes(options);
  if (options.layout == MdfLayout::SignalDataStream) {
    data.cnFlags |= kChannelStream;
  }
}

std::unique_ptr<ChannelBlock> createField(const FieldRow& row, const MdfLayoutOptions& options,
                                          BusEventFrameType kind) {
  constexpr double kLimit = 255.0;  // the identifier's too, which has more values: readers do not look at it
  auto channel = std::make_unique<ChannelBlock>();
  ChannelBlockData& data = channel->data;
  data.cnByteOffset = kind == BusEventFrameType::ErrorFrame ? row.offsetInError : row.offset;
  data.cnBitOffset = row.bitOffset;
  data.cnBitCount = row.bitCount;
  data.cnFlags = row.flags;
  data.cnPrecision = kAllDecimals;
  data.cnLimitMax = row.name == kBusChannel ? 0.0 : kLimit;
  if (row.name == kDataBytes) {
    describeDataBytes(options, data);
  }
  std::string name(mdfFrameName(kind));
  channel->setName(name.append(".").append(row.name));
  return channel;
}

std::unique_ptr<ChannelBlock> createFrame(const MdfLayoutOptions& options, BusEventFrameType kind) {
  auto channel = std::make_unique<ChannelBlock>();
  channel->data.cnDataType = number(MdfDataType::ByteArray);
  channel->data.cnByteOffset = kFrameOffset;
  channel->data.cnBitCount = 8 * frameBytes(options, kind);
  channel->data.cnFlags = kChannelBusEvent | kChannelPrecisionValid;
  channel->data.cnPrecision = kAllDecimals;
  channel->setName(mdfFrameName(kind));
  channel->setSource(SourceInformationBlock::createForChannel());
  for (const FieldRow& row : kFields) {
    if ((row.frames >> static_cast<unsigned>(kind) & 1U) != 0) {
      channel->composition().add(createField(row, options, kind));
    }
  }
  return channel;
}

// The kinds of frames that have groups, from this one on.
std::vector<BusEventFrameType> kindsFrom(const MdfLayoutOptions& options, BusEventFrameType first) {
  std::vector<BusEventFrameType> kinds;
  for (const auto kind :
       {BusEventFrameType::DataFrame, BusEventFrameType::RemoteFrame, BusEventFrameType::ErrorFrame}) {
    if (kind == first || (kind > first && !options.dataFramesOnly)) {
      kinds.push_back(kind);
    }
  }
  return kinds;
}

}  // namespace

std::unique_ptr<ChannelConversionBlock> ChannelConversionBlock::createForTime() {
  auto conversion = std::make_unique<ChannelConversionBlock>();
  conversion->data.ccType = number(MdfConversionType::Linear);
  conversion->data.ccVal = {0.0, kSecondsPerUnit<RealNanoseconds>};
  conversion->data.ccValCount = 2;
  conversion->unit_.add(createText("s"));
  return conversion;
}

std::unique_ptr<ChannelGroupBlock> ChannelGroupBlock::createTree(const MdfLayoutOptions& options,
                                                                 BusEventFrameType kind) {
  auto group = std::make_unique<ChannelGroupBlock>();
  group->data.cgRecordId = static_cast<std::uint64_t>(kind);
  group->data.cgFlags = kGroupBusEvent | kGroupPlainBusEvent;
  group->data.cgDataBytes = kFrameOffset + frameBytes(options, kind);
  group->channels_.add(createTime());
  group->channels_.add(createFrame(options, kind));
  group->name_ = mdfFrameName(kind);
  group->nameText_.add(createText(*group->name_));
  group->source_.add(SourceInformationBlock::createForGroup());
  return group;
}

std::unique_ptr<DataGroupBlock> DataGroupBlock::createTree(const MdfLayoutOptions& options, BusEventFrameType kind) {
  auto group = std::make_unique<DataGroupBlock>();
  group->data.dgRecIdSize = options.isSorted() ? 0 : 1;
  for (const auto each : kindsFrom(options, kind)) {
    if (each == kind || !options.isSorted()) {
      group->channelGroups_.add(ChannelGroupBlock::createTree(options, each));
    }
  }
  if (options.zipped) {
    group->setDataPlaceholder(std::make_unique<DataZippedBlock>());
  } else {
    group->setDataPlaceholder(std::make_unique<DataBlock>());
  }
  return group;
}

std::unique_ptr<DataGroupBlock> DataGroupBlock::createEmpty() {
  auto group = std::make_unique<DataGroupBlock>();
  group->data.dgRecIdSize = 1;
  return group;
}

void addDataGroups(const MdfLayoutOptions& options, BlockChain<DataGroupBlock>& groups) {
  for (const auto kind : kindsFrom(options, BusEventFrameType::DataFrame)) {
    if (kind == BusEventFrameType::DataFrame || options.isSorted()) {
      groups.add(DataGroupBlock::createTree(options, kind));
    }
  }
}

}  // namespace xlatr
