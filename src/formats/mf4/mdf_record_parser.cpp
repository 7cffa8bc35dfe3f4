#include "formats/mf4/mdf_record_parser.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace xlatr {
namespace {

std::optional<TimeUnit> unitOfTimes(ChannelConversionBlock* conversion) {
  if (conversion == nullptr) {
    return TimeUnit::Nanosecond;
  }
  const ChannelConversionBlockData& data = conversion->data;
  if (!is(data.ccType, MdfConversionType::Linear) || data.ccVal.size() != 2 || data.ccVal[0] != 0.0 ||
      conversion->unitText() != "s") {
    return std::nullopt;
  }
  return timeUnitOf(data.ccVal[1]);
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

}  // namespace

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
      step.frame = MdfFramePlan::make(*channel, separator, recordSize_);
    }
    if (!step.time && !step.frame) {
      return;
    }
    steps_.push_back(std::move(step));
  }
  complete_ = true;
}

std::unique_ptr<MdfRecordParser::TimeStep> MdfRecordParser::makeTimeStep(ChannelBlock& channel) const {
  const ChannelBlockData& data = channel.data;
  const bool isReal = is(data.cnDataType, MdfDataType::RealLittle) || is(data.cnDataType, MdfDataType::RealBig);
  if (data.cnDataType > static_cast<std::uint8_t>(MdfDataType::RealBig) || data.cnBitCount > kMostNumberBits ||
      (isReal && data.cnBitCount != 32 && data.cnBitCount != 64) ||
      data.cnByteOffset + bytesOfBits(data.cnBitCount) > recordSize_) {
    return nullptr;
  }
  const std::optional<TimeUnit> unit = unitOfTimes(channel.conversion());
  if (!unit) {
    return nullptr;
  }
  auto step = std::make_unique<TimeStep>();
  step->number = MdfNumberField::of(data, Way::compatible());
  step->bitCount = static_cast<std::uint8_t>(data.cnBitCount);
  step->unit = *unit;
  if (isReal) {
    step->kind = data.cnBitCount == 32 ? TimeKind::Real32 : TimeKind::Real64;
  } else if (is(data.cnDataType, MdfDataType::SignedLittle) || is(data.cnDataType, MdfDataType::SignedBig)) {
    step->kind = TimeKind::Signed;
  }
  return step;
}

void MdfRecordParser::parse(const std::uint8_t* record, MdfCanMessage& message) const {
  for (const Step& step : steps_) {
    if (!(step.time ? readTime(*step.time, record, message) : step.frame->read(record, message))) {
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

// Times are put in order, and NaN has no place in one; -1 stands for no time.
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
  message.time = toMicroseconds(value, step.unit);
  return true;
}

}  // namespace xlatr
