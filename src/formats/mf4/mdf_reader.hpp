// Reads the messages of an MF4 file.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_info.hpp"
#include "formats/mf4/mdf_merge.hpp"
#include "io/trace_reader.hpp"

namespace xlatr {

// Hands out the frames of all data groups of a CAN bus in the order of their times. All data of these groups is in
// memory while the reader is active. Failures are exceptions: those of the blocks, and the ones named here.
class MdfReader final : public TraceReader {
 public:
  // Shares the open file of the information object, which no other reader may use while this one is active.
  explicit MdfReader(MdfInfo info);
  // Closes an active reader.
  ~MdfReader() override;

  [[nodiscard]] const MdfInfo& getTrace() const { return info_; }

  // Whether the file can be converted; otherwise `text` says why not. Raises nothing: a block that can't be read is a
  // reason too.
  [[nodiscard]] bool ValidateFile(std::string& text);

  // The next message, a new object; null at the end and while inactive. A record that can't be understood gives a
  // message that is not valid. Raises a failure for data that the blocks do not describe: after it nothing more can be
  // read.
  [[nodiscard]] std::unique_ptr<MdfCanMessage> ReadNextMessage();
  // The same into a message that is used again and again, so that reading allocates nothing; false at the end.
  [[nodiscard]] bool readInto(MdfCanMessage& message);

  // By the records that the file states; not a number when it states none.
  [[nodiscard]] double getPercentDone() const override;

 protected:
  // Loads the data. A failure leaves the reader inactive and goes on to the caller. A file that was closed, by an
  // earlier pass of this or another reader, leaves it inactive with the reason as failure().
  bool open() override;
  // Frees the data and closes the file for good, if the reader is active.
  void close() override;

 private:
  // Empty for a file that may be read.
  [[nodiscard]] std::string reasonAgainst();

  MdfInfo info_;
  MdfMerge merge_;
  std::exception_ptr startFailure_;  // given again: the blocks that were reached then are not reached twice
};

}  // namespace xlatr
