// What the user typed, as it was typed. Which command has which options is in options.cpp.
#pragma once

#include <string>
#include <vector>

namespace xlatr::cli {

struct Arguments {
  std::vector<std::string> paths;

  // What is read.
  std::string from;
  bool recursive = false;
  std::string filesFrom;
  bool null = false;
  std::string shard;
  bool count = false;

  // What of it is wanted, and changed.
  std::string fromTime;
  std::string untilTime;
  std::vector<std::string> buses;
  std::vector<std::string> ids;
  std::vector<std::string> kinds;
  std::vector<std::string> directions;
  std::string shiftTime;
  bool rebase = false;
  std::vector<std::string> busMap;
  std::string zone;

  // What is written.
  std::string to;
  std::string targetVersion;
  std::string separator;
  bool zipped = false;
  bool compact = false;
  std::string output;
  std::string outputFolder;
  std::string splitSize;
  std::string splitTime;
  bool splitBus = false;
  std::string align;
  std::string gap;
  bool compat = false;
  bool sorted = false;
  std::vector<std::string> sessions;

  // How traffic is measured and compared.
  std::string bitRate;
  std::string linBitRate;
  std::string stuffing;
  std::string tolerance;
  bool texts = false;
  bool attributes = false;
  std::string limit;

  // How.
  bool force = false;
  bool skipExisting = false;
  bool keepPartial = false;
  bool strict = false;
  std::string jobs;

  // What is told.
  bool json = false;
  bool csv = false;
  std::string report;
  std::string progress;
  int quiet = 0;
  bool help = false;
};

}  // namespace xlatr::cli
