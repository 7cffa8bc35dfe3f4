// The file that frames are written to on the complete way.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "formats/mf4/mdf_block_output.hpp"
#include "formats/mf4/mdf_frame_schema.hpp"
#include "frames/frame_stream.hpp"
#include "io/buffered_output.hpp"
#include "io/output_target.hpp"

namespace xlatr {

struct MdfFrameOutputForm {
  double version = 0.0;
  bool zipped = false;
  std::array<MdfPayload, kMdfFrameGroupCount> payloads{};  // of each kind of group
};

// One data group, with a channel group for each kind of record and each bus, which stands in the file before the first
// record that is of it. Record ids have one byte: when they run out, all further buses of a kind are in one group, and
// only the records say which.
//
// What was written is whole at any time, but says that its counts are not: the file is finished by close alone.
// Failures are those of the output, and kDeflateFailure.
class MdfFrameOutput {
 public:
  static constexpr std::size_t kBusCount = 256;

  MdfFrameOutput(const OutputTarget& target, const std::optional<TraceStart>& start, const MdfFrameOutputForm& form);

  MdfFrameOutput(const MdfFrameOutput&) = delete;
  MdfFrameOutput& operator=(const MdfFrameOutput&) = delete;

  // Counts, until the first record of this kind is appended.
  void setPayload(MdfFrameGroup kind, MdfPayload payload) { form_.payloads[static_cast<std::size_t>(kind)] = payload; }
  [[nodiscard]] MdfPayload payloadOf(MdfFrameGroup kind) const {
    return form_.payloads[static_cast<std::size_t>(kind)];
  }

  // Room for a record of so many bytes after its id, until the next call.
  [[nodiscard]] std::uint8_t* append(MdfFrameGroup kind, std::uint16_t bus, std::size_t size);
  // Puts a payload into the signal data of the record's group, and returns what stands for it in the record.
  [[nodiscard]] std::uint64_t store(MdfFrameGroup kind, std::uint16_t bus, std::span<const std::uint8_t> payload);
  void close();
  // Where the next block of the file goes.
  [[nodiscard]] std::uint64_t end() const { return end_; }

 private:
  // 128 KiB, since there may be one for each bus.
  static constexpr MdfBlockForm kStoredForm = {.type = BlockTypeId::SD, .size = std::size_t{128} << 10};
  static constexpr std::uint16_t kNoGroup = 0xFFFF;
  static constexpr std::size_t kMostRecordIds = 256;

  struct Group {
    std::uint64_t countPosition = 0;
    std::uint64_t count = 0;
    std::unique_ptr<MdfBlockOutput> stored;  // null where payloads are in the records
  };

  void writeTree(const std::optional<TraceStart>& start);
  [[nodiscard]] std::size_t groupFor(MdfFrameGroup kind, std::uint16_t bus);
  [[nodiscard]] std::uint16_t sharedGroup(MdfFrameGroup kind);
  [[nodiscard]] std::uint16_t addGroup(MdfFrameGroup kind, std::uint16_t bus);
  void flushStored();

  MdfFrameOutputForm form_;
  BufferedOutput output_;
  std::uint64_t end_ = 0;
  std::uint64_t nextGroupLink_ = 0;     // the place of the link to the next channel group
  std::vector<Group> groups_;           // by record id
  std::vector<std::uint16_t> groupOf_;  // by kind and bus
  std::array<std::uint16_t, kMdfFrameGroupCount> sharedGroups_{};
  std::optional<MdfBlockOutput> records_;
};

}  // namespace xlatr
