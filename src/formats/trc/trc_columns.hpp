// The columns of a TRC file of version 2.0 and above, as its header names them.
#pragma once

#include <cstdint>

namespace xlatr {

// An OR of column bits; the key letter of each column stands behind it.
using TrcColumnSet = std::uint32_t;

namespace trc_column {
inline constexpr TrcColumnSet kBus = 0x0001;         // B
inline constexpr TrcColumnSet kDirection = 0x0002;   // d
inline constexpr TrcColumnSet kData = 0x0004;        // D
inline constexpr TrcColumnSet kIdentifier = 0x0008;  // I
inline constexpr TrcColumnSet kLength = 0x0010;      // l
inline constexpr TrcColumnSet kDlc = 0x0020;         // L
inline constexpr TrcColumnSet kNumber = 0x0040;      // N
inline constexpr TrcColumnSet kOffset = 0x0080;      // O
inline constexpr TrcColumnSet kReserved = 0x0100;    // R
inline constexpr TrcColumnSet kType = 0x0200;        // T
inline constexpr TrcColumnSet kAcceptance = 0x0400;  // A: acceptance field of CAN XL
inline constexpr TrcColumnSet kRrs = 0x0800;         // r
inline constexpr TrcColumnSet kSec = 0x1000;         // s
inline constexpr TrcColumnSet kSdt = 0x2000;         // S
inline constexpr TrcColumnSet kVcid = 0x4000;        // V
}  // namespace trc_column

// What the writer's headers of the column-based versions announce.
inline constexpr TrcColumnSet kTrcColumns20 = trc_column::kNumber | trc_column::kOffset | trc_column::kType |
                                              trc_column::kIdentifier | trc_column::kDirection | trc_column::kLength |
                                              trc_column::kData;
inline constexpr TrcColumnSet kTrcColumns21 = trc_column::kNumber | trc_column::kOffset | trc_column::kType |
                                              trc_column::kBus | trc_column::kIdentifier | trc_column::kDirection |
                                              trc_column::kReserved | trc_column::kDlc | trc_column::kData;
inline constexpr TrcColumnSet kTrcColumns30 = kTrcColumns21 | trc_column::kVcid | trc_column::kSdt |
                                              trc_column::kAcceptance | trc_column::kRrs | trc_column::kSec;
static_assert(kTrcColumns20 == 0x2DE && kTrcColumns21 == 0x3EF && kTrcColumns30 == 0x7FEF);

}  // namespace xlatr
