// The frames of a data group, one after the other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <unordered_map>
#include <vector>

#include "formats/mf4/mdf_data_stream.hpp"
#include "formats/mf4/mdf_frame_layout.hpp"
#include "frames/account.hpp"
#include "frames/frame.hpp"

namespace xlatr {

// What the readers of a file share: the number of the last record, and what there is to tell.
struct MdfReadingState {
  std::uint64_t record = 0;
  Account notes;
};

// Frames in the order of their records.
class MdfFrameReader {
 public:
  virtual ~MdfFrameReader() = default;

  // Goes to the next frame; false at the end. Records that are no frames are told in the state.
  [[nodiscard]] virtual bool next() = 0;
  // Its data and text stay until the next call of next().
  [[nodiscard]] const Frame& frame() const { return frame_; }

 protected:
  explicit MdfFrameReader(MdfReadingState& state) : state_(state) {}
  MdfFrameReader(const MdfFrameReader&) = delete;
  MdfFrameReader& operator=(const MdfFrameReader&) = delete;

  void note(Remark remark) { state_.notes.note(remark, state_.record + 1); }
  // One more record; whether it is a frame.
  [[nodiscard]] bool readRow(MdfFrameLayout& layout, const MdfRow& row);

  Frame frame_;

 private:
  MdfReadingState& state_;
};

inline constexpr std::uint64_t kMdfUnknownCount = std::numeric_limits<std::uint64_t>::max();

// The records of one group, or the columns that one group's frames are stored in.
class MdfSortedReader final : public MdfFrameReader {
 public:
  // `count` is the number of records, if the file states it.
  MdfSortedReader(const MdfLayoutContext& context, const std::vector<const MdfGroupInfo*>& columns,
                  std::unique_ptr<MdfFrameLayout> layout, std::uint64_t count, MdfReadingState& state);

  [[nodiscard]] bool next() override;

 private:
  struct Column {
    MdfDataStream records;
    MdfDataStream invalidation;  // of values that are stored apart from it
    std::uint64_t dataBytes;
    std::uint64_t invalidationBytes;
    std::uint64_t stride = 0;  // of records; 0 until it is known
    bool apart = false;
  };

  [[nodiscard]] bool load(std::size_t column);
  [[nodiscard]] bool passGap(Column& column);
  [[nodiscard]] bool finish();

  std::vector<std::unique_ptr<Column>> columns_;
  std::unique_ptr<MdfFrameLayout> layout_;
  std::uint64_t count_;
  std::uint64_t index_ = 0;
  MdfRow row_;
  bool ended_ = false;
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

  [[nodiscard]] bool next() override;

 private:
  static constexpr std::size_t kSmallIds = 256;

  [[nodiscard]] Group* groupOf(std::uint64_t id);
  [[nodiscard]] bool passGap();
  [[nodiscard]] bool finish();

  MdfDataStream stream_;
  std::uint8_t idSize_;
  std::uint64_t idMask_;
  std::uint64_t position_ = 0;
  std::vector<Group> groups_;
  std::array<std::uint16_t, kSmallIds> small_{};  // one more than the index of the group; 0 for none
  std::unordered_map<std::uint64_t, std::size_t> large_;
  MdfRow row_;
  bool ended_ = false;
};

}  // namespace xlatr
