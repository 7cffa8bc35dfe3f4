#include "formats.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <type_traits>
#include <utility>

#include "owned.hpp"
#include "xlatr/frames.h"
#include "xlatr/objects.h"

namespace xlatr::cli {

namespace {

Owned<TraceFileInfo, TraceFileInfo_Destruct> fileInfo(const std::string& path) {
  return Owned<TraceFileInfo, TraceFileInfo_Destruct>(TraceFileInfo_Construct(path.c_str()));
}

template <auto Construct, auto Destruct, auto Valid, auto Version, auto StartTime>
TraceHeader headerOf(const std::string& path) {
  const auto file = fileInfo(path);
  const Owned<std::remove_pointer_t<decltype(Construct(file.get()))>, Destruct> info(Construct(file.get()));
  return {Valid(info.get()), Version(info.get()), StartTime(info.get())};
}

std::string reasonAgainstMdf(const std::string& path) {
  const auto file = fileInfo(path);
  const Owned<MdfInfo, MdfInfo_Destruct> info(MdfInfo_Construct(file.get()));
  const Owned<MdfReader, MdfReader_Destruct> reader(MdfReader_Construct(info.get()));
  std::array<char, 256> reason{};
  static_cast<void>(MdfReader_ValidateFile(reader.get(), reason.data(), static_cast<std::uint32_t>(reason.size())));
  return reason.data();
}

TraceSession sessionOf(const BtrInfo* info, std::uint32_t place) {
  const Owned<BtrSessionEntry, BtrSessionEntry_Destruct> entry(BtrInfo_GetSession(info, place));
  const SessionDateTime* const start = SessionDescriptor_getDateAndTime(BtrSessionEntry_getDescription(entry.get()));
  const bool endKnown = SessionLocation_getSector(BtrSessionEntry_getEnd(entry.get())) != 0;
  return {BtrSessionEntry_getIndex(entry.get()), SessionDateTime_toDouble(start),
          endKnown ? BtrSessionEntry_getSectorsCount(entry.get()) : 0, BtrSessionEntry_getIsCircular(entry.get())};
}

// The start of a file is that of its first session.
TraceHeader btrHeaderOf(const std::string& path) {
  const Owned<BtrInfo, BtrInfo_Destruct> info(BtrInfo_Construct(path.c_str()));
  std::vector<TraceSession> sessions;
  for (std::uint32_t place = 0; place < BtrInfo_getSessionsCount(info.get()); ++place) {
    sessions.push_back(sessionOf(info.get(), place));
  }
  const double startDays = sessions.empty() ? 0.0 : sessions.front().startDays;
  return {BtrInfo_GetValid(info.get()), BtrInfo_GetVersion(info.get()), startDays, std::move(sessions)};
}

// What the library's information objects tell of a file, one row per format that has them.
struct FormatFamily {
  TraceFormat format;
  TraceHeader (*header)(const std::string& path);
  std::string (*reasonAgainstConversion)(const std::string& path) = nullptr;  // null if there never is one
};

constexpr std::array kFamilies{
    FormatFamily{
        XLATR_FORMAT_TRC,
        headerOf<TrcInfo_Construct, TrcInfo_Destruct, TrcInfo_getValid, TrcInfo_GetVersion, TrcInfo_getStartTime>},
    FormatFamily{XLATR_FORMAT_BTR, btrHeaderOf},
    FormatFamily{
        XLATR_FORMAT_ASC,
        headerOf<AscInfo_Construct, AscInfo_Destruct, AscInfo_getValid, AscInfo_GetVersion, AscInfo_getStartTime>},
    FormatFamily{
        XLATR_FORMAT_LIN,
        headerOf<KorlInfo_Construct, KorlInfo_Destruct, KorlInfo_getValid, KorlInfo_GetVersion, KorlInfo_getStartTime>},
    FormatFamily{
        XLATR_FORMAT_BLF,
        headerOf<BlfInfo_Construct, BlfInfo_Destruct, BlfInfo_getValid, BlfInfo_GetVersion, BlfInfo_getStartTime>},
    FormatFamily{
        XLATR_FORMAT_BTRC,
        headerOf<BtrcInfo_Construct, BtrcInfo_Destruct, BtrcInfo_GetValid, BtrcInfo_GetVersion, BtrcInfo_getStartTime>},
    FormatFamily{
        XLATR_FORMAT_MF4,
        headerOf<MdfInfo_Construct, MdfInfo_Destruct, MdfInfo_getValid, MdfInfo_GetVersion, MdfInfo_getStartTime>,
        reasonAgainstMdf},
};

const FormatFamily* findFamily(TraceFormat format) {
  const auto* row = std::find_if(kFamilies.begin(), kFamilies.end(),
                                 [format](const FormatFamily& family) { return family.format == format; });
  return row == kFamilies.end() ? nullptr : row;
}

// The format that users know by the name of its bus as well as by its extension.
constexpr std::string_view kLinName = "lin";

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& character : lower) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    }
  }
  return lower;
}

