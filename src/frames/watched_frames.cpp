#include "frames/watched_frames.hpp"

#include <utility>

#include "frames/frame_failure.hpp"

namespace xlatr {

WatchedFrames::WatchedFrames(std::unique_ptr<FrameSource> source, std::uint64_t bytesTotal, ReadProgressFunction watch)
    : source_(std::move(source)), watch_(std::move(watch)) {
  progress_.bytesTotal = bytesTotal;
}

bool WatchedFrames::read(FrameBatch& batch, Account& account) {
  if (progress_.bytesRead != 0) {
    progress_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    if (!watch_(progress_)) {
      throw FrameFailure(FrameProblem::Cancelled, head().path + ": reading was cancelled");
    }
  }
  const bool more = source_->read(batch, account);
  progress_.framesRead += batch.size();
  progress_.bytesRead = source_->bytesRead();
  return more;
}

}  // namespace xlatr
