#include "formats/mf4/mdf_unfinished.hpp"

#include <algorithm>
#include <string_view>

#include "formats/mf4/block_header.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

constexpr std::string_view kUnfinished = "UnFinMF ";
constexpr std::string_view kFinished = "MDF     ";
constexpr std::uint64_t kUnfinishedFlagsPosition = 60;
constexpr std::string_view kNothingMissing("\0\0", sizeof(FileIdentificationBlock::idUnfinishedFlags));

}  // namespace

void markUnfinished(std::span<std::uint8_t> file, std::uint16_t missing) {
  std::ranges::copy(kUnfinished, file.begin());
  storeLittle(file.data() + kUnfinishedFlagsPosition, missing);
}

void markFinished(BufferedOutput& output) {
  output.seek(0);
  output.write(kFinished);
  output.seek(kUnfinishedFlagsPosition);
  output.write(kNothingMissing);
}

}  // namespace xlatr
