#include "outputs/single_objects.hpp"

#include <array>
#include <cmath>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "support/object_families.hpp"

namespace outputs {
namespace {

using namespace xlatr::test;  // the families

template <class SizeOf, class Copy>
std::string textOf(const SizeOf& sizeOf, const Copy& copy) {
  std::string text(sizeOf() + std::size_t{1}, '?');
  copy(text.data(), static_cast<std::uint32_t>(text.size()));
  text.resize(text.find('\0'));
  return text;
}

#define XLATR_TEXT_OF(Size, Text, object) \
  textOf([&] { return Size(object); }, [&](char* buffer, std::uint32_t size) { Text(object, buffer, size); })

// What can be asked of a message of each class, as one line.
std::string answersOf(MessageCan* message) {
  std::string text =
      std::to_string(MessageCan_getValid(message)) + " bus " + std::to_string(MessageCan_getBus(message));
  for (const double version : {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0, 2.5}) {
    text += MessageCan_ValidateForTargetVersion(message, version) ? " +" : " -";
  }
  return text + " " + XLATR_TEXT_OF(MessageCan_getParsingTextSize, MessageCan_getParsingText, message);
}
std::string answersOf(MessageAsc* message) {
  double now = 0.25;
  const bool relative = MessageAsc_AdjustTime(message, &now);
  return std::to_string(MessageAsc_getValid(message)) + " bus " + std::to_string(MessageAsc_getBus(message)) + " " +
         std::to_string(relative) + " " + std::to_string(now) + " " +
         XLATR_TEXT_OF(MessageAsc_getParsingTextSize, MessageAsc_getParsingText, message);
}
std::string answersOf(MessageLin* message) {
  return std::to_string(MessageLin_getValid(message)) + " " +
         XLATR_TEXT_OF(MessageLin_getParsingTextSize, MessageLin_getParsingText, message);
}
std::string answersOf(MessageBinaryFD* message) {
  std::string text =
      std::to_string(MessageBinaryFD_getValid(message)) + " bus " + std::to_string(MessageBinaryFD_getBus(message));
  for (const double version : {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 3.0, 2.5}) {
    text += MessageBinaryFD_ValidateForTargetVersion(message, version) ? " +" : " -";
  }
  return text + " " +
         XLATR_TEXT_OF(MessageBinaryFD_getParsingBytesStringSize, MessageBinaryFD_getParsingBytesString, message) +
         " " + XLATR_TEXT_OF(MessageBinaryFD_getCommentarySize, MessageBinaryFD_getCommentary, message);
}
std::string answersOf(MdfCanMessage* message) {
  return std::to_string(MdfCanMessage_getValid(message)) + " bus " + std::to_string(MdfCanMessage_getBus(message));
}
std::string answersOf(BlfMessage* message) {
  return std::to_string(BlfMessage_getValid(message)) + " bus " + std::to_string(BlfMessage_getBus(message)) + " can " +
         std::to_string(BlfMessage_isBlfCANType(message)) + " " +
         XLATR_TEXT_OF(BlfMessage_getAsCommentarySize, BlfMessage_getAsCommentary, message);
}
std::string answersOf(SessionMessage* message) {
  return "bus " + std::to_string(MsgEntry_getSource(SessionMessage_getMessage(message)));
}

// Takes the information object and the messages of a file, in order. Messages may be looked at during the call alone.
class Sink {
 public:
  Sink() = default;
  virtual ~Sink() = default;
  Sink(const Sink&) = delete;
  Sink& operator=(const Sink&) = delete;
  // The start is for a file whose information object can't be asked for one.
  virtual void begin(const ITraceInfo* info, std::optional<double> startDays) = 0;
  virtual void take(const IMessage* message) = 0;
};

class NoSink final : public Sink {
 public:
  void begin(const ITraceInfo* /*info*/, std::optional<double> /*startDays*/) override {}
  void take(const IMessage* /*message*/) override {}
};

template <class Message>
void handOver(Sink& sink, Message* message) {
  sink.take(reinterpret_cast<const IMessage*>(message));
}

// Reports messages one by one as long as there are few of them, then by digests of a growing number.
class MessageReport {
 public:
  explicit MessageReport(Report& report) : report_(report) {}
  void add(const std::string& answers) {
    if (++count_ <= kShown) {
      report_.fact("message " + std::to_string(count_), answers);
    }
    digest_.add(answers);
    digest_.add("\n");
    if ((count_ & (count_ - 1)) == 0) {
      report_.fact("messages up to " + std::to_string(count_), digest_.text());
    }
  }
  void end() { report_.fact("messages", std::to_string(count_) + ", " + digest_.text()); }

