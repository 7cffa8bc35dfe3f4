// BLF binary logs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tracegen/line_printer.hpp"

namespace tracegen {

// Objects of the types 86 (classic data and remote frames), 100 (CAN FD) and 73 (error frames), times in nanoseconds,
// in containers of 128 KiB packed by zlib; if a container is full, its last object goes on in the next one. Other
// entries have no form here.
class BlfPrinter : public LinePrinter {
 public:
  BlfPrinter();

  void printHeader(TextOutput& output) override;
  void printEntry(const Entry& entry, TextOutput& output) override;
  void printEnd(TextOutput& output) override;
  [[nodiscard]] std::string finalHeader() const override { return header(); }

 private:
  [[nodiscard]] std::string header() const;
  void addObject(std::uint32_t type, const Entry& entry, std::size_t bodySize);
  void addFrame(const Entry& entry);
  void addFdFrame(const Entry& entry);
  void addErrorFrame(const Entry& entry);
  void number(std::uint64_t value, std::size_t width);
  void zeros(std::size_t count);
  void writeContainer(std::size_t size, TextOutput& output);

  std::vector<std::uint8_t> content_;  // not written yet
  std::vector<std::uint8_t> packed_;
  std::uint64_t fileSize_;
  std::uint64_t unpackedSize_;
  std::uint32_t objects_ = 0;
  std::uint64_t lastUs_ = 0;
};

}  // namespace tracegen
