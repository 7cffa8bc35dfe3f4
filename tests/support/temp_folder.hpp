// A new folder for a test, removed with all its files when the test ends.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace xlatr::test {

// Where the folders are. A TMPDIR that is empty names none, as for the shell and its tools.
inline std::filesystem::path parentOfFolders() {
  const char* const chosen = std::getenv("TMPDIR");
  return chosen != nullptr && *chosen == '\0' ? "/tmp" : std::filesystem::temp_directory_path();
}

class TempFolder {
 public:
  TempFolder() {
    std::string pattern = (parentOfFolders() / "xlatr-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("no temporary folder at " + pattern);
    }
    path_ = pattern;
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] std::string file(std::string_view name) const { return (path_ / name).string(); }

  // Writes a file of the folder and returns its path.
  [[nodiscard]] std::string write(std::string_view name, std::string_view content) const {
    const std::string path = file(name);
    std::ofstream out(path, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    return path;
  }
  // The bytes of a file of the folder.
  [[nodiscard]] std::string read(std::string_view name) const {
    std::ifstream in(file(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  [[nodiscard]] bool has(std::string_view name) const { return std::filesystem::exists(path_ / name); }

 private:
  std::filesystem::path path_;
};

}  // namespace xlatr::test
