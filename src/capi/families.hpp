// The members that families of the same kind share, as macros alone. A macro pastes names and nothing else: every body
// is one call.
#pragma once

#include "capi/handles.hpp"
#include "capi/results.hpp"
#include "capi/text_out.hpp"
#include "io/format.hpp"

// A text pair: Family_<name>Size and Family_<name>, both of `expression` over `self`.
#define XLATR_TEXT_PAIR(Family, name, nameSize, expression)                              \
  std::uint32_t Family##_##nameSize(const ::Family* handle) {                            \
    const auto& self = xlatr::capi::object(handle);                                      \
    return xlatr::capi::textSize(expression);                                            \
  }                                                                                      \
  void Family##_##name(const ::Family* handle, char* buffer, std::uint32_t bufferSize) { \
    const auto& self = xlatr::capi::object(handle);                                      \
    xlatr::capi::copyText(expression, buffer, bufferSize);                               \
  }

#define XLATR_STATIC_TEXT_PAIR(Family, name, nameSize, expression) \
  std::uint32_t Family##_##nameSize(void) {                        \
    return xlatr::capi::textSize(expression);                      \
  }                                                                \
  void Family##_##name(char* buffer, std::uint32_t bufferSize) {   \
    xlatr::capi::copyText(expression, buffer, bufferSize);         \
  }

// What an information family says of its format, without an object. The first has no current version, for a family that
// asks for it elsewhere.
#define XLATR_INFO_FORMAT_DESCRIPTION(Family, format)                                                                 \
  XLATR_STATIC_TEXT_PAIR(Family, getFormatDescription, getFormatDescriptionSize, xlatr::formatOf(format).description) \
  XLATR_STATIC_TEXT_PAIR(Family, GetExtension, GetExtensionSize, xlatr::formatOf(format).extension)                   \
  const TraceFormat* Family##_GetAllowedConvertions(void) {                                                           \
    return xlatr::formatOf(format).allowedTargets.data();                                                             \
  }                                                                                                                   \
  std::uint32_t Family##_GetAllowedConvertionsSize(void) {                                                            \
    return xlatr::capi::countOf(xlatr::formatOf(format).allowedTargets.size());                                       \
  }                                                                                                                   \
  const double* Family##_GetSupportedVersions(void) {                                                                 \
    return xlatr::formatOf(format).supportedVersions.data();                                                          \
  }                                                                                                                   \
  std::uint32_t Family##_GetSupportedVersionsSize(void) {                                                             \
    return xlatr::capi::countOf(xlatr::formatOf(format).supportedVersions.size());                                    \
  }
#define XLATR_INFO_FORMAT_FAMILY(Family, format)   \
  XLATR_INFO_FORMAT_DESCRIPTION(Family, format)    \
  double Family##_GetCurrentVersion(void) {        \
    return xlatr::formatOf(format).currentVersion; \
  }

// What an information family says of its object, and its Destruct. A family whose objects the library keeps uses the
// first alone.
#define XLATR_INFO_OBJECT_GETTERS(Family)                \
  double Family##_GetVersion(const ::Family* handle) {   \
    return xlatr::capi::object(handle).getVersion();     \
  }                                                      \
  double Family##_getStartTime(const ::Family* handle) { \
    return xlatr::capi::object(handle).getStartTime();   \
  }                                                      \
  XLATR_TEXT_PAIR(Family, getPath, getPathSize, self.getPath())
#define XLATR_INFO_OBJECT_FAMILY(Family)     \
  void Family##_Destruct(::Family* handle) { \
    xlatr::capi::destruct(handle);           \
  }                                          \
  XLATR_INFO_OBJECT_GETTERS(Family)

// A reader of an information family: what all readers have, and what most of them have that hand out messages of a
// family.
#define XLATR_READER_MEMBERS(Family, InfoFamily)                                              \
  void Family##_Destruct(::Family* handle) {                                                  \
    xlatr::capi::destruct(handle);                                                            \
  }                                                                                           \
  const ::InfoFamily* Family##_getTrace(const ::Family* handle) {                             \
    return xlatr::capi::borrowedHandle<::InfoFamily>(xlatr::capi::object(handle).getTrace()); \
  }                                                                                           \
  bool Family##_setActive(::Family* handle, bool active) {                                    \
    return xlatr::capi::object(handle).setActive(active);                                     \
  }                                                                                           \
  double Family##_getPercentDone(const ::Family* handle) {                                    \
    return xlatr::capi::object(handle).getPercentDone();                                      \
  }
