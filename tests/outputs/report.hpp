// What a build of the library did with a file, as lines of text that two builds can be compared by.
#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <typeinfo>

namespace outputs {

// A 64-bit digest (FNV-1a) that is fed piece by piece.
class Digest {
 public:
  void add(std::string_view bytes);
  [[nodiscard]] std::string text() const;

 private:
  std::uint64_t state_ = 0xCBF29CE484222325U;
};

// Prints facts to standard output, one per line: the case, what was asked, and the answer with everything that is not
// printable escaped, so that an answer never takes two lines.
class Report {
 public:
  // One that prints nothing.
  [[nodiscard]] static Report silent();

  // Begins a case; what follows belongs to it. Where files are kept, those of the case get a folder of its own.
  void begin(std::string name);
  void fact(std::string_view question, std::string_view answer);
  void fact(std::string_view question, double answer);
  void fact(std::string_view question, std::int64_t answer);

  // Reports what the call raises, or that it raised nothing, and returns whether it raised nothing.
  template <class Call>
  bool call(std::string_view question, const Call& call) {
    try {
      call();
      return true;
    } catch (const std::exception& failure) {
      fact(question, std::string("raised ") + typeid(failure).name() + ": " + failure.what());
    }
    return false;
  }

  // Reports name, size and digest of every file in the current folder, in the order of their names, and removes them.
  void takeFiles();
  // The files of all cases go into a folder each below this one instead of being removed.
  void keepFilesIn(std::filesystem::path folder) { kept_ = std::move(folder); }

 private:
  bool silent_ = false;
  std::string case_;
  std::filesystem::path kept_;
};

}  // namespace outputs
