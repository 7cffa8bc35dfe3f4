// The blocks that hold the bytes of records: plain ones, compressed ones, and lists of both.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "formats/mf4/block_base.hpp"
#include "formats/mf4/record_bytes.hpp"

namespace xlatr {

// Whatever a data link leads to. Nothing of the data is held here: it is read straight to where it is wanted, since it
// is most of a file.
class IDataBlock {
 public:
  virtual ~IDataBlock();
  // Bytes that appendRecords will add, as the blocks state it, before anything is allocated for them. Bytes beyond the
  // file raise kShortBytes, a DZ that states more than deflate can squeeze into its compressed bytes kInflateFailure,
  // and a list whose blocks must overlap to hold what they state kBlockLoop.
  [[nodiscard]] virtual std::uint64_t dataSize() = 0;
  // Adds the bytes of the block, or of all blocks of the list, inflated. A failure leaves `out` as it was.
  virtual void appendRecords(RecordBytes& out) = 0;
  // The bytes anew.
  [[nodiscard]] RecordBytes getData();

 protected:
  IDataBlock() = default;
  IDataBlock(const IDataBlock&) = default;
  IDataBlock& operator=(const IDataBlock&) = default;
};

// DT, DV, RD, RV and SD differ in their ids alone: head, no links, bytes.
class PlainDataBlock : public BlockBase, public IDataBlock {
 public:
  explicit PlainDataBlock(BlockTypeId type) : BlockBase(type, 0) {}
  PlainDataBlock(BlockStream& stream, std::uint64_t position) : BlockBase(stream, position) {}

  [[nodiscard]] std::uint64_t dataSize() override;
  void appendRecords(RecordBytes& out) override;
};

template <BlockTypeId kBlockType>
class PlainDataBlockOf final : public PlainDataBlock {
 public:
  static constexpr BlockTypeId kType = kBlockType;

  PlainDataBlockOf() : PlainDataBlock(kType) {}
  using PlainDataBlock::PlainDataBlock;
};

using DataBlock = PlainDataBlockOf<BlockTypeId::DT>;
using DataValuesBlock = PlainDataBlockOf<BlockTypeId::DV>;
using ReductionDataBlock = PlainDataBlockOf<BlockTypeId::RD>;
using ReductionValuesBlock = PlainDataBlockOf<BlockTypeId::RV>;
using SignalDataBlock = PlainDataBlockOf<BlockTypeId::SD>;

enum class MdfZipType : std::uint8_t { Deflate = 0, TransposedDeflate = 1 };

struct DataZippedBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::DZ;
  static constexpr std::size_t kLinkCount = 0;

  std::array<char, 2> dzOrgBlockType = {'D', 'T'};  // letters of the block that it stands for
  std::uint8_t dzZipType = 0;                       // MdfZipType
  std::uint32_t dzZipParameter = 0;                 // transposed: bytes of a row
  std::uint64_t dzOrgDataLength = 0;                // bytes before compression
  std::uint64_t dzDataLength = 0;                   // bytes after compression

  static consteval auto fields() {
    return FieldList{
        Field{0, "dzOrgBlockType", &DataZippedBlockData::dzOrgBlockType},
        Field{2, "dzZipType", &DataZippedBlockData::dzZipType},
        Reserved{3, 1},
        Field{4, "dzZipParameter", &DataZippedBlockData::dzZipParameter},
        Field{8, "dzOrgDataLength", &DataZippedBlockData::dzOrgDataLength},
        Field{16, "dzDataLength", &DataZippedBlockData::dzDataLength},
    };
  }
};

// Compressed by zlib. The compressed bytes follow the fields and are not held.
class DataZippedBlock final : public BlockBase, public IDataBlock {
 public:
  static constexpr BlockTypeId kType = BlockTypeId::DZ;

  DataZippedBlock();
  DataZippedBlock(BlockStream& stream, std::uint64_t position);

  // A stream that does not end or inflates to another size than stated is kInflateFailure. Bytes that were transposed
  // and are no whole number of rows, or whose rows have no bytes, come to nothing.
  void decompress(RecordBytes& out) { appendRecords(out); }
  [[nodiscard]] std::uint64_t dataSize() override;
  void appendRecords(RecordBytes& out) override;

