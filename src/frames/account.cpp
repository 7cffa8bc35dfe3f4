#include "frames/account.hpp"

#include <algorithm>

#include "util/enum_order.hpp"
#include "util/hex.hpp"
#include "util/utf8.hpp"

namespace xlatr {
namespace {

constexpr std::array<RemarkInfo, kRemarkCount> kRemarks = {{
    {Remark::NotSelected, RemarkClass::Selection, "not_selected", "it was not asked for"},
    {Remark::LineNotUnderstood, RemarkClass::Damage, "line_not_understood", "the line can't be understood"},
    {Remark::RecordNotUnderstood, RemarkClass::Damage, "record_not_understood", "the record can't be understood"},
    {Remark::SourceCut, RemarkClass::Damage, "source_cut", "the source ends in the middle of it"},
    {Remark::TextCut, RemarkClass::Damage, "text_cut", "the text is longer than a million bytes"},
    {Remark::BusGuessed, RemarkClass::Guess, "bus_guessed", "the source names no bus"},
    {Remark::LengthGuessed, RemarkClass::Guess, "length_guessed", "the source states no length"},
    {Remark::DirectionGuessed, RemarkClass::Guess, "direction_guessed", "the source states no direction"},
    {Remark::DetailGuessed, RemarkClass::Guess, "detail_guessed",
     "the source does not state all that a line must have"},
    {Remark::TimeUnitGuessed, RemarkClass::Guess, "time_unit_guessed", "the source states no unit of its time"},
    {Remark::OtherBus, RemarkClass::PassedOver, "other_bus", "it belongs to no CAN or LIN bus"},
    {Remark::KindNotHeld, RemarkClass::NotHeld, "kind_not_held", "the target has no such kind of frame"},
    {Remark::FdNotHeld, RemarkClass::NotHeld, "fd_not_held", "the target has no CAN FD frames"},
    {Remark::XlNotHeld, RemarkClass::NotHeld, "xl_not_held", "the target has no CAN XL frames"},
    {Remark::LengthNotHeld, RemarkClass::NotHeld, "length_not_held", "the target has no frames of this length"},
    {Remark::IdentifierNotHeld, RemarkClass::NotHeld, "identifier_not_held", "the target has no such identifiers"},
    {Remark::BusNotHeld, RemarkClass::NotHeld, "bus_not_held", "the target has no such bus"},
    {Remark::TimeNotHeld, RemarkClass::NotHeld, "time_not_held", "the target has no such times"},
    {Remark::DetailNotHeld, RemarkClass::NotHeld, "detail_not_held", "the target has no place for what it says"},
    {Remark::TextNotHeld, RemarkClass::NotHeld, "text_not_held", "the target has no such texts"},
    {Remark::DirectionLost, RemarkClass::Reduced, "direction_lost", "the target keeps no direction"},
    {Remark::BusLost, RemarkClass::Reduced, "bus_lost", "the target names no buses"},
    {Remark::DlcLost, RemarkClass::Reduced, "dlc_lost", "the target keeps no DLC of such a frame"},
    {Remark::BitsLost, RemarkClass::Reduced, "bits_lost", "the target keeps neither BRS nor ESI"},
    {Remark::DetailLost, RemarkClass::Reduced, "detail_lost", "the target keeps no such details"},
    {Remark::TextLost, RemarkClass::Reduced, "text_lost", "the target keeps no such text"},
    {Remark::TimeRounded, RemarkClass::Reduced, "time_rounded", "the target's times are coarser"},
}};
static_assert(standsInOrder(kRemarks, &RemarkInfo::remark));

void count(Account::Count& counted, std::uint64_t frames, std::uint64_t place) {
  if (counted.frames == 0) {
    counted.first = place;
  }
  counted.frames += frames;
}

}  // namespace

const std::array<RemarkInfo, kRemarkCount>& remarkTable() {
  return kRemarks;
}

const RemarkInfo& infoOf(Remark remark) {
  return kRemarks.at(static_cast<std::size_t>(remark));
}

void Account::addCommented(Remark reason, std::uint64_t place) {
  ++commented_;
  count(commentedBy_[index(reason)], 1, place);
}

void Account::addDropped(Remark reason, std::uint64_t frames, std::uint64_t place) {
  dropped_ += frames;
  count(droppedBy_[index(reason)], frames, place);
}

void Account::note(Remark remark, std::uint64_t place) {
  count(notedBy_[index(remark)], 1, place);
}

void Account::note(Remark remark, std::uint64_t place, std::string_view line) {
  if (noted(remark).frames == 0) {
    constexpr std::size_t kShown = kLongestMet / 2;  // a byte of another encoding may become two
    std::string converted;
    met_[index(remark)] = asUtf8(line.substr(0, utf8Boundary(line, kShown)), converted);
  }
  note(remark, place);
}

void Account::note(Remark remark, std::uint64_t place, std::span<const std::uint8_t> record) {
  if (noted(remark).frames == 0) {
    constexpr std::size_t kShown = 12;
    std::string& met = met_[index(remark)];
    for (const std::uint8_t byte : record.first(std::min(kShown, record.size()))) {
      met.append(met.empty() ? "" : " ").append(hexPair(byte));
    }
  }
  note(remark, place);
}

bool Account::complete() const {
  const auto isNone = [](const Count& counted) { return counted.frames == 0; };
  return commented_ == 0 && dropped_ == dropped(Remark::NotSelected).frames && std::ranges::all_of(notedBy_, isNone);
}

bool Account::completeButForRounding() const {
  Account unrounded = *this;
  unrounded.notedBy_[index(Remark::TimeRounded)] = {};
  return unrounded.complete();
}

void Account::add(const Account& other) {
  read_ += other.read_;
  written_ += other.written_;
  commented_ += other.commented_;
  dropped_ += other.dropped_;
  const auto addCounts = [](Counts& counts, const Counts& more) {
    for (std::size_t at = 0; at < counts.size(); ++at) {
      if (more[at].frames != 0) {
        count(counts[at], more[at].frames, more[at].first);
      }
    }
  };
  for (std::size_t at = 0; at < met_.size(); ++at) {
    if (notedBy_[at].frames == 0) {
      met_[at] = other.met_[at];
    }
  }
  addCounts(commentedBy_, other.commentedBy_);
  addCounts(droppedBy_, other.droppedBy_);
  addCounts(notedBy_, other.notedBy_);
}

}  // namespace xlatr
