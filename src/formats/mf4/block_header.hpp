// The top of an MDF file: identification, header and file history.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "formats/mf4/block_groups.hpp"
#include "util/date_time.hpp"
#include "util/time_units.hpp"

namespace xlatr {

// The first 64 bytes, which are no block: no head, no links.
struct FileIdentificationBlock {
  std::array<char, 8> idFile = {'M', 'D', 'F', ' ', ' ', ' ', ' ', ' '};
  std::array<char, 8> idVersion{};  // "4.10" and zero bytes; not blanks, which other writers pad with
  std::array<char, 8> idProgram = {'Z', 'E', 'L', 'K', '-', 'C', 'o', 'n'};
  std::uint16_t idVersionNumber = 0;  // 410 for 4.10
  std::uint16_t idUnfinishedFlags = 0;
  std::uint16_t idCustomUnfinishedFlags = 0;

  [[nodiscard]] static FileIdentificationBlock forVersion(double version);

  // Nothing is compared here: an idFile of another format is the reader's matter.
  static consteval auto fields() {
    return FieldList{
        Field{0, "idFile", &FileIdentificationBlock::idFile},
        Field{8, "idVersion", &FileIdentificationBlock::idVersion},
        Field{16, "idProgram", &FileIdentificationBlock::idProgram},
        Reserved{24, 4},
        Field{28, "idVersionNumber", &FileIdentificationBlock::idVersionNumber},
        Reserved{30, 30},
        Field{60, "idUnfinishedFlags", &FileIdentificationBlock::idUnfinishedFlags},
        Field{62, "idCustomUnfinishedFlags", &FileIdentificationBlock::idCustomUnfinishedFlags},
    };
  }
};

static_assert(kLayoutSize<FileIdentificationBlock> == 64);

inline constexpr std::uint8_t kTimeIsLocal = 1;       // bit of the time flags: a time is local time
inline constexpr std::uint8_t kTimeOffsetsValid = 2;  // bit of the time flags: the two offsets are valid

struct FileHistoryBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::FH;
  static constexpr std::size_t kLinkCount = 2;  // next, comment

  std::uint64_t fhTimeNs = 0;
  std::int16_t fhTzOffsetMin = 0;
  std::int16_t fhDstOffsetMin = 0;
  std::uint8_t fhTimeFlags = kTimeIsLocal;

  static consteval auto fields() {
    return FieldList{
        Field{0, "fhTimeNs", &FileHistoryBlockData::fhTimeNs},
        Field{8, "fhTzOffsetMin", &FileHistoryBlockData::fhTzOffsetMin},
        Field{10, "fhDstOffsetMin", &FileHistoryBlockData::fhDstOffsetMin},
        Field{12, "fhTimeFlags", &FileHistoryBlockData::fhTimeFlags},
        Reserved{13, 3},
    };
  }
};

class FileHistoryBlock final : public DescribedBlock<FileHistoryBlockData> {
 public:
  using DescribedBlock::DescribedBlock;

  // The entry of a file that is written now, with its comment. By the clock on the wall, or in UTC.
  [[nodiscard]] static std::unique_ptr<FileHistoryBlock> create();
  [[nodiscard]] static std::unique_ptr<FileHistoryBlock> createInUtc();

  [[nodiscard]] std::vector<TreeChild> children() override { return {{1, &comment_}}; }
  [[nodiscard]] bool hasValidLinkCount() const override { return links().size() == 2; }

 private:
  BlockChain<MetadataBlock> comment_;
};

struct HeaderBlockData {
  static constexpr BlockTypeId kType = BlockTypeId::HD;
  static constexpr std::size_t kLinkCount = 6;

  std::uint64_t hdStartTimeNs = 0;
  std::int16_t hdTzOffsetMin = 0;
  std::int16_t hdDstOffsetMin = 0;
  std::uint8_t hdTimeFlags = kTimeIsLocal;
  std::uint8_t hdTimeClass = 0;
  std::uint8_t hdFlags = 0;
  double hdStartAngleRad = 0.0;
  double hdStartDistanceM = 0.0;

