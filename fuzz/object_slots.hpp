// Objects that are made, called and released in any order. A slot holds one object of each family that belongs
// together, or null, and its `call` does one thing to one of them.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "object_calls.hpp"

namespace fuzz {

using xlatr::test::Destructor;
using xlatr::test::Owned;

template <typename Object>
const ITraceInfo* asTraceInfo(const Object* info) {
  return reinterpret_cast<const ITraceInfo*>(info);
}

using OwnedFile = std::unique_ptr<TraceFileInfo, Destructor<TraceFileInfo_Destruct>>;

class FileSlot {
 public:
  void call(Arguments& arguments) {
    switch (arguments.choice(3)) {
      case 0:
        file_.reset(TraceFileInfo_Construct(arguments.path()));
        break;
      case 1:
        callOneOf(kFileCalls, file_.get(), arguments);
        break;
      default:
        callOneOf(kBaseTraceInfoCalls, reinterpret_cast<BaseTraceInfo*>(file_.get()), arguments);
        break;
    }
  }

 private:
  OwnedFile file_;
};

// A reader with the information object that it is made from and its last message.
template <typename Family>
class ReaderSlot {
 public:
  void call(Arguments& arguments) {
    switch (arguments.choice(6)) {
      case 0:
        reopen(arguments);
        break;
      case 1:
        callOneOf(kReaderCalls<Family>, reader_.get(), arguments);
        break;
      case 2:
      case 3:
        readNext(arguments);
        break;
      case 4:
        callOneOf(kInfoCalls<Info>, info_.get(), arguments);
        break;
      default:
        callOneOf(kMessageCalls<typename Message::Object>, message_.get(), arguments);
        break;
    }
  }

 private:
  using Info = typename Family::InfoType;
  using Message = typename Family::MessageType;

  void reopen(Arguments& arguments) {
    arguments.setInfo(nullptr);
    reader_.reset();
    info_.reset();
    info_ = xlatr::test::openInfo<Info>(arguments.path());
    arguments.setInfo(asTraceInfo(info_.get()));
    reader_.reset(Family::construct(info_.get()));
  }
  void readNext(Arguments& arguments) {
    typename Message::Object* next = nullptr;
    if (Family::readNextMessage(reader_.get(), &next)) {
      arguments.setMessage(nullptr);
      message_.reset(next);
      arguments.setMessage(Message::asMessage(next));
    } else {
      require(next == nullptr);
    }
  }

  Owned<Info> info_;
  Owned<Family> reader_;
  Owned<Message> message_;
};

// The head of a binary trace, of its own or of an information object.
class BinaryHeadSlot {
 public:
  void call(Arguments& arguments) {
    switch (arguments.choice(3)) {
      case 0:
        header_.reset(BtrcFileHeader_Construct(arguments.path()));
        break;
      case 1: {
        const auto info = xlatr::test::openInfo<xlatr::test::BtrcInfoType>(arguments.path());
        callOneOf(kBtrcFileHeaderCalls, BtrcInfo_GetHeader(info.get()), arguments);
        break;
      }
      default:
        callOneOf(kBtrcFileHeaderCalls, static_cast<const BtrcFileHeader*>(header_.get()), arguments);
        break;
    }
  }

 private:
  std::unique_ptr<BtrcFileHeader, Destructor<BtrcFileHeader_Destruct>> header_;
};

// The sessions of a BTR file, whose messages come a sector at a time.
class SessionSlot {
 public:
  void call(Arguments& arguments) {
    switch (arguments.choice(10)) {
      case 0:
        reopen(arguments);
        break;
      case 1:
        BtrSessionReader_setActive(reader_.get(), arguments.flag());
        break;
      case 2:
      case 3:
        readSector(arguments);
        break;
      case 4:
        getPercent<BtrSessionReader_getPercentDone>(reader_.get(), arguments);
        break;
      case 5:
        callOneOf(kBtrInfoCalls, info_.get(), arguments);
        break;
      case 6:
        callOneOf(kSessionEntryCalls, entry_.get(), arguments);
        break;
      case 7:
        callOneOf(kSessionLocationCalls, location(arguments), arguments);
        break;
      case 8:
        callOneOf(kSessionDateTimeCalls, entry_ ? SessionDescriptor_getDateAndTime(description()) : nullptr, arguments);
        break;
      default:
        static_cast<void>(MsgEntry_getSource(message_ ? SessionMessage_getMessage(message_.get()) : nullptr));
        break;
    }
  }

