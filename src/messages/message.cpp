#include "messages/message.hpp"

namespace xlatr {

// Out of line, so that one object file holds the class's virtual table.
IMessage::~IMessage() = default;

}  // namespace xlatr
