#include "io/format.hpp"

#include <algorithm>

#include "util/paths.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr FormatDescriptor kNoFormat;

}  // namespace

bool SessionSelection::contains(std::size_t place) const {
  return all || std::ranges::find(places, place) != places.end();
}

const FormatDescriptor& formatOf(TraceFormat flag) {
  const auto formats = formatRegistry();
  const auto found = std::ranges::find(formats, flag, &FormatDescriptor::format);
  return found == formats.end() ? kNoFormat : **found;
}

TraceFormat normalizeFormat(TraceFormat flag) {
  return formatOf(flag).format;
}

TraceFormat formatOfExtension(std::string_view extension) {
  const auto formats = formatRegistry();
  const auto found = std::ranges::find_if(formats, [extension](const FormatDescriptor* candidate) {
    return equalsIgnoreCase(candidate->extension, extension);
  });
  return found == formats.end() ? XLATR_FORMAT_NONE : (*found)->format;
}

TraceFormat formatOfPath(std::string_view path) {
  return formatOfExtension(getFileExtension(path));
}

}  // namespace xlatr