 private:
  void reopen(Arguments& arguments) {
    arguments.setInfo(nullptr);
    reader_.reset();
    entry_.reset();
    info_.reset();
    info_.reset(BtrInfo_Construct(arguments.path()));
    arguments.setInfo(asTraceInfo(info_.get()));
    const std::uint32_t session = arguments.byte();
    entry_.reset(BtrInfo_GetSession(info_.get(), session));
    require((entry_ != nullptr) == (session < BtrInfo_getSessionsCount(info_.get())));
    reader_.reset(BtrSessionReader_Construct(entry_.get(), arguments.flag()));
  }
  [[nodiscard]] const SessionDescriptor* description() const { return BtrSessionEntry_getDescription(entry_.get()); }
  [[nodiscard]] const SessionLocation* location(Arguments& arguments) const {
    switch (arguments.choice(4)) {
      case 0:
        return SessionDescriptor_getStartLocation(description());
      case 1:
        return BtrSessionEntry_getStart(entry_.get());
      case 2:
        return BtrSessionEntry_getEnd(entry_.get());
      default:
        return nullptr;
    }
  }
  // A frame that makes no sense ends the sector with a failure, and those in front of it were handed out by then.
  void readSector(Arguments& arguments) {
    SessionMessage** messages = nullptr;
    std::uint32_t count = 0;
    std::uint32_t size = 0;
    try {
      const bool read = BtrSessionReader_ReadNextSector(reader_.get(), &messages, &count, &size);
      require(read || messages == nullptr);
    } catch (const xlatr::ConverterGenericException&) {
      takeMessages(messages, count, arguments);
      throw;
    }
    takeMessages(messages, count, arguments);
  }
  // All of them are released but the last, which is the one that writers get.
  void takeMessages(SessionMessage** messages, std::uint32_t count, Arguments& arguments) {
    for (SessionMessage* const message : std::span<SessionMessage*>(messages, count)) {
      arguments.setMessage(nullptr);
      message_.reset(message);
      arguments.setMessage(reinterpret_cast<const IMessage*>(message));
    }
    BtrSessionReader_DeleteSectors(messages);
  }

  std::unique_ptr<BtrInfo, Destructor<BtrInfo_Destruct>> info_;
  std::unique_ptr<BtrSessionEntry, Destructor<BtrSessionEntry_Destruct>> entry_;
  std::unique_ptr<BtrSessionReader, Destructor<BtrSessionReader_Destruct>> reader_;
  std::unique_ptr<SessionMessage, Destructor<SessionMessage_Destruct>> message_;
};

// A BLF log in its three phases, in any order. Where no converter is built its queries and its launch fail.
class LogSlot {
 public:
  void call(Arguments& arguments) {
    switch (arguments.choice(10)) {
      case 0:
        reopen(arguments);
        break;
      case 1:
        BlfReader_setActive(reader_.get(), arguments.flag());
        break;
      case 2:
        static_cast<void>(
            BlfReader_InitializePhaseTwoWaitBlfToCsv(reader_.get(), arguments.flag() ? nullptr : &exitCode_));
        break;
      case 3:
        BlfReader_InitializePhaseThreePrepareCsvReader(reader_.get(), arguments.flag() ? exitCode_ : arguments.byte());
        break;
      case 4:
        BlfReader_KillBlfToCsv(reader_.get());
        break;
      case 5:
        readNext(arguments);
        break;
      case 6:
        static_cast<void>(BlfReader_getPercentDone(reader_.get()));
        static_cast<void>(BlfReader_getCSVInfoStartTime(reader_.get()));
        break;
      case 7:
        static_cast<void>(BlfReader_getTrace(reader_.get()));
        break;
      case 8:
        callOneOf(kBlfInfoCalls, info_.get(), arguments);
        break;
      default:
        callOneOf(kMessageCalls<BlfMessage>, message_.get(), arguments);
        break;
    }
  }

 private:
  void reopen(Arguments& arguments) {
    arguments.setInfo(nullptr);
    reader_.reset();
    info_.reset();
    const OwnedFile file(TraceFileInfo_Construct(arguments.path()));
    info_.reset(BlfInfo_Construct(file.get()));
    arguments.setInfo(asTraceInfo(info_.get()));
    reader_.reset(BlfReader_Construct(info_.get(), arguments.folder().path("").c_str()));
  }
  void readNext(Arguments& arguments) {
    BlfMessage* next = nullptr;
    if (BlfReader_ReadNextMessage(reader_.get(), &next) && next != nullptr) {
      arguments.setMessage(nullptr);
      message_.reset(next);
      arguments.setMessage(reinterpret_cast<const IMessage*>(next));
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
  void call(Arguments& arguments) {
    switch (arguments.choice(8)) {
      case 0:
        construct(arguments);
        break;
      case 1:
        writer_.reset(Family::createNew(writer_.get()));
        break;
      case 2:
        Family::setActive(writer_.get(), arguments.flag());
        break;
      case 3:
      case 4:
      case 5:
        Family::writeMessage(writer_.get(), arguments.message());
        break;
      default:
        callOneOf(kWriterCalls<Family>, writer_.get(), arguments);
        break;
    }
  }

 private:
  void construct(Arguments& arguments) {
    const bool overrideExistingFile = arguments.flag();
    const double version = arguments.number();
    writer_.reset();
    writer_.reset(Family::construct(arguments.path(), overrideExistingFile, version));
  }

  Owned<Family> writer_;
};

// Functions that need no object.
class FreeSlot {
 public:
  static void call(Arguments& arguments) { kFreeCalls.at(arguments.choice(kFreeCalls.size()))(arguments); }
};

}  // namespace fuzz
