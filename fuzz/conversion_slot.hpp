// Whole conversions, one at a time: on this thread, or beside the calls that follow.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

#include "call_arguments.hpp"

namespace fuzz {

// None of the five functions throws; `noexcept` ends the process if one does.
class ConversionSlot {
 public:
  ConversionSlot() = default;
  // Removes the files that were written, so that thousands of inputs do not fill the memory that holds them.
  ~ConversionSlot() {
    end();
    std::error_code ignored;
    if (!targets_.empty()) {
      std::filesystem::remove_all(targets_, ignored);
    }
  }
  ConversionSlot(const ConversionSlot&) = delete;
  ConversionSlot& operator=(const ConversionSlot&) = delete;

  void call(Arguments& arguments) noexcept {
    switch (arguments.choice(4)) {
      case 0:
        convert(arguments);
        break;
      case 1:
        poll();
        break;
      case 2:
        end();
        break;
      default:
        ask(arguments);
        break;
    }
  }

 private:
  static bool isEnd(std::int32_t status) {
    return status == XLATR_SUCCESS || status == XLATR_NOTHING_CONVERTED || status == XLATR_FAILED;
  }

  void convert(Arguments& arguments) {
    end();
    const std::string source = textOf(arguments.path());
    const std::string target = targetPath(arguments);
    const auto items = optionsOf(arguments);
    ConversionOptions options{};
    options.target_format = arguments.format();
    options.asynchronous = arguments.byte() & 1U;
    options.progress = options.asynchronous != 0 || arguments.flag() ? &progress_ : nullptr;
    options.option_count = static_cast<std::uint32_t>(arguments.choice(items.size() + 1));
    options.options = arguments.flag() ? items.data() : nullptr;

    ConversionResult* const result = arguments.flag() ? &result_ : nullptr;
    const std::int32_t status = xlatr_convert(source.c_str(), target.c_str(), &options, result);
    require(isEnd(status) || status == XLATR_IN_PROGRESS);
    running_ = options.asynchronous != 0;
    filled_ = result != nullptr;
    require(running_ || isEnd(status));
    requireResult();
  }
  // A conversion that has ended stays known for a moment.
  void poll() {
    const bool known = xlatr_get_progress(&progress_) == XLATR_SUCCESS;
    require(!known || running_ || progress_.finished == 1);
    require(!known || !(progress_.percent < 0.0F || progress_.percent > 100.0F));
    running_ = running_ && known;
    requireResult();
  }
  // Waits until the record is the caller's again.
  void end() {
    while (running_) {
      std::this_thread::yield();
      poll();
    }
    xlatr_free(&result_);
    require(result_.text == nullptr && result_.files == nullptr);
    filled_ = false;
  }
  void requireResult() const {
    if (running_ || !filled_) {
      return;
    }
    require(result_.finished == 1 && isEnd(result_.status) && result_.text != nullptr);
    require((result_.file_count == 0) == (result_.files == nullptr));
    for (std::uint32_t index = 0; index < result_.file_count; ++index) {
      require(std::filesystem::exists(targets_ / result_.files[index]));
    }
  }
  static void ask(Arguments& arguments) {
    const TraceFormat format = arguments.format();
    static_cast<void>(xlatr_get_formats_convertible_from(format));
    static_cast<void>(xlatr_get_formats_convertible_to(format));
    require(xlatr_get_progress(nullptr) == XLATR_BAD_ARGUMENT);
    require(xlatr_convert(nullptr, nullptr, nullptr, nullptr) == XLATR_BAD_ARGUMENT);
    xlatr_free(nullptr);
  }

  static std::string textOf(const char* text) { return text == nullptr ? std::string() : std::string(text); }
  // In a folder of its own, so that no other object works on the same file; no folder would mean the current one.
  std::string targetPath(Arguments& arguments) {
    targets_ = arguments.folder().path("converted");
    std::filesystem::create_directory(targets_);
    constexpr std::array kNames{"x", "x.trc", "x.y", "", "none/x"};
    return (targets_ / kNames.at(arguments.choice(kNames.size()))).string();
  }
  static std::array<ConversionOption, 3> optionsOf(Arguments& arguments) {
    std::array<ConversionOption, 3> options{};
    for (ConversionOption& option : options) {
      option.tag = arguments.byte() % 8;
      if (option.tag == XLATR_OPTION_TARGET_VERSION) {
        option.value.version = arguments.number();
      } else {
        option.value.bytes[0] = arguments.byte();
      }
    }
    return options;
  }

  std::filesystem::path targets_;
  ConversionProgress progress_{};
  ConversionResult result_{};
  bool running_ = false;
  bool filled_ = false;
};

}  // namespace fuzz
