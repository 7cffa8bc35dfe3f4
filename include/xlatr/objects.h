/*
 * xlatr, object by object: make an information object for a file, a reader and a writer, and move messages yourself.
 *
 * Conventions of all families
 *  1. A family is named after its class: TrcReader_setActive works on a TrcReader. Spellings are frozen, odd ones
 *     included.
 *  2. Objects are opaque. `..._Construct` and `..._CreateNew` return an object that the caller owns and releases with
 *     the family's `..._Destruct`, which ignores a null object. All other functions need an object: a null one raises a
 *     ConverterProcessingException. The Destruct of an active writer closes its file and hides a failure; call
 *     setActive(false) first to learn of it.
 *  3. Messages handed out by `..._ReadNextMessage` belong to the caller, who releases them with the Destruct of their
 *     message family. A reader's `..._getTrace` returns the reader's own information object, which lives as long as the
 *     reader and must not be released.
 *  4. Text out is a pair: `...Size` returns the length without the terminator, its partner copies into `buffer` of
 *     `bufferSize` bytes. The copy is cut to fit and always zero-terminated; a buffer of the length plus 1 holds all of
 *     it. A null buffer or a size of 0 copies nothing. Text in is zero-terminated; null counts as empty.
 *  5. Arrays that a function returns belong to the object, or to the library if the function takes no object. The
 *     partner that ends in `Size` returns their length.
 *  6. Every handle of an information object, reader, writer or message may be cast to ITraceInfo, ITraceReader,
 *     ITraceWriter or IMessage where a function takes one of those.
 *  7. One thread at a time uses an object; different objects may be used by any number of threads at once.
 *  8. Failures are C++ exceptions (failures.hpp), which leave the function that raised them. C can't catch them: if
 *     nothing further up does, the program ends. Compile a C caller with unwind tables, so that a C++ caller further up
 *     can catch. The text of a ConverterGenericException or one of its children is stored first, and
 *     ConverterLastError_GetText copies it for code that does not see the exception. The texts of others are not
 *     stored: only a caller that catches them learns why a file could not be created or written
 *     (std::ios_base::failure), or of a line that is too short for AscReader_ReadNextMessage (std::out_of_range). A bad
 *     line or record is no failure: the reader hands out a message that is not valid.
 *  9. Time stamps of a trace's start are days since 1899-12-30 00:00 as a double. Bus numbers count from 1.
 * 10. Every writer: setActive(true) refuses an empty target path, one of 260 characters or more, the path of a file
 *     that exists unless the writer may override it, and the source's own path, whatever the case of its letters. While
 *     inactive, WriteHeader, WriteMessage and WriteComment raise "Writer is not initialized", except for the
 *     WriteComment of MdfWriter and BtrSessionWriter, which never does anything, and the WriteHeader of AscWriter with
 *     a source that is not valid. WriteMessage raises "Object cannot be casted to any supported message trace" for a
 *     message of a class that the writer does not accept.
 */
#ifndef XLATR_OBJECTS_H
#define XLATR_OBJECTS_H

#include <stdbool.h>
#include <stdint.h>

#include "xlatr/export.h"
#include "xlatr/xlatr.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct IMessage IMessage;
typedef struct ITraceInfo ITraceInfo;
typedef struct ITraceReader ITraceReader;
typedef struct ITraceWriter ITraceWriter;
typedef struct BaseTraceInfo BaseTraceInfo;
typedef struct TraceFileInfo TraceFileInfo;
typedef struct TrcInfo TrcInfo;
typedef struct TrcReader TrcReader;
typedef struct TrcWriter TrcWriter;
typedef struct MessageCan MessageCan;
typedef struct AscInfo AscInfo;
typedef struct AscReader AscReader;
typedef struct AscWriter AscWriter;
typedef struct MessageAsc MessageAsc;
typedef struct KorlInfo KorlInfo;
typedef struct KorlReader KorlReader;
typedef struct KorlWriter KorlWriter;
typedef struct MessageLin MessageLin;
typedef struct BlfInfo BlfInfo;
typedef struct BlfReader BlfReader;
typedef struct BlfMessage BlfMessage;
typedef struct BtrcInfo BtrcInfo;
typedef struct BtrcFileHeader BtrcFileHeader;
typedef struct BtrcReader BtrcReader;
typedef struct BtrcWriter BtrcWriter;
typedef struct MessageBinaryFD MessageBinaryFD;
typedef struct CsvInfo CsvInfo;
typedef struct CsvWriter CsvWriter;
typedef struct MdfInfo MdfInfo;
typedef struct MdfReader MdfReader;
typedef struct MdfWriter MdfWriter;
typedef struct MdfCanMessage MdfCanMessage;
typedef struct BtrInfo BtrInfo;
typedef struct BtrSessionEntry BtrSessionEntry;
typedef struct BtrSessionReader BtrSessionReader;
typedef struct BtrSessionWriter BtrSessionWriter;
typedef struct SessionMessage SessionMessage;
typedef struct SessionDescriptor SessionDescriptor;
typedef struct SessionLocation SessionLocation;
typedef struct SessionDateTime SessionDateTime;
typedef struct MsgEntry MsgEntry;

/* ---- ConverterLastError: the last failure of a thread ------------------------------------------------------------ */

/* Copies the text of the last ConverterGenericException raised on the thread with this operating system id (on Linux
   the one of gettid), or an empty text. It stays until the thread raises another, and any thread may read it. */
XLATR_API void ConverterLastError_GetText(uint32_t threadId, char* buffer, uint32_t bufferSize);

/* ---- BaseTraceInfo: what a format is ----------------------------------------------------------------------------- */
/* The functions with an object describe the format of that object. A TraceFileInfo may be cast to a BaseTraceInfo. */

XLATR_API TraceFormat BaseTraceInfo_getFormat(const BaseTraceInfo* info);
/* The formats that this one can be converted into. */
XLATR_API const TraceFormat* BaseTraceInfo_getSupportedConversions(const BaseTraceInfo* info);
XLATR_API uint32_t BaseTraceInfo_getSupportedConversionsSize(const BaseTraceInfo* info);
/* The known file versions of the format. */
XLATR_API const double* BaseTraceInfo_getSupportedVersions(const BaseTraceInfo* info);
XLATR_API uint32_t BaseTraceInfo_getSupportedVersionsSize(const BaseTraceInfo* info);
XLATR_API uint32_t BaseTraceInfo_getFormatDescriptionSize(const BaseTraceInfo* info);
XLATR_API void BaseTraceInfo_getFormatDescription(const BaseTraceInfo* info, char* buffer, uint32_t bufferSize);

/* The same by format flag. A value that is not exactly one flag has empty texts and the version -1.0. */
XLATR_API uint32_t BaseTraceInfo_GetTraceFormatDescriptionSize(TraceFormat format);
XLATR_API void BaseTraceInfo_GetTraceFormatDescription(TraceFormat format, char* buffer, uint32_t bufferSize);
/* The extension with its dot, such as ".trc". */
XLATR_API void BaseTraceInfo_GetTraceExtension(TraceFormat format, char* buffer, uint32_t bufferSize);
/* The newest file version, which a writer writes unless another is asked for. BLF has no writer: its version is that of
   the converter's API, asked for once, while the library is loaded; 0.0 without a converter. */
XLATR_API double BaseTraceInfo_GetTraceCurrentVersion(TraceFormat format);
/* Whether files of the format can be a source at all: all but CSV. */
XLATR_API bool BaseTraceInfo_GetIfConvertible(TraceFormat format);
/* The known file versions of the format; null and 0 for a value that is not exactly one flag. */
XLATR_API const double* BaseTraceInfo_GetTraceSupportedVersions(TraceFormat format);
XLATR_API uint32_t BaseTraceInfo_GetTraceSupportedVersionsSize(TraceFormat format);
/* Whether a target of this format and version has no bus column, so that a conversion writes one file per bus. */
XLATR_API bool BaseTraceInfo_GetIfSplitByBus(TraceFormat format, double version);
/* Whether a source of this format is a file of sessions, so that a conversion writes a target for each. */
XLATR_API bool BaseTraceInfo_GetIfSplitBySession(TraceFormat format);

/* ---- TraceFileInfo: a file on disk ------------------------------------------------------------------------------- */

/* Takes the size from the file system and the format from the extension. If there is no file at the path, the object
   has no path and the size 0, and is not valid. */
