// Programs that stand in for the BLF converter.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "support/temp_folder.hpp"

namespace xlatr::test {

// Puts a shell script into the folder as the converter. Without one of its own for the conversion, "$1" to "$2" under
// the name "$3", it copies the source, which must be a table already.
inline void writeStandIn(const TempFolder& folder, std::string_view conversion = R"(cp "$1" "$2")",
                         std::string_view answers = "") {
  std::string script = "#!/bin/sh\ncase $1 in\n";
  script.append(answers);
  script.append(
      "-GetApiVersion) echo 4070100 ;;\n"
      "-GetFileVersion) echo 4080203 ;;\n"
      "-GetObjectsCount) echo $(($(wc -l < \"$2\") - 2)) ;;\n"
      "*) ");
  script.append(conversion);
  script.append(" ;;\nesac\n");
  const std::string path = folder.write("BLF2CSV.exe", script);
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

// The two lines before the rows of a converter's table. The recording starts at day 44403.25.
inline constexpr std::string_view kConverterHead =
    "$BLFSTARTTIME=26/07/2021 06:00:00.000\n"
    "Number;ObjectType;ObjectTimestamp;ObjectFlags;Valid;Comment;Id;Channel;Flags;FlagsExt;Ecc;CanFdFLags;Dir;Crc;"
    "ObjectVersion;ChecksumModel;Length;D0;D1;D2;D3;D4;D5;D6;D7\n";

// A CAN frame, a LIN frame, and an object that the converter did not understand.
inline const std::string kConverterTable = std::string(kConverterHead) +
                                           "1;1;1000000;2;1;-;291;2;0;0;0;0;0;0;0;0;2;AA;BB\n"
                                           "2;57;250;1;1;-;42;1;0;0;0;0;1;124;1;1;1;CC\n"
                                           "3;2;0;2;0;not-understood;0;1\n";

// The names under which processes share memory, of shared blocks and their locks alike, that contain the text.
inline std::size_t countSharedNames(std::string_view part) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
    count += entry.path().filename().string().find(part) != std::string::npos ? 1U : 0U;
  }
  return count;
}

}  // namespace xlatr::test
