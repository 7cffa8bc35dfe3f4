#include "formats/mf4/mdf_data_output.hpp"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "formats/mf4/mdf_record_store.hpp"
#include "support/layout.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

using test::LayoutNames;
using test::TempFolder;

// What compress makes of it in one call.
std::string compressed(const std::string& bytes) {
  uLongf size = compressBound(bytes.size());
  std::string result(size, '\0');
  EXPECT_EQ(compress(reinterpret_cast<Bytef*>(result.data()), &size, reinterpret_cast<const Bytef*>(bytes.data()),
                     bytes.size()),
            Z_OK);
  result.resize(size);
  return result;
}

struct Written {
  std::string file;
  std::uint64_t position;
  std::uint64_t end;
};

// Writes pieces after eight bytes that stand there before.
Written write(const std::vector<std::string>& pieces, bool zipped) {
  const TempFolder folder;
  BufferedOutput output;
  output.open(folder.file("data"));
  output.write("12345678");
  MdfDataOutput data(output, 8, zipped);
  for (const std::string& piece : pieces) {
    data.append(piece);
  }
  const std::uint64_t position = data.finish();
  output.write("behind");
  output.close();
  return {.file = folder.read("data"), .position = position, .end = data.end()};
}

TEST(MdfDataOutput, writesAPlainBlock) {
  const Written written = write({"ab", "", "cde"}, false);
  EXPECT_EQ(written.position, 8U);
  EXPECT_EQ(written.end, 37U);
  EXPECT_EQ(written.file, "12345678" + test::layOut("@8 DT 29 () \"abcde\"", {}, 8) + "behind");
}

TEST(MdfDataOutput, writesAnEmptyPlainBlock) {
  const Written written = write({""}, false);
  EXPECT_EQ(written.position, 8U);
  EXPECT_EQ(written.file, "12345678" + test::layOut("@8 DT 24 ()", {}, 8) + "behind");
}

TEST(MdfDataOutput, writesNoZippedBlockWithoutRecords) {
  const Written written = write({""}, true);
  EXPECT_EQ(written.position, 0U);
  EXPECT_EQ(written.end, 8U);
  EXPECT_EQ(written.file, "12345678behind");
}

TEST(MdfDataOutput, writesWhatCompressMakesOfAllRecordsAtOnce) {
  // Some of it repeats, near and far, and some is noise, over many windows and blocks of deflate.
  std::mt19937 random(5);
  std::string bytes;
  while (bytes.size() < 3000000) {
    const std::size_t length = 1 + random() % 2000;
    if (bytes.size() > length && random() % 3 != 0) {
      const std::size_t back = std::min<std::size_t>(length + random() % 60000, bytes.size());
      bytes += bytes.substr(bytes.size() - back, length);
    } else {
      for (std::size_t index = 0; index < length; ++index) {
        bytes.push_back(static_cast<char>(random() % 4 == 0 ? random() : 0));
      }
    }
  }
  const std::string zipped = compressed(bytes);
  const LayoutNames names{
      .numbers = {{"length", 48 + zipped.size()}, {"plain", bytes.size()}, {"zipped", zipped.size()}}, .texts = {}};
  const std::string expected =
      "12345678" + test::layOut("\"##DZ\" z4 u64:$length u64:0 \"DT\" u8:0 u8:0 u32:0 u64:$plain u64:$zipped", names) +
      zipped + "behind";
  for (const std::size_t piece : {std::size_t{1000000000}, std::size_t{262144}, std::size_t{65536}, std::size_t{81},
                                  std::size_t{32768 + 261}, std::size_t{7}}) {
    std::vector<std::string> pieces;
    for (std::size_t begin = 0; begin < bytes.size(); begin += std::min(piece, bytes.size())) {
      pieces.push_back(bytes.substr(begin, piece));
    }
    const Written written = write(pieces, true);
    EXPECT_EQ(written.position, 8U);
    EXPECT_TRUE(written.file == expected) << "in pieces of " << piece;
  }
}

TEST(MdfRecordStore, handsOutWhatItGotInOrderAndOnce) {
  MdfRecordStore store;
  std::string expected;
  for (int number = 0; number < 100000; ++number) {
    const std::string bytes = std::to_string(number);
    expected += bytes;
    store.append(bytes);
  }
  const std::string huge(MdfRecordStore::kChunkSize * 2, 'x');
  store.append(huge);
  expected += huge;
  EXPECT_EQ(store.size(), expected.size());
  std::string drained;
  store.drain([&drained](std::string_view bytes) { drained += bytes; });
  EXPECT_TRUE(drained == expected);
  EXPECT_EQ(store.size(), 0U);
  store.drain([](std::string_view) { FAIL() << "there is nothing left"; });
}

}  // namespace
}  // namespace xlatr
