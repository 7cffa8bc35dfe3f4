// A whole LIN trace, read to its end by the information object and the reader and converted into a table and a log. The
// input is the file. What was read is read again, into a message that is used again, and must be the same.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "formats/asc/asc_writer.hpp"
#include "formats/csv/csv_writer.hpp"
#include "formats/lin/lin_reader.hpp"
#include "scratch_folder.hpp"
#include "target.hpp"
#include "util/failures.hpp"

namespace {

using fuzz::require;

// What makes a message different from another.
std::string imageOf(const xlatr::KorlMessage& message) {
  std::string image = message.parsingText + "\n";
  image.append(message.data.begin(), message.data.end());
  for (const std::uint64_t number :
       {std::uint64_t{message.valid}, std::uint64_t{message.id}, std::uint64_t{message.length},
        message.timestamp.count(), std::uint64_t{message.checksum}, std::uint64_t{message.errorFlags},
        static_cast<std::uint64_t>(message.direction), static_cast<std::uint64_t>(message.checksumType)}) {
    image += "," + std::to_string(number);
  }
  return image;
}

void checkMessage(const xlatr::KorlMessage& message) {
  require(message.parsingText.empty() || message.parsingText.front() != ';');
  require(message.data.size() <= message.length);
  require(!message.valid || message.data.size() == message.length);
  require(!message.busEvent);
}

void readTwice(const std::string& path, xlatr::ITraceWriter& table, xlatr::ITraceWriter& log) {
  xlatr::KorlReader reader{xlatr::KorlInfo(xlatr::TraceFileInfo(path))};
  const xlatr::KorlInfo& info = reader.getTrace();
  require(info.getHeaderLength() <= info.getFileSize());
  require(reader.setActive(true));
  table.WriteHeader(info);
  log.WriteHeader(info);
  std::vector<std::string> images;
  while (const auto message = reader.ReadNextMessage()) {
    checkMessage(*message);
    images.push_back(imageOf(*message));
    table.WriteMessage(*message);
    log.WriteMessage(*message);
  }
  require(reader.failure().empty());
  require(reader.setActive(true));
  xlatr::KorlMessage message;
  for (const std::string& image : images) {
    require(reader.readInto(message));
    require(imageOf(message) == image);
  }
  require(!reader.readInto(message));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::ScratchFolder folder;
  folder.write("trace.ltrc", std::span(data, size));
  xlatr::CsvWriter table(folder.path("out.csv"), true);
  xlatr::AscWriter log(folder.path("out.asc"), true, 8.0);
  table.setActive(true);
  log.setActive(true);
  try {
    readTwice(folder.path("trace.ltrc"), table, log);
  } catch (const xlatr::ConverterParsingException&) {
    return 0;  // a start time that no calendar has can't be written into a head
  }
  return 0;
}
