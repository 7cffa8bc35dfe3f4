// The only way for the library to raise a failure, and the store of each thread's last one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "xlatr/failures.hpp"

namespace xlatr {

// Stores `text` as the current thread's last error and throws the exception of `kind` with it. Nothing else in the
// library throws one of the three classes.
[[noreturn]] void raiseFailure(FailureKind kind, std::string text);

// raiseFailure for the most frequent kind, errors of use and of processing.
[[noreturn]] void throwProcessingFailure(std::string text);

// Raises a ConverterParsingException whose text is `word`, ": {", `text` and "}".
[[noreturn]] void throwParsingFailure(std::string_view word, std::string_view text);

// The text of the last failure raised on the thread; empty if there was none. Safe from any thread; `threadId` is the
// platform's own thread id (on Linux that of gettid).
[[nodiscard]] std::string lastErrorText(std::uint32_t threadId);

}  // namespace xlatr
