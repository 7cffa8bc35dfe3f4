// A whole MF4 file: its top, the reason why it can't be converted, all its messages, and what they become in a TRC
// trace.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "formats/mf4/mdf_reader.hpp"
#include "formats/trc/trc_mapping.hpp"
#include "formats/trc/trc_version.hpp"
#include "scratch_folder.hpp"
#include "target.hpp"
#include "util/text_buffer.hpp"

namespace {

using fuzz::require;

void checkMessage(const xlatr::MdfCanMessage& message) {
  require(!message.valid || message.isRemote || message.length <= message.data.size());
  xlatr::BrixMessage mapped;
  xlatr::mapToTrc(message, mapped);
  require(mapped.valid == message.valid);
  xlatr::TextBuffer out;
  for (const double version : {1.3, 2.1, 3.0}) {
    mapped.appendText(out, xlatr::findTrcVersion(version), 1, 0);
  }
}

void readFile(const std::string& path) {
  const xlatr::MdfInfo info(path);
  static_cast<void>(info.getValid());
  static_cast<void>(info.getStartTime());
  xlatr::MdfReader reader(info);
  std::string reason;
  const bool convertible = reader.ValidateFile(reason);
  require(convertible == reason.empty());
  if (!reader.setActive(true)) {
    require(!reader.failure().empty());
    return;
  }

  std::uint64_t count = 0;
  for (xlatr::MdfCanMessage message; reader.readInto(message); ++count) {
    require(!std::isnan(message.time.count()));
    checkMessage(message);
  }
  require(count == 0 || reader.getPercentDone() == 100.0);
  reader.setActive(false);
  require(!info.getValid());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  constexpr std::size_t kLargestInput = std::size_t{1} << 16;  // inflated, some sixty megabytes
  if (size > kLargestInput) {
    return 0;
  }
  folder.write("source.mf4", std::span(data, size));
  fuzz::attempt([&] { readFile(folder.path("source.mf4")); });
  return 0;
}