#define XLATR_READER_FAMILY(Family, InfoFamily, MessageFamily)                                        \
  ::Family* Family##_Construct(const ::InfoFamily* info) {                                            \
    return xlatr::capi::handle<::Family>(std::make_unique<xlatr::Family>(xlatr::capi::object(info))); \
  }                                                                                                   \
  XLATR_READER_MEMBERS(Family, InfoFamily)                                                            \
  bool Family##_ReadNextMessage(::Family* handle, ::MessageFamily** message) {                        \
    return xlatr::capi::readNextMessage(xlatr::capi::object(handle), message);                        \
  }

#define XLATR_WRITER_FAMILY(Family)                                                           \
  void Family##_Destruct(::Family* handle) {                                                  \
    xlatr::capi::destruct(handle);                                                            \
  }                                                                                           \
  ::Family* Family##_CreateNew(const ::Family* handle) {                                      \
    return xlatr::capi::handle<::Family>(xlatr::capi::object(handle).CreateNew());            \
  }                                                                                           \
  void Family##_WriteHeader(::Family* handle, const ITraceInfo* source) {                     \
    xlatr::capi::object(handle).WriteHeader(xlatr::capi::object(source));                     \
  }                                                                                           \
  void Family##_WriteHeader_2(::Family* handle, const ITraceInfo* source, double startTime) { \
    xlatr::capi::object(handle).WriteHeader_2(xlatr::capi::object(source), startTime);        \
  }                                                                                           \
  void Family##_WriteComment(::Family* handle, const char* text) {                            \
    xlatr::capi::object(handle).WriteComment(xlatr::capi::textIn(text));                      \
  }                                                                                           \
  void Family##_WriteMessage(::Family* handle, const IMessage* message) {                     \
    xlatr::capi::object(handle).WriteMessage(xlatr::capi::object(message));                   \
  }                                                                                           \
  bool Family##_getActive(const ::Family* handle) {                                           \
    return xlatr::capi::object(handle).getActive();                                           \
  }                                                                                           \
  void Family##_setActive(::Family* handle, bool active) {                                    \
    xlatr::capi::object(handle).setActive(active);                                            \
  }                                                                                           \
  XLATR_TEXT_PAIR(Family, getTargetPath, getTargetPathSize, self.getTargetPath())             \
  void Family##_setTargetPath(::Family* handle, const char* path) {                           \
    xlatr::capi::object(handle).setTargetPath(xlatr::capi::textIn(path));                     \
  }                                                                                           \
  double Family##_getTargetVersion(const ::Family* handle) {                                  \
    return xlatr::capi::object(handle).getTargetVersion();                                    \
  }                                                                                           \
  void Family##_setTargetVersion(::Family* handle, double version) {                          \
    xlatr::capi::object(handle).setTargetVersion(version);                                    \
  }                                                                                           \
  TraceFormat Family##_getTargetFormat(const ::Family* handle) {                              \
    return xlatr::capi::object(handle).getTargetFormat();                                     \
  }                                                                                           \
  bool Family##_getOverrideExistingFile(const ::Family* handle) {                             \
    return xlatr::capi::object(handle).getOverrideExistingFile();                             \
  }                                                                                           \
  void Family##_setOverrideExistingFile(::Family* handle, bool overrideExistingFile) {        \
    xlatr::capi::object(handle).setOverrideExistingFile(overrideExistingFile);                \
  }                                                                                           \
  std::int32_t Family##_getOwnerBus(const ::Family* handle) {                                 \
    return xlatr::capi::object(handle).getOwnerBus();                                         \
  }                                                                                           \
  void Family##_setOwnerBus(::Family* handle, std::int32_t bus) {                             \
    xlatr::capi::object(handle).setOwnerBus(bus);                                             \
  }                                                                                           \
  XLATR_TEXT_PAIR(Family, getSourcePath, getSourcePathSize, self.getSourcePath())             \
  void Family##_setSourcePath(::Family* handle, const char* path) {                           \
    xlatr::capi::object(handle).setSourcePath(xlatr::capi::textIn(path));                     \
  }

// What every message family has.
#define XLATR_MESSAGE_FAMILY(Family)               \
  void Family##_Destruct(::Family* handle) {       \
    xlatr::capi::destruct(handle);                 \
  }                                                \
  bool Family##_getValid(const ::Family* handle) { \
    return xlatr::capi::object(handle).getValid(); \
  }

// Further members, of the messages on a CAN bus and of those that were a line of text.
#define XLATR_MESSAGE_BUS(Family)                         \
  std::uint32_t Family##_getBus(const ::Family* handle) { \
    return xlatr::capi::object(handle).bus;               \
  }
#define XLATR_MESSAGE_PARSING_TEXT(Family) XLATR_TEXT_PAIR(Family, getParsingText, getParsingTextSize, self.parsingText)
