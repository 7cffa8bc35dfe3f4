// frames.h for C++17: handles that close themselves, frames to loop over, and exceptions made from codes. Everything is
// inline; only frames.h crosses the border of the library.
#ifndef XLATR_FRAMES_HPP
#define XLATR_FRAMES_HPP

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xlatr/frames.h"

namespace xlatr {

// What a function of the library answered, with the text that its handle has: file, place, and what to do.
class Error : public std::runtime_error {
 public:
  Error(xlatr_code code, const char* text)
      : std::runtime_error(text == nullptr || *text == '\0' ? xlatr_code_text(code) : text), code_(code) {}

  [[nodiscard]] xlatr_code code() const { return code_; }

 private:
  xlatr_code code_;
};

// Bytes of a frame. They belong to its batch.
struct Bytes {
  const std::uint8_t* first = nullptr;
  std::size_t count = 0;

  [[nodiscard]] const std::uint8_t* data() const { return first; }
  [[nodiscard]] std::size_t size() const { return count; }
  [[nodiscard]] const std::uint8_t* begin() const { return first; }
  [[nodiscard]] const std::uint8_t* end() const { return first + count; }
  [[nodiscard]] std::uint8_t operator[](std::size_t at) const { return first[at]; }
};

// One frame of a batch, to which it refers.
class FrameView {
 public:
  FrameView(const xlatr_batch& batch, std::size_t row) : batch_(&batch), row_(row) {}

  [[nodiscard]] std::int64_t timeNs() const { return batch_->time_ns[row_]; }
  [[nodiscard]] double seconds() const { return static_cast<double>(timeNs()) * 1e-9; }
  [[nodiscard]] std::uint8_t kind() const { return batch_->kind[row_]; }
  [[nodiscard]] std::uint16_t bus() const { return batch_->bus[row_]; }
  [[nodiscard]] std::uint32_t id() const { return batch_->id[row_]; }
  [[nodiscard]] std::uint16_t flags() const { return batch_->flags[row_]; }
  // Whether one of the flags is set, such as XLATR_FLAG_FD.
  [[nodiscard]] bool has(std::uint16_t flag) const { return (flags() & flag) != 0; }
  [[nodiscard]] std::uint16_t dlc() const { return batch_->dlc[row_]; }
  [[nodiscard]] std::uint64_t place() const { return batch_->place == nullptr ? row_ + 1 : batch_->place[row_]; }
  [[nodiscard]] Bytes data() const {
    const auto begin = static_cast<std::size_t>(batch_->data_offsets[row_]);
    const auto end = static_cast<std::size_t>(batch_->data_offsets[row_ + 1]);
    return begin == end ? Bytes{} : Bytes{batch_->data + begin, end - begin};
  }
  [[nodiscard]] std::optional<std::string_view> text() const {
    if (!isSet(batch_->text_validity)) {
      return std::nullopt;
    }
    const auto begin = static_cast<std::size_t>(batch_->text_offsets[row_]);
    const auto end = static_cast<std::size_t>(batch_->text_offsets[row_ + 1]);
    return begin == end ? std::string_view("") : std::string_view(batch_->text + begin, end - begin);
  }
  // Such as XLATR_ATTRIBUTE_BUS_LOAD.
  [[nodiscard]] std::optional<std::uint32_t> attribute(std::uint32_t which) const {
    if ((batch_->attributes >> which & 1U) == 0 || !isSet(batch_->attribute_validity[which])) {
      return std::nullopt;
    }
    return batch_->attribute[which][row_];
  }

 private:
  [[nodiscard]] bool isSet(const std::uint8_t* validity) const {
    return validity == nullptr || (validity[row_ / 8] >> row_ % 8 & 1U) != 0;
  }

  const xlatr_batch* batch_;
  std::size_t row_;
};

// Frames as columns; a range of frames too. It refers to its stream, until that reads the next one.
class BatchView {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = FrameView;
    using difference_type = std::ptrdiff_t;
    using pointer = const FrameView*;
    using reference = FrameView;

    Iterator(const xlatr_batch& batch, std::size_t row) : batch_(&batch), row_(row) {}
    FrameView operator*() const { return {*batch_, row_}; }
    Iterator& operator++() {
      ++row_;
      return *this;
    }
    bool operator==(const Iterator& other) const { return row_ == other.row_; }
    bool operator!=(const Iterator& other) const { return row_ != other.row_; }

   private:
    const xlatr_batch* batch_;
    std::size_t row_;
  };

  explicit BatchView(const xlatr_batch& batch) : batch_(&batch) {}