 private:
  static constexpr std::uint64_t kShown = 200;
  Report& report_;
  Digest digest_;
  std::uint64_t count_ = 0;
};

// The families whose readers hand out one message at a time.
template <class Reader>
void read(Report& report, const std::string& source, Sink& sink) {
  using Info = typename Reader::InfoType;
  const auto info = openInfo<Info>(source.c_str());
  report.fact("valid", std::int64_t{Info::getValid(info.get())});
  report.fact("version", Info::getVersion(info.get()));
  report.fact("start", Info::getStartTime(info.get()));
  report.fact("path", textOf([&] { return Info::getPathSize(info.get()); },
                             [&](char* buffer, std::uint32_t size) { Info::getPath(info.get(), buffer, size); }));
  if constexpr (std::is_same_v<Info, BtrcInfoType>) {
    const BtrcFileHeader* const header = BtrcInfo_GetHeader(info.get());
    report.fact("header",
                std::to_string(BtrcFileHeader_getValid(header)) + " " +
                    std::to_string(BtrcFileHeader_getErrorOnRTC(header)) + " " +
                    std::to_string(BtrcFileHeader_getVersion(header)) + " " +
                    std::to_string(BtrcFileHeader_getBlockSize(header)) + " " +
                    std::to_string(BtrcFileHeader_getTimeScalingExponent(header)) + " " +
                    std::to_string(BtrcFileHeader_getSystemTime(header)) + " " +
                    std::to_string(BtrcFileHeader_getFirstFramePosition(header)) + " " +
                    XLATR_TEXT_OF(BtrcFileHeader_getRTCRawDataStringSize, BtrcFileHeader_getRTCRawDataString, header));
  }
  const Owned<Reader> reader(Reader::construct(info.get()));
  if constexpr (std::is_same_v<Reader, MdfReaderType>) {
    std::array<char, 512> reason{};
    report.fact("convertible", std::int64_t{MdfReader_ValidateFile(reader.get(), reason.data(), reason.size())});
    report.fact("reason", std::string_view(reason.data()));
  }
  sink.begin(asTraceInfo(info.get()), std::nullopt);
  MessageReport messages(report);
  report.call("reading", [&] {
    report.fact("active", std::int64_t{Reader::setActive(reader.get(), true)});
    typename Reader::MessageType::Object* message = nullptr;
    while (Reader::readNextMessage(reader.get(), &message)) {
      const Owned<typename Reader::MessageType> owned(message);
      messages.add(answersOf(message));
      handOver(sink, message);
    }
  });
  messages.end();
  report.fact("percent", Reader::getPercentDone(reader.get()));
}

void readBlf(Report& report, const std::string& source, Sink& sink) {
  const Owned<TraceFileInfoType> file(TraceFileInfo_Construct(source.c_str()));
  const Owned<BlfInfoType> info(BlfInfo_Construct(file.get()));
  report.fact("valid", std::int64_t{BlfInfo_getValid(info.get())});
  report.fact("version", BlfInfo_GetVersion(info.get()));
  report.fact("current version", BlfInfo_GetCurrentVersion());
  const Owned<BlfReaderType> reader(BlfReader_Construct(info.get(), ""));
  MessageReport messages(report);
  sink.begin(reinterpret_cast<const ITraceInfo*>(info.get()), std::nullopt);
  report.call("reading", [&] {
    report.fact("active", std::int64_t{BlfReader_setActive(reader.get(), true)});
    std::int32_t exitCode = -1;
    while (!BlfReader_InitializePhaseTwoWaitBlfToCsv(reader.get(), &exitCode)) {
    }
    report.fact("exit code", std::int64_t{exitCode});
    BlfReader_InitializePhaseThreePrepareCsvReader(reader.get(), exitCode);
    report.fact("start", BlfReader_getCSVInfoStartTime(reader.get()));
    BlfMessage* message = nullptr;
    while (BlfReader_ReadNextMessage(reader.get(), &message)) {
      const Owned<BlfMessageType> owned(message);
      messages.add(answersOf(message));
      handOver(sink, message);
    }
  });
  messages.end();
  // How much of its half the converter had done when it was last asked is a matter of time.
  report.fact("percent known", std::int64_t{!std::isnan(BlfReader_getPercentDone(reader.get()))});
}

void readSession(Report& report, const BtrSessionEntry* entry, Sink& sink) {
  const SessionDateTime* const date = SessionDescriptor_getDateAndTime(BtrSessionEntry_getDescription(entry));
  report.fact("session", std::to_string(BtrSessionEntry_getIndex(entry)) + " circular " +
                             std::to_string(BtrSessionEntry_getIsCircular(entry)) + " sectors " +
                             std::to_string(BtrSessionEntry_getSectorsCount(entry)) + " from " +
                             std::to_string(SessionLocation_getSector(BtrSessionEntry_getStart(entry))) + " to " +
                             std::to_string(SessionLocation_getPosition(BtrSessionEntry_getEnd(entry))));
  report.fact("start", SessionDateTime_toDouble(date));
  const Owned<BtrSessionReaderType> reader(BtrSessionReader_Construct(entry, true));
  MessageReport messages(report);
  report.call("reading", [&] {
    for (bool more = true; more;) {
      SessionMessage** sector = nullptr;
      std::uint32_t count = 0;
      std::uint32_t size = 0;
      const auto take = [&] {
        for (std::uint32_t index = 0; index < count; ++index) {
          const Owned<SessionMessageType> owned(sector[index]);
          messages.add(answersOf(sector[index]));
          handOver(sink, sector[index]);
        }
        BtrSessionReader_DeleteSectors(sector);
      };
      try {
        more = BtrSessionReader_ReadNextSector(reader.get(), &sector, &count, &size);
      } catch (...) {
        take();
        throw;
      }
      take();
    }
  });
  messages.end();
  report.fact("percent", BtrSessionReader_getPercentDone(reader.get()));
}

void readBtr(Report& report, const std::string& source, Sink& sink) {
  const Owned<BtrInfoType> info(BtrInfo_Construct(source.c_str()));
  report.fact("valid", std::int64_t{BtrInfo_GetValid(info.get())});
  report.fact("version", BtrInfo_GetVersion(info.get()));
  // A file whose first date is none starts now.
  constexpr double kStartDays = 45000.25;
  sink.begin(reinterpret_cast<const ITraceInfo*>(info.get()), kStartDays);
  for (std::uint32_t index = 0; index < BtrInfo_getSessionsCount(info.get()); ++index) {
    const Owned<BtrSessionEntryType> entry(BtrInfo_GetSession(info.get(), index));
    readSession(report, entry.get(), sink);
  }
}

struct Source {
  std::string_view extension;
  void (*read)(Report& report, const std::string& source, Sink& sink);
};

constexpr std::array kSources = {
    Source{".trc", read<TrcReaderType>},
    Source{".asc", read<AscReaderType>},
    Source{".ltrc", read<KorlReaderType>},
    Source{".btrc", read<BtrcReaderType>},
    Source{".mf4", read<MdfReaderType>},
    Source{".blf", readBlf},
    Source{".btr", readBtr},
};

// Writes what a source hands out with a writer of the family. A writer that refuses message after message is left alone
// after a few of them.
template <class Writer>
class WriterSink final : public Sink {
 public:
  WriterSink(Report& report, const std::string& source, const std::string& target, double version)
      : report_(report), writer_(Writer::construct(target.c_str(), true, version)) {
    Writer::setSourcePath(writer_.get(), source.c_str());
    report_.call("opening", [this] { Writer::setActive(writer_.get(), true); });
  }
  void begin(const ITraceInfo* info, std::optional<double> startDays) override {
    report_.call("header", [&] {
      startDays ? Writer::writeHeader2(writer_.get(), info, *startDays) : Writer::writeHeader(writer_.get(), info);
    });
    report_.call("comment", [this] { Writer::writeComment(writer_.get(), "a comment"); });
  }
  void take(const IMessage* message) override {
    constexpr int kMostRefusals = 3;
    if (refusals_ < kMostRefusals && !report_.call("message", [&] { Writer::writeMessage(writer_.get(), message); })) {
      ++refusals_;
    }
  }
  void close() {
    report_.call("closing", [this] { Writer::setActive(writer_.get(), false); });
    report_.takeFiles();
  }

