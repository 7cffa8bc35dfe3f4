// A whole CSV table, read to its end by the information object and the reader. The input is the file. What was read is
// read again, into a message that is used again, and must be the same.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "formats/csv/csv_reader.hpp"
#include "scratch_folder.hpp"
#include "target.hpp"

namespace {

using fuzz::require;

void checkInfo(const xlatr::CsvInfo& info) {
  require(info.getValid());
  require(info.separator().size() <= 1);
  require(info.getHeaderLength() <= info.getFileSize());
  require(!info.columnLine().empty() || info.columns().empty());
  require(!info.columnLine().empty() || info.getHeaderLength() == info.getFileSize());
}

// What makes a message different from another.
std::string imageOf(const xlatr::CsvMessage& message) {
  std::string image = message.parsingText + "\n" + message.text + "\n" + message.comment + "\n";
  image.append(message.data.begin(), message.data.end());
  for (const std::uint64_t number :
       {std::uint64_t{message.valid}, std::uint64_t{message.id}, std::uint64_t{message.length},
        std::uint64_t{message.bus}, std::uint64_t{message.objectType}, message.objectTicks,
        std::uint64_t{message.blfId}, static_cast<std::uint64_t>(message.kind)}) {
    image += "," + std::to_string(number);
  }
  return image;
}

void checkMessage(const xlatr::CsvInfo& info, const xlatr::CsvMessage& message) {
  require(message.parsingText.find(info.separator()) != std::string::npos);
  require(message.data.size() <= message.length);
  if (message.valid) {
    require(message.data.size() == message.length);
  }
}

void readTwice(const std::string& path) {
  xlatr::CsvReader reader{xlatr::CsvInfo(xlatr::TraceFileInfo(path))};
  const xlatr::CsvInfo& info = reader.getTrace();
  checkInfo(info);
  require(reader.setActive(true));
  std::vector<std::string> images;
  std::uint64_t invalid = 0;
  while (const auto message = reader.ReadNextMessage()) {
    checkMessage(info, *message);
    images.push_back(imageOf(*message));
    if (!message->valid) {
      ++invalid;
    }
  }
  require(reader.failure().empty());
  require(reader.invalidCount() == invalid);
  require(reader.setActive(true));
  xlatr::CsvMessage message;
  for (const std::string& image : images) {
    require(reader.readInto(message));
    require(imageOf(message) == image);
  }
  require(!reader.readInto(message));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("table.csv", std::span(data, size));
  readTwice(folder.path("table.csv"));
  return 0;
}
