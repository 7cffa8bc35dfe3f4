// The pieces that the data of a group lie in.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "formats/mf4/mdf_data_file.hpp"

namespace xlatr {

enum class MdfPartForm : std::uint8_t { Plain, Zipped, Transposed, Lost };

struct MdfDataPart {
  MdfPartForm form = MdfPartForm::Plain;
  std::uint64_t position = 0;  // in the file
  std::uint64_t stored = 0;    // bytes there
  std::uint64_t length = 0;    // bytes that they stand for
  std::uint64_t width = 0;     // transposed: bytes of a row
  bool isCut = false;          // the file ends before it does
  bool isValues = false;       // DV: the invalidation bits of its records lie elsewhere
};

// What of a list of values is meant: they, or the bits that say which of them are invalid.
enum class MdfDataRole : std::uint8_t { Values, Invalidation };

// The data block that a link leads to, or those of the lists that it leads to, in their order. A block that can't be
// read is a lost part, as long as its list says. Nothing is held but the place in the current list.
class MdfDataParts {
 public:
  MdfDataParts(MdfDataFile& file, std::uint64_t link, MdfDataRole role) : file_(file), link_(link), role_(role) {
    restart();
  }

  [[nodiscard]] bool next(MdfDataPart& part);
  // Back to the first part.
  void restart();
  // Whether a list could not be followed to its end.
  [[nodiscard]] bool damaged() const { return damaged_; }

 private:
  static constexpr std::size_t kLinksAtOnce = 64;

  struct BlockHead {
    std::array<char, 4> id{};
    std::uint64_t length = 0;
    std::uint64_t links = 0;

    [[nodiscard]] std::string_view type() const { return {id.data() + 2, 2}; }
    [[nodiscard]] std::uint64_t dataOffset() const { return 24 + 8 * links; }
  };

  [[nodiscard]] std::optional<BlockHead> headAt(std::uint64_t position);
  [[nodiscard]] std::optional<std::uint64_t> numberAt(std::uint64_t position);
  [[nodiscard]] std::uint64_t linkOfList(std::uint64_t index);
  void openLink(std::uint64_t position);
  void openList(std::uint64_t position, const BlockHead& head);
  [[nodiscard]] std::uint64_t lengthInList(std::uint64_t index);
  [[nodiscard]] bool fill(std::uint64_t position, MdfDataPart& part);
  [[nodiscard]] bool fillZipped(std::uint64_t position, const BlockHead& head, MdfDataPart& part);
  void stop() {
    damaged_ = true;
    single_ = 0;
    list_ = 0;
  }

  MdfDataFile& file_;
  std::uint64_t link_;
  MdfDataRole role_;
  bool damaged_ = false;

  std::uint64_t single_ = 0;  // a block that is in no list
  std::uint64_t list_ = 0;    // the current list; 0 for none
  std::uint64_t nextList_ = 0;
  std::uint64_t listLinks_ = 0;
  std::uint64_t firstLink_ = 0;  // the index of the first link to data
  std::uint64_t count_ = 0;
  std::uint64_t index_ = 0;
  std::uint64_t equalLength_ = 0;  // 0 where the blocks differ
  bool hasOffsets_ = false;
  std::array<std::uint8_t, 8 * kLinksAtOnce> linkBytes_{};
  std::uint64_t linksBegin_ = 0;
  std::uint64_t linksEnd_ = 0;

  std::uint64_t storedTotal_ = 0;  // blocks do not overlap, so that they are together no more than the file
  std::uint64_t listsTotal_ = 0;
};

}  // namespace xlatr
