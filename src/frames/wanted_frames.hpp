// A trace of which some frames are wanted, and those perhaps changed.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "frames/frame_selection.hpp"
#include "frames/frame_stream.hpp"

namespace xlatr {

// What is changed of every frame, after the selection.
struct FrameChanges {
  std::int64_t shiftNs = 0;
  bool rebase = false;  // the first frame that is wanted is the start of the target
  std::vector<std::pair<std::uint16_t, std::uint16_t>> buses = {};  // from the first to the second
  std::optional<int> zoneMinutes = {};                              // of sources that don't state one
};

// The wanted frames of a source, changed. Counts the others as dropped.
class WantedFrames final : public FrameSource {
 public:
  // Reads up to the first wanted frame if the trace is to start with it. Raises a FrameFailure of a bad argument for
  // times on the clock of a trace that does not say when it started.
  WantedFrames(std::unique_ptr<FrameSource> source, FrameSelection selection, FrameChanges changes);

  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override;
  [[nodiscard]] std::vector<PassedOver> passedOver() const override { return source_->passedOver(); }
  [[nodiscard]] std::uint64_t bytesRead() const override { return source_->bytesRead(); }

 private:
  void readFirst();
  [[nodiscard]] bool readSelected(FrameBatch& batch, Account& account);
  void change(FrameBatch& batch) const;

  std::unique_ptr<FrameSource> source_;
  FrameSelector selector_;
  FrameChanges changes_;
  std::vector<std::uint16_t> buses_;  // for each bus its new one; empty if none changes
  StreamHead head_;
  std::int64_t shiftNs_;
  // What was read ahead to know the first frame.
  std::optional<FrameBatch> first_;
  Account firstAccount_;
};

}  // namespace xlatr
