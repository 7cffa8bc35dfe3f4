#include "formats/mf4/mdf_reader.hpp"

#include <algorithm>
#include <exception>
#include <utility>

namespace xlatr {
namespace {

constexpr char kNotRead[] = "Mdf file could not be read";
constexpr char kNotFinalized[] = "Only finalized MDF4 files are supported";
constexpr char kNoCanBus[] = "CAN bus not available. There is no data to be converted";

}  // namespace

MdfReader::MdfReader(MdfInfo info) : info_(std::move(info)) {}

MdfReader::~MdfReader() {
  MdfReader::close();
}

bool MdfReader::ValidateFile(std::string& text) {
  try {
    text = reasonAgainst();
  } catch (const std::exception& failure) {
    text = failure.what();
  }
  return text.empty();
}

std::string MdfReader::reasonAgainst() {
  if (!info_.failure().empty()) {
    return info_.failure();
  }
  MdfFileHeader* const header = info_.header();
  if (header == nullptr) {
    return kNotRead;
  }
  if (!header->hasOpenHeader() || header->identification()->idUnfinishedFlags != 0 ||
      header->identification()->idCustomUnfinishedFlags != 0) {
    return kNotFinalized;
  }
  for (DataGroupBlock& group : header->header()->dataGroups()) {
    if (group.hasCanBus()) {
      return {};
    }
  }
  return kNoCanBus;
}

std::unique_ptr<MdfCanMessage> MdfReader::ReadNextMessage() {
  auto message = std::make_unique<MdfCanMessage>();
  return readInto(*message) ? std::move(message) : nullptr;
}

bool MdfReader::readInto(MdfCanMessage& message) {
  if (!active_) {
    return false;
  }
  try {
    if (!merge_.next(message)) {
      return false;
    }
  } catch (const std::exception& failure) {
    failure_ = failure.what();
    merge_.stop();
    throw;
  }
  invalidCount_ += message.valid ? 0 : 1;
  return true;
}

double MdfReader::getPercentDone() const {
  return static_cast<double>(merge_.deliveredCount()) * 100.0 / static_cast<double>(merge_.totalCount());
}

bool MdfReader::open() {
  close();
  invalidCount_ = 0;
  failure_.clear();
  MdfFileHeader* const header = info_.header();
  if (header == nullptr || !header->hasOpenHeader()) {
    failure_ = reasonAgainst();
    return false;
  }
  try {
    if (startFailure_) {
      std::rethrow_exception(startFailure_);
    }
    merge_.start(*header->header());
  } catch (const std::exception& failure) {
    startFailure_ = std::current_exception();
    failure_ = failure.what();
    merge_.clear();
    throw;
  }
  active_ = true;
  return true;
}

void MdfReader::close() {
  if (!active_) {
    return;
  }
  active_ = false;
  merge_.clear();
  info_.header()->close();
}

}  // namespace xlatr
