// From the messages of other formats to those of LIN traces: one function per class that a LIN writer takes.
#pragma once

#include "formats/blf/blf_message.hpp"
#include "formats/lin/lin_message.hpp"

namespace xlatr {

// A bus event has its text as data and no error flags. Nothing is raised.
void mapToLin(const BlfLinMessage& source, KorlMessage& target);

}  // namespace xlatr
