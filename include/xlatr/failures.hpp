// The exceptions that may leave an exported function, for callers that share the C++ exception model.
//
// A failure of the library itself is a ConverterGenericException or one of its two children. Before it is thrown, its
// text is stored under the id of the current thread, so that code that does not see the exception reads it with
// ConverterLastError_GetText (objects.h). An exception that nobody catches ends the program, as in one that is C all
// the way up. A C caller whose frames an exception is to cross needs unwind tables (-fexceptions or -funwind-tables).
//
// Besides these, functions that open or write a file throw std::ios_base::failure, with the path and the system's
// reason in its text, and AscReader_ReadNextMessage throws std::out_of_range for a line that is too short. Their texts
// are not stored: only a caller that catches them learns of them.
#pragma once

#include <exception>
#include <string>

#include "xlatr/export.h"

namespace xlatr {

// The kind of a failure, which is also the number that each exception class carries.
enum class FailureKind : int { Generic = 0, Parsing = 1, Processing = 2 };

// An error of no more precise kind.
class XLATR_API ConverterGenericException : public std::exception {
 public:
  explicit ConverterGenericException(std::string text);
  ~ConverterGenericException() override;

  ConverterGenericException(const ConverterGenericException&) = default;
  ConverterGenericException& operator=(const ConverterGenericException&) = default;

  // The text of the failure; it lives as long as the exception.
  [[nodiscard]] const char* what() const noexcept override;
  [[nodiscard]] FailureKind kind() const noexcept { return kind_; }

 protected:
  ConverterGenericException(std::string text, FailureKind kind);

 private:
  std::string text_;
  FailureKind kind_;
};

// Text that could not be parsed: the failure's text is what was expected, then ": {", the offending item and "}".
class XLATR_API ConverterParsingException : public ConverterGenericException {
 public:
  explicit ConverterParsingException(std::string text);
  ~ConverterParsingException() override;

  ConverterParsingException(const ConverterParsingException&) = default;
  ConverterParsingException& operator=(const ConverterParsingException&) = default;
};

// Wrong use of an object, or processing that failed. Most failures are of this class.
class XLATR_API ConverterProcessingException : public ConverterGenericException {
 public:
  explicit ConverterProcessingException(std::string text);
  ~ConverterProcessingException() override;

  ConverterProcessingException(const ConverterProcessingException&) = default;
  ConverterProcessingException& operator=(const ConverterProcessingException&) = default;
};

}  // namespace xlatr
