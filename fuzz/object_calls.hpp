// The exported functions as calls of one shape, in a table for each family.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "call_arguments.hpp"
#include "support/object_families.hpp"

namespace fuzz {

// What is done to an object, which may be null: the library refuses such a one with a failure of its own.
template <typename Object>
using Call = void (*)(Object*, Arguments&);

template <typename Object, std::size_t kCount>
void callOneOf(const std::array<Call<Object>, kCount>& calls, Object* object, Arguments& arguments) {
  calls.at(arguments.choice(kCount))(object, arguments);
}

// A function that only answers something.
template <auto kFunction, typename Object>
void get(Object* object, Arguments& /*arguments*/) {
  static_cast<void>(kFunction(object));
}

// The pair of functions of a text, with an object or without.
template <auto kSize, auto kCopy, typename... Object>
void copyText(Arguments& arguments, Object*... object) {
  TextBuffer buffer(arguments);
  const std::uint32_t size = kSize(object...);
  kCopy(object..., buffer.data(), buffer.size());
  buffer.requireTextOf(size);
}
template <auto kSize, auto kCopy, typename Object>
void getText(Object* object, Arguments& arguments) {
  copyText<kSize, kCopy>(arguments, object);
}

// The pair of functions of an array: each element is there to be read.
template <auto kSize, auto kArray, typename... Object>
void readArray(Object*... object) {
  const std::uint32_t size = kSize(object...);
  const auto* const array = kArray(object...);
  for (std::uint32_t index = 0; index < size; ++index) {
    require(!(array[index] < 0));
  }
}
template <auto kSize, auto kArray, typename Object>
void getArray(Object* object, Arguments& /*arguments*/) {
  readArray<kSize, kArray>(object);
}

// A function that answers how much was done.
template <auto kFunction, typename Object>
void getPercent(Object* object, Arguments& /*arguments*/) {
  require(!(kFunction(object) < 0.0));
}

// ---- information objects -------------------------------------------------------------------------------------------

template <typename Info>
inline constexpr auto kInfoCalls = std::to_array<Call<typename Info::Object>>({
    get<Info::getValid>,
    get<Info::getVersion>,
    get<Info::getStartTime>,
    getText<Info::getPathSize, Info::getPath>,
});

inline constexpr auto kFileCalls = std::to_array<Call<TraceFileInfo>>({
    get<TraceFileInfo_getValid>,
    get<TraceFileInfo_getSize>,
    getText<TraceFileInfo_getPathSize, TraceFileInfo_getPath>,
    getText<TraceFileInfo_getToStringSize, TraceFileInfo_ToString>,
});

inline constexpr auto kBaseTraceInfoCalls = std::to_array<Call<BaseTraceInfo>>({
    get<BaseTraceInfo_getFormat>,
    getText<BaseTraceInfo_getFormatDescriptionSize, BaseTraceInfo_getFormatDescription>,
    getArray<BaseTraceInfo_getSupportedConversionsSize, BaseTraceInfo_getSupportedConversions>,
    getArray<BaseTraceInfo_getSupportedVersionsSize, BaseTraceInfo_getSupportedVersions>,
});

inline constexpr auto kBlfInfoCalls = std::to_array<Call<BlfInfo>>({
    get<BlfInfo_getValid>,
    get<BlfInfo_GetVersion>,
    get<BlfInfo_getStartTime>,
    getText<BlfInfo_getPathSize, BlfInfo_getPath>,
});

inline constexpr auto kBtrInfoCalls = std::to_array<Call<BtrInfo>>({
    get<BtrInfo_GetValid>,
    get<BtrInfo_GetVersion>,
    get<BtrInfo_getSessionsCount>,
});

// There is no such object to be had, so these get one of another family, and refuse it.
inline constexpr auto kCsvInfoCalls = std::to_array<Call<const CsvInfo>>({
    get<CsvInfo_getValid>,
    get<CsvInfo_GetVersion>,
    get<CsvInfo_getStartTime>,
    getText<CsvInfo_getPathSize, CsvInfo_getPath>,
});

inline constexpr auto kBtrcFileHeaderCalls = std::to_array<Call<const BtrcFileHeader>>({
    get<BtrcFileHeader_getValid>,
    get<BtrcFileHeader_getVersion>,
    get<BtrcFileHeader_getBlockSize>,
    get<BtrcFileHeader_getTimeScalingExponent>,
    get<BtrcFileHeader_getErrorOnRTC>,
    get<BtrcFileHeader_getSystemTime>,
    get<BtrcFileHeader_getFirstFramePosition>,
    getText<BtrcFileHeader_getRTCRawDataStringSize, BtrcFileHeader_getRTCRawDataString>,
    getText<BtrcFileHeader_getSourcePathSize, BtrcFileHeader_getSourcePath>,
});

// ---- messages ------------------------------------------------------------------------------------------------------

template <typename Message>
inline constexpr int kMessageCalls = 0;

template <>
inline constexpr auto kMessageCalls<MessageCan> = std::to_array<Call<MessageCan>>({
    get<MessageCan_getValid>,
    get<MessageCan_getBus>,
    getText<MessageCan_getParsingTextSize, MessageCan_getParsingText>,
    [](MessageCan* message, Arguments& arguments) { MessageCan_ValidateForTargetVersion(message, arguments.number()); },
});

template <>
inline constexpr auto kMessageCalls<MessageAsc> = std::to_array<Call<MessageAsc>>({
    get<MessageAsc_getValid>,
    get<MessageAsc_getBus>,
    getText<MessageAsc_getParsingTextSize, MessageAsc_getParsingText>,
    [](MessageAsc* message, Arguments& arguments) {
      double reference = arguments.number();
      MessageAsc_AdjustTime(message, arguments.flag() ? &reference : nullptr);
    },
});

template <>
inline constexpr auto kMessageCalls<MessageLin> = std::to_array<Call<MessageLin>>({
    get<MessageLin_getValid>,
    getText<MessageLin_getParsingTextSize, MessageLin_getParsingText>,
});

template <>
inline constexpr auto kMessageCalls<MessageBinaryFD> = std::to_array<Call<MessageBinaryFD>>({
    get<MessageBinaryFD_getValid>,
    get<MessageBinaryFD_getBus>,
    getText<MessageBinaryFD_getCommentarySize, MessageBinaryFD_getCommentary>,
    getText<MessageBinaryFD_getParsingBytesStringSize, MessageBinaryFD_getParsingBytesString>,
    [](MessageBinaryFD* message, Arguments& arguments) {
      MessageBinaryFD_ValidateForTargetVersion(message, arguments.number());
    },
});

template <>
inline constexpr auto kMessageCalls<MdfCanMessage> = std::to_array<Call<MdfCanMessage>>({
    get<MdfCanMessage_getValid>,
    get<MdfCanMessage_getBus>,
});

template <>
inline constexpr auto kMessageCalls<BlfMessage> = std::to_array<Call<BlfMessage>>({
    get<BlfMessage_getValid>,
    get<BlfMessage_getBus>,
    get<BlfMessage_isBlfCANType>,
    getText<BlfMessage_getAsCommentarySize, BlfMessage_getAsCommentary>,
});

// ---- parts of sessions ---------------------------------------------------------------------------------------------

inline constexpr auto kSessionEntryCalls = std::to_array<Call<BtrSessionEntry>>({
    get<BtrSessionEntry_getIndex>,
    get<BtrSessionEntry_getIsCircular>,
    get<BtrSessionEntry_getSectorsCount>,
    getText<BtrSessionEntry_getSourcePathSize, BtrSessionEntry_getSourcePath>,
    [](BtrSessionEntry* entry, Arguments& /*arguments*/) { BtrInfo_Destruct(BtrSessionEntry_getTrace(entry)); },
});

inline constexpr auto kSessionLocationCalls = std::to_array<Call<const SessionLocation>>({
    get<SessionLocation_getSector>,
    get<SessionLocation_getPosition>,
});

inline constexpr auto kSessionDateTimeCalls = std::to_array<Call<const SessionDateTime>>({
    get<SessionDateTime_toDouble>,
    [](const SessionDateTime* date, Arguments& arguments) {
      require(SessionDateTime_compareTo(date, arguments.flag() ? date : nullptr) == 0);
    },
    [](const SessionDateTime* date, Arguments& arguments) {
      std::array<std::uint8_t, 7> items{};
      std::array<std::uint8_t*, 7> places{};
      for (std::size_t index = 0; index < items.size(); ++index) {
        places.at(index) = arguments.flag() ? &items.at(index) : nullptr;
      }
      SessionDateTime_getDateTimeItems(date, places[0], places[1], places[2], places[3], places[4], places[5],
                                       places[6]);
    },
});

// ---- readers -------------------------------------------------------------------------------------------------------

// What only one family has; mostly nothing.
template <typename Object>
void callOwn(Object* /*object*/, Arguments& /*arguments*/) {}

inline void callOwn(BtrcReader* reader, Arguments& arguments) {
  TextBuffer report(arguments);
  BtrcReader_SkipCurrentBlock(reader, report.data(), report.size());
  report.requireText();
}
// Raises nothing, but for a reader that is none.
inline void callOwn(MdfReader* reader, Arguments& arguments) {
  TextBuffer reason(arguments);
  const bool convertible = MdfReader_ValidateFile(reader, reason.data(), reason.size());
  reason.requireText();
  if (convertible) {
    reason.requireTextOf(0);
  }
}

template <typename Family>
inline constexpr auto kReaderCalls = std::to_array<Call<typename Family::Object>>({
    [](typename Family::Object* reader, Arguments& arguments) { Family::setActive(reader, arguments.flag()); },
    getPercent<Family::getPercentDone>,
    get<Family::getTrace>,
    [](typename Family::Object* reader, Arguments& /*arguments*/) { Family::readNextMessage(reader, nullptr); },
    [](typename Family::Object* reader, Arguments& arguments) { callOwn(reader, arguments); },
});

// ---- writers -------------------------------------------------------------------------------------------------------

inline void callOwn(CsvWriter* writer, Arguments& arguments) {
  CsvWriter_setSeparator(writer, arguments.text());
}
inline void callOwn(MdfWriter* writer, Arguments& arguments) {
  const auto set = arguments.flag() ? MdfWriter_setZipped : MdfWriter_setSorted;
  set(writer, arguments.flag());
}

template <typename Family>
inline constexpr auto kWriterCalls = std::to_array<Call<typename Family::Object>>({
    [](typename Family::Object* writer, Arguments& arguments) { Family::writeHeader(writer, arguments.info()); },
    [](typename Family::Object* writer, Arguments& arguments) {
      Family::writeHeader2(writer, arguments.info(), arguments.number() * 10000.0);
    },
    [](typename Family::Object* writer, Arguments& arguments) { Family::writeComment(writer, arguments.text()); },
    get<Family::getActive>,
    get<Family::getTargetFormat>,
    get<Family::getTargetVersion>,
    get<Family::getOverrideExistingFile>,
    get<Family::getOwnerBus>,
    getText<Family::getTargetPathSize, Family::getTargetPath>,
    getText<Family::getSourcePathSize, Family::getSourcePath>,
    [](typename Family::Object* writer, Arguments& arguments) { Family::setTargetPath(writer, arguments.path()); },
    [](typename Family::Object* writer, Arguments& arguments) { Family::setSourcePath(writer, arguments.path()); },
    [](typename Family::Object* writer, Arguments& arguments) { Family::setTargetVersion(writer, arguments.number()); },
    [](typename Family::Object* writer, Arguments& arguments) {
      Family::setOverrideExistingFile(writer, arguments.flag());
    },
    [](typename Family::Object* writer, Arguments& arguments) { Family::setOwnerBus(writer, arguments.byte() - 1); },
    [](typename Family::Object* writer, Arguments& arguments) { callOwn(writer, arguments); },
});

// ---- formats -------------------------------------------------------------------------------------------------------

// Functions without an object.
using FreeCall = void (*)(Arguments&);

template <typename Format>
void askFormat(Arguments& arguments) {
  static_cast<void>(Format::getCurrentVersion());
  copyText<Format::getFormatDescriptionSize, Format::getFormatDescription>(arguments);
  copyText<Format::getExtensionSize, Format::getExtension>(arguments);
  readArray<Format::getAllowedConvertionsSize, Format::getAllowedConvertions>();
  readArray<Format::getSupportedVersionsSize, Format::getSupportedVersions>();
}

inline constexpr auto kFreeCalls = std::to_array<FreeCall>({
    askFormat<xlatr::test::TrcInfoFormat>,
    askFormat<xlatr::test::AscInfoFormat>,
    askFormat<xlatr::test::KorlInfoFormat>,
    askFormat<xlatr::test::CsvInfoFormat>,
    askFormat<xlatr::test::BtrcInfoFormat>,
    askFormat<xlatr::test::MdfInfoFormat>,
    askFormat<xlatr::test::BtrInfoFormat>,
    askFormat<xlatr::test::BlfInfoFormat>,
    [](Arguments& arguments) {
      const TraceFormat format = arguments.format();
      static_cast<void>(BaseTraceInfo_GetTraceCurrentVersion(format));
      static_cast<void>(BaseTraceInfo_GetIfConvertible(format));
      TextBuffer description(arguments);
      BaseTraceInfo_GetTraceFormatDescription(format, description.data(), description.size());
      description.requireTextOf(BaseTraceInfo_GetTraceFormatDescriptionSize(format));
      TextBuffer extension(arguments);
      BaseTraceInfo_GetTraceExtension(format, extension.data(), extension.size());
      extension.requireText();
    },
    [](Arguments& arguments) { TrcInfo_Destruct(TrcInfo_Construct_2(arguments.path())); },
    [](Arguments& arguments) {
      TextBuffer failure(arguments);
      ConverterLastError_GetText(arguments.byte(), failure.data(), failure.size());
      failure.requireText();
    },
    [](Arguments& /*arguments*/) { require(SessionDescriptor_getSize() < DataSector_getSize()); },
    [](Arguments& arguments) {
      callOneOf(kCsvInfoCalls, reinterpret_cast<const CsvInfo*>(arguments.info()), arguments);
    },
});

}  // namespace fuzz
