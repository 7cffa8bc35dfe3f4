// The traffic itself: an endless sequence of entries on a few buses, made from a seed.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tracegen/bus_health.hpp"
#include "tracegen/entry.hpp"
#include "tracegen/payload.hpp"
#include "tracegen/random.hpp"

namespace tracegen {

inline constexpr std::uint32_t kMaxBuses = 16;
inline constexpr std::uint32_t kMaxIdentifiers = 128;  // what a bus can just carry

struct TrafficOptions {
  std::uint64_t seed = 1;
  std::uint32_t buses = 3;         // 1 to kMaxBuses
  std::uint32_t identifiers = 28;  // per bus, 1 to kMaxIdentifiers
  std::uint32_t fdShare = 20;      // percent of the identifiers
  std::uint32_t xlShare = 0;       // percent of the identifiers, together with fdShare at most 100
  // How often something happens in 10,000 data frames.
  std::uint32_t remoteRate = 20;
  std::uint32_t disturbanceRate = 1;
  std::uint32_t eventRate = 2;
  std::uint32_t commentRate = 2;

  // Makes these options those of classic data frames and nothing else.
  void makePlain();
};

// Each bus has a table of identifiers, sent periodically with jitter, one frame at a time; if two wait for the bus, the
// one with the higher priority goes first. The same options give the same entries on every platform: the model uses no
// floating-point numbers and no random numbers of the standard library.
class TrafficModel {
 public:
  explicit TrafficModel(const TrafficOptions& options);

  // The next entry, valid until the next call.
  const Entry& next();

 private:
  enum class Protocol : std::uint8_t { Classic = 0, Fd = 1, Xl = 2 };
  enum class Note : std::uint8_t { None, Event, Comment };

  struct Bus {
    BusHealth health;
    std::uint64_t freeUs = 0;  // when the frame on it has ended
  };

  struct Sender {
    Payload payload;
    std::uint64_t nominalUs;  // the sending time without jitter
    std::uint32_t periodUs;
    std::uint32_t jitterUs;
    std::uint32_t canId;
    std::uint32_t dataLength;
    std::uint32_t lengthStep = 0;  // how many lengths a sender of varying length has used
    std::uint8_t busIndex;
    Protocol protocol;
    bool extended;
    bool transmitted;
    bool varyingLength;  // one frame of each length the protocol knows, in turn
    bool bitRateSwitch;
    bool errorPassive = false;
    bool requested = false;  // a remote frame has asked for the frame that comes next
  };

  // A sender's place in the queue.
  struct Slot {
    std::uint64_t dueUs;
    std::uint32_t priority;  // as on the bus, lower goes first
    std::uint32_t sender;
  };

  void addSenders(std::uint32_t busIndex, const TrafficOptions& options);
  Sender makeSender(std::uint32_t busIndex, std::uint32_t index, Protocol protocol, bool first);
  void requeueFirst(std::uint64_t dueUs);
  void writeHealth();
  void writeNote();
  void writeFrame(const Slot& slot);
  void writeData(Sender& sender);
  void rollIncident(Sender& sender, std::uint64_t nowUs);
  void updateHealthDue();

  Random random_;
  TrafficOptions options_;
  std::vector<Bus> buses_;
  std::vector<Sender> senders_;
  std::vector<Slot> queue_;  // a heap with the slot that is due first at the front
  std::uint64_t healthDueUs_ = BusHealth::kNever;
  std::uint32_t notes_ = 0;
  Note note_ = Note::None;
  bool remoteDue_ = false;  // the frame being written is to be asked for first
  Entry entry_;
  std::string text_;
};

}  // namespace tracegen
