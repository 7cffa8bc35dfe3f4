// What a rewritten source calls: each function acts as the operator that stood there, or as a mutant of it where the
// mutant with its number is chosen. One is chosen for the whole process, by XLATR_MUTANT. Included ahead of each
// source, so it includes nothing itself. Constant expressions are never mutated.
#pragma once

namespace mutants {

extern long chosen;             // 0 is none
extern unsigned char* reached;  // a byte for each mutant, or null

inline bool runs(int number) {
  if (reached != nullptr) {
    reached[number] = 1;
  }
  return chosen == number;
}

constexpr bool on(int number) {
  return !__builtin_is_constant_evaluated() && runs(number);
}

constexpr bool flip(int number, bool value) {
  return on(number) != value;
}

template <typename Number>
constexpr Number constant(int number, Number value) {
  return on(number) ? static_cast<Number>(value + 1) : value;
}

// One is also the size of the smallest step, so it becomes 0 and not 2.
template <typename Number>
constexpr Number one(int number, Number value) {
  return on(number) ? static_cast<Number>(value - 1) : value;
}

// A relation has two mutants: its boundary, and its negation.
#define XLATR_RELATION(name, original, boundary, negation)                                                \
  template <typename Left, typename Right>                                                                \
  constexpr bool name(int number, const Left& left, const Right& right) {                                 \
    return on(number) ? left boundary right : on(number + 1) ? left negation right : left original right; \
  }
XLATR_RELATION(less, <, <=, >=)
XLATR_RELATION(lessEqual, <=, <, >)
XLATR_RELATION(greater, >, >=, <=)
XLATR_RELATION(greaterEqual, >=, >, <)
#undef XLATR_RELATION

// An operator has one mutant, where that exists for the operands.
#define XLATR_OPERATOR(name, original, mutant)                                                           \
  template <typename Left, typename Right>                                                               \
  constexpr auto name(int number, const Left& left, const Right& right)->decltype(left original right) { \
    using Result = decltype(left original right);                                                        \
    if constexpr (requires { static_cast<Result>(left mutant right); }) {                                \
      if (on(number)) {                                                                                  \
        return static_cast<Result>(left mutant right);                                                   \
      }                                                                                                  \
    }                                                                                                    \
    return left original right;                                                                          \
  }
XLATR_OPERATOR(equal, ==, !=)
XLATR_OPERATOR(unequal, !=, ==)
XLATR_OPERATOR(plus, +, -)
XLATR_OPERATOR(minus, -, +)
XLATR_OPERATOR(times, *, /)
XLATR_OPERATOR(divided, /, *)
XLATR_OPERATOR(remainder, %, /)
XLATR_OPERATOR(bitAnd, &, |)
XLATR_OPERATOR(bitOr, |, &)
XLATR_OPERATOR(bitXor, ^, &)
XLATR_OPERATOR(shiftLeft, <<, >>)
XLATR_OPERATOR(shiftRight, >>, <<)
#undef XLATR_OPERATOR

#define XLATR_ASSIGNMENT(name, original, mutant)                              \
  template <typename Left, typename Right>                                    \
  constexpr decltype(auto) name(int number, Left& left, const Right& right) { \
    if constexpr (requires { left mutant right; }) {                          \
      if (on(number)) {                                                       \
        return (left mutant right);                                           \
      }                                                                       \
    }                                                                         \
    return (left original right);                                             \
  }
XLATR_ASSIGNMENT(addTo, +=, -=)
XLATR_ASSIGNMENT(takeFrom, -=, +=)
XLATR_ASSIGNMENT(multiply, *=, /=)
XLATR_ASSIGNMENT(divide, /=, *=)
XLATR_ASSIGNMENT(reduce, %=, /=)
XLATR_ASSIGNMENT(clearBits, &=, |=)
XLATR_ASSIGNMENT(setBits, |=, &=)
XLATR_ASSIGNMENT(changeBits, ^=, &=)
XLATR_ASSIGNMENT(moveLeft, <<=, >>=)
XLATR_ASSIGNMENT(moveRight, >>=, <<=)
#undef XLATR_ASSIGNMENT

template <typename Number>
constexpr auto negative(int number, const Number& value) {
  return on(number) ? +value : -value;
}

template <typename Number>
constexpr auto inverted(int number, const Number& value) {
  return on(number) ? +value : ~value;
}

template <typename Number>
constexpr Number& increased(int number, Number& value) {
  return on(number) ? --value : ++value;
}

template <typename Number>
constexpr Number& decreased(int number, Number& value) {
  return on(number) ? ++value : --value;
}

template <typename Number>
constexpr Number increasedAfter(int number, Number& value) {
  return on(number) ? value-- : value++;
}

template <typename Number>
constexpr Number decreasedAfter(int number, Number& value) {
  return on(number) ? value++ : value--;
}

}  // namespace mutants
