// BLF2CSV.exe: turns a BLF log into the table that the library reads, and tells what the library asks about a log.
// The answer to a question goes to standard output and, as far as eight bits hold it, into the exit code.
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iostream>
#include <span>
#include <string>
#include <string_view>

#include "blf2csv/progress_channel.hpp"
#include "blf2csv/table_conversion.hpp"
#include "platform/parent_link.hpp"

namespace {

using xlatr::platform::ParentLink;

constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitStopped = 2;
constexpr int kExitUsage = 3;

// Of these command lines, in four decimal pairs.
constexpr std::int32_t kApiVersion = 1'00'00'00;

constexpr std::string_view kUsage =
    "usage: BLF2CSV.exe LOG TABLE NAME\n"
    "       BLF2CSV.exe -GetFileVersion LOG\n"
    "       BLF2CSV.exe -GetObjectsCount LOG\n"
    "       BLF2CSV.exe -GetApiVersion\n"
    "The first form writes the table of a BLF log. NAME is the name of the shared memory\n"
    "in which it reports its progress and is asked to stop.\n";

volatile std::sig_atomic_t interrupted = 0;

// A conversion that is interrupted ends as one that is asked to: it leaves nothing behind.
extern "C" void interrupt(int /*signal*/) {
  interrupted = 1;
}

void complain(std::string_view text) {
  std::cerr << "BLF2CSV: " << text << '\n';
}

int answer(std::int32_t value) {
  std::cout << value << std::endl;
  return static_cast<int>(static_cast<std::uint32_t>(value) & 0xFFU);
}

// Without a word about why there is no answer: whoever asks wants a number, and hears the reason from a conversion.
template <class Query>
int answerAbout(const std::string& path, Query query) {
  constexpr std::int32_t kNoAnswer = -1;
  try {
    return answer(query(path));
  } catch (const std::exception&) {
    return answer(kNoAnswer);
  }
}

// Whoever started the program to go on in spite of a signal has it so.
void watch(int signal) {
  if (std::signal(signal, interrupt) == SIG_IGN) {
    std::signal(signal, SIG_IGN);
  }
}

int convert(const std::string& path, const std::string& target, const std::string& name, const ParentLink& parent) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    watch(signal);
  }
  // A table is as private as the log, which may be nobody else's business.
  xlatr::platform::keepNewFilesPrivate();
  blf2csv::ProgressChannel channel(name);
  // Without the program that wants the table nobody would remove it.
  const auto goOn = [&](std::uint16_t progress) {
    return channel.tell(progress) && interrupted == 0 && !parent.isCut();
  };
  blf2csv::Remarks remarks;
  if (blf2csv::convertToFile(path, target, goOn, remarks) == blf2csv::Outcome::Stopped) {
    return kExitStopped;
  }
  for (const std::string& line : remarks.lines()) {
    complain(std::string(path).append(": ").append(line));
  }
  return kExitDone;
}

int run(std::span<char*> arguments, const ParentLink& parent) {
  const auto word = [&](std::size_t index) { return std::string(arguments[index]); };
  if (arguments.size() == 2 && word(1) == "-GetApiVersion") {
    return answer(kApiVersion);
  }
  if (arguments.size() == 3 && word(1) == "-GetFileVersion") {
    return answerAbout(word(2), [](const std::string& path) { return fileVersion(blf2csv::readFileHeader(path)); });
  }
  if (arguments.size() == 3 && word(1) == "-GetObjectsCount") {
    return answerAbout(word(2), blf2csv::countObjects);
  }
  if (arguments.size() == 4) {
    return convert(word(1), word(2), word(3), parent);
  }
  std::cerr << kUsage;
  return kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
  const ParentLink parent;
  int code = kExitFailed;
  try {
    code = run(std::span(argv, static_cast<std::size_t>(argc)), parent);
  } catch (const std::exception& failure) {
    complain(failure.what());
  }
  parent.tellExitCode(code);
  return code;
}
