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

// What a source may want to know of the target.
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
// for all of them. A source is used by its worker's thread alone, but for its construction.
class TraceSource {
 public:
  enum class Read { Message, Nothing, End };

  virtual ~TraceSource();

  [[nodiscard]] virtual const ITraceInfo& info() const = 0;
  [[nodiscard]] virtual ITraceReader& reader() = 0;

  // Called before anything else is done. Raises for a file that can't be converted, with the reason as its text.
  virtual void validate() {}
  // Called once between the opening of the reader and the first message. `writer` is the current one, which is not
  // active in a conversion that splits by bus; what is appended to `message` stands in the conversion's result.
  virtual void begin(ITraceWriter& writer, std::string& message);

  // Writes the header of a target file that has just been opened.
  virtual void writeHeader(ITraceWriter& writer) { writer.WriteHeader(info()); }

  // Reads on, into the current message, which the functions below are about.
  [[nodiscard]] virtual Read readNext() = 0;
  // Whether a target without a bus column becomes one file a bus.
  [[nodiscard]] virtual bool splitsByBus() const { return true; }
  // Whether bus numbers that TRC programs can't show are worth a warning.
  [[nodiscard]] virtual bool warnsOfHighBuses() const { return true; }
  // The message's bus, counted from 1; none when it belongs to the file that was written last.
  [[nodiscard]] virtual std::optional<std::uint32_t> bus() const = 0;
  [[nodiscard]] virtual Verdict judge(const TargetKind& target) const = 0;
  // The text of Verdict::Comment.
  [[nodiscard]] virtual std::string_view commentText() const { return {}; }
  // Writes the message and whatever belongs to it.
  virtual void write(ITraceWriter& writer, const TargetKind& target) = 0;

 protected:
  TraceSource() = default;
  TraceSource(const TraceSource&) = delete;
  TraceSource& operator=(const TraceSource&) = delete;
};

}  // namespace xlatr
