#include "frames/both_ways_cases.hpp"

#include <vector>

namespace xlatr::test {
namespace {

constexpr Versions kAnyTrc = {XLATR_FORMAT_TRC};
constexpr Versions kAnyAsc = {XLATR_FORMAT_ASC};
constexpr Versions kAnyLin = {XLATR_FORMAT_LIN};
constexpr Versions kAnyCsv = {XLATR_FORMAT_CSV};
constexpr Versions kAnyBtr = {XLATR_FORMAT_BTR};
constexpr Versions kAnyBtrc = {XLATR_FORMAT_BTRC};
constexpr Versions kAnyMf4 = {XLATR_FORMAT_MF4};

constexpr Versions trc(double lowest, double highest) {
  return {XLATR_FORMAT_TRC, lowest, highest};
}
constexpr Versions asc(double lowest, double highest) {
  return {XLATR_FORMAT_ASC, lowest, highest};
}
}  // namespace

std::span<const OneTrace> tracesForBothWays() {
  static const std::vector<OneTrace> kTraces = {
      {"classic frames",
       {"data time=0.5 bus=1 id=123 flags=received dlc=2 data=0102",
        "data time=1.25 bus=1 id=18ABCDEF flags=extended,received dlc=8 data=0102030405060708",
        "data time=2 bus=1 id=7FF flags=received"}},
      {"a frame that was sent", {"data time=0.5 bus=1 id=123 flags=transmitted dlc=2 data=0102"}},
      {"a frame without a direction", {"data time=0.5 bus=1 id=123 dlc=2 data=0102"}},
      {"a frame on bus 5", {"data time=0.5 bus=5 id=123 flags=received dlc=2 data=0102"}},
      {"a frame on no bus", {"data time=0.5 id=123 flags=received dlc=2 data=0102"}},
      {"a frame on bus 255", {"data time=0.5 bus=255 id=123 flags=received dlc=2 data=0102"}},
      {"a frame on bus 300", {"data time=0.5 bus=300 id=123 flags=received dlc=2 data=0102"}},
      {"frames on two buses",
       {"data time=0.5 bus=1 id=123 flags=received dlc=2 data=0102",
        "data time=0.6 bus=2 id=123 flags=received dlc=2 data=0102"}},
      {"times of a microsecond",
       {"data time=0.000001 bus=1 id=123 flags=received dlc=2 data=0102",
        "data time=0.123 bus=1 id=123 flags=received dlc=2 data=0102",
        "data time=123.456789 bus=1 id=123 flags=received dlc=2 data=0102"}},
      {"a time that is not a whole millisecond", {"data time=0.1237 bus=1 id=123 flags=received dlc=2 data=0102"}},
      {"a step back",
       {"data time=0.5 bus=1 id=123 flags=received dlc=2 data=0102",
        "data time=0.4 bus=1 id=123 flags=received dlc=2 data=0102"}},
      {"a long silence",
       {"data time=0.5 bus=1 id=123 flags=received dlc=2 data=0102",
        "data time=10000 bus=1 id=123 flags=received dlc=2 data=0102"}},
      {"a time before the start", {"data time=-0.5 bus=1 id=123 flags=received dlc=2 data=0102"}},
      {"a remote frame", {"remote time=0.5 bus=1 id=123 flags=received,dlc_known dlc=8"}},
      {"a remote frame that was sent", {"remote time=0.5 bus=1 id=123 flags=transmitted,dlc_known dlc=8"}},
      {"a remote frame of no bytes", {"remote time=0.5 bus=1 id=18ABCDEF flags=extended,received,dlc_known"}},
      {"a long DLC", {"data time=0.5 bus=1 id=123 flags=received dlc=9 data=0102030405060708"}},
      {"an FD frame", {"data time=0.5 bus=1 id=123 flags=received,fd,brs,esi dlc=9 data=0102030405060708090A0B0C"}},
      {"an FD frame of 64 bytes that was sent",
       {"data time=0.5 bus=1 id=123 flags=transmitted,fd dlc=15 "
        "data="
        "000102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F202122232425262728292A2B2C2D2E2F30313233343536"
        "3738393A3B3C3D3E3F"}},
      {"an XL frame",
       {"data time=0.5 bus=1 id=123 flags=received,xl dlc=1 data=0102 vcid=1 sdt=2 acceptance_field=3 rrs=0 sec=1"}},
      {"an XL frame without its fields", {"data time=0.5 bus=1 id=123 flags=received,xl dlc=1 data=0102"}},
      {"an error", {"error time=0.5 bus=1 flags=received error_type=1 error_position=5 tx_errors=3 rx_errors=4"}},
      {"an error while sending",
       {"error time=0.5 bus=1 flags=transmitted error_type=2 error_position=5 tx_errors=3 rx_errors=4"}},
      {"an error without counters", {"error time=0.5 bus=1 flags=received error_type=1 error_position=5"}},
      {"an error without details", {"error time=0.5 bus=1 flags=received"}},
      {"an overload", {"overload time=0.5 bus=1"}},
      {"bus off", {"status time=0.5 bus=1 bus_state=16"}},
      {"a light bus", {"status time=0.5 bus=1 bus_state=4"}},
      {"a state of many bits", {"status time=0.5 bus=1 bus_state=262145"}},
      {"a state with a word of its own", {"status time=0.5 bus=1 bus_state=8 text=word"}},
      {"error counters", {"counters time=0.5 bus=1 tx_errors=3 rx_errors=4"}},
      {"error counters that were received", {"counters time=0.5 bus=1 flags=received tx_errors=3 rx_errors=4"}},
      {"an event", {"event time=0.5 text=two words"}},
      {"a comment after a frame",
       {"data time=0.5 bus=1 id=123 flags=received dlc=2 data=0102", "comment time=0.5 text= a comment"}},
      {"a LIN frame", {"lin time=0.5 bus=1 id=1A flags=received,enhanced_checksum dlc=2 data=0102 checksum=90"}},
      {"a LIN frame of a trace", {"lin time=0.5 id=1A flags=received,enhanced_checksum dlc=2 data=0102 checksum=90"}},
      {"a LIN frame without a checksum's type", {"lin time=0.5 id=1A flags=transmitted dlc=2 data=0102 checksum=90"}},
      {"a LIN event", {"lin_event time=0.5 bus=1 text=Bus Sleep"}},
      {"a LIN event of a trace", {"lin_event time=0.5 text=Bus Sleep"}},
      {"nothing", {}},
      {"a start to the microsecond",
       {"data time=0.5 bus=1 id=123 flags=received dlc=2 data=0102"},
       1'627'279'200'123'457'000},
      {"a start a hair below a second",
       {"data time=0.5 bus=1 id=123 flags=received dlc=2 data=0102"},
       1'627'279'199'999'600'000},
      {"a start in 1980", {"data time=0.5 bus=1 id=123 flags=received dlc=2 data=0102"}, 315'532'800'000'000'000},
  };
  return kTraces;
}

std::span<const TextTrace> textsForBothWays() {
  static constexpr TextTrace kTexts[] = {
      {"a short line", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "no internal events logged\n"
       "// version 8.1.0\n"
       "0.5 1 123 Rx d 2 01 02\n"
       "0.6 1 123 Rx d 2 01\n"
       "0.7 1 123 Rx d 2 01 02\n"},
      {"a head without an end", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "0.5 1 123 Rx d 2 01 02\n"
       "0.6 1 123 Rx d 2 01 02\n"},
      {"a named frame", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "no internal events logged\n"
       "// version 7.0.0\n"
       "0.5 1 Axle Rx d 1 01 ID = 291\n"},
      {"an FD line with a short tail", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "no internal events logged\n"
       "// version 8.1.0\n"
       "0.5 CANFD 1 Rx 123 1 0 2 2 01 02 130000 130 7000\n"},
      {"a line with a long DLC", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "no internal events logged\n"
       "// version 8.1.0\n"
       "0.5 1 123 Rx d 9 01 02 03 04 05 06 07 08\n"
       "0.7 1 123 Rx d 2 01 02\n"},
      {"an error without its bits", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "no internal events logged\n"
       "// version 8.1.0\n"
       "0.5 1 ErrorFrame\n"},
      {"a status of another maker", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "no internal events logged\n"
       "// version 8.1.0\n"
       "0.5 CAN 1 Status:chip status bus off\n"},
      {"statistics", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "no internal events logged\n"
       "// version 8.1.0\n"
       "0.5 1 123 Rx d 2 01 02\n"
       "0.6 1 Statistic: D 1 R 2 XD 3 XR 4 E 5 O 6 B 7.89%\n"},
      {"relative times", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps relative\n"
       "no internal events logged\n"
       "// version 8.1.0\n"
       "0.5 1 123 Rx d 2 01 02\n"
       "0.25 Comment: 0 x\n"
       "0.5 1 123 Rx d 2 01 02\n"},
      {"a log of version 5", XLATR_FORMAT_ASC,
       "date Mon Jul 26 06:00:00.000 2021\n"
       "base hex  timestamps absolute\n"
       "no internal events logged\n"
       "// version 5.0.0\n"
       "0.5 1 123 Rx d 2 01 02\n"},
      {"hidden bytes", XLATR_FORMAT_LIN,
       ";$FILEVERSION=1.2\n"
       ";$STARTTIME=44403.25\n"
       "     1)           500000   Pub   1A  2  -- --                   5A  CL  \n"},
      {"a LIN frame without a direction", XLATR_FORMAT_LIN,
       ";$FILEVERSION=1.2\n"
       ";$STARTTIME=44403.25\n"
       "     1)           500000   ---   1A  2  01 02                   5A  CL  \n"},
      {"a line that is no frame", XLATR_FORMAT_TRC,
       ";$FILEVERSION=2.1\n"
       ";$STARTTIME=44403.25\n"
       ";$COLUMNS=N,O,T,B,I,d,R,L,D\n"
       "1 500.0 DT 1 0123 Rx - 2 01 02\n"
       "power was cut here\n"},
  };
  return kTexts;
}

std::span<const Difference> differences() {
  static const std::vector<Difference> kDifferences = {
      {Quirk::TrcBusOneIsGuessed, {}, {trc(1.0, 1.1)}, {trc(1.2, 1.3), trc(2.1, 3.0), kAnyCsv, kAnyMf4}},
      {Quirk::TrcBus255IsNone, {}, {trc(2.0, 2.0)}, {trc(2.1, 3.0)}},
      {Quirk::BtrBusesWrap, {}, {trc(2.0, 2.0)}, {kAnyBtr}},
      {Quirk::BtrcBusesWrap, {}, {trc(2.0, 2.0)}, {kAnyBtrc}},
      {Quirk::CsvDirectionGuessed, {}, {trc(1.0, 1.0), kAnyBtr}, {kAnyCsv}},
      {Quirk::AscSessionsInOldLines, {}, {kAnyBtr}, {asc(8.0, 15.0)}},
      {Quirk::TrcBus255IsNone, {"a frame on no bus"}, {trc(1.2, 1.3)}, {trc(2.1, 3.0)}},
      {Quirk::TrcBus255IsNone, {"a frame on no bus"}, {trc(2.1, 3.0)}, {trc(1.2, 1.3), kAnyAsc, kAnyCsv, kAnyMf4}},
      {Quirk::TrcBus255IsNone, {"a frame on no bus"}, {kAnyMf4}, {trc(2.1, 3.0)}},
      {Quirk::BtrBusesWrap, {"a frame on no bus"}, {trc(1.2, 3.0)}, {kAnyBtr}},
      {Quirk::BtrcBusesWrap, {"a frame on no bus"}, {trc(1.2, 3.0)}, {kAnyBtrc}},
      {Quirk::TrcBus255IsNone, {"a frame on bus 255"}, {trc(1.2, 3.0), kAnyAsc, kAnyBtrc, kAnyMf4}, {trc(2.1, 3.0)}},
      {Quirk::BtrBusesWrap, {"a frame on bus 255"}, {trc(1.2, 3.0)}, {kAnyBtr}},
      {Quirk::AscNotHeldUnsaid, {"a frame on bus 300"}, {trc(1.2, 1.3)}, {kAnyAsc}},
      {Quirk::BtrBusesWrap, {"a frame on bus 300"}, {trc(1.2, 1.3)}, {kAnyBtr}},
      {Quirk::BtrcBusesWrap, {"a frame on bus 300"}, {trc(1.2, 1.3)}, {kAnyBtrc}},
      {Quirk::Mf4BusesWrap, {"a frame on bus 300"}, {trc(1.2, 1.3)}, {kAnyMf4}},
      {Quirk::AscNotHeldUnsaid, {"a frame on bus 300"}, {trc(2.1, 3.0)}, {kAnyAsc}},
      {Quirk::BtrBusesWrap, {"a frame on bus 300"}, {trc(2.1, 3.0)}, {kAnyBtr}},
      {Quirk::BtrcBusesWrap, {"a frame on bus 300"}, {trc(2.1, 3.0)}, {kAnyBtrc}},
      {Quirk::Mf4BusesWrap, {"a frame on bus 300"}, {trc(2.1, 3.0)}, {kAnyMf4}},
      {Quirk::TrcFilePerBus,
       {"frames on two buses"},
       {trc(1.2, 1.3), trc(2.1, 3.0), kAnyBtr, kAnyAsc, kAnyBtrc, kAnyMf4},
       {trc(1.0, 1.1), trc(2.0, 2.0)}},
      {Quirk::TrcMillisecondsAreCut,
       {"times of a microsecond", "a time that is not a whole millisecond"},
       {trc(1.1, 3.0), kAnyAsc, kAnyBtr, kAnyBtrc, kAnyMf4},
       {trc(1.0, 1.0)}},
      {Quirk::BtrStepBackIsAWrap, {"a step back"}, {kAnyBtr}, {kAnyTrc, kAnyAsc, kAnyCsv}},
      {Quirk::BtrHasNoTicks, {"a long silence"}, {kAnyTrc}, {kAnyBtr}},
      {Quirk::BtrEarlyTimesWrap, {"a time before the start"}, {kAnyTrc}, {kAnyBtr}},
      {Quirk::BtrcEarlyTimesWrap, {"a time before the start"}, {kAnyBtrc}, {kAnyTrc, kAnyAsc, kAnyCsv}},
      {Quirk::AscRemoteAsFd,
       {"a remote frame", "a remote frame that was sent", "a remote frame of no bytes"},
       {kAnyTrc, kAnyBtrc},
       {asc(8.0, 15.0)}},
      {Quirk::BtrcRemoteStatesRoom, {"a remote frame"}, {kAnyTrc}, {kAnyBtrc}},
      {Quirk::BtrcRemoteStatesRoom, {"a remote frame that was sent"}, {trc(1.0, 1.0)}, {kAnyBtrc}},
      {Quirk::AscRemoteLengthLost, {"a remote frame", "a remote frame that was sent"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscDlcIsLength, {"a long DLC"}, {asc(7.0, 7.0)}, {kAnyTrc, kAnyCsv}},
      {Quirk::CsvDetailsLeftOut, {"a long DLC"}, {asc(8.0, 15.0)}, {kAnyCsv}},
      {Quirk::BtrcDlcIsLength, {"a long DLC"}, {kAnyBtrc}, {kAnyTrc, kAnyAsc, kAnyCsv}},
      {Quirk::BtrLongDlcsLeftOut, {"a long DLC"}, {kAnyBtr}, {kAnyTrc, kAnyAsc, kAnyCsv}},
      {Quirk::TrcNotHeldUnsaid,
       {"an FD frame", "an FD frame of 64 bytes that was sent"},
       {trc(2.0, 3.0), asc(8.0, 15.0), kAnyBtrc, kAnyMf4},
       {trc(1.0, 1.3)}},
      {Quirk::AscNotHeldUnsaid,
       {"an FD frame", "an FD frame of 64 bytes that was sent"},
       {trc(2.0, 3.0), kAnyBtrc},
       {asc(7.0, 7.0)}},
      {Quirk::BtrcSentDataIsCut, {"an FD frame of 64 bytes that was sent"}, {trc(2.0, 3.0)}, {kAnyBtrc}},
      {Quirk::TrcNotHeldUnsaid, {"an XL frame", "an XL frame without its fields"}, {trc(3.0, 3.0)}, {trc(1.0, 2.1)}},
      {Quirk::AscNotHeldUnsaid, {"an XL frame", "an XL frame without its fields"}, {trc(3.0, 3.0)}, {kAnyAsc}},
      {Quirk::BtrcXlLeftOut, {"an XL frame", "an XL frame without its fields"}, {trc(3.0, 3.0)}, {kAnyBtrc}},
      {Quirk::CsvMissingXlFieldsFilled, {"an XL frame without its fields"}, {trc(3.0, 3.0)}, {kAnyCsv}},
      {Quirk::TrcNotHeldUnsaid,
       {"an error", "an error while sending", "an error without counters", "an error without details"},
       {trc(1.1, 3.0), asc(7.0, 7.0), kAnyBtrc, kAnyMf4},
       {trc(1.0, 1.0)}},
      {Quirk::TrcNotHeldUnsaid,
       {"an error", "an error while sending", "an error without counters"},
       {asc(8.0, 15.0)},
       {trc(1.0, 1.0)}},
      {Quirk::TrcNotHeldUnsaid,
       {"an error", "an error while sending", "an error without counters", "an error without details"},
       {kAnyBtr},
       {trc(1.0, 1.0)}},
      {Quirk::AscSessionErrorsShifted,
       {"an error", "an error while sending", "an error without counters", "an error without details"},
       {kAnyBtr},
       {kAnyAsc}},
      {Quirk::TrcErrorTypeLost,
       {"an error", "an error while sending", "an error without counters", "an error without details"},
       {trc(1.1, 1.3), asc(7.0, 7.0), kAnyBtrc, kAnyMf4},
       {trc(2.0, 3.0)}},
      {Quirk::TrcErrorTypeLost,
       {"an error", "an error while sending", "an error without counters"},
       {asc(8.0, 15.0)},
       {trc(2.0, 3.0)}},
      {Quirk::AscErrorsRefused, {"an error without details"}, {asc(8.0, 15.0)}, {kAnyTrc}},
      {Quirk::CsvErrorsAsInTheSource,
       {"an error", "an error while sending", "an error without counters", "an error without details"},
       {trc(1.1, 1.3), kAnyAsc, kAnyBtrc},
       {kAnyCsv}},
      {Quirk::BtrErrorTypesAreIds,
       {"an error", "an error while sending", "an error without counters", "an error without details"},
       {trc(1.1, 1.3)},
       {kAnyBtr}},
      {Quirk::Mf4ErrorDirectionLost,
       {"an error", "an error without counters", "an error without details"},
       {kAnyMf4},
       {trc(1.1, 1.3)}},
      {Quirk::Mf4ErrorDirectionLost, {"an error while sending"}, {trc(1.1, 3.0)}, {kAnyMf4}},
      {Quirk::AscErrorsRefused, {"an overload"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::Mf4OtherFramesNotRead, {"an overload"}, {kAnyMf4}, {kAnyTrc}},
      {Quirk::BtrStatusIsUnmarked, {"bus off", "a light bus", "a state of many bits"}, {kAnyTrc}, {kAnyBtr}},
      {Quirk::BtrStatusIsUnmarked,
       {"bus off", "a light bus", "a state of many bits"},
       {kAnyBtr},
       {kAnyTrc, kAnyAsc, kAnyCsv}},
      {Quirk::TrcStateWordsLost, {"bus off", "a light bus"}, {kAnyAsc}, {trc(1.0, 1.1)}},
      {Quirk::TrcStateWordsLost, {"bus off"}, {kAnyBtrc}, {trc(1.0, 1.1)}},
      {Quirk::CsvErrorsAsInTheSource, {"bus off", "a light bus"}, {kAnyAsc}, {kAnyCsv}},
      {Quirk::AscStateWordsLost, {"bus off"}, {kAnyBtrc}, {kAnyAsc}},
      {Quirk::BtrcStatusBitsLost, {"a light bus", "a state of many bits"}, {kAnyTrc}, {kAnyBtrc}},
      {Quirk::AscNotHeldUnsaid, {"a state of many bits"}, {kAnyTrc}, {kAnyAsc}},
      {Quirk::TrcNotHeldUnsaid, {"a state with a word of its own"}, {trc(1.0, 1.1)}, {trc(1.2, 3.0)}},
      {Quirk::AscNotHeldUnsaid, {"a state with a word of its own"}, {trc(1.0, 1.1)}, {kAnyAsc}},
      {Quirk::CsvTextLeftOut, {"a state with a word of its own"}, {trc(1.0, 1.1)}, {kAnyCsv}},
      {Quirk::BtrStatusIsUnmarked, {"a state with a word of its own"}, {trc(1.0, 1.1)}, {kAnyBtr}},
      {Quirk::BtrcStatusBitsLost, {"a state with a word of its own"}, {trc(1.0, 1.1)}, {kAnyBtrc}},
      {Quirk::TrcCountersAreErrors,
       {"error counters", "error counters that were received"},
       {trc(1.1, 1.2)},
       {trc(2.0, 3.0), kAnyAsc, kAnyCsv, kAnyBtrc, kAnyMf4}},
      {Quirk::TrcNotHeldUnsaid,
       {"error counters", "error counters that were received"},
       {trc(1.1, 3.0), kAnyAsc, kAnyBtrc},
       {trc(1.0, 1.0)}},
      {Quirk::TrcCountersHaveAnId,
       {"error counters", "error counters that were received"},
       {kAnyAsc, kAnyBtrc},
       {trc(1.1, 1.3)}},
      {Quirk::CsvErrorsAsInTheSource,
       {"error counters", "error counters that were received"},
       {kAnyAsc, kAnyBtrc},
       {kAnyCsv}},
      {Quirk::AscStateWordsLost, {"error counters", "error counters that were received"}, {kAnyBtrc}, {kAnyAsc}},
      {Quirk::BtrCountersAreErrors,
       {"error counters", "error counters that were received"},
       {kAnyBtr},
       {kAnyAsc, kAnyCsv}},
      {Quirk::TrcNotHeldUnsaid, {"error counters", "error counters that were received"}, {kAnyBtr}, {trc(1.0, 1.0)}},
      {Quirk::TrcNotHeldUnsaid, {"an event"}, {trc(2.0, 3.0)}, {trc(1.0, 1.3)}},
      {Quirk::AscEventsAreFrames, {"an event"}, {trc(2.0, 3.0)}, {kAnyAsc}},
      {Quirk::CsvTextLeftOut, {"an event"}, {trc(2.0, 3.0)}, {kAnyCsv}},
      {Quirk::BtrcEventsAreTexts, {"an event"}, {trc(2.0, 3.0)}, {kAnyBtrc}},
      {Quirk::AscEventsRefused, {"an event"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::TrcCommentsLeftOut, {"a comment after a frame"}, {kAnyTrc}, {kAnyTrc, kAnyAsc, kAnyCsv, kAnyBtrc}},
      {Quirk::AscCommentsKeepTheirMark, {"a comment after a frame"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::BtrcNotesLeftOut, {"a comment after a frame"}, {kAnyBtrc}, {kAnyTrc, kAnyAsc, kAnyCsv}},
      {Quirk::AscLinRefused,
       {"a LIN frame", "a LIN frame of a trace", "a LIN frame without a checksum's type", "a LIN event",
        "a LIN event of a trace"},
       {kAnyAsc},
       {kAnyTrc, kAnyCsv}},
      {Quirk::AscLinRefused, {"a LIN frame", "a LIN frame of a trace"}, {kAnyLin}, {kAnyAsc}},
      {Quirk::CsvLinAsCan, {"a LIN frame", "a LIN frame of a trace"}, {kAnyLin}, {kAnyCsv}},
      {Quirk::LinNoneRefused, {"a LIN frame without a checksum's type"}, {kAnyLin}, {kAnyAsc, kAnyCsv}},
      {Quirk::LinEventsRefused, {"a LIN event", "a LIN event of a trace"}, {kAnyLin}, {kAnyAsc, kAnyCsv}},
      {Quirk::Mf4OtherFramesNotRead,
       {"a LIN frame", "a LIN frame of a trace", "a LIN frame without a checksum's type"},
       {kAnyMf4},
       {kAnyTrc}},
      {Quirk::TrcFilePerBus, {"nothing"}, {kAnyTrc, kAnyBtr, kAnyBtrc, kAnyMf4}, {trc(1.0, 1.1), trc(2.0, 2.0)}},
      {Quirk::AscHeadTakesTenLines, {"nothing"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::BtrStampsFromTheStart, {"a start to the microsecond"}, {trc(1.1, 3.0)}, {kAnyBtr}},
      {Quirk::TrcStartOf1000Ms, {"a start a hair below a second"}, {trc(1.1, 3.0), kAnyBtrc, kAnyMf4}, {kAnyTrc}},
      {Quirk::AscStartOf1000, {"a start a hair below a second"}, {trc(1.1, 3.0), kAnyBtrc}, {kAnyAsc}},
      {Quirk::CsvStartOf1000Ms, {"a start a hair below a second"}, {trc(1.1, 3.0), kAnyBtrc}, {kAnyCsv}},
      {Quirk::BtrStartIsCut, {"a start a hair below a second"}, {trc(1.1, 3.0)}, {kAnyBtr}},
      {Quirk::BtrcStartFromDays, {"a start a hair below a second"}, {trc(1.1, 3.0)}, {kAnyBtrc}},
      {Quirk::BtrStartIsCut, {"a start in 1980"}, {kAnyTrc}, {kAnyBtr}},
      {Quirk::BtrNoStartIs1970, {"a start in 1980"}, {kAnyBtr}, {kAnyTrc, kAnyAsc, kAnyCsv}},
      {Quirk::AscCommentsGetABlank, {"a line that is no frame"}, {kAnyTrc}, {kAnyAsc}},
      {Quirk::BtrcTextsEndInBlanks, {"a line that is no frame"}, {kAnyTrc}, {kAnyBtrc}},
      {Quirk::AscShortLineEnds, {"a short line"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscHeadTakesTenLines, {"a head without an end"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscNamesMisread, {"a named frame"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscFdTailCounted, {"an FD line with a short tail"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscDlcIsLength, {"a line with a long DLC"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscErrorsRefused, {"an error without its bits"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscStatusRefused, {"a status of another maker"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscEventsRefused, {"statistics"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscRelativeSkips, {"relative times"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::AscOldVersionsRefused, {"a log of version 5"}, {kAnyAsc}, {kAnyTrc, kAnyCsv}},
      {Quirk::LinHiddenBytesAreZero, {"hidden bytes"}, {kAnyLin}, {kAnyAsc, kAnyCsv}},
      {Quirk::LinNoneRefused, {"a LIN frame without a direction"}, {kAnyLin}, {kAnyAsc, kAnyCsv}},
  };
  return kDifferences;
}

}  // namespace xlatr::test
