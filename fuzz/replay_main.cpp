// Stands in for libFuzzer where a compiler has none: runs a fuzz target once over every file given, and over every file
// of the folders given, in order of their names. Options, which begin with "-", are left to libFuzzer.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "target.hpp"

namespace {

std::vector<std::filesystem::path> findFiles(const std::filesystem::path& place) {
  if (!std::filesystem::is_directory(place)) {
    return {place};
  }
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(place)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

void runFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    throw std::runtime_error("can't read " + path.string());
  }
  const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  // Of the exact size, so that AddressSanitizer sees a read past the end.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  // If the target crashes, the last line on the terminal names the input.
  std::cout << path.string() << std::endl;
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  try {
    for (int index = 1; index < argc; ++index) {
      const std::string_view argument(argv[index]);
      if (argument.starts_with('-')) {
        continue;
      }
      for (const std::filesystem::path& path : findFiles(argument)) {
        runFile(path);
        ++count;
      }
    }
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
  std::cout << count << " inputs\n";
  // A wrong folder must not count as a test that passed.
  return count == 0 ? 1 : 0;
}
