#include "support/mf4_samples.hpp"

#include <filesystem>

#include "support/layout.hpp"

namespace xlatr::test {

std::string mf4Sample() {
  const LayoutNames names{.numbers = {{"versionNumber", 411},
                                      {"start", 1627279200000000000U},
                                      {"written", 1627279300000000000U},
                                      {"cycles0", 2},
                                      {"cycles1", 0},
                                      {"cycles2", 0},
                                      {"data0", 8040}},
                          .texts = {{"version", "4.11"}}};
  const std::string tree =
      layOutFile(std::filesystem::path(XLATR_GOLDEN_DIR) / "trc-mf4/blocks/unsorted.layout", names);
  return tree + layOut(
                    "\"##DT\" z4 u64:186 u64:0 u8:0 f64:10500000 u32:0x123 u8:3 u8:0 u8:1 u8:1 AA z63\n"
                    "u8:0 f64:11500000 u32:0x123 u8:4 u8:0 u8:1 u8:1 BB z63\n@8226 end",
                    names, tree.size());
}

}  // namespace xlatr::test
