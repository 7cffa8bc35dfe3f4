// What is known of a trace before its messages are read: its format, its file, its header.
#pragma once

#include <cstdint>
#include <exception>
#include <ios>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "io/format.hpp"

namespace xlatr {

// A trace format as an object of its own.
class BaseTraceInfo {
 public:
  // The description of a format; texts and lists are empty for a value that is not a format.
  explicit BaseTraceInfo(TraceFormat format);
  virtual ~BaseTraceInfo();

  BaseTraceInfo(const BaseTraceInfo&) = default;
  BaseTraceInfo(BaseTraceInfo&&) = default;
  BaseTraceInfo& operator=(const BaseTraceInfo&) = default;
  BaseTraceInfo& operator=(BaseTraceInfo&&) = default;

  [[nodiscard]] virtual std::string_view getShortName() const { return shortName_; }
  [[nodiscard]] virtual std::string_view getFormatDescription() const { return description_; }
  [[nodiscard]] virtual TraceFormat getFormat() const { return format_; }
  // Both owned by the object.
  [[nodiscard]] virtual std::span<const TraceFormat> getSupportedConversions() const { return allowedTargets_; }
  [[nodiscard]] virtual std::span<const double> getSupportedVersions() const { return supportedVersions_; }

 private:
  std::string shortName_;
  std::string description_;
  TraceFormat format_;
  std::vector<TraceFormat> allowedTargets_;
  std::vector<double> supportedVersions_;
};

// A file on disk: its path, its size, and the format that its extension names. The size is the one at
// construction.
class TraceFileInfo : public BaseTraceInfo {
 public:
  // If there is no file at the path, the path is empty, the size 0 and the format none. A folder is not a file.
  explicit TraceFileInfo(const std::string& path);

  // Whether the file exists and has a known format.
  [[nodiscard]] bool getValid() const { return getFormat() != XLATR_FORMAT_NONE; }
  [[nodiscard]] const std::string& getPath() const { return path_; }
  // Bytes.
  [[nodiscard]] std::uint64_t getSize() const { return size_; }

 private:
  TraceFileInfo(const std::string& path, std::optional<std::uint64_t> size);

  std::string path_;
  std::uint64_t size_;
};

// The information object of one file, as readers, writers and callers use it.
class ITraceInfo {
 public:
  virtual ~ITraceInfo();

  // Whether the file is one of the format and of a version that can be read.
  [[nodiscard]] virtual bool getValid() const = 0;
  [[nodiscard]] virtual double getVersion() const = 0;
  // The version with one decimal, empty when the file is not valid.
  [[nodiscard]] virtual std::string getVersionText() const = 0;
  [[nodiscard]] virtual double getLowestVersion() const = 0;
  [[nodiscard]] virtual double getCurrentVersion() const = 0;
  // The start of the recording in days since 1899-12-30; 0.0 when the file is not valid.
  [[nodiscard]] virtual double getStartTime() const = 0;
  [[nodiscard]] virtual std::string getPath() const = 0;
  // Bytes of the file before its first message.
  [[nodiscard]] virtual std::uint64_t getHeaderLength() const = 0;
  [[nodiscard]] virtual std::uint64_t getFileSize() const = 0;
  [[nodiscard]] virtual std::span<const TraceFormat> getAllowedConvertions() const = 0;
  [[nodiscard]] virtual std::span<const double> getSupportedVersions() const = 0;
  // Why the system could not read what is known of the file; empty when all is well. Such a file is not valid, but that
  // says nothing of what it holds: nobody may convert it. A file that is not there, or that nobody may open, is no such
  // case.
  [[nodiscard]] virtual const std::string& failure() const = 0;

 protected:
  ITraceInfo() = default;
  ITraceInfo(const ITraceInfo&) = default;
  ITraceInfo(ITraceInfo&&) = default;
  ITraceInfo& operator=(const ITraceInfo&) = default;
  ITraceInfo& operator=(ITraceInfo&&) = default;
};

// The common part. A format's class adds what its detection finds and says when a file is valid.
class TraceInfo : public ITraceInfo {
 public:
  [[nodiscard]] double getVersion() const override { return fileVersion_; }
  [[nodiscard]] std::string getVersionText() const override;
  [[nodiscard]] double getLowestVersion() const override { return format().lowestVersion; }
  [[nodiscard]] double getCurrentVersion() const override { return format().currentVersion; }
  [[nodiscard]] double getStartTime() const override { return getValid() ? startDays_ : 0.0; }
  [[nodiscard]] std::string getPath() const override { return file_.getPath(); }
  [[nodiscard]] std::uint64_t getHeaderLength() const override { return headerLength_; }
  [[nodiscard]] std::uint64_t getFileSize() const override { return file_.getSize(); }
  [[nodiscard]] std::span<const TraceFormat> getAllowedConvertions() const override { return format().allowedTargets; }
  [[nodiscard]] std::span<const double> getSupportedVersions() const override { return format().supportedVersions; }

  [[nodiscard]] const std::string& failure() const override { return failure_; }

  [[nodiscard]] const TraceFileInfo& file() const { return file_; }

 protected:
  // `format` is the format of the class, whatever the file's is.
  TraceInfo(TraceFileInfo file, TraceFormat format);

  [[nodiscard]] bool isOfOwnFormat() const { return file_.getFormat() == format_; }

  // Reads something of the file, and returns whether that went through. Whatever is wrong with what the file holds ends
  // the reading and no more. A failure of the system is kept, see failure(); lack of memory is raised.
  template <class Read>
  bool tryReading(const Read& read) {
    try {
      read();
      return true;
    } catch (const std::ios_base::failure& failure) {
      keepFailure(failure);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): what was understood until then counts
    }
    return false;
  }
  // How many characters end a line; 2 for a file that can't be read.
  [[nodiscard]] std::uint8_t readLineEnding();

  double startDays_ = 0.0;          // days since 1899-12-30
  std::uint64_t headerLength_ = 0;  // bytes
  double fileVersion_ = 0.0;

 private:
  [[nodiscard]] const FormatDescriptor& format() const { return formatOf(format_); }
  void keepFailure(const std::ios_base::failure& failure);

  TraceFileInfo file_;
  TraceFormat format_;
  std::string failure_;
};

}  // namespace xlatr
