// From the messages of other formats to those of TRC traces: one function a class that a TRC writer takes.
#pragma once

#include "formats/asc/asc_message.hpp"
#include "formats/blf/blf_message.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/native/session_message.hpp"
#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// The kind comes from the flags of the frame. Error counters keep the identifier of their line, which is none; an error
// frame has the type of its ECC as identifier and direction and position as data; of a status text only the bits of the
// words that TRC knows are left.
void mapToTrc(const AscMessage& source, BrixMessage& target);
// An error frame of two bytes holds error counters. The bytes of an error are copied, since they are the error.
void mapToTrc(const SessionMessage& source, BrixMessage& target);

// An error frame has the identifier of its type, one bit each for bit, form, stuff and other errors, and its position
// as data, counted as CAN controllers do.
void mapToTrc(const MdfCanMessage& source, BrixMessage& target);
// The text of a record that is no frame becomes the parsing text, which no file shows.
void mapToTrc(const ZelkBinaryMessage& source, BrixMessage& target);

// A remote frame loses its length with its data, which no log keeps. An error frame is told by its ECC as above.
void mapToTrc(const BlfCanMessage& source, BrixMessage& target);

}  // namespace xlatr
