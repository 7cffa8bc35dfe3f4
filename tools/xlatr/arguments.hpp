// What the user typed, as it was typed. Which command has which options is in options.cpp.
#pragma once

#include <string>
#include <vector>

namespace xlatr::cli {

struct Arguments {
  std::vector<std::string> paths;

  // What is read.
  std::string from;
  std::string filesFrom;
  std::string shard;

  // What of it is wanted, and changed.
  std::string fromTime;
  std::string untilTime;
  std::vector<std::string> buses;
  std::vector<std::string> ids;
  std::vector<std::string> kinds;
  std::vector<std::string> directions;
  std::string shiftTime;
  std::vector<std::string> busMap;
  std::string zone;

  // What is written.
  std::string to;
  std::string targetVersion;
  std::string separator;
  std::string output;
  std::string outputFolder;
  std::string splitSize;
  std::string splitTime;
  std::string align;
  std::string gap;
  std::vector<std::string> sessions;

  // How traffic is measured and compared.
  std::string bitRate;
  std::string linBitRate;
  std::string stuffing;
  std::string tolerance;
  std::string limit;

  // How.
  std::string jobs;

  // What is told.
  std::string report;
  std::string progress;

  // Flags, of all of these.
  int quiet = 0;
  bool recursive = false;
  bool null = false;
  bool count = false;
  bool rebase = false;
  bool zipped = false;
  bool compact = false;
  bool splitBus = false;
  bool compat = false;
  bool sorted = false;
  bool texts = false;
  bool attributes = false;
  bool force = false;
  bool skipExisting = false;
  bool keepPartial = false;
  bool strict = false;
  bool json = false;
  bool csv = false;
  bool help = false;
};

}  // namespace xlatr::cli
