#include "open_trace.hpp"

#include <cstddef>
#include <optional>

#include "job.hpp"
#include "output.hpp"
#include "report.hpp"
#include "signals.hpp"
#include "standard_streams.hpp"

namespace xlatr::cli {
namespace {

// The wrapper takes functions; the program has a record already.
Input inputOf(const xlatr_input& record) {
  Input input;
  input.read = [record](std::uint64_t offset, void* buffer, std::uint64_t bytes) {
    return record.read(record.context, offset, buffer, bytes);
  };
  input.name = record.name;
  input.length = record.length_known != 0 ? std::optional(record.length) : std::nullopt;
  input.inOrder = record.in_order != 0;
  return input;
}

}  // namespace

Stream openTrace(const std::string& path, TraceFormat format, const Wanted& wanted, Watch* watch) {
  xlatr_stream_options options{};
  options.size = sizeof options;
  options.format = format;
  const xlatr_selection selection = wanted.selection();
  const xlatr_changes changes = wanted.changes();
  options.selection = &selection;
  options.changes = &changes;
  if (watch != nullptr) {
    options.progress = Watch::see;
    options.context = watch;
  }
  return path == kStandardStream ? Stream(inputOf(standardInput()), &options) : Stream(path, &options);
}

ReadFailure failureOf(const Error& error) {
  if (const auto code = interruption()) {
    return {*code, "interrupted"};
  }
  return {exitCodeOf(error.code()), oneLine(error.what())};
}

bool isWhole(const Stream& stream) {
  return stream.account().complete != 0 && stream.head().unfinished == 0;
}

void printDamage(const std::string& path, const Stream& stream) {
  constexpr std::size_t kSeparator = 2;  // before the first remark
  printError(path + ": " + remarksText(stream.account(), stream.head()).substr(kSeparator));
}

}  // namespace xlatr::cli
