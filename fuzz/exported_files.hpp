// Whole files, read and written through the exported functions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/object_families.hpp"
#include "target.hpp"

namespace fuzz {

// The next message; none at the end.
template <typename Reader>
xlatr::test::Owned<typename Reader::MessageType> readNext(typename Reader::Object* reader) {
  typename Reader::MessageType::Object* message = nullptr;
  const bool read = Reader::readNextMessage(reader, &message);
  require(read == (message != nullptr));
  return xlatr::test::Owned<typename Reader::MessageType>(message);
}

// Reads the file to its end, if it can be started, and returns the number of messages.
template <typename Reader>
std::uint64_t countMessages(const std::string& path) {
  const auto info = xlatr::test::openInfo<typename Reader::InfoType>(path.c_str());
  const xlatr::test::Owned<Reader> reader(Reader::construct(info.get()));
  std::uint64_t count = 0;
  if (Reader::setActive(reader.get(), true)) {
    while (readNext<Reader>(reader.get())) {
      ++count;
    }
  }
  return count;
}

// Reads the source to its end, if it can be started, and gives every message to `write` with the reader and the writer,
// which is active and has its head. Returns the number of messages.
template <typename Reader, typename Writer, typename Write>
std::uint64_t rewrite(const std::string& source, const std::string& target, double version, const Write& write) {
  using Info = typename Reader::InfoType;
  const auto info = xlatr::test::openInfo<Info>(source.c_str());
  static_cast<void>(Info::getStartTime(info.get()));
  const xlatr::test::Owned<Reader> reader(Reader::construct(info.get()));
  if (!Reader::setActive(reader.get(), true)) {
    return 0;
  }
  const xlatr::test::Owned<Writer> writer(Writer::construct(target.c_str(), true, version));
  Writer::setActive(writer.get(), true);
  Writer::writeHeader(writer.get(), xlatr::test::asTraceInfo(info.get()));
  std::uint64_t count = 0;
  for (auto message = readNext<Reader>(reader.get()); message; message = readNext<Reader>(reader.get())) {
    ++count;
    write(reader.get(), message.get(), writer.get());
  }
  require(!(Reader::getPercentDone(reader.get()) < 0.0));
  Writer::setActive(writer.get(), false);
  return count;
}

// A text, read with its pair of size and copy into a buffer of exactly that size.
template <auto kSize, auto kCopy, typename Object>
std::string textOf(const Object* object) {
  const std::uint32_t size = kSize(object);
  std::vector<char> buffer(size + std::size_t{1}, '?');
  kCopy(object, buffer.data(), size + 1);
  require(buffer[size] == '\0');
  return {buffer.data(), size};
}

}  // namespace fuzz
