#include "capi/caller_output.hpp"

#include <ios>
#include <memory>
#include <span>
#include <system_error>

#include "capi/frame_records.hpp"

namespace xlatr::capi {
namespace {

class BytesToCaller final : public OutputBytes {
 public:
  explicit BytesToCaller(CallerOutput output) : output_(std::move(output)) {}

  void write(std::span<const char> bytes) override {
    const xlatr_output& caller = output_.record();
    if (caller.write(caller.context, bytes.data(), bytes.size()) < 0) {
      throw std::ios_base::failure(output_.name() + ": the caller's function can't write",
                                   std::make_error_code(std::errc::io_error));
    }
  }

 private:
  CallerOutput output_;
};

}  // namespace

CallerOutput::CallerOutput(const xlatr_output* caller) : name_("the output") {
  if (readRecord(caller, record_) && record_.name != nullptr) {
    name_ = record_.name;
  }
}

CallerOutput::~CallerOutput() {
  if (record_.release != nullptr) {
    record_.release(record_.context);
  }
}

OutputTarget CallerOutput::target() && {
  if (record_.size == 0) {
    refuse("output: there is none, or the record does not begin with its size");
  }
  if (record_.write == nullptr) {
    refuse(name_ + ": there is no function to write it");
  }
  const std::string name = name_;
  return {name, std::make_shared<BytesToCaller>(std::move(*this))};
}

}  // namespace xlatr::capi
