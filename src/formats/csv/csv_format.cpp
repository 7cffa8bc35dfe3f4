#include "formats/csv/csv_format.hpp"

#include <array>

#include "formats/csv/csv_frames.hpp"
#include "formats/csv/csv_writer.hpp"

namespace xlatr {
namespace {

std::unique_ptr<ITraceWriter> makeCsvWriter(const WriterSettings& settings) {
  auto writer = std::make_unique<CsvWriter>();
  writer->setSeparator(settings.separator);
  return writer;
}

constexpr std::array kVersions = {1.0};

}  // namespace

constinit const FormatDescriptor kCsvFormat = {
    .format = XLATR_FORMAT_CSV,
    .extension = ".csv",
    .shortName = "CSV-File",
    .description = "Character-separated values",
    .currentVersion = 1.0,
    .lowestVersion = 1.0,
    .supportedVersions = kVersions,
    .makeWriter = makeCsvWriter,
    .frameCapacities = csvCapacities,
    .readsInOrder = true,
    .writesInOrder = true,
    .recognises = looksLikeCsv,
    .openFrames = openCsvFrames,
    .createFrames = createCsvFrames,
};

}  // namespace xlatr
