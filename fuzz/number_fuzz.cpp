// Every parser of a number or of a word gets the input as it is. The throwing and the try forms must agree, and a real
// number must be what the C library reads.
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "messages/enumerations.hpp"
#include "target.hpp"
#include "util/numbers.hpp"
#include "xlatr/failures.hpp"

namespace {

using fuzz::require;

// What `parse` returns, or nothing if it raises the one exception that it may raise.
template <typename Parse>
auto attempt(Parse parse) -> std::optional<decltype(parse())> {
  try {
    return parse();
  } catch (const xlatr::ConverterParsingException&) {
    return std::nullopt;
  }
}

// The same for a try form with an output, which must stay as it is when the text is refused.
template <typename Number, typename Try>
std::optional<Number> attemptOut(Try tryParse) {
  constexpr auto kUntouched = static_cast<Number>(0x5A);
  Number out = kUntouched;
  if (tryParse(out)) {
    return out;
  }
  require(out == kUntouched);
  return std::nullopt;
}

void checkNumbers(std::string_view text) {
  using namespace xlatr;
  require(attempt([text] { return parseByte(text, 10); }) ==
          attemptOut<std::uint8_t>([text](auto& out) { return tryParseByte(text, out); }));
  require(attempt([text] { return parseInt16Hex(text); }) ==
          attemptOut<std::int16_t>([text](auto& out) { return tryParseInt16Hex(text, out); }));
  require(attempt([text] { return parseUInt32Auto(text); }) ==
          attemptOut<std::uint32_t>([text](auto& out) { return tryParseUInt32Auto(text, out); }));
  require(attempt([text] { return parseByteAuto(text); }) ==
          attemptOut<std::uint8_t>([text](auto& out) { return tryParseByteAuto(text, out); }));
  require(attempt([text] { return parseUInt64(text); }) ==
          attemptOut<std::uint64_t>([text](auto& out) { return tryParseUInt64(text, out); }));
  for (const int base : {0, 2, 8, 10, 16, 36}) {
    require(attempt([text, base] { return parseUInt32(text, base); }) ==
            attemptOut<std::uint32_t>([text, base](auto& out) { return tryParseUInt32(text, out, base); }));
    attempt([text, base] { return parseByte(text, base); });
  }
  require(attempt([text] { return parseBool(text); }) ==
          attemptOut<bool>([text](bool& out) { return tryParseBool(text, out); }));
  attempt([text] { return parseHexPair(text); });

  // A wider parser accepts whatever a narrower one does, with the same value.
  const auto narrow = attempt([text] { return parseUInt16(text); });
  const auto wide = attempt([text] { return parseUInt32(text, 10); });
  const auto widest = attempt([text] { return parseUInt64(text); });
  const auto withSign = attempt([text] { return parseInt32(text); });
  require(narrow == attemptOut<std::uint16_t>([text](auto& out) { return tryParseUInt16(text, out); }));
  require(!narrow || (wide && *wide == *narrow));
  require(!wide || (widest && *widest == *wide));
  require(!narrow || (withSign && *withSign == *narrow));
}

void checkReal(std::string_view text) {
  const auto actual = xlatr::parseRealPrefix(text);
  require(actual.consumed <= text.size());
  if (text.find('\0') != std::string_view::npos) {
    return;
  }
  const std::string terminated(text);
  char* end = nullptr;
  const double expected = std::strtod(terminated.c_str(), &end);
  require(actual.consumed == static_cast<std::size_t>(end - terminated.c_str()));
  require(std::isnan(expected) ? std::isnan(actual.value)
                               : std::bit_cast<std::uint64_t>(expected) == std::bit_cast<std::uint64_t>(actual.value));
}

void checkWords(std::string_view text) {
  using namespace xlatr;
  const auto kind = tryMessageKindFromText(text);
  require(attempt([text] { return messageKindFromText(text); }) == kind);
  require(!kind || messageKindToText(*kind) == text);
  const auto type = tryMessageTypeFromText(text);
  require(attempt([text] { return messageTypeFromText(text); }) == type);
  require(!type || messageTypeToText(*type) == text);
  const auto direction = tryMessageDirectionFromText(text);
  require(attempt([text] { return messageDirectionFromText(text); }) == direction);
  require(!direction || messageDirectionToText(*direction) == text);
  const auto block = tryBlockTypeIdFromText(text);
  require(attempt([text] { return blockTypeIdFromText(text); }) == block);
  require(!block || blockTypeIdToText(*block) == text);

  attempt([text] { return directionTypeFromText(text); });
  attempt([text] { return checksumTypeFromText(text); });
  attempt([text] { return errorCodeFromText(text); });
  attemptOut<BusEventFrameType>([text](auto& out) { return busEventFrameTypeFromText(text, out); });
  attemptOut<BusEventField>([text](auto& out) { return busEventFieldFromText(text, out); });

  const auto mask = attempt([text] { return warningErrorsFromText(text); });
  require(!mask || warningErrorsFromText(warningErrorsToText(*mask)) == *mask);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A copy of the exact size, so that a read past the end is seen.
  const std::string input(data, data + size);
  checkNumbers(input);
  checkReal(input);
  checkWords(input);
  return 0;
}
