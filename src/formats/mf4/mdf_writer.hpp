// Writes an MF4 file.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "formats/mf4/block_layout_options.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_target_file.hpp"
#include "io/trace_writer.hpp"

namespace xlatr {

// Writes the bus logging layout of ASAM MDF 4. Up to its end the file says that it is unfinished. Records stay in the
// order in which they come; whoever wants them in the order of time gets that from a reader.
class MdfWriter final : public TraceWriter {
 public:
  explicit MdfWriter(std::string targetPath = {}, bool overrideExistingFile = false, double targetVersion = 0.0);
  ~MdfWriter() override;

  // These may be called at any time. A file that has its header or a first message already stays as it was begun.
  void setZipped(bool zipped) { options_.zipped = zipped; }
  // No effect while one of the signal data layouts is set.
  void setSorted(bool sorted);
  void setLayoutOptions(const MdfLayoutOptions& options) { options_ = options; }
  [[nodiscard]] const MdfLayoutOptions& layoutOptions() const { return options_; }

  // The new writer has the layout options, too.
  [[nodiscard]] std::unique_ptr<ITraceWriter> CreateNew() const override;
  // A source that is not valid gets no header, and a file without one stays empty.
  void WriteHeader(const ITraceInfo& source) override;
  // There is no place for comments.
  void WriteComment(std::string_view /*text*/) override {}
  // What is no CAN frame (status, error counters, events, CAN XL) writes nothing, and neither does a frame with more
  // data than its record holds.
  void WriteMessage(const IMessage& message) override;
  [[nodiscard]] TraceFormat getTargetFormat() const override { return XLATR_FORMAT_MF4; }

 protected:
  // The layout of a signal data stream is refused below version 4.2.
  void open() override;
  void close() override;

 private:
  MdfTargetFile& file();

  MdfLayoutOptions options_;
  std::unique_ptr<MdfTargetFile> file_;  // from the first header or message on
  MdfCanMessage mapped_;                 // of another format's message, used again for each
};

}  // namespace xlatr
