// What all readers share.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "io/line_input.hpp"
#include "io/trace_info.hpp"

namespace xlatr {

// How a conversion and a caller drive any reader. Reading itself is each reader's own, non-virtual ReadNextMessage,
// since every format has its own class of message. One thread at a time.
class ITraceReader {
 public:
  virtual ~ITraceReader();

  [[nodiscard]] virtual bool getActive() const = 0;
  // true opens (again, from the first message, when the reader is active already), false closes. Returns whether the
  // reader is active now; a text file that can't be opened leaves it inactive, without an exception.
  virtual bool setActive(bool active) = 0;
  // How much of the file was read, 0 to 100; not a number for an empty file.
  [[nodiscard]] virtual double getPercentDone() const = 0;
  // Why the file could not be opened, or why reading ended before its end; empty when all is well. A reader that just
  // stops would make half a trace look like a whole one.
  [[nodiscard]] virtual const std::string& failure() const = 0;

 protected:
  ITraceReader() = default;
  ITraceReader(const ITraceReader&) = delete;
  ITraceReader& operator=(const ITraceReader&) = delete;

  virtual bool open() = 0;
  virtual void close() = 0;
};

class TraceReader : public ITraceReader {
 public:
  [[nodiscard]] bool getActive() const override { return active_; }
  bool setActive(bool active) override;

  // How many of the messages since the reader was opened were not valid.
  [[nodiscard]] std::uint64_t invalidCount() const { return invalidCount_; }
  [[nodiscard]] std::uint64_t lineCount() const { return lineCount_; }
  [[nodiscard]] const std::string& failure() const override { return failure_; }

 protected:
  bool active_ = false;
  std::uint64_t position_ = 0;  // bytes of the file consumed so far
  std::uint64_t lineCount_ = 0;
  std::uint64_t invalidCount_ = 0;
  std::string failure_;
};

// Reading line by line, for the text formats. A reader derives from it, embeds its information object and returns it.
class TraceReaderText : public TraceReader {
 public:
  [[nodiscard]] double getPercentDone() const override;

 protected:
  bool open() override;
  void close() override;

  // The reader's own information object.
  [[nodiscard]] virtual const ITraceInfo& info() const = 0;

  // The next line, without its line end; false at the end of the file, on a failure to read, and while inactive. The
  // view is valid until the next call.
  [[nodiscard]] bool readLine(std::string_view& line);
  // The same, passing over the lines that begin with ";".
  [[nodiscard]] bool readLineAfterComments(std::string_view& line);

 private:
  std::optional<LineInput> input_;
};

}  // namespace xlatr
