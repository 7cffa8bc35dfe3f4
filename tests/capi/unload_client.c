/* Unloads the library while its conversions run, which must end them without a crash, a leak or a dead lock, also those
   that fail at that moment. At last the process ends with conversions under way.
   unload_client LIBRARY FOLDER */
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "xlatr/xlatr.h"

enum { kRounds = 5, kConversions = 4, kFailures = 50, kLines = 400000 };

static char source[4096];
static char junk[4096];

static void write_sources(const char* folder) {
  snprintf(source, sizeof source, "%s/unload_source.trc", folder);
  snprintf(junk, sizeof junk, "%s/unload_source.mf4", folder);
  FILE* file = fopen(source, "wb");
  FILE* const no_mf4 = fopen(junk, "wb");
  if (file == NULL || no_mf4 == NULL) {
    exit(2);
  }
  fputs(";$FILEVERSION=1.2\n", file);
  for (int line = 0; line < kLines; ++line) {
    fputs("1) 10.5 3 Rx 0123 8 00 11 22 33 44 55 66 77\n", file);
  }
  fputs("junk", no_mf4);
  fclose(file);
  fclose(no_mf4);
}

static const char* target_path(const char* folder, int index) {
  static char path[4096];
  snprintf(path, sizeof path, "%s/unload_target_%d.trc", folder, index);
  return path;
}

/* In C only the bytes of a pointer to an object give a pointer to a function. */
typedef int32_t (*Convert)(const char*, const char*, const ConversionOptions*, ConversionResult*);
static Convert find_convert(void* library) {
  void* const symbol = dlsym(library, "xlatr_convert");
  Convert convert = NULL;
  memcpy(&convert, &symbol, sizeof convert);
  return convert;
}

/* First a failure, whose text is stored, then many more, beside conversions that succeed. */
static void start_conversions(void* library, const char* folder, ConversionResult* results) {
  const Convert convert = find_convert(library);
  ConversionOptions options;
  memset(&options, 0, sizeof options);
  options.target_format = XLATR_FORMAT_TRC;
  if (convert(junk, target_path(folder, 0), &options, NULL) != XLATR_FAILED) {
    exit(1);
  }
  options.asynchronous = 1;
  for (int index = 0; index < kConversions; ++index) {
    if (convert(source, target_path(folder, index), &options, &results[index]) == XLATR_FAILED) {
      exit(1);
    }
  }
  for (int index = 0; index < kFailures; ++index) {
    convert(junk, target_path(folder, kConversions), &options, NULL);
  }
}

static void* load(const char* path) {
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    exit(1);
  }
  return library;
}

/* The library that would free them is gone; its records are plain memory. */
static void free_results(ConversionResult* results) {
  for (int index = 0; index < kConversions; ++index) {
    ConversionResult* const result = &results[index];
    for (uint32_t file = 0; result->files != NULL && file < result->file_count; ++file) {
      free(result->files[file]);
    }
    free(result->files);
    free(result->text);
  }
}

int main(int argc, char** argv) {
  /* Filled by conversions that run when main has returned. */
  static ConversionResult results[kConversions];
  if (argc != 3) {
    return 2;
  }
  write_sources(argv[2]);
  for (int round = 0; round < kRounds; ++round) {
    void* const library = load(argv[1]);
    memset(results, 0, sizeof results);
    start_conversions(library, argv[2], results);
    if (dlclose(library) != 0) {
      return 1;
    }
    free_results(results);
  }
  if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != NULL) {
    fprintf(stderr, "the library is still loaded\n");
    return 1;
  }
  memset(results, 0, sizeof results);
  start_conversions(load(argv[1]), argv[2], results);
  remove(source);
  remove(junk);
  for (int index = 0; index <= kConversions; ++index) {
    remove(target_path(argv[2], index));
  }
  return 0;
}
