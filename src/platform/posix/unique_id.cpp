#include "platform/unique_id.hpp"

#include <sys/random.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace xlatr::platform {

std::optional<UniqueId> makeUniqueId() {
  std::array<std::uint8_t, 16> bytes{};
  ssize_t count = 0;
  do {
    count = ::getrandom(bytes.data(), bytes.size(), 0);
  } while (count == -1 && errno == EINTR);
  if (count != static_cast<ssize_t>(bytes.size())) {
    return std::nullopt;
  }
  UniqueId id;
  id.data1 = std::uint32_t{bytes[0]} | std::uint32_t{bytes[1]} << 8U | std::uint32_t{bytes[2]} << 16U |
             std::uint32_t{bytes[3]} << 24U;
  id.data2 = static_cast<std::uint16_t>(bytes[4] | bytes[5] << 8);
  id.data3 = static_cast<std::uint16_t>((bytes[6] | bytes[7] << 8 | 0x4000) & 0x4FFF);
  std::copy(bytes.begin() + 8, bytes.end(), id.data4.begin());
  id.data4[0] = static_cast<std::uint8_t>((id.data4[0] | 0x80) & 0xBF);
  return id;
}

}  // namespace xlatr::platform
