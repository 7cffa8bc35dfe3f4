#include "formats/csv/csv_writer.hpp"

#include <utility>

#include "formats/csv/csv_header.hpp"
#include "formats/csv/csv_mapping.hpp"
#include "messages/message_dispatch.hpp"
#include "util/date_time.hpp"
#include "util/failures.hpp"
#include "util/host.hpp"
#include "util/paths.hpp"
#include "util/render.hpp"
#include "util/text.hpp"

namespace xlatr {
namespace {

constexpr char kDefaultSeparator[] = ";";

using Accepted = MessageClasses<BrixMessage, SessionMessage, AscMessage, KorlMessage, ZelkBinaryMessage, BlfCanMessage,
                                BlfLinMessage>;

}  // namespace

CsvWriter::CsvWriter(std::string targetPath, bool overrideExistingFile, double targetVersion)
    : TraceWriterText(std::move(targetPath), overrideExistingFile, targetVersion), row_(kDefaultSeparator) {}

CsvWriter::~CsvWriter() = default;

void CsvWriter::setSeparator(std::string separator) {
  requireInactive();
  row_.separator = std::move(separator);
}

std::unique_ptr<ITraceWriter> CsvWriter::CreateNew() const {
  auto fresh = std::make_unique<CsvWriter>(getTargetPath(), getOverrideExistingFile(), getTargetVersion());
  fresh->setOwnerBus(getOwnerBus());
  return fresh;
}

void CsvWriter::open() {
  TraceWriterText::open();
  rowNumber_ = 0;
}

void CsvWriter::WriteHeader(const ITraceInfo& source) {
  requireActive();
  if (!source.getValid()) {
    return;
  }
  constexpr int kStartNumberDigits = 15;
  const double startDays = startDaysFrom(source);
  CsvHeaderValues values;
  values.startNumber = formatGeneral(startDays, kStartNumberDigits);
  values.startText = DateTime::fromOleDate(startDays).toSlashedText();
  values.sourcePath = source.getPath();
  values.hostVersion = getHostVersionText();
  // A TRC source's table has the columns of CAN XL, by the extension of its path and whatever it holds.
  const std::string extension = getFileExtension(values.sourcePath);
  values.wide = equalsIgnoreCase(extension, ".trc");
  values.loggerBuses = equalsIgnoreCase(extension, ".btr");
  for (const std::string& line : csvHeaderLines(values, row_.separator)) {
    writeLine("", line);  // an empty line is one here
  }
}

void CsvWriter::WriteComment(std::string_view text) {
  writeLine(text);
}

void CsvWriter::WriteMessage(const IMessage& message) {
  const bool taken = dispatchMessage(Accepted{}, message, [this](const auto& source) {
    mapToCsv(source, row_);
    writeRow();
  });
  if (!taken) {
    throwProcessingFailure("Object cannot be casted to any supported message trace");
  }
}

void CsvWriter::writeRow() {
  line_.clear();
  row_.toRow(line_, ++rowNumber_);
  writeLine(line_.view());
}

}  // namespace xlatr
