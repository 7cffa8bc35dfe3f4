#include "messages/enumerations.hpp"

#include <array>
#include <cstddef>
#include <vector>

#include "messages/enum_text.hpp"
#include "util/text.hpp"

namespace xlatr {

namespace {

constexpr std::string_view kUnknown = "Unknown";

constexpr auto kMessageKinds = std::to_array<EnumText<MessageKind>>({
    {MessageKind::DT, "DT"},
    {MessageKind::FD, "FD"},
    {MessageKind::FB, "FB"},
    {MessageKind::FE, "FE"},
    {MessageKind::BI, "BI"},
    {MessageKind::RR, "RR"},
    {MessageKind::ST, "ST"},
    {MessageKind::EC, "EC"},
    {MessageKind::ER, "ER"},
    {MessageKind::EV, "EV"},
    {MessageKind::XL, "XL"},
    {MessageKind::Unknown, kUnknown},
});
constexpr TextIndex kMessageKindIndex(kMessageKinds);
static_assert(kMessageKindIndex.isPerfect());

constexpr auto kMessageTypes = std::to_array<EnumText<MessageType>>({
    {MessageType::Rx, "Rx"},
    {MessageType::Tx, "Tx"},
    {MessageType::Warng, "Warng"},
    {MessageType::Error, "Error"},
    {MessageType::Unknown, kUnknown},
});
constexpr TextIndex kMessageTypeIndex(kMessageTypes);
static_assert(kMessageTypeIndex.isPerfect());

constexpr auto kMessageDirections = std::to_array<EnumText<MessageDirection>>({
    {MessageDirection::None, "None"},
    {MessageDirection::Rx, "Rx"},
    {MessageDirection::Tx, "Tx"},
});
constexpr TextIndex kMessageDirectionIndex(kMessageDirections);
static_assert(kMessageDirectionIndex.isPerfect());

constexpr auto kDirectionTypes = std::to_array<EnumText<DirectionType>>({
    {DirectionType::Unknown, "UNKNOWN"},
    {DirectionType::Publisher, "PUB"},
    {DirectionType::Subscriber, "SUB"},
    {DirectionType::SubscriberAutoLength, "SUBAL"},
});

constexpr auto kChecksumTypes = std::to_array<EnumText<ChecksumType>>({
    {ChecksumType::Unknown, "UNKNOWN"},
    {ChecksumType::Classic, "CL"},
    {ChecksumType::Enhanced, "EH"},
    {ChecksumType::Auto, "AU"},
});

constexpr auto kErrorCodes = std::to_array<EnumText<ErrorCode>>({
    {ErrorCode::None, "NONE"},
    {ErrorCode::Checksum, "CK"},
    {ErrorCode::GroundShort, "GS"},
    {ErrorCode::ParityBit0, "P0"},
    {ErrorCode::ParityBit1, "P1"},
    {ErrorCode::InconsistentSynch, "IS"},
    {ErrorCode::SlaveNotResponding, "SR"},
    {ErrorCode::SlotDelay, "SD"},
    {ErrorCode::TimeOut, "TO"},
    {ErrorCode::VBatShort, "VS"},
});

constexpr auto kBlockTypeIds = std::to_array<EnumText<BlockTypeId>>({
    {BlockTypeId::ID, "ID"}, {BlockTypeId::HD, "HD"}, {BlockTypeId::MD, "MD"},          {BlockTypeId::TX, "TX"},
    {BlockTypeId::FH, "FH"}, {BlockTypeId::CH, "CH"}, {BlockTypeId::AT, "AT"},          {BlockTypeId::EV, "EV"},
    {BlockTypeId::DG, "DG"}, {BlockTypeId::CG, "CG"}, {BlockTypeId::SI, "SI"},          {BlockTypeId::CN, "CN"},
    {BlockTypeId::CC, "CC"}, {BlockTypeId::CA, "CA"}, {BlockTypeId::DI, "DI"},          {BlockTypeId::DT, "DT"},
    {BlockTypeId::DV, "DV"}, {BlockTypeId::SR, "SR"}, {BlockTypeId::RD, "RD"},          {BlockTypeId::RI, "RI"},
    {BlockTypeId::RV, "RV"}, {BlockTypeId::SD, "SD"}, {BlockTypeId::DL, "DL"},          {BlockTypeId::LD, "LD"},
    {BlockTypeId::DZ, "DZ"}, {BlockTypeId::HL, "HL"}, {BlockTypeId::Unknown, kUnknown},
});

constexpr auto kBusEventFrameTypes = std::to_array<EnumText<BusEventFrameType>>({
    {BusEventFrameType::DataFrame, "CAN_DATAFRAME"},
    {BusEventFrameType::RemoteFrame, "CAN_REMOTEFRAME"},
    {BusEventFrameType::ErrorFrame, "CAN_ERRORFRAME"},
    {BusEventFrameType::OverloadFrame, "CAN_OVERLOADFRAME"},
});

// Reading ignores case, so these spellings serve both directions.
constexpr auto kBusEventFields = std::to_array<EnumText<BusEventField>>({
    {BusEventField::None, "None"},
    {BusEventField::BusChannel, "BusChannel"},
    {BusEventField::OriginalTime, "OriginalTime"},
    {BusEventField::ID, "ID"},
    {BusEventField::IDE, "IDE"},
    {BusEventField::DLC, "DLC"},
    {BusEventField::DataLength, "DataLength"},
    {BusEventField::DataBytes, "DataBytes"},
    {BusEventField::Dir, "Dir"},
    {BusEventField::CRC, "CRC"},
    {BusEventField::RTR, "RTR"},
    {BusEventField::EDL, "EDL"},
    {BusEventField::BRS, "BRS"},
    {BusEventField::ESI, "ESI"},
    {BusEventField::BitPosition, "BitPosition"},
    {BusEventField::ErrorType, "ErrorType"},
});

// Fields with a name that is read but never written: readsBusEventFieldsThatItNeverRenders.
constexpr auto kReadOnlyBusEventFields = std::to_array<EnumText<BusEventField>>({
    {BusEventField::SRR, "SRR"},
    {BusEventField::R0, "R0"},
    {BusEventField::R1, "R1"},
    {BusEventField::WakeUp, "WAKEUP"},
    {BusEventField::SingleWire, "SINGLEWIRE"},
    {BusEventField::FrameDuration, "FRAMEDURATION"},
});

constexpr auto kWarningErrors = std::to_array<EnumText<WarningErrors>>({
    {WarningErrors::BusLight, "BUSLIGHT"},
    {WarningErrors::BusWarning, "BUSWARNING"},
    {WarningErrors::BusOff, "BUSOFF"},
    {WarningErrors::BusPassive, "BUSPASSIVE"},
});
constexpr std::string_view kOtherBusWarningText = "BUSHEAVY";
constexpr std::string_view kMakersMark = "ZELK";

template <typename Enum>
bool store(std::optional<Enum> value, Enum& result) {
  result = value.value_or(result);
  return value.has_value();
}

}  // namespace

std::string_view messageKindToText(MessageKind value) {
  return textOf(kMessageKinds, value, kUnknown);
}

MessageKind messageKindFromText(std::string_view text) {
  return requireValue(tryMessageKindFromText(text), "String is not a MessageKind", text);
}

std::optional<MessageKind> tryMessageKindFromText(std::string_view text) noexcept {
  return kMessageKindIndex.find(text);
}

std::string_view messageTypeToText(MessageType value) {
  return textOf(kMessageTypes, value, kUnknown);
}

MessageType messageTypeFromText(std::string_view text) {
  return requireValue(tryMessageTypeFromText(text), "String is not a MessageType", text);
}

std::optional<MessageType> tryMessageTypeFromText(std::string_view text) noexcept {
  return kMessageTypeIndex.find(text);
}

std::string_view messageDirectionToText(MessageDirection value) {
  return textOf(kMessageDirections, value, kUnknown);
}

MessageDirection messageDirectionFromText(std::string_view text) {
  return requireValue(tryMessageDirectionFromText(text), "String is not a MessageDirection", text);
}

std::optional<MessageDirection> tryMessageDirectionFromText(std::string_view text) noexcept {
  return kMessageDirectionIndex.find(text);
}

DirectionType directionTypeFromText(std::string_view text) {
  return requireValue(tryDirectionTypeFromText(text), "String is not a DirectionType", text);
}

std::optional<DirectionType> tryDirectionTypeFromText(std::string_view text) noexcept {
  return valueOfAnyCase(kDirectionTypes, text);
}

ChecksumType checksumTypeFromText(std::string_view text) {
  return requireValue(tryChecksumTypeFromText(text), "String is not a ChecksumType", text);
}

std::optional<ChecksumType> tryChecksumTypeFromText(std::string_view text) noexcept {
  return valueOfAnyCase(kChecksumTypes, text);
}

ErrorCode errorCodeFromText(std::string_view text) {
  return requireValue(tryErrorCodeFromText(text), "String is not a ErrorCode", text);
}

std::optional<ErrorCode> tryErrorCodeFromText(std::string_view text) noexcept {
  return valueOfAnyCase(kErrorCodes, text);
}

std::string_view blockTypeIdToText(BlockTypeId value) {
  return textOf(kBlockTypeIds, value, kUnknown);
}

BlockTypeId blockTypeIdFromText(std::string_view text) {
  return requireValue(tryBlockTypeIdFromText(text), "String is not a BlockTypeId", text);
}

std::optional<BlockTypeId> tryBlockTypeIdFromText(std::string_view text) noexcept {
  return valueOf(kBlockTypeIds, text);
}

bool busEventFrameTypeFromText(std::string_view text, BusEventFrameType& result) noexcept {
  return store(valueOfAnyCase(kBusEventFrameTypes, text), result);
}

bool busEventFieldFromText(std::string_view text, BusEventField& result) noexcept {
  return store(valueOfAnyCase(kBusEventFields, text), result) ||
         store(valueOfAnyCase(kReadOnlyBusEventFields, text), result);
}

std::string_view busEventFieldToText(BusEventField value) {
  return textOf(kBusEventFields, value, kUnknown);
}

std::string warningErrorsToText(std::uint32_t mask) {
  std::string text;
  for (const auto& [value, name] : kWarningErrors) {
    const auto bits = static_cast<std::uint32_t>(value);
    if ((mask & bits) == bits) {
      text.append(text.empty() ? "" : ", ").append(name);
    }
  }
  return text;
}

std::uint32_t warningErrorsFromText(std::string_view text) {
  return requireValue(tryWarningErrorsFromText(text), "String is not a WarningErrors", text);
}

std::optional<std::uint32_t> tryWarningErrorsFromText(std::string_view text) {
  const std::string upperCase = toUpperAscii(text);
  std::vector<std::string_view> words;
  splitText(upperCase, " ,", words, true, true);
  std::uint32_t mask = 0;
  for (const std::string_view word : words) {
    auto value = valueOf(kWarningErrors, word);
    if (word == kOtherBusWarningText) {
      value = WarningErrors::BusWarning;
    }
    if (!value && word.find(kMakersMark) == std::string_view::npos) {
      return std::nullopt;
    }
    mask |= value ? static_cast<std::uint32_t>(*value) : 0;
  }
  return mask;
}

}  // namespace xlatr
