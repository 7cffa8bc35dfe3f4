// What is tried, and what has to be true whatever the system refuses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "io/format.hpp"
#include "support/faults.hpp"
#include "support/temp_folder.hpp"

namespace xlatr::test {

// The files of a folder by their names.
using Files = std::map<std::string, std::string>;
[[nodiscard]] Files filesIn(const TempFolder& folder);

// Whether a conversion wrote the same. MF4 files tell when they were written, which is not compared.
[[nodiscard]] bool isSameOutput(const Files& one, const Files& other);

// What is promised of a folder when a conversion into it has failed.
enum class Promise : std::uint8_t {
  None,  // fragments under the names of the targets
  Safe,  // under each name there is what was there before, or a whole target
};

struct TraceToRead {
  std::string path;
  const FormatDescriptor* format;
};

// A small trace of each format, in the folder; all but BLF logs hold frames of all kinds.
[[nodiscard]] std::vector<TraceToRead> smallTraces(const TempFolder& folder);

struct Outcome {
  bool succeeded = false;
  std::string text;  // of the failure
};
// Converts into the folder.
using Attempt = std::function<Outcome(const TempFolder& folder)>;

// Whether to try every version of every target, and every call. Set by XLATR_TORTURE in the environment; otherwise the
// last version of each format stands for the others, and a selection for the calls.
[[nodiscard]] bool isThorough();

// One kind of fault.
struct Torture {
  std::string_view name;
  FaultPlan plan;         // `nth` is set here
  bool harmless = false;  // such as half a transfer: everything goes on as if nothing had happened
  bool removes = true;    // a fragment is ours, and can be removed
  bool mute = false;      // there may be no memory for a text
};

// Calls that fail while a source is read, and while a target is written.
[[nodiscard]] std::vector<Torture> readFaults(std::string_view source);
[[nodiscard]] std::vector<Torture> writeFaults();
[[nodiscard]] std::vector<Torture> memoryFaults();

// Lets each call fail in turn, from the first one to the last, or a selection of them if they are many: a success has
// written all that an attempt without faults writes, and a failure has a text and keeps the promise. Before each
// attempt the folder has these files and no others. An attempt that does not end ends the test program.
void torture(const std::string& what, const std::vector<Torture>& faults, const Attempt& attempt, Promise promise,
             const Files& before = {});

}  // namespace xlatr::test
