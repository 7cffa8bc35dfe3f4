/* Hands the frames of a trace out through the Arrow C stream interface and adds up the bytes of their data, without a
   copy and without a library of Arrow.

       arrow TRACE
 */
#include <stdio.h>

#include "xlatr/frames.h"

/* The place of a column among the children of a struct array, or -1. */
static int64_t find_column(const struct ArrowSchema* schema, const char* name) {
  for (int64_t at = 0; at < schema->n_children; ++at) {
    const char* column = schema->children[at]->name;
    const char* letter = name;
    while (*letter != '\0' && *letter == *column) {
      ++letter;
      ++column;
    }
    if (*letter == *column) {
      return at;
    }
  }
  return -1;
}

int main(int argc, char** argv) {
  xlatr_stream* stream = NULL;
  struct ArrowArrayStream frames;
  struct ArrowSchema schema;
  struct ArrowArray array;
  long long rows = 0;
  long long bytes = 0;
  int64_t column;
  int failed = 0;
  if (argc != 2) {
    fprintf(stderr, "usage: arrow TRACE\n");
    return 2;
  }
  if (xlatr_stream_open(argv[1], NULL, &stream) != XLATR_OK ||
      xlatr_stream_export_arrow(stream, 0, &frames) != XLATR_OK) {
    fprintf(stderr, "%s\n", xlatr_stream_error(stream));
    xlatr_stream_close(stream);
    return 1;
  }
  if (frames.get_schema(&frames, &schema) != 0) {
    fprintf(stderr, "%s\n", frames.get_last_error(&frames));
    frames.release(&frames);
    return 1;
  }
  column = find_column(&schema, "data");
  schema.release(&schema);
  while ((failed = frames.get_next(&frames, &array)) == 0 && array.release != NULL) {
    const struct ArrowArray* data = array.children[column];
    const int32_t* offsets = data->buffers[1];
    rows += array.length;
    bytes += offsets[data->offset + data->length] - offsets[data->offset];
    array.release(&array);
  }
  if (failed != 0) {
    fprintf(stderr, "%s\n", frames.get_last_error(&frames));
  } else {
    printf("%lld frames with %lld bytes\n", rows, bytes);
  }
  frames.release(&frames);
  return failed != 0;
}
