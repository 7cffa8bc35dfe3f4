// What a file whose blocks can't be read or built fails with. All are ConverterProcessingException but kNoBlockId.
#pragma once

namespace xlatr {

inline constexpr char kShortHeaderSection[] = "Not all wanted bytes could be retrieved for building a HeaderSection";
inline constexpr char kShortLinkSection[] = "Not all wanted bytes could be retrieved for building a LinkSection";
inline constexpr char kShortBytes[] = "Not all wanted bytes could be retrieved";
// A ConverterParsingException, with the block id after it.
inline constexpr char kNoBlockId[] = "Format of parameter 'toParse' must be: '##[Blocktype ID]'";
inline constexpr char kUnknownBlockType[] = "There is no block type defined that matches the given parameter";
inline constexpr char kBlockLoop[] = "Block links form a loop";
inline constexpr char kWrongLinkCount[] = "Fatal error";
inline constexpr char kBlockNotWritten[] = "NYI";
inline constexpr char kNoSuchGroup[] = "Did not find channel group by nature";
inline constexpr char kNoSuchChannel[] = "Did not find channel by nature";
inline constexpr char kDeflateFailure[] = "zlib compress failure";
inline constexpr char kInflateFailure[] = "Decompression error";

}  // namespace xlatr
