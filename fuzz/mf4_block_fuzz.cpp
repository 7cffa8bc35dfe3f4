// A block of an MDF file, read as what it says it is and, if it can be written, written and read again. The input is a
// file that begins with the block; its links lead into the same bytes.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "formats/mf4/block_header.hpp"
#include "target.hpp"
#include "xlatr/failures.hpp"

namespace {

using fuzz::require;

using xlatr::BlockStream;
using xlatr::BlockTypeId;
using xlatr::Bytes;

// A block that was written is read as the same block. The length in its head also counts bytes after its fields; a text
// may state a length that does not even cover its head, and is then empty.
template <class Block>
void checkAgain(const Block& block) {
  const Bytes bytes = block.toBytes();
  Bytes whole = bytes;
  if (block.head().length > bytes.size()) {
    whole.resize(static_cast<std::size_t>(block.head().length));
  }
  BlockStream stream(whole);
  require(Block(stream, 0).toBytes() == bytes);
}

void follow(xlatr::ChannelBlock& channel) {
  static_cast<void>(channel.name());
  static_cast<void>(channel.compositionArray());
  if (xlatr::ChannelConversionBlock* const conversion = channel.conversion()) {
    static_cast<void>(conversion->unitText());
    static_cast<void>(conversion->evaluate(1.0));
  }
  for (xlatr::ChannelBlock& part : channel.composition()) {
    static_cast<void>(part.name());
  }
  if (const auto data = channel.dataLink()) {
    static_cast<void>(data->getData());
  }
}

void follow(xlatr::ChannelGroupBlock& group) {
  static_cast<void>(group.acquisitionName());
  static_cast<void>(group.pathSeparatorText());
  static_cast<void>(group.findDataBytesChannel());
  for (xlatr::ChannelBlock& channel : group.channels()) {
    follow(channel);
  }
}

void follow(xlatr::DataGroupBlock& group) {
  static_cast<void>(group.hasCanBus());
  for (xlatr::ChannelGroupBlock& channelGroup : group.channelGroups()) {
    follow(channelGroup);
  }
  if (const auto data = group.dataBlock()) {
    static_cast<void>(data->getData());
  }
}

void readAs(BlockStream& stream, BlockTypeId type) {
  switch (type) {
    case BlockTypeId::DG: {
      xlatr::DataGroupBlock block(stream, 0);
      checkAgain(block);
      follow(block);
      break;
    }
    case BlockTypeId::CG: {
      xlatr::ChannelGroupBlock block(stream, 0);
      checkAgain(block);
      follow(block);
      break;
    }
    case BlockTypeId::CN: {
      xlatr::ChannelBlock block(stream, 0);
      checkAgain(block);
      follow(block);
      break;
    }
    case BlockTypeId::CC: {
      xlatr::ChannelConversionBlock block(stream, 0);
      checkAgain(block);
      for (const double value : {-1.0, 0.0, 0.5, 1e300}) {
        static_cast<void>(block.evaluate(value));
      }
      break;
    }
    case BlockTypeId::CA:
      static_cast<void>(xlatr::ChannelArrayBlock(stream, 0).productOfSizes());
      break;
    case BlockTypeId::SI:
      checkAgain(xlatr::SourceInformationBlock(stream, 0));
      break;
    case BlockTypeId::FH:
      checkAgain(xlatr::FileHistoryBlock(stream, 0));
      break;
    case BlockTypeId::TX:
      checkAgain(xlatr::TextBlock(stream, 0));
      break;
    case BlockTypeId::MD:
      checkAgain(xlatr::MetadataBlock(stream, 0));
      break;
    case BlockTypeId::DL:
    case BlockTypeId::LD:
    case BlockTypeId::HL:
      static_cast<void>(xlatr::DataList(stream, 0, type).getData());
      break;
    case BlockTypeId::DT:
    case BlockTypeId::DV:
    case BlockTypeId::RD:
    case BlockTypeId::RV:
    case BlockTypeId::SD:
      static_cast<void>(xlatr::DataBlock(stream, 0).getData());
      break;
    case BlockTypeId::DZ: {
      xlatr::DataZippedBlock block(stream, 0);
      static_cast<void>(block.zippedData());
      static_cast<void>(block.getData());
      break;
    }
    default:
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t kLargestInput = std::size_t{1} << 16;
  if (size > kLargestInput) {
    return 0;
  }
  BlockStream stream(Bytes(data, data + size));
  try {
    readAs(stream, xlatr::HeaderSection::typeOf(xlatr::readHeaderSection(stream, 0)));
  } catch (const xlatr::ConverterGenericException&) {
    return 0;
  }
  return 0;
}
