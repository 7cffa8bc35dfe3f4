// The frames of a data group, one after the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "formats/mf4/mdf_data_stream.hpp"
#include "formats/mf4/mdf_frame_layout.hpp"
#include "formats/mf4/mdf_record_ids.hpp"
#include "formats/mf4/mdf_turn_queue.hpp"
#include "frames/account.hpp"
#include "frames/frame_batch.hpp"

namespace xlatr {

// What the readers of a file share: the number of the last record, and what there is to tell.
struct MdfReadingState {
  std::uint64_t record = 0;
  Account notes;
};

using MdfFrameTurn = MdfTurn<std::int64_t>;  // in nanoseconds

// Frames in the order of their records.
class MdfFrameReader {
 public:
  virtual ~MdfFrameReader() = default;

  // The time of the next record that has one; nothing at the end. Those that have none are told in the state.
  [[nodiscard]] std::optional<std::int64_t> nextTime();
  // Adds frames to the batch, from the one whose time nextTime() gave on, until the batch is full, another reader has
  // its turn, or there are no more. Returns the time of the next.
  [[nodiscard]] std::optional<std::int64_t> read(FrameBatch& batch, std::size_t self, const MdfFrameTurn* other);

 protected:
  explicit MdfFrameReader(MdfReadingState& state) : state_(state) {}
  MdfFrameReader(const MdfFrameReader&) = delete;
  MdfFrameReader& operator=(const MdfFrameReader&) = delete;

  // Fills `rows_`, which are empty, and says what they are of; null at the end, after which nobody asks again.
  [[nodiscard]] virtual MdfFrameLayout* load() = 0;
  void note(Remark remark) { state_.notes.note(remark, state_.record + 1); }

  MdfRows rows_;

 private:
  [[nodiscard]] std::size_t countRun(const FrameBatch& batch, std::size_t self, const MdfFrameTurn* other) const;

  MdfReadingState& state_;
  MdfFrameLayout* layout_ = nullptr;  // of the rows
  std::size_t at_ = 0;                // the next of them
  std::array<std::int64_t, MdfRows::kMost> times_;
  std::array<bool, MdfRows::kMost> known_;
};

inline constexpr std::uint64_t kMdfUnknownCount = std::numeric_limits<std::uint64_t>::max();

// The records of one group, or the columns that one group's frames are stored in.
class MdfSortedReader final : public MdfFrameReader {
 public:
  // `count` is the number of records, if the file states it.
  MdfSortedReader(const MdfLayoutContext& context, const std::vector<const MdfGroupInfo*>& columns,
                  std::unique_ptr<MdfFrameLayout> layout, std::uint64_t count, MdfReadingState& state);

  [[nodiscard]] MdfFrameLayout* load() override;

 private:
  struct Column {
    MdfDataStream records;
    MdfDataStream invalidation;  // of values that are stored apart from it
    std::uint64_t dataBytes;
    std::uint64_t invalidationBytes;
    std::uint64_t stride = 0;  // of records; 0 until it is known
    bool apart = false;
  };

  // Finds records of a column from `index_` on, up to `count`, and returns how many there are.
  [[nodiscard]] std::size_t find(std::size_t column, std::size_t count);
  [[nodiscard]] bool passGap(Column& column);
  [[nodiscard]] MdfFrameLayout* finish();

  std::vector<std::unique_ptr<Column>> columns_;
  std::unique_ptr<MdfFrameLayout> layout_;
  std::uint64_t count_;
  std::uint64_t index_ = 0;
};

// Records of several groups, each with the id of its group before it.
class MdfUnsortedReader final : public MdfFrameReader {
 public:
  struct Group {
    std::uint64_t recordId = 0;
    std::uint64_t dataBytes = 0;
    std::uint64_t invalidationBytes = 0;
    bool variable = false;                   // values of varying length
    std::unique_ptr<MdfFrameLayout> layout;  // null for what is no frame
    std::uint64_t index = 0;
  };

  MdfUnsortedReader(const MdfLayoutContext& context, std::uint64_t dataLink, std::uint8_t idSize,
                    std::vector<Group> groups, MdfReadingState& state);

  [[nodiscard]] MdfFrameLayout* load() override;

 private:
  [[nodiscard]] Group* groupOf(std::uint64_t id);
  // What stands at the position: another row, something to be passed over, a row of another group, nothing that can be
  // read, or a record of no group.
  enum class Step : std::uint8_t { Row, Passed, Other, Missing, Unknown };
  // Takes it in, unless bytes at hand would have to move that rows lie in.
  [[nodiscard]] Step step();
  [[nodiscard]] const std::uint8_t* bytes(std::size_t count) {
    return rows_.count == 0 ? stream_.at(position_, count) : stream_.peek(position_, count);
  }
  [[nodiscard]] bool passGap();
  [[nodiscard]] MdfFrameLayout* finish();

  MdfDataStream stream_;
  std::uint8_t idSize_;
  std::uint64_t position_ = 0;
  std::vector<Group> groups_;
  Group* current_ = nullptr;  // that of the rows
  MdfRecordIds ids_;
};

}  // namespace xlatr
