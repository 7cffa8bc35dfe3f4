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
    {Quirk::Mf4FieldsEndWithTheirFirstBytes, XLATR_FORMAT_MF4, "mf4_fields_end_with_their_first_bytes",
     "a field that begins within a byte has as many bytes as one that begins with it, so that the bits in the last "
     "byte are lost",
     "a field has all its bits", "MdfNumberField.losesBitsBeyondItsBytesOnTheCompatibleWay"},
    {Quirk::Mf4ZippedPayloadsStayZipped, XLATR_FORMAT_MF4, "mf4_zipped_payloads_stay_zipped",
     "signal data in a single zipped block are taken as they stand, so that their frames are lost", "they are inflated",
     "MdfRecordParserTest.readsZippedSignalDataWithoutInflatingIt"},
    {Quirk::Mf4TableValuesAreKeys, XLATR_FORMAT_MF4, "mf4_table_values_are_keys",
     "a table from values to values is searched element by element, so that a value which equals the input counts as "
     "a key",
     "only keys are keys", "BlockChannelsTest.tableFindsValuesThatEqualTheInput"},
    {Quirk::Mf4UnfinishedRefused, XLATR_FORMAT_MF4, "mf4_unfinished_refused",
     "a file whose writer was stopped is refused", "its records are found by going through the data",
     "MdfReaderTest.anUnfinishedFileIsRefused"},
    {Quirk::Mf4VariableGroupsRefused, XLATR_FORMAT_MF4, "mf4_variable_groups_refused",
     "a file with a channel group of variable length is refused", "its values are found by their offsets",
     "MdfReaderTest.aVariableLengthGroupIsRefusedOnStart"},
    {Quirk::Mf4InvalidationRefused, XLATR_FORMAT_MF4, "mf4_invalidation_refused",
     "a file whose records have invalidation bits is refused", "an invalid record is counted, the others are read",
     "MdfReaderTest.invalidationBytesFail"},
}};
static_assert(standsInOrder(kQuirks, &QuirkInfo::quirk));

}  // namespace

std::span<const QuirkInfo, kQuirkCount> quirkTable() {
  return kQuirks;
}

}  // namespace xlatr
