// Inflating what is known to its end at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace xlatr {

// Inflates a zlib stream of which all bytes and the length of the content are known, in less than half the time that
// zlib takes. Does nothing in a library that was built without libdeflate. One thread at a time.
class WholeInflater {
 public:
  WholeInflater();
  ~WholeInflater();
  WholeInflater(const WholeInflater&) = delete;
  WholeInflater& operator=(const WholeInflater&) = delete;

  // How many bytes of `packed` the stream takes, if its content fills all of `content`; 0 for any other stream.
  [[nodiscard]] std::size_t inflate(std::span<const std::uint8_t> packed, std::span<std::uint8_t> content);

 private:
  struct State;

  std::unique_ptr<State> state_;
};

}  // namespace xlatr
