// Golden files that no conversion writes: headers and tables as only the objects can be asked for them.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "conversions/conversion_support.hpp"
#include "support/object_families.hpp"
#include "xlatr/objects.h"

namespace xlatr::conversions {
namespace {

namespace fs = std::filesystem;
using test::CsvWriterType;
using test::MessageCanType;
using test::Owned;
using test::TrcInfoType;
using test::TrcReaderType;
using test::TrcWriterType;

std::string identifier(std::string version) {
  version[1] = '_';
  return version;
}

class TrcHeader : public testing::TestWithParam<std::string> {};

// The versions without a bus column open no file for a source without messages, so the writer is driven by hand.
TEST_P(TrcHeader, isTheGoldenHeader) {
  const WorkingDirectory directory;
  fs::copy_file(goldenDirectory() / "trc-trc/header/header-source.trc", "header-source.trc");
  const Owned<TrcInfoType> info(TrcInfo_Construct_2("header-source.trc"));
  const Owned<TrcWriterType> writer(TrcWriter_Construct("out.trc", false, trcVersion(GetParam()).number));

  TrcWriter_setActive(writer.get(), true);
  TrcWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));
  TrcWriter_setActive(writer.get(), false);

  EXPECT_TRUE(sameBytes(readFile("out.trc"), readFile(goldenTrcHeader(GetParam()))));
}

INSTANTIATE_TEST_SUITE_P(All, TrcHeader, testing::Values("1.0", "1.1", "1.2", "1.3", "2.0", "2.1", "3.0"),
                         [](const testing::TestParamInfo<std::string>& version) {
                           return "version" + identifier(version.param);
                         });

class CsvTableOfObjects : public testing::TestWithParam<std::string> {};

// Only a writer object takes a separator of several characters.
TEST_P(CsvTableOfObjects, isTheGoldenFile) {
  const std::string source = "source-" + GetParam() + ".trc";
  const WorkingDirectory directory;
  fs::copy_file(goldenTrcSource(GetParam()), source);
  const Owned<TrcInfoType> info(TrcInfo_Construct_2(source.c_str()));
  const Owned<TrcReaderType> reader(TrcReader_Construct(info.get()));
  const Owned<CsvWriterType> writer(CsvWriter_Construct("out.csv", false, 1.0));
  CsvWriter_setSeparator(writer.get(), " | ");
  CsvWriter_setActive(writer.get(), true);
  CsvWriter_WriteHeader(writer.get(), reinterpret_cast<const ITraceInfo*>(info.get()));
  ASSERT_TRUE(TrcReader_setActive(reader.get(), true));
  MessageCan* next = nullptr;
  while (TrcReader_ReadNextMessage(reader.get(), &next)) {
    const Owned<MessageCanType> message(next);
    if (MessageCan_getValid(next)) {
      CsvWriter_WriteMessage(writer.get(), reinterpret_cast<const IMessage*>(next));
      continue;
    }
    std::string text(MessageCan_getParsingTextSize(next) + std::size_t{1}, '\0');
    MessageCan_getParsingText(next, text.data(), static_cast<std::uint32_t>(text.size()));
    text.pop_back();
    if (text.find_first_not_of(' ') != std::string::npos) {
      CsvWriter_WriteComment(writer.get(), text.c_str());
    }
  }
  CsvWriter_setActive(writer.get(), false);
  const fs::path golden = goldenDirectory() / "trc-csv" / ("from-" + GetParam()) / "several.csv";
  EXPECT_TRUE(sameBytes(readFile("out.csv"), readFile(golden)));
}

INSTANTIATE_TEST_SUITE_P(Several, CsvTableOfObjects, testing::Values("2.1", "3.0"),
                         [](const auto& test) { return "from" + identifier(test.param); });

}  // namespace
}  // namespace xlatr::conversions
