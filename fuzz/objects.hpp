// The objects that calls of the exported functions in any order work on: one of each family, or none.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>

#include "call_arguments.hpp"
#include "conversion_slot.hpp"
#include "xlatr/objects.h"

namespace fuzz {

// The objects of one run. All are released at its end.
class Objects {
 public:
  // The object of a family; null if there is none, which the library refuses with a failure of its own.
  template <typename Object>
  [[nodiscard]] Object* get() const {
    const auto slot = slots_.find(&kKey<Object>);
    return slot == slots_.end() ? nullptr : static_cast<Object*>(slot->second.get());
  }
  // Releases the object that was there before.
  template <auto kDestruct, typename Object>
  void put(Object* object) {
    Slot& slot = slots_.try_emplace(&kKey<Object>, nullptr, [](void* /*object*/) {}).first->second;
    forget(slot.get());
    slot = Slot(object, [](void* old) { kDestruct(static_cast<Object*>(old)); });
  }
  template <auto kDestruct, typename Info>
  void putInfo(Info* info) {
    put<kDestruct>(info);
    info_ = reinterpret_cast<const ITraceInfo*>(info);
  }
  template <auto kDestruct, typename Message>
  void putMessage(Message* message) {
    put<kDestruct>(message);
    message_ = reinterpret_cast<const IMessage*>(message);
  }
  // Leaves the object to the caller.
  template <typename Object>
  Object* release() {
    const auto slot = slots_.find(&kKey<Object>);
    if (slot == slots_.end()) {
      return nullptr;
    }
    forget(slot->second.get());
    return static_cast<Object*>(slot->second.release());
  }

  // The message and the information object that were handed out last; null if there is none.
  [[nodiscard]] const IMessage* message() const { return message_; }
  [[nodiscard]] const ITraceInfo* info() const { return info_; }

  [[nodiscard]] ConversionSlot& conversion() { return conversion_; }

 private:
  using Slot = std::unique_ptr<void, void (*)(void*)>;
  template <typename Object>
  static constexpr char kKey = 0;

  void forget(const void* object) {
    message_ = object == message_ ? nullptr : message_;
    info_ = object == info_ ? nullptr : info_;
  }

  std::map<const void*, Slot> slots_;
  const IMessage* message_ = nullptr;
  const ITraceInfo* info_ = nullptr;
  ConversionSlot conversion_;
};

// Does one thing to the objects.
using Call = void (*)(Objects&, Arguments&);
struct NumberedCall {
  std::uint16_t number;
  Call call;
};

// Every element can be read.
template <typename Element>
void requireArray(const Element* array, std::uint32_t size) {
  require(array != nullptr || size == 0);
  for (std::uint32_t index = 0; index < size; ++index) {
    require(!(array[index] < 0));
  }
}

// Keeps the message that is handed out.
template <auto kRead, auto kDestruct, typename Reader>
void readNext(Reader* reader, Objects& objects, Arguments& arguments) {
  constexpr auto kMessageOf = []<typename Message>(void (*)(Message*)) -> Message* { return nullptr; };
  auto* next = kMessageOf(kDestruct);
  const bool read = kRead(reader, arguments.isNull() ? nullptr : &next);
  require(read == (next != nullptr));
  if (read) {
    objects.putMessage<kDestruct>(next);
  }
}

}  // namespace fuzz