  [[nodiscard]] const xlatr_batch& columns() const { return *batch_; }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(batch_->rows); }
  [[nodiscard]] FrameView operator[](std::size_t row) const { return {*batch_, row}; }
  [[nodiscard]] Iterator begin() const { return {*batch_, 0}; }
  [[nodiscard]] Iterator end() const { return {*batch_, size()}; }

 private:
  const xlatr_batch* batch_;
};

// An account with its size set.
[[nodiscard]] inline xlatr_account emptyAccount() {
  xlatr_account account{};
  account.size = sizeof account;
  return account;
}

// A trace that is no file. `read` answers as xlatr_input's function does, and must not throw.
struct Input {
  using Read = std::function<std::int64_t(std::uint64_t offset, void* buffer, std::uint64_t bytes)>;

  Read read;
  std::string name = {};                     // stands for the path
  std::optional<std::uint64_t> length = {};  // of all bytes
  bool inOrder = true;                       // each byte can be read once, such as those of a pipe
};

namespace detail {

// The record of an input, which owns what it reads with.
[[nodiscard]] inline xlatr_input recordOf(const Input& input) {
  xlatr_input record{};
  record.size = sizeof record;
  record.context = new Input::Read(input.read);
  record.read = [](void* context, std::uint64_t offset, void* buffer, std::uint64_t bytes) {
    return (*static_cast<Input::Read*>(context))(offset, buffer, bytes);
  };
  record.release = [](void* context) { delete static_cast<Input::Read*>(context); };
  record.name = input.name.empty() ? nullptr : input.name.c_str();
  record.length = input.length.value_or(0);
  record.length_known = input.length ? 1 : 0;
  record.in_order = input.inOrder ? 1 : 0;
  return record;
}

// Keeps the handle that a function makes, also one that knows only why it failed.
template <class Handle, class Close, class Make>
xlatr_code make(std::unique_ptr<Handle, Close>& owner, Make function) {
  Handle* handle = nullptr;
  const xlatr_code code = function(&handle);
  owner.reset(handle);
  return code;
}

struct CloseStream {
  void operator()(xlatr_stream* stream) const { xlatr_stream_close(stream); }
};
struct CloseSink {
  void operator()(xlatr_sink* sink) const { xlatr_sink_close(sink); }
};
struct CloseJob {
  void operator()(xlatr_job* job) const { xlatr_job_close(job); }
};
struct CloseAnalysis {
  void operator()(xlatr_analysis* analysis) const { xlatr_analysis_close(analysis); }
};
struct CloseComparison {
  void operator()(xlatr_comparison* comparison) const { xlatr_comparison_close(comparison); }
};

}  // namespace detail

// A trace that is read:
//
//     xlatr::Stream stream("drive.asc");
//     for (const xlatr::FrameView frame : stream) { ... }              // one pass; or
//     for (const xlatr::BatchView batch : stream.batches()) { ... }    // by columns
class Stream {
 public:
  explicit Stream(const std::string& path, const xlatr_stream_options* options = nullptr)
      : Stream(Opened(), [&](xlatr_stream** handle) { return xlatr_stream_open(path.c_str(), options, handle); }) {}

  explicit Stream(const Input& input, const xlatr_stream_options* options = nullptr)
      : Stream(Opened(), [&](xlatr_stream** handle) {
          const xlatr_input record = detail::recordOf(input);
          return xlatr_stream_open_input(&record, options, handle);
        }) {}

  // Several as one, by time.
  [[nodiscard]] static Stream merged(std::vector<Stream> parts) {
    std::vector<xlatr_stream*> handles;
    handles.reserve(parts.size());
    for (const Stream& part : parts) {
      handles.push_back(part.handle_.get());
    }
    Stream stream(Opened(), [&](xlatr_stream** handle) {
      return xlatr_stream_merge(handles.data(), static_cast<std::uint32_t>(handles.size()), handle);
    });
    for (Stream& part : parts) {
      static_cast<void>(part.handle_.release());
    }
    return stream;
  }

  // The texts stay until the next call.
  [[nodiscard]] xlatr_head head() const {
    xlatr_head head{};
    head.size = sizeof head;
    require(xlatr_stream_get_head(handle_.get(), &head));
    return head;
  }
  // Nothing at the end.
  [[nodiscard]] std::optional<BatchView> next() {
    const xlatr_code code = xlatr_stream_next(handle_.get(), batch_.get());
    if (code == XLATR_END) {
      return std::nullopt;
    }
    require(code);
    return BatchView(*batch_);
  }
  [[nodiscard]] xlatr_account account() const {
    xlatr_account account = emptyAccount();
    require(xlatr_stream_get_account(handle_.get(), &account));
    return account;
  }
  // Of the file, in bytes, so far.
  [[nodiscard]] std::uint64_t bytesRead() const {
    std::uint64_t bytes = 0;
    std::uint64_t size = 0;
    require(xlatr_stream_get_position(handle_.get(), &bytes, &size));
    return bytes;
  }
  // Hands the rest out as an Arrow stream, which its consumer releases. The stream is used up.
  void exportArrow(ArrowArrayStream& out, std::uint32_t attributes = 0) {
    require(xlatr_stream_export_arrow(handle_.get(), attributes, &out));
    static_cast<void>(handle_.release());
  }

