// The exported families as types, so that one test or one fuzz target drives all of them: each macro gathers the
// functions of a family under common names and does nothing else.
#pragma once

#include <cstdint>
#include <memory>

#include "xlatr/objects.h"

namespace xlatr::test {

// Releases an object with the function of its family.
template <typename Family>
struct Release {
  void operator()(typename Family::Object* object) const { Family::destruct(object); }
};

template <typename Family>
using Owned = std::unique_ptr<typename Family::Object, Release<Family>>;

// Releases an object that is of none of the families below.
template <auto kDestruct>
struct Destructor {
  template <typename Object>
  void operator()(Object* object) const {
    kDestruct(object);
  }
};

// The information object of a file.
template <typename InfoFamily>
Owned<InfoFamily> openInfo(const char* path) {
  const std::unique_ptr<TraceFileInfo, Destructor<TraceFileInfo_Destruct>> file(TraceFileInfo_Construct(path));
  return Owned<InfoFamily>(InfoFamily::construct(file.get()));
}

#define XLATR_MESSAGE_FAMILY_TYPE(Family, canBeValid)                                                            \
  struct Family##Type {                                                                                          \
    using Object = Family;                                                                                       \
    static constexpr const char* kName = #Family;                                                                \
    static void destruct(Object* object) { Family##_Destruct(object); }                                          \
    static bool getValid(const Object* object) { return canBeValid(object); }                                    \
    static const IMessage* asMessage(const Object* object) { return reinterpret_cast<const IMessage*>(object); } \
  }

// What an information family says of its format, without an object.
#define XLATR_FORMAT_FAMILY_TYPE(InfoFamily)                                                                \
  struct InfoFamily##Format {                                                                               \
    static std::uint32_t getFormatDescriptionSize() { return InfoFamily##_getFormatDescriptionSize(); }     \
    static void getFormatDescription(char* buffer, std::uint32_t size) {                                    \
      InfoFamily##_getFormatDescription(buffer, size);                                                      \
    }                                                                                                       \
    static std::uint32_t getExtensionSize() { return InfoFamily##_GetExtensionSize(); }                     \
    static void getExtension(char* buffer, std::uint32_t size) { InfoFamily##_GetExtension(buffer, size); } \
    static double getCurrentVersion() { return InfoFamily##_GetCurrentVersion(); }                          \
    static std::uint32_t getAllowedConvertionsSize() { return InfoFamily##_GetAllowedConvertionsSize(); }   \
    static const TraceFormat* getAllowedConvertions() { return InfoFamily##_GetAllowedConvertions(); }      \
    static std::uint32_t getSupportedVersionsSize() { return InfoFamily##_GetSupportedVersionsSize(); }     \
    static const double* getSupportedVersions() { return InfoFamily##_GetSupportedVersions(); }             \
  }

// An information family that is made from a file, and its reader.
#define XLATR_READER_FAMILY_TYPE(Family, InfoFamily, InfoValid, Message, fileFormat)                                   \
  XLATR_FORMAT_FAMILY_TYPE(InfoFamily);                                                                                \
  struct InfoFamily##Type : InfoFamily##Format {                                                                       \
    using Object = InfoFamily;                                                                                         \
    static constexpr const char* kName = #InfoFamily;                                                                  \
    static constexpr TraceFormat kFormat = fileFormat;                                                                 \
    static Object* construct(const TraceFileInfo* file) { return InfoFamily##_Construct(file); }                       \
    static void destruct(Object* object) { InfoFamily##_Destruct(object); }                                            \
    static bool getValid(const Object* object) { return InfoValid(object); }                                           \
    static double getVersion(const Object* object) { return InfoFamily##_GetVersion(object); }                         \
    static double getStartTime(const Object* object) { return InfoFamily##_getStartTime(object); }                     \
    static std::uint32_t getPathSize(const Object* object) { return InfoFamily##_getPathSize(object); }                \
    static void getPath(const Object* object, char* buffer, std::uint32_t size) {                                      \
      InfoFamily##_getPath(object, buffer, size);                                                                      \
    }                                                                                                                  \
    static const ITraceInfo* asTraceInfo(const Object* object) { return reinterpret_cast<const ITraceInfo*>(object); } \
  };                                                                                                                   \
  struct Family##Type {                                                                                                \
    using Object = Family;                                                                                             \
    using InfoType = InfoFamily##Type;                                                                                 \
    using MessageType = Message##Type;                                                                                 \
    static constexpr const char* kName = #Family;                                                                      \
    static Object* construct(const InfoFamily* info) { return Family##_Construct(info); }                              \
    static void destruct(Object* object) { Family##_Destruct(object); }                                                \
    static const InfoFamily* getTrace(const Object* object) { return Family##_getTrace(object); }                      \
    static bool setActive(Object* object, bool active) { return Family##_setActive(object, active); }                  \
    static double getPercentDone(const Object* object) { return Family##_getPercentDone(object); }                     \
    static bool readNextMessage(Object* object, Message** message) {                                                   \
      return Family##_ReadNextMessage(object, message);                                                                \
    }                                                                                                                  \
  }

#define XLATR_WRITER_FAMILY_TYPE(Family, fileFormat, currentVersion)                                               \
  struct Family##Type {                                                                                            \
    using Object = Family;                                                                                         \
    static constexpr const char* kName = #Family;                                                                  \
    static constexpr TraceFormat kFormat = fileFormat;                                                             \
    static constexpr double kVersion = currentVersion;                                                             \
    static Object* construct(const char* path, bool overrideExistingFile, double version) {                        \
      return Family##_Construct(path, overrideExistingFile, version);                                              \
    }                                                                                                              \
    static void destruct(Object* object) { Family##_Destruct(object); }                                            \
    static Object* createNew(const Object* object) { return Family##_CreateNew(object); }                          \
    static void writeHeader(Object* object, const ITraceInfo* info) { Family##_WriteHeader(object, info); }        \
    static void writeHeader2(Object* object, const ITraceInfo* info, double startTime) {                           \
      Family##_WriteHeader_2(object, info, startTime);                                                             \
    }                                                                                                              \
    static void writeComment(Object* object, const char* text) { Family##_WriteComment(object, text); }            \
    static void writeMessage(Object* object, const IMessage* message) { Family##_WriteMessage(object, message); }  \
    static bool getActive(const Object* object) { return Family##_getActive(object); }                             \
    static void setActive(Object* object, bool active) { Family##_setActive(object, active); }                     \
    static std::uint32_t getTargetPathSize(const Object* object) { return Family##_getTargetPathSize(object); }    \
    static void getTargetPath(const Object* object, char* buffer, std::uint32_t size) {                            \
      Family##_getTargetPath(object, buffer, size);                                                                \
    }                                                                                                              \
    static void setTargetPath(Object* object, const char* path) { Family##_setTargetPath(object, path); }          \
    static double getTargetVersion(const Object* object) { return Family##_getTargetVersion(object); }             \
    static void setTargetVersion(Object* object, double version) { Family##_setTargetVersion(object, version); }   \
    static TraceFormat getTargetFormat(const Object* object) { return Family##_getTargetFormat(object); }          \
    static bool getOverrideExistingFile(const Object* object) { return Family##_getOverrideExistingFile(object); } \
    static void setOverrideExistingFile(Object* object, bool value) {                                              \
      Family##_setOverrideExistingFile(object, value);                                                             \
    }                                                                                                              \
    static std::int32_t getOwnerBus(const Object* object) { return Family##_getOwnerBus(object); }                 \
    static void setOwnerBus(Object* object, std::int32_t bus) { Family##_setOwnerBus(object, bus); }               \
    static std::uint32_t getSourcePathSize(const Object* object) { return Family##_getSourcePathSize(object); }    \
    static void getSourcePath(const Object* object, char* buffer, std::uint32_t size) {                            \
      Family##_getSourcePath(object, buffer, size);                                                                \
    }                                                                                                              \
    static void setSourcePath(Object* object, const char* path) { Family##_setSourcePath(object, path); }          \
  }

XLATR_MESSAGE_FAMILY_TYPE(MessageCan, MessageCan_getValid);
XLATR_MESSAGE_FAMILY_TYPE(MessageAsc, MessageAsc_getValid);
XLATR_MESSAGE_FAMILY_TYPE(MessageLin, MessageLin_getValid);
XLATR_MESSAGE_FAMILY_TYPE(MessageBinaryFD, MessageBinaryFD_getValid);
XLATR_MESSAGE_FAMILY_TYPE(MdfCanMessage, MdfCanMessage_getValid);

XLATR_READER_FAMILY_TYPE(TrcReader, TrcInfo, TrcInfo_getValid, MessageCan, XLATR_FORMAT_TRC);
XLATR_READER_FAMILY_TYPE(AscReader, AscInfo, AscInfo_getValid, MessageAsc, XLATR_FORMAT_ASC);
XLATR_READER_FAMILY_TYPE(KorlReader, KorlInfo, KorlInfo_getValid, MessageLin, XLATR_FORMAT_LIN);
XLATR_READER_FAMILY_TYPE(BtrcReader, BtrcInfo, BtrcInfo_GetValid, MessageBinaryFD, XLATR_FORMAT_BTRC);
XLATR_READER_FAMILY_TYPE(MdfReader, MdfInfo, MdfInfo_getValid, MdfCanMessage, XLATR_FORMAT_MF4);

// These have another constructor, or none.
XLATR_FORMAT_FAMILY_TYPE(BlfInfo);
XLATR_FORMAT_FAMILY_TYPE(BtrInfo);
XLATR_FORMAT_FAMILY_TYPE(CsvInfo);

XLATR_WRITER_FAMILY_TYPE(TrcWriter, XLATR_FORMAT_TRC, 3.0);
XLATR_WRITER_FAMILY_TYPE(AscWriter, XLATR_FORMAT_ASC, 8.1);
XLATR_WRITER_FAMILY_TYPE(KorlWriter, XLATR_FORMAT_LIN, 1.2);
XLATR_WRITER_FAMILY_TYPE(CsvWriter, XLATR_FORMAT_CSV, 1.0);
XLATR_WRITER_FAMILY_TYPE(BtrcWriter, XLATR_FORMAT_BTRC, 1.0);
XLATR_WRITER_FAMILY_TYPE(BtrSessionWriter, XLATR_FORMAT_BTR, 3.0);

// Its constructor takes the owner bus; the flag is set after that.
struct BtrWriterType : BtrSessionWriterType {
  static Object* construct(const char* path, bool overrideExistingFile, double version) {
    Object* const writer = BtrSessionWriter_Construct(path, -1, version);
    BtrSessionWriter_setOverrideExistingFile(writer, overrideExistingFile);
    return writer;
  }
};
XLATR_WRITER_FAMILY_TYPE(MdfWriter, XLATR_FORMAT_MF4, 4.2);

}  // namespace xlatr::test
