#include "formats/native/btr_format.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "formats/native/btr_frames.hpp"
#include "formats/native/btr_info.hpp"
#include "formats/native/btr_session_reader.hpp"
#include "formats/native/btr_session_writer.hpp"
#include "io/format_makers.hpp"
#include "util/failures.hpp"

namespace xlatr {
namespace {

class BtrSource final : public TraceSource {
 public:
  BtrSource(std::shared_ptr<const BtrInfo> file, std::size_t session)
      : file_(std::move(file)), reader_(file_->GetSession(session)) {}

  [[nodiscard]] const ITraceInfo& info() const override { return *file_; }
  [[nodiscard]] ITraceReader& reader() override { return reader_; }

  // The information object is the whole file's, and its start is that of the first session.
  void writeHeader(ITraceWriter& writer) override {
    writer.WriteHeader_2(*file_, reader_.session().description.dateAndTime.toDateTime().toOleDateFractionFirst());
  }

  [[nodiscard]] Read readNext() override {
    if (++current_ < sector_.size()) {
      return Read::Message;
    }
    current_ = 0;
    if (!reader_.readSector(sector_)) {
      return Read::End;
    }
    return sector_.empty() ? Read::Nothing : Read::Message;
  }

  // The logger has five buses, and what it recorded is written whether it makes sense or not.
  [[nodiscard]] bool warnsOfHighBuses() const override { return false; }
  [[nodiscard]] std::optional<std::uint32_t> bus() const override { return sector_[current_].entry.getSource() + 1U; }
  [[nodiscard]] Verdict judge() const override { return Verdict::Write; }
  void write(ITraceWriter& writer) override { writer.WriteMessage(sector_[current_]); }

 private:
  const std::shared_ptr<const BtrInfo> file_;
  BtrSessionReader reader_;
  std::vector<SessionMessage> sector_;  // the frames of the sector at hand
  std::size_t current_ = 0;
};

// Sectors that a conversion reads for this session, and no less than one: each session is a target.
std::uint64_t costOf(const BtrSessionEntry& session) {
  return session.end.sector < session.firstSector() ? 1 : session.sectorsCount();
}

// A logger gives each session sectors of its own. Where a damaged directory, or one that somebody made up, gives the
// same ones to many sessions, a small file would become gigabytes in thousands of targets.
void requireOwnSectors(const BtrInfo& file, const std::vector<std::size_t>& places) {
  constexpr std::uint64_t kFactor = 4;
  constexpr std::uint64_t kAllowance = 64;
  std::uint64_t sectors = 0;
  for (const std::size_t place : places) {
    sectors += costOf(file.GetSession(place));
  }
  const std::uint64_t there = file.getFileSize() / kBtrSectorSize;
  if (sectors > kAllowance && sectors - kAllowance > kFactor * there) {
    throwProcessingFailure(file.getPath() + ": its " + std::to_string(places.size()) + " sessions share sectors: " +
                           std::to_string(sectors) + " would be read of a file that has " + std::to_string(there) +
                           ". Convert some of the sessions");
  }
}

// Each session is a source, and all of them may be read at the same time. They share the file's information object,
// which does not change.
std::vector<FormatSource> makeSessionSources(const TraceFileInfo& file, const SessionSelection& sessions) {
  const auto info = std::make_shared<const BtrInfo>(file);
  if (!info->failure().empty()) {
    throwProcessingFailure(info->failure());  // nobody knows which sessions there are
  }
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < info->getSessionsCount(); ++place) {
    if (sessions.contains(place)) {
      places.push_back(place);
    }
  }
  requireOwnSectors(*info, places);
  std::vector<FormatSource> sources;
  sources.reserve(places.size());
  for (const std::size_t place : places) {
    sources.push_back({std::make_unique<BtrSource>(info, place), info->GetSession(place).index});
  }
  return sources;
}

constexpr std::array kVersions = {1.0, 2.0, 3.0};
constexpr std::array<TraceFormat, 3> kTargets = {XLATR_FORMAT_TRC, XLATR_FORMAT_ASC, XLATR_FORMAT_CSV};

}  // namespace

constinit const FormatDescriptor kBtrFormat = {
    .format = XLATR_FORMAT_BTR,
    .extension = ".btr",
    .shortName = "BRIX-Bridge",
    .description = "BRIX-Bridge Pro - Binary trace file",
    .currentVersion = 3.0,
    .lowestVersion = 1.0,
    .supportedVersions = kVersions,
    .allowedTargets = kTargets,
    .sessionMarker = "_S",
    .makeSources = makeSessionSources,
    .makeWriter = makePlainWriter<BtrSessionWriter>,
    .frameCapacities = btrCapacities,
    .recognises = looksLikeBtr,
    .openFrames = openBtrFrames,
    .createFrames = createBtrFrames,
};

}  // namespace xlatr