std::vector<TraceFormat> flagsWithExtension() {
  std::vector<TraceFormat> formats;
  for (int bit = 0; bit < std::numeric_limits<TraceFormat>::digits; ++bit) {
    const auto flag = static_cast<TraceFormat>(1U << static_cast<unsigned>(bit));
    if (!formatExtension(flag).empty()) {
      formats.push_back(flag);
    }
  }
  return formats;
}

std::string joined(TraceFormat set, std::string (*textOfFormat)(TraceFormat)) {
  std::string list;
  for (const TraceFormat format : formatsOf(set)) {
    list += list.empty() ? "" : ", ";
    list += textOfFormat(format);
  }
  return list;
}

}  // namespace

const std::vector<TraceFormat>& allFormats() {
  static const std::vector<TraceFormat> formats = flagsWithExtension();
  return formats;
}

TraceFormat targetFormats() {
  TraceFormat set = XLATR_FORMAT_NONE;
  for (const TraceFormat format : allFormats()) {
    set |= isConversionTarget(format) ? format : XLATR_FORMAT_NONE;
  }
  return set;
}

TraceFormat writtenFormats() {
  TraceFormat set = XLATR_FORMAT_NONE;
  xlatr_capacity row{};
  row.size = sizeof row;
  for (std::uint32_t at = 0; xlatr_get_capacity(at, &row) == XLATR_OK; ++at) {
    set |= row.format;
  }
  return set;
}

std::string extensionOf(const std::string& path) {
  const std::string name = std::filesystem::path(path).filename().string();
  const auto point = name.rfind('.');
  return point == std::string::npos ? std::string() : name.substr(point);
}

std::vector<TraceFormat> formatsOf(TraceFormat set) {
  std::vector<TraceFormat> formats;
  std::copy_if(allFormats().begin(), allFormats().end(), std::back_inserter(formats),
               [set](TraceFormat format) { return (set & format) != 0; });
  return formats;
}

std::string formatExtension(TraceFormat format) {
  std::array<char, 16> extension{};
  BaseTraceInfo_GetTraceExtension(format, extension.data(), static_cast<std::uint32_t>(extension.size()));
  return extension.data();
}

std::string formatName(TraceFormat format) {
  const std::string extension = formatExtension(format);
  return extension.empty() ? extension : extension.substr(1);
}

std::string formatDescription(TraceFormat format) {
  return libraryText<BaseTraceInfo_GetTraceFormatDescriptionSize, BaseTraceInfo_GetTraceFormatDescription>(format);
}

std::string nameList(TraceFormat set) {
  return joined(set, formatName);
}

std::string extensionList(TraceFormat set) {
  return joined(set, formatExtension);
}

TraceFormat formatFromName(std::string_view name) {
  std::string wanted = lowerCase(name);
  if (wanted.starts_with('.')) {
    wanted.erase(0, 1);
  } else if (wanted == kLinName) {
    return XLATR_FORMAT_LIN;
  }
  const auto format = std::find_if(allFormats().begin(), allFormats().end(),
                                   [&wanted](TraceFormat candidate) { return formatName(candidate) == wanted; });
  return format == allFormats().end() ? TraceFormat{XLATR_FORMAT_NONE} : *format;
}

TraceFormat formatOfFile(const std::string& path) {
  const auto file = fileInfo(path);
  // A TraceFileInfo may be passed wherever a BaseTraceInfo is expected.
  return BaseTraceInfo_getFormat(reinterpret_cast<const BaseTraceInfo*>(file.get()));
}

bool isConversionSource(TraceFormat format) {
  return xlatr_get_formats_convertible_from(format) != XLATR_FORMAT_NONE;
}

bool isConversionTarget(TraceFormat format) {
  return xlatr_get_formats_convertible_to(format) != XLATR_FORMAT_NONE;
}

std::vector<double> formatVersions(TraceFormat format) {
  if (!isConversionTarget(format)) {
    return {};
  }
  const double* const first = BaseTraceInfo_GetTraceSupportedVersions(format);
  return {first, first + BaseTraceInfo_GetTraceSupportedVersionsSize(format)};
}

std::optional<TraceHeader> readTraceHeader(TraceFormat format, const std::string& path) {
  const FormatFamily* family = findFamily(format);
  return family == nullptr ? std::nullopt : std::optional(family->header(path));
}

std::optional<std::string> reasonAgainstConversion(TraceFormat format, const std::string& path) {
  const FormatFamily* family = findFamily(format);
  return family == nullptr || family->reasonAgainstConversion == nullptr
             ? std::nullopt
             : std::optional(family->reasonAgainstConversion(path));
}

}  // namespace xlatr::cli
