// How far a trace is read, for somebody who may end it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "frames/frame_stream.hpp"

namespace xlatr {

// How far a source is read.
struct ReadProgress {
  std::uint64_t bytesRead = 0;
  std::uint64_t bytesTotal = 0;  // 0 if nobody knows
  std::uint64_t framesRead = 0;
  double seconds = 0.0;  // since the start
};

// Called once for each batch, about every 16,000 frames. False cancels.
using ReadProgressFunction = std::function<bool(const ReadProgress&)>;

// A source with somebody who looks on, whoever reads it.
class WatchedFrames final : public FrameSource {
 public:
  WatchedFrames(std::unique_ptr<FrameSource> source, std::uint64_t bytesTotal, ReadProgressFunction watch);

  [[nodiscard]] const StreamHead& head() const override { return source_->head(); }
  // Tells of each batch when the next one is asked for, so that one that was counted was handed out. Raises a
  // FrameFailure if it is cancelled.
  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override;
  [[nodiscard]] std::vector<PassedOver> passedOver() const override { return source_->passedOver(); }
  [[nodiscard]] std::uint64_t bytesRead() const override { return source_->bytesRead(); }

 private:
  std::unique_ptr<FrameSource> source_;
  ReadProgressFunction watch_;
  ReadProgress progress_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace xlatr
