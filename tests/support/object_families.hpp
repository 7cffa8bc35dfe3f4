// What tests that drive all exported families share. The families themselves, as types, are made from the public
// headers; here stands what the prototypes don't tell.
#pragma once

#include <memory>

#include "object_family_types.hpp"
#include "xlatr/objects.h"

namespace xlatr::test {

// Releases an object with the function of its family.
template <typename Family>
struct Release {
  void operator()(typename Family::Object* object) const { Family::destruct(object); }
};

template <typename Family>
using Owned = std::unique_ptr<typename Family::Object, Release<Family>>;

// The information object of a file.
template <typename InfoFamily>
Owned<InfoFamily> openInfo(const char* path) {
  const Owned<TraceFileInfoType> file(TraceFileInfo_Construct(path));
  return Owned<InfoFamily>(InfoFamily::construct(file.get()));
}

// An object as the interface that its class has.
template <typename Message>
const IMessage* asMessage(const Message* message) {
  return reinterpret_cast<const IMessage*>(message);
}

template <typename Info>
const ITraceInfo* asTraceInfo(const Info* info) {
  return reinterpret_cast<const ITraceInfo*>(info);
}

// Constructed as the other writers are: its own constructor takes the owner bus, and the flag is set after that.
struct BtrWriterType : BtrSessionWriterType {
  static Object* construct(const char* path, bool overrideExistingFile, double version) {
    Object* const writer = BtrSessionWriter_Construct(path, -1, version);
    BtrSessionWriter_setOverrideExistingFile(writer, overrideExistingFile);
    return writer;
  }
};

// The format of a reader or a writer, and its current version.
struct FileKind {
  TraceFormat format;
  double version;
};

inline constexpr FileKind kTrc{XLATR_FORMAT_TRC, 3.0};
inline constexpr FileKind kAsc{XLATR_FORMAT_ASC, 8.1};
inline constexpr FileKind kLin{XLATR_FORMAT_LIN, 1.2};
inline constexpr FileKind kCsv{XLATR_FORMAT_CSV, 1.0};
inline constexpr FileKind kBtr{XLATR_FORMAT_BTR, 3.0};
inline constexpr FileKind kBtrc{XLATR_FORMAT_BTRC, 1.0};
inline constexpr FileKind kMf4{XLATR_FORMAT_MF4, 4.2};

template <typename Family>
inline constexpr FileKind kFileKindOf = {};
template <>
inline constexpr FileKind kFileKindOf<TrcReaderType> = kTrc;
template <>
inline constexpr FileKind kFileKindOf<TrcWriterType> = kTrc;
template <>
inline constexpr FileKind kFileKindOf<AscReaderType> = kAsc;
template <>
inline constexpr FileKind kFileKindOf<AscWriterType> = kAsc;
template <>
inline constexpr FileKind kFileKindOf<KorlReaderType> = kLin;
template <>
inline constexpr FileKind kFileKindOf<KorlWriterType> = kLin;
template <>
inline constexpr FileKind kFileKindOf<CsvWriterType> = kCsv;
template <>
inline constexpr FileKind kFileKindOf<BtrWriterType> = kBtr;
template <>
inline constexpr FileKind kFileKindOf<BtrcReaderType> = kBtrc;
template <>
inline constexpr FileKind kFileKindOf<BtrcWriterType> = kBtrc;
template <>
inline constexpr FileKind kFileKindOf<MdfReaderType> = kMf4;
template <>
inline constexpr FileKind kFileKindOf<MdfWriterType> = kMf4;

}  // namespace xlatr::test
