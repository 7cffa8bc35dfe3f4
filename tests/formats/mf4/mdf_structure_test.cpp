#include "mdf_structure.hpp"

#include <gtest/gtest.h>

#include <string>

#include "formats/mf4/mdf_file_builder.hpp"

namespace xlatr {
namespace {

using test::join;
using test::le;
using test::MdfFileBuilder;
using test::textBytes;

std::string structureOf(const MdfFileBuilder& file) {
  BlockStream stream(file.bytes());
  return mdfdump::describeStructure(stream);
}

constexpr char kTop[] =
    "0 ID idFile=\"MDF     \" idVersion=\"4.10    \" idProgram=\"Stranger\" idVersionNumber=410 idUnfinishedFlags=0 "
    "idCustomUnfinishedFlags=0\n";
constexpr char kHeaderFields[] =
    " hdStartTimeNs=1500000000123456789 hdTzOffsetMin=0 hdDstOffsetMin=0 hdTimeFlags=1 hdTimeClass=0 hdFlags=0 "
    "hdStartAngleRad=0 hdStartDistanceM=0\n";

TEST(MdfStructureTest, showsEachBlockOnceBelowItsParent) {
  MdfFileBuilder file;
  const std::uint64_t data = file.data({1, 2, 3});                       // 168
  const std::uint64_t text = file.text("s");                             // 200
  const std::uint64_t conversion = file.block("CC", {text, text, 0, 0},  // 232
                                              join({{1, 0}, le(0, 2), le(0, 2), le(2, 2), le(0, 16), le(0, 16)}));
  const std::uint64_t group = file.block("CG", {0, 0, text, 0, 0, 0}, le(7, 32));  // 328
  const std::uint64_t second = file.block("DG", {0, group, 0, 0}, le(1, 8));       // 432
  const std::uint64_t first = file.block("DG", {second, 0, data, conversion}, le(0, 8));
  file.setFirstDataGroup(first);
  EXPECT_EQ(structureOf(file),
            std::string(kTop) + "64 HD length=104 links=(496 0 0 0 0 0)" + kHeaderFields +
                "  496 DG length=64 links=(432 0 168 232) dgRecIdSize=0\n"
                "    168 DT length=27 links=()\n"
                "    232 CC length=96 links=(200 200 0 0) ccType=1 ccPrecision=0 ccFlags=0 ccRefCount=0 ccValCount=2 "
                "ccPhyRangeMin=0 ccPhyRangeMax=0 ccVal=(0 0)\n"
                "      200 TX length=32 links=() text=\"s\"\n"
                "  432 DG length=64 links=(0 328 0 0) dgRecIdSize=1\n"
                "    328 CG length=104 links=(0 0 200 0 0 0) cgRecordId=7 cgCycleCount=0 cgFlags=0 cgPathSeparator=0 "
                "cgDataBytes=0 cgInvalBytes=0\n");
}

TEST(MdfStructureTest, showsWhyABlockCannotBeRead) {
  MdfFileBuilder file;
  const std::uint64_t group = file.block("DG", {8, 100000, 0, 0}, {1});
  file.setLink(group, 3, group);
  file.setFirstDataGroup(group);
  EXPECT_EQ(structureOf(file),
            std::string(kTop) + "64 HD length=104 links=(168 0 0 0 0 0)" + kHeaderFields +
                "  168 DG length=57 links=(8 100000 0 168) ! Not all wanted bytes could be retrieved\n"
                "    100000 ! Not all wanted bytes could be retrieved for building a HeaderSection\n"
                "  8 ! Not all wanted bytes could be retrieved for building a LinkSection\n");
}

}  // namespace
}  // namespace xlatr