  // The compressed bytes as they stand in the file.
  [[nodiscard]] RecordBytes zippedData();

  DataZippedBlockData data;

 protected:
  void appendData(Bytes& bytes) const override;
};

// The fields of DL and LD, which differ in the width of their flags. Only the links count when data is read; the values
// are kept.
template <class Flags>
struct DataListFields {
  Flags flags = 0;
  std::uint32_t count = 0;                    // of data links after the link to the next list
  std::uint64_t equalLength = 0;              // if bit 0 of the flags is set
  std::vector<std::uint64_t> offsets;         // otherwise
  std::vector<std::uint64_t> timeValues;      // bit 1
  std::vector<std::uint64_t> angleValues;     // bit 2
  std::vector<std::uint64_t> distanceValues;  // bit 3

 protected:
  [[nodiscard]] bool hasEqualLength() const { return (flags & 1U) != 0; }
  [[nodiscard]] bool hasOffsets() const { return !hasEqualLength(); }
  template <unsigned kBit>
  [[nodiscard]] std::uint32_t countOf() const {
    return (flags >> kBit & 1U) != 0 ? count : 0;
  }

  // Those of a list that begins with `head`.
  template <class... Head>
  static consteval auto fieldsAfter(Head... head) {
    return FieldList{
        head...,
        When{&DataListFields::hasEqualLength, Field{"equalLength", &DataListFields::equalLength}},
        When{&DataListFields::hasOffsets, Counted{"offset", &DataListFields::offsets, &DataListFields::count}},
        Counted{"timeValues", &DataListFields::timeValues, &DataListFields::template countOf<1>},
        Counted{"angleValues", &DataListFields::angleValues, &DataListFields::template countOf<2>},
        Counted{"distanceValues", &DataListFields::distanceValues, &DataListFields::template countOf<3>},
    };
  }
};

struct DataListBlockData : DataListFields<std::uint8_t> {
  static constexpr BlockTypeId kType = BlockTypeId::DL;
  static constexpr std::size_t kLinkCount = 1;

  static consteval auto fields() {
    return fieldsAfter(Field{0, "dlFlags", &DataListBlockData::flags}, Reserved{1, 3},
                       Field{4, "dlCount", &DataListBlockData::count});
  }
};

struct ListDataBlockData : DataListFields<std::uint32_t> {
  static constexpr BlockTypeId kType = BlockTypeId::LD;
  static constexpr std::size_t kLinkCount = 1;

  static consteval auto fields() {
    return fieldsAfter(Field{0, "ldFlags", &ListDataBlockData::flags}, Field{4, "ldCount", &ListDataBlockData::count});
  }
};

using DataListBlock = DescribedBlock<DataListBlockData>;
using ListDataBlock = DescribedBlock<ListDataBlockData>;

struct HeaderListBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::HL;
  static constexpr std::size_t kLinkCount = 1;

  std::uint16_t hlFlags = 0;
  std::uint8_t hlZipType = 0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "hlFlags", &HeaderListBlockData::hlFlags},
        Field{2, "hlZipType", &HeaderListBlockData::hlZipType},
        Reserved{3, 5},
    };
  }
};

using HeaderListBlock = DescribedBlock<HeaderListBlockData>;

// A DL, an LD or an HL with all that it leads to, joined in the order of the links. A DL takes DT, RD, SD and DZ, an LD
// takes DV, RV and DZ; zero links and blocks of other types are passed over. A list that states more entries than it
// has links raises kShortBytes.
class DataList final : public IDataBlock {
 public:
  // `type` is one of DL, LD and HL.
  DataList(BlockStream& stream, std::uint64_t position, BlockTypeId type);

  [[nodiscard]] std::uint64_t dataSize() override;
  void appendRecords(RecordBytes& out) override;

 private:
  template <class List>
  void collect(BlockStream& stream, std::uint64_t position, std::span<const BlockTypeId> taken);

  std::vector<std::unique_ptr<IDataBlock>> parts_;
  std::uint64_t fileSize_;
};

// The data block, list or compressed block at this position; nothing for a zero link and for a block of another type.
[[nodiscard]] std::unique_ptr<IDataBlock> followDataLink(BlockStream* stream, std::uint64_t position);

}  // namespace xlatr
