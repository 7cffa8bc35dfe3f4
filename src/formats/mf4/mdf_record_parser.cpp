#include "formats/mf4/mdf_record_parser.hpp"

#include <string>
#include <utility>

#include "formats/mf4/mdf_channel_search.hpp"
#include "formats/mf4/mdf_number_field.hpp"
#include "formats/mf4/mdf_tree.hpp"

namespace xlatr {
namespace {

struct TopChannel {
  ChannelBlock* channel;
  const MdfFrameName* frame;  // null for the master
};

// The channels that make a message: the master, and those named after a frame other than an overload frame.
std::vector<TopChannel> findTopChannels(ChannelGroupBlock& group) {
  constexpr std::size_t kEnoughToRefuse = 3;
  std::vector<TopChannel> found;
  for (ChannelBlock& channel : group.channels()) {
    const bool isMaster = is(channel.data.cnType, MdfChannelType::Master);
    const MdfFrameName* const frame = isMaster ? nullptr : messageFrameOfMdf(channel.name());
    if (isMaster || frame != nullptr) {
      found.push_back({&channel, frame});
    }
    if (found.size() == kEnoughToRefuse) {
      break;
    }
  }
  return found;
}

}  // namespace

MdfRecordParser::MdfRecordParser(ChannelGroupBlock& group) : recordSize_(group.data.cgDataBytes) {
  const std::vector<TopChannel> top = findTopChannels(group);
  if (top.size() != 2) {
    return;
  }
  MdfTree tree(*group.stream());
  const std::string stated = group.pathSeparatorText();
  const std::string separator = stated.empty() ? std::string(1, '.') : stated;
  for (const auto& [channel, frame] : top) {
    Step step;
    if (frame == nullptr) {
      step.time = MdfTimeReader::of(tree, mdfChannelOf(*channel), group.data);
    } else if (is(channel->data.cnType, MdfChannelType::FixedLength)) {
      step.frame = MdfFrameLayout::ofComposition(tree, *frame, *channel, separator, group.data);
    }
    if (!step.time && !step.frame) {
      return;
    }
    steps_.push_back(std::move(step));
  }
  complete_ = true;
}

bool MdfRecordParser::Step::read(const std::uint8_t* record, MdfCanMessage& message) const {
  if (!time) {
    return frame->readMessage(record, message);
  }
  const std::optional<RealMicroseconds> read = time->readReal(record);
  message.time = read.value_or(message.time);
  return read.has_value();
}

void MdfRecordParser::parse(const std::uint8_t* record, MdfCanMessage& message) const {
  for (const Step& step : steps_) {
    if (!step.read(record, message)) {
      return;
    }
  }
  if (!complete_) {
    return;
  }
  if (message.type == MessageType::Rx && message.direction == MessageDirection::Tx) {
    message.type = MessageType::Tx;
  }
  message.valid = true;
}

}  // namespace xlatr
