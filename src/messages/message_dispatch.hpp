// Finds the class of a message.
#pragma once

#include <type_traits>
#include <typeinfo>

#include "messages/message.hpp"

namespace xlatr {

// The message classes that a writer accepts, in the order in which it tries them.
template <class... Classes>
struct MessageClasses {};

// Calls `take` with the message as the class of the list that it has, and returns whether there was one. The classes
// are final, so comparing the type gives the same result as a checked down-cast, in a fraction of its time. All of them
// are the library's own and hidden in it, so each type has a single description and comparing addresses is enough;
// comparing the descriptions themselves would compare names if they differ.
template <class Take, class... Classes>
bool dispatchMessage(MessageClasses<Classes...> /*accepted*/, const IMessage& message, Take&& take) {
  static_assert((std::is_final_v<Classes> && ...));
  const auto tryClass = [&]<class Class>(std::type_identity<Class> /*tag*/) {
    if (&typeid(message) != &typeid(Class)) {
      return false;
    }
    take(static_cast<const Class&>(message));
    return true;
  };
  return (tryClass(std::type_identity<Classes>{}) || ...);
}

}  // namespace xlatr
