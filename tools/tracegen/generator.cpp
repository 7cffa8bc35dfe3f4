#include "tracegen/generator.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ios>
#include <memory>
#include <stdexcept>
#include <system_error>

#include "tracegen/blf_printer.hpp"
#include "tracegen/btrc_printer.hpp"
#include "tracegen/candump_printer.hpp"
#include "tracegen/lin_printer.hpp"

namespace tracegen {
namespace {

constexpr std::uint32_t kRateScale = 10000;

void require(bool holds, const char* text) {
  if (!holds) {
    throw std::invalid_argument(text);
  }
}

void checkOptions(const RecordingOptions& options) {
  const TrafficOptions& traffic = options.traffic;
  require(traffic.buses >= 1 && traffic.buses <= kMaxBuses, "the number of buses must be 1 to 16");
  require(traffic.buses == 1 || hasBusColumn(options.version),
          "a file of this version has no bus column and holds one bus only");
  require(options.form != Form::Btr || traffic.buses <= kMaxBtrBuses, "a session file holds at most 5 buses");
  require(options.btr.sessions >= 1, "a session file holds one session at least");
  require(traffic.identifiers >= 1 && traffic.identifiers <= kMaxIdentifiers,
          "the number of identifiers must be 1 to 128");
  require(traffic.fdShare <= 100 && traffic.xlShare <= 100 - traffic.fdShare,
          "the shares must not exceed 100 percent together");
  for (const std::uint32_t rate :
       {traffic.remoteRate, traffic.disturbanceRate, traffic.eventRate, traffic.commentRate}) {
    require(rate <= kRateScale, "a rate must be at most 10000");
  }
  require(options.damageRate <= kRateScale, "a rate must be at most 10000");
}

std::unique_ptr<LinePrinter> makePrinter(const RecordingOptions& options) {
  if (options.form == Form::Candump) {
    return std::make_unique<CandumpPrinter>();
  }
  if (options.form == Form::Blf) {
    return std::make_unique<BlfPrinter>();
  }
  if (options.form == Form::Lin) {
    return std::make_unique<LinPrinter>();
  }
  if (options.form == Form::Btrc) {
    return std::make_unique<BtrcPrinter>(BtrcForm{.seed = options.traffic.seed, .damageRate = options.damageRate});
  }
  return std::make_unique<TrcPrinter>(TrcForm{.version = options.version,
                                              .carriageReturn = options.carriageReturn,
                                              .buses = options.traffic.buses,
                                              .seed = options.traffic.seed});
}

// A limit in bytes counts whole sectors.
RecordingSize generateSessions(const RecordingOptions& options, const Sink& sink) {
  constexpr std::uint64_t kSectorSize = 512;
  constexpr std::uint64_t kMessagesPerSector = 24;
  TrafficOptions traffic = options.traffic;
  limitToBtr(traffic);
  TrafficModel model(traffic);
  RecordingSize size;
  size.messages = std::min(options.maxMessages, options.maxBytes / kSectorSize * kMessagesPerSector);
  size.bytes = writeBtrRecording(model, options.btr, size.messages, sink);
  return size;
}

[[noreturn]] void throwFileFailure(const std::string& path, int reason) {
  throw std::ios_base::failure(path, std::error_code(reason, std::generic_category()));
}

}  // namespace

RecordingSize generate(const RecordingOptions& options, const Sink& sink) {
  checkOptions(options);
  if (options.form == Form::Btr) {
    return generateSessions(options, sink);
  }
  TrafficOptions traffic = options.traffic;
  limitToVersion(traffic, options.version);
  TrafficModel model(traffic);
  const std::unique_ptr<LinePrinter> printer = makePrinter(options);
  TextOutput output(sink);
  RecordingSize size;
  printer->printHeader(output);
  while (size.messages < options.maxMessages && output.written() < options.maxBytes) {
    const Entry& entry = model.next();
    printer->printEntry(entry, output);
    if (entry.kind == EntryKind::Comment) {
      ++size.comments;
    } else {
      ++size.messages;
    }
  }
  printer->printEnd(output);
  size.finalHeader = printer->finalHeader();
  output.flush();
  size.bytes = output.written();
  return size;
}

RecordingSize generateFile(const RecordingOptions& options, const std::string& path) {
  const auto writeTo = [&](std::FILE* file) {
    return generate(options, [&](std::string_view piece) {
      if (std::fwrite(piece.data(), 1, piece.size(), file) != piece.size()) {
        throwFileFailure(path, errno);
      }
    });
  };
  if (path == "-") {
    RecordingSize size = writeTo(stdout);
    if (std::fflush(stdout) != 0) {
      throwFileFailure(path, errno);
    }
    return size;
  }
  const auto close = [](std::FILE* file) { return std::fclose(file); };
  std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "wb"), close);
  if (!file) {
    throwFileFailure(path, errno);
  }
  RecordingSize size = writeTo(file.get());
  const std::string& header = size.finalHeader;
  if (!header.empty() && (std::fseek(file.get(), 0, SEEK_SET) != 0 ||
                          std::fwrite(header.data(), 1, header.size(), file.get()) != header.size())) {
    throwFileFailure(path, errno);
  }
  // Closing writes what stdio still holds, so its result counts.
  if (std::fclose(file.release()) != 0) {
    throwFileFailure(path, errno);
  }
  return size;
}

}  // namespace tracegen
