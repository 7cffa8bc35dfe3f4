// Frames made from the input, written in the format and version that its first byte chooses, and read back: what the
// table of capacities says comes back, and everything is put to account once.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "frame_checks.hpp"
#include "frames/frame_capacity.hpp"
#include "frames/frame_sink.hpp"
#include "io/format.hpp"
#include "scratch_folder.hpp"
#include "support/frame_targets.hpp"
#include "target.hpp"

namespace {

using fuzz::require;

using xlatr::Account;
using xlatr::Frame;
using xlatr::FrameAttribute;
using xlatr::FrameBatch;
using xlatr::FrameCapacity;
using xlatr::FrameKind;
using xlatr::test::FrameTarget;

// Numbers off the front of the input; zeros when it has no more.
class Numbers {
 public:
  explicit Numbers(std::span<const std::uint8_t> input) : input_(input) {}

  [[nodiscard]] bool atEnd() const { return input_.empty(); }
  std::uint64_t take(std::size_t bytes) {
    std::uint64_t number = 0;
    for (std::size_t at = 0; at < bytes && !input_.empty(); ++at) {
      number |= std::uint64_t{input_.front()} << (8 * at);
      input_ = input_.subspan(1);
    }
    return number;
  }
  std::span<const std::uint8_t> takeBytes(std::size_t most) {
    const auto bytes = input_.first(std::min(most, input_.size()));
    input_ = input_.subspan(bytes.size());
    return bytes;
  }

 private:
  std::span<const std::uint8_t> input_;
};

// A frame, and the bytes that it refers to.
struct OwnedFrame {
  Frame frame;
  std::string text;

  explicit OwnedFrame(Numbers& numbers) {
    constexpr std::uint64_t kFlags = 0x01FF;  // all that there are
    constexpr std::array<std::size_t, 8> kTimeBytes = {1, 2, 3, 4, 5, 6, 7, 7};
    frame.kind = static_cast<FrameKind>(numbers.take(1) % xlatr::kFrameKindCount);
    const std::uint64_t form = numbers.take(1);
    frame.timeNs = static_cast<std::int64_t>(numbers.take(kTimeBytes[form % kTimeBytes.size()]));
    const std::int64_t unit = (form & 8) != 0 ? 1'000 : 1;
    frame.timeNs = std::min(frame.timeNs, xlatr::kFarthestNs / unit) * unit;
    frame.bus = static_cast<std::uint16_t>(numbers.take((form & 16) != 0 ? 2 : 1));
    frame.flags = static_cast<std::uint16_t>(numbers.take(2) & kFlags);
    frame.dlc = static_cast<std::uint16_t>(numbers.take(1));
    frame.id = static_cast<std::uint32_t>(numbers.take((form & 32) != 0 ? 4 : 2));
    frame.data = numbers.takeBytes(numbers.take(1) % 70);
    for (std::uint64_t left = numbers.take(1) % 4; left > 0; --left) {
      const std::uint64_t head = numbers.take(1);
      frame.attributes.set(static_cast<FrameAttribute>(head % xlatr::kFrameAttributeCount),
                           static_cast<std::uint32_t>(numbers.take(head < 64    ? 1
                                                                   : head < 128 ? 2
                                                                                : 4)));
    }
    if ((form & 64) != 0 || frame.kind == FrameKind::Comment) {
      const auto bytes = numbers.takeBytes(numbers.take((form & 128) != 0 ? 2 : 1));
      for (std::size_t copies = (form & 128) != 0 ? 40 : 1; copies > 0; --copies) {
        for (const std::uint8_t byte : bytes) {
          text += static_cast<char>(byte & 0x7FU);
        }
      }
    }
  }

  [[nodiscard]] Frame get() const {
    Frame whole = frame;
    if (!text.empty() || whole.kind == FrameKind::Comment) {
      whole.text = text;
    }
    return whole;
  }
};

// Writes the frames one by one, so that it shows which ones a sink drops for what came before.
std::vector<OwnedFrame const*> writeAll(const FrameTarget& target, const std::string& path,
                                        const std::vector<OwnedFrame>& frames) {
  const auto sink = target.format->createFrames(path, {}, target.settings());
  FrameBatch batch;
  Account account;
  std::vector<OwnedFrame const*> kept;
  for (const OwnedFrame& frame : frames) {
    const std::uint64_t dropped = account.dropped();
    batch.clear();
    batch.append(frame.get());
    sink->write(batch, account);
    const auto reason = whyNotHeld(*target.capacity, frame.get());
    const bool isDropped = account.dropped() > dropped;
    require(isDropped == (reason && !target.capacity->comments) ||
            (!reason && account.dropped(xlatr::Remark::TimeNotHeld).frames > 0));
    if (!isDropped) {
      kept.push_back(&frame);
    }
  }
  sink->close();
  require(account.written() + account.dropped() == frames.size());
  return kept;
}

void checkRoundTrip(const FrameTarget& target, const std::string& path, const std::vector<OwnedFrame>& frames) {
  const std::vector<OwnedFrame const*> kept = writeAll(target, path, frames);
  const auto source = target.format->openFrames(path);
  FrameBatch batch;
  Account account;
  Account ignored;
  std::size_t next = 0;
  std::int64_t time = 0;
  while (source->read(batch, account)) {
    for (std::size_t row = 0; row < batch.size(); ++row, ++next) {
      require(next < kept.size());
      const Frame written = kept[next]->get();
      Frame expected = whyNotHeld(*target.capacity, written) ? written : reducedTo(*target.capacity, written, ignored);
      const Frame back = batch.at(row);
      if (expected.kind == FrameKind::Comment) {
        expected = written;
        // Most formats give a comment the time of what stands before it.
        expected.timeNs = back.timeNs == written.timeNs ? written.timeNs : time;
      }
      time = back.timeNs;
      require(sameFrame(back, expected));
    }
    batch.clear();
  }
  require(next == kept.size());
  require(account.noted(xlatr::Remark::SourceCut).frames == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  static const std::vector<FrameTarget> targets = xlatr::test::frameTargets();
  Numbers numbers(std::span(data, size));
  const FrameTarget& target = targets[static_cast<std::size_t>(numbers.take(1)) % targets.size()];
  std::vector<OwnedFrame> frames;
  while (!numbers.atEnd()) {
    frames.emplace_back(numbers);
  }
  checkRoundTrip(target, folder.path("target"), frames);
  return 0;
}