  // One pass over what is left.
  class BatchIterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = BatchView;
    using difference_type = std::ptrdiff_t;
    using pointer = const BatchView*;
    using reference = BatchView;

    BatchIterator() = default;
    explicit BatchIterator(Stream& stream) : stream_(&stream), batch_(stream.next()) {}
    BatchView operator*() const { return *batch_; }
    BatchIterator& operator++() {
      batch_ = stream_->next();
      return *this;
    }
    bool operator==(const BatchIterator& other) const { return batch_.has_value() == other.batch_.has_value(); }
    bool operator!=(const BatchIterator& other) const { return !(*this == other); }

   private:
    Stream* stream_ = nullptr;
    std::optional<BatchView> batch_;
  };
  class Batches {
   public:
    explicit Batches(Stream& stream) : stream_(&stream) {}
    [[nodiscard]] BatchIterator begin() const { return BatchIterator(*stream_); }
    [[nodiscard]] BatchIterator end() const { return {}; }

   private:
    Stream* stream_;
  };
  [[nodiscard]] Batches batches() { return Batches(*this); }

  // For functions of frames.h; it stays the stream's.
  [[nodiscard]] xlatr_stream* handle() const { return handle_.get(); }

  class FrameIterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = FrameView;
    using difference_type = std::ptrdiff_t;
    using pointer = const FrameView*;
    using reference = FrameView;

    FrameIterator() = default;
    explicit FrameIterator(Stream& stream) : stream_(&stream), batch_(stream.next()) {}
    FrameView operator*() const { return (*batch_)[row_]; }
    FrameIterator& operator++() {
      if (++row_ == batch_->size()) {
        batch_ = stream_->next();
        row_ = 0;
      }
      return *this;
    }
    bool operator==(const FrameIterator& other) const {
      return batch_.has_value() == other.batch_.has_value() && row_ == other.row_;
    }
    bool operator!=(const FrameIterator& other) const { return !(*this == other); }

   private:
    Stream* stream_ = nullptr;
    std::optional<BatchView> batch_;
    std::size_t row_ = 0;
  };
  [[nodiscard]] FrameIterator begin() { return FrameIterator(*this); }
  [[nodiscard]] FrameIterator end() const { return {}; }

 private:
  struct Opened {};

  // By a function that makes a handle.
  template <class Open>
  Stream(Opened /*tag*/, Open open) {
    require(detail::make(handle_, open));
    batch_->size = sizeof *batch_;
  }

  void require(xlatr_code code) const {
    if (code < 0) {
      throw Error(code, xlatr_stream_error(handle_.get()));
    }
  }

  std::unique_ptr<xlatr_stream, detail::CloseStream> handle_;
  std::unique_ptr<xlatr_batch> batch_ = std::make_unique<xlatr_batch>();
};

// A trace that is written. One that is not finished leaves no file.
class Sink {
 public:
  explicit Sink(const std::string& path, const xlatr_head* head = nullptr,
                const xlatr_sink_options* options = nullptr) {
    require(detail::make(handle_,
                         [&](xlatr_sink** handle) { return xlatr_sink_create(path.c_str(), head, options, handle); }));
  }

  // The output's context is released by the end of the sink.
  explicit Sink(const xlatr_output& output, const xlatr_head* head = nullptr,
                const xlatr_sink_options* options = nullptr) {
    require(detail::make(
        handle_, [&](xlatr_sink** handle) { return xlatr_sink_create_output(&output, head, options, handle); }));
  }

  void write(const BatchView& batch) { require(xlatr_sink_write(handle_.get(), &batch.columns())); }
  void write(ArrowArrayStream& frames) { require(xlatr_sink_write_arrow(handle_.get(), &frames)); }
  [[nodiscard]] xlatr_account account() const {
    xlatr_account account = emptyAccount();
    require(xlatr_sink_get_account(handle_.get(), &account));
    return account;
  }
  void finish() { require(xlatr_sink_finish(handle_.get())); }

 private:
  void require(xlatr_code code) const {
    if (code < 0) {
      throw Error(code, xlatr_sink_error(handle_.get()));
    }
  }

  std::unique_ptr<xlatr_sink, detail::CloseSink> handle_;
};

