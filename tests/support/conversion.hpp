// Conversions through the public interface, with records that free themselves.
#pragma once

#include <string>
#include <thread>
#include <vector>

#include "xlatr/xlatr.h"

namespace xlatr::test {

// Owns a ConversionResult.
class Result {
 public:
  Result() = default;
  ~Result() { xlatr_free(&record_); }
  Result(const Result&) = delete;
  Result& operator=(const Result&) = delete;

  [[nodiscard]] ConversionResult* record() { return &record_; }
  [[nodiscard]] std::int32_t status() const { return record_.status; }
  [[nodiscard]] bool finished() const { return record_.finished == 1; }
  [[nodiscard]] std::string text() const { return record_.text == nullptr ? "(null)" : record_.text; }
  [[nodiscard]] std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (std::uint32_t index = 0; record_.files != nullptr && index < record_.file_count; ++index) {
      names.emplace_back(record_.files[index]);
    }
    return names;
  }

 private:
  ConversionResult record_{};
};

// The options of a conversion.
struct Options {
  TraceFormat format = XLATR_FORMAT_TRC;
  std::vector<ConversionOption> items = {};
  bool asynchronous = false;

  Options& version(double number) {
    ConversionOption item{};
    item.tag = XLATR_OPTION_TARGET_VERSION;
    item.value.version = number;
    items.push_back(item);
    return *this;
  }
  Options& session(std::uint32_t number) {
    ConversionOption item{};
    item.tag = XLATR_OPTION_SESSION;
    item.value.session = number;
    items.push_back(item);
    return *this;
  }
  Options& separator(char character) {
    ConversionOption item{};
    item.tag = XLATR_OPTION_SEPARATOR;
    item.value.separator = character;
    items.push_back(item);
    return *this;
  }
  Options& flag(std::int32_t tag) {
    ConversionOption item{};
    item.tag = tag;
    item.value.flag = 1;
    items.push_back(item);
    return *this;
  }

  [[nodiscard]] std::int32_t convert(const char* source, const char* target, Result* result,
                                     ConversionProgress* progress = nullptr) const {
    ConversionOptions options{};
    options.target_format = format;
    options.asynchronous = asynchronous ? 1 : 0;
    options.progress = progress;
    options.option_count = static_cast<std::uint32_t>(items.size());
    options.options = items.data();
    return xlatr_convert(source, target, &options, result == nullptr ? nullptr : result->record());
  }
  [[nodiscard]] std::int32_t convert(const std::string& source, const std::string& target, Result& result) const {
    return convert(source.c_str(), target.c_str(), &result);
  }
};

// Polls until the conversion is no longer known: then it has ended.
inline void waitForEnd(std::uint64_t id) {
  ConversionProgress progress{};
  progress.id = id;
  while (xlatr_get_progress(&progress) == XLATR_SUCCESS) {
    std::this_thread::yield();
  }
}

}  // namespace xlatr::test
