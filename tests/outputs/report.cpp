#include "outputs/report.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <utility>
#include <vector>

namespace outputs {
namespace {

namespace fs = std::filesystem;

std::string escaped(std::string_view text) {
  std::string result;
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x20 && byte < 0x7F && character != '\\') {
      result += character;
      continue;
    }
    std::array<char, 5> hex{};
    std::snprintf(hex.data(), hex.size(), "\\x%02X", static_cast<unsigned>(byte));
    result += hex.data();
  }
  return result;
}

std::string numberText(double number) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.17g", number);
  return text.data();
}

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// An MF4 file states when it was written, which is another moment in every run: the time of its file history, the first
// block after the header's.
void maskTimeOfWriting(std::string& content) {
  constexpr std::size_t kOffset = 208;
  constexpr std::size_t kSize = 8;
  if (content.starts_with("MDF     ") && content.size() > kOffset + kSize) {
    content.replace(kOffset, kSize, kSize, '\0');
  }
}

std::string folderNameOf(std::string name) {
  std::ranges::replace(name, '/', '_');
  return name;
}

}  // namespace

void Digest::add(std::string_view bytes) {
  constexpr std::uint64_t kPrime = 0x100000001B3U;
  for (const char byte : bytes) {
    state_ = (state_ ^ static_cast<unsigned char>(byte)) * kPrime;
  }
}

std::string Digest::text() const {
  std::array<char, 17> text{};
  std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(state_));
  return text.data();
}

Report Report::silent() {
  Report report;
  report.silent_ = true;
  return report;
}

void Report::begin(std::string name) {
  case_ = std::move(name);
}

void Report::fact(std::string_view question, std::string_view answer) {
  if (!silent_) {
    std::cout << case_ << ": " << question << ": " << escaped(answer) << '\n';
  }
}

void Report::fact(std::string_view question, double answer) {
  fact(question, std::string_view(numberText(answer)));
}

void Report::fact(std::string_view question, std::int64_t answer) {
  fact(question, std::string_view(std::to_string(answer)));
}

void Report::takeFiles() {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
    files.push_back(entry.path().filename());
  }
  std::ranges::sort(files);
  for (const fs::path& file : files) {
    std::string content = contentOf(file);
    const std::size_t size = content.size();
    maskTimeOfWriting(content);
    Digest digest;
    digest.add(content);
    fact("file " + file.string(), std::to_string(size) + " bytes, " + digest.text());
    if (!kept_.empty()) {
      fs::create_directories(kept_ / folderNameOf(case_));
      fs::copy_file(file, kept_ / folderNameOf(case_) / file, fs::copy_options::overwrite_existing);
    }
    fs::remove_all(file);
  }
}

}  // namespace outputs
