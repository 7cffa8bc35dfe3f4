// The columns of a TRC file of version 2.0 and above, as its header names them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace xlatr {

// An OR of column bits.
using TrcColumnSet = std::uint32_t;

namespace trc_column {
inline constexpr TrcColumnSet kBus = 0x0001;
inline constexpr TrcColumnSet kDirection = 0x0002;
inline constexpr TrcColumnSet kData = 0x0004;
inline constexpr TrcColumnSet kIdentifier = 0x0008;
inline constexpr TrcColumnSet kLength = 0x0010;
inline constexpr TrcColumnSet kDlc = 0x0020;
inline constexpr TrcColumnSet kNumber = 0x0040;
inline constexpr TrcColumnSet kOffset = 0x0080;
inline constexpr TrcColumnSet kReserved = 0x0100;
inline constexpr TrcColumnSet kType = 0x0200;
inline constexpr TrcColumnSet kAcceptance = 0x0400;  // acceptance field of CAN XL
inline constexpr TrcColumnSet kRrs = 0x0800;
inline constexpr TrcColumnSet kSec = 0x1000;
inline constexpr TrcColumnSet kSdt = 0x2000;
inline constexpr TrcColumnSet kVcid = 0x4000;
}  // namespace trc_column

// The letter of a column in the header's $COLUMNS.
struct TrcColumnLetter {
  char letter;
  TrcColumnSet column;
};

inline constexpr std::array kTrcColumnLetters = {
    TrcColumnLetter{'B', trc_column::kBus},        TrcColumnLetter{'d', trc_column::kDirection},
    TrcColumnLetter{'D', trc_column::kData},       TrcColumnLetter{'I', trc_column::kIdentifier},
    TrcColumnLetter{'l', trc_column::kLength},     TrcColumnLetter{'L', trc_column::kDlc},
    TrcColumnLetter{'N', trc_column::kNumber},     TrcColumnLetter{'O', trc_column::kOffset},
    TrcColumnLetter{'R', trc_column::kReserved},   TrcColumnLetter{'T', trc_column::kType},
    TrcColumnLetter{'A', trc_column::kAcceptance}, TrcColumnLetter{'r', trc_column::kRrs},
    TrcColumnLetter{'s', trc_column::kSec},        TrcColumnLetter{'S', trc_column::kSdt},
    TrcColumnLetter{'V', trc_column::kVcid},
};

// 0 for any other letter.
[[nodiscard]] constexpr TrcColumnSet trcColumnOfLetter(char letter) {
  const auto* const found = std::ranges::find(kTrcColumnLetters, letter, &TrcColumnLetter::letter);
  return found == kTrcColumnLetters.end() ? 0 : found->column;
}

// The set of the columns in a list such as "N,O,T".
[[nodiscard]] constexpr TrcColumnSet trcColumnsOfList(std::string_view list) {
  TrcColumnSet columns = 0;
  for (const char letter : list) {
    columns |= trcColumnOfLetter(letter);
  }
  return columns;
}

// What written headers of the column-based versions announce, word for word.
inline constexpr std::string_view kTrcColumnList20 = "N,O,T,I,d,l,D";
inline constexpr std::string_view kTrcColumnList21 = "N,O,T,B,I,d,R,L,D";
inline constexpr std::string_view kTrcColumnList30 = "N,O,T,B,I,d,R,V,S,A,r,s,L,D";
inline constexpr TrcColumnSet kTrcColumns20 = trcColumnsOfList(kTrcColumnList20);
inline constexpr TrcColumnSet kTrcColumns21 = trcColumnsOfList(kTrcColumnList21);
inline constexpr TrcColumnSet kTrcColumns30 = trcColumnsOfList(kTrcColumnList30);
static_assert(kTrcColumns20 == 0x2DE && kTrcColumns21 == 0x3EF && kTrcColumns30 == 0x7FEF);

}  // namespace xlatr
