// Cutting a row into its cells.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "util/hex.hpp"

namespace xlatr {

// Where a row is cut.
enum class CsvCut : std::uint8_t {
  AtRuns,  // of separators: an empty cell does not count, and the cells after it move up
  AtEach,
};

// Walks over the cells of a row: what is between separator characters. The row and the separators must outlive the
// cursor.
class CsvCellCursor {
 public:
  CsvCellCursor(std::string_view row, std::string_view separators, CsvCut cut = CsvCut::AtRuns)
      : next_(row.data()), end_(row.data() + row.size()), separators_(separators), cut_(cut) {
    if (cut_ == CsvCut::AtRuns) {
      skipSeparators();
    }
  }

  [[nodiscard]] bool atEnd() const { return next_ == end_; }
  // The row from the next cell on.
  [[nodiscard]] std::string_view rest() const { return {next_, static_cast<std::size_t>(end_ - next_)}; }

  // The next cell; empty at the end of the row.
  std::string_view take() {
    const char* const begin = next_;
    next_ = endOfCell();
    const std::string_view cell(begin, static_cast<std::size_t>(next_ - begin));
    skipSeparators();
    return cell;
  }

  // Takes a cell that is exactly one pair of hexadecimal digits; does not move at any other cell.
  [[nodiscard]] bool takeHexPair(std::uint8_t& value) {
    if (end_ - next_ < 2 || (end_ - next_ > 2 && !isSeparator(next_[2])) || isSeparator(next_[0]) ||
        isSeparator(next_[1])) {
      return false;
    }
    const int both = hexDigitValue(next_[0]) * 16 | hexDigitValue(next_[1]);
    if (both < 0) {
      return false;
    }
    value = static_cast<std::uint8_t>(both);
    next_ += 2;
    skipSeparators();
    return true;
  }

 private:
  // Nearly all separators are one character, which is kept at hand while the cell is walked over.
  [[nodiscard]] const char* endOfCell() const {
    const char* next = next_;
    const char* const end = end_;
    if (separators_.size() == 1) {
      const char separator = separators_.front();
      while (next != end && *next != separator) {
        ++next;
      }
      return next;
    }
    while (next != end && !isSeparator(*next)) {
      ++next;
    }
    return next;
  }

  [[nodiscard]] bool isSeparator(char character) const {
    return separators_.size() == 1 ? character == separators_.front()
                                   : separators_.find(character) != std::string_view::npos;
  }
  void skipSeparators() {
    if (next_ != end_ && isSeparator(*next_)) {
      ++next_;
    }
    while (cut_ == CsvCut::AtRuns && next_ != end_ && isSeparator(*next_)) {
      ++next_;
    }
  }

  const char* next_;
  const char* end_;
  std::string_view separators_;
  CsvCut cut_;
};

// The cells of a row by their places. Those of the first columns are found only once; nothing is allocated for a row of
// any length.
class CsvCells {
 public:
  CsvCells(std::string_view row, std::string_view separators, CsvCut cut = CsvCut::AtRuns)
      : separators_(separators), cut_(cut), end_(row.data() + row.size()), afterKnown_(row, separators, cut) {}

  // A cursor at the cell of this place, counted from 0; at its end if the row has fewer cells.
  [[nodiscard]] CsvCellCursor from(std::size_t place) {
    if (know(place)) {
      const char* const begin = known_[place].begin;
      return {std::string_view(begin, static_cast<std::size_t>(end_ - begin)), separators_, cut_};
    }
    CsvCellCursor cursor = afterKnown_;
    for (std::size_t skipped = count_; skipped < place && !cursor.atEnd(); ++skipped) {
      cursor.take();
    }
    return cursor;
  }

  // The cell of this place, or nothing.
  [[nodiscard]] std::optional<std::string_view> at(std::size_t place) {
    if (know(place)) {
      const Cell& cell = known_[place];
      return cell.begin == end_ ? std::nullopt : std::optional(std::string_view(cell.begin, cell.size));
    }
    CsvCellCursor cursor = from(place);
    return cursor.atEnd() ? std::nullopt : std::optional(cursor.take());
  }

 private:
  // More than a row of ours has before its data, and more than one of the converter's has in all.
  static constexpr std::size_t kKnown = 32;

  struct Cell {
    const char* begin;
    std::size_t size;
  };

  // Whether the cell of this place is, or becomes, one of those that are found only once.
  [[nodiscard]] bool know(std::size_t place) {
    while (count_ <= place && count_ < kKnown) {
      const char* const begin = afterKnown_.rest().data();
      known_[count_++] = {begin, afterKnown_.take().size()};
    }
    return place < count_;
  }

  std::string_view separators_;
  CsvCut cut_;
  const char* end_;                 // of the row
  std::array<Cell, kKnown> known_;  // `count_` of them; setting the others would take longer than reading a cell
  std::size_t count_ = 0;
  CsvCellCursor afterKnown_;
};

}  // namespace xlatr
