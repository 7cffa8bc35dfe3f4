// Several traces as one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "frames/frame_stream.hpp"

namespace xlatr {

struct MergeSettings {
  bool alignsStarts = false;  // all are taken to have started together, whatever they state
  bool closesGaps = false;    // a source that begins after all that came before have ended follows at once
};

// The frames of several sources by time, those of equal times in the order of the sources. If all of them state a
// start, their times count from the earliest one; otherwise all are taken to have started together. Each source must be
// in the order of its times; where one is not, its frames stay in their own order. Holds one batch of each source.
class MergedFrames final : public FrameSource {
 public:
  // At least one source.
  explicit MergedFrames(std::vector<std::unique_ptr<FrameSource>> sources, const MergeSettings& settings = {});

  // That of the first source, but with the start and the number of all.
  [[nodiscard]] const StreamHead& head() const override { return head_; }
  [[nodiscard]] bool read(FrameBatch& batch, Account& account) override;
  // What has one name is added up.
  [[nodiscard]] std::vector<PassedOver> passedOver() const override;
  [[nodiscard]] std::uint64_t bytesRead() const override;

 private:
  struct Input {
    std::unique_ptr<FrameSource> source;
    std::int64_t offsetNs = 0;
    FrameBatch batch;
    std::size_t row = 0;
    bool begun = false;
    bool ended = false;
  };

  // The input whose next frame comes first, or null at the end of all.
  [[nodiscard]] Input* next(Account& account);
  void closeGap(const Input& input, std::int64_t timeNs);

  std::vector<Input> inputs_;
  MergeSettings settings_;
  StreamHead head_;
  std::int64_t shiftNs_ = 0;  // of all that is read from now on, for the gaps that were closed
  std::int64_t lastNs_ = 0;   // of the frame before, without the shift
  bool any_ = false;
  Frame frame_;  // the one that is being handed on
};

}  // namespace xlatr