 private:
  Report& report_;
  Owned<Writer> writer_;
  int refusals_ = 0;
};

template <class Writer>
void writeAll(Report& report, const Source& from, const std::string& source, const std::string& target,
              double version) {
  report.begin(std::string("objects/") + Writer::kName + "-" + std::to_string(version));
  Report unheard = Report::silent();
  WriterSink<Writer> sink(report, source, target, version);
  from.read(unheard, source, sink);
  sink.close();
}

template <class Writer, class Format>
void writeEveryVersion(Report& report, const Source& from, const std::string& source, const std::string& target) {
  const double* const versions = Format::getSupportedVersions();
  for (std::uint32_t index = 0; index < Format::getSupportedVersionsSize(); ++index) {
    writeAll<Writer>(report, from, source, target, versions[index]);
  }
  writeAll<Writer>(report, from, source, target, 0.5);
}

}  // namespace

void reportObjects(Report& report, const std::string& source) {
  for (const Source& from : kSources) {
    if (source.ends_with(from.extension)) {
      report.begin("objects/reading");
      NoSink unused;
      from.read(report, source, unused);
      writeEveryVersion<TrcWriterType, TrcInfoType>(report, from, source, "out.trc");
      writeEveryVersion<AscWriterType, AscInfoType>(report, from, source, "out.asc");
      writeEveryVersion<KorlWriterType, KorlInfoType>(report, from, source, "out.ltrc");
      writeEveryVersion<CsvWriterType, CsvInfoType>(report, from, source, "out.csv");
      writeEveryVersion<BtrcWriterType, BtrcInfoType>(report, from, source, "out.btrc");
      writeEveryVersion<BtrWriterType, BtrInfoType>(report, from, source, "out.btr");
      writeEveryVersion<MdfWriterType, MdfInfoType>(report, from, source, "out.mf4");
    }
  }
}

}  // namespace outputs
