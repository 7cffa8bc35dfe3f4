#include "io/trace_info.hpp"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "platform/files.hpp"
#include "util/files.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

// What stands under the name can't be read, whoever asks and however often: as good as no file.
bool isOfThePath(const std::error_code& code) {
  constexpr std::array kReasons = {
      std::errc::no_such_file_or_directory,
      std::errc::permission_denied,
      std::errc::operation_not_permitted,
      std::errc::is_a_directory,
      std::errc::not_a_directory,
      std::errc::operation_not_supported,
      std::errc::filename_too_long,
      std::errc::no_such_device_or_address,
      std::errc::too_many_symbolic_link_levels,
  };
  return std::ranges::any_of(kReasons, [&code](std::errc reason) { return code == reason; });
}

}  // namespace

BaseTraceInfo::BaseTraceInfo(TraceFormat format) : format_(normalizeFormat(format)) {
  const FormatDescriptor& known = formatOf(format_);
  shortName_ = known.shortName;
  description_ = known.description;
  allowedTargets_.assign(known.allowedTargets.begin(), known.allowedTargets.end());
  supportedVersions_.assign(known.supportedVersions.begin(), known.supportedVersions.end());
}

BaseTraceInfo::~BaseTraceInfo() = default;

// The system is asked once: a file that is there has a size.
TraceFileInfo::TraceFileInfo(const std::string& path) : TraceFileInfo(path, platform::dataSize(path)) {}

TraceFileInfo::TraceFileInfo(const std::string& path, std::optional<std::uint64_t> size)
    : BaseTraceInfo(size ? formatOfPath(path) : XLATR_FORMAT_NONE),
      path_(size ? path : std::string()),
      size_(size.value_or(0)) {}

ITraceInfo::~ITraceInfo() = default;

TraceInfo::TraceInfo(TraceFileInfo file, TraceFormat format) : file_(std::move(file)), format_(format) {}

// The first one counts: what fails after it may be due to it.
void TraceInfo::keepFailure(const std::ios_base::failure& failure) {
  if (failure_.empty() && !isOfThePath(failure.code())) {
    failure_ = failure.what();
  }
}

std::uint8_t TraceInfo::readLineEnding() {
  std::uint8_t size = 2;
  tryReading([&] { size = static_cast<std::uint8_t>(detectLineEnding(getPath())); });
  return size;
}

std::string TraceInfo::getVersionText() const {
  return getValid() ? formatFixed(fileVersion_, 1) : std::string();
}

}  // namespace xlatr
