#include "open_trace.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "job.hpp"
#include "output.hpp"
#include "report.hpp"
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

Stream openTrace(const std::string& path, TraceFormat format, const Wanted& wanted) {
  xlatr_stream_options options{};
  options.size = sizeof options;
  options.format = format;
  const xlatr_selection selection = wanted.selection();
  const xlatr_changes changes = wanted.changes();
  options.selection = &selection;
  options.changes = &changes;
  return path == kStandardStream ? Stream(inputOf(standardInput()), &options) : Stream(path, &options);
}

bool isWhole(Stream& stream) {
  return isComplete(stream.account()) && stream.head().unfinished == 0;
}

void printDamage(const std::string& path, Stream& stream) {
  const xlatr_head head = stream.head();
  std::string text = remarksText(stream.account(), head.places_are_records != 0);
  text += head.unfinished != 0 ? "; it was not finished by its writer" : "";
  printError(path + ": " + text.substr(std::min<std::size_t>(2, text.size())));
}

}  // namespace xlatr::cli
