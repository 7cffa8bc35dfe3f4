#include "tracegen/candump_printer.hpp"

#include <array>

namespace tracegen {
namespace {

constexpr std::uint32_t kUsPerSecond = 1000000;

// Flags digit of a CAN FD frame.
constexpr std::uint32_t kFdBitRateSwitch = 1;
constexpr std::uint32_t kFdErrorStateIndicator = 2;

// An error frame is logged with this flag and class in place of the identifier, and eight bytes of detail.
constexpr std::uint32_t kErrorFlag = 0x20000000;
constexpr std::uint32_t kErrorProtocol = 0x00000008;
constexpr std::size_t kErrorLength = 8;

void printStart(const Entry& entry, TextOutput& output) {
  output.character('(');
  output.decimal(kStartUnixSeconds + entry.timeUs / kUsPerSecond);
  output.character('.');
  output.decimalFilled(entry.timeUs % kUsPerSecond, 6);
  output.text(") can");
  output.decimal(entry.bus - 1U);
  output.character(' ');
}

void printId(const Entry& entry, TextOutput& output) {
  output.hexFilled(entry.canId, entry.extended ? 8 : 3);
  output.character('#');
}

}  // namespace

void CandumpPrinter::printHeader(TextOutput& /*output*/) {}

void CandumpPrinter::printEntry(const Entry& entry, TextOutput& output) {
  switch (entry.kind) {
    case EntryKind::Data:
      printStart(entry, output);
      printId(entry, output);
      output.hexBytes(entry.payload(), '\0');
      break;
    case EntryKind::FdData:
      printStart(entry, output);
      printId(entry, output);
      output.character('#');
      output.hexFilled(
          (entry.bitRateSwitch ? kFdBitRateSwitch : 0U) | (entry.errorStateIndicator ? kFdErrorStateIndicator : 0U), 1);
      output.hexBytes(entry.payload(), '\0');
      break;
    case EntryKind::Remote:
      printStart(entry, output);
      printId(entry, output);
      output.character('R');
      output.decimal(entry.dataLength);
      break;
    case EntryKind::ErrorFrame: {
      constexpr std::array<std::uint8_t, kErrorLength> kNoDetail{};
      printStart(entry, output);
      output.hexFilled(kErrorFlag | kErrorProtocol, 8);
      output.character('#');
      output.hexBytes(kNoDetail, '\0');
      break;
    }
    case EntryKind::XlData:
    case EntryKind::Status:
    case EntryKind::ErrorCounters:
    case EntryKind::Event:
    case EntryKind::Comment:
      return;
  }
  output.character('\n');
}

}  // namespace tracegen
