// A place for the files of a fuzz target that works on files by name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <span>
#include <string>

namespace fuzz {

// A fresh folder, in memory where the system has such a place; removed with all in it at the end. One object for the
// whole process: a target that made new files for each input would spend its time on that.
class ScratchFolder {
 public:
  ScratchFolder() {
    const std::filesystem::path memory = "/dev/shm";
    const std::filesystem::path parent =
        std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    std::random_device random;
    do {
      folder_ = parent / ("xlatr_fuzz_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(folder_));
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  [[nodiscard]] std::string path(const std::string& name) const { return (folder_ / name).string(); }

  // Makes the file hold exactly these bytes.
  void write(const std::string& name, std::span<const std::uint8_t> bytes) const {
    std::ofstream stream(folder_ / name, std::ios::binary | std::ios::trunc);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    for (const std::uint8_t byte : bytes) {
      stream.put(static_cast<char>(byte));
    }
    stream.flush();
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace fuzz
