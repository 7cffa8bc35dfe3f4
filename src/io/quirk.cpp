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
    {Quirk::BtrStepBackIsAWrap, XLATR_FORMAT_BTR, "btr_step_back_is_a_wrap",
     "a time that is lower than the one before it on its bus counts as a wrap of the clock: 71.6 minutes are added to "
     "it "
     "and to all after it",
     "a step back of up to a minute is one", "SessionClock.takesAStepBackForAWrapOnTheCompatibleWay"},
    {Quirk::BtrStampsFromTheStart, XLATR_FORMAT_BTR, "btr_stamps_from_the_start",
     "times include the clock's state at the start of the session; the microseconds of the start are written as that",
     "times count from the start of the session, and its clock is written as 0",
     "BtrFrames.countFromTheStartOfTheirSession"},
    {Quirk::BtrStatusIsUnmarked, XLATR_FORMAT_BTR, "btr_status_is_unmarked",
     "a bus status is written as an unused slot with data, and is not read again",
     "it is written as a status and read, from such slots too", "BtrFrames.recoverAStatusThatIsNotMarked"},
    {Quirk::BtrBusesWrap, XLATR_FORMAT_BTR, "btr_buses_wrap",
     "of a bus the lowest four bits are written; a bus beyond the fifth can't be read",
     "buses 1 to 15 are written and read; no bus is written as bus 1, and frames of others are left out and counted",
     "BtrFrames.comeBackFromFifteenBuses"},
    {Quirk::BtrHasNoTicks, XLATR_FORMAT_BTR, "btr_has_no_ticks",
     "no ticks of the clock are written, so that a bus loses 71.6 minutes when it is silent for longer",
     "ticks are written where a bus is silent for so long", "BtrFrames.haveTicksWhereABusIsSilentForLong"},
    {Quirk::BtrStartIsCut, XLATR_FORMAT_BTR, "btr_start_is_cut",
     "a start a hair below a full second is written as 100 hundredths, which no reader takes; one before 2000, or "
     "none, "
     "is written as one in 2000",
     "the start is carried; what is not from 2000 to 2255 is written as none", "BtrFrames.haveTheirStartCarried"},
    {Quirk::BtrDamageEndsSessions, XLATR_FORMAT_BTR, "btr_damage_ends_sessions",
     "a damaged sector, or a note of the logger, ends its session, and a damaged link makes the file have none",
     "what is whole is read, notes are events, and the damage is counted", "BtrFrames.areReadAroundDamage"},
    {Quirk::BtrLeavesOutUnsaid, XLATR_FORMAT_BTR, "btr_leaves_out_unsaid",
     "CAN FD and CAN XL frames, events and comments are left out, and nobody is told",
     "they are left out and counted, each with its reason", "BtrFrames.dropAndCountWhatASessionCantHold"},
    {Quirk::BtrcSentDataIsCut, XLATR_FORMAT_BTRC, "btrc_sent_data_is_cut",
     "the record of a sent frame has as much room as its DLC is as a number: 64 bytes lose all but 16",
     "it has room for all bytes", "NativeRecordWays.giveSentFramesRoom"},
    {Quirk::BtrcRemoteStatesRoom, XLATR_FORMAT_BTRC, "btrc_remote_states_room",
     "the record of a received remote frame states more bytes than it has; a reader loses the records after it",
     "it states what it has, and such records are read with those after them",
     "NativeRecordWays.stateTheLengthOfRemoteFrames"},
    {Quirk::BtrcTextsEndInBlanks, XLATR_FORMAT_BTRC, "btrc_texts_end_in_blanks",
     "up to three blanks fill the record of a text, and are part of it when it is read",
     "zeros fill it, and a text that has no zero after it is read without such blanks",
     "NativeRecordWays.fillTextsWithZeros"},
    {Quirk::BtrcLongTextIsTheLast, XLATR_FORMAT_BTRC, "btrc_long_text_is_the_last",
     "nothing can be written after a text as long as a block", "it is written in pieces, which are one text when read",
     "BtrcFrames.writeLongTextsInPieces"},
    {Quirk::BtrcEventsAreTexts, XLATR_FORMAT_BTRC, "btrc_events_are_texts",
     "an event becomes a text that begins with `TODO 'Event Framer (EV)': `, without its time and bus",
     "it becomes a text from which it is read again", "BtrcFrames.writeEventsAsTextsThatComeBack"},
    {Quirk::BtrcBusesWrap, XLATR_FORMAT_BTRC, "btrc_buses_wrap",
     "no bus is written as the number of bus 256, and of higher ones the lowest eight bits are written",
     "no bus is written as bus 1, and frames of bus 256 and above become texts from which they are read again",
     "BtrcFrames.writeFramesOfNoBusOnTheFirst"},
    {Quirk::BtrcStatusBitsLost, XLATR_FORMAT_BTRC, "btrc_status_bits_lost",
     "of a bus status the words and all bits but bus off, warning and passive are dropped",
     "a status with more becomes a text from which it is read again", "BtrcFrames.writeOtherStatusesAsTexts"},
    {Quirk::BtrcNotesLeftOut, XLATR_FORMAT_BTRC, "btrc_notes_left_out",
     "texts, bus loads, bit rates, overruns and unknown records are left out of every target, and nobody is told",
     "texts are comments, the others are events with their bytes", "BtrcFrames.keepWhatHasNoOtherHome"},
    {Quirk::BtrcStartIsUnscaled, XLATR_FORMAT_BTRC, "btrc_start_is_unscaled",
     "the time stamp of the start counts as microseconds, whatever the file's unit", "it has the file's unit",
     "BtrcFrames.countTheirStartInTheUnitOfTheFile"},
    {Quirk::BtrcStartFromDays, XLATR_FORMAT_BTRC, "btrc_start_from_days",
     "the start is what the source states as a number of days: its last microseconds are off, and a full second may be "
     "1,000,000 microseconds after the one before",
     "the start is exact to the microsecond", "BtrcFrames.haveTheirStartExact"},
    {Quirk::BtrcDamageEndsReading, XLATR_FORMAT_BTRC, "btrc_damage_ends_reading", "an impossible record ends the trace",
     "reading goes on at the next block, and the damage is counted", "BtrcFrames.areReadAroundDamage"},
}};
static_assert(standsInOrder(kQuirks, &QuirkInfo::quirk));

}  // namespace

std::span<const QuirkInfo, kQuirkCount> quirkTable() {
  return kQuirks;
}

}  // namespace xlatr