XLATR_API TraceFileInfo* TraceFileInfo_Construct(const char* path);
XLATR_API void TraceFileInfo_Destruct(TraceFileInfo* file);
/* Whether the file exists and its extension is that of a trace format. */
XLATR_API bool TraceFileInfo_getValid(const TraceFileInfo* file);
/* Bytes. */
XLATR_API uint64_t TraceFileInfo_getSize(const TraceFileInfo* file);
XLATR_API uint32_t TraceFileInfo_getPathSize(const TraceFileInfo* file);
XLATR_API void TraceFileInfo_getPath(const TraceFileInfo* file, char* buffer, uint32_t bufferSize);
/* The same text as the path. */
XLATR_API uint32_t TraceFileInfo_getToStringSize(const TraceFileInfo* file);
XLATR_API void TraceFileInfo_ToString(const TraceFileInfo* file, char* buffer, uint32_t bufferSize);

/* ---- TrcInfo: the header of a TRC file --------------------------------------------------------------------------- */

/* Both read the header of the file. Neither fails: a file that can't be read or understood gives an object that is not
   valid. */
XLATR_API TrcInfo* TrcInfo_Construct(const TraceFileInfo* file);
XLATR_API TrcInfo* TrcInfo_Construct_2(const char* path);
XLATR_API void TrcInfo_Destruct(TrcInfo* info);
/* Whether the file is a TRC file of a version from 1.0 to 3.0. */
XLATR_API bool TrcInfo_getValid(const TrcInfo* info);
/* The file version as the header states it; 0.0 if it states none. */
XLATR_API double TrcInfo_GetVersion(const TrcInfo* info);
/* The start of the recording in days since 1899-12-30; 0.0 if the header states none or the file is not valid. */
XLATR_API double TrcInfo_getStartTime(const TrcInfo* info);
XLATR_API uint32_t TrcInfo_getPathSize(const TrcInfo* info);
XLATR_API void TrcInfo_getPath(const TrcInfo* info, char* buffer, uint32_t bufferSize);
/* About the format itself; no object is needed. */
XLATR_API uint32_t TrcInfo_getFormatDescriptionSize(void);
XLATR_API void TrcInfo_getFormatDescription(char* buffer, uint32_t bufferSize);
XLATR_API const TraceFormat* TrcInfo_GetAllowedConvertions(void);
XLATR_API uint32_t TrcInfo_GetAllowedConvertionsSize(void);
XLATR_API const double* TrcInfo_GetSupportedVersions(void);
XLATR_API uint32_t TrcInfo_GetSupportedVersionsSize(void);
XLATR_API double TrcInfo_GetCurrentVersion(void);
XLATR_API uint32_t TrcInfo_GetExtensionSize(void);
XLATR_API void TrcInfo_GetExtension(char* buffer, uint32_t bufferSize);

/* ---- TrcReader: the messages of a TRC file ----------------------------------------------------------------------- */

/* Copies the information object; the file is not touched before setActive. */
XLATR_API TrcReader* TrcReader_Construct(const TrcInfo* info);
XLATR_API void TrcReader_Destruct(TrcReader* reader);
XLATR_API const TrcInfo* TrcReader_getTrace(const TrcReader* reader);
/* true opens the file and starts at the first message, even if the reader is active already; false closes it. Returns
   whether the reader is active now: a file that can't be opened leaves it inactive. */
XLATR_API bool TrcReader_setActive(TrcReader* reader, bool active);
/* Hands out the next message through `message` and returns true. Returns false, and leaves `message` alone, at the end
   of the file, where the rest can't be read, which looks the same, and while the reader is inactive. */
XLATR_API bool TrcReader_ReadNextMessage(TrcReader* reader, MessageCan** message);
/* How much of the file has been read, 0 to 100; not a number for an empty file. */
XLATR_API double TrcReader_getPercentDone(const TrcReader* reader);

/* ---- MessageCan: a message of a TRC file ------------------------------------------------------------------------- */

XLATR_API void MessageCan_Destruct(MessageCan* message);
/* 0 for a line of a file without that column, 1 for a line of a version that has none (1.0 and 1.1), 255 if the column
   holds no number. */
XLATR_API uint32_t MessageCan_getBus(const MessageCan* message);
/* Whether the line was understood. */
XLATR_API bool MessageCan_getValid(const MessageCan* message);
/* Whether a TRC file of this version can hold the message. */
XLATR_API bool MessageCan_ValidateForTargetVersion(const MessageCan* message, double version);
/* The line, as it is in the file. */
XLATR_API uint32_t MessageCan_getParsingTextSize(const MessageCan* message);
XLATR_API void MessageCan_getParsingText(const MessageCan* message, char* buffer, uint32_t bufferSize);

/* ---- TrcWriter: writes a TRC file -------------------------------------------------------------------------------- */

/* No file is touched before setActive. `version` is the file version to write, 1.0 to 3.0. */
XLATR_API TrcWriter* TrcWriter_Construct(const char* targetPath, bool overrideExistingFile, double version);
XLATR_API void TrcWriter_Destruct(TrcWriter* writer);
/* A new, inactive writer with the same target path, override flag, version and owner bus; the caller owns it. */
XLATR_API TrcWriter* TrcWriter_CreateNew(const TrcWriter* writer);
/* Both write the header of the target version, with the source's path and start time; the second form sets the start
   time (days since 1899-12-30). A source that is not valid gets no header. */
XLATR_API void TrcWriter_WriteHeader(TrcWriter* writer, const ITraceInfo* source);
XLATR_API void TrcWriter_WriteHeader_2(TrcWriter* writer, const ITraceInfo* source, double startTime);
/* Writes the text as a comment line, with ";" before it unless it begins with that. */
XLATR_API void TrcWriter_WriteComment(TrcWriter* writer, const char* text);
/* Writes the message as a line of the target version. For a message that has no form in that version it writes nothing.
 */
XLATR_API void TrcWriter_WriteMessage(TrcWriter* writer, const IMessage* message);
/* true checks the target path and creates the file, false flushes and closes it. No effect if nothing changes. */
XLATR_API void TrcWriter_setActive(TrcWriter* writer, bool active);
XLATR_API bool TrcWriter_getActive(const TrcWriter* writer);
/* On an active writer the setters raise "Cannot change property value when object is active", except for setSourcePath,
   which is allowed at any time. A target equal to the source is refused when the writer becomes active. */
