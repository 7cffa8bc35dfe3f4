#include "formats/mf4/mdf_payload_choice.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "formats/mf4/block_base.hpp"
#include "formats/mf4/mdf_frame_output.hpp"
#include "formats/mf4/zipped_bytes.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

constexpr std::size_t kLongPayload = 64;

void appendBytes(Bytes& bytes, std::span<const std::uint8_t> more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

// What the two forms have that the other has not: a payload that is filled up; its place, its length, itself.
struct Forms {
  Bytes longRecords;
  Bytes storedRecords;
  Bytes values;
  std::array<std::uint64_t, MdfFrameOutput::kBusCount> nextPlaces{};  // of the signal data of each bus

  void add(const Frame& frame) {
    const auto length = static_cast<std::uint32_t>(frame.data.size());
    appendBytes(longRecords, frame.data);
    longRecords.resize(longRecords.size() + kLongPayload - length);
    std::uint64_t& place = nextPlaces[frame.bus];
    storeLittle(growBytes(storedRecords, sizeof(place)), place);
    storeLittle(growBytes(values, sizeof(length)), length);
    appendBytes(values, frame.data);
    place += sizeof(length) + length;
  }
};

std::size_t sizeInFile(const Bytes& bytes, bool zipped) {
  if (!zipped) {
    return bytes.size();
  }
  std::vector<std::uint8_t> squeezed;
  deflateInto(bytes, squeezed);
  return squeezed.size();
}

}  // namespace

MdfPayload shorterPayload(const FrameBatch& frames, bool zipped) {
  Forms forms;
  for (std::size_t row = 0; row < frames.size(); ++row) {
    const Frame frame = frames.at(row);
    if (frame.kind == FrameKind::Data && frame.has(frame_flag::kFd)) {
      forms.add(frame);
    }
  }
  const auto blocks =
      static_cast<std::size_t>(std::ranges::count_if(forms.nextPlaces, [](std::uint64_t place) { return place != 0; }));
  const std::size_t stored =
      sizeInFile(forms.storedRecords, zipped) + sizeInFile(forms.values, zipped) + blocks * kHeaderSectionSize;
  return stored < sizeInFile(forms.longRecords, zipped) ? MdfPayload::Stored : MdfPayload::Long;
}

}  // namespace xlatr
