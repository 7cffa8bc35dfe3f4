// The MF4 file that a writer makes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>

#include "formats/mf4/block_header.hpp"
#include "formats/mf4/block_layout_options.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_data_output.hpp"
#include "formats/mf4/mdf_record.hpp"
#include "formats/mf4/mdf_record_store.hpp"
#include "io/buffered_output.hpp"

namespace xlatr {

// First the tree of blocks that describe the file, which says that there are no records; then the records; at the end
// the numbers that could not be known before. The records of the first data group go to the file as they come in. Those
// of the others, which only sorted files have, and the payloads of signal data wait in memory.
//
// Up to the end the file says that it is unfinished: no reader takes what an interrupted writer has left for a whole
// trace, and one that knows how gets the records of the first data group out of it, unless they are zipped or their
// payloads are elsewhere.
//
// Failures are those of the output and kDeflateFailure. After one the file is left as it is, and each later call raises
// the same again.
class MdfTargetFile {
 public:
  // `output` is a new file that nobody else writes to.
  MdfTargetFile(BufferedOutput& output, const MdfLayoutOptions& options);

  [[nodiscard]] const MdfLayoutOptions& options() const { return options_; }

  // Writes the tree, made with the same options; in its place if it was written before. What is appended without a tree
  // waits for one.
  void writeTree(MdfFileHeader& header);

  // Frames that the layout has no place for are passed over: with more data than a record holds, or of a kind that the
  // options leave out. Signal data that are not as long as the message says raise "Internal error (VLSD SD)".
  void append(const MdfCanMessage& message);

  // Writes what waits and all that was left open; nothing for a file without a tree.
  void finish();

 private:
  static constexpr std::size_t kFrameKinds = 3;  // data, remote, error: the ids of their records
  using Positions = std::array<std::uint64_t, kFrameKinds>;

  [[nodiscard]] std::size_t kindCount() const { return options_.dataFramesOnly ? 1 : kFrameKinds; }
  [[nodiscard]] std::size_t groupCount() const { return options_.isSorted() ? kindCount() : 1; }
  [[nodiscard]] bool hasPlaceFor(const MdfCanMessage& message) const;
  void takePositions(HeaderBlock& header);
  void appendSignal(const MdfCanMessage& message);
  void beginGroup();
  void drainGroup(std::size_t group);
  void requireWhole() const;
  void writeSignalData();
  void alignEnd();
  void patch(std::uint64_t position, std::uint64_t value);
  template <class Action>
  void changeFile(Action&& action);

  BufferedOutput& output_;
  const MdfLayoutOptions options_;
  bool treeWritten_ = false;
  std::exception_ptr failure_;  // the first one in the midst of a change
  std::uint64_t end_ = 0;       // of the tree and the finished data blocks
  Positions cycleCountPositions_{};
  Positions dataLinkPositions_{};
  std::uint64_t payloadLinkPosition_ = 0;
  Positions frameCounts_{};
  std::array<MdfRecordStore, kFrameKinds> records_;  // of each data group
  std::optional<MdfDataOutput> data_;                // of the group that is being written
  MdfRecordStore signalData_;
  MdfRecord record_;
};

}  // namespace xlatr
