#include "tracegen/traffic_model.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace tracegen {
namespace {

constexpr std::uint32_t kRateScale = 10000;

// Periods in milliseconds, in the order in which the identifiers of a bus take them: any first part of the table is
// a mix.
constexpr std::array<std::uint32_t, 14> kPeriodsMs{20, 100, 10, 50, 200, 100, 1000, 20, 100, 500, 50, 100, 200, 1000};
constexpr std::uint32_t kMaxJitterUs = 2000;

constexpr std::uint32_t kLowestBaseId = 0x080;
constexpr std::uint32_t kBaseIds = 0x700;
static_assert(kBaseIds / 3 >= kMaxIdentifiers, "each identifier of a bus needs an id of its own");
constexpr std::uint32_t kExtendedOneIn = 3;
constexpr std::uint32_t kTransmittedOneIn = 8;

constexpr std::array<std::uint32_t, 9> kClassicLengths{8, 0, 1, 2, 3, 4, 5, 6, 7};
constexpr std::array<std::uint32_t, 8> kXlLengths{1, 8, 64, 65, 200, 512, 1025, 2048};

// An identifier of a vehicle network: priority, parameter group and source address.
constexpr std::uint32_t makeExtendedId(std::uint32_t priority, std::uint32_t group, std::uint32_t source) {
  return (priority << 26U) | (group << 8U) | source;
}

// Time on the bus at 500 kbit/s, and 2 Mbit/s after a bit-rate switch; ten percent for stuffed bits.
std::uint32_t classicDurationUs(bool extended, std::uint32_t dataLength) {
  const std::uint32_t bits = 47 + (extended ? 20 : 0) + 8 * dataLength;
  return bits * 2 * 11 / 10;
}

std::uint32_t fdDurationUs(bool extended, bool bitRateSwitch, std::uint32_t dataLength) {
  const std::uint32_t slowBits = 30U + (extended ? 20U : 0U);
  const std::uint32_t fastBits = 30U + 8U * dataLength;
  return (slowBits * 2 + (bitRateSwitch ? fastBits / 2 : fastBits * 2)) * 11 / 10;
}

// 10 Mbit/s after the arbitration.
std::uint32_t xlDurationUs(std::uint32_t dataLength) {
  return 60 + (150 + 8 * dataLength) / 10;
}

constexpr std::array<std::string_view, 10> kEvents{
    "Ignition on",    "Engine running",  "Driver door open",  "Driver door closed", "Gear D",
    "Cruise control", "Wipers interval", "Tunnel, lights on", "Ambient 7 degrees",  "Marker set by the driver",
};
constexpr std::array<std::string_view, 6> kComments{
    "road wet", "motorway", "stop and go", "roundabout, second exit", "change of driver", "cobblestones",
};

// The sender's number makes the order total, so that every implementation of a heap hands out the same sequence.
constexpr auto kLater = [](const auto& left, const auto& right) {
  if (left.dueUs != right.dueUs) {
    return left.dueUs > right.dueUs;
  }
  return left.priority != right.priority ? left.priority > right.priority : left.sender > right.sender;
};

}  // namespace

void TrafficOptions::makePlain() {
  fdShare = 0;
  xlShare = 0;
  remoteRate = 0;
  disturbanceRate = 0;
  eventRate = 0;
  commentRate = 0;
}

TrafficModel::TrafficModel(const TrafficOptions& options) : random_(options.seed), options_(options) {
  for (std::uint32_t busIndex = 0; busIndex < options.buses; ++busIndex) {
    buses_.push_back({.health = BusHealth(static_cast<std::uint8_t>(busIndex + 1))});
    addSenders(busIndex, options);
  }
  for (std::uint32_t index = 0; index < senders_.size(); ++index) {
    const Sender& sender = senders_[index];
    const std::uint32_t priority = sender.extended ? sender.canId : sender.canId << 18U;
    queue_.push_back({.dueUs = sender.nominalUs, .priority = priority, .sender = index});
  }
  std::make_heap(queue_.begin(), queue_.end(), kLater);
}

void TrafficModel::addSenders(std::uint32_t busIndex, const TrafficOptions& options) {
  bool firstFd = true;
  bool firstXl = true;
  bool firstClassic = true;
  // Spreads the shares evenly over the table: an identifier takes a protocol when the rounded share grows.
  const auto grows = [](std::uint32_t index, std::uint32_t share) {
    return (index + 1) * share / 100 != index * share / 100;
  };
  for (std::uint32_t index = 0; index < options.identifiers; ++index) {
    if (grows(index, options.xlShare)) {
      senders_.push_back(makeSender(busIndex, index, Protocol::Xl, firstXl));
      firstXl = false;
    } else if (grows(index, options.fdShare + options.xlShare)) {
      senders_.push_back(makeSender(busIndex, index, Protocol::Fd, firstFd));
      firstFd = false;
    } else {
      senders_.push_back(makeSender(busIndex, index, Protocol::Classic, firstClassic));
      firstClassic = false;
    }
  }
}

