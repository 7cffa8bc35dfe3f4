// tracegen: writes realistic bus traces of any size from a seed.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>

#include "tracegen/generator.hpp"

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr std::uint64_t kDefaultMessages = 10000;

struct Arguments {
  tracegen::RecordingOptions recording;
  std::string version = "2.1";
  std::string form = "trc";
  std::string output;
  bool plain = false;
  bool lineFeed = false;
};

std::map<std::string, tracegen::Form> formsByName() {
  return {{"trc", tracegen::Form::Trc}, {"candump", tracegen::Form::Candump}, {"blf", tracegen::Form::Blf},
          {"lin", tracegen::Form::Lin}, {"btrc", tracegen::Form::Btrc},       {"btr", tracegen::Form::Btr}};
}

void addTrafficOptions(CLI::App& app, Arguments& arguments) {
  tracegen::TrafficOptions& traffic = arguments.recording.traffic;
  app.add_option("--seed", traffic.seed, "The same seed gives the same bytes")->capture_default_str();
  app.add_option("--buses", traffic.buses, "Number of buses, 1 to 16")->capture_default_str();
  app.add_option("--identifiers", traffic.identifiers, "Periodic identifiers per bus, 1 to 128")->capture_default_str();
  CLI::Option* plain = app.add_flag("--plain", arguments.plain, "Classic data frames only");
  const auto addShare = [&](const std::string& name, std::uint32_t& value, const std::string& text) {
    app.add_option(name, value, text)->capture_default_str()->excludes(plain);
  };
  addShare("--fd-share", traffic.fdShare, "CAN FD, percent of the identifiers");
  addShare("--xl-share", traffic.xlShare, "CAN XL, percent of the identifiers (file version 3.0)");
  addShare("--remote-rate", traffic.remoteRate, "Remote frames in 10000 data frames");
  addShare("--error-rate", traffic.disturbanceRate, "Bursts of errors in 10000 data frames");
  addShare("--event-rate", traffic.eventRate, "Events in 10000 data frames");
  addShare("--comment-rate", traffic.commentRate, "Comments in 10000 data frames");
}

void addOutputOptions(CLI::App& app, Arguments& arguments) {
  tracegen::RecordingOptions& recording = arguments.recording;
  CLI::Option* frames =
      app.add_option("--frames", recording.maxMessages,
                     "Number of messages, comments not counted (default 10000, unless --size is given)");
  app.add_option("--size", recording.maxBytes, "End with the line that reaches this size; 100M, 1G")
      ->transform(CLI::AsSizeValue(false))
      ->excludes(frames);
  app.add_option("--file-version", arguments.version, "TRC version")
      ->check(CLI::IsMember({"1.1", "1.2", "1.3", "2.0", "2.1", "3.0"}))
      ->capture_default_str();
  app.add_option("--form", arguments.form,
                 "trc; the same traffic as a SocketCAN log: candump; as a binary trace: btrc; as session files: btr; "
                 "as a binary log: blf; as a LIN trace: lin")
      ->check(CLI::IsMember(formsByName()))
      ->capture_default_str();
  app.add_option("--damage-rate", recording.damageRate, "Damaged blocks of a btrc file, in 10000")
      ->capture_default_str();
  app.add_option("--sessions", recording.btr.sessions, "Sessions of a btr file, which share the messages")
      ->capture_default_str();
  app.add_flag("--circular", recording.btr.circular, "Sessions of a btr file whose oldest sectors were overwritten");
  app.add_flag("--lf", arguments.lineFeed, "End TRC lines with LF instead of CR LF");
  app.add_option("OUTPUT", arguments.output, "File to write; - is standard output")->required();
}

void complete(const CLI::App& app, Arguments& arguments) {
  tracegen::RecordingOptions& recording = arguments.recording;
  if (arguments.plain) {
    recording.traffic.makePlain();
  }
  recording.carriageReturn = !arguments.lineFeed;
  recording.form = formsByName().at(arguments.form);
  recording.version = tracegen::trcVersionFromText(arguments.version).value_or(recording.version);
  if (!tracegen::hasBusColumn(recording.version) && app.count("--buses") == 0) {
    recording.traffic.buses = 1;
  }
  if (app.count("--frames") == 0 && app.count("--size") == 0) {
    recording.maxMessages = kDefaultMessages;
  }
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Writes a realistic bus trace from a seed.", "tracegen");
  app.footer(
      "Examples:\n"
      "  tracegen --frames 1000000 trace.trc\n"
      "  tracegen --size 1G --plain --seed 7 large.trc\n"
      "  tracegen --file-version 3.0 --xl-share 10 xl.trc\n"
      "  tracegen --form candump - | head\n"
      "  tracegen --form btr --sessions 20 --circular log.btr");
  Arguments arguments;
  addTrafficOptions(app, arguments);
  addOutputOptions(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& failure) {
    return app.exit(failure) == 0 ? 0 : kExitUsage;
  }
  complete(app, arguments);
  try {
    tracegen::generateFile(arguments.recording, arguments.output);
  } catch (const std::invalid_argument& failure) {
    std::cerr << "tracegen: " << failure.what() << '\n';
    return kExitUsage;
  } catch (const std::exception& failure) {
    std::cerr << "tracegen: " << failure.what() << '\n';
    return kExitFailed;
  }
  return 0;
}
