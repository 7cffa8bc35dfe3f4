#include "io/quirk.hpp"

#include "util/enum_order.hpp"

namespace xlatr {
namespace {

constexpr std::array<QuirkInfo, kQuirkCount> kQuirks = {{
    {Quirk::TrcBus255IsNone, XLATR_FORMAT_TRC, "trc_bus_255_is_none",
     "bus 255 is written as `-`, which is what a line without a bus number was read as",
     "bus 255 is written as a number, and `-` where there is no bus", "TrcPrinter.writesBus255AsADash"},
    {Quirk::AscHeadTakesTenLines, XLATR_FORMAT_ASC, "asc_head_takes_ten_lines",
     "a head without a version or `Begin TriggerBlock` takes the first ten lines, frames among them, or the whole file",
     "a head ends before the first line with a time", "AscFrames.loseNoneToTheHead"},
    {Quirk::AscShortLineEnds, XLATR_FORMAT_ASC, "asc_short_line_ends", "a line that ends too early ends the conversion",
     "the line is a comment", "AscFrames.goOnAfterAShortLine"},
    {Quirk::AscOldVersionsRefused, XLATR_FORMAT_ASC, "asc_old_versions_refused",
     "logs of the versions 1 to 6 have no frames, and no log below 8.0 has CANFD lines",
     "every form of a line is read in a log of any version", "AscFrames.areReadInLogsOfAnyVersion"},
    {Quirk::AscNamesMisread, XLATR_FORMAT_ASC, "asc_names_misread",
     "a name in place of an identifier ends at its first `x`; what then looks like a number is one, and below 8.0 the "
     "`ID` item is not looked at",
     "the `ID` item has the identifier, and the name is kept", "AscFrames.haveTheIdentifierOfANamedOne"},
    {Quirk::AscDlcIsLength, XLATR_FORMAT_ASC, "asc_dlc_is_length",
     "a classic frame with a DLC from 9 to 15 must have as many bytes, which it never has",
     "it has eight bytes and its DLC", "AscFrames.keepLongDlcs"},
    {Quirk::AscRemoteLengthLost, XLATR_FORMAT_ASC, "asc_remote_length_lost",
     "the length of a remote frame is read from 8.5 on only, and never from a CANFD line",
     "it is read wherever it stands", "AscFrames.keepTheLengthOfRemoteOnes"},
    {Quirk::AscFdTailCounted, XLATR_FORMAT_ASC, "asc_fd_tail_counted",
     "a CANFD line with more or fewer than five fields after its flags is no frame",
     "whatever follows the data is optional", "AscFrames.haveAnyTailInCanFdLines"},
    {Quirk::AscErrorsRefused, XLATR_FORMAT_ASC, "asc_errors_refused",
     "an error frame without an ECC, one in a CANFD line and an overload frame are not read; every other one was "
     "received",
     "they are frames, and the direction is the one in the ECC", "AscFrames.areErrorsInEveryForm"},
    {Quirk::AscStatusRefused, XLATR_FORMAT_ASC, "asc_status_refused",
     "a status without a certain maker's mark is not read, nor are error counters with a receive count of 0",
     "they are read, and the error counters of a status too", "AscFrames.areStatusesOfAnyMaker"},
    {Quirk::AscEventsRefused, XLATR_FORMAT_ASC, "asc_events_refused",
     "triggers, statistics, variables and comments of users are no frames and become comments",
     "they are events, with their times", "AscFrames.areEventsOfManyKinds"},
    {Quirk::AscLinRefused, XLATR_FORMAT_ASC, "asc_lin_refused",
     "the lines of LIN buses are not read, and LIN frames are written as received data frames of a CAN bus",
     "both are LIN lines", "AscFrames.areThoseOfLinBuses"},
    {Quirk::AscRelativeSkips, XLATR_FORMAT_ASC, "asc_relative_skips",
     "the relative times of lines that are no frames are left out of the sum", "every line's time counts, exactly",
     "AscFrames.sumRelativeTimesExactly"},
    {Quirk::AscRemoteAsFd, XLATR_FORMAT_ASC, "asc_remote_as_fd",
     "from 8.0 on a remote frame is written as a CANFD line, which other programs take for a data frame",
     "it is an `r` line, with its length if that is known", "AscFrameSink.writesRemoteFramesAsOthersReadThem"},
    {Quirk::AscStartOf1000, XLATR_FORMAT_ASC, "asc_start_of_1000",
     "a start a hair below a full second is written with 1000 milliseconds", "it is the full second",
     "AscFrameSink.writesNoThousandMilliseconds"},
    {Quirk::LinEventsRefused, XLATR_FORMAT_LIN, "lin_events_refused",
     "the line of a bus event, such as `Bus Sleep`, is no frame and becomes a comment",
     "it is an event of the bus, with its time and text", "LinParser.refusesBusEventsOnTheCompatibleWay"},
    {Quirk::LinNoneRefused, XLATR_FORMAT_LIN, "lin_none_refused",
     "a frame with dashes in place of its direction or its checksum type is no frame, though such lines are written",
     "the frame has no direction, or no checksum type", "LinParser.refusesDashesOnTheCompatibleWay"},
    {Quirk::LinHiddenBytesAreZero, XLATR_FORMAT_LIN, "lin_hidden_bytes_are_zero",
     "bytes that the line shows as dashes are read as 0",
     "the frame has its length and no data; a line that hides only some of its bytes is a comment",
     "LinParser.readsHiddenBytesAsZeroOnTheCompatibleWay"},
    {Quirk::LinErrorHidesBytes, XLATR_FORMAT_LIN, "lin_error_hides_bytes",
     "the bytes of a frame with an error are written as dashes", "they are written",
     "LinPrinter.hidesBytesOfErrorsOnTheCompatibleWay"},
    {Quirk::LinVBatShortNotShown, XLATR_FORMAT_LIN, "lin_vbat_short_not_shown",
     "the error `VS` is described in the header and never written", "it is written",
     "LinPrinter.showsNoVBatShortOnTheCompatibleWay"},
    {Quirk::LinLongEventRunsOn, XLATR_FORMAT_LIN, "lin_long_event_runs_on",
     "the text of a bus event of 25 characters or more is followed by the next column without a blank",
     "a blank stands between them", "LinPrinter.runsLongEventsOnOnTheCompatibleWay"},
    {Quirk::CsvTextLeftOut, XLATR_FORMAT_CSV, "csv_text_left_out",
     "the text of an event or a status, and what follows the data of a line, are left out",
     "the text is in a cell after the data", "CsvPrinter.leavesTextsOutOnTheCompatibleWay"},
    {Quirk::CsvMissingXlFieldsFilled, XLATR_FORMAT_CSV, "csv_missing_xl_fields_filled",
     "what a CAN XL frame lacks of its five fields is written as `FF`, `FFFFFFFF` or `0`", "it is written as `-`",
     "CsvQuirks.missingXlFieldsFilled"},
    {Quirk::CsvErrorsAsInTheSource, XLATR_FORMAT_CSV, "csv_errors_as_in_the_source",
     "the bytes and the identifier of an error frame or of error counters are those of the source's format and version",
     "every table has them in one form: for an error its type as a bit, its direction, its position and both counters",
     "CsvQuirks.errorsAsInTheSource"},
    {Quirk::CsvBusGuessed, XLATR_FORMAT_CSV, "csv_bus_guessed",
     "what is on no bus that the source names is on bus 1 or 255", "it is on bus 0", "CsvQuirks.busGuessed"},
    {Quirk::CsvDirectionGuessed, XLATR_FORMAT_CSV, "csv_direction_guessed",
     "a frame whose source has no directions was received", "its direction is `None`", "CsvQuirks.directionGuessed"},
    {Quirk::CsvLinAsCan, XLATR_FORMAT_CSV, "csv_lin_as_can",
     "a LIN frame is a CAN frame on bus 1, without its checksum and what else is special to LIN",
     "a cell after its data says all of it, and makes it a LIN frame again when the table is read",
     "CsvQuirks.linAsCan"},
    {Quirk::CsvFewCellsRead, XLATR_FORMAT_CSV, "csv_few_cells_read",
     "of a row that is read, the reserved value and the fields of CAN XL do not count, remote frames get zeros as "
     "their "
     "data, and a length above 255 is none",
     "all cells count", "CsvQuirks.fewCellsRead"},
    {Quirk::CsvEmptyCellsMoveOthers, XLATR_FORMAT_CSV, "csv_empty_cells_move_others",
     "an empty cell of a row that is read does not count, and those after it move up", "it is an empty cell",
     "CsvQuirks.emptyCellsMoveOthers"},
    {Quirk::CsvMissingColumnIsTheFirst, XLATR_FORMAT_CSV, "csv_missing_column_is_the_first",
     "for a column that a table lacks its first one is read",
     "what the column says is not known; without the columns of the time, the type, the identifier, the length and the "
     "data there is no frame",
     "CsvQuirks.missingColumnIsTheFirst"},
    {Quirk::CsvStartOf1000Ms, XLATR_FORMAT_CSV, "csv_start_of_1000_ms",
     "in the text of the start, what rounds to 1000 milliseconds is `.1000`", "it is `.000` of the next second",
     "CsvQuirks.startOf1000Ms"},
}};
static_assert(standsInOrder(kQuirks, &QuirkInfo::quirk));

}  // namespace

std::span<const QuirkInfo, kQuirkCount> quirkTable() {
  return kQuirks;
}

}  // namespace xlatr
