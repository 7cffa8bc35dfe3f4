// What the compatible way does to the harm of data, by name. Callers rely on it to the byte, so it stays there; on the
// complete way all of it is off. A parser or a printer asks for a quirk at the one place where it matters.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "xlatr/xlatr.h"

namespace xlatr {

enum class Quirk : std::uint8_t {
  TrcBus255IsNone,
  TrcBusOneIsGuessed,
  TrcFilePerBus,
  TrcNotHeldUnsaid,
  TrcErrorTypeLost,
  TrcCountersAreErrors,
  TrcCountersHaveAnId,
  TrcStateWordsLost,
  TrcCommentsLeftOut,
  TrcMillisecondsAreCut,
  TrcStartOf1000Ms,
  AscHeadTakesTenLines,
  AscShortLineEnds,
  AscOldVersionsRefused,
  AscNamesMisread,
  AscDlcIsLength,
  AscRemoteLengthLost,
  AscFdTailCounted,
  AscErrorsRefused,
  AscStatusRefused,
  AscEventsRefused,
  AscLinRefused,
  AscRelativeSkips,
  AscRemoteAsFd,
  AscNotHeldUnsaid,
  AscSessionsInOldLines,
  AscSessionErrorsShifted,
  AscStateWordsLost,
  AscEventsAreFrames,
  AscCommentsKeepTheirMark,
  AscCommentsGetABlank,
  AscStartOf1000,
  LinEventsRefused,
  LinNoneRefused,
  LinHiddenBytesAreZero,
  LinErrorHidesBytes,
  LinVBatShortNotShown,
  LinLongEventRunsOn,
  CsvTextLeftOut,
  CsvMissingXlFieldsFilled,
  CsvErrorsAsInTheSource,
  CsvBusGuessed,
  CsvDirectionGuessed,
  CsvLinAsCan,
  CsvDetailsLeftOut,
  CsvFewCellsRead,
  CsvEmptyCellsMoveOthers,
  CsvMissingColumnIsTheFirst,
  CsvStartOf1000Ms,
  BtrStepBackIsAWrap,
  BtrStampsFromTheStart,
  BtrStatusIsUnmarked,
  BtrCountersAreErrors,
  BtrErrorTypesAreIds,
  BtrLongDlcsLeftOut,
  BtrBusesWrap,
  BtrHasNoTicks,
  BtrEarlyTimesWrap,
  BtrStartIsCut,
  BtrNoStartIs1970,
  BtrDamageEndsSessions,
  BtrLeavesOutUnsaid,
  BtrcSentDataIsCut,
  BtrcDlcIsLength,
  BtrcRemoteStatesRoom,
  BtrcTextsEndInBlanks,
  BtrcLongTextIsTheLast,
  BtrcEventsAreTexts,
  BtrcXlLeftOut,
  BtrcBusesWrap,
  BtrcStatusBitsLost,
  BtrcEarlyTimesWrap,
  BtrcNotesLeftOut,
  BtrcStartIsUnscaled,
  BtrcStartFromDays,
  BtrcDamageEndsReading,
  Mf4FieldsEndWithTheirFirstBytes,
  Mf4ZippedPayloadsStayZipped,
  Mf4TableValuesAreKeys,
  Mf4BusesWrap,
  Mf4ErrorDirectionLost,
  Mf4OtherFramesNotRead,
  Mf4UnfinishedRefused,
  Mf4VariableGroupsRefused,
  Mf4InvalidationRefused,
  Mf4ChannelTypesNotRead,
  Mf4NumbersAreBits,
  Mf4VirtualChannelsAreConstants,
  Mf4InvalidChannelsRead,
  Mf4ConversionsNotRead,
  Mf4DamagedBlocksFail,
  Mf4TimesOfFourUnits,
  Mf4MinusOneIsNoTime,
  Mf4ErrorsCoded,
  Mf4PayloadTypesNotRead,
  Mf4StreamsRefused,
  Mf4DamagedDataFails,
  Mf4TwoChannelsMakeAFrame,
};
inline constexpr std::size_t kQuirkCount = 98;

struct QuirkInfo {
  Quirk quirk;
  TraceFormat format;
  std::string_view name;     // "lin_events_refused"
  std::string_view what;     // what happens with it
  std::string_view instead;  // what happens without it
  std::string_view test;     // the test that holds it
};

// In the order of the enumeration. docs/quirks.md is this table.
[[nodiscard]] std::span<const QuirkInfo, kQuirkCount> quirkTable();

// Which quirks are on.
class Way {
 public:
  // All of them, or none.
  [[nodiscard]] static constexpr Way compatible() { return Way(true); }
  [[nodiscard]] static constexpr Way complete() { return Way(false); }

  [[nodiscard]] constexpr bool has(Quirk /*quirk*/) const { return hasAll_; }

 private:
  explicit constexpr Way(bool hasAll) : hasAll_(hasAll) {}

  bool hasAll_;
};

}  // namespace xlatr
