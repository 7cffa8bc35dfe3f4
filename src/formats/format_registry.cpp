// The one list of all formats. The build takes the folders of the formats from the includes below.
#include <array>

#include "formats/asc/asc_format.hpp"
#include "formats/blf/blf_format.hpp"
#include "formats/csv/csv_format.hpp"
#include "formats/lin/lin_format.hpp"
#include "formats/mf4/mf4_format.hpp"
#include "formats/native/btr_format.hpp"
#include "formats/native/btrc_format.hpp"
#include "formats/trc/trc_format.hpp"

namespace xlatr {
namespace {

// In the order of their flags.
constexpr std::array kFormats = {
    &kTrcFormat,   //
    &kBtrFormat,   //
    &kAscFormat,   //
    &kLinFormat,   //
    &kCsvFormat,   //
    &kBtrcFormat,  //
    &kMf4Format,   //
    &kBlfFormat,   //
};

}  // namespace

std::span<const FormatDescriptor* const> formatRegistry() {
  return kFormats;
}

}  // namespace xlatr
