#include "frames/trace_file.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_capacity.hpp"
#include "frames/frame_failure.hpp"
#include "platform/module_path.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kStart = 4096;  // enough for the head of any text trace

// By the last name alone: whole paths have a limit of length on the compatible way, which knows no format beyond it.
TraceFormat formatByName(std::string_view path) {
  const std::string_view name = path.substr(path.rfind(platform::pathSeparator()) + 1);
  return formatOfExtension(name.substr(std::min(name.rfind('.'), name.size())));
}

std::string startOf(const InputSource& input) {
  std::string start(kStart, '\0');
  InputFile file(input);
  std::size_t size = 0;
  for (std::size_t count = 1; count > 0 && size < start.size(); size += count) {
    count = file.read(std::span(start).subspan(size));
  }
  start.resize(size);
  return start;
}

// Other files that users take for traces.
struct KnownFile {
  std::string_view start;
  std::string_view name;
};
constexpr std::array kKnownFiles = {
    KnownFile{"\x1F\x8B", "a gzip archive: unpack it first"},
    KnownFile{"PK\x03\x04", "a zip archive: unpack it first"},
    KnownFile{"7z\xBC\xAF\x27\x1C", "a 7-Zip archive: unpack it first"},
    KnownFile{"\xD4\xC3\xB2\xA1", "a packet capture"},
    KnownFile{"\xA1\xB2\xC3\xD4", "a packet capture"},
    KnownFile{"\x0A\x0D\x0D\x0A", "a packet capture"},
    KnownFile{"%PDF", "a PDF document"},
    KnownFile{"\x7F"
              "ELF",
              "a program"},
    KnownFile{"MZ", "a program"},
    KnownFile{"{", "JSON"},
    KnownFile{"<", "XML or HTML"},
};

std::string_view looksOf(std::string_view start) {
  const auto* const known =
      std::ranges::find_if(kKnownFiles, [start](const KnownFile& file) { return start.starts_with(file.start); });
  if (known != kKnownFiles.end()) {
    return known->name;
  }
  const auto isText = [](char character) {
    return static_cast<unsigned char>(character) >= ' ' || character == '\n' || character == '\r' || character == '\t';
  };
  return std::ranges::all_of(start, isText) ? "a text of another kind" : "a binary file of another kind";
}

void requireInput(const InputSource& input) {
  if (!input.exists()) {
    throw FrameFailure(FrameProblem::NotFound, input.name() + ": there is no such file");
  }
}

std::string versionText(double version) {
  return formatFixed(version, 1);
}

std::string versionsOf(std::span<const FrameCapacity> capacities) {
  std::string versions;
  for (const FrameCapacity& capacity : capacities) {
    versions += (versions.empty() ? "" : ", ") + versionText(capacity.version);
  }
  return versions;
}

// The first bytes of a trace.
class StartBytes final : public InputBytes {
 public:
  explicit StartBytes(std::string_view start) : start_(start) {}

  [[nodiscard]] std::size_t readAt(std::uint64_t offset, std::span<char> bytes) override {
    const std::size_t begin = std::min<std::size_t>(offset, start_.size());
    return start_.copy(bytes.data(), bytes.size(), begin);
  }
  [[nodiscard]] std::optional<std::uint64_t> size() const override { return start_.size(); }

 private:
  std::string_view start_;
};

// Binary traces have zeros in their heads.
bool mayBeText(std::string_view start) {
  return start.find('\0') == std::string_view::npos;
}

// Without the piece of a line with which the first bytes of a text end.
std::string_view wholeLines(std::string_view start) {
  const std::size_t lastEnd = start.rfind('\n');
  const bool isCut = start.size() == kStart && mayBeText(start) && lastEnd != std::string_view::npos;
  return isCut ? start.substr(0, lastEnd + 1) : start;
}

// Lines and records that are none of the format.
std::uint64_t notUnderstood(const FormatDescriptor& format, std::string_view start) {
  const auto source = format.openFrames({std::string(), std::make_shared<StartBytes>(wholeLines(start))});
  FrameBatch batch;
  Account account;
  static_cast<void>(source->read(batch, account));
  return account.noted(Remark::LineNotUnderstood).frames + account.noted(Remark::RecordNotUnderstood).frames;
}

