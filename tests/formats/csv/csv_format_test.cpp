#include "formats/csv/csv_format.hpp"

#include <gtest/gtest.h>

#include "support/format_facts.hpp"

namespace xlatr {
namespace {

TEST(CsvFormat, isWhatCallersKnow) {
  test::expectFacts(kCsvFormat,
                    {16, ".csv", "CSV-File", "Character-separated values", 1.0, 1.0, {1.0}, {}, false, true});
}

}  // namespace
}  // namespace xlatr
