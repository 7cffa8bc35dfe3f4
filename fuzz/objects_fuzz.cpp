// Random sequences of calls to the exported functions, with random arguments, within the rules of ownership: whatever
// is called in whatever order, nothing but the documented exceptions may come out. The first byte chooses the format of
// the source file, the second how many bytes of the input it holds, and what follows is the sequence of calls.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <tuple>
#include <utility>

#include "scratch_folder.hpp"
#include "support/object_families.hpp"
#include "target.hpp"

namespace {

using fuzz::require;

using namespace xlatr::test;

constexpr std::size_t kMostCalls = 200;

// Bytes taken from the front; zeros when they are used up.
class Input {
 public:
  explicit Input(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  [[nodiscard]] bool atEnd() const { return bytes_.empty(); }
  std::uint8_t byte() {
    if (bytes_.empty()) {
      return 0;
    }
    const std::uint8_t value = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return value;
  }
  // One of `count`.
  std::size_t choice(std::size_t count) { return byte() % count; }
  bool flag() { return (byte() & 1U) != 0; }
  std::span<const std::uint8_t> take(std::size_t count) {
    const auto taken = bytes_.first(std::min(count, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return taken;
  }
  double version() {
    constexpr std::array kVersions{
        0.0, 1.0, 1.1, 1.2, 2.0, 2.1, 3.0, 4.1, 4.2, 8.1, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN()};
    return kVersions.at(choice(kVersions.size()));
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

// Reads a text with a buffer of any size, also none; what was copied is always terminated.
template <typename Copy>
void readText(Input& input, std::uint32_t size, const Copy& copy) {
  std::array<char, 300> buffer;
  buffer.fill('?');
  const auto room = static_cast<std::uint32_t>(input.choice(buffer.size()));
  copy(buffer.data(), room);
  if (room > 0) {
    const std::size_t length = ::strnlen(buffer.data(), room);
    require(length == std::min<std::size_t>(size, room - 1));
  } else {
    require(buffer[0] == '?');
  }
}

class Paths {
 public:
  // What readers and writers are pointed at: the source, targets of any kind, and places where no file can be.
  std::string next(Input& input) const {
    constexpr std::array kNames{"source.trc", "source.asc", "target",     "target.trc",  "none/target", "source.btrc",
                                "",           "source.mf4", "target.mf4", "source.ltrc", "source.btr"};
    const std::string name = kNames.at(input.choice(kNames.size()));
    return name.empty() ? name : folder_.path(name);
  }
  [[nodiscard]] const fuzz::ScratchFolder& folder() const { return folder_; }

 private:
  fuzz::ScratchFolder folder_;
};

// What the calls have made so far: the message and the information object that were handed out last.
struct World {
  const Paths& paths;
  const IMessage* message = nullptr;
  const ITraceInfo* info = nullptr;
};

template <typename Family>
class ReaderSlot {
 public:
  void call(Input& input, World& world) {
    using Info = typename Family::InfoType;
    using Message = typename Family::MessageType;
    switch (input.choice(9)) {
      case 0:
        world.info = nullptr;
        reopen(world.paths.next(input));
        world.info = Info::asTraceInfo(info_.get());
        break;
      case 1:
        Family::setActive(reader(), input.flag());
        break;
      case 2:
      case 3:
        readNext(world);
        break;
      case 4:
        require(!(Family::getPercentDone(reader()) < 0.0));
        break;
      case 5:
        readText(input, Info::getPathSize(info()),
                 [this](char* buffer, std::uint32_t size) { Info::getPath(info(), buffer, size); });
        break;
      case 6:
        static_cast<void>(Info::getValid(info()));
        break;
      case 7:
        static_cast<void>(Info::getVersion(info()));
        static_cast<void>(Info::getStartTime(info()));
        break;
      default:
        static_cast<void>(Message::getValid(message_.get()));
        break;
    }
  }

  [[nodiscard]] const IMessage* message() const {
    return message_ ? Family::MessageType::asMessage(message_.get()) : nullptr;
  }

 private:
  // A null object is an argument like any other.
  typename Family::Object* reader() { return reader_.get(); }
  typename Family::InfoType::Object* info() { return info_.get(); }

  void reopen(const std::string& path) {
    reader_.reset();
    info_.reset();
    info_ = openInfo<typename Family::InfoType>(path.c_str());
    reader_.reset(Family::construct(info_.get()));
  }
  void readNext(World& world) {
    typename Family::MessageType::Object* next = nullptr;
    if (Family::readNextMessage(reader(), &next)) {
      world.message = nullptr;
      message_.reset(next);
      world.message = message();
    } else {
      require(next == nullptr);
    }
  }

  Owned<typename Family::InfoType> info_;
  Owned<Family> reader_;
  Owned<typename Family::MessageType> message_;
};

// The sessions of a BTR file, whose messages come a sector at a time.
class SessionSlot {
 public:
  void call(Input& input, World& world) {
    switch (input.choice(6)) {
      case 0:
        world.info = nullptr;
        reopen(world.paths.next(input), input.byte());
        world.info = reinterpret_cast<const ITraceInfo*>(info_.get());
        break;
      case 1:
        BtrSessionReader_setActive(reader_.get(), input.flag());
        break;
      case 2:
      case 3:
        readSector(world);
        break;
      case 4:
        require(!(BtrSessionReader_getPercentDone(reader_.get()) < 0.0));
        break;
      default:
        look();
        break;
    }
  }

 private:
  void reopen(const std::string& path, std::uint32_t session) {
    reader_.reset();
    entry_.reset();
    info_.reset();
    info_.reset(BtrInfo_Construct(path.c_str()));
    entry_.reset(BtrInfo_GetSession(info_.get(), session));
    require((entry_ != nullptr) == (session < BtrInfo_getSessionsCount(info_.get())));
    reader_.reset(BtrSessionReader_Construct(entry_.get(), false));
  }
  // A frame that makes no sense ends the sector with a failure, and those in front of it were handed out by then.
  void readSector(World& world) {
    SessionMessage** messages = nullptr;
    std::uint32_t count = 0;
    std::uint32_t size = 0;
    try {
      const bool read = BtrSessionReader_ReadNextSector(reader_.get(), &messages, &count, &size);
      require(read || messages == nullptr);
    } catch (const xlatr::ConverterGenericException&) {
      takeMessages(messages, count, world);
      throw;
    }
    takeMessages(messages, count, world);
  }
  // All of them are released but the last, which is the one that writers get.
  void takeMessages(SessionMessage** messages, std::uint32_t count, World& world) {
    for (SessionMessage* const message : std::span<SessionMessage*>(messages, count)) {
      world.message = nullptr;
      message_.reset(message);
      world.message = reinterpret_cast<const IMessage*>(message);
    }
    BtrSessionReader_DeleteSectors(messages);
  }
  void look() {
    static_cast<void>(BtrSessionEntry_getIndex(entry_.get()));
    static_cast<void>(BtrSessionEntry_getSectorsCount(entry_.get()));
    const SessionDescriptor* const description = BtrSessionEntry_getDescription(entry_.get());
    static_cast<void>(SessionDateTime_toDouble(SessionDescriptor_getDateAndTime(description)));
    static_cast<void>(MsgEntry_getSource(SessionMessage_getMessage(message_.get())));
  }

  std::unique_ptr<BtrInfo, Destructor<BtrInfo_Destruct>> info_;
  std::unique_ptr<BtrSessionEntry, Destructor<BtrSessionEntry_Destruct>> entry_;
  std::unique_ptr<BtrSessionReader, Destructor<BtrSessionReader_Destruct>> reader_;
  std::unique_ptr<SessionMessage, Destructor<SessionMessage_Destruct>> message_;
};

// A BLF log in its three phases, in any order. Where no converter is built its queries and its launch fail.
class LogSlot {
 public:
  void call(Input& input, World& world) {
    switch (input.choice(8)) {
      case 0:
        world.info = nullptr;
        reopen(world.paths.folder().path("source.blf"), world.paths.folder().path(""));
        world.info = reinterpret_cast<const ITraceInfo*>(info_.get());
        break;
      case 1:
        BlfReader_setActive(reader_.get(), input.flag());
        break;
      case 2:
        static_cast<void>(BlfReader_InitializePhaseTwoWaitBlfToCsv(reader_.get(), &exitCode_));
        break;
      case 3:
        BlfReader_InitializePhaseThreePrepareCsvReader(reader_.get(), input.flag() ? exitCode_ : input.byte());
        break;
      case 4:
        BlfReader_KillBlfToCsv(reader_.get());
        break;
      case 5:
        readNext(world);
        break;
      case 6:
        static_cast<void>(BlfReader_getPercentDone(reader_.get()));
        static_cast<void>(BlfReader_getCSVInfoStartTime(reader_.get()));
        static_cast<void>(BlfInfo_getValid(info_.get()));
        break;
      default:
        static_cast<void>(BlfMessage_isBlfCANType(message_.get()));
        readText(input, BlfMessage_getAsCommentarySize(message_.get()), [this](char* buffer, std::uint32_t size) {
          BlfMessage_getAsCommentary(message_.get(), buffer, size);
        });
        break;
    }
  }

 private:
  void reopen(const std::string& path, const std::string& folder) {
    const std::unique_ptr<TraceFileInfo, Destructor<TraceFileInfo_Destruct>> file(
        TraceFileInfo_Construct(path.c_str()));
    reader_.reset();
    info_.reset();
    info_.reset(BlfInfo_Construct(file.get()));
    reader_.reset(BlfReader_Construct(info_.get(), folder.c_str()));
  }
  void readNext(World& world) {
    BlfMessage* next = nullptr;
    if (BlfReader_ReadNextMessage(reader_.get(), &next) && next != nullptr) {
      world.message = nullptr;
      message_.reset(next);
      world.message = reinterpret_cast<const IMessage*>(next);
    }
  }

  std::unique_ptr<BlfInfo, Destructor<BlfInfo_Destruct>> info_;
  std::unique_ptr<BlfReader, Destructor<BlfReader_Destruct>> reader_;
  std::unique_ptr<BlfMessage, Destructor<BlfMessage_Destruct>> message_;
  std::int32_t exitCode_ = -1;
};

template <typename Family>
class WriterSlot {
 public:
  void call(Input& input, const World& world) {
    switch (input.choice(14)) {
      case 0: {
        const std::string path = world.paths.next(input);
        const bool overrideExistingFile = input.flag();
        writer_.reset();
        writer_.reset(Family::construct(path.c_str(), overrideExistingFile, input.version()));
        break;
      }
      case 1:
        Family::setActive(writer(), input.flag());
        break;
      case 2:
        Family::writeHeader(writer(), world.info);
        break;
      case 3:
        Family::writeHeader2(writer(), world.info, input.version() * 10000.0);
        break;
      case 4: {
        const auto bytes = input.take(input.byte());
        const std::string text(bytes.begin(), bytes.end());
        Family::writeComment(writer(), text.c_str());
        break;
      }
      case 5:
      case 6:
      case 7:
        Family::writeMessage(writer(), world.message);
        break;
      case 8:
        writer_.reset(Family::createNew(writer()));
        break;
      case 9:
        Family::setTargetPath(writer(), world.paths.next(input).c_str());
        break;
      case 10:
        Family::setTargetVersion(writer(), input.version());
        break;
      case 11:
        Family::setSourcePath(writer(), world.paths.next(input).c_str());
        break;
      case 12:
        readText(input, Family::getTargetPathSize(writer()),
                 [this](char* buffer, std::uint32_t size) { Family::getTargetPath(writer(), buffer, size); });
        break;
      default:
        Family::setOverrideExistingFile(writer(), input.flag());
        break;
    }
  }

 private:
  typename Family::Object* writer() { return writer_.get(); }

  Owned<Family> writer_;
};

using Slots =
    std::tuple<ReaderSlot<TrcReaderType>, ReaderSlot<AscReaderType>, WriterSlot<TrcWriterType>,
               WriterSlot<AscWriterType>, WriterSlot<CsvWriterType>, ReaderSlot<BtrcReaderType>,
               WriterSlot<BtrcWriterType>, ReaderSlot<MdfReaderType>, WriterSlot<MdfWriterType>,
               ReaderSlot<KorlReaderType>, WriterSlot<KorlWriterType>, SessionSlot, WriterSlot<BtrWriterType>, LogSlot>;

template <std::size_t... kIndex>
void callSlot(Slots& slots, std::size_t chosen, Input& input, World& world, std::index_sequence<kIndex...>) {
  static_cast<void>(((kIndex == chosen && (std::get<kIndex>(slots).call(input, world), true)) || ...));
}

void callOnce(Slots& slots, Input& input, World& world) {
  constexpr std::size_t kSlots = std::tuple_size_v<Slots>;
  const std::size_t chosen = input.choice(kSlots);
  fuzz::attempt([&] { callSlot(slots, chosen, input, world, std::make_index_sequence<kSlots>()); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Paths paths;
  Input input({data, size});
  constexpr std::array kSources{"source.trc", "source.asc", "source.btrc", "source.mf4", "source.ltrc", "source.btr"};
  const char* const source = kSources.at(input.choice(kSources.size()));
  const std::size_t sourceSize = std::size_t{input.byte()} * 8;
  paths.folder().write(source, input.take(sourceSize));

  Slots slots;
  World world{paths};
  for (std::size_t count = 0; count < kMostCalls && !input.atEnd(); ++count) {
    callOnce(slots, input, world);
  }
  return 0;
}
