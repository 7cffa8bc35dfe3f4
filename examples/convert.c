/* Converts a whole file into TRC 2.1 and shows how far it is.

       convert SOURCE TARGET

   The source may have any format that can become a TRC trace. */
#include <stdio.h>
#include <string.h>
#include <threads.h>

#include "xlatr/xlatr.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: convert SOURCE TARGET\n");
    return 2;
  }

  const ConversionOption version = {XLATR_OPTION_TARGET_VERSION, {.version = 2.1}};
  ConversionProgress progress;
  ConversionResult result; /* must live until the conversion has ended */
  ConversionOptions options;
  memset(&progress, 0, sizeof progress);
  memset(&result, 0, sizeof result);
  memset(&options, 0, sizeof options);
  options.target_format = XLATR_FORMAT_TRC;
  options.asynchronous = 1;
  options.progress = &progress;
  options.option_count = 1;
  options.options = &version;

  xlatr_convert(argv[1], argv[2], &options, &result);

  /* The library knows the conversion until it has ended; from then on its result is complete. */
  while (xlatr_get_progress(&progress) == XLATR_SUCCESS) {
    const struct timespec pause = {0, 20L * 1000 * 1000};
    fprintf(stderr, "\r%3.0f %%", (double)progress.percent);
    thrd_sleep(&pause, NULL);
  }
  fprintf(stderr, "\r100 %%\n");

  for (uint32_t i = 0; i < result.file_count; ++i) {
    printf("%s\n", result.files[i]);
  }
  if (result.text[0] != '\0') {
    fprintf(stderr, "%s\n", result.text); /* why it failed, or warnings */
  }
  const int failed = result.status != XLATR_SUCCESS;
  xlatr_free(&result);
  return failed;
}
