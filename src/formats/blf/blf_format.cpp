#include "formats/blf/blf_format.hpp"

#include <array>

#include "formats/blf/blf_converter.hpp"
#include "formats/blf/blf_frames.hpp"

namespace xlatr {
namespace {

// Only the external converter knows the versions of BLF; without one they are 0.
constexpr std::array kVersions = {0.0};
constexpr std::array<TraceFormat, 3> kTargets = {XLATR_FORMAT_CSV, XLATR_FORMAT_TRC, XLATR_FORMAT_LIN};

}  // namespace

// No conversion reads a log: BlfReader does so in phases that its caller drives.
constinit const FormatDescriptor kBlfFormat = {
    .format = XLATR_FORMAT_BLF,
    .extension = ".blf",
    .shortName = "BLF",
    .description = "Vector BLF trace file",
    .currentVersion = 0.0,
    .lowestVersion = 0.0,
    .supportedVersions = kVersions,
    .askCurrentVersion = blfCurrentVersion,
    .allowedTargets = kTargets,
    .readsInOrder = true,
    .recognises = looksLikeBlf,
    .openFrames = openBlfFrames,
};

}  // namespace xlatr
