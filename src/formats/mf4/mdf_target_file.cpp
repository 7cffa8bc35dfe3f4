#include "formats/mf4/mdf_target_file.hpp"

#include <string_view>
#include <utility>

#include "formats/mf4/block_failures.hpp"
#include "formats/mf4/mdf_unfinished.hpp"
#include "util/failures.hpp"
#include "util/little_endian.hpp"

namespace xlatr {
namespace {

constexpr std::uint64_t kAlignment = 8;  // of every block

// Writing that much at once costs little.
constexpr std::uint64_t kDrainSize = MdfRecordStore::kChunkSize;

std::string_view viewOf(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

template <class Number>
std::array<std::uint8_t, sizeof(Number)> littleEndian(Number value) {
  std::array<std::uint8_t, sizeof(Number)> bytes{};
  storeLittle(bytes.data(), value);
  return bytes;
}

std::uint64_t payloadLinkPositionOf(HeaderBlock& header) {
  DataGroupBlock* const dataGroup = header.firstDataGroup();
  ChannelGroupBlock* const group =
      dataGroup == nullptr ? nullptr : dataGroup->findChannelGroup(BusEventFrameType::DataFrame);
  if (group == nullptr) {
    throwProcessingFailure(kNoSuchGroup);
  }
  const ChannelBlock* const channel = group->findDataBytesChannel();
  if (channel == nullptr) {
    throwProcessingFailure(kNoSuchChannel);
  }
  return channel->dataLinkPosition();
}

}  // namespace

MdfTargetFile::MdfTargetFile(BufferedOutput& output, const MdfLayoutOptions& options)
    : output_(output), options_(options) {}

template <class Action>
void MdfTargetFile::changeFile(Action&& action) {
  try {
    action();
  } catch (...) {
    failure_ = std::current_exception();
    throw;
  }
}

void MdfTargetFile::requireWhole() const {
  if (failure_) {
    std::rethrow_exception(failure_);
  }
}

void MdfTargetFile::writeTree(MdfFileHeader& header) {
  requireWhole();
  takePositions(*header.header());
  Bytes tree = header.toBytes();
  markUnfinished(tree, options_.zipped ? kMdfCountsMissing : kMdfCountsMissing | kMdfLastLengthMissing);
  changeFile([&] {
    output_.seek(0);
    output_.write(viewOf(tree));
    if (!std::exchange(treeWritten_, true)) {
      end_ = tree.size();
      beginGroup();
    }
    output_.seek(data_->end());
  });
}

void MdfTargetFile::takePositions(HeaderBlock& header) {
  for (std::size_t kind = 0; kind < kindCount(); ++kind) {
    const std::size_t group = options_.isSorted() ? kind : 0;
    cycleCountPositions_[kind] = header.cycleCountPosition(group, static_cast<BusEventFrameType>(kind));
  }
  for (std::size_t group = 0; group < groupCount(); ++group) {
    dataLinkPositions_[group] = header.dataLinkPosition(group);
  }
  if (options_.usesSignalData()) {
    payloadLinkPosition_ = payloadLinkPositionOf(header);
  }
}

bool MdfTargetFile::hasPlaceFor(const MdfCanMessage& message) const {
  if (options_.dataFramesOnly && message.kind > MessageKind::FD) {
    return false;
  }
  return message.kind == MessageKind::RR || message.kind == MessageKind::ER ||
         isSignalDataFrame(options_, message.kind) || message.length <= mdfPayloadSize(options_);
}

void MdfTargetFile::append(const MdfCanMessage& message) {
  requireWhole();
  if (!hasPlaceFor(message)) {
    return;
  }
  const std::string_view record = record_.render(message, options_, signalData_.size());
  if (isSignalDataFrame(options_, message.kind)) {
    appendSignal(message);
  }
  MdfRecordStore& records = records_[options_.isSorted() ? message.frameKind : 0];
  records.append(record);
  ++frameCounts_[message.frameKind];
  if (treeWritten_ && records_[0].size() >= kDrainSize) {
    changeFile([this] { drainGroup(0); });
  }
}

// A value of the signal data: its length, its bytes.
void MdfTargetFile::appendSignal(const MdfCanMessage& message) {
  if (message.length != message.data.size()) {
    throwProcessingFailure("Internal error (VLSD SD)");
  }
  signalData_.append(viewOf(littleEndian(message.length)));
  signalData_.append(viewOf(message.data));
}

void MdfTargetFile::finish() {
  requireWhole();
  if (!treeWritten_) {
    return;
  }
  changeFile([this] {
    Positions dataPositions{};
    for (std::size_t group = 0; group < groupCount(); ++group) {
      if (group > 0) {
        beginGroup();
      }
      drainGroup(group);
      dataPositions[group] = data_->finish();
      end_ = data_->end();
    }
    if (options_.usesSignalData()) {
      writeSignalData();
    }
    for (std::size_t group = 0; group < groupCount(); ++group) {
      patch(dataLinkPositions_[group], dataPositions[group]);
    }
    for (std::size_t kind = 0; kind < kindCount(); ++kind) {
      patch(cycleCountPositions_[kind], frameCounts_[kind]);
    }
    markFinished(output_);
  });
}

void MdfTargetFile::beginGroup() {
  alignEnd();
  data_.emplace(output_, end_, options_.zipped);
}

void MdfTargetFile::drainGroup(std::size_t group) {
  records_[group].drain([this](std::string_view bytes) { data_->append(bytes); });
}

void MdfTargetFile::writeSignalData() {
  alignEnd();
  HeaderSection head;
  HeaderSection::setType(head, BlockTypeId::SD);
  head.length = kHeaderSectionSize + signalData_.size();
  Bytes bytes;
  appendFields(bytes, head);
  output_.write(viewOf(bytes));
  signalData_.drain([this](std::string_view values) { output_.write(values); });
  patch(payloadLinkPosition_, end_);
}

void MdfTargetFile::alignEnd() {
  constexpr std::string_view kZeros("\0\0\0\0\0\0\0", kAlignment - 1);
  const std::uint64_t padding = (kAlignment - end_ % kAlignment) % kAlignment;
  output_.write(kZeros.substr(0, padding));
  end_ += padding;
}

void MdfTargetFile::patch(std::uint64_t position, std::uint64_t value) {
  output_.seek(position);
  output_.write(viewOf(littleEndian(value)));
}

}  // namespace xlatr
