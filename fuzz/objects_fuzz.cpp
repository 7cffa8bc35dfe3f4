// Random sequences of calls to the exported functions, with random arguments, within the rules of ownership: whatever
// is called in whatever order, nothing but the documented exceptions may come out. The first byte chooses the format of
// the source file, the second how many bytes of the input it holds, and what follows is the sequence of calls. A test
// sees to it that no exported function is left out.
#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

#include "conversion_slot.hpp"
#include "object_slots.hpp"

namespace {

using namespace fuzz;
using namespace xlatr::test;

constexpr std::size_t kMostCalls = 200;

using Slots = std::tuple<ReaderSlot<TrcReaderType>, ReaderSlot<AscReaderType>, WriterSlot<TrcWriterType>,
                         WriterSlot<AscWriterType>, WriterSlot<CsvWriterType>, ReaderSlot<BtrcReaderType>,
                         WriterSlot<BtrcWriterType>, ReaderSlot<MdfReaderType>, WriterSlot<MdfWriterType>,
                         ReaderSlot<KorlReaderType>, WriterSlot<KorlWriterType>, SessionSlot, WriterSlot<BtrWriterType>,
                         LogSlot, FileSlot, BinaryHeadSlot, FreeSlot, ConversionSlot>;

template <std::size_t... kIndex>
void callSlot(Slots& slots, std::size_t chosen, Arguments& arguments, std::index_sequence<kIndex...>) {
  static_cast<void>(((kIndex == chosen && (std::get<kIndex>(slots).call(arguments), true)) || ...));
}

void callOnce(Slots& slots, Arguments& arguments) {
  constexpr std::size_t kSlots = std::tuple_size_v<Slots>;
  const std::size_t chosen = arguments.choice(kSlots);
  attempt([&] { callSlot(slots, chosen, arguments, std::make_index_sequence<kSlots>()); });
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

  Slots slots;
  for (std::size_t count = 0; count < kMostCalls && !arguments.atEnd(); ++count) {
    callOnce(slots, arguments);
  }
  return 0;
}
