#include "formats/mf4/block_header.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "util/failures.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

// The first second of 1970 by the clock on the wall.
DateTime localEpoch() {
  return DateTime::fromLocalFields({}, 0, 0);
}

// The count that stands for the start by the clock on the wall.
UnsignedNanoseconds localStart(const HeaderBlockData& data) {
  if ((data.hdTimeFlags & kTimeIsLocal) != 0) {
    return UnsignedNanoseconds(data.hdStartTimeNs);
  }
  if ((data.hdTimeFlags & kTimeOffsetsValid) == 0) {
    return UnsignedNanoseconds(0);
  }
  const RealNanoseconds shifted = RealNanoseconds(static_cast<double>(data.hdStartTimeNs)) +
                                  RealMinutes(data.hdTzOffsetMin) + RealMinutes(data.hdDstOffsetMin);
  const double startNs = std::round(shifted.count());
  constexpr double kEnd = 18446744073709551616.0;  // 2 to the 64th
  return startNs >= kEnd ? UnsignedNanoseconds::max()
                         : UnsignedNanoseconds(static_cast<std::uint64_t>(std::max(0.0, startNs)));
}

}  // namespace

FileIdentificationBlock FileIdentificationBlock::forVersion(double version) {
  FileIdentificationBlock block;
  const std::string text = formatFixed(version, 2);
  std::copy_n(text.begin(), std::min(text.size(), block.idVersion.size() - 1), block.idVersion.begin());
  block.idVersionNumber = static_cast<std::uint16_t>(std::lround(version * 100.0));
  return block;
}

std::unique_ptr<FileHistoryBlock> FileHistoryBlock::create() {
  auto block = std::make_unique<FileHistoryBlock>();
  const DateTime now = DateTime::now();
  if (now.seconds >= 0) {
    const UnsignedNanoseconds second = std::chrono::seconds(now.seconds);
    block->data.fhTimeNs = (second + UnsignedNanoseconds(now.fraction())).count();
  }
  block->comment_.add(createHistoryComment());
  return block;
}

HeaderBlock::HeaderBlock(BlockStream& stream)
    : DescribedBlock(stream, kPosition), dataGroups_(&stream, link(kFirstDataGroup)) {}

std::unique_ptr<FileHistoryBlock> FileHistoryBlock::createInUtc() {
  using std::chrono::duration_cast;
  auto block = std::make_unique<FileHistoryBlock>();
  const auto now = duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch());
  block->data.fhTimeNs = static_cast<std::uint64_t>(std::max<std::int64_t>(0, now.count()));
  block->data.fhTimeFlags = 0;
  block->comment_.add(createHistoryComment());
  return block;
}

std::unique_ptr<HeaderBlock> HeaderBlock::createTree(const MdfLayoutOptions& options, UnsignedNanoseconds start) {
  auto header = std::make_unique<HeaderBlock>();
  header->data.hdStartTimeNs = start.count();
  header->history_.add(FileHistoryBlock::create());
  addDataGroups(options, header->dataGroups_);
  header->placeAll();
  return header;
}

std::unique_ptr<HeaderBlock> HeaderBlock::createEmptyTree(std::unique_ptr<FileHistoryBlock> history) {
  auto header = std::make_unique<HeaderBlock>();
  header->history_.add(std::move(history));
  header->dataGroups_.add(DataGroupBlock::createEmpty());
  header->placeAll();
  return header;
}

void HeaderBlock::placeAll() {
  std::uint64_t nextFree = kPosition;
  place(nextFree);
  placeChildren(*this, nextFree);
}

void HeaderBlock::appendTreeBytes(Bytes& bytes) {
  appendBytes(bytes);
  appendChildren(*this, bytes);
}

DataGroupBlock& HeaderBlock::requireDataGroup(std::size_t index) {
  constexpr std::size_t kLastIndex = 2;
  DataGroupBlock* const group = dataGroups_.at(std::min(index, kLastIndex));
  if (group == nullptr) {
    throwProcessingFailure(kNoSuchGroup);
  }
  return *group;
}

std::uint64_t HeaderBlock::cycleCountPosition(std::size_t dataGroupIndex, BusEventFrameType kind) {
  const ChannelGroupBlock* const group = requireDataGroup(dataGroupIndex).findChannelGroup(kind);
  if (group == nullptr) {
    throwProcessingFailure(kNoSuchGroup);
  }
  return group->cycleCountPosition();
}

std::uint64_t HeaderBlock::dataLinkPosition(std::size_t dataGroupIndex) {
  return requireDataGroup(dataGroupIndex).dataLinkPosition();
}

std::vector<TreeChild> HeaderBlock::children() {
  return {{kFirstHistory, &history_},
          {kHierarchy, &hierarchies_},
          {kAttachment, &attachments_},
          {kEvent, &events_},
          {kFirstDataGroup, &dataGroups_}};
}

void MdfFileHeader::open(const std::string& path) {
  stream_ = std::make_unique<BlockStream>(path);
  readTop();
}

MdfFileHeader::MdfFileHeader(std::vector<std::uint8_t> bytes)
    : stream_(std::make_unique<BlockStream>(std::move(bytes))) {
  readTop();
}

// Whoever asks whether the file is valid learns by what is missing that it could not be read.
void MdfFileHeader::readTop() {
  std::array<std::uint8_t, kLayoutSize<FileIdentificationBlock>> bytes{};
  try {
    if (!stream_->read(0, bytes)) {
      return;
    }
    loadFields(bytes.data(), identification_.emplace());
    header_ = std::make_unique<HeaderBlock>(*stream_);
  } catch (const ConverterGenericException&) {
    header_.reset();
  }
}

std::unique_ptr<MdfFileHeader> MdfFileHeader::createForWriting(const MdfLayoutOptions& options,
                                                               UnsignedNanoseconds start, double version) {
  std::unique_ptr<MdfFileHeader> file(new MdfFileHeader);
  file->identification_ = FileIdentificationBlock::forVersion(version);
  file->header_ = HeaderBlock::createTree(options, start);
  return file;
}

Bytes MdfFileHeader::toBytes() {
  Bytes bytes;
  if (identification_) {
    appendFields(bytes, *identification_);
  }
  if (header_) {
    header_->appendTreeBytes(bytes);
  }
  return bytes;
}

bool MdfFileHeader::hasOpenHeader() const {
  if (closed() || !header_) {
    return false;
  }
  const std::array<char, 4>& id = header_->head().blockId;
  return std::string_view(id.data(), id.size()) == "##HD";
}

void MdfFileHeader::close() {
  header_.reset();
  stream_.reset();
}

DateTime MdfFileHeader::startTime() const {
  DateTime epoch = localEpoch();
  if (!hasOpenHeader()) {
    return epoch;
  }
  using std::chrono::milliseconds;
  const auto start = std::chrono::duration_cast<std::chrono::microseconds>(localStart(header_->data));
  const auto second = std::chrono::duration_cast<std::chrono::seconds>(start);
  const auto millisecond = std::chrono::duration_cast<milliseconds>(start - second);
  return {second.count() + epoch.seconds, static_cast<std::int32_t>(millisecond.count()),
          static_cast<std::int32_t>((start % milliseconds(1)).count()), false};
}

}  // namespace xlatr
