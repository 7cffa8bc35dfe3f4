// Several traces as one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "frames/frame_stream.hpp"

namespace xlatr {

// The frames of several sources by time, those of equal times in the order of the sources. If all of them state a
// start, their times count from the earliest one; otherwise all are taken to have started together. Each source must be
// in the order of its times; where one is not, its frames stay in their own order. Holds one batch of each source.
class MergedFrames final : public FrameSource {
 public:
  // At least one source.
  explicit MergedFrames(std::vector<std::unique_ptr<FrameSource>> sources);

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
    bool ended = false;
  };

  // The input whose next frame comes first, or null at the end of all.
  [[nodiscard]] Input* next(Account& account);

  std::vector<Input> inputs_;
  StreamHead head_;
};

}  // namespace xlatr