// A whole conversion.
class Job {
 public:
  // False cancels. Must not throw.
  using Progress = std::function<bool(const xlatr_job_progress&)>;

  // The options' own progress function counts only without this one.
  explicit Job(xlatr_job_options options, Progress progress = {})
      : progress_(std::make_unique<Progress>(std::move(progress))) {
    options.size = sizeof options;
    if (*progress_) {
      options.progress = [](void* context, const xlatr_job_progress* now) -> std::int32_t {
        return (*static_cast<Progress*>(context))(*now) ? 0 : 1;
      };
      options.context = progress_.get();
    }
    require(detail::make(handle_, [&](xlatr_job** handle) { return xlatr_job_create(&options, handle); }));
  }

  void run() { require(xlatr_job_run(handle_.get())); }
  // From any thread.
  void cancel() { require(xlatr_job_cancel(handle_.get())); }
  [[nodiscard]] xlatr_account account() const {
    xlatr_account account = emptyAccount();
    require(xlatr_job_get_account(handle_.get(), &account));
    return account;
  }

 private:
  void require(xlatr_code code) const {
    if (code < 0) {
      throw Error(code, xlatr_job_error(handle_.get()));
    }
  }

  std::unique_ptr<Progress> progress_;
  std::unique_ptr<xlatr_job, detail::CloseJob> handle_;
};

// What the traffic of a trace is like:
//
//     xlatr::Stream stream("drive.asc");
//     xlatr::Analysis analysis;
//     analysis.run(stream);
//     for (const xlatr_id_statistics& id : analysis.ids()) { ... }
class Analysis {
 public:
  explicit Analysis(const xlatr_analysis_options* options = nullptr) {
    require(detail::make(handle_, [&](xlatr_analysis** handle) { return xlatr_analysis_create(options, handle); }));
  }

  void add(const BatchView& batch) { require(xlatr_analysis_add(handle_.get(), &batch.columns())); }
  // Adds what is left of a stream.
  void run(const Stream& stream) { require(xlatr_analysis_run(handle_.get(), stream.handle())); }
  [[nodiscard]] xlatr_analysis_summary summary() const {
    xlatr_analysis_summary summary{};
    summary.size = sizeof summary;
    require(xlatr_analysis_get_summary(handle_.get(), &summary));
    return summary;
  }
  // What they point to stays until something is added.
  [[nodiscard]] std::vector<xlatr_bus_statistics> buses() const { return rows(xlatr_analysis_get_bus); }
  [[nodiscard]] std::vector<xlatr_id_statistics> ids() const { return rows(xlatr_analysis_get_id); }

 private:
  template <class Record>
  std::vector<Record> rows(xlatr_code (*get)(xlatr_analysis*, std::uint32_t, Record*)) const {
    std::vector<Record> all;
    for (std::uint32_t row = 0;; ++row) {
      Record record{};
      record.size = sizeof record;
      const xlatr_code code = get(handle_.get(), row, &record);
      require(code);
      if (code == XLATR_END) {
        return all;
      }
      all.push_back(record);
    }
  }
  void require(xlatr_code code) const {
    if (code < 0) {
      throw Error(code, xlatr_analysis_error(handle_.get()));
    }
  }

  std::unique_ptr<xlatr_analysis, detail::CloseAnalysis> handle_;
};

// Whether two traces hold the same frames, and where not.
class Comparison {
 public:
  explicit Comparison(const xlatr_comparison_options* options = nullptr) {
    require(detail::make(handle_, [&](xlatr_comparison** handle) { return xlatr_comparison_create(options, handle); }));
  }

  // Compares what is left of both.
  void run(const Stream& first, const Stream& second) {
    require(xlatr_comparison_run(handle_.get(), first.handle(), second.handle()));
  }
  [[nodiscard]] xlatr_comparison_summary summary() const {
    xlatr_comparison_summary summary{};
    summary.size = sizeof summary;
    require(xlatr_comparison_get_summary(handle_.get(), &summary));
    return summary;
  }
  // Nothing beyond the last. Its frames stay until the next call.
  [[nodiscard]] std::optional<xlatr_difference> difference(std::uint32_t row) const {
    xlatr_difference difference{};
    difference.size = sizeof difference;
    const xlatr_code code = xlatr_comparison_get_difference(handle_.get(), row, &difference);
    require(code);
    return code == XLATR_END ? std::nullopt : std::optional(difference);
  }

 private:
  void require(xlatr_code code) const {
    if (code < 0) {
      throw Error(code, xlatr_comparison_error(handle_.get()));
    }
  }

  std::unique_ptr<xlatr_comparison, detail::CloseComparison> handle_;
};

}  // namespace xlatr

#endif