  static consteval auto fields() {
    return FieldList{
        Field{0, "hdStartTimeNs", &HeaderBlockData::hdStartTimeNs},
        Field{8, "hdTzOffsetMin", &HeaderBlockData::hdTzOffsetMin},
        Field{10, "hdDstOffsetMin", &HeaderBlockData::hdDstOffsetMin},
        Field{12, "hdTimeFlags", &HeaderBlockData::hdTimeFlags},
        Field{13, "hdTimeClass", &HeaderBlockData::hdTimeClass},
        Field{14, "hdFlags", &HeaderBlockData::hdFlags},
        Reserved{15, 1},
        Field{16, "hdStartAngleRad", &HeaderBlockData::hdStartAngleRad},
        Field{24, "hdStartDistanceM", &HeaderBlockData::hdStartDistanceM},
    };
  }
};

class HeaderBlock final : public DescribedBlock<HeaderBlockData> {
 public:
  enum Link : std::size_t { kFirstDataGroup, kFirstHistory, kHierarchy, kAttachment, kEvent, kComment };
  static constexpr std::uint64_t kPosition = kLayoutSize<FileIdentificationBlock>;

  HeaderBlock() = default;
  explicit HeaderBlock(BlockStream& stream);

  // The whole tree of a file to be written, placed. The start is in nanoseconds since 1970.
  [[nodiscard]] static std::unique_ptr<HeaderBlock> createTree(const MdfLayoutOptions& options,
                                                               UnsignedNanoseconds start);
  // The same with one data group that is empty.
  [[nodiscard]] static std::unique_ptr<HeaderBlock> createEmptyTree(std::unique_ptr<FileHistoryBlock> history);
  // The bytes of the whole tree. Channel hierarchies, attachments and events raise kBlockNotWritten.
  void appendTreeBytes(Bytes& bytes);

  [[nodiscard]] BlockChain<DataGroupBlock>& dataGroups() { return dataGroups_; }
  [[nodiscard]] DataGroupBlock* firstDataGroup() { return dataGroups_.at(0); }

  // Where a writer patches what it knows only at the end; offsets in the file. A data group that is not there, or that
  // has no channel group for the frames of this kind, raises kNoSuchGroup. Groups above 2 are the third one.
  [[nodiscard]] std::uint64_t cycleCountPosition(std::size_t dataGroupIndex, BusEventFrameType kind);
  [[nodiscard]] std::uint64_t dataLinkPosition(std::size_t dataGroupIndex);

  [[nodiscard]] std::vector<TreeChild> children() override;
  // Lists of blocks that no file which is written has.
  [[nodiscard]] BlockList& hierarchies() { return hierarchies_; }
  [[nodiscard]] BlockList& attachments() { return attachments_; }
  [[nodiscard]] BlockList& events() { return events_; }

 private:
  void placeAll();
  [[nodiscard]] DataGroupBlock& requireDataGroup(std::size_t index);

  BlockChain<FileHistoryBlock> history_;
  BlockChain<DataGroupBlock> dataGroups_;
  BlockList hierarchies_;
  BlockList attachments_;
  BlockList events_;
};

// An MDF file: its stream, its identification and the top of its tree.
class MdfFileHeader {
 public:
  // Closed.
  MdfFileHeader() = default;
  // Open for reading, a file in memory. An identification or header that the bytes don't hold is absent.
  explicit MdfFileHeader(std::vector<std::uint8_t> bytes);
  // The same of a file of the system. std::ios_base::failure when it refuses.
  void open(const std::string& path);

  // A file to be written: the start in nanoseconds since 1970, the version as 4.1 for 4.10.
  [[nodiscard]] static std::unique_ptr<MdfFileHeader> createForWriting(const MdfLayoutOptions& options,
                                                                       UnsignedNanoseconds start, double version);
  // Identification and the whole tree.
  [[nodiscard]] Bytes toBytes();

  // Null where they could not be read.
  [[nodiscard]] const FileIdentificationBlock* identification() const {
    return identification_ ? &*identification_ : nullptr;
  }
  [[nodiscard]] HeaderBlock* header() { return header_.get(); }
  // Whether there is a header, of the type HD, and the file is still open.
  [[nodiscard]] bool hasOpenHeader() const;
  // True for an object without a file.
  [[nodiscard]] bool closed() const { return stream_ == nullptr; }
  // Closes the file. What was read of it is gone.
  void close();

  // The start of the measurement. The file's count is taken for local time; where it is said to be UTC, the offsets of
  // the file make it so, and a file that says neither starts at 1970-01-01. The same without a header. Raises the
  // failure of DateTime for what can't be represented.
  [[nodiscard]] DateTime startTime() const;

 private:
  void readTop();

  std::unique_ptr<BlockStream> stream_;
  std::optional<FileIdentificationBlock> identification_;
  std::unique_ptr<HeaderBlock> header_;
};

}  // namespace xlatr
