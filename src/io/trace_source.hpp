// What differs between source formats in a conversion.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "io/trace_info.hpp"
#include "io/trace_reader.hpp"
#include "io/trace_writer.hpp"

namespace xlatr {

// What a source may want to know of its target.
struct TargetKind {
  TraceFormat format;
  double version;
};

// What becomes of a message.
enum class Verdict {
  Write,    // it goes to the target
  Comment,  // its text goes there as a comment
  Drop,
};

// One source of a conversion: a reader, its current message, and the rules of its format. The worker's loop is the same
// for all of them. Only its worker's thread uses a source, except for its construction.
class TraceSource {
 public:
  enum class Read { Message, Nothing, End };

  virtual ~TraceSource();

  [[nodiscard]] virtual const ITraceInfo& info() const = 0;
  [[nodiscard]] virtual ITraceReader& reader() = 0;

  // Called first, for a source whose messages depend on what they become.
  virtual void setTarget(const TargetKind& target);
  // Called before anything is read or written. Raises for a file that can't be converted, with the reason as its text.
  virtual void validate() {}
  // Called once after the reader was opened, before the first message. `writer` is the current one, which is not active
  // in a conversion that splits by bus. What is appended to `message` appears in the conversion's result.
  virtual void begin(ITraceWriter& writer, std::string& message);

  // Writes the header of a target file that has just been opened.
  virtual void writeHeader(ITraceWriter& writer) { writer.WriteHeader(info()); }

  // Reads the next message into the current one, which the functions below are about.
  [[nodiscard]] virtual Read readNext() = 0;
  // Whether a target without a bus column becomes one file per bus.
  [[nodiscard]] virtual bool splitsByBus() const { return true; }
  // Whether bus numbers above the target's limit are worth a warning.
  [[nodiscard]] virtual bool warnsOfHighBuses() const { return true; }
  // The message's bus, counted from 1; none when it belongs to the file that was written last.
  [[nodiscard]] virtual std::optional<std::uint32_t> bus() const = 0;
  [[nodiscard]] virtual Verdict judge() const = 0;
  // The text of Verdict::Comment.
  [[nodiscard]] virtual std::string_view commentText() const { return {}; }
  // Writes the message and all that belongs to it.
  virtual void write(ITraceWriter& writer) = 0;

 protected:
  TraceSource() = default;
  TraceSource(const TraceSource&) = delete;
  TraceSource& operator=(const TraceSource&) = delete;
};

}  // namespace xlatr
