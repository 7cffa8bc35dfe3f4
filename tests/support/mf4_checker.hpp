// Checks an MF4 file by the rules of ASAM MDF 4 alone. Shares no code with the library.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace xlatr::test {

struct Mf4Group {
  std::string name;    // the acquisition name
  std::string source;  // the name of the bus
  std::uint64_t dataGroup = 0;
  std::uint64_t recordId = 0;
  std::uint64_t cycleCount = 0;
  std::string records;  // without their ids, joined
};

struct Mf4Report {
  std::vector<std::string> faults;  // each with the offset of its block; empty for a sound file
  double version = 0.0;
  std::uint64_t startNs = 0;
  std::vector<Mf4Group> groups;     // in the order of the chains
  std::vector<std::string> blocks;  // ids in the order of their offsets
};

// Follows every link from the header on. What must hold:
// - the identification names a finished file, its two versions agree;
// - a block stands at a multiple of 8, inside the file, is of a type that its link may lead to, has the links of its
//   type, zeros where it is reserved, and is reached by one link only;
// - blocks do not overlap, and there is nothing but padding between them and after the last one;
// - texts end in zeros, names are not empty, the records of a group have one master channel, channels lie inside their
//   record and components inside their composition;
// - the data of a data group, one block or a list of them, are whole records of its channel groups, none of them in two
//   blocks, and as many as their cycle counts say; zipped data inflate to the stated size, lists state where in the
//   data their blocks begin;
// - signal data are whole values; a payload that has a channel for its length has one of the same frame.
[[nodiscard]] Mf4Report checkMf4(std::string_view file);

// The faults, one per line.
[[nodiscard]] std::string faultsOf(const Mf4Report& report);

}  // namespace xlatr::test
