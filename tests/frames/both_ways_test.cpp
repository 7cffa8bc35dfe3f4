// The compatible way and the complete way, over every pair that the compatible way has: they write the same bytes, but
// for what a quirk touches.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/conversion_registry.hpp"
#include "frames/both_ways_cases.hpp"
#include "frames/frame_comment.hpp"
#include "frames/frame_job.hpp"
#include "io/quirk.hpp"
#include "support/frame_targets.hpp"
#include "support/frame_text.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using test::Difference;
using test::FrameTarget;
using test::OneTrace;
using test::Versions;

// A source or a target.
struct Side {
  TraceFormat format;
  double version;

  [[nodiscard]] bool isIn(const std::vector<Versions>& several) const {
    return std::ranges::any_of(several, [this](const Versions& versions) {
      return format == versions.format && version >= versions.lowest && version <= versions.highest;
    });
  }
  [[nodiscard]] std::string name() const {
    return std::string(formatOf(format).extension.substr(1)) + " " + std::to_string(version).substr(0, 4);
  }
};

// What the compatible way wrote.
class WrittenFiles {
 public:
  WrittenFiles() = default;
  WrittenFiles(const WrittenFiles&) = delete;
  WrittenFiles& operator=(const WrittenFiles&) = delete;
  ~WrittenFiles() {
    std::free(result_.text);
    for (char* const file : files()) {
      std::free(file);
    }
    std::free(static_cast<void*>(result_.files));
  }

  [[nodiscard]] ConversionResult* record() { return &result_; }
  [[nodiscard]] std::optional<std::string> onlyName() const {
    return files().size() == 1 ? std::optional<std::string>(files().front()) : std::nullopt;
  }

 private:
  [[nodiscard]] std::span<char*> files() const {
    return {result_.files, result_.files == nullptr ? 0 : result_.file_count};
  }

  ConversionResult result_{};
};

// What a target holds: its bytes. The two ways lay an MF4 file out differently, so there it is the frames that count.
std::string contentOf(const test::TempFolder& folder, const std::string& name, TraceFormat format) {
  if (format != XLATR_FORMAT_MF4) {
    return folder.read(name);
  }
  Account account;
  std::string content;
  for (const std::string& text : test::textsOf(*formatOf(format).openFrames(folder.file(name)), account)) {
    content += text + "\n";
  }
  return content;
}

// Versions that differ in nothing but their number from another one: one trace of each is enough. An ASC log that is
// written without a version is the newest one.
bool isLikeAnother(const Side& side) {
  switch (side.format) {
    case XLATR_FORMAT_ASC:
      return side.version == 0.0 || side.version > 8.0;
    case XLATR_FORMAT_BTR:
    case XLATR_FORMAT_MF4:
      return side.version < formatOf(side.format).currentVersion;
    default:
      return false;
  }
}

class BothWays : public testing::Test {
 protected:
  struct Outcome {
    std::string compatible;
    std::string complete;
  };

  // Writes the trace in a version. Nothing if the version can't hold all of it.
  std::optional<std::string> writeSource(const OneTrace& trace, const FrameTarget& kind) {
    StreamHead head;
    head.start = TraceStart{.sinceEpochNs = trace.startNs};
    const std::string path = folder_.file("source" + std::string(kind.format->extension));
    const auto sink = kind.format->createFrames(path, head, kind.settings());
    FrameCommentReader reader;
    FrameBatch batch;
    Account account;
    for (const std::string_view text : trace.frames) {
      Frame frame;
      EXPECT_TRUE(reader.read("xlatr: " + std::string(text), frame)) << text;
      batch.append(frame);
    }
    sink->write(batch, account);
    sink->close();
    return account.commented() + account.dropped() == 0 ? std::optional(path) : std::nullopt;
  }

  Outcome convert(const std::string& source, const Side& target) {
    const std::optional<std::string> name = convertCompatibly(source, target);
    Outcome outcome;
    outcome.compatible = name ? contentOf(folder_, *name, target.format) : "";
    // The compatible way names the targets of sessions and buses, and a trace can hold its own name.
    const std::string complete = name.value_or("out" + std::string(formatOf(target.format).extension));
    const bool session = complete.starts_with("out_S");
    JobReport report;
    runJob({.sources = {{source}},
            .target = folder_.path().string() + (session ? "//" : "/") + complete,
            .writing = {.replaces = true, .sink = {.version = target.version}}},
           report);
    outcome.complete = contentOf(folder_, complete, target.format);
    return outcome;
  }

