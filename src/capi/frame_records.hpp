// Between the records of frames.h and the library's own.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_job.hpp"
#include "frames/frame_selection.hpp"
#include "frames/frame_stream.hpp"
#include "frames/split_target.hpp"
#include "frames/target_file.hpp"
#include "frames/wanted_frames.hpp"
#include "frames/watched_frames.hpp"
#include "xlatr/frames.h"

namespace xlatr::capi {

// A caller's record as this library knows it: what an older caller's record does not reach is 0. A null record is all
// 0. False for one that can't even hold its size.
template <class Record>
[[nodiscard]] bool readRecord(const Record* caller, Record& record) {
  record = {};
  if (caller == nullptr) {
    return true;
  }
  std::uint64_t size = 0;
  std::memcpy(&size, caller, sizeof size);
  if (size < sizeof size) {
    return false;
  }
  std::memcpy(&record, caller, std::min<std::uint64_t>(size, sizeof record));
  return true;
}

// Fills a caller's record as far as it reaches, and what lies beyond this library's with 0. False for one that can't
// even hold its size.
template <class Record>
[[nodiscard]] bool writeRecord(Record record, Record* caller) {
  if (caller == nullptr) {
    return false;
  }
  std::uint64_t size = 0;
  std::memcpy(&size, caller, sizeof size);
  if (size < sizeof size) {
    return false;
  }
  record.size = size;
  const auto known = static_cast<std::size_t>(std::min<std::uint64_t>(size, sizeof record));
  std::memcpy(caller, &record, known);
  std::memset(reinterpret_cast<char*>(caller) + known, 0, static_cast<std::size_t>(size) - known);
  return true;
}

// Raises a FrameFailure of a bad argument with this text.
[[noreturn]] void refuse(const std::string& text);

// Each of these raises a FrameFailure of a bad argument for a record that breaks the rules.
[[nodiscard]] FrameSelection selectionOf(const xlatr_selection* caller);
[[nodiscard]] FrameChanges changesOf(const xlatr_changes* caller);
[[nodiscard]] JobSettings settingsOf(const xlatr_job_options& options);

// How a target is written.
struct SinkTarget {
  TargetSettings writing = {};
  SplitSettings split = {};
};
[[nodiscard]] SinkTarget targetOf(const xlatr_sink_options* caller);

[[nodiscard]] StreamHead headOf(const xlatr_head* caller);
// The texts belong to the head.
[[nodiscard]] xlatr_head recordOf(const StreamHead& head);
[[nodiscard]] xlatr_account recordOf(const Account& account);
// The columns belong to the batch.
[[nodiscard]] xlatr_batch recordOf(const FrameBatch& batch);
[[nodiscard]] xlatr_job_progress recordOf(const ReadProgress& progress);
// Whether the caller wants to go on; one who did not ask does.
[[nodiscard]] bool wantsToGoOn(xlatr_progress_function function, void* context, const ReadProgress& progress);
// The texts belong to the file or the row.
[[nodiscard]] xlatr_written recordOf(const WrittenFile& file);
[[nodiscard]] xlatr_passed_over recordOf(const PassedOver& row);

// The frame of a row of a caller's batch, which was found to be valid.
[[nodiscard]] Frame frameOf(const xlatr_batch& batch, std::size_t row);
// Raises a FrameFailure of a bad argument that says what breaks the rules.
void requireValid(const xlatr_batch& batch);

}  // namespace xlatr::capi
