// What a converter says about a BLF log.
#pragma once

#include <cstdint>
#include <string>

#include "formats/blf/blf_converter.hpp"
#include "io/trace_info.hpp"

namespace xlatr {

// Asks the converter once, at construction, and only for a file that is a BLF log by its name. Nothing is raised if
// there is no answer; then the version is 0.0 and the count of objects 0.
class BlfInfo final : public TraceInfo {
 public:
  explicit BlfInfo(TraceFileInfo file, BlfConverter converter = BlfConverter());

  // Whether the file is a BLF log by its name, whatever it contains.
  [[nodiscard]] bool getValid() const override { return isOfOwnFormat(); }
  // All four parts and a line end, "4.7.1.0\n"; empty if the file is not valid.
  [[nodiscard]] std::string getVersionText() const override;
  // The API version of the converter next to the library.
  [[nodiscard]] double getCurrentVersion() const override { return blfCurrentVersion(); }

  // Of the log; 0 if it is not known.
  [[nodiscard]] std::uint32_t objectsCount() const { return objectsCount_; }
  [[nodiscard]] const BlfConverter& converter() const { return converter_; }

 private:
  BlfConverter converter_;
  std::int32_t versionCode_ = 0;
  std::uint32_t objectsCount_ = 0;
};

}  // namespace xlatr
