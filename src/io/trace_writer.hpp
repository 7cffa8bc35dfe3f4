// What all writers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "io/buffered_output.hpp"
#include "io/output_target.hpp"
#include "io/trace_info.hpp"
#include "messages/message.hpp"

namespace xlatr {

// Why a target that would destroy its source is refused.
inline constexpr char kTargetIsSource[] =
    "Source and target paths match. Target file cannot be overridden - SourcePath/TargetPath";

// How a conversion and a caller drive any writer. All failures are exceptions: ConverterProcessingException for wrong
// use, std::ios_base::failure when the system refuses. One thread at a time.
class ITraceWriter {
 public:
  // Closes an active writer; failures to do so are not reported.
  virtual ~ITraceWriter();

  // A writer of the same class that is not active and has the same target path, override flag, target version and owner
  // bus. Its source path is empty.
  [[nodiscard]] virtual std::unique_ptr<ITraceWriter> CreateNew() const = 0;
  // WriteHeader with a start time (days since 1899-12-30) that is not the information object's.
  virtual void WriteHeader_2(const ITraceInfo& source, double startDays) = 0;
  virtual void WriteHeader(const ITraceInfo& source) = 0;
  virtual void WriteComment(std::string_view text) = 0;
  virtual void WriteMessage(const IMessage& message) = 0;
  // Hands what was written to the system.
  virtual void flush() = 0;
  // Hands what was written to the system, and gives back the file and the memory that this takes until something is
  // written again.
  virtual void rest() = 0;

  // Raises if the target path can't be used; touches no file. Part of setActive.
  virtual void requireUsableTarget() const = 0;
  [[nodiscard]] virtual bool getActive() const = 0;
  // true checks the target path and creates the file, false flushes and closes it; no effect when nothing changes.
  virtual void setActive(bool active) = 0;

  // While the writer is active, all setters but setSourcePath raise and change nothing.
  [[nodiscard]] virtual const std::string& getTargetPath() const = 0;
  virtual void setTargetPath(std::string path) = 0;
  [[nodiscard]] virtual std::string_view getExtension() const = 0;
  [[nodiscard]] virtual double getTargetVersion() const = 0;
  virtual void setTargetVersion(double version) = 0;
  [[nodiscard]] virtual TraceFormat getTargetFormat() const = 0;
  [[nodiscard]] virtual bool getOverrideExistingFile() const = 0;
  virtual void setOverrideExistingFile(bool overrideExistingFile) = 0;
  // The bus whose messages the writer is for, -1 for none.
  [[nodiscard]] virtual std::int32_t getOwnerBus() const = 0;
  virtual void setOwnerBus(std::int32_t bus) = 0;
  // Where the bytes go once the writer is active, if not to the file of the target path.
  virtual void setOutput(OutputTarget output) = 0;
  [[nodiscard]] virtual const std::string& getSourcePath() const = 0;
  virtual void setSourcePath(std::string path) = 0;

 protected:
  ITraceWriter() = default;
  ITraceWriter(const ITraceWriter&) = delete;
  ITraceWriter& operator=(const ITraceWriter&) = delete;

  virtual void open() = 0;
  virtual void close() = 0;
};

// The properties, and the checks before a target file is created. A concrete writer's destructor closes the file.
class TraceWriter : public ITraceWriter {
 public:
  void WriteHeader_2(const ITraceInfo& source, double startDays) override;
  void flush() override { output_.flush(); }
  void requireUsableTarget() const override;
  void rest() override { output_.rest(); }
  [[nodiscard]] bool getActive() const override { return active_; }
  void setActive(bool active) override;
  [[nodiscard]] const std::string& getTargetPath() const override { return targetPath_; }
  void setTargetPath(std::string path) override;
  [[nodiscard]] std::string_view getExtension() const override { return formatOf(getTargetFormat()).extension; }
  [[nodiscard]] double getTargetVersion() const override { return targetVersion_; }
  void setTargetVersion(double version) override;
  [[nodiscard]] bool getOverrideExistingFile() const override { return overrideExistingFile_; }
  void setOverrideExistingFile(bool overrideExistingFile) override;
  [[nodiscard]] std::int32_t getOwnerBus() const override { return ownerBus_; }
  void setOwnerBus(std::int32_t bus) override;
  void setOutput(OutputTarget output) override;
  [[nodiscard]] const std::string& getSourcePath() const override { return sourcePath_; }
  void setSourcePath(std::string path) override { sourcePath_ = std::move(path); }

 protected:
  TraceWriter(std::string targetPath, bool overrideExistingFile, double targetVersion);

  // Checks the target path and creates the file.
  void open() override;
  void close() override;

  // Raises "Writer is not initialized" while inactive.
  void requireActive() const;
  // Raises when active: properties are frozen from the creation of the file to its end.
  void requireInactive() const;

  BufferedOutput& output() { return output_; }

  // The start time of the header, in days since 1899-12-30: that of WriteHeader_2, or of the first header's source.
  [[nodiscard]] double startDaysFrom(const ITraceInfo& source);

 private:
  bool active_ = false;
  BufferedOutput output_;
  bool overrideExistingFile_;
  std::string targetPath_;
  double targetVersion_;
  std::int32_t ownerBus_ = -1;
  std::optional<OutputTarget> outputTarget_;  // nothing for the target path
  std::string sourcePath_;
  bool startKnown_ = false;
  double startDays_ = 0.0;
};

// Writing line by line, for the text formats. Lines end in CR LF on every platform.
class TraceWriterText : public TraceWriter {
 protected:
  using TraceWriter::TraceWriter;

  void open() override;

  // An empty text writes nothing.
  void writeLine(std::string_view text);
  // The prefix is left out when the text begins with it. An empty text gives a line of the prefix alone.
  void writeLine(std::string_view prefix, std::string_view text);

 private:
  void endLine();

  std::uint64_t linesSinceFlush_ = 0;
};

}  // namespace xlatr
