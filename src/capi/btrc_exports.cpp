// BtrcInfo, BtrcFileHeader, BtrcReader, BtrcWriter and MessageBinaryFD.
#include "capi/families.hpp"

using xlatr::capi::object;

XLATR_INFO_FORMAT_FAMILY(BtrcInfo, XLATR_FORMAT_BTRC)
XLATR_INFO_OBJECT_FAMILY(BtrcInfo)

BtrcInfo* BtrcInfo_Construct(const TraceFileInfo* file) {
  return xlatr::capi::handle<BtrcInfo>(std::make_unique<xlatr::BtrcInfo>(object(file)));
}

bool BtrcInfo_GetValid(const BtrcInfo* info) {
  return object(info).getValid();
}

const BtrcFileHeader* BtrcInfo_GetHeader(const BtrcInfo* info) {
  return xlatr::capi::borrowedHandle<BtrcFileHeader>(object(info).GetHeader());
}

BtrcFileHeader* BtrcFileHeader_Construct(const char* path) {
  return xlatr::capi::handle<BtrcFileHeader>(std::make_unique<xlatr::BtrcFileHeader>(xlatr::capi::textIn(path)));
}

void BtrcFileHeader_Destruct(BtrcFileHeader* header) {
  xlatr::capi::destruct(header);
}

XLATR_TEXT_PAIR(BtrcFileHeader, getSourcePath, getSourcePathSize, self.sourcePath)
XLATR_TEXT_PAIR(BtrcFileHeader, getRTCRawDataString, getRTCRawDataStringSize, self.getRTCRawDataString())

bool BtrcFileHeader_getErrorOnRTC(const BtrcFileHeader* header) {
  return object(header).errorOnRtc;
}

bool BtrcFileHeader_getValid(const BtrcFileHeader* header) {
  return object(header).valid;
}

uint64_t BtrcFileHeader_getSystemTime(const BtrcFileHeader* header) {
  return object(header).systemTime.count();
}

uint16_t BtrcFileHeader_getBlockSize(const BtrcFileHeader* header) {
  return object(header).info.blockSize;
}

uint8_t BtrcFileHeader_getVersion(const BtrcFileHeader* header) {
  return object(header).info.version;
}

int8_t BtrcFileHeader_getTimeScalingExponent(const BtrcFileHeader* header) {
  return object(header).info.timeScalingExponent;
}

uint32_t BtrcFileHeader_getFirstFramePosition(const BtrcFileHeader* header) {
  return object(header).firstFramePosition;
}

XLATR_READER_FAMILY(BtrcReader, BtrcInfo, MessageBinaryFD)

void BtrcReader_SkipCurrentBlock(BtrcReader* reader, char* buffer, uint32_t bufferSize) {
  xlatr::capi::copyText(object(reader).SkipCurrentBlock(), buffer, bufferSize);
}

XLATR_WRITER_FAMILY(BtrcWriter)

BtrcWriter* BtrcWriter_Construct(const char* targetPath, bool overrideExistingFile, double version) {
  return xlatr::capi::handle<BtrcWriter>(
      std::make_unique<xlatr::BtrcWriter>(xlatr::capi::textIn(targetPath), overrideExistingFile, version));
}

XLATR_MESSAGE_FAMILY(MessageBinaryFD)
XLATR_MESSAGE_BUS(MessageBinaryFD)
XLATR_TEXT_PAIR(MessageBinaryFD, getParsingBytesString, getParsingBytesStringSize, self.getParsingBytesString())
XLATR_TEXT_PAIR(MessageBinaryFD, getCommentary, getCommentarySize, self.commentary)

bool MessageBinaryFD_ValidateForTargetVersion(const MessageBinaryFD* message, double version) {
  return object(message).ValidateForTargetVersion(version);
}
