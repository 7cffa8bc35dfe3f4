/* Counts the frames of a trace of any format by bus and identifier.

       count TRACE
 */
#include <stdio.h>
#include <stdlib.h>

#include "xlatr/frames.h"

enum { MOST_ROWS = 4096 };

typedef struct Row {
  uint16_t bus;
  uint32_t id;
  uint64_t frames;
} Row;

static Row rows[MOST_ROWS];
static size_t row_count = 0;

static void count_frame(uint16_t bus, uint32_t id) {
  size_t at = 0;
  while (at < row_count && (rows[at].bus != bus || rows[at].id != id)) {
    ++at;
  }
  if (at == row_count && row_count < MOST_ROWS) {
    rows[row_count++] = (Row){.bus = bus, .id = id};
  }
  if (at < MOST_ROWS) {
    ++rows[at].frames;
  }
}

static int by_bus_and_id(const void* left, const void* right) {
  const Row* one = left;
  const Row* other = right;
  if (one->bus != other->bus) {
    return one->bus < other->bus ? -1 : 1;
  }
  return one->id < other->id ? -1 : one->id > other->id;
}

int main(int argc, char** argv) {
  xlatr_selection frames_only = {.size = sizeof frames_only,
                                 .kinds = 1U << XLATR_KIND_DATA | 1U << XLATR_KIND_REMOTE | 1U << XLATR_KIND_LIN};
  xlatr_stream_options options = {.size = sizeof options, .selection = &frames_only};
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_stream* stream = NULL;
  xlatr_code code;
  if (argc != 2) {
    fprintf(stderr, "usage: count TRACE\n");
    return 2;
  }
  code = xlatr_stream_open(argv[1], &options, &stream);
  while (code == XLATR_OK && (code = xlatr_stream_next(stream, &batch)) == XLATR_OK) {
    for (uint64_t row = 0; row < batch.rows; ++row) {
      count_frame(batch.bus[row], batch.id[row]);
    }
  }
  if (code != XLATR_END) {
    fprintf(stderr, "%s\n", xlatr_stream_error(stream));
    xlatr_stream_close(stream);
    return 1;
  }
  xlatr_stream_close(stream);
  qsort(rows, row_count, sizeof rows[0], by_bus_and_id);
  for (size_t at = 0; at < row_count; ++at) {
    printf("%3u %8X %10llu\n", (unsigned)rows[at].bus, (unsigned)rows[at].id, (unsigned long long)rows[at].frames);
  }
  return 0;
}
