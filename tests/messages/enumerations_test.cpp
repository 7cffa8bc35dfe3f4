#include "messages/enumerations.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "util/failures.hpp"

namespace xlatr {
namespace {

struct Row {
  std::uint32_t value;
  std::string_view text;
};

using Rows = std::vector<Row>;

const Rows kKinds = {{0, "DT"}, {1, "FD"}, {2, "FB"}, {3, "FE"}, {4, "BI"},  {5, "RR"},
                     {6, "ST"}, {7, "EC"}, {8, "ER"}, {9, "EV"}, {10, "XL"}, {11, "Unknown"}};
const Rows kTypes = {{0, "Rx"}, {1, "Tx"}, {2, "Warng"}, {3, "Error"}, {4, "Unknown"}};
const Rows kDirections = {{0, "None"}, {1, "Rx"}, {2, "Tx"}};
const Rows kLinDirections = {{0, "UNKNOWN"}, {1, "PUB"}, {2, "SUB"}, {3, "SUBAL"}};
const Rows kChecksums = {{0, "UNKNOWN"}, {1, "CL"}, {2, "EH"}, {3, "AU"}};
const Rows kErrors = {{0, "NONE"}, {1, "CK"},  {2, "GS"},  {4, "P0"},   {8, "P1"},
                      {16, "IS"},  {32, "SR"}, {64, "SD"}, {128, "TO"}, {256, "VS"}};
const Rows kBlocks = {{0, "ID"},  {1, "HD"},  {2, "MD"},
                      {3, "TX"},  {4, "FH"},  {5, "CH"},
                      {6, "AT"},  {7, "EV"},  {8, "DG"},
                      {9, "CG"},  {10, "SI"}, {11, "CN"},
                      {12, "CC"}, {13, "CA"}, {14, "DI"},
                      {15, "DT"}, {16, "DV"}, {17, "SR"},
                      {18, "RD"}, {19, "RI"}, {20, "RV"},
                      {21, "SD"}, {22, "DL"}, {23, "LD"},
                      {24, "DZ"}, {25, "HL"}, {0x7FFFFFFF, "Unknown"}};
const Rows kFrameTypes = {
    {0, "CAN_DATAFRAME"}, {1, "CAN_REMOTEFRAME"}, {2, "CAN_ERRORFRAME"}, {3, "CAN_OVERLOADFRAME"}};
const Rows kFieldsRead = {{0, "NONE"},
                          {1, "BUSCHANNEL"},
                          {2, "ORIGINALTIME"},
                          {4, "ID"},
                          {8, "IDE"},
                          {16, "DLC"},
                          {32, "DATALENGTH"},
                          {64, "DATABYTES"},
                          {128, "DIR"},
                          {256, "CRC"},
                          {512, "RTR"},
                          {1024, "SRR"},
                          {2048, "EDL"},
                          {4096, "BRS"},
                          {8192, "ESI"},
                          {0x4000, "R0"},
                          {0x8000, "R1"},
                          {0x10000, "WAKEUP"},
                          {0x20000, "SINGLEWIRE"},
                          {0x40000, "FRAMEDURATION"},
                          {0x80000, "BITPOSITION"},
                          {0x100000, "ERRORTYPE"}};
const Rows kFieldsRendered = {{0, "None"},
                              {1, "BusChannel"},
                              {2, "OriginalTime"},
                              {4, "ID"},
                              {8, "IDE"},
                              {16, "DLC"},
                              {32, "DataLength"},
                              {64, "DataBytes"},
                              {128, "Dir"},
                              {256, "CRC"},
                              {512, "RTR"},
                              {1024, "Unknown"},
                              {2048, "EDL"},
                              {4096, "BRS"},
                              {8192, "ESI"},
                              {0x4000, "Unknown"},
                              {0x8000, "Unknown"},
                              {0x10000, "Unknown"},
                              {0x20000, "Unknown"},
                              {0x40000, "Unknown"},
                              {0x80000, "BitPosition"},
                              {0x100000, "ErrorType"}};

std::string lowerCase(std::string_view text) {
  std::string result(text);
  for (char& character : result) {
    character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
  }
  return result;
}

// Texts that resemble one of the rows but are different.
std::vector<std::string> mutations(std::string_view text) {
  const std::string word(text);
  return {word + " ", " " + word, word + "x", word.substr(0, word.size() - 1), word + std::string(1, '\0')};
}

template <typename Parse>
std::string failureOf(Parse parse, std::string_view text) {
  try {
    std::ignore = parse(text);
  } catch (const ConverterParsingException& failure) {
    return failure.what();
  }
  return "no failure";
}

std::string shown(std::string_view word, std::string_view text) {
  return std::string(word).append(": {").append(text).append("}");
}

template <typename Parse>
void expectParses(const Rows& rows, Parse parse, std::string_view word) {
  for (const Row& row : rows) {
    EXPECT_EQ(static_cast<std::uint32_t>(parse(row.text)), row.value) << row.text;
    for (const std::string& text : mutations(row.text)) {
      EXPECT_EQ(failureOf(parse, text), shown(word, text).c_str()) << row.text;
    }
  }
  for (const std::string_view text : {"", "X", "XX", "Warning", "\xFF\xFF"}) {
    EXPECT_EQ(failureOf(parse, text), shown(word, text));
  }
}

template <typename Parse>
void expectParsesExactCase(const Rows& rows, Parse parse, std::string_view word) {
  expectParses(rows, parse, word);
  for (const Row& row : rows) {
    const std::string text = lowerCase(row.text);
    EXPECT_EQ(failureOf(parse, text), shown(word, text));
  }
}

template <typename Parse>
void expectParsesAnyCase(const Rows& rows, Parse parse, std::string_view word) {
  expectParses(rows, parse, word);
  for (const Row& row : rows) {
    std::string text = lowerCase(row.text);
    EXPECT_EQ(static_cast<std::uint32_t>(parse(text)), row.value) << text;
    text[0] = row.text[0];
    EXPECT_EQ(static_cast<std::uint32_t>(parse(text)), row.value) << text;
  }
  EXPECT_EQ(failureOf(parse, "Xy"), shown(word, "Xy")) << "the failure shows the case of the input";
}

template <typename Enum>
void expectRenders(const Rows& rows, std::string_view (*toText)(Enum)) {
  for (const Row& row : rows) {
    EXPECT_EQ(toText(static_cast<Enum>(row.value)), row.text);
  }
  for (const std::uint32_t value : {26U, 100U, 0x7FFFFFFEU, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(toText(static_cast<Enum>(value)), "Unknown") << value;
  }
}

// The try form returns nothing exactly if the throwing form fails.
template <typename Enum>
void expectTryForm(const Rows& rows, std::optional<Enum> (*tryParse)(std::string_view) noexcept) {
  for (const Row& row : rows) {
    EXPECT_EQ(tryParse(row.text), static_cast<Enum>(row.value)) << row.text;
    for (const std::string& text : mutations(row.text)) {
      EXPECT_EQ(tryParse(text), std::nullopt) << text;
    }
    EXPECT_EQ(tryParse(lowerCase(row.text)), std::nullopt) << row.text;
  }
  // Every word of two characters, so that no collision of the look-up goes unnoticed.
  for (std::uint32_t pair = 0; pair < 0x10000; ++pair) {
    const std::string text = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF)};
    std::optional<Enum> expected;
    for (const Row& row : rows) {
      if (row.text == text) {
        expected = static_cast<Enum>(row.value);
      }
    }
    EXPECT_EQ(tryParse(text), expected) << pair;
  }
  EXPECT_EQ(tryParse(""), std::nullopt);
  EXPECT_EQ(tryParse("D"), std::nullopt);
}

TEST(MessageKinds, haveTheirTexts) {
  expectRenders(kKinds, messageKindToText);
  EXPECT_EQ(messageKindToText(static_cast<MessageKind>(12)), "Unknown");
  expectParsesExactCase(kKinds, messageKindFromText, "String is not a MessageKind");
  expectTryForm(kKinds, tryMessageKindFromText);
  EXPECT_EQ(failureOf(messageKindFromText, "unknown"), "String is not a MessageKind: {unknown}");
}

TEST(MessageTypes, haveTheirTexts) {
  expectRenders(kTypes, messageTypeToText);
  EXPECT_EQ(messageTypeToText(static_cast<MessageType>(5)), "Unknown");
  expectParsesExactCase(kTypes, messageTypeFromText, "String is not a MessageType");
  expectTryForm(kTypes, tryMessageTypeFromText);
}

TEST(MessageTypes, spellWarngWithoutItsLetters) {
  EXPECT_EQ(messageTypeToText(MessageType::Warng), "Warng");
  EXPECT_EQ(messageTypeFromText("Warng"), MessageType::Warng);
  EXPECT_EQ(failureOf(messageTypeFromText, "Warning"), "String is not a MessageType: {Warning}");
}

TEST(MessageDirections, haveTheirTexts) {
  expectRenders(kDirections, messageDirectionToText);
  EXPECT_EQ(messageDirectionToText(static_cast<MessageDirection>(3)), "Unknown");
  expectParsesExactCase(kDirections, messageDirectionFromText, "String is not a MessageDirection");
  expectTryForm(kDirections, tryMessageDirectionFromText);
  EXPECT_EQ(failureOf(messageDirectionFromText, "Unknown"), "String is not a MessageDirection: {Unknown}");
}

TEST(LinEnumerations, readTheirTextsInAnyCase) {
  expectParsesAnyCase(kLinDirections, directionTypeFromText, "String is not a DirectionType");
  expectParsesAnyCase(kChecksums, checksumTypeFromText, "String is not a ChecksumType");
  expectParsesAnyCase(kErrors, errorCodeFromText, "String is not a ErrorCode");
  EXPECT_EQ(directionTypeFromText("subal"), DirectionType::SubscriberAutoLength);
  EXPECT_EQ(tryDirectionTypeFromText("subal"), DirectionType::SubscriberAutoLength);
  EXPECT_EQ(tryDirectionTypeFromText("---"), std::nullopt);
  EXPECT_EQ(tryChecksumTypeFromText("eh"), ChecksumType::Enhanced);
  EXPECT_EQ(tryChecksumTypeFromText("--"), std::nullopt);
  EXPECT_EQ(tryErrorCodeFromText("vs"), ErrorCode::VBatShort);
  EXPECT_EQ(tryErrorCodeFromText(""), std::nullopt);
}

TEST(BlockTypeIds, haveTheirTexts) {
  expectRenders(kBlocks, blockTypeIdToText);
  expectParsesExactCase(kBlocks, blockTypeIdFromText, "String is not a BlockTypeId");
  expectTryForm(kBlocks, tryBlockTypeIdFromText);
}

TEST(BusEventFrameTypes, readTheirTextsInAnyCase) {
  for (const Row& row : kFrameTypes) {
    for (const std::string& text : {std::string(row.text), lowerCase(row.text)}) {
      auto result = static_cast<BusEventFrameType>(99);
      EXPECT_TRUE(busEventFrameTypeFromText(text, result)) << text;
      EXPECT_EQ(static_cast<std::uint32_t>(result), row.value) << text;
    }
  }
  for (const std::string_view text : {"", "CAN", "CAN_DATAFRAME ", "CAN_DATAFRAME.ID"}) {
    auto result = static_cast<BusEventFrameType>(99);
    EXPECT_FALSE(busEventFrameTypeFromText(text, result)) << text;
    EXPECT_EQ(result, static_cast<BusEventFrameType>(99)) << text;
  }
}

TEST(BusEventFields, haveTheirTexts) {
  for (const Row& row : kFieldsRead) {
    for (const std::string& text : {std::string(row.text), lowerCase(row.text)}) {
      auto result = static_cast<BusEventField>(99);
      EXPECT_TRUE(busEventFieldFromText(text, result)) << text;
      EXPECT_EQ(static_cast<std::uint32_t>(result), row.value) << text;
    }
  }
  expectRenders(kFieldsRendered, busEventFieldToText);
  EXPECT_EQ(busEventFieldToText(static_cast<BusEventField>(3)), "Unknown") << "two bits are no field";
  for (const std::string_view text : {"", "I", "IDX", "Unknown", " ID"}) {
    auto result = static_cast<BusEventField>(99);
    EXPECT_FALSE(busEventFieldFromText(text, result)) << text;
    EXPECT_EQ(result, static_cast<BusEventField>(99)) << text;
  }
}

TEST(BusEventFields, readsBusEventFieldsThatItNeverRenders) {
  std::size_t readOnly = 0;
  for (const Row& row : kFieldsRead) {
    readOnly += busEventFieldToText(static_cast<BusEventField>(row.value)) == "Unknown" ? 1U : 0U;
  }
  EXPECT_EQ(readOnly, 6U);

  auto result = BusEventField::None;
  EXPECT_TRUE(busEventFieldFromText("wakeup", result));
  EXPECT_EQ(static_cast<std::uint32_t>(result), 0x10000U);
  EXPECT_EQ(busEventFieldToText(result), "Unknown");
}

TEST(WarningErrors, renderTheBitsOfTheMask) {
  struct Case {
    std::uint32_t mask;
    std::string_view expected;
  };
  const Case cases[] = {
      {0, ""},
      {4, "BUSLIGHT"},
      {8, "BUSWARNING"},
      {16, "BUSOFF"},
      {0x40000, "BUSPASSIVE"},
      {24, "BUSWARNING, BUSOFF"},
      {0x40000 | 16 | 4, "BUSLIGHT, BUSOFF, BUSPASSIVE"},
      {0x4001C, "BUSLIGHT, BUSWARNING, BUSOFF, BUSPASSIVE"},
      {0xFFFBFFE3, ""},
      {0xFFFFFFFF, "BUSLIGHT, BUSWARNING, BUSOFF, BUSPASSIVE"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(warningErrorsToText(c.mask), c.expected) << c.mask;
  }
}

TEST(WarningErrors, areReadFromTheirNames) {
  struct Case {
    std::string_view text;
    std::uint32_t expected;
  };
  const Case cases[] = {
      {"", 0},
      {" , ", 0},
      {"BUSLIGHT", 4},
      {"buswarning", 8},
      {"BusOff", 16},
      {"BUSPASSIVE", 0x40000},
      {"BUSHEAVY", 8},
      {"BUSHEAVY, BUSOFF", 24},
      {"BUSHEAVY BUSWARNING", 8},
      {"BUSOFF,BUSOFF", 16},
      {"BUSPASSIVE,BUSOFF BUSLIGHT", 0x40014},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(warningErrorsFromText(c.text), c.expected) << c.text;
  }
}

TEST(WarningErrors, areNothingOfAnUnknownWordInTheTryForm) {
  EXPECT_EQ(tryWarningErrorsFromText("BUSHEAVY, BUSOFF"), 24U);
  EXPECT_EQ(tryWarningErrorsFromText(""), 0U);
  EXPECT_EQ(tryWarningErrorsFromText("BUSOFF BUS"), std::nullopt);
}

TEST(WarningErrors, skipTheMakersMark) {
  EXPECT_EQ(warningErrorsFromText("BUSOFF (ZELKWORKS)"), 16U);
  EXPECT_EQ(warningErrorsFromText("(zelkworks) BUSLIGHT"), 4U);
  EXPECT_EQ(warningErrorsFromText("ZELK"), 0U);
  EXPECT_EQ(warningErrorsFromText("xxZelkxx"), 0U);
}

TEST(WarningErrors, failOnOtherWordsAndShowTheWholeInput) {
  for (const std::string_view text :
       {"BUS", "ZEL", "BUSOFFX", "BUSOFF;BUSLIGHT", "BusOff, Bus", "BUSOFF\tBUSLIGHT", "ZEL K"}) {
    EXPECT_EQ(failureOf(warningErrorsFromText, text), shown("String is not a WarningErrors", text));
  }
}

}  // namespace
}  // namespace xlatr
