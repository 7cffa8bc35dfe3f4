// From the messages of other formats to those of TRC traces: one function per class that a TRC writer takes.
#pragma once

#include "formats/asc/asc_message.hpp"
#include "formats/blf/blf_message.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/native/session_message.hpp"
#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_message.hpp"

namespace xlatr {

// The kind comes from the flags of the frame. Error counters keep the missing identifier of their line; an error
// frame has the type of its ECC as identifier and direction and position as data; of a status text only the bits of
// words that TRC knows remain.
void mapToTrc(const AscMessage& source, BrixMessage& target);
// An error frame of two bytes holds error counters. The bytes of an error are copied, since they are the error.
void mapToTrc(const SessionMessage& source, BrixMessage& target);

// An error frame has the identifier of its type, one bit each for bit, form, stuff and other errors, and its position
// as data, counted as CAN controllers do.
void mapToTrc(const MdfCanMessage& source, BrixMessage& target);
// The text of a record that is no frame becomes the parsing text, which appears in no file.
void mapToTrc(const ZelkBinaryMessage& source, BrixMessage& target);

// A remote frame loses its length with its data, since logs keep neither. An error frame follows from its ECC as above.
void mapToTrc(const BlfCanMessage& source, BrixMessage& target);

}  // namespace xlatr
