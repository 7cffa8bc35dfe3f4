// Reads a TRC trace message by message and writes the messages of one bus to a new trace, with the objects in smart
// pointers and with failures caught.
//
//     raii SOURCE.trc BUS TARGET.trc
//
// Unlike a program in C, this one can leave existing files alone and still say why it stopped: the library's failures
// are exceptions.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include "xlatr/failures.hpp"
#include "xlatr/objects.h"

namespace {

// Releases an object with the function of its family.
template <auto Destruct>
struct Release {
  template <typename Object>
  void operator()(Object* object) const {
    Destruct(object);
  }
};

using Info = std::unique_ptr<TrcInfo, Release<TrcInfo_Destruct>>;
using Reader = std::unique_ptr<TrcReader, Release<TrcReader_Destruct>>;
using Writer = std::unique_ptr<TrcWriter, Release<TrcWriter_Destruct>>;
using Message = std::unique_ptr<MessageCan, Release<MessageCan_Destruct>>;

// The next message, or null at the end of the file.
Message readNext(TrcReader& reader) {
  MessageCan* message = nullptr;
  return Message(TrcReader_ReadNextMessage(&reader, &message) ? message : nullptr);
}

// Returns how many messages were copied.
unsigned copyBus(const std::string& source, unsigned bus, const std::string& target) {
  const Info info(TrcInfo_Construct_2(source.c_str()));
  if (!TrcInfo_getValid(info.get())) {
    throw xlatr::ConverterProcessingException(source + ": no TRC file");
  }
  const Reader reader(TrcReader_Construct(info.get()));
  if (!TrcReader_setActive(reader.get(), true)) {
    throw xlatr::ConverterProcessingException(source + ": can't be opened");
  }
  const Writer writer(TrcWriter_Construct(target.c_str(), false, TrcInfo_GetCurrentVersion()));
  TrcWriter_setSourcePath(writer.get(), source.c_str());  // so that the source is never overwritten
  TrcWriter_setActive(writer.get(), true);                // fails for a target that exists
  TrcWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));

  unsigned copied = 0;
  while (const Message message = readNext(*reader)) {
    if (MessageCan_getValid(message.get()) && MessageCan_getBus(message.get()) == bus) {
      TrcWriter_WriteMessage(writer.get(), reinterpret_cast<const IMessage*>(message.get()));
      ++copied;
    }
  }
  // The last part of the file is written when it is closed; Destruct would close it too, but hide a full disk.
  TrcWriter_setActive(writer.get(), false);
  return copied;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: raii SOURCE.trc BUS TARGET.trc\n";
    return 2;
  }
  try {
    const auto bus = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
    std::cout << copyBus(argv[1], bus, argv[3]) << " messages copied\n";
    return EXIT_SUCCESS;
  } catch (const xlatr::ConverterGenericException& failure) {
    std::cerr << failure.what() << '\n';
  } catch (const std::exception& failure) {  // the system's own, such as a full disk
    std::cerr << failure.what() << '\n';
  }
  return EXIT_FAILURE;
}
