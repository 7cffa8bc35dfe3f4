// Random sequences of calls to the exported functions, with random arguments, within the rules of ownership: in every
// order of calls only the documented exceptions may come out. The first byte chooses the format of
// the source file, the second how many bytes of the input it holds, and what follows is the sequence of calls. The
// calls are made of the public headers, so that no exported function is left out.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "object_calls.hpp"

namespace {

using namespace fuzz;

constexpr std::size_t kMostCalls = 200;

// The call of that number. Most values of two bytes are the number of no call; three of four of these choose one of the
// calls that move things on, the others any call.
Call chosenCall(std::uint16_t number) {
  const auto* const found = std::ranges::lower_bound(kCalls, number, {}, &NumberedCall::number);
  if (found != kCalls.end() && found->number == number) {
    return found->call;
  }
  const std::size_t chosen = number / 4;
  return number % 4 == 0 ? kCalls.at(chosen % kCalls.size()).call : kOftenCalled.at(chosen % kOftenCalled.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder folder;
  Arguments arguments({data, size}, folder);
  constexpr std::array kSources{"source.trc",  "source.asc", "source.btrc", "source.mf4",
                                "source.ltrc", "source.btr", "source.blf"};
  const char* const source = kSources.at(arguments.choice(kSources.size()));
  const std::size_t sourceSize = std::size_t{arguments.byte()} * 8;
  folder.write(source, arguments.take(sourceSize));

  Objects objects;
  for (std::size_t count = 0; count < kMostCalls && !arguments.atEnd(); ++count) {
    const Call call = chosenCall(arguments.word());
    attempt([&] { call(objects, arguments); });
  }
  return 0;
}
