// One trace into one file, or into several.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frames/account.hpp"
#include "frames/frame_batch.hpp"
#include "frames/frame_stream.hpp"
#include "frames/target_file.hpp"
#include "frames/target_name.hpp"
#include "io/output_target.hpp"

namespace xlatr {

// Where one file ends and the next one begins. Each file is a whole trace, whose times count from the start of all.
struct SplitSettings {
  std::uint64_t bytes = 0;  // a file grows no larger than about this; 0: as large as it will
  std::int64_t ns = 0;      // a file has the frames of one multiple of this time, not negative; 0: of all times
  bool buses = false;       // each bus has files of its own

  [[nodiscard]] bool parts() const { return bytes != 0 || ns != 0; }
  [[nodiscard]] bool any() const { return parts() || buses; }
};

struct WrittenFile {
  std::string name = {};
  std::uint64_t bytes = 0;
  std::uint64_t frames = 0;
};

// Raises what TargetFile raises. A part that is finished has its name at once, and stays if a later one fails.
class SplitTarget {
 public:
  // More than anybody has. Each takes the memory of a target.
  static constexpr std::size_t kMostBuses = 64;

  SplitTarget(OutputTarget target, TargetSettings settings, const SplitSettings& split);
  ~SplitTarget();
  SplitTarget(const SplitTarget&) = delete;
  SplitTarget& operator=(const SplitTarget&) = delete;

  void create(const StreamHead& head);
  void write(const FrameBatch& batch, Account& account);
  // What was held back until now; nothing can be written after it.
  void writeRest(Account& account);
  // After writeRest.
  void finish();
  // Those that are finished, in the order in which they were.
  [[nodiscard]] const std::vector<WrittenFile>& files() const { return files_; }
  // Of what nobody wants after all.
  void removeFinished();

 private:
  // The file that the frames of a bus go to.
  struct Part {
    PartOfTrace place;
    std::unique_ptr<TargetFile> file;
    std::uint64_t frames = 0;
    std::int64_t endNs = 0;  // the first time that belongs to the next part
    std::size_t room = 0;    // frames that may be written before the size is looked at again
  };

  void append(const Frame& frame, Account& account);
  void appendTo(Part& part, const Frame& frame, Account& account);
  [[nodiscard]] Part& partOfBus(std::uint16_t bus);
  void begin(Part& part, std::int64_t timeNs);
  void hand(Account& account);
  void end(Part& part);
  void handWaiting(Part& part, Account& account);

  OutputTarget target_;
  TargetSettings settings_;
  SplitSettings split_;
  std::optional<TargetName> name_;  // nothing for a single file
  StreamHead head_;
  std::map<std::uint16_t, Part> parts_;  // by bus; that of bus 0 is the only one where buses are not split
  Part* last_ = nullptr;                 // what the frame before went to
  FrameBatch rows_;                      // frames of `last_` that are not yet written
  std::unique_ptr<FrameBatch> waiting_;  // frames that name no bus, before the first one that does
  std::vector<WrittenFile> files_;
  Frame frame_;
};

}  // namespace xlatr