XLATR_API uint32_t TrcWriter_getTargetPathSize(const TrcWriter* writer);
XLATR_API void TrcWriter_getTargetPath(const TrcWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void TrcWriter_setTargetPath(TrcWriter* writer, const char* path);
XLATR_API double TrcWriter_getTargetVersion(const TrcWriter* writer);
XLATR_API void TrcWriter_setTargetVersion(TrcWriter* writer, double version);
XLATR_API TraceFormat TrcWriter_getTargetFormat(const TrcWriter* writer);
XLATR_API bool TrcWriter_getOverrideExistingFile(const TrcWriter* writer);
XLATR_API void TrcWriter_setOverrideExistingFile(TrcWriter* writer, bool overrideExistingFile);
/* The bus whose messages the writer is for, -1 for none. The writer itself ignores it. */
XLATR_API int32_t TrcWriter_getOwnerBus(const TrcWriter* writer);
XLATR_API void TrcWriter_setOwnerBus(TrcWriter* writer, int32_t bus);
XLATR_API uint32_t TrcWriter_getSourcePathSize(const TrcWriter* writer);
XLATR_API void TrcWriter_getSourcePath(const TrcWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void TrcWriter_setSourcePath(TrcWriter* writer, const char* path);

/* ---- AscInfo: the head of an ASC log ---------------------------------------------------------------------------- */

/* Reads the head of the file. Never fails: a file that can't be read or understood has an empty head. */
XLATR_API AscInfo* AscInfo_Construct(const TraceFileInfo* file);
XLATR_API void AscInfo_Destruct(AscInfo* info);
/* Whether the file is an ASC log by its extension, whatever it holds. */
XLATR_API bool AscInfo_getValid(const AscInfo* info);
/* The file version as the head states it; 0.0 if it states none, in which case lines are read in the oldest form. */
XLATR_API double AscInfo_GetVersion(const AscInfo* info);
/* The start of the recording in days since 1899-12-30; 0.0 if the head states none or the file is not valid. */
XLATR_API double AscInfo_getStartTime(const AscInfo* info);
XLATR_API uint32_t AscInfo_getPathSize(const AscInfo* info);
XLATR_API void AscInfo_getPath(const AscInfo* info, char* buffer, uint32_t bufferSize);
/* About the format itself; no object is needed. */
XLATR_API uint32_t AscInfo_getFormatDescriptionSize(void);
XLATR_API void AscInfo_getFormatDescription(char* buffer, uint32_t bufferSize);
XLATR_API const TraceFormat* AscInfo_GetAllowedConvertions(void);
XLATR_API uint32_t AscInfo_GetAllowedConvertionsSize(void);
XLATR_API const double* AscInfo_GetSupportedVersions(void);
XLATR_API uint32_t AscInfo_GetSupportedVersionsSize(void);
XLATR_API double AscInfo_GetCurrentVersion(void);
XLATR_API uint32_t AscInfo_GetExtensionSize(void);
XLATR_API void AscInfo_GetExtension(char* buffer, uint32_t bufferSize);

/* ---- AscReader: the messages of an ASC log ----------------------------------------------------------------------- */

/* Copies the information object; the file is not touched before setActive. */
XLATR_API AscReader* AscReader_Construct(const AscInfo* info);
XLATR_API void AscReader_Destruct(AscReader* reader);
XLATR_API const AscInfo* AscReader_getTrace(const AscReader* reader);
/* true opens the file and starts at the first message, even if the reader is active already; false closes it. Returns
   whether the reader is active now: a file that can't be opened leaves it inactive. */
XLATR_API bool AscReader_setActive(AscReader* reader, bool active);
/* Hands out the next message through `message` and returns true. Returns false, and leaves `message` alone, at the end
   of the file, where the rest can't be read, which looks the same, and while the reader is inactive. Every line gives a
   message; an empty line or a comment gives one that is not valid. A line that ends before what it began is complete
   raises std::out_of_range, "invalid vector subscript". */
XLATR_API bool AscReader_ReadNextMessage(AscReader* reader, MessageAsc** message);
/* How much of the file has been read, 0 to 100; not a number for an empty file. */
XLATR_API double AscReader_getPercentDone(const AscReader* reader);

/* ---- MessageAsc: a message of an ASC log ------------------------------------------------------------------------- */

XLATR_API void MessageAsc_Destruct(MessageAsc* message);
/* 0 for a line whose bus was not read. */
XLATR_API uint32_t MessageAsc_getBus(const MessageAsc* message);
/* Whether the line was understood as a frame, an error or a status. */
XLATR_API bool MessageAsc_getValid(const MessageAsc* message);
/* For logs with relative time stamps: adds `*reference` (seconds) to the message's time, stores the sum in `*reference`
   and returns true. For a message with an absolute time stamp it changes nothing and returns false. */
XLATR_API bool MessageAsc_AdjustTime(MessageAsc* message, double* reference);
/* The line, as it is in the file. */
XLATR_API uint32_t MessageAsc_getParsingTextSize(const MessageAsc* message);
XLATR_API void MessageAsc_getParsingText(const MessageAsc* message, char* buffer, uint32_t bufferSize);

/* ---- AscWriter: writes an ASC log -------------------------------------------------------------------------------- */

/* No file is touched before setActive. A `version` below 8.0 means the form of 7.0.0, one from 8.0 on that of 8.1.0. */
XLATR_API AscWriter* AscWriter_Construct(const char* targetPath, bool overrideExistingFile, double version);
XLATR_API void AscWriter_Destruct(AscWriter* writer);
/* A new, inactive writer with the same target path, override flag, version and owner bus; the caller owns it. */
XLATR_API AscWriter* AscWriter_CreateNew(const AscWriter* writer);
/* Both write the head of the target version, with the source's start time; the second form sets the start time (days
   since 1899-12-30). A source that is not valid gets no head. Until a head is written messages have the form of 7.0.0.
 */
XLATR_API void AscWriter_WriteHeader(AscWriter* writer, const ITraceInfo* source);
XLATR_API void AscWriter_WriteHeader_2(AscWriter* writer, const ITraceInfo* source, double startTime);
/* Writes the text as a comment line, with "// " before it unless it begins with that. */
XLATR_API void AscWriter_WriteComment(AscWriter* writer, const char* text);
/* Writes the message as a line. For a message that has no form in the version, such as a CAN FD frame below 8.0, it
   writes nothing; a CAN XL frame becomes a comment. */
XLATR_API void AscWriter_WriteMessage(AscWriter* writer, const IMessage* message);
/* true checks the target path and creates the file, false flushes and closes it. No effect if nothing changes. */
XLATR_API void AscWriter_setActive(AscWriter* writer, bool active);
XLATR_API bool AscWriter_getActive(const AscWriter* writer);
/* On an active writer the setters raise "Cannot change property value when object is active", except for setSourcePath,
   which is allowed at any time. A target equal to the source is refused when the writer becomes active. */
XLATR_API uint32_t AscWriter_getTargetPathSize(const AscWriter* writer);
XLATR_API void AscWriter_getTargetPath(const AscWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void AscWriter_setTargetPath(AscWriter* writer, const char* path);
XLATR_API double AscWriter_getTargetVersion(const AscWriter* writer);
XLATR_API void AscWriter_setTargetVersion(AscWriter* writer, double version);
XLATR_API TraceFormat AscWriter_getTargetFormat(const AscWriter* writer);
XLATR_API bool AscWriter_getOverrideExistingFile(const AscWriter* writer);
XLATR_API void AscWriter_setOverrideExistingFile(AscWriter* writer, bool overrideExistingFile);
/* The bus whose messages the writer is for, -1 for none. The writer itself ignores it. */
XLATR_API int32_t AscWriter_getOwnerBus(const AscWriter* writer);
XLATR_API void AscWriter_setOwnerBus(AscWriter* writer, int32_t bus);
XLATR_API uint32_t AscWriter_getSourcePathSize(const AscWriter* writer);
XLATR_API void AscWriter_getSourcePath(const AscWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void AscWriter_setSourcePath(AscWriter* writer, const char* path);

/* ---- KorlInfo: the header of a LIN trace ------------------------------------------------------------------------- */

/* Reads the header of the file. Never fails: a file that can't be read or understood gives an object that is not
   valid. */
XLATR_API KorlInfo* KorlInfo_Construct(const TraceFileInfo* file);
XLATR_API void KorlInfo_Destruct(KorlInfo* info);
/* Whether the file is a LIN trace of a version from 1.0 to 1.2. */
XLATR_API bool KorlInfo_getValid(const KorlInfo* info);
/* The file version as the header states it; 0.0 if it states none. */
XLATR_API double KorlInfo_GetVersion(const KorlInfo* info);
/* The start of the recording in days since 1899-12-30; 0.0 if the header states none or the file is not valid. */
XLATR_API double KorlInfo_getStartTime(const KorlInfo* info);
XLATR_API uint32_t KorlInfo_getPathSize(const KorlInfo* info);
XLATR_API void KorlInfo_getPath(const KorlInfo* info, char* buffer, uint32_t bufferSize);
/* About the format itself; no object is needed. */
XLATR_API uint32_t KorlInfo_getFormatDescriptionSize(void);
XLATR_API void KorlInfo_getFormatDescription(char* buffer, uint32_t bufferSize);
XLATR_API const TraceFormat* KorlInfo_GetAllowedConvertions(void);
XLATR_API uint32_t KorlInfo_GetAllowedConvertionsSize(void);
XLATR_API const double* KorlInfo_GetSupportedVersions(void);
XLATR_API uint32_t KorlInfo_GetSupportedVersionsSize(void);
XLATR_API double KorlInfo_GetCurrentVersion(void);
XLATR_API uint32_t KorlInfo_GetExtensionSize(void);
XLATR_API void KorlInfo_GetExtension(char* buffer, uint32_t bufferSize);

/* ---- KorlReader: the messages of a LIN trace --------------------------------------------------------------------- */

/* Copies the information object; the file is not touched before setActive. */
XLATR_API KorlReader* KorlReader_Construct(const KorlInfo* info);
XLATR_API void KorlReader_Destruct(KorlReader* reader);
XLATR_API const KorlInfo* KorlReader_getTrace(const KorlReader* reader);
/* true opens the file and starts at the first message, even if the reader is active already; false closes it. Returns
   whether the reader is active now: a file that can't be opened leaves it inactive. */
XLATR_API bool KorlReader_setActive(KorlReader* reader, bool active);
/* Hands out the next message through `message` and returns true. Returns false, and leaves `message` alone, at the end
   of the file, where the rest can't be read, which looks the same, and while the reader is inactive. Every line gives a
   message, except comments, which begin with ";". */
XLATR_API bool KorlReader_ReadNextMessage(KorlReader* reader, MessageLin** message);
/* How much of the file has been read, 0 to 100; not a number for an empty file. */
XLATR_API double KorlReader_getPercentDone(const KorlReader* reader);

/* ---- MessageLin: a message of a LIN trace ------------------------------------------------------------------------ */

XLATR_API void MessageLin_Destruct(MessageLin* message);
/* Whether the line was understood as a frame. */
XLATR_API bool MessageLin_getValid(const MessageLin* message);
/* The line, as it is in the file. */
XLATR_API uint32_t MessageLin_getParsingTextSize(const MessageLin* message);
XLATR_API void MessageLin_getParsingText(const MessageLin* message, char* buffer, uint32_t bufferSize);

/* ---- KorlWriter: writes a LIN trace ------------------------------------------------------------------------------ */

/* No file is touched before setActive. `version` is 1.0, 1.1 or 1.2. */
XLATR_API KorlWriter* KorlWriter_Construct(const char* targetPath, bool overrideExistingFile, double version);
XLATR_API void KorlWriter_Destruct(KorlWriter* writer);
/* A new, inactive writer with the same target path, override flag, version and owner bus; the caller owns it. */
XLATR_API KorlWriter* KorlWriter_CreateNew(const KorlWriter* writer);
/* Both write the header of the target version, with the source's path and start time; the second form sets the start
   time (days since 1899-12-30). A version other than these three has no header. */
XLATR_API void KorlWriter_WriteHeader(KorlWriter* writer, const ITraceInfo* source);
XLATR_API void KorlWriter_WriteHeader_2(KorlWriter* writer, const ITraceInfo* source, double startTime);
/* Writes the text as a comment line, with ";" before it unless it begins with that. */
XLATR_API void KorlWriter_WriteComment(KorlWriter* writer, const char* text);
/* Writes a message of a BLF log: a LIN frame or event as a line, a CAN frame as a comment. For a LIN message that is
   not valid it writes nothing. */
XLATR_API void KorlWriter_WriteMessage(KorlWriter* writer, const IMessage* message);
/* true checks the target path and creates the file, false flushes and closes it. No effect if nothing changes. */
XLATR_API void KorlWriter_setActive(KorlWriter* writer, bool active);
XLATR_API bool KorlWriter_getActive(const KorlWriter* writer);
/* On an active writer the setters raise "Cannot change property value when object is active", except for setSourcePath,
   which is allowed at any time. A target equal to the source is refused when the writer becomes active. */
XLATR_API uint32_t KorlWriter_getTargetPathSize(const KorlWriter* writer);
XLATR_API void KorlWriter_getTargetPath(const KorlWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void KorlWriter_setTargetPath(KorlWriter* writer, const char* path);
XLATR_API double KorlWriter_getTargetVersion(const KorlWriter* writer);
XLATR_API void KorlWriter_setTargetVersion(KorlWriter* writer, double version);
XLATR_API TraceFormat KorlWriter_getTargetFormat(const KorlWriter* writer);
XLATR_API bool KorlWriter_getOverrideExistingFile(const KorlWriter* writer);
XLATR_API void KorlWriter_setOverrideExistingFile(KorlWriter* writer, bool overrideExistingFile);
/* The bus whose messages the writer is for, -1 for none. The writer itself ignores it. */
XLATR_API int32_t KorlWriter_getOwnerBus(const KorlWriter* writer);
XLATR_API void KorlWriter_setOwnerBus(KorlWriter* writer, int32_t bus);
XLATR_API uint32_t KorlWriter_getSourcePathSize(const KorlWriter* writer);
XLATR_API void KorlWriter_getSourcePath(const KorlWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void KorlWriter_setSourcePath(KorlWriter* writer, const char* path);

/* ---- BlfInfo: what is known of a BLF log ------------------------------------------------------------------------- */
/* BLF logs are read through a converter program, "BLF2CSV.exe" in the library's folder. */

/* Asks the converter for the file's version and the number of its objects, and waits for both. Never fails: without a
   converter neither is known. */
XLATR_API BlfInfo* BlfInfo_Construct(const TraceFileInfo* file);
XLATR_API void BlfInfo_Destruct(BlfInfo* info);
/* Whether the file is a BLF log by its extension, whatever it holds. */
XLATR_API bool BlfInfo_getValid(const BlfInfo* info);
/* The file version, 4.0701 for 4.7.1.0; 0.0 if it is not known. */
XLATR_API double BlfInfo_GetVersion(const BlfInfo* info);
/* Always 0.0: the start of the recording becomes known when the log is read, see BlfReader_getCSVInfoStartTime. */
XLATR_API double BlfInfo_getStartTime(const BlfInfo* info);
XLATR_API uint32_t BlfInfo_getPathSize(const BlfInfo* info);
XLATR_API void BlfInfo_getPath(const BlfInfo* info, char* buffer, uint32_t bufferSize);
/* About the format itself; no object is needed. */
XLATR_API uint32_t BlfInfo_getFormatDescriptionSize(void);
XLATR_API void BlfInfo_getFormatDescription(char* buffer, uint32_t bufferSize);
XLATR_API const TraceFormat* BlfInfo_GetAllowedConvertions(void);
XLATR_API uint32_t BlfInfo_GetAllowedConvertionsSize(void);
XLATR_API const double* BlfInfo_GetSupportedVersions(void);
XLATR_API uint32_t BlfInfo_GetSupportedVersionsSize(void);
/* The version of the converter's API, asked for at each call; 0.0 without a converter. */
XLATR_API double BlfInfo_GetCurrentVersion(void);
XLATR_API uint32_t BlfInfo_GetExtensionSize(void);
XLATR_API void BlfInfo_GetExtension(char* buffer, uint32_t bufferSize);

/* ---- BlfReader: the messages of a BLF log ------------------------------------------------------------------------ */
/* Reading has three phases: setActive starts the converter, which writes a table into a temporary file and may take
   long; the caller calls InitializePhaseTwoWaitBlfToCsv until it returns true; InitializePhaseThreePrepareCsvReader
   opens the table, and from then on messages are read. Failures are ConverterProcessingExceptions. */

/* Copies the information object. The temporary file goes into the folder, and may have several times the log's size. */
XLATR_API BlfReader* BlfReader_Construct(const BlfInfo* info, const char* temporaryFolder);
/* Deactivates the reader first. */
XLATR_API void BlfReader_Destruct(BlfReader* reader);
XLATR_API const BlfInfo* BlfReader_getTrace(const BlfReader* reader);
/* true is phase one: it starts the converter and returns true, or raises "Cannot launch BLF to CSV" or "Cannot get
   temporary file. Check path length.". A reader in any phase starts anew. false ends reading and removes the temporary
   file, but does not end a converter that still runs. */
XLATR_API bool BlfReader_setActive(BlfReader* reader, bool active);
/* Phase two. Takes the converter's progress, waits up to 10 ms for its end and returns whether it has ended.
   `*exitCode` is then the converter's exit code, and -1 before. */
XLATR_API bool BlfReader_InitializePhaseTwoWaitBlfToCsv(BlfReader* reader, int32_t* exitCode);
/* Phase three. Raises "Error while converting BLF to temporary CSV " and the code if that is not 0, and the system's
   text if the table can't be read. */
XLATR_API void BlfReader_InitializePhaseThreePrepareCsvReader(BlfReader* reader, int32_t exitCode);
/* Asks the converter to stop; it ends by itself, which phase two sees. false if it could not be asked within 5 s. */
XLATR_API bool BlfReader_KillBlfToCsv(BlfReader* reader);
/* The start of the recording in days since 1899-12-30; 0.0 before phase three. */
XLATR_API double BlfReader_getCSVInfoStartTime(const BlfReader* reader);
/* Hands out the next message through `message` and returns true. Returns false, and leaves `message` alone, at the end
   and before phase three. Raises the system's text where the rest of the table can't be read. A converter that ended
   with 0 and left no table gives no messages. */
XLATR_API bool BlfReader_ReadNextMessage(BlfReader* reader, BlfMessage** message);
/* 0 to 100: one half for the converter, one for the reading of its table. Not a number while the number of objects is
   not known. */
XLATR_API double BlfReader_getPercentDone(const BlfReader* reader);

/* ---- BlfMessage: a message of a BLF log -------------------------------------------------------------------------- */

XLATR_API void BlfMessage_Destruct(BlfMessage* message);
/* The channel of the object. */
XLATR_API uint32_t BlfMessage_getBus(const BlfMessage* message);
/* Whether the object was understood. */
XLATR_API bool BlfMessage_getValid(const BlfMessage* message);
/* Whether the object belongs to a CAN bus; every other object counts as one of a LIN bus. */
XLATR_API bool BlfMessage_isBlfCANType(const BlfMessage* message);
/* What a trace that has no form for the message says of it: "BLF Object Type 86", and why if it is not valid. */
XLATR_API uint32_t BlfMessage_getAsCommentarySize(const BlfMessage* message);
XLATR_API void BlfMessage_getAsCommentary(const BlfMessage* message, char* buffer, uint32_t bufferSize);

/* ---- BtrcInfo: the head of a BTRC trace -------------------------------------------------------------------------- */

/* Reads the head of the file. Never fails: a file that can't be read or understood gives an object that is not valid.
 */
XLATR_API BtrcInfo* BtrcInfo_Construct(const TraceFileInfo* file);
XLATR_API void BtrcInfo_Destruct(BtrcInfo* info);
/* Whether the file is a BTRC trace of version 1. Version 0 is written but not read. */
XLATR_API bool BtrcInfo_GetValid(const BtrcInfo* info);
/* The file version as the head states it; 0.0 if the head can't be read. */
XLATR_API double BtrcInfo_GetVersion(const BtrcInfo* info);
/* The start of the recording in days since 1899-12-30; 0.0 if the file is not valid. */
XLATR_API double BtrcInfo_getStartTime(const BtrcInfo* info);
/* The head itself, which lives as long as the object and must not be released. */
XLATR_API const BtrcFileHeader* BtrcInfo_GetHeader(const BtrcInfo* info);
XLATR_API uint32_t BtrcInfo_getPathSize(const BtrcInfo* info);
XLATR_API void BtrcInfo_getPath(const BtrcInfo* info, char* buffer, uint32_t bufferSize);
/* About the format itself; no object is needed. */
XLATR_API uint32_t BtrcInfo_getFormatDescriptionSize(void);
XLATR_API void BtrcInfo_getFormatDescription(char* buffer, uint32_t bufferSize);
XLATR_API const TraceFormat* BtrcInfo_GetAllowedConvertions(void);
XLATR_API uint32_t BtrcInfo_GetAllowedConvertionsSize(void);
XLATR_API const double* BtrcInfo_GetSupportedVersions(void);
XLATR_API uint32_t BtrcInfo_GetSupportedVersionsSize(void);
XLATR_API double BtrcInfo_GetCurrentVersion(void);
XLATR_API uint32_t BtrcInfo_GetExtensionSize(void);
XLATR_API void BtrcInfo_GetExtension(char* buffer, uint32_t bufferSize);

/* ---- BtrcFileHeader: the records at the start of a BTRC trace ---------------------------------------------------- */

/* Reads the head of any file, whatever its extension. Never fails; a null path gives the head of no file. */
XLATR_API BtrcFileHeader* BtrcFileHeader_Construct(const char* path);
/* Not for the head that BtrcInfo_GetHeader returns. */
XLATR_API void BtrcFileHeader_Destruct(BtrcFileHeader* header);
XLATR_API uint32_t BtrcFileHeader_getSourcePathSize(const BtrcFileHeader* header);
XLATR_API void BtrcFileHeader_getSourcePath(const BtrcFileHeader* header, char* buffer, uint32_t bufferSize);
/* The bytes of the record that says when the trace began, each as two hexadecimal digits and a blank. */
XLATR_API uint32_t BtrcFileHeader_getRTCRawDataStringSize(const BtrcFileHeader* header);
XLATR_API void BtrcFileHeader_getRTCRawDataString(const BtrcFileHeader* header, char* buffer, uint32_t bufferSize);
/* Whether that record holds a date that does not exist. The start is then the time of the file's last change. */
XLATR_API bool BtrcFileHeader_getErrorOnRTC(const BtrcFileHeader* header);
/* Whether the file begins as a BTRC trace does. */
XLATR_API bool BtrcFileHeader_getValid(const BtrcFileHeader* header);
/* The time stamp at the start of the trace, in the file's unit; 0 if it is not known. */
XLATR_API uint64_t BtrcFileHeader_getSystemTime(const BtrcFileHeader* header);
/* The length of a block in units of 1024 bytes. */
XLATR_API uint16_t BtrcFileHeader_getBlockSize(const BtrcFileHeader* header);
XLATR_API uint8_t BtrcFileHeader_getVersion(const BtrcFileHeader* header);
/* A unit of time is ten to this power seconds. */
XLATR_API int8_t BtrcFileHeader_getTimeScalingExponent(const BtrcFileHeader* header);
/* The offset in bytes at which messages begin. */
XLATR_API uint32_t BtrcFileHeader_getFirstFramePosition(const BtrcFileHeader* header);

/* ---- BtrcReader: the records of a BTRC trace --------------------------------------------------------------------- */

/* Copies the information object; the file is not touched before setActive. */
XLATR_API BtrcReader* BtrcReader_Construct(const BtrcInfo* info);
XLATR_API void BtrcReader_Destruct(BtrcReader* reader);
XLATR_API const BtrcInfo* BtrcReader_getTrace(const BtrcReader* reader);
/* true opens the file and starts at the first record, even if the reader is active already; false closes it. Returns
   whether the reader is active now: a file that can't be opened leaves it inactive. */
XLATR_API bool BtrcReader_setActive(BtrcReader* reader, bool active);
/* Hands out the next record through `message` and returns true. Returns false, and leaves `message` alone, at the end
   of the file, after a record that makes no sense, where the rest of the file can't be read, which all look the same,
   and while the reader is inactive. Every record gives a message; a record that is no frame, error or status gives one
   that is not valid. */
XLATR_API bool BtrcReader_ReadNextMessage(BtrcReader* reader, MessageBinaryFD** message);
/* Goes on at the next end of a block, or, at the end of one, a whole block further, and copies a report of that. */
XLATR_API void BtrcReader_SkipCurrentBlock(BtrcReader* reader, char* buffer, uint32_t bufferSize);
/* How much of the file has been read, 0 to 100; not a number for an empty file. */
XLATR_API double BtrcReader_getPercentDone(const BtrcReader* reader);

/* ---- MessageBinaryFD: a record of a BTRC trace ------------------------------------------------------------------- */

XLATR_API void MessageBinaryFD_Destruct(MessageBinaryFD* message);
/* Counted from 0, unlike everywhere else. */
XLATR_API uint32_t MessageBinaryFD_getBus(const MessageBinaryFD* message);
/* Whether the record is a frame, an error or a status. */
XLATR_API bool MessageBinaryFD_getValid(const MessageBinaryFD* message);
/* Whether a TRC file of this version can hold the message. */
XLATR_API bool MessageBinaryFD_ValidateForTargetVersion(const MessageBinaryFD* message, double version);
/* The bytes of the record, each as two hexadecimal digits, joined by blanks. */
XLATR_API uint32_t MessageBinaryFD_getParsingBytesStringSize(const MessageBinaryFD* message);
XLATR_API void MessageBinaryFD_getParsingBytesString(const MessageBinaryFD* message, char* buffer, uint32_t bufferSize);
/* The text of a record that is not a frame; empty if it has none. A text that can't be read may hold any bytes. */
XLATR_API uint32_t MessageBinaryFD_getCommentarySize(const MessageBinaryFD* message);
XLATR_API void MessageBinaryFD_getCommentary(const MessageBinaryFD* message, char* buffer, uint32_t bufferSize);

/* ---- BtrcWriter: writes a BTRC trace ----------------------------------------------------------------------------- */

/* No file is touched before setActive. `version` is 1, or 0 for a file without a start time, which no reader here
   takes. Failures of writing are ConverterParsingExceptions. Those of setActive and the setters are
   ConverterProcessingExceptions, as for every writer. */
XLATR_API BtrcWriter* BtrcWriter_Construct(const char* targetPath, bool overrideExistingFile, double version);
XLATR_API void BtrcWriter_Destruct(BtrcWriter* writer);
/* A new, inactive writer with the same target path, override flag, version, owner bus and source path; the caller owns
   it. */
XLATR_API BtrcWriter* BtrcWriter_CreateNew(const BtrcWriter* writer);
/* Both write the head of the target version at the start of the file, with the source's start time; the second form
   sets the start time (days since 1899-12-30). The times of all messages after it are moved to that start. */
XLATR_API void BtrcWriter_WriteHeader(BtrcWriter* writer, const ITraceInfo* source);
XLATR_API void BtrcWriter_WriteHeader_2(BtrcWriter* writer, const ITraceInfo* source, double startTime);
/* Writes the text as a record. Nothing can be written after a text that takes a whole block. */
XLATR_API void BtrcWriter_WriteComment(BtrcWriter* writer, const char* text);
/* Writes a message of a TRC trace as a record; others are refused. For a CAN XL message it writes nothing. */
XLATR_API void BtrcWriter_WriteMessage(BtrcWriter* writer, const IMessage* message);
/* true checks the target path and creates the file, false fills its last block and closes it. No effect if nothing
   changes. */
XLATR_API void BtrcWriter_setActive(BtrcWriter* writer, bool active);
XLATR_API bool BtrcWriter_getActive(const BtrcWriter* writer);
/* On an active writer the setters raise "Cannot change property value when object is active", except for setSourcePath,
   which is allowed at any time. A target equal to the source is refused when the writer becomes active. */
XLATR_API uint32_t BtrcWriter_getTargetPathSize(const BtrcWriter* writer);
XLATR_API void BtrcWriter_getTargetPath(const BtrcWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void BtrcWriter_setTargetPath(BtrcWriter* writer, const char* path);
XLATR_API double BtrcWriter_getTargetVersion(const BtrcWriter* writer);
XLATR_API void BtrcWriter_setTargetVersion(BtrcWriter* writer, double version);
XLATR_API TraceFormat BtrcWriter_getTargetFormat(const BtrcWriter* writer);
XLATR_API bool BtrcWriter_getOverrideExistingFile(const BtrcWriter* writer);
XLATR_API void BtrcWriter_setOverrideExistingFile(BtrcWriter* writer, bool overrideExistingFile);
/* The bus whose messages the writer is for, -1 for none. The writer itself ignores it. */
XLATR_API int32_t BtrcWriter_getOwnerBus(const BtrcWriter* writer);
XLATR_API void BtrcWriter_setOwnerBus(BtrcWriter* writer, int32_t bus);
XLATR_API uint32_t BtrcWriter_getSourcePathSize(const BtrcWriter* writer);
XLATR_API void BtrcWriter_getSourcePath(const BtrcWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void BtrcWriter_setSourcePath(BtrcWriter* writer, const char* path);

/* ---- CsvInfo: the head of a CSV table ---------------------------------------------------------------------------- */
/* Tables are a target of conversions and never a source, so no function makes such an object. The first group is about
   the format itself and needs no object. */

XLATR_API uint32_t CsvInfo_getFormatDescriptionSize(void);
XLATR_API void CsvInfo_getFormatDescription(char* buffer, uint32_t bufferSize);
/* Empty: the array may be null. */
XLATR_API const TraceFormat* CsvInfo_GetAllowedConvertions(void);
XLATR_API uint32_t CsvInfo_GetAllowedConvertionsSize(void);
XLATR_API const double* CsvInfo_GetSupportedVersions(void);
XLATR_API uint32_t CsvInfo_GetSupportedVersionsSize(void);
XLATR_API double CsvInfo_GetCurrentVersion(void);
XLATR_API uint32_t CsvInfo_GetExtensionSize(void);
XLATR_API void CsvInfo_GetExtension(char* buffer, uint32_t bufferSize);
/* Whether the file is a CSV file by its name. */
XLATR_API bool CsvInfo_getValid(const CsvInfo* info);
/* Always 0.0: tables state no version. */
XLATR_API double CsvInfo_GetVersion(const CsvInfo* info);
/* The start of the recording in days since 1899-12-30; 0.0 if the head states none. */
XLATR_API double CsvInfo_getStartTime(const CsvInfo* info);
XLATR_API uint32_t CsvInfo_getPathSize(const CsvInfo* info);
XLATR_API void CsvInfo_getPath(const CsvInfo* info, char* buffer, uint32_t bufferSize);

/* ---- CsvWriter: writes a CSV table ------------------------------------------------------------------------------- */

/* No file is touched before setActive. CSV has the one version 1.0. */
XLATR_API CsvWriter* CsvWriter_Construct(const char* targetPath, bool overrideExistingFile, double version);
XLATR_API void CsvWriter_Destruct(CsvWriter* writer);
/* A new, inactive writer with the same target path, override flag, version and owner bus, and with the separator ";";
   the caller owns it. */
XLATR_API CsvWriter* CsvWriter_CreateNew(const CsvWriter* writer);
/* Both write the head and the names of the columns, with the source's path and start time; the second form sets the
   start time (days since 1899-12-30). A source that is not valid gets no head. */
XLATR_API void CsvWriter_WriteHeader(CsvWriter* writer, const ITraceInfo* source);
XLATR_API void CsvWriter_WriteHeader_2(CsvWriter* writer, const ITraceInfo* source, double startTime);
/* Writes the text as a line of its own, unchanged. For an empty text it writes nothing. */
XLATR_API void CsvWriter_WriteComment(CsvWriter* writer, const char* text);
/* Writes the message as a numbered row, even if it is not valid. */
XLATR_API void CsvWriter_WriteMessage(CsvWriter* writer, const IMessage* message);
/* true checks the target path and creates the file, false flushes and closes it. No effect if nothing changes. */
XLATR_API void CsvWriter_setActive(CsvWriter* writer, bool active);
XLATR_API bool CsvWriter_getActive(const CsvWriter* writer);
/* On an active writer the setters raise "Cannot change property value when object is active", except for setSourcePath,
   which is allowed at any time. A target equal to the source is refused when the writer becomes active. */
XLATR_API uint32_t CsvWriter_getTargetPathSize(const CsvWriter* writer);
XLATR_API void CsvWriter_getTargetPath(const CsvWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void CsvWriter_setTargetPath(CsvWriter* writer, const char* path);
XLATR_API double CsvWriter_getTargetVersion(const CsvWriter* writer);
XLATR_API void CsvWriter_setTargetVersion(CsvWriter* writer, double version);
XLATR_API TraceFormat CsvWriter_getTargetFormat(const CsvWriter* writer);
XLATR_API bool CsvWriter_getOverrideExistingFile(const CsvWriter* writer);
XLATR_API void CsvWriter_setOverrideExistingFile(CsvWriter* writer, bool overrideExistingFile);
/* The bus whose messages the writer is for, -1 for none. The writer itself ignores it. */
XLATR_API int32_t CsvWriter_getOwnerBus(const CsvWriter* writer);
XLATR_API void CsvWriter_setOwnerBus(CsvWriter* writer, int32_t bus);
XLATR_API uint32_t CsvWriter_getSourcePathSize(const CsvWriter* writer);
XLATR_API void CsvWriter_getSourcePath(const CsvWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void CsvWriter_setSourcePath(CsvWriter* writer, const char* path);
/* What separates cells, of any length; ";" by default. Cells are never quoted. Refused like the other setters. */
XLATR_API void CsvWriter_setSeparator(CsvWriter* writer, const char* separator);

/* ---- MdfInfo: the top of an MF4 file ----------------------------------------------------------------------------- */

/* Reads the top of the file and keeps the file open. Never fails: a file that can't be opened, is no MF4 file or ends
   too early gives an object that is not valid. */
XLATR_API MdfInfo* MdfInfo_Construct(const TraceFileInfo* file);
XLATR_API void MdfInfo_Destruct(MdfInfo* info);
/* Whether the file is an MF4 file by its extension, open, and of version 4.1 to 4.2. MdfReader_ValidateFile says
   whether it can be converted. */
XLATR_API bool MdfInfo_getValid(const MdfInfo* info);
/* The file version, 4.1 for 4.10; 0.0 if the top of the file can't be read. */
XLATR_API double MdfInfo_GetVersion(const MdfInfo* info);
/* The start of the measurement in days since 1899-12-30; 0.0 if the file states none that can be represented. */
XLATR_API double MdfInfo_getStartTime(const MdfInfo* info);
XLATR_API uint32_t MdfInfo_getPathSize(const MdfInfo* info);
XLATR_API void MdfInfo_getPath(const MdfInfo* info, char* buffer, uint32_t bufferSize);
/* About the format itself; no object is needed. */
XLATR_API uint32_t MdfInfo_getFormatDescriptionSize(void);
XLATR_API void MdfInfo_getFormatDescription(char* buffer, uint32_t bufferSize);
XLATR_API const TraceFormat* MdfInfo_GetAllowedConvertions(void);
XLATR_API uint32_t MdfInfo_GetAllowedConvertionsSize(void);
XLATR_API const double* MdfInfo_GetSupportedVersions(void);
XLATR_API uint32_t MdfInfo_GetSupportedVersionsSize(void);
XLATR_API double MdfInfo_GetCurrentVersion(void);
XLATR_API uint32_t MdfInfo_GetExtensionSize(void);
XLATR_API void MdfInfo_GetExtension(char* buffer, uint32_t bufferSize);

/* ---- MdfReader: the frames of an MF4 file ------------------------------------------------------------------------ */

/* Shares the open file of the information object, which serves one pass over the file: no other reader may use it while
   this one is active, and after that the file is closed for good. */
XLATR_API MdfReader* MdfReader_Construct(const MdfInfo* info);
XLATR_API void MdfReader_Destruct(MdfReader* reader);
XLATR_API const MdfInfo* MdfReader_getTrace(const MdfReader* reader);
/* Whether the file can be converted; the text says why not, and is empty if it can. Raises nothing. Call it before
   setActive: it can't look at a file that is closed. */
XLATR_API bool MdfReader_ValidateFile(MdfReader* reader, char* buffer, uint32_t bufferSize);
/* true loads the data of all groups with CAN frames into memory and starts at the first message, false frees them and
   closes the file. Returns whether the reader is active now. Blocks that can't be read raise a
   ConverterProcessingException, and the reader stays inactive. */
XLATR_API bool MdfReader_setActive(MdfReader* reader, bool active);
/* Hands out the next message through `message` and returns true. Returns false, and leaves `message` alone, at the end
   of the file and while the reader is inactive. Messages come in the order of their times, as far as each data group
   holds its own in order. Data that are no records of the channel groups raise a ConverterGenericException. */
XLATR_API bool MdfReader_ReadNextMessage(MdfReader* reader, MdfCanMessage** message);
/* How much of the records that the file states has been read, 0 to 100; not a number if it states none. */
XLATR_API double MdfReader_getPercentDone(const MdfReader* reader);

/* ---- MdfCanMessage: a frame of an MF4 file ----------------------------------------------------------------------- */

XLATR_API void MdfCanMessage_Destruct(MdfCanMessage* message);
XLATR_API uint32_t MdfCanMessage_getBus(const MdfCanMessage* message);
/* Whether the record was understood as a frame. */
XLATR_API bool MdfCanMessage_getValid(const MdfCanMessage* message);

/* ---- MdfWriter: writes an MF4 file ------------------------------------------------------------------------------- */

/* No file is touched before setActive. `version` is 4.1, 4.11 or 4.2; the blocks are the same. */
XLATR_API MdfWriter* MdfWriter_Construct(const char* targetPath, bool overrideExistingFile, double version);
XLATR_API void MdfWriter_Destruct(MdfWriter* writer);
/* A new, inactive writer with the same target path, override flag, version, owner bus and layout; the caller owns it.
 */
XLATR_API MdfWriter* MdfWriter_CreateNew(const MdfWriter* writer);
/* Both write the blocks that describe the file, with the source's start time; the second form sets the start time (days
   since 1899-12-30). A source that is not valid gets no such blocks, and a file without them stays empty. */
XLATR_API void MdfWriter_WriteHeader(MdfWriter* writer, const ITraceInfo* source);
XLATR_API void MdfWriter_WriteHeader_2(MdfWriter* writer, const ITraceInfo* source, double startTime);
/* Writes nothing: the format has no place for comments. */
XLATR_API void MdfWriter_WriteComment(MdfWriter* writer, const char* text);
/* Adds the message to the records. For what is no CAN frame (status, error counters, events, CAN XL) it writes nothing.
 */
XLATR_API void MdfWriter_WriteMessage(MdfWriter* writer, const IMessage* message);
/* true checks the target path and creates the file, false completes and closes it. No effect if nothing changes. Until
   it is closed the file says that it has no records. */
XLATR_API void MdfWriter_setActive(MdfWriter* writer, bool active);
XLATR_API bool MdfWriter_getActive(const MdfWriter* writer);
/* On an active writer the setters raise "Cannot change property value when object is active", except for setSourcePath,
   which is allowed at any time. A target equal to the source is refused when the writer becomes active. */
XLATR_API uint32_t MdfWriter_getTargetPathSize(const MdfWriter* writer);
XLATR_API void MdfWriter_getTargetPath(const MdfWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void MdfWriter_setTargetPath(MdfWriter* writer, const char* path);
XLATR_API double MdfWriter_getTargetVersion(const MdfWriter* writer);
XLATR_API void MdfWriter_setTargetVersion(MdfWriter* writer, double version);
XLATR_API TraceFormat MdfWriter_getTargetFormat(const MdfWriter* writer);
XLATR_API bool MdfWriter_getOverrideExistingFile(const MdfWriter* writer);
XLATR_API void MdfWriter_setOverrideExistingFile(MdfWriter* writer, bool overrideExistingFile);
/* The bus whose messages the writer is for, -1 for none. The writer itself ignores it. */
XLATR_API int32_t MdfWriter_getOwnerBus(const MdfWriter* writer);
XLATR_API void MdfWriter_setOwnerBus(MdfWriter* writer, int32_t bus);
XLATR_API uint32_t MdfWriter_getSourcePathSize(const MdfWriter* writer);
XLATR_API void MdfWriter_getSourcePath(const MdfWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void MdfWriter_setSourcePath(MdfWriter* writer, const char* path);
/* The layout: compressed data; one data group per kind of frame (data, remote, error) instead of one for all. Both may
   be set at any time, but do not change a file that has been begun. */
XLATR_API void MdfWriter_setZipped(MdfWriter* writer, bool zipped);
XLATR_API void MdfWriter_setSorted(MdfWriter* writer, bool sorted);

/* ---- BtrInfo: the directory of a BTR file ------------------------------------------------------------------------ */

/* Reads the directory and finds where each session begins and ends. Never fails: a file that can't be read or
   understood gives an object without sessions. */
XLATR_API BtrInfo* BtrInfo_Construct(const char* path);
XLATR_API void BtrInfo_Destruct(BtrInfo* info);
/* Whether the file has a session and is of a version from 1.0 to 3.0. */
XLATR_API bool BtrInfo_GetValid(const BtrInfo* info);
/* The file version of the first session; 0.0 without one. */
XLATR_API double BtrInfo_GetVersion(const BtrInfo* info);
XLATR_API uint32_t BtrInfo_getSessionsCount(const BtrInfo* info);
/* A copy of the session's entry, which the caller owns and releases with BtrSessionEntry_Destruct. The index counts
   from 0; at and beyond the count the result is null. */
XLATR_API BtrSessionEntry* BtrInfo_GetSession(const BtrInfo* info, uint32_t index);
/* About the format itself; no object is needed. */
XLATR_API uint32_t BtrInfo_getFormatDescriptionSize(void);
XLATR_API void BtrInfo_getFormatDescription(char* buffer, uint32_t bufferSize);
XLATR_API const TraceFormat* BtrInfo_GetAllowedConvertions(void);
XLATR_API uint32_t BtrInfo_GetAllowedConvertionsSize(void);
XLATR_API const double* BtrInfo_GetSupportedVersions(void);
XLATR_API uint32_t BtrInfo_GetSupportedVersionsSize(void);
XLATR_API double BtrInfo_GetCurrentVersion(void);
XLATR_API uint32_t BtrInfo_GetExtensionSize(void);
XLATR_API void BtrInfo_GetExtension(char* buffer, uint32_t bufferSize);

/* ---- BtrSessionEntry: one session of a BTR file ------------------------------------------------------------------ */

XLATR_API void BtrSessionEntry_Destruct(BtrSessionEntry* entry);
/* The path of the file. */
XLATR_API uint32_t BtrSessionEntry_getSourcePathSize(const BtrSessionEntry* entry);
XLATR_API void BtrSessionEntry_getSourcePath(const BtrSessionEntry* entry, char* buffer, uint32_t bufferSize);
/* Reads the directory of the file again; the caller owns the object. */
XLATR_API BtrInfo* BtrSessionEntry_getTrace(const BtrSessionEntry* entry);
/* These three belong to the entry and must not be released: its line in the directory, the first sector to read, and
   the last sector of its run (sector 0 if it could not be found). */
XLATR_API const SessionDescriptor* BtrSessionEntry_getDescription(const BtrSessionEntry* entry);
XLATR_API const SessionLocation* BtrSessionEntry_getStart(const BtrSessionEntry* entry);
XLATR_API const SessionLocation* BtrSessionEntry_getEnd(const BtrSessionEntry* entry);
/* Whether the logger overwrote the oldest sectors, so that reading begins in the middle of the run. */
XLATR_API bool BtrSessionEntry_getIsCircular(const BtrSessionEntry* entry);
/* From the beginning of the session's area to its end. */
XLATR_API uint32_t BtrSessionEntry_getSectorsCount(const BtrSessionEntry* entry);
/* Counts from 1, in the order of the directory. */
XLATR_API uint32_t BtrSessionEntry_getIndex(const BtrSessionEntry* entry);

/* ---- Session data: what a BTR file is made of -------------------------------------------------------------------- */
/* These objects are parts of others and are released with them. */

/* The bytes of a sector, and of a session's line in the directory; no object is needed. */
XLATR_API uint32_t DataSector_getSize(void);
XLATR_API uint32_t SessionDescriptor_getSize(void);
XLATR_API const SessionDateTime* SessionDescriptor_getDateAndTime(const SessionDescriptor* descriptor);
XLATR_API const SessionLocation* SessionDescriptor_getStartLocation(const SessionDescriptor* descriptor);
/* The number of the sector, and its offset in the file in bytes. */
XLATR_API uint32_t SessionLocation_getSector(const SessionLocation* location);
XLATR_API uint64_t SessionLocation_getPosition(const SessionLocation* location);
/* The fields as they are stored: the year counts from 2000, all others are as clocks show them. A null pointer is
   skipped. */
XLATR_API void SessionDateTime_getDateTimeItems(const SessionDateTime* date, uint8_t* year, uint8_t* month,
                                                uint8_t* day, uint8_t* hour, uint8_t* minute, uint8_t* second,
                                                uint8_t* hundredths);
/* -1, 0 or 1 if `left` is earlier than `right`, the same or later. */
XLATR_API int32_t SessionDateTime_compareTo(const SessionDateTime* left, const SessionDateTime* right);
/* Days since 1899-12-30; for a date that does not exist, those of 1970-01-01. */
XLATR_API double SessionDateTime_toDouble(const SessionDateTime* date);
/* The bus of a frame, counted from 0; 15 is the logger itself. */
XLATR_API uint8_t MsgEntry_getSource(const MsgEntry* entry);

/* ---- BtrSessionReader: the messages of a session ----------------------------------------------------------------- */

/* Copies the entry. The file is opened at once if `activate` is true, otherwise by setActive. */
XLATR_API BtrSessionReader* BtrSessionReader_Construct(const BtrSessionEntry* entry, bool activate);
XLATR_API void BtrSessionReader_Destruct(BtrSessionReader* reader);
/* true opens the file and starts at the session's first message, even if the reader is active already; false closes it.
   Returns whether the reader is active now: a file that can't be opened leaves it inactive. */
XLATR_API bool BtrSessionReader_setActive(BtrSessionReader* reader, bool active);
/* Hands out the messages of the next sector, `count` of them, which may be 0. The caller owns them and releases each
   with SessionMessage_Destruct, and the array with BtrSessionReader_DeleteSectors. `structSize` is the size of a
   message object in bytes. Returns false, with no messages, at the end of the session, at a sector that is not one of
   the session, and while the reader is inactive. Raises a ConverterGenericException at a sector that can't be read and
   at a frame that makes no sense; the messages before that have been handed out by then. */
XLATR_API bool BtrSessionReader_ReadNextSector(BtrSessionReader* reader, SessionMessage*** messages, uint32_t* count,
                                               uint32_t* structSize);
/* Releases the array, but not the messages in it; ignores null. */
XLATR_API void BtrSessionReader_DeleteSectors(SessionMessage** messages);
/* How much of the session has been read, 0 to 100; 100 for a session without sectors. */
XLATR_API double BtrSessionReader_getPercentDone(const BtrSessionReader* reader);

/* ---- SessionMessage: a message of a session ---------------------------------------------------------------------- */

XLATR_API void SessionMessage_Destruct(SessionMessage* message);
/* The frame as the logger stored it, which belongs to the message. */
XLATR_API const MsgEntry* SessionMessage_getMessage(const SessionMessage* message);

/* ---- BtrSessionWriter: writes a BTR file of one session ---------------------------------------------------------- */

/* No file is touched before setActive. `ownerBus` is the bus whose messages the writer is for, -1 for none; `version`
   is the file version to write, 1.0 to 3.0. Existing files are not overwritten until setOverrideExistingFile allows it.
 */
XLATR_API BtrSessionWriter* BtrSessionWriter_Construct(const char* targetPath, int32_t ownerBus, double version);
XLATR_API void BtrSessionWriter_Destruct(BtrSessionWriter* writer);
/* A new, inactive writer with the same target path, override flag, version and owner bus; the caller owns it. */
XLATR_API BtrSessionWriter* BtrSessionWriter_CreateNew(const BtrSessionWriter* writer);
/* Both write the directory, with the source's start time; the second form sets the start time (days since 1899-12-30).
 */
XLATR_API void BtrSessionWriter_WriteHeader(BtrSessionWriter* writer, const ITraceInfo* source);
XLATR_API void BtrSessionWriter_WriteHeader_2(BtrSessionWriter* writer, const ITraceInfo* source, double startTime);
/* Writes nothing: sessions have no comments. */
XLATR_API void BtrSessionWriter_WriteComment(BtrSessionWriter* writer, const char* text);
/* Writes the message, which must be a MessageCan. For one that is neither a classic frame nor an error frame it writes
   nothing. */
XLATR_API void BtrSessionWriter_WriteMessage(BtrSessionWriter* writer, const IMessage* message);
/* true checks the target path and creates the file, false flushes and closes it. No effect if nothing changes. */
XLATR_API void BtrSessionWriter_setActive(BtrSessionWriter* writer, bool active);
XLATR_API bool BtrSessionWriter_getActive(const BtrSessionWriter* writer);
/* On an active writer the setters raise "Cannot change property value when object is active", except for setSourcePath,
   which is allowed at any time. A target equal to the source is refused when the writer becomes active. */
XLATR_API uint32_t BtrSessionWriter_getTargetPathSize(const BtrSessionWriter* writer);
XLATR_API void BtrSessionWriter_getTargetPath(const BtrSessionWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void BtrSessionWriter_setTargetPath(BtrSessionWriter* writer, const char* path);
XLATR_API double BtrSessionWriter_getTargetVersion(const BtrSessionWriter* writer);
XLATR_API void BtrSessionWriter_setTargetVersion(BtrSessionWriter* writer, double version);
XLATR_API TraceFormat BtrSessionWriter_getTargetFormat(const BtrSessionWriter* writer);
XLATR_API bool BtrSessionWriter_getOverrideExistingFile(const BtrSessionWriter* writer);
XLATR_API void BtrSessionWriter_setOverrideExistingFile(BtrSessionWriter* writer, bool overrideExistingFile);
XLATR_API int32_t BtrSessionWriter_getOwnerBus(const BtrSessionWriter* writer);
XLATR_API void BtrSessionWriter_setOwnerBus(BtrSessionWriter* writer, int32_t bus);
XLATR_API uint32_t BtrSessionWriter_getSourcePathSize(const BtrSessionWriter* writer);
XLATR_API void BtrSessionWriter_getSourcePath(const BtrSessionWriter* writer, char* buffer, uint32_t bufferSize);
XLATR_API void BtrSessionWriter_setSourcePath(BtrSessionWriter* writer, const char* path);

#ifdef __cplusplus
}
#endif

#endif
