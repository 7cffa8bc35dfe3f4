// What callers rely on of a format: the test of each format writes it out.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "io/format.hpp"

namespace xlatr::test {

struct FormatFacts {
  TraceFormat format;
  std::string extension;
  std::string shortName;
  std::string description;
  double currentVersion;
  double lowestVersion;
  std::vector<double> versions;
  std::vector<TraceFormat> targets;  // in the order in which they are offered
  bool isRead;                       // by conversions
  bool isWritten;                    // by conversions
};

inline void expectFacts(const FormatDescriptor& known, const FormatFacts& facts) {
  EXPECT_EQ(&formatOf(facts.format), &known);
  EXPECT_EQ(known.format, facts.format);
  EXPECT_EQ(known.extension, facts.extension);
  EXPECT_EQ(known.shortName, facts.shortName);
  EXPECT_EQ(known.description, facts.description);
  EXPECT_EQ(known.currentVersion, facts.currentVersion);
  EXPECT_EQ(known.lowestVersion, facts.lowestVersion);
  EXPECT_EQ(std::vector<double>(known.supportedVersions.begin(), known.supportedVersions.end()), facts.versions);
  EXPECT_EQ(std::vector<TraceFormat>(known.allowedTargets.begin(), known.allowedTargets.end()), facts.targets);
  EXPECT_EQ(known.makeSources != nullptr, facts.isRead);
  EXPECT_EQ(known.makeWriter != nullptr, facts.isWritten);
}

}  // namespace xlatr::test
