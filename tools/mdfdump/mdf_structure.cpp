#include "mdf_structure.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <set>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "formats/mf4/block_header.hpp"
#include "xlatr/failures.hpp"

namespace mdfdump {
namespace {

using xlatr::BlockBase;
using xlatr::BlockStream;
using xlatr::BlockTypeId;
using xlatr::Bytes;

template <class Number>
std::string toText(Number value) {
  std::array<char, 64> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  return {buffer.data(), result.ptr};
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char letter : text.substr(0, text.find_last_not_of('\0') + 1)) {
    result += letter >= ' ' && letter < '\x7F' ? letter : '.';
  }
  return result + '"';
}

// Appends each field as " name=value".
class FieldPrinter {
 public:
  explicit FieldPrinter(std::string& out) : out_(out) {}

  template <class Number>
  requires std::is_arithmetic_v<Number>
  void operator()(const char* name, Number value) { begin(name).append(toText(value)); }
  template <std::size_t kCount>
  void operator()(const char* name, const std::array<char, kCount>& text) {
    begin(name).append(quoted({text.data(), text.size()}));
  }
  template <class Number>
  void operator()(const char* name, const std::vector<Number>& values) {
    constexpr std::size_t kMost = 8;
    begin(name) += '(';
    for (std::size_t index = 0; index < std::min(values.size(), kMost); ++index) {
      out_.append(index > 0 ? " " : "").append(toText(values[index]));
    }
    out_.append(values.size() > kMost ? " ...)" : ")");
  }
  void operator()(const char* name, const Bytes& text) {
    constexpr std::size_t kMost = 200;
    begin(name).append(quoted({reinterpret_cast<const char*>(text.data()), std::min(text.size(), kMost)}));
  }

 private:
  std::string& begin(const char* name) { return out_.append(" ").append(name).append("="); }

  std::string& out_;
};

template <class Data>
void printFields(const BlockBase& block, std::string& out) {
  // The data of a DZ, which may be most of the file, follow its fields.
  const bool fieldsAreAll = block.type() != BlockTypeId::DZ;
  Data data;
  xlatr::requireFields(block.readBytes(block.dataOffset(), fieldsAreAll ? block.dataLength() : xlatr::kFixedSize<Data>),
                       data);
  visitFields(data, FieldPrinter{out});
}

struct TypeRow {
  BlockTypeId type;
  void (*printFields)(const BlockBase& block, std::string& out);
  bool isInList;  // its first link leads to the next block of its list
};

// Blocks that are not listed have their length alone: data, and what the library has no class for.
constexpr std::array kTypes = {
    TypeRow{BlockTypeId::HD, printFields<xlatr::HeaderBlockData>, false},
    TypeRow{BlockTypeId::FH, printFields<xlatr::FileHistoryBlockData>, true},
    TypeRow{BlockTypeId::TX, printFields<xlatr::TextBlockData<BlockTypeId::TX>>, false},
    TypeRow{BlockTypeId::MD, printFields<xlatr::TextBlockData<BlockTypeId::MD>>, false},
    TypeRow{BlockTypeId::DG, printFields<xlatr::DataGroupBlockData>, true},
    TypeRow{BlockTypeId::CG, printFields<xlatr::ChannelGroupBlockData>, true},
    TypeRow{BlockTypeId::SI, printFields<xlatr::SourceInformationBlockData>, false},
    TypeRow{BlockTypeId::CN, printFields<xlatr::ChannelBlockData>, true},
    TypeRow{BlockTypeId::CC, printFields<xlatr::ChannelConversionBlockData>, false},
    TypeRow{BlockTypeId::CA, printFields<xlatr::ChannelArrayBlockData>, false},
    TypeRow{BlockTypeId::DL, printFields<xlatr::DataListBlockData>, true},
    TypeRow{BlockTypeId::LD, printFields<xlatr::ListDataBlockData>, true},
    TypeRow{BlockTypeId::HL, printFields<xlatr::HeaderListBlockData>, false},
    TypeRow{BlockTypeId::DZ, printFields<xlatr::DataZippedBlockData>, false},
};

class Walk {
 public:
  explicit Walk(BlockStream& stream) : stream_(stream) {}

  std::string describe() {
    describeIdentification();
    pending_.push_back({xlatr::HeaderBlock::kPosition, 0});
    while (!pending_.empty()) {
      const Place place = pending_.back();
      pending_.pop_back();
      if (seen_.insert(place.position).second) {
        describeBlock(place);
      }
    }
    return std::move(out_);
  }

 private:
  struct Place {
    std::uint64_t position;
    std::size_t depth;
  };

  void describeIdentification() {
    std::array<std::uint8_t, xlatr::kLayoutSize<xlatr::FileIdentificationBlock>> bytes{};
    out_ += "0 ID";
    if (stream_.read(0, bytes)) {
      xlatr::FileIdentificationBlock block;
      xlatr::loadFields(bytes.data(), block);
      visitFields(block, FieldPrinter{out_});
    }
    out_ += '\n';
  }

  void describeBlock(const Place& place) {
    out_.append(2 * place.depth, ' ').append(toText(place.position));
    try {
      const BlockBase block(stream_, place.position);
      const BlockTypeId type = block.type();
      out_.append(" ").append(blockTypeIdToText(type)).append(" length=").append(toText(block.head().length));
      FieldPrinter{out_}("links", block.links());
      const auto* const row = std::ranges::find(kTypes, type, &TypeRow::type);
      const bool isKnown = row != kTypes.end();
      addLinks(block, place.depth, isKnown && row->isInList);
      if (isKnown) {
        row->printFields(block, out_);
      }
    } catch (const xlatr::ConverterGenericException& failure) {
      out_.append(" ! ").append(failure.what());
    }
    out_ += '\n';
  }

  // The last one pushed is the next one described: children in the order of their links, then the rest of the list.
  void addLinks(const BlockBase& block, std::size_t depth, bool isInList) {
    const auto& links = block.links();
    for (std::size_t index = links.size(); index-- > (isInList ? 1 : 0);) {
      if (links[index] != 0) {
        children_.push_back({links[index], depth + 1});
      }
    }
    if (isInList && block.link(0) != 0) {
      pending_.push_back({block.link(0), depth});
    }
    pending_.insert(pending_.end(), children_.begin(), children_.end());
    children_.clear();
  }

  BlockStream& stream_;
  std::string out_;
  std::vector<Place> pending_;
  std::vector<Place> children_;
  std::set<std::uint64_t> seen_;
};

}  // namespace

std::string describeStructure(BlockStream& stream) {
  return Walk(stream).describe();
}

}  // namespace mdfdump
