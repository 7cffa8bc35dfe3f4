#include "formats/native/session_message.hpp"

namespace xlatr {

bool SessionMessage::getValid() const {
  constexpr std::uint32_t kIdentifiersEnd = 0x20000000;
  if (entry.id < kIdentifiersEnd) {
    return true;
  }
  return entry.id == MsgEntry::kNoId && entry.isError() && entry.getSource() != MsgEntry::kLoggerSource;
}

}  // namespace xlatr
