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

class DataGroupBlock;

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
  static constexpr std::uint64_t kSize = 24;

  std::array<char, 2> dzOrgBlockType = {'D', 'T'};  // letters of the block that it stands for
  std::uint8_t dzZipType = 0;                       // MdfZipType
  std::uint32_t dzZipParameter = 0;                 // transposed: bytes of a row
  std::uint64_t dzOrgDataLength = 0;                // bytes before compression
  std::uint64_t dzDataLength = 0;                   // bytes after compression

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.text("dzOrgBlockType", self.dzOrgBlockType);
    fields.number("dzZipType", self.dzZipType);
    fields.reserved(1);
    fields.number("dzZipParameter", self.dzZipParameter);
    fields.number("dzOrgDataLength", self.dzOrgDataLength);
    fields.number("dzDataLength", self.dzDataLength);
  }
};

// Compressed by zlib. The compressed bytes stand behind the fields and are not held.
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

// The values that follow the fields of DL and LD. Only the links count when data is read; the values are kept.
struct DataListValues {
  std::uint64_t equalLength = 0;              // if bit 0 of the flags is set
  std::vector<std::uint64_t> offsets;         // otherwise
  std::vector<std::uint64_t> timeValues;      // bit 1
  std::vector<std::uint64_t> angleValues;     // bit 2
  std::vector<std::uint64_t> distanceValues;  // bit 3

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self, std::uint32_t flags, std::uint32_t count) {
    if ((flags & 1U) != 0) {
      fields.number("equalLength", self.equalLength);
    } else {
      fields.array("offset", self.offsets, count);
    }
    fields.array("timeValues", self.timeValues, (flags & 2U) != 0 ? count : 0);
    fields.array("angleValues", self.angleValues, (flags & 4U) != 0 ? count : 0);
    fields.array("distanceValues", self.distanceValues, (flags & 8U) != 0 ? count : 0);
  }
};

struct DataListBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::DL;
  static constexpr std::size_t kLinkCount = 1;

  std::uint8_t dlFlags = 0;
  std::uint32_t dlCount = 0;  // of data links behind the link to the next list
  DataListValues values;

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.number("dlFlags", self.dlFlags);
    fields.reserved(3);
    fields.number("dlCount", self.dlCount);
    DataListValues::describe(fields, self.values, self.dlFlags, self.dlCount);
  }
  [[nodiscard]] std::uint32_t count() const { return dlCount; }
};

struct ListDataBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::LD;
  static constexpr std::size_t kLinkCount = 1;

  std::uint32_t ldFlags = 0;
  std::uint32_t ldCount = 0;
  DataListValues values;

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.number("ldFlags", self.ldFlags);
    fields.number("ldCount", self.ldCount);
    DataListValues::describe(fields, self.values, self.ldFlags, self.ldCount);
  }
  [[nodiscard]] std::uint32_t count() const { return ldCount; }
};

using DataListBlock = DescribedBlock<DataListBlockData>;
using ListDataBlock = DescribedBlock<ListDataBlockData>;

struct HeaderListBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::HL;
  static constexpr std::size_t kLinkCount = 1;

  std::uint16_t hlFlags = 0;
  std::uint8_t hlZipType = 0;

  template <class Fields, class Self>
  static void describe(Fields& fields, Self& self) {
    fields.number("hlFlags", self.hlFlags);
    fields.number("hlZipType", self.hlZipType);
    fields.reserved(5);
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

// A data block to be written: its bytes are those of `head`, then those of `body`.
struct DataBlockBytes {
  Bytes head;
  Bytes zipped;
  std::span<const std::uint8_t> body;  // the records themselves, which are not copied, or `zipped`

  [[nodiscard]] bool empty() const { return head.empty(); }
  [[nodiscard]] std::uint64_t size() const { return head.size() + body.size(); }
};

// The data block of a group to be written, with these records: what its placeholder (DataGroupBlock::createTree) says,
// a DT or a DZ. A DZ without records is no block at all. Raises kDeflateFailure, and kNoDataBlock for a group with
// another placeholder or none. The one-shot form that MdfDataOutput, which is what a writer uses, is held against.
[[nodiscard]] DataBlockBytes makeDataBytes(const DataGroupBlock& group, std::span<const std::uint8_t> records);

}  // namespace xlatr
