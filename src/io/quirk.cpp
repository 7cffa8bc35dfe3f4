#include "io/quirk.hpp"

#include "util/enum_order.hpp"

namespace xlatr {
namespace {

constexpr std::array<QuirkInfo, kQuirkCount> kQuirks = {{
    {Quirk::TrcBus255IsNone, XLATR_FORMAT_TRC, "trc_bus_255_is_none",
     "bus 255 is written as `-`, which is what a line without a bus number was read as",
     "bus 255 is written as a number, and `-` where there is no bus", "TrcPrinter.writesBus255AsADash"},
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
