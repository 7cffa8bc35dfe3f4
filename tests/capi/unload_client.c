/* Unloads the library while its conversions run, which must end them without a crash, a leak or a dead lock.
   unload_client LIBRARY FOLDER */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "xlatr/xlatr.h"

enum { kRounds = 10, kConversions = 8, kLines = 400000 };

static void write_trace(const char* path) {
  FILE* file = fopen(path, "wb");
  if (file == NULL) {
    exit(2);
  }
  fputs(";$FILEVERSION=1.2\n", file);
  for (int line = 0; line < kLines; ++line) {
    fputs("1) 10.5 3 Rx 0123 8 00 11 22 33 44 55 66 77\n", file);
  }
  fclose(file);
}

/* A pointer to a function can't be made from one to an object in C but by its bytes. */
typedef int32_t (*Convert)(const char*, const char*, const ConversionOptions*, ConversionResult*);
static Convert find_convert(void* library) {
  void* const symbol = dlsym(library, "xlatr_convert");
  Convert convert = NULL;
  memcpy(&convert, &symbol, sizeof convert);
  return convert;
}

int main(int argc, char** argv) {
  char source[4096];
  char target[4096];
  if (argc != 3) {
    return 2;
  }
  snprintf(source, sizeof source, "%s/unload_source.trc", argv[2]);
  write_trace(source);
  for (int round = 0; round < kRounds; ++round) {
    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == NULL) {
      fprintf(stderr, "%s\n", dlerror());
      return 1;
    }
    const Convert convert = find_convert(library);
    ConversionResult results[kConversions];
    memset(results, 0, sizeof results);
    for (int index = 0; index < kConversions; ++index) {
      ConversionOptions options;
      memset(&options, 0, sizeof options);
      options.target_format = XLATR_FORMAT_TRC;
      options.asynchronous = 1;
      snprintf(target, sizeof target, "%s/unload_target_%d.trc", argv[2], index);
      if (convert(source, target, &options, &results[index]) == XLATR_FAILED) {
        return 1;
      }
    }
    if (dlclose(library) != 0) {
      return 1;
    }
    for (int index = 0; index < kConversions; ++index) {
      free(results[index].text); /* the library that would free it is gone; its records are plain memory */
    }
  }
  if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != NULL) {
    fprintf(stderr, "the library is still loaded\n");
    return 1;
  }
  remove(source);
  for (int index = 0; index < kConversions; ++index) {
    snprintf(target, sizeof target, "%s/unload_target_%d.trc", argv[2], index);
    remove(target);
  }
  return 0;
}
