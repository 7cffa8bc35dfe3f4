// The vocabulary of messages and of MF4 blocks. The texts are part of the file formats: every text format writes and
// reads exactly these spellings, and the library's interface returns these numbers.
//
// ...ToText renders any value; one outside the enumeration gives "Unknown". ...FromText compares the whole text and
// raises a ConverterParsingException that shows it; the try forms return nothing instead, without an allocation.
// Everything may be called from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace xlatr {

// The frame kind of a CAN-shaped message.
enum class MessageKind : std::uint32_t {
  DT = 0,        // CAN data frame
  FD = 1,        // CAN FD data frame
  FB = 2,        // CAN FD data frame with BRS
  FE = 3,        // CAN FD data frame with ESI
  BI = 4,        // CAN FD data frame with BRS and ESI
  RR = 5,        // remote frame
  ST = 6,        // hardware status change
  EC = 7,        // error counter change
  ER = 8,        // error frame
  EV = 9,        // event, user-defined text
  XL = 10,       // CAN XL data frame
  Unknown = 11,  // not set
};

// The coarse class of a message.
enum class MessageType : std::uint32_t {
  Rx = 0,
  Tx = 1,
  Warng = 2,  // status or warning; misspelt in the files, which have no "Warning"
  Error = 3,  // error frame or error counter change
  Unknown = 4,
};

enum class MessageDirection : std::uint32_t { None = 0, Rx = 1, Tx = 2 };

// The direction of a LIN frame.
enum class DirectionType : std::uint32_t { Unknown = 0, Publisher = 1, Subscriber = 2, SubscriberAutoLength = 3 };

// The checksum model of a LIN frame.
enum class ChecksumType : std::uint32_t { Unknown = 0, Classic = 1, Enhanced = 2, Auto = 3 };

// A LIN error, one bit each.
enum class ErrorCode : std::uint32_t {
  None = 0,
  Checksum = 1,
  GroundShort = 2,
  ParityBit0 = 4,  // of the protected ID
  ParityBit1 = 8,
  InconsistentSynch = 16,
  SlaveNotResponding = 32,
  SlotDelay = 64,
  TimeOut = 128,
  VBatShort = 256,
};

// The two letters that name the type of an MF4 block.
enum class BlockTypeId : std::uint32_t {
  ID = 0,
  HD = 1,
  MD = 2,
  TX = 3,
  FH = 4,
  CH = 5,
  AT = 6,
  EV = 7,
  DG = 8,
  CG = 9,
  SI = 10,
  CN = 11,
  CC = 12,
  CA = 13,
  DI = 14,
  DT = 15,
  DV = 16,
  SR = 17,
  RD = 18,
  RI = 19,
  RV = 20,
  SD = 21,
  DL = 22,
  LD = 23,
  DZ = 24,
  HL = 25,
  Unknown = 0x7FFFFFFF,
};

// The frame kind that an MF4 bus-logging channel group is named after.
enum class BusEventFrameType : std::uint8_t { DataFrame = 0, RemoteFrame = 1, ErrorFrame = 2, OverloadFrame = 3 };

// What a channel of an MF4 bus-logging frame holds, one bit each.
enum class BusEventField : std::uint32_t {
  None = 0,
  BusChannel = 1,
  OriginalTime = 2,
  ID = 4,
  IDE = 8,
  DLC = 16,
  DataLength = 32,
  DataBytes = 64,
  Dir = 128,
  CRC = 256,
  RTR = 512,
  SRR = 1024,
  EDL = 2048,
  BRS = 4096,
  ESI = 8192,
  R0 = 0x4000,
  R1 = 0x8000,
  WakeUp = 0x10000,
  SingleWire = 0x20000,
  FrameDuration = 0x40000,
  BitPosition = 0x80000,
  ErrorType = 0x100000,
};

// The status of a bus, one bit each; masks of them are plain integers.
enum class WarningErrors : std::uint32_t { BusLight = 4, BusWarning = 8, BusOff = 16, BusPassive = 0x40000 };

[[nodiscard]] std::string_view messageKindToText(MessageKind value);
[[nodiscard]] MessageKind messageKindFromText(std::string_view text);
[[nodiscard]] std::optional<MessageKind> tryMessageKindFromText(std::string_view text) noexcept;

[[nodiscard]] std::string_view messageTypeToText(MessageType value);
[[nodiscard]] MessageType messageTypeFromText(std::string_view text);
[[nodiscard]] std::optional<MessageType> tryMessageTypeFromText(std::string_view text) noexcept;

[[nodiscard]] std::string_view messageDirectionToText(MessageDirection value);
[[nodiscard]] MessageDirection messageDirectionFromText(std::string_view text);
[[nodiscard]] std::optional<MessageDirection> tryMessageDirectionFromText(std::string_view text) noexcept;

// These three accept letters of any case.
[[nodiscard]] DirectionType directionTypeFromText(std::string_view text);
[[nodiscard]] std::optional<DirectionType> tryDirectionTypeFromText(std::string_view text) noexcept;
[[nodiscard]] ChecksumType checksumTypeFromText(std::string_view text);
[[nodiscard]] std::optional<ChecksumType> tryChecksumTypeFromText(std::string_view text) noexcept;
[[nodiscard]] ErrorCode errorCodeFromText(std::string_view text);
[[nodiscard]] std::optional<ErrorCode> tryErrorCodeFromText(std::string_view text) noexcept;

[[nodiscard]] std::string_view blockTypeIdToText(BlockTypeId value);
[[nodiscard]] BlockTypeId blockTypeIdFromText(std::string_view text);
[[nodiscard]] std::optional<BlockTypeId> tryBlockTypeIdFromText(std::string_view text) noexcept;

// Any case; false leaves `result` alone. Files name many more channels than these, so an unknown name is no failure.
[[nodiscard]] bool busEventFrameTypeFromText(std::string_view text, BusEventFrameType& result) noexcept;
[[nodiscard]] bool busEventFieldFromText(std::string_view text, BusEventField& result) noexcept;

// Six fields that busEventFieldFromText knows give "Unknown": they are read from other programs' files and never
// written.
[[nodiscard]] std::string_view busEventFieldToText(BusEventField value);

// The names of the bits in the mask, in ascending order, joined by ", ". Other bits are ignored.
[[nodiscard]] std::string warningErrorsToText(std::uint32_t mask);

// The mask of the names in the text, which are separated by blanks and commas and may be of any case; "BUSHEAVY" is
// another name of BusWarning. A word with "ZELK" in it is skipped: some status texts end in a maker's mark. Any other
// word is a failure, which shows the whole text. An empty text is 0.
[[nodiscard]] std::uint32_t warningErrorsFromText(std::string_view text);
[[nodiscard]] std::optional<std::uint32_t> tryWarningErrorsFromText(std::string_view text);

}  // namespace xlatr
