#include "io/trace_reader.hpp"

#include <exception>

namespace xlatr {

ITraceReader::~ITraceReader() = default;

bool TraceReader::setActive(bool active) {
  if (active) {
    return open();
  }
  close();
  return active_;
}

double TraceReaderText::getPercentDone() const {
  return static_cast<double>(position_) * 100.0 / static_cast<double>(info().getFileSize());
}

bool TraceReaderText::open() {
  close();
  lineCount_ = 0;
  invalidCount_ = 0;
  failure_ = info().failure();
  if (!failure_.empty()) {
    return false;
  }
  try {
    input_.emplace(info().getPath());
    input_->seek(info().getHeaderLength());
    position_ = info().getHeaderLength();
    active_ = true;
  } catch (const std::exception& failure) {
    failure_ = failure.what();
    close();
  }
  return active_;
}

void TraceReaderText::close() {
  active_ = false;
  input_.reset();
}

bool TraceReaderText::readLine(std::string_view& line) {
  // A file that grows while it is read ends where it ended when its information object was made.
  if (!active_ || position_ == info().getFileSize()) {
    return false;
  }
  try {
    if (!input_->next(line)) {
      return false;
    }
  } catch (const std::exception& failure) {
    failure_ = failure.what();
    return false;
  }
  ++lineCount_;
  position_ = input_->position();
  return true;
}

bool TraceReaderText::readLineAfterComments(std::string_view& line) {
  do {
    if (!readLine(line)) {
      return false;
    }
  } while (!line.empty() && line.front() == ';');
  return true;
}

}  // namespace xlatr
