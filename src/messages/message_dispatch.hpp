// Finds out of which class a message is.
#pragma once

#include <type_traits>
#include <typeinfo>

#include "messages/message.hpp"

namespace xlatr {

// The message classes that a writer accepts, in the order in which it tries them.
template <class... Classes>
struct MessageClasses {};

// Calls `take` with the message as the first class of the list that it is of, and answers whether there was one. The
// classes are final, so that comparing the type says what a checked down-cast would, in a fraction of its time. All of
// them are the library's own and hidden in it, so that a type has one description and its address will do: comparing
// the descriptions themselves would compare names wherever they differ.
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
