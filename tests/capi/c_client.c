/* What a C program does with the library: one whole conversion, then the same file message by message.
   c_client FOLDER */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "xlatr/objects.h"
#include "xlatr/xlatr.h"

static const char kTrace[] =
    ";$FILEVERSION=1.2\n"
    "1) 10.5 3 Rx 0123 2 AA BB\n"
    "broken\n"
    "2) 11.5 3 Tx 18ABCDEF 0\n";

#define CHECK(condition)                                                    \
  do {                                                                      \
    if (!(condition)) {                                                     \
      fprintf(stderr, "line %d: %s does not hold\n", __LINE__, #condition); \
      exit(1);                                                              \
    }                                                                       \
  } while (0)

static void write_file(const char* path, const char* content) {
  FILE* file = fopen(path, "wb");
  CHECK(file != NULL);
  CHECK(fwrite(content, 1, strlen(content), file) == strlen(content));
  CHECK(fclose(file) == 0);
}

static char* read_file(const char* path) {
  static char content[65536];
  FILE* file = fopen(path, "rb");
  CHECK(file != NULL);
  content[fread(content, 1, sizeof content - 1, file)] = '\0';
  CHECK(fclose(file) == 0);
  return content;
}

static void convert_whole(const char* source, const char* target) {
  ConversionOption version = {XLATR_OPTION_TARGET_VERSION, {2.1}};
  ConversionProgress progress;
  ConversionOptions options;
  ConversionResult result;
  memset(&result, 0, sizeof result);
  memset(&options, 0, sizeof options);
  options.target_format = XLATR_FORMAT_TRC;
  options.progress = &progress;
  options.option_count = 1;
  options.options = &version;

  CHECK(xlatr_convert(source, target, &options, &result) == XLATR_SUCCESS);
  CHECK(progress.id == 1); /* the first of this process */
  CHECK(progress.status == XLATR_IN_PROGRESS && progress.finished == 0);
  CHECK(result.status == XLATR_SUCCESS && result.finished == 1);
  CHECK(strcmp(result.text, "") == 0);
  CHECK(result.file_count == 1 && strcmp(result.files[0], "c_target.trc") == 0);
  xlatr_free(&result);
  CHECK(result.text == NULL && result.files == NULL && result.file_count == 1);
  xlatr_free(&result);
  xlatr_free(NULL);

  const char* const content = read_file(target);
  CHECK(strstr(content, "\r\n      1        10.500 DT 3      0123 Rx -  2    AA BB\r\n") != NULL);
  CHECK(strstr(content, "\r\n;broken\r\n") != NULL);
  CHECK(strstr(content, "\r\n      2        11.500 DT 3  18ABCDEF Tx -  0    \r\n") != NULL);
}

static void copy_messages(const char* source, const char* target) {
  TrcInfo* const info = TrcInfo_Construct_2(source);
  TrcReader* const reader = TrcReader_Construct(info);
  TrcWriter* const writer = TrcWriter_Construct(target, true, 1.3);
  MessageCan* message = NULL;
  char text[16];
  int valid = 0;

  CHECK(TrcInfo_getValid(info));
  CHECK(TrcInfo_GetVersion(info) == 1.2);
  CHECK(TrcReader_setActive(reader, true));
  TrcWriter_setActive(writer, true);
  while (TrcReader_ReadNextMessage(reader, &message)) {
    if (MessageCan_getValid(message)) {
      TrcWriter_WriteMessage(writer, (const IMessage*)message);
      ++valid;
    } else {
      MessageCan_getParsingText(message, text, sizeof text);
      CHECK(strcmp(text, "broken") == 0);
    }
    MessageCan_Destruct(message);
  }
  CHECK(valid == 2);
  CHECK(TrcReader_getPercentDone(reader) == 100.0);
  TrcWriter_Destruct(writer);
  TrcReader_Destruct(reader);
  TrcInfo_Destruct(info);
  CHECK(strcmp(read_file(target),
               "      1)       10.500 3  Rx        0123 -  2    AA BB\r\n"
               "      2)       11.500 3  Tx    18ABCDEF -  0    \r\n") == 0);
}

int main(int argc, char** argv) {
  char source[4096];
  char target[4096];
  CHECK(argc == 2);
  snprintf(source, sizeof source, "%s/c_source.trc", argv[1]);
  snprintf(target, sizeof target, "%s/c_target.trc", argv[1]);
  write_file(source, kTrace);
  convert_whole(source, target);
  copy_messages(source, target);
  remove(source);
  remove(target);
  return 0;
}
