#include "capi/caller_input.hpp"

#include <cstddef>
#include <cstdint>
#include <ios>
#include <optional>
#include <span>
#include <system_error>

#include "capi/frame_records.hpp"

namespace xlatr::capi {
namespace {

std::size_t readFrom(const CallerInput& input, std::uint64_t offset, std::span<char> bytes) {
  const std::int64_t count = input.record().read(input.record().context, offset, bytes.data(), bytes.size());
  if (count < 0 || static_cast<std::uint64_t>(count) > bytes.size()) {
    throw std::ios_base::failure(input.name() + ": the caller's function can't read at byte " + std::to_string(offset),
                                 std::make_error_code(std::errc::io_error));
  }
  return static_cast<std::size_t>(count);
}

std::optional<std::uint64_t> sizeOf(const CallerInput& input) {
  return input.record().length_known != 0 ? std::optional(input.record().length) : std::nullopt;
}

class BytesAnywhere final : public InputBytes {
 public:
  explicit BytesAnywhere(CallerInput input) : input_(std::move(input)) {}
  [[nodiscard]] std::size_t readAt(std::uint64_t offset, std::span<char> bytes) override {
    return readFrom(input_, offset, bytes);
  }
  [[nodiscard]] std::optional<std::uint64_t> size() const override { return sizeOf(input_); }

 private:
  CallerInput input_;
};

class BytesInOrder final : public SequentialBytes {
 public:
  explicit BytesInOrder(CallerInput input) : SequentialBytes(input.name()), input_(std::move(input)) {}
  [[nodiscard]] std::optional<std::uint64_t> size() const override { return sizeOf(input_); }

 protected:
  [[nodiscard]] std::size_t readNext(std::span<char> bytes) override {
    const std::size_t count = readFrom(input_, offset_, bytes);
    offset_ += count;
    return count;
  }

 private:
  CallerInput input_;
  std::uint64_t offset_ = 0;
};

}  // namespace

CallerInput::CallerInput(const xlatr_input* caller) : name_("the input") {
  if (readRecord(caller, record_) && record_.name != nullptr) {
    name_ = record_.name;
  }
}

CallerInput::~CallerInput() {
  if (record_.release != nullptr) {
    record_.release(record_.context);
  }
}

InputSource CallerInput::source() && {
  if (record_.size == 0) {
    refuse("input: there is none, or the record does not begin with its size");
  }
  if (record_.read == nullptr) {
    refuse(name_ + ": there is no function to read it");
  }
  const std::string name = name_;
  if (record_.in_order != 0) {
    return {name, std::make_shared<BytesInOrder>(std::move(*this))};
  }
  if (record_.length_known == 0) {
    refuse(name_ + ": say how long it is, or that it is read in order");
  }
  return {name, std::make_shared<BytesAnywhere>(std::move(*this))};
}

}  // namespace xlatr::capi
