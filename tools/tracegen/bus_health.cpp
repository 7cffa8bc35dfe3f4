#include "tracegen/bus_health.hpp"

#include <algorithm>
#include <array>

namespace tracegen {
namespace {

// The limits of a CAN controller's error counters and the bits that its status word shows beyond them.
constexpr std::uint32_t kWarningLimit = 96;
constexpr std::uint32_t kPassiveLimit = 128;
constexpr std::uint32_t kBusOffLimit = 256;
constexpr std::uint32_t kStatusWarning = 8;
constexpr std::uint32_t kStatusBusOff = 16;
constexpr std::uint32_t kStatusPassive = 0x40000;

constexpr std::uint32_t kCounterStep = 8;     // what an error adds
constexpr std::uint32_t kRecoveryStep = 16;   // what the frames between two counter lines take away again
constexpr std::uint32_t kReceiveLimit = 135;  // a receiver's counter rises no further
constexpr std::uint32_t kBitPositions = 32;

// Bit error, form error, stuff error, any other.
constexpr std::array<std::uint8_t, 4> kErrorTypes{1, 2, 4, 8};

// Most disturbances are short; the rare long ones take the interface off the bus.
std::uint32_t burstLength(Random& random) {
  switch (random.below(16)) {
    case 0:
      return 33 + random.below(8);
    case 1:
    case 2:
    case 3:
      return 12 + random.below(12);
    default:
      return 1 + random.below(4);
  }
}

std::uint8_t shown(std::uint32_t counter) {
  return static_cast<std::uint8_t>(std::min<std::uint32_t>(counter, 0xFF));
}

}  // namespace

void BusHealth::disturb(std::uint64_t nowUs, Random& random) {
  errorsLeft_ += burstLength(random);
  if (dueUs_ == kNever) {
    transmitting_ = random.oneIn(3);
    step_ = Step::ErrorFrame;
    dueUs_ = nowUs + 50 + random.below(150);
  }
}

void BusHealth::next(Entry& entry, Random& random) {
  entry.timeUs = dueUs_;
  entry.bus = bus_;
  entry.extended = false;
  entry.transmitted = false;
  entry.canId = 0;
  switch (step_) {
    case Step::ErrorFrame:
      writeErrorFrame(entry, random);
      step_ = Step::Counters;
      dueUs_ += 10;
      return;
    case Step::Counters:
      entry.kind = EntryKind::ErrorCounters;
      entry.dataLength = 2;
      entry.data[0] = shown(receiveErrors_);
      entry.data[1] = shown(transmitErrors_);
      if (statusWord() != reportedStatus_) {
        step_ = Step::Status;
        dueUs_ += 5;
        return;
      }
      break;
    case Step::Status:
      reportedStatus_ = statusWord();
      entry.kind = EntryKind::Status;
      entry.dataLength = 4;
      entry.data[0] = static_cast<std::uint8_t>(reportedStatus_ >> 24U);
      entry.data[1] = static_cast<std::uint8_t>(reportedStatus_ >> 16U);
      entry.data[2] = static_cast<std::uint8_t>(reportedStatus_ >> 8U);
      entry.data[3] = static_cast<std::uint8_t>(reportedStatus_);
      if (reportedStatus_ == kStatusBusOff) {
        // The controller is restarted with counters of zero; that ends the burst for this interface.
        receiveErrors_ = 0;
        transmitErrors_ = 0;
        errorsLeft_ = 0;
        step_ = Step::Counters;
        dueUs_ += 20000;
        return;
      }
      break;
  }
  planNext(random);
}

void BusHealth::writeErrorFrame(Entry& entry, Random& random) {
  --errorsLeft_;
  if (transmitting_) {
    transmitErrors_ += kCounterStep;
  } else {
    receiveErrors_ = std::min(receiveErrors_ + kCounterStep, kReceiveLimit);
  }
  entry.kind = EntryKind::ErrorFrame;
  entry.dataLength = 5;
  entry.data[0] = kErrorTypes[random.below(kErrorTypes.size())];
  entry.data[1] = transmitting_ ? 0 : 1;
  entry.data[2] = static_cast<std::uint8_t>(random.below(kBitPositions));
  entry.data[3] = shown(receiveErrors_);
  entry.data[4] = shown(transmitErrors_);
}

void BusHealth::planNext(Random& random) {
  if (errorsLeft_ > 0) {
    step_ = Step::ErrorFrame;
    dueUs_ += 150 + random.below(300);
  } else if (receiveErrors_ + transmitErrors_ > 0) {
    receiveErrors_ -= std::min(receiveErrors_, kRecoveryStep);
    transmitErrors_ -= std::min(transmitErrors_, kRecoveryStep);
    step_ = Step::Counters;
    dueUs_ += 15000 + random.below(15000);
  } else {
    dueUs_ = kNever;
  }
}

std::uint32_t BusHealth::statusWord() const {
  const std::uint32_t worst = std::max(receiveErrors_, transmitErrors_);
  if (worst >= kBusOffLimit) {
    return kStatusBusOff;
  }
  if (worst >= kPassiveLimit) {
    return kStatusPassive;
  }
  return worst >= kWarningLimit ? kStatusWarning : 0;
}

}  // namespace tracegen
