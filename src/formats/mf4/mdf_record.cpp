#include "formats/mf4/mdf_record.hpp"

#include <algorithm>

#include "messages/fd_kind.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

// Bits of the flags byte.
constexpr std::uint8_t kSent = 0x01;
constexpr std::uint8_t kFd = 0x02;
constexpr std::uint8_t kBrs = 0x04;
constexpr std::uint8_t kEsi = 0x08;
constexpr std::uint8_t kExtended = 0x10;

std::uint8_t flagsOf(const MdfCanMessage& message) {
  const MessageKind kind = message.kind;
  const int sent = message.direction == MessageDirection::Tx ? kSent : 0;
  const int extended = message.extended && kind != MessageKind::ER ? kExtended : 0;
  const int fd = isFd(kind) ? kFd : 0;
  const int brs = hasBrs(kind) ? kBrs : 0;
  const int esi = hasEsi(kind) ? kEsi : 0;
  return static_cast<std::uint8_t>(sent | fd | brs | esi | extended);
}

}  // namespace

template <class Number>
void MdfRecord::put(Number value) {
  storeLittle(bytes_.data() + size_, value);
  size_ += sizeof(Number);
}

void MdfRecord::putPayload(const MdfCanMessage& message, std::size_t room) {
  const std::size_t count = std::min({message.data.size(), std::size_t{message.length}, room});
  std::copy_n(message.data.begin(), count, bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
  std::fill_n(bytes_.begin() + static_cast<std::ptrdiff_t>(size_ + count), room - count, std::uint8_t{0});
  size_ += room;
}

std::string_view MdfRecord::render(const MdfCanMessage& message, const MdfLayoutOptions& options,
                                   std::uint64_t signalDataOffset) {
  size_ = 0;
  if (!options.isSorted()) {
    put(message.frameKind);
  }
  put(RealNanoseconds(message.time).count());
  const bool isError = message.kind == MessageKind::ER;
  if (!isError) {
    put(message.id);
  }
  put(static_cast<std::uint8_t>(message.bus));
  put(flagsOf(message));
  if (isError) {
    put(message.errorType);
    put(message.bitPosition);
  } else {
    put(static_cast<std::uint8_t>(message.dlc));
    put(static_cast<std::uint8_t>(message.length));
    if (isSignalDataFrame(options, message.kind)) {
      put(signalDataOffset);
    } else if (message.kind != MessageKind::RR) {
      putPayload(message, mdfPayloadSize(options));
    }
  }
  return {reinterpret_cast<const char*>(bytes_.data()), size_};
}

}  // namespace xlatr
