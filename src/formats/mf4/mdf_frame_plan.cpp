#include "formats/mf4/mdf_frame_plan.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "util/failures.hpp"

namespace xlatr {
namespace {

constexpr char kUnsupportedStream[] = "VLSD stream channels are not supported";

using Source = MdfFrameField::Source;
using Target = MdfFrameField::Target;

struct TargetRow {
  BusEventField name;
  Target target;
};

constexpr std::array kTargetRows = {
    TargetRow{BusEventField::BusChannel, Target::Bus},      TargetRow{BusEventField::ID, Target::Id},
    TargetRow{BusEventField::IDE, Target::Extended},        TargetRow{BusEventField::DLC, Target::Dlc},
    TargetRow{BusEventField::DataLength, Target::Length},   TargetRow{BusEventField::DataBytes, Target::FixedPayload},
    TargetRow{BusEventField::Dir, Target::Direction},       TargetRow{BusEventField::RTR, Target::Remote},
    TargetRow{BusEventField::EDL, Target::FdFormat},        TargetRow{BusEventField::BRS, Target::BitRateSwitch},
    TargetRow{BusEventField::ESI, Target::ErrorState},      TargetRow{BusEventField::BitPosition, Target::BitPosition},
    TargetRow{BusEventField::ErrorType, Target::ErrorType},
};

std::string withoutFirst(std::string text, std::string_view prefix) {
  const std::size_t begin = text.find(prefix);
  return begin == std::string::npos ? text : text.erase(begin, prefix.size());
}

}  // namespace

std::unique_ptr<MdfFramePlan> MdfFramePlan::make(ChannelBlock& channel, const std::string& separator,
                                                 std::uint32_t recordSize) {
  std::unique_ptr<MdfFramePlan> plan(new MdfFramePlan(recordSize));
  static_cast<void>(busEventFrameTypeFromText(channel.name(), plan->type_));
  const std::string prefix = std::string(mdfFrameName(plan->type_)).append(separator);
  for (ChannelBlock& child : channel.composition()) {
    BusEventField name = BusEventField::None;
    if (!busEventFieldFromText(withoutFirst(child.name(), prefix), name)) {
      continue;
    }
    if (plan->fields_.size() == kMostFields) {
      return nullptr;
    }
    plan->addField(child, name);
  }
  return plan;
}

// A channel that is not read is no field.
void MdfFramePlan::addField(ChannelBlock& channel, BusEventField name) {
  const auto* const row = std::ranges::find(kTargetRows, name, &TargetRow::name);
  if (row == kTargetRows.end()) {
    alwaysFound_ |= bitOf(name);
    return;
  }
  MdfFrameField field;
  field.target = row->target;
  field.found = name;
  const bool isCoded = (channel.data.cnFlags & kChannelMonotonous) != 0 &&
                       (field.target == Target::BitPosition || field.target == Target::ErrorType);
  const bool isRead = field.target == Target::FixedPayload ? makePayload(channel, field)
                      : isCoded                            ? makeErrorField(channel, field)
                                                           : makeNumber(channel, field);
  if (isRead) {
    fields_.push_back(field);
  }
}

bool MdfFramePlan::makeNumber(ChannelBlock& channel, MdfFrameField& field) const {
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
  field.number = MdfNumberField::of(data, Way::compatible());
  if (conversion != nullptr) {
    field.source = Source::ConvertedNumber;
    field.conversion = conversion;
  }
  return true;
}

bool MdfFramePlan::makePayload(ChannelBlock& channel, MdfFrameField& field) {
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
  field.number = MdfNumberField::of(data, Way::compatible());
  const auto payloads = channel.dataLink();
  if (auto* const zipped = dynamic_cast<DataZippedBlock*>(payloads.get()); zipped != nullptr) {
    storedPayloads_ = zipped->zippedData();  // as it stands: readsZippedSignalDataWithoutInflatingIt
  } else if (payloads) {
    storedPayloads_ = payloads->getData();
  }
  return true;
}

// Errors as some loggers code them: a position is the low byte of two, a type is an index into a table whose bytes are
// the types.
bool MdfFramePlan::makeErrorField(ChannelBlock& channel, MdfFrameField& field) const {
  const ChannelBlockData& data = channel.data;
  const std::uint64_t byteCount = bytesOfBits(data.cnBitCount);
  const bool isPosition = field.target == Target::BitPosition;
  if (byteCount != (isPosition ? 2 : 4) || !fits(data.cnByteOffset, byteCount)) {
    return false;
  }
  ChannelBlockData plain = data;
  plain.cnBitOffset = 0;
  field.number = MdfNumberField::of(plain, Way::compatible());
  if (isPosition) {
    field.number.mask &= 0xFF;
    return true;
  }
  field.source = Source::TableByte;
  field.conversion = channel.conversion();
  return field.conversion != nullptr;
}

}  // namespace xlatr
