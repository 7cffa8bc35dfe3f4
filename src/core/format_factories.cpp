#include "core/format_factories.hpp"

#include <algorithm>
#include <array>

#include "core/asc_source.hpp"
#include "core/btrc_source.hpp"
#include "core/lin_source.hpp"
#include "core/mdf_source.hpp"
#include "core/trc_source.hpp"
#include "formats/asc/asc_writer.hpp"
#include "formats/csv/csv_writer.hpp"
#include "formats/mf4/mdf_writer.hpp"
#include "formats/native/btr_session_writer.hpp"
#include "formats/native/btrc_writer.hpp"
#include "formats/trc/trc_writer.hpp"

namespace xlatr {
namespace {

template <class Writer>
std::unique_ptr<ITraceWriter> makePlainWriter(const WriterSettings& /*settings*/) {
  return std::make_unique<Writer>();
}

std::unique_ptr<ITraceWriter> makeCsvWriter(const WriterSettings& settings) {
  auto writer = std::make_unique<CsvWriter>();
  writer->setSeparator(settings.separator);
  return writer;
}

std::unique_ptr<ITraceWriter> makeMdfWriter(const WriterSettings& settings) {
  auto writer = std::make_unique<MdfWriter>();
  writer->setZipped(settings.zipped);
  writer->setSorted(settings.sorted);
  return writer;
}

constexpr std::array kFactories = {
    FormatFactory{XLATR_FORMAT_TRC, makeTrcSource, makePlainWriter<TrcWriter>},
    // Its sessions become sources one by one: makeBtrSource.
    FormatFactory{XLATR_FORMAT_BTR, nullptr, makePlainWriter<BtrSessionWriter>},
    FormatFactory{XLATR_FORMAT_ASC, makeAscSource, makePlainWriter<AscWriter>},
    FormatFactory{XLATR_FORMAT_LIN, makeLinSource, nullptr},
    FormatFactory{XLATR_FORMAT_CSV, nullptr, makeCsvWriter},
    FormatFactory{XLATR_FORMAT_BTRC, makeBtrcSource, makePlainWriter<BtrcWriter>},
    FormatFactory{XLATR_FORMAT_MF4, makeMdfSource, makeMdfWriter},
};

const FormatFactory* factoryOf(FormatFactories factories, TraceFormat format) {
  const auto row = std::ranges::find(factories, format, &FormatFactory::format);
  return row == factories.end() ? nullptr : &*row;
}

}  // namespace

FormatFactories builtInFactories() {
  return kFactories;
}

std::unique_ptr<TraceSource> makeSource(FormatFactories factories, const TraceFileInfo& file) {
  const FormatFactory* const row = factoryOf(factories, file.getFormat());
  return row != nullptr && row->makeSource != nullptr ? row->makeSource(file) : nullptr;
}

std::unique_ptr<ITraceWriter> makeWriter(FormatFactories factories, TraceFormat format,
                                         const WriterSettings& settings) {
  const FormatFactory* const row = factoryOf(factories, format);
  return row != nullptr && row->makeWriter != nullptr ? row->makeWriter(settings) : nullptr;
}

}  // namespace xlatr