TrafficModel::Sender TrafficModel::makeSender(std::uint32_t busIndex, std::uint32_t index, Protocol protocol,
                                              bool first) {
  const bool extended = protocol != Protocol::Xl && index % kExtendedOneIn == kExtendedOneIn - 1;
  const std::uint32_t periodUs = kPeriodsMs[index % kPeriodsMs.size()] * 1000;
  // What is sent often has the higher priority, as network designers assign it.
  const std::uint32_t urgency = periodUs <= 20000 ? 0 : periodUs <= 100000 ? 1 : 2;
  // Identifiers are distinct within a bus: each index draws from its own range.
  constexpr std::uint32_t kIdsOfUrgency = kBaseIds / 3;
  const std::uint32_t range = kIdsOfUrgency / options_.identifiers;
  const std::uint32_t baseId = kLowestBaseId + urgency * kIdsOfUrgency + index * range + random_.below(range);
  const std::uint32_t group = 0xF000U + index * 4 + random_.below(4);
  const std::uint32_t source = random_.below(0x30);
  const std::uint32_t canId = extended ? makeExtendedId(3 + urgency, group, source) : baseId;

  std::uint32_t dataLength = random_.oneIn(4) ? 1 + random_.below(7) : 8;
  if (protocol == Protocol::Fd) {
    dataLength = kFdLengths[8 + random_.below(8)];
  } else if (protocol == Protocol::Xl) {
    dataLength = 1 + random_.below(256);
  }
  // The first identifier of each protocol uses all lengths in turn; a transport channel would.
  constexpr std::array<std::uint32_t, 3> kLongest{8, kFdLengths.back(), kMaxDataLength};
  const std::uint32_t maxLength = first ? kLongest[static_cast<std::size_t>(protocol)] : dataLength;
  return {.payload = Payload(maxLength, random_),
          .nominalUs = random_.below(periodUs),
          .periodUs = periodUs,
          .jitterUs = std::min(periodUs / 20, kMaxJitterUs),
          .canId = canId,
          .dataLength = dataLength,
          .busIndex = static_cast<std::uint8_t>(busIndex),
          .protocol = protocol,
          .extended = extended,
          .transmitted = random_.oneIn(kTransmittedOneIn),
          .varyingLength = first,
          .bitRateSwitch = protocol == Protocol::Fd && !random_.oneIn(3)};
}

const Entry& TrafficModel::next() {
  if (note_ != Note::None) {
    writeNote();
    return entry_;
  }
  for (;;) {
    const Slot slot = queue_.front();
    if (healthDueUs_ <= slot.dueUs) {
      writeHealth();
      return entry_;
    }
    const std::uint64_t freeUs = buses_[senders_[slot.sender].busIndex].freeUs;
    if (freeUs <= slot.dueUs) {
      writeFrame(slot);
      return entry_;
    }
    // Waits for the bus, and then takes part in the arbitration with all others that wait.
    requeueFirst(freeUs);
  }
}

void TrafficModel::requeueFirst(std::uint64_t dueUs) {
  std::pop_heap(queue_.begin(), queue_.end(), kLater);
  queue_.back().dueUs = dueUs;
  std::push_heap(queue_.begin(), queue_.end(), kLater);
}

void TrafficModel::writeHealth() {
  for (Bus& bus : buses_) {
    if (bus.health.dueUs() == healthDueUs_) {
      bus.health.next(entry_, random_);
      if (entry_.kind == EntryKind::ErrorFrame) {
        bus.freeUs = std::max(bus.freeUs, entry_.timeUs + 46);  // error flags and delimiter
      }
      break;
    }
  }
  updateHealthDue();
}

void TrafficModel::updateHealthDue() {
  healthDueUs_ = BusHealth::kNever;
  for (const Bus& bus : buses_) {
    healthDueUs_ = std::min(healthDueUs_, bus.health.dueUs());
  }
}

