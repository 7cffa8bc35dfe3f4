#include "formats/trc/trc_plain_lines.hpp"

#include <gtest/gtest.h>

#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/trc/trc_frames.hpp"
#include "support/frame_text.hpp"
#include "support/mutated_lines.hpp"
#include "support/temp_folder.hpp"

namespace xlatr {
namespace {

struct PlainTrc {
  const char* version;
  TrcColumnSet columns;
  std::vector<std::string_view> lines;
};

const std::array kPlainTraces = {
    PlainTrc{"1.1",
             0,
             {"     1)        10.0  Rx         0123  8  0A B0 12 34 56 78 9A BC",
              "     2)        10.5  Tx     18ABCDEF  3  FF FE FD", "     3)        10.5  Tx     18ABCDEF  0  "}},
    PlainTrc{"1.2",
             0,
             {"     1)     10.000  1  Rx         0123  8  0A B0 12 34 56 78 9A BC",
              "     2)     10.500  65535 Tx   18ABCDEF  3  FF FE FD"}},
    PlainTrc{"1.3",
             0,
             {"      1)       10.000 1  Rx        0123 -  8    0A B0 12 34 56 78 9A BC",
              "      2)       10.500 2  Tx    18ABCDEF -  3    FF FE FD"}},
    PlainTrc{"2.0",
             kTrcColumns20,
             {"      1        10.000 DT     0123 Rx 8  0A B0 12 34 56 78 9A BC",
              "      2        10.500 FB 18ABCDEF Tx 12 FF FE FD FC FB FA F9 F8 00 01 02 03"}},
    PlainTrc{
        "2.1",
        kTrcColumns21,
        {"      1        10.000 DT 1      0123 Rx -  8    0A B0 12 34 56 78 9A BC",
         "      2        10.500 FD 2  18ABCDEF Tx -  9    FF FE FD FC FB FA F9 F8 00 01 02 03",
         "      3        10.500 BI 2  18ABCDEF Tx -  0    ", "      4        10.123456 FE 2  123 Rx -  1    00  "}},
    PlainTrc{"3.0",
             kTrcColumns30,
             {"      1        10.000 DT 1       123 Rx -  -  -  -        - - 8    0A B0 12 34 56 78 9A BC",
              "      2        10.500 FB 2  18ABCDEF Rx -  -  -  -        - - 3    FF FE FD"}},
};

// In any locale.
double versionOf(std::string_view text) {
  double version = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), version);
  return version;
}

std::optional<std::string> plainTextOf(const PlainTrc& trace, std::string_view line) {
  Frame frame;
  PlainFrameBytes bytes{};
  const TrcVersion* const version = findTrcVersion(versionOf(trace.version));
  if (!takePlainTrcFrame(line, *version, trace.columns, bytes, frame)) {
    return std::nullopt;
  }
  return test::textOf(frame);
}

// The same of lines of any form: a time with a sign is not plain.
std::vector<std::string> textsOfAnyForm(const PlainTrc& trace, const std::vector<std::string>& lines) {
  const test::TempFolder folder;
  std::string text = ";$FILEVERSION=" + std::string(trace.version) + "\n;$COLUMNS=N,O,T" +
                     (trace.columns == kTrcColumns20   ? ",I,d,l,D"
                      : trace.columns == kTrcColumns21 ? ",B,I,d,R,L,D"
                                                       : ",B,I,d,R,V,S,A,r,s,L,D") +
                     "\n";
  for (std::string line : lines) {
    const std::size_t number = line.find_first_not_of(' ');
    const std::size_t time = line.find_first_not_of(' ', line.find(' ', number));
    line.insert(time, "+");
    text += line + "\n";
  }
  Account account;
  return test::textsOf(*openTrcFrames(folder.write("trace.trc", text)), account);
}

TEST(TrcPlainLines, areTaken) {
  for (const PlainTrc& trace : kPlainTraces) {
    for (const std::string_view line : trace.lines) {
      EXPECT_TRUE(plainTextOf(trace, line)) << trace.version << ": " << line;
    }
  }
  EXPECT_EQ(plainTextOf(kPlainTraces[3], kPlainTraces[3].lines[1]),
            "10500000 data 0 18ABCDEF x Tx FD BRS dlc9 [FFFEFDFCFBFAF9F800010203]");
}

TEST(TrcPlainLines, othersAreLeftToTheirParser) {
  constexpr std::size_t kVersion11 = 0;
  constexpr std::size_t kVersion13 = 2;
  constexpr std::size_t kVersion20 = 3;
  constexpr std::size_t kVersion21 = 4;
  constexpr std::size_t kVersion30 = 5;
  struct Case {
    std::size_t trace;
    std::string_view line;
  };
  for (const Case& c : {
           Case{kVersion11, "     1)        10.0  Rx         0123  3  RTR          "},
           Case{kVersion11, "     1)        10.0  Rx         0123  0  RTR          "},
           Case{kVersion11, "     1)        10.0  Rx         0123  2  00 01 noise  "},
           Case{kVersion11, "     1)        10.0  Rx         0123  9  00 01 02 03 04 05 06 07"},
           Case{kVersion11, "     1)        10.0  Warng  FFFFFFFF  4  00 00 00 08  "},
           Case{kVersion11, "     1)        10.0  Rx     FFFFFFFF  4  00 00 00 08  "},
           Case{kVersion11, "     1)        10    Rx         0123  1  00           "},
           Case{kVersion13, "      1)       10.000 1  Rx        0123 12 1    00    "},
           Case{kVersion13, "      1)       10.000 65536  Rx        0123 -  1    00"},
           Case{kVersion20, "      1        10.000 DT     0123 Rx 65 00            "},
           Case{kVersion20, "      1        10.000 DT     0123 xx 1  00            "},
           Case{kVersion20, "      1        10.000 dt     0123 Rx 1  00            "},
           Case{kVersion21, "      1        10.000 RR 1      0123 Rx -  8          "},
           Case{kVersion21, "      1        10.000 DT -      0123 Rx -  1    00    "},
           Case{kVersion21, "      1        10.000 DT 1      0123 Rx -  16   00    "},
           Case{kVersion21, "      1        10.000 DT 1      123x Rx -  1    00    "},
           Case{kVersion21, "      1        10.000 DT 1      0123 Rx -  -    00    "},
           Case{kVersion21, "      1        10.000 DTFD 1    0123 Rx -  1    00    "},
           Case{kVersion21, "      1        10.000 DT 1      0123 RxTx -  1   00   "},
           Case{kVersion30, "      1        10.000 DT 1       123 Rx -  \x01  -  -   - - 1    00"},
           Case{kVersion30, "      1        10.000 XL 1       123 Rx -  -  -  -        - - 0    00"},
       }) {
    EXPECT_FALSE(plainTextOf(kPlainTraces[c.trace], c.line)) << c.line;
  }
  const PlainTrc first = {"1.0", 0, {}};
  EXPECT_FALSE(plainTextOf(first, "     1)       10.5    0123  1  00               ")) << "1.0 has no directions";
}

TEST(TrcPlainLines, becomeTheFramesOfTheParserOfAllForms) {
  for (const PlainTrc& trace : kPlainTraces) {
    SCOPED_TRACE(trace.version);
    const test::TakenLines taken =
        test::takenOf(trace.lines, 10, [&trace](std::string_view line) { return plainTextOf(trace, line); });
    test::expectSameTexts(taken.texts, textsOfAnyForm(trace, taken.lines), taken.lines);
  }
}

}  // namespace
}  // namespace xlatr