  // Whether every difference of the trace has a name.
  void expectNames(const OneTrace& trace, const std::string& source, const Side& from) {
    for (const TraceFormat format : formatOf(from.format).allowedTargets) {
      for (const double version : formatOf(format).supportedVersions) {
        const Side to = {format, version};
        if (version != 0.0 && (isFirst(trace) || !isLikeAnother(to))) {
          expectName(trace, source, from, to);
        }
      }
    }
  }

  static bool isFirst(const OneTrace& trace) { return &trace == test::tracesForBothWays().data(); }

  void expectName(const OneTrace& trace, const std::string& source, const Side& from, const Side& to) {
    const Outcome outcome = convert(source, to);
    const bool same = outcome.compatible == outcome.complete;
    bool named = false;
    for (std::size_t at = 0; at < test::differences().size(); ++at) {
      const Difference& difference = test::differences()[at];
      const bool many = difference.traces.empty();
      const bool touched = many || std::ranges::count(difference.traces, trace.name) > 0;
      if (touched && from.isIn(difference.from) && to.isIn(difference.to)) {
        named = true;
        seen_[at] = seen_[at] || !same;
        EXPECT_FALSE(same && !many) << trace.name << ", " << from.name() << " to " << to.name()
                                    << " is the same on both ways: "
                                    << quirkTable()[static_cast<std::size_t>(difference.quirk)].name << " is gone";
      }
    }
    EXPECT_TRUE(same || named) << trace.name << ", " << from.name() << " to " << to.name() << " has no quirk\n"
                               << firstDifference(outcome);
  }

  test::TempFolder folder_;
  std::vector<bool> seen_ = std::vector<bool>(test::differences().size());

 private:
  // The name of the one file that it becomes, if it does.
  std::optional<std::string> convertCompatibly(const std::string& source, const Side& target) {
    ConversionOption version{};
    version.tag = XLATR_OPTION_TARGET_VERSION;
    version.value.version = target.version;
    ConversionOptions options{};
    options.target_format = target.format;
    options.option_count = 1;
    options.options = &version;
    WrittenFiles files;
    const std::int32_t code =
        ConversionRegistry::instance().convert(source.c_str(), folder_.file("out").c_str(), options, files.record());
    return code == XLATR_SUCCESS ? files.onlyName() : std::nullopt;
  }

  // The line of the first difference, or a piece of it from there on.
  static std::string firstDifference(const Outcome& outcome) {
    const auto at = static_cast<std::size_t>(std::ranges::mismatch(outcome.compatible, outcome.complete).in1 -
                                             outcome.compatible.begin());
    const auto around = [at](const std::string& text) {
      constexpr std::size_t kLongest = 200;
      const std::size_t end = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
      const std::size_t begin = std::max(end == std::string::npos ? 0 : end + 1, at - std::min(at, kLongest));
      return testing::PrintToString(text.substr(begin, text.find('\n', at) - begin).substr(0, 2 * kLongest));
    };
    return "  compatible " + around(outcome.compatible) + "\n  complete   " + around(outcome.complete);
  }
};

TEST_F(BothWays, differWhereAQuirkSaysSo) {
  for (const OneTrace& trace : test::tracesForBothWays()) {
    for (const FrameTarget& kind : test::frameTargets()) {
      const Side from = {kind.format->format, kind.capacity->version};
      if (kind.format->allowedTargets.empty() || (isLikeAnother(from) && !isFirst(trace))) {
        continue;
      }
      if (const auto source = writeSource(trace, kind)) {
        expectNames(trace, *source, from);
      }
    }
  }
  for (const test::TextTrace& trace : test::textsForBothWays()) {
    const FormatDescriptor& format = formatOf(trace.format);
    const std::string source = folder_.write("source" + std::string(format.extension), trace.text);
    expectNames({.name = trace.name}, source, {trace.format, format.currentVersion});
  }
  for (std::size_t at = 0; at < seen_.size(); ++at) {
    EXPECT_TRUE(seen_[at]) << "nothing shows number " << at << " of the differences";
  }
}

}  // namespace
}  // namespace xlatr
