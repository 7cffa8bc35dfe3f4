/* Reads a TRC trace message by message, keeps one CAN identifier, and writes these messages to an ASC log and an MF4
   file.

       filter SOURCE.trc IDENTIFIER TARGET.asc TARGET.mf4

   The source has version 2.1, and the identifier is hexadecimal, as it is there. Failures of the library are C++
   exceptions, which C can't catch: a target that can't be written ends the program with the reason on stderr. */
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>

#include "xlatr/objects.h"

/* The identifier is in the fifth column of a 2.1 line: number, time, kind, bus, identifier. */
static bool has_identifier(const MessageCan* message, unsigned long wanted) {
  char line[512];
  char text[16];
  char* end = NULL;
  MessageCan_getParsingText(message, line, sizeof line);
  if (sscanf(line, "%*s %*s %*s %*s %15s", text) != 1) {
    return false;
  }
  const unsigned long identifier = strtoul(text, &end, 16);
  return *end == '\0' && identifier == wanted;
}

int main(int argc, char** argv) {
  if (argc != 5) {
    fprintf(stderr, "usage: filter SOURCE.trc IDENTIFIER TARGET.asc TARGET.mf4\n");
    return 2;
  }
  const unsigned long wanted = strtoul(argv[2], NULL, 16);

  TrcInfo* const info = TrcInfo_Construct_2(argv[1]);
  if (!TrcInfo_getValid(info) || TrcInfo_GetVersion(info) != 2.1) {
    fprintf(stderr, "%s: no TRC file of version 2.1\n", argv[1]);
    TrcInfo_Destruct(info);
    return 1;
  }

  TrcReader* const reader = TrcReader_Construct(info);
  if (!TrcReader_setActive(reader, true)) {
    fprintf(stderr, "%s: can't be opened\n", argv[1]);
    TrcReader_Destruct(reader);
    TrcInfo_Destruct(info);
    return 1;
  }

  /* An existing target is overwritten (true). A writer creates its file when it becomes active. */
  AscWriter* const asc = AscWriter_Construct(argv[3], true, AscInfo_GetCurrentVersion());
  MdfWriter* const mdf = MdfWriter_Construct(argv[4], true, MdfInfo_GetCurrentVersion());
  AscWriter_setActive(asc, true);
  AscWriter_WriteHeader(asc, (const ITraceInfo*)info);
  MdfWriter_setActive(mdf, true);
  MdfWriter_WriteHeader(mdf, (const ITraceInfo*)info);

  unsigned kept = 0;
  MessageCan* message = NULL;
  while (TrcReader_ReadNextMessage(reader, &message)) {
    if (MessageCan_getValid(message) && has_identifier(message, wanted)) {
      AscWriter_WriteMessage(asc, (const IMessage*)message);
      MdfWriter_WriteMessage(mdf, (const IMessage*)message);
      ++kept;
    }
    MessageCan_Destruct(message); /* a message belongs to whoever read it */
  }
  /* The last part of a file is written when it is closed. Destruct would close it too, but hide that the disk is full.
   */
  AscWriter_setActive(asc, false);
  MdfWriter_setActive(mdf, false);
  printf("%u messages kept\n", kept);

  MdfWriter_Destruct(mdf);
  AscWriter_Destruct(asc);
  TrcReader_Destruct(reader);
  TrcInfo_Destruct(info);
  return 0;
}
