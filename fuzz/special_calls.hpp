// The calls that can't be made from the prototypes alone: functions that hand out several objects, and those that
// promise more than their form says. scripts/public_api/object_calls.py lists these functions and makes the calls of
// all others.
#pragma once

#include <cstdint>
#include <span>

#include "objects.hpp"

namespace fuzz {

inline void convert(Objects& objects, Arguments& arguments) {
  objects.conversion().call(arguments);
}

inline void compareSizes(Objects& /*objects*/, Arguments& /*arguments*/) {
  require(SessionDescriptor_getSize() < DataSector_getSize());
}

// There is a session for each index below the count, and none beyond.
inline void getSession(Objects& objects, Arguments& arguments) {
  const BtrInfo* const info = objects.get<BtrInfo>();
  const std::uint32_t index = arguments.byte();
  objects.put<BtrSessionEntry_Destruct>(BtrInfo_GetSession(info, index));
  require((objects.get<BtrSessionEntry>() != nullptr) == (index < BtrInfo_getSessionsCount(info)));
}

// All messages are released but the last, which is the one that writers get.
inline void takeMessages(Objects& objects, SessionMessage** messages, std::uint32_t count) {
  for (SessionMessage* const message : std::span<SessionMessage*>(messages, count)) {
    objects.putMessage<SessionMessage_Destruct>(message);
  }
  BtrSessionReader_DeleteSectors(messages);
}

// A frame that makes no sense ends the sector with a failure; the messages before it were handed out by then.
inline void readSector(Objects& objects, Arguments& arguments) {
  SessionMessage** messages = nullptr;
  std::uint32_t count = 0;
  std::uint32_t size = 0;
  try {
    const bool read = BtrSessionReader_ReadNextSector(objects.get<BtrSessionReader>(), &messages, &count,
                                                      arguments.isNull() ? nullptr : &size);
    require(read || messages == nullptr);
  } catch (const xlatr::ConverterGenericException&) {
    takeMessages(objects, messages, count);
    throw;
  }
  takeMessages(objects, messages, count);
}

// The text is empty for a file that can be converted.
inline void validateFile(Objects& objects, Arguments& arguments) {
  TextBuffer reason(arguments);
  const bool convertible = MdfReader_ValidateFile(objects.get<MdfReader>(), reason.data(), reason.size());
  reason.requireText();
  if (convertible) {
    reason.requireTextOf(0);
  }
}

// A date compares as equal to itself.
inline void compareDates(Objects& objects, Arguments& arguments) {
  const BtrSessionEntry* const entry = objects.get<BtrSessionEntry>();
  const SessionDateTime* const date =
      entry == nullptr ? nullptr : SessionDescriptor_getDateAndTime(BtrSessionEntry_getDescription(entry));
  require(SessionDateTime_compareTo(date, arguments.isNull() ? nullptr : date) == 0);
}

}  // namespace fuzz
