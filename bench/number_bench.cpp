// Reading and printing single numbers, each compared with what the standard library takes for the same.
#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>

#include "util/numbers.hpp"
#include "util/render.hpp"

namespace {

using xlatr::TextBuffer;

// Like the cells and tokens of traces: identifiers of both formats, lengths, buses, line numbers, times.
constexpr auto kIdentifiers = std::to_array<std::string_view>({"123", "18ABCDEF", "0123", "7FF", "0CF00400", "1a0"});
constexpr auto kCounts = std::to_array<std::string_view>({"8", "1", "12", "291", "1234567", "64", "2", "10000000"});
constexpr auto kTimes =
    std::to_array<std::string_view>({"0.010000", "10.500", "1234.567890", "98765.4", "3600.000001"});

constexpr auto kWholes = std::to_array<std::uint64_t>({8, 1, 12, 291, 1234567, 64, 2, 10000000});
constexpr auto kReals = std::to_array<double>({0.01, 10.5, 1234.56789, 98765.4, 3600.000001});

template <class Number, std::size_t Size, class Use>
void forAll(benchmark::State& state, const std::array<Number, Size>& numbers, Use use) {
  for ([[maybe_unused]] auto step : state) {
    for (const Number& number : numbers) {
      use(number);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Size));
}

template <int kBase, std::size_t Size>
void readWholes(benchmark::State& state, const std::array<std::string_view, Size>& texts) {
  forAll(state, texts, [](std::string_view text) {
    std::uint32_t value = 0;
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(xlatr::tryParseUInt32(text, value, kBase));
    benchmark::DoNotOptimize(value);
  });
}

template <int kBase, std::size_t Size>
void readWholesByStandard(benchmark::State& state, const std::array<std::string_view, Size>& texts) {
  forAll(state, texts, [](std::string_view text) {
    std::uint32_t value = 0;
    benchmark::DoNotOptimize(text);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, kBase);
    benchmark::DoNotOptimize(result.ptr);
    benchmark::DoNotOptimize(value);
  });
}

void readHexadecimal(benchmark::State& state) {
  readWholes<16>(state, kIdentifiers);
}
BENCHMARK(readHexadecimal);

void readHexadecimalByStandard(benchmark::State& state) {
  readWholesByStandard<16>(state, kIdentifiers);
}
BENCHMARK(readHexadecimalByStandard);

void readDecimal(benchmark::State& state) {
  readWholes<10>(state, kCounts);
}
BENCHMARK(readDecimal);

void readDecimalByStandard(benchmark::State& state) {
  readWholesByStandard<10>(state, kCounts);
}
BENCHMARK(readDecimalByStandard);

void readReal(benchmark::State& state) {
  forAll(state, kTimes, [](std::string_view text) {
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(xlatr::parseRealPrefix(text));
  });
}
BENCHMARK(readReal);

void readRealByStandard(benchmark::State& state) {
  forAll(state, kTimes, [](std::string_view text) {
    double value = 0.0;
    benchmark::DoNotOptimize(text);
    benchmark::DoNotOptimize(std::from_chars(text.data(), text.data() + text.size(), value).ptr);
    benchmark::DoNotOptimize(value);
  });
}
BENCHMARK(readRealByStandard);

// Prints all numbers into one line, as a writer does, and clears it.
template <class Number, std::size_t Size, class Print>
void printAll(benchmark::State& state, const std::array<Number, Size>& numbers, Print print) {
  TextBuffer out;
  for ([[maybe_unused]] auto step : state) {
    out.clear();
    for (Number number : numbers) {
      benchmark::DoNotOptimize(number);
      print(out, number);
    }
    benchmark::DoNotOptimize(out.view());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Size));
}

template <class... Arguments>
void printByStandard(TextBuffer& out, Arguments... arguments) {
  std::array<char, 512> text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), arguments...);
  out.append(std::string_view(text.data(), static_cast<std::size_t>(result.ptr - text.data())));
}

void printDecimal(benchmark::State& state) {
  printAll(state, kWholes, [](TextBuffer& out, std::uint64_t value) { xlatr::appendDecimal(out, value); });
}
BENCHMARK(printDecimal);

void printDecimalByStandard(benchmark::State& state) {
  printAll(state, kWholes, [](TextBuffer& out, std::uint64_t value) { printByStandard(out, value); });
}
BENCHMARK(printDecimalByStandard);

void printHexadecimal(benchmark::State& state) {
  printAll(state, kWholes,
           [](TextBuffer& out, std::uint64_t value) { xlatr::appendHex(out, static_cast<std::uint32_t>(value), 4); });
}
BENCHMARK(printHexadecimal);

// The argument is the count of decimals.
void printFixed(benchmark::State& state) {
  const auto decimals = static_cast<int>(state.range(0));
  printAll(state, kReals, [&](TextBuffer& out, double value) { xlatr::appendFixed(out, value, decimals); });
}
BENCHMARK(printFixed)->Arg(1)->Arg(3)->Arg(6);

void printFixedByStandard(benchmark::State& state) {
  const auto decimals = static_cast<int>(state.range(0));
  printAll(state, kReals,
           [&](TextBuffer& out, double value) { printByStandard(out, value, std::chars_format::fixed, decimals); });
}
BENCHMARK(printFixedByStandard)->Arg(1)->Arg(3)->Arg(6);

void printRoundedFixed(benchmark::State& state) {
  printAll(state, kReals, [](TextBuffer& out, double value) { xlatr::appendRoundedFixed(out, value, 6, 11); });
}
BENCHMARK(printRoundedFixed);

}  // namespace
