#include "formats/mf4/mdf_record_parser.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

#include "messages/fd_kind.hpp"

namespace xlatr {
namespace {

constexpr char kUnsupportedStream[] = "VLSD stream channels are not supported";
constexpr char kUnsupportedBus[] = "Not implemented";

constexpr std::uint32_t kLengthPrefix = 4;  // bytes before each payload in signal data

constexpr std::uint32_t bitOf(BusEventField field) {
  return static_cast<std::uint32_t>(field);
}

constexpr std::uint32_t kNeededByRemoteFrame =
    bitOf(BusEventField::BusChannel) | bitOf(BusEventField::ID) | bitOf(BusEventField::DLC);
constexpr std::uint32_t kNeededByDataFrame =
    kNeededByRemoteFrame | bitOf(BusEventField::DataLength) | bitOf(BusEventField::DataBytes);

// What a frame's name says of its messages.
struct FrameTraits {
  MessageType type;
  MessageKind kind;
};
constexpr std::array<FrameTraits, 4> kFrameTraits = {{
    {MessageType::Rx, MessageKind::DT},
    {MessageType::Rx, MessageKind::RR},
    {MessageType::Error, MessageKind::ER},
    {MessageType::Warng, MessageKind::Unknown},
}};

constexpr std::uint64_t lowBits(std::uint64_t count) {
  return count >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

constexpr std::uint64_t bytesOfBits(std::uint64_t bits) {
  return (bits + 7) / 8;
}

constexpr std::uint64_t swapBytes(std::uint64_t value) {
  std::uint64_t swapped = 0;
  for (int index = 0; index < 8; ++index) {
    swapped = swapped << 8 | (value >> (8 * index) & 0xFFU);
  }
  return swapped;
}

template <class Enum>
bool is(std::uint8_t number, Enum value) {
  return number == static_cast<std::uint8_t>(value);
}

bool isBigEndian(std::uint8_t dataType) {
  return dataType % 2 != 0;
}

// The whole bytes that the bits fill up, from the byte offset on; the bit offset then takes low bits off them. So a
// field that begins within a byte and ends in another one loses what stands in the last byte.
MdfNumberField makeNumberField(const ChannelBlockData& data) {
  const std::uint64_t byteCount = bytesOfBits(data.cnBitCount);
  MdfNumberField number;
  number.offset = data.cnByteOffset;
  number.isBigEndian = isBigEndian(data.cnDataType);
  if (byteCount == 0 || data.cnBitOffset >= 8 * byteCount) {
    return number;  // a mask of 0: always 0
  }
  const std::uint64_t above = number.isBigEndian ? 64 - 8 * byteCount : 0;
  number.shift = static_cast<std::uint8_t>(above + data.cnBitOffset);
  number.mask = lowBits(data.cnBitCount) & lowBits(8 * byteCount - data.cnBitOffset);
  return number;
}

constexpr std::uint32_t kMostNumberBits = 64;

// The nearest integer; negative ones wrap around. Nothing for what no 64 bits hold.
std::optional<std::uint64_t> toInteger(std::optional<double> value) {
  constexpr double kEnd = 18446744073709551616.0;  // 2 to the 64th
  if (!value) {
    return std::nullopt;
  }
  const double rounded = std::round(*value);
  if (rounded >= 0.0 && rounded < kEnd) {
    return static_cast<std::uint64_t>(rounded);
  }
  return rounded < 0.0 && rounded >= -kEnd / 2
             ? std::optional(static_cast<std::uint64_t>(static_cast<std::int64_t>(rounded)))
             : std::nullopt;
}

// Microseconds: raw times factor by divisor. Division where the factor is no whole number: it rounds only once.
struct TimeUnit {
  double conversion;  // to seconds
  double factor;
  double divisor;
};
constexpr std::array kTimeUnits = {
    TimeUnit{1e-9, 1.0, 1000.0},
    TimeUnit{1e-6, 1.0, 1.0},
    TimeUnit{0.001, 1000.0, 1.0},
    TimeUnit{1.0, 1000000.0, 1.0},
};

const TimeUnit* timeUnitOf(ChannelConversionBlock* conversion) {
  if (conversion == nullptr) {
    return kTimeUnits.data();  // nanoseconds
  }
  const ChannelConversionBlockData& data = conversion->data;
  if (!is(data.ccType, MdfConversionType::Linear) || data.ccVal.size() != 2 || data.ccVal[0] != 0.0 ||
      conversion->unitText() != "s") {
    return nullptr;
  }
  const auto* const unit = std::ranges::find(kTimeUnits, data.ccVal[1], &TimeUnit::conversion);
  return unit == kTimeUnits.end() ? nullptr : unit;
}

struct TopChannel {
  ChannelBlock* channel;
  bool isMaster;
};

// The channels that make a message: the master, and those named after a frame other than an overload frame.
std::vector<TopChannel> findTopChannels(ChannelGroupBlock& group) {
  constexpr std::size_t kEnoughToRefuse = 3;
  std::vector<TopChannel> found;
  for (ChannelBlock& channel : group.channels()) {
    const bool isMaster = is(channel.data.cnType, MdfChannelType::Master);
    BusEventFrameType frame = BusEventFrameType::OverloadFrame;
    if (isMaster || (busEventFrameTypeFromText(channel.name(), frame) && frame != BusEventFrameType::OverloadFrame)) {
      found.push_back({&channel, isMaster});
    }
    if (found.size() == kEnoughToRefuse) {
      break;
    }
  }
  return found;
}

std::string withoutFirst(std::string text, std::string_view prefix) {
  const std::size_t begin = text.find(prefix);
  return begin == std::string::npos ? text : text.erase(begin, prefix.size());
}

}  // namespace

std::uint64_t MdfNumberField::read(const std::uint8_t* record) const {
  const auto bytes = loadLittle<std::uint64_t>(record + offset);
  return ((isBigEndian ? swapBytes(bytes) : bytes) >> shift) & mask;
}

MdfRecordParser::MdfRecordParser(ChannelGroupBlock& group) : recordSize_(group.data.cgDataBytes) {
  const std::vector<TopChannel> top = findTopChannels(group);
  if (top.size() != 2) {
    return;
  }
  const std::string stated = group.pathSeparatorText();
  const std::string separator = stated.empty() ? std::string(1, '.') : stated;
  for (const auto& [channel, isMaster] : top) {
    Step step;
    if (isMaster) {
      step.time = makeTimeStep(*channel);
    } else if (is(channel->data.cnType, MdfChannelType::FixedLength)) {
      step.frame = makeFrameStep(*channel, separator);
    }
    if (!step.time && !step.frame) {
      return;
    }
    steps_.push_back(std::move(step));
  }
  complete_ = true;
}

bool MdfRecordParser::fits(std::uint64_t offset, std::uint64_t count) const {
  return offset + count <= recordSize_;
}

std::unique_ptr<MdfRecordParser::TimeStep> MdfRecordParser::makeTimeStep(ChannelBlock& channel) const {
  const ChannelBlockData& data = channel.data;
  const bool isReal = is(data.cnDataType, MdfDataType::RealLittle) || is(data.cnDataType, MdfDataType::RealBig);
  if (data.cnDataType > static_cast<std::uint8_t>(MdfDataType::RealBig) || data.cnBitCount > kMostNumberBits ||
      (isReal && data.cnBitCount != 32 && data.cnBitCount != 64) ||
      !fits(data.cnByteOffset, bytesOfBits(data.cnBitCount))) {
    return nullptr;
  }
  const TimeUnit* const unit = timeUnitOf(channel.conversion());
  if (unit == nullptr) {
    return nullptr;
  }
  auto step = std::make_unique<TimeStep>();
  step->number = makeNumberField(data);
  step->bitCount = static_cast<std::uint8_t>(data.cnBitCount);
  step->factor = unit->factor;
  step->divisor = unit->divisor;
  if (isReal) {
    step->kind = data.cnBitCount == 32 ? TimeKind::Real32 : TimeKind::Real64;
  } else if (is(data.cnDataType, MdfDataType::SignedLittle) || is(data.cnDataType, MdfDataType::SignedBig)) {
    step->kind = TimeKind::Signed;
  }
  return step;
}

std::unique_ptr<MdfRecordParser::FrameStep> MdfRecordParser::makeFrameStep(ChannelBlock& channel,
                                                                           const std::string& separator) const {
  auto step = std::make_unique<FrameStep>();
  static_cast<void>(busEventFrameTypeFromText(channel.name(), step->type));
  const std::string prefix = std::string(mdfFrameName(step->type)).append(separator);
  for (ChannelBlock& child : channel.composition()) {
    BusEventField name = BusEventField::None;
    if (!busEventFieldFromText(withoutFirst(child.name(), prefix), name)) {
      continue;
    }
    if (step->fields.size() == kMostFields || !makeField(child, name, *step)) {
      return nullptr;
    }
  }
  return step;
}

// Answers false for a frame that is not read at all. A field that is not read is no field.
bool MdfRecordParser::makeField(ChannelBlock& channel, BusEventField name, FrameStep& step) const {
  struct TargetRow {
    BusEventField name;
    Target target;
  };
  static constexpr std::array kTargets = {
      TargetRow{BusEventField::BusChannel, Target::Bus},
      TargetRow{BusEventField::ID, Target::Id},
      TargetRow{BusEventField::IDE, Target::Extended},
      TargetRow{BusEventField::DLC, Target::Dlc},
      TargetRow{BusEventField::DataLength, Target::Length},
      TargetRow{BusEventField::DataBytes, Target::FixedPayload},
      TargetRow{BusEventField::Dir, Target::Direction},
      TargetRow{BusEventField::RTR, Target::Remote},
      TargetRow{BusEventField::EDL, Target::FdFormat},
      TargetRow{BusEventField::BRS, Target::BitRateSwitch},
      TargetRow{BusEventField::ESI, Target::ErrorState},
      TargetRow{BusEventField::BitPosition, Target::BitPosition},
      TargetRow{BusEventField::ErrorType, Target::ErrorType},
  };
  const auto* const row = std::ranges::find(kTargets, name, &TargetRow::name);
  if (row == kTargets.end()) {
    step.alwaysFound |= bitOf(name);
    return true;
  }
  Field field;
  field.target = row->target;
  field.found = name;
  const bool isCoded = (channel.data.cnFlags & kChannelMonotonous) != 0 &&
                       (field.target == Target::BitPosition || field.target == Target::ErrorType);
  const bool isRead = field.target == Target::FixedPayload ? makePayload(channel, field, step)
                      : isCoded                            ? makeErrorField(channel, field)
                                                           : makeNumber(channel, field);
  if (isRead) {
    step.fields.push_back(field);
  }
  return true;
}

bool MdfRecordParser::makeNumber(ChannelBlock& channel, Field& field) const {
  const ChannelBlockData& data = channel.data;
  const ChannelConversionBlock* const conversion = channel.conversion();
  if (is(data.cnType, MdfChannelType::VirtualData)) {
    const auto value = toInteger(conversion != nullptr ? conversion->evaluate(0.0) : std::nullopt);
    field.source = Source::Constant;
    field.constant = value.value_or(0);
    return value.has_value();
  }
  if (!is(data.cnType, MdfChannelType::FixedLength) ||
      data.cnDataType > static_cast<std::uint8_t>(MdfDataType::RealBig) || data.cnBitCount > kMostNumberBits ||
      !fits(data.cnByteOffset, bytesOfBits(data.cnBitCount))) {
    return false;
  }
  field.number = makeNumberField(data);
  if (conversion != nullptr) {
    field.source = Source::ConvertedNumber;
    field.conversion = conversion;
  }
  return true;
}

bool MdfRecordParser::makePayload(ChannelBlock& channel, Field& field, FrameStep& step) const {
  const ChannelBlockData& data = channel.data;
  const std::uint64_t byteCount = bytesOfBits(data.cnBitCount);
  if (!channel.isByteArray()) {
    return false;
  }
  field.source = Source::Payload;
  if (!is(data.cnType, MdfChannelType::VariableLength)) {
    field.number.offset = data.cnByteOffset;
    field.byteCount = static_cast<std::uint32_t>(byteCount);
    return fits(data.cnByteOffset, byteCount);
  }
  if ((data.cnFlags & kChannelStream) != 0) {
    throwProcessingFailure(kUnsupportedStream);
  }
  if (data.cnBitCount > kMostNumberBits || !fits(data.cnByteOffset, byteCount)) {
    return false;
  }
  field.target = Target::StoredPayload;
  field.number = makeNumberField(data);
  const auto payloads = channel.dataLink();
  if (auto* const zipped = dynamic_cast<DataZippedBlock*>(payloads.get()); zipped != nullptr) {
    step.storedPayloads = zipped->zippedData();  // as it stands: readsZippedSignalDataWithoutInflatingIt
  } else if (payloads) {
    step.storedPayloads = payloads->getData();
  }
  return true;
}

// Errors as some loggers code them: a position is the low byte of two, a type is an index into a table whose bytes are
// the types.
bool MdfRecordParser::makeErrorField(ChannelBlock& channel, Field& field) const {
  const ChannelBlockData& data = channel.data;
  const std::uint64_t byteCount = bytesOfBits(data.cnBitCount);
  const bool isPosition = field.target == Target::BitPosition;
  if (byteCount != (isPosition ? 2 : 4) || !fits(data.cnByteOffset, byteCount)) {
    return false;
  }
  ChannelBlockData plain = data;
  plain.cnBitOffset = 0;
  field.number = makeNumberField(plain);
  if (isPosition) {
    field.number.mask &= 0xFF;
    return true;
  }
  field.source = Source::TableByte;
  field.conversion = channel.conversion();
  return field.conversion != nullptr;
}

void MdfRecordParser::parse(const std::uint8_t* record, MdfCanMessage& message) const {
  for (const Step& step : steps_) {
    if (!(step.time ? readTime(*step.time, record, message) : readFrame(*step.frame, record, message))) {
      return;
    }
  }
  if (!complete_) {
    return;
  }
  if (message.type == MessageType::Rx && message.direction == MessageDirection::Tx) {
    message.type = MessageType::Tx;
  }
  message.valid = true;
}

// A number that is none has no place in an order, and -1 is what stands for no time.
bool MdfRecordParser::readTime(const TimeStep& step, const std::uint8_t* record, MdfCanMessage& message) {
  constexpr double kNoTime = -1.0;
  const std::uint64_t bits = step.number.read(record);
  double value = 0.0;
  switch (step.kind) {
    case TimeKind::Unsigned:
      value = static_cast<double>(bits);
      break;
    case TimeKind::Signed: {
      const int unused = step.bitCount == 0 ? 0 : 64 - step.bitCount;
      value = static_cast<double>(static_cast<std::int64_t>(bits << unused) >> unused);
      break;
    }
    case TimeKind::Real32:
      value = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
      break;
    case TimeKind::Real64:
      value = std::bit_cast<double>(bits);
      break;
  }
  if (std::isnan(value) || value == kNoTime) {
    return false;
  }
  message.time = value * step.factor / step.divisor;
  return true;
}

bool MdfRecordParser::readFrame(const FrameStep& step, const std::uint8_t* record, MdfCanMessage& message) {
  if (message.busKind == 1 || message.busKind == 2) {
    throwProcessingFailure(kUnsupportedBus);
  }
  const FrameTraits& traits = kFrameTraits[static_cast<std::size_t>(step.type)];
  message.type = traits.type;
  message.kind = traits.kind;
  message.isRemote = message.isRemote || step.type == BusEventFrameType::RemoteFrame;
  message.foundFields |= step.alwaysFound;
  for (const Field& field : step.fields) {
    if (readField(field, step, record, message)) {
      message.foundFields |= bitOf(field.found);
    }
  }
  if (!message.isRemote && message.length > message.data.size()) {
    message.length = 0;
    message.foundFields &= ~bitOf(BusEventField::DataLength);
  }
  if (message.isRemote) {
    return (message.foundFields & kNeededByRemoteFrame) == kNeededByRemoteFrame;
  }
  return message.type == MessageType::Error || (message.foundFields & kNeededByDataFrame) == kNeededByDataFrame;
}

bool MdfRecordParser::readField(const Field& field, const FrameStep& step, const std::uint8_t* record,
                                MdfCanMessage& message) {
  if (field.source == Source::Payload) {
    return message.isRemote || readPayload(field, step, record, message.data);
  }
  std::uint64_t value = 0;
  if (!readValue(field, record, value)) {
    return false;
  }
  if (field.target == Target::Id) {
    setIdentifier(static_cast<std::uint32_t>(value), message);
  } else {
    setField(field.target, value, message);
  }
  return true;
}

bool MdfRecordParser::readValue(const Field& field, const std::uint8_t* record, std::uint64_t& value) {
  switch (field.source) {
    case Source::Number:
      value = field.number.read(record);
      return true;
    case Source::Constant:
      value = field.constant;
      return true;
    case Source::ConvertedNumber: {
      const auto converted = toInteger(field.conversion->evaluate(static_cast<double>(field.number.read(record))));
      value = converted.value_or(0);
      return converted.has_value();
    }
    case Source::TableByte: {
      const std::vector<double>& table = field.conversion->data.ccVal;
      const std::uint64_t index = field.number.read(record);
      if (index >= table.size()) {
        return false;
      }
      value = std::bit_cast<std::uint64_t>(table[index]) & 0xFFU;
      return true;
    }
    case Source::Payload:
      break;
  }
  return false;
}

// Only the first identifier counts.
void MdfRecordParser::setIdentifier(std::uint32_t rawId, MdfCanMessage& message) {
  constexpr std::uint32_t kExtended = 0x80000000;
  if (message.id == kNoIdentifier) {
    message.extended = message.extended || (rawId & kExtended) != 0;
    message.id = rawId & ~kExtended;
  }
}

// Bits that are not set say nothing, so that the order of their channels does not matter.
void MdfRecordParser::setField(Target target, std::uint64_t value, MdfCanMessage& message) {
  const auto number = static_cast<std::uint32_t>(value);
  const bool isSet = value != 0;
  MessageKind& kind = message.kind;
  switch (target) {
    case Target::Bus:
      message.bus = number;
      break;
    case Target::Extended:
      message.extended = isSet;
      break;
    case Target::Dlc:
      message.dlc = number;
      break;
    case Target::Length:
      message.length = number;
      break;
    case Target::Direction:
      message.direction = isSet ? MessageDirection::Tx : MessageDirection::Rx;
      break;
    case Target::Remote:
      kind = isSet ? MessageKind::RR : kind;
      message.isRemote = message.isRemote || isSet;
      break;
    case Target::FdFormat:
      kind = isSet ? fdKind(hasBrs(kind), hasEsi(kind)) : kind;
      break;
    case Target::BitRateSwitch:
      kind = isSet ? fdKind(true, hasEsi(kind)) : kind;
      break;
    case Target::ErrorState:
      kind = isSet ? fdKind(hasBrs(kind), true) : kind;
      break;
    case Target::BitPosition:
      message.bitPosition = static_cast<std::uint8_t>(value);
      break;
    case Target::ErrorType:
      message.errorType = static_cast<std::uint8_t>(value);
      break;
    case Target::Id:
    case Target::FixedPayload:
    case Target::StoredPayload:
      break;
  }
}

bool MdfRecordParser::readPayload(const Field& field, const FrameStep& step, const std::uint8_t* record,
                                  std::vector<std::uint8_t>& payload) {
  if (field.target == Target::StoredPayload) {
    return readStoredPayload(step.storedPayloads, field.number.read(record), payload);
  }
  const std::uint8_t* const begin = record + field.number.offset;
  payload.assign(begin, begin + field.byteCount);
  return true;
}

// In signal data each payload has its length in front of it.
bool MdfRecordParser::readStoredPayload(const RecordBytes& stored, std::uint64_t offset,
                                        std::vector<std::uint8_t>& payload) {
  if (offset > stored.size() || stored.size() - offset < kLengthPrefix) {
    return false;
  }
  const std::uint8_t* const begin = stored.data() + offset;
  const auto length = loadLittle<std::uint32_t>(begin);
  if (length > kLongestPayload || length > stored.size() - offset - kLengthPrefix) {
    return false;
  }
  payload.assign(begin + kLengthPrefix, begin + kLengthPrefix + length);
  return true;
}

}  // namespace xlatr
