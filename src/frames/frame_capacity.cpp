#include "frames/frame_capacity.hpp"

namespace xlatr {
namespace {

constexpr std::uint16_t kDirection = frame_flag::kReceived | frame_flag::kTransmitted;
constexpr std::uint16_t kBits = frame_flag::kBrs | frame_flag::kEsi;

bool hasIdentifier(FrameKind kind) {
  return kind == FrameKind::Data || kind == FrameKind::Remote;
}

std::int64_t rounded(std::int64_t time, std::int64_t resolution) {
  const std::int64_t rest = time % resolution;
  const std::int64_t whole = time - rest;
  if (rest >= resolution - rest) {
    return whole + resolution;
  }
  return -rest >= resolution + rest ? whole - resolution : whole;
}

}  // namespace

std::optional<Remark> whyNotHeld(const FrameCapacity& capacity, const Frame& frame) {
  if (!capacity.holds(frame.kind)) {
    return Remark::KindNotHeld;
  }
  if (frame.has(frame_flag::kXl) && !capacity.xl) {
    return Remark::XlNotHeld;
  }
  if (frame.has(frame_flag::kFd) && !capacity.fd) {
    return Remark::FdNotHeld;
  }
  if (hasIdentifier(frame.kind) && !frame.has(frame_flag::kXl) && frame.data.size() > capacity.longestData) {
    return Remark::LengthNotHeld;
  }
  if (capacity.namesBuses() && (frame.bus < capacity.lowestBus || frame.bus > capacity.highestBus)) {
    return Remark::BusNotHeld;
  }
  if (frame.timeNs < capacity.earliestNs || frame.timeNs > capacity.latestNs) {
    return Remark::TimeNotHeld;
  }
  return std::nullopt;
}

Frame reducedTo(const FrameCapacity& capacity, const Frame& frame, Account& account) {
  Frame reduced = frame;
  const auto lose = [&](bool held, std::uint16_t flags, Remark remark) {
    if (!held && reduced.has(flags)) {
      reduced.unset(flags);
      account.note(remark, frame.place);
    }
  };
  lose(capacity.direction, kDirection, Remark::DirectionLost);
  lose(capacity.bitsOfFd, kBits, Remark::BitsLost);
  if (frame.kind == FrameKind::Remote && !capacity.remoteDlc) {
    lose(false, frame_flag::kDlcKnown, Remark::DlcLost);
    reduced.dlc = 0;
  }
  if (!capacity.namesBuses()) {
    reduced.bus = 0;
  }
  if (const std::uint32_t lost = frame.attributes.present() & ~capacity.attributes; lost != 0) {
    reduced.attributes = frame.attributes.only(capacity.attributes);
    account.note(Remark::DetailLost, frame.place);
  }
  reduced.timeNs = rounded(frame.timeNs, capacity.resolutionNs);
  if (reduced.timeNs != frame.timeNs) {
    account.note(Remark::TimeRounded, frame.place);
  }
  return reduced;
}

}  // namespace xlatr
