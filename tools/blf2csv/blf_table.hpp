// The table that the library reads: its head and its rows as text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "blf2csv/object_kinds.hpp"
#include "formats/blf/blf_log_head.hpp"

namespace blf2csv {

using xlatr::blf_log::FileHeader;

// Takes the next bytes of the table; they are valid during the call.
using Sink = std::function<void(std::string_view)>;

// Prints head and rows and hands them on in blocks. One thread at a time. What the sink throws comes out of any member.
class BlfTable {
 public:
  explicit BlfTable(Sink sink);

  // The date and the names of the columns.
  void addHead(const FileHeader& header);
  // The row of an object.
  void addRow(const Object& object, const Cells& cells);
  // Hands on what is left.
  void flush();

  [[nodiscard]] std::uint64_t rows() const { return rows_; }

 private:
  void makeRoom(std::size_t count);

  Sink sink_;
  std::unique_ptr<char[]> block_;
  std::size_t used_ = 0;
  std::uint64_t rows_ = 0;
};

}  // namespace blf2csv
