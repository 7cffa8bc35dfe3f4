// Reading one TRC line.
#pragma once

#include <optional>
#include <string_view>

#include "util/numbers.hpp"
#include "util/token_cursor.hpp"

namespace xlatr {

class BrixMessage;
struct TrcVersion;

// What a line says beyond its message.
struct TrcLineRemains {
  std::string_view time;                   // in milliseconds, with all of its digits; a part of the line
  std::optional<PlainDecimal> timeDigits;  // the same, if it is a plain number
  bool unnumberedBus = false;              // its bus column holds no number
};

struct TrcTokens : TokenCursor<' '> {
  using TokenCursor::TokenCursor;

  TrcLineRemains remains;
};

// Fills a message from the tokens of a line; false at the first token that is missing or can't be understood.
using TrcLineParser = bool (*)(TrcTokens& tokens, BrixMessage& message);

bool parseTrc10(TrcTokens& tokens, BrixMessage& message);
bool parseTrc11(TrcTokens& tokens, BrixMessage& message);
bool parseTrc12(TrcTokens& tokens, BrixMessage& message);
bool parseTrc13(TrcTokens& tokens, BrixMessage& message);
bool parseTrc20(TrcTokens& tokens, BrixMessage& message);  // 2.1 too: the message's column set tells them apart
bool parseTrc30(TrcTokens& tokens, BrixMessage& message);

// Fills `message`, which is fresh except for its column set and parsing text, from the line of a file of this version,
// and sets its valid flag if the line was understood. Raises nothing and keeps no reference to `line`.
TrcLineRemains parseTrcLine(std::string_view line, const TrcVersion& version, BrixMessage& message);

}  // namespace xlatr
