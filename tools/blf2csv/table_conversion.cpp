#include "blf2csv/table_conversion.hpp"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "formats/blf/blf_log_content.hpp"
#include "formats/blf/blf_log_head.hpp"
#include "formats/blf/blf_log_layout.hpp"
#include "formats/blf/blf_log_objects.hpp"
#include "formats/blf/blf_log_queue.hpp"
#include "platform/files.hpp"

namespace blf2csv {
namespace {

using xlatr::blf_log::ByteQueue;
using xlatr::blf_log::ContentInput;
using xlatr::blf_log::kNanoseconds;
using xlatr::blf_log::kRestorePointsType;
using xlatr::blf_log::kTenMicroseconds;
using xlatr::blf_log::ObjectParser;
using xlatr::blf_log::Piece;

void addObject(const Object& object, BlfTable& table, Remarks& remarks) {
  if (object.type == kRestorePointsType) {
    return;
  }
  const ObjectKind* const kind = findObjectKind(object.type);
  if (kind == nullptr) {
    remarks.notePassedOver(object.type);
    return;
  }
  if (object.flags != kTenMicroseconds && object.flags != kNanoseconds) {
    remarks.note(Remark::UnknownTimeUnit, object.offset);
  }
  table.addRow(object, readCells(*kind, object, remarks));
}

struct Converted {
  Outcome outcome;
  std::uint64_t rows;
};

Converted convert(const std::string& path, const Sink& sink, const Progress& progress, Remarks& remarks) {
  const FileHeader header = readFileHeader(path);
  ContentInput input(path, header.firstObject, remarks);
  ObjectParser parser(remarks);
  BlfTable table(sink);
  table.addHead(header);
  ByteQueue content;
  Object object;
  Piece piece = Piece::More;
  while (piece != Piece::End) {
    piece = input.read(content);
    while (parser.next(content, piece != Piece::More, object)) {
      addObject(object, table, remarks);
    }
    if (!progress(input.progress())) {
      return {Outcome::Stopped, table.rows()};
    }
  }
  table.flush();
  return {Outcome::Done, table.rows()};
}

void requireOtherFile(const std::string& path, const std::string& target) {
  std::error_code missing;
  if (std::filesystem::equivalent(path, target, missing)) {
    throw std::runtime_error(target + ": is the log itself");
  }
}

// What is no plain file, such as a device or a pipe, was not made here.
void removeUnfinished(const xlatr::platform::File& file, const std::string& target) {
  std::error_code gone;
  if (file.isOpen() && std::filesystem::is_regular_file(target, gone)) {
    std::filesystem::remove(target, gone);
  }
}

}  // namespace

Outcome convertToTable(const std::string& path, const Sink& sink, const Progress& progress, Remarks& remarks) {
  return convert(path, sink, progress, remarks).outcome;
}

Outcome convertToFile(const std::string& path, const std::string& target, const Progress& progress, Remarks& remarks) {
  requireOtherFile(path, target);
  // Made by the first block, so that a log that can't be read leaves no table.
  xlatr::platform::File file;
  const auto write = [&](std::string_view block) {
    if (!file.isOpen()) {
      file = xlatr::platform::File::createForWriting(target);
    }
    file.write(block);
  };
  try {
    const Outcome outcome = convertToTable(path, write, progress, remarks);
    if (outcome == Outcome::Stopped) {
      removeUnfinished(file, target);
    } else {
      file.close();
    }
    return outcome;
  } catch (...) {
    removeUnfinished(file, target);
    throw;
  }
}

FileHeader readFileHeader(const std::string& path) {
  const auto header = xlatr::blf_log::readFileHeader(path);
  if (!header) {
    throw std::runtime_error(path + ": is not a BLF log");
  }
  return *header;
}

std::int32_t countObjects(const std::string& path) {
  std::uint64_t count = readFileHeader(path).objectCount;
  if (count == 0) {
    Remarks unheard;
    count = convert(
                path, [](std::string_view) {}, [](std::uint16_t) { return true; }, unheard)
                .rows;
  }
  return static_cast<std::int32_t>(std::min<std::uint64_t>(count, INT32_MAX));
}

}  // namespace blf2csv