// Written directly after the frame that caused it: time and bus are still those of that frame.
void TrafficModel::writeNote() {
  ++notes_;
  text_.clear();
  if (note_ == Note::Event) {
    text_.append(kEvents[random_.below(kEvents.size())]);
    entry_.kind = EntryKind::Event;
  } else {
    text_.append("Note ")
        .append(std::to_string(notes_))
        .append(": ")
        .append(kComments[random_.below(kComments.size())]);
    entry_.kind = EntryKind::Comment;
    entry_.bus = 0;
  }
  entry_.dataLength = 0;
  entry_.text = text_;
  note_ = Note::None;
}

void TrafficModel::writeFrame(const Slot& slot) {
  Sender& sender = senders_[slot.sender];
  Bus& bus = buses_[sender.busIndex];
  rollIncident(sender, slot.dueUs);

  entry_.timeUs = slot.dueUs;
  entry_.bus = static_cast<std::uint8_t>(sender.busIndex + 1);
  entry_.extended = sender.extended;
  entry_.transmitted = sender.transmitted;
  entry_.bitRateSwitch = sender.bitRateSwitch;
  entry_.errorStateIndicator = false;
  entry_.canId = sender.canId;
  if (remoteDue_) {
    remoteDue_ = false;
    sender.requested = true;
    entry_.kind = EntryKind::Remote;
    entry_.dataLength = sender.dataLength;
    // Requested by the other side.
    entry_.transmitted = !sender.transmitted;
    const std::uint64_t endUs = slot.dueUs + classicDurationUs(sender.extended, 0);
    bus.freeUs = endUs;
    requeueFirst(endUs + 20 + random_.below(100));
    return;
  }
  sender.requested = false;
  writeData(sender);
  switch (sender.protocol) {
    case Protocol::Classic:
      bus.freeUs = slot.dueUs + classicDurationUs(sender.extended, entry_.dataLength);
      break;
    case Protocol::Fd:
      bus.freeUs = slot.dueUs + fdDurationUs(sender.extended, entry_.bitRateSwitch, entry_.dataLength);
      break;
    case Protocol::Xl:
      bus.freeUs = slot.dueUs + xlDurationUs(entry_.dataLength);
      break;
  }
  // A bus with more to send than it can carry falls behind: what is overdue is dropped, not sent in a heap later.
  sender.nominalUs = std::max(sender.nominalUs + sender.periodUs, slot.dueUs);
  requeueFirst(std::max(sender.nominalUs + random_.below(sender.jitterUs + 1), bus.freeUs));
}

void TrafficModel::writeData(Sender& sender) {
  std::uint32_t length = sender.dataLength;
  if (sender.varyingLength) {
    switch (sender.protocol) {
      case Protocol::Classic:
        length = kClassicLengths[sender.lengthStep % kClassicLengths.size()];
        break;
      case Protocol::Fd:
        length = kFdLengths[sender.lengthStep % kFdLengths.size()];
        // Half of the rounds at the lower rate, so that each length appears with and without the switch.
        entry_.bitRateSwitch = sender.lengthStep / kFdLengths.size() % 2 == 0;
        break;
      case Protocol::Xl:
        length = kXlLengths[sender.lengthStep % kXlLengths.size()];
        break;
    }
    ++sender.lengthStep;
  }
  if (sender.protocol == Protocol::Fd) {
    // A sender becomes error passive rarely and recovers soon.
    if (random_.oneIn(sender.errorPassive ? 8 : 64)) {
      sender.errorPassive = !sender.errorPassive;
    }
    entry_.errorStateIndicator = sender.errorPassive;
  }
  constexpr std::array<EntryKind, 3> kKinds{EntryKind::Data, EntryKind::FdData, EntryKind::XlData};
  entry_.kind = kKinds[static_cast<std::size_t>(sender.protocol)];
  entry_.dataLength = length;
  sender.payload.fill(std::span(entry_.data).first(length), random_);
}

void TrafficModel::rollIncident(Sender& sender, std::uint64_t nowUs) {
  if (sender.requested) {
    return;
  }
  std::uint32_t roll = random_.below(kRateScale);
  const auto falls = [&roll](std::uint32_t rate) {
    const bool hit = roll < rate;
    roll -= hit ? 0 : rate;
    return hit;
  };
  if (falls(options_.remoteRate)) {
    // CAN FD and CAN XL have no remote frames.
    remoteDue_ = sender.protocol == Protocol::Classic && !sender.varyingLength;
  } else if (falls(options_.disturbanceRate)) {
    Bus& bus = buses_[sender.busIndex];
    bus.health.disturb(nowUs, random_);
    updateHealthDue();
  } else if (falls(options_.eventRate)) {
    note_ = Note::Event;
  } else if (falls(options_.commentRate)) {
    note_ = Note::Comment;
  }
}

}  // namespace tracegen