bool recognises(const FormatDescriptor& format, std::string_view start) {
  return format.openFrames != nullptr && format.recognises != nullptr && format.recognises(start);
}

// Some formats have the same heads. The one that understands most counts, and among such ones that of the name: if that
// understands all, nobody else need be asked. Heads of binary traces are their own.
const FormatDescriptor* likeliest(const FormatDescriptor& byName, std::string_view start) {
  const bool isNamed = recognises(byName, start);
  if (isNamed && mayBeText(start) && notUnderstood(byName, start) == 0) {
    return &byName;
  }
  std::vector<const FormatDescriptor*> recognising;
  if (isNamed) {
    recognising.push_back(&byName);
  }
  std::ranges::copy_if(formatRegistry(), std::back_inserter(recognising),
                       [&](const FormatDescriptor* format) { return format != &byName && recognises(*format, start); });
  if (recognising.size() < 2) {
    return recognising.empty() ? nullptr : recognising.front();
  }
  return *std::ranges::min_element(recognising, {},
                                   [start](const auto* format) { return notUnderstood(*format, start); });
}

}  // namespace

const FormatDescriptor& formatOfTrace(const InputSource& input) {
  requireInput(input);
  const std::string start = startOf(input);
  const FormatDescriptor& byName = formatOf(formatByName(input.name()));
  if (start.empty() && byName.openFrames != nullptr) {
    return byName;
  }
  if (const FormatDescriptor* const found = likeliest(byName, start)) {
    return *found;
  }
  if (start.empty()) {
    throw FrameFailure(FrameProblem::NotATrace, input.name() + ": the file is empty");
  }
  throw FrameFailure(FrameProblem::NotATrace,
                     input.name() + ": this is no trace, but looks like " + std::string(looksOf(start)));
}

std::unique_ptr<FrameSource> openTrace(const InputSource& input, TraceFormat format) {
  if (format != XLATR_FORMAT_NONE) {
    requireInput(input);
  }
  const FormatDescriptor& known = format == XLATR_FORMAT_NONE ? formatOfTrace(input) : formatOf(format);
  if (known.openFrames == nullptr) {
    throw FrameFailure(FrameProblem::BadArgument, input.name() + ": there is no such format of traces");
  }
  if (!known.readsInOrder && !input.size()) {
    throw FrameFailure(FrameProblem::BadArgument, input.name() + ": files of the format " +
                                                      std::string(known.extension) +
                                                      " are not read in order: save it to a file first");
  }
  return known.openFrames(input);
}

TraceFormat writableFormat(const std::string& path, TraceFormat format, double version) {
  const FormatDescriptor& known = formatOf(format == XLATR_FORMAT_NONE ? formatByName(path) : format);
  if (known.createFrames == nullptr) {
    const std::string reason = known.format == XLATR_FORMAT_NONE
                                   ? "the extension names no format: say which one to write"
                                   : "files of the format " + std::string(known.extension) + " are not written";
    throw FrameFailure(FrameProblem::NotWritten, path + ": " + reason);
  }
  const std::span<const FrameCapacity> capacities = known.frameCapacities();
  if (version != 0.0 && std::ranges::find(capacities, version, &FrameCapacity::version) == capacities.end()) {
    throw FrameFailure(FrameProblem::NotWritten, path + ": there is no version " + versionText(version) + " of " +
                                                     std::string(known.extension) + "; there are " +
                                                     versionsOf(capacities));
  }
  return known.format;
}

std::unique_ptr<FrameSink> createTrace(const OutputTarget& target, TraceFormat format, const StreamHead& head,
                                       const SinkSettings& settings) {
  const FormatDescriptor& known = formatOf(writableFormat(target.name(), format, settings.version));
  if (!known.writesInOrder && target.bytes() != nullptr) {
    throw FrameFailure(FrameProblem::BadArgument, target.name() + ": files of the format " +
                                                      std::string(known.extension) +
                                                      " are not written in order: name a file as the target");
  }
  return known.createFrames(target, head, settings);
}

}  // namespace xlatr
