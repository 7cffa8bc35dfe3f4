// The page for users is the table.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "frames/frame_capacity.hpp"
#include "io/format.hpp"
#include "util/render.hpp"

namespace xlatr {
namespace {

namespace fs = std::filesystem;

const fs::path kPage = fs::path(XLATR_PROJECT_DIR) / "docs" / "formats" / "README.md";

constexpr std::string_view kHead =
    "# What each format can hold\n"
    "\n"
    "The rows say what comes back from a file that xlatr writes. What is not held becomes a comment where the format "
    "has\n"
    "comments, and xlatr reads such a comment back as the frame that it was; elsewhere the frame is dropped and "
    "counted.\n"
    "Of each kind the identifier, the payload and the time come back, and what its cell lists besides. A frame that "
    "lacks\n"
    "what is listed as needed is not held. `xlatr_get_capacity` tells the same to programs.\n";

constexpr std::string_view kNo = "–";

using Cells = std::vector<std::string>;

// ---- what stands in a cell

std::string joined(const Cells& cells) {
  std::string text;
  for (const std::string& cell : cells) {
    text += (text.empty() ? "" : ", ") + cell;
  }
  return text;
}

std::string yesOrNo(bool yes) {
  return std::string(yes ? "yes" : kNo);
}

std::string_view nameOf(TextCapacity text) {
  switch (text) {
    case TextCapacity::None:
      return "";
    case TextCapacity::Word:
      return "a word";
    case TextCapacity::Words:
      return "words";
    case TextCapacity::Line:
      return "a line of text";
    case TextCapacity::Any:
      return "any text";
  }
  return "";
}

std::string attributesOf(std::uint32_t bits) {
  Cells names;
  for (; bits != 0; bits &= bits - 1) {
    const auto attribute = static_cast<FrameAttribute>(std::countr_zero(bits));
    names.push_back("`" + std::string(frameAttributeName(attribute)) + "`");
  }
  return joined(names);
}

std::string cellOf(const FrameCapacity& capacity, FrameKind kind) {
  const KindCapacity& held = capacity.of(kind);
  if (!held.held) {
    return std::string(kNo);
  }
  if (capacity.whole) {
    return "every field";
  }
  Cells cells;
  if (held.direction) {
    cells.emplace_back(held.needsDirection ? "direction, received if unknown" : "direction");
  }
  if (!held.bus && capacity.namesBuses()) {
    cells.emplace_back("no bus");
  }
  if (held.text != TextCapacity::None) {
    cells.emplace_back(nameOf(held.text));
  }
  if (held.bytes) {
    cells.emplace_back("bytes");
  }
  if (held.attributes != 0) {
    cells.push_back(attributesOf(held.attributes));
  }
  if (held.needed != 0) {
    cells.push_back("needs " + attributesOf(held.needed));
  }
  return cells.empty() ? "yes" : joined(cells);
}

std::string durationOf(std::int64_t nanoseconds) {
  constexpr std::array<std::pair<std::int64_t, const char*>, 4> kUnits = {
      {{1'000'000'000, " s"}, {1'000'000, " ms"}, {1000, " µs"}, {1, " ns"}}};
  const auto* const unit =
      std::ranges::find_if(kUnits, [&](const auto& each) { return nanoseconds % each.first == 0; });
  return std::to_string(nanoseconds / unit->first) + unit->second;
}

// Whole seconds are enough for what is years away.
std::string momentOf(std::int64_t nanoseconds) {
  constexpr std::int64_t kDay = 86'400'000'000'000;
  if (nanoseconds == kFarthestNs || nanoseconds == -kFarthestNs) {
    return nanoseconds < 0 ? "-285 years" : "285 years";
  }
  return std::abs(nanoseconds) >= kDay ? std::to_string(nanoseconds / kDay) + " days" : durationOf(nanoseconds);
}

std::string busesOf(const FrameCapacity& capacity) {
  if (!capacity.namesBuses()) {
    return "one, without a name";
  }
  std::string text = std::to_string(capacity.lowestBus) + " to " + std::to_string(capacity.highestBus);
  return capacity.guessedBus == 0 ? text : text + ", " + std::to_string(capacity.guessedBus) + " if unknown";
}

struct Property {
  const char* name;
  std::string (*cell)(const FrameCapacity& capacity);
};
constexpr std::array kProperties = {
    Property{"CAN FD",
             [](const FrameCapacity& row) {
               return row.fd && row.bitsOfFd ? std::string("with BRS and ESI") : yesOrNo(row.fd);
             }},
    Property{"CAN XL", [](const FrameCapacity& row) { return yesOrNo(row.xl); }},
    Property{"longest payload but for CAN XL",
             [](const FrameCapacity& row) { return std::to_string(row.longestData) + " bytes"; }},
    Property{"DLC of remote frames", [](const FrameCapacity& row) { return yesOrNo(row.remoteDlc); }},
    Property{"checksum model of LIN frames", [](const FrameCapacity& row) { return yesOrNo(row.enhancedChecksum); }},
    Property{"buses", busesOf},
    Property{"step of times", [](const FrameCapacity& row) { return durationOf(row.resolutionNs); }},
    Property{"earliest time", [](const FrameCapacity& row) { return momentOf(row.earliestNs); }},
    Property{"latest time", [](const FrameCapacity& row) { return momentOf(row.latestNs); }},
    Property{"step of the start", [](const FrameCapacity& row) { return durationOf(row.startResolutionNs); }},
    Property{"zone of the start", [](const FrameCapacity& row) { return yesOrNo(row.zone); }},
    Property{"what is not held",
             [](const FrameCapacity& row) { return std::string(row.comments ? "a comment" : "dropped and counted"); }},
};

// ---- the tables

struct Column {
  std::string head;  // one version, or several that hold the same
  Cells cells;
};

Cells cellsOf(const FrameCapacity& capacity) {
  Cells cells;
  for (std::size_t at = 0; at < kFrameKindCount; ++at) {
    cells.push_back(cellOf(capacity, static_cast<FrameKind>(at)));
  }
  for (const Property& property : kProperties) {
    cells.push_back(property.cell(capacity));
  }
  return cells;
}

// "7.0", "4.11".
std::string versionOf(double version) {
  std::string text = formatFixed(version, 2);
  if (text.back() == '0') {
    text.pop_back();
  }
  return text;
}

std::vector<Column> columnsOf(std::span<const FrameCapacity> rows) {
  std::vector<Column> columns;
  for (const FrameCapacity& row : rows) {
    Cells cells = cellsOf(row);
    const std::string version = versionOf(row.version);
    const auto same = std::ranges::find(columns, cells, &Column::cells);
    if (same != columns.end()) {
      same->head += ", " + version;
    } else {
      columns.push_back({version, std::move(cells)});
    }
  }
  return columns;
}

std::string renderTable(const FormatDescriptor& format) {
  const std::vector<Column> columns = columnsOf(format.frameCapacities());
  std::string text = "\n## " + std::string(format.description) + " (" + std::string(format.extension) + ")\n\n| |";
  std::string line = "\n|---|";
  for (const Column& column : columns) {
    text += " " + column.head + " |";
    line += "---|";
  }
  text += line + "\n";
  for (std::size_t row = 0; row < kFrameKindCount + kProperties.size(); ++row) {
    text += "| " +
            std::string(row < kFrameKindCount ? frameKindName(static_cast<FrameKind>(row))
                                              : kProperties[row - kFrameKindCount].name) +
            " |";
    for (const Column& column : columns) {
      text += " " + column.cells[row] + " |";
    }
    text += "\n";
  }
  return text;
}

std::string renderPage() {
  std::string page(kHead);
  for (const FormatDescriptor* const format : formatRegistry()) {
    if (format->frameCapacities != nullptr) {
      page += renderTable(*format);
    }
  }
  return page;
}

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// XLATR_UPDATE_GOLDEN=1 writes the page.
TEST(FrameCapacities, areThePageForUsers) {
  const char* const update = std::getenv("XLATR_UPDATE_GOLDEN");
  if (update != nullptr && std::string(update) == "1") {
    std::ofstream(kPage, std::ios::binary) << renderPage();
  }
  EXPECT_EQ(contentOf(kPage), renderPage());
}

}  // namespace
}  // namespace xlatr
