/* What a C program does with frames.h, and that no function minds what it is given: null, closed and made-up handles,
   and those of another kind. Compiled without unwind tables, so that a C++ failure that comes out ends the program.
   frames_client FOLDER */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "xlatr/frames.h"

static const char kTrace[] =
    ";$FILEVERSION=2.1\r\n"
    ";$STARTTIME=43894.5\r\n"
    ";$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
    "1 1.5 DT 1 0123 Rx - 2 01 02\r\n"
    "2 2.5 FB 2 0124 Tx - 9 01 02 03 04 05 06 07 08 09 0A 0B 0C\r\n"
    "noise\r\n"
    "3 3.5 EV 1 an event\r\n";

#define CHECK(condition)                                                    \
  do {                                                                      \
    if (!(condition)) {                                                     \
      fprintf(stderr, "line %d: %s does not hold\n", __LINE__, #condition); \
      exit(1);                                                              \
    }                                                                       \
  } while (0)

static const char* folder;

/* A path in the folder; valid until the fourth next call. */
static const char* in_folder(const char* name) {
  static char paths[4][4096];
  static unsigned next = 0;
  char* path = paths[next++ % 4];
  CHECK(snprintf(path, sizeof paths[0], "%s/%s", folder, name) < (int)sizeof paths[0]);
  return path;
}

static void write_file(const char* path, const char* content) {
  FILE* file = fopen(path, "wb");
  CHECK(file != NULL);
  CHECK(fwrite(content, 1, strlen(content), file) == strlen(content));
  CHECK(fclose(file) == 0);
}

static xlatr_stream* open_stream(const char* path) {
  xlatr_stream* stream = NULL;
  CHECK(xlatr_stream_open(path, NULL, &stream) == XLATR_OK);
  return stream;
}

static void read_frames(void) {
  xlatr_stream* stream = open_stream(in_folder("a.trc"));
  xlatr_head head = {.size = sizeof head};
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_account account = {.size = sizeof account};
  uint64_t bytes = 0;
  uint64_t size = 0;
  CHECK(xlatr_stream_get_head(stream, &head) == XLATR_OK);
  CHECK(head.format == XLATR_FORMAT_TRC && head.version == 2.1 && head.start_known == 1 && head.zone_known == 0);
  CHECK(head.start_ns == 1583323200000000000);
  CHECK(strcmp(head.path, in_folder("a.trc")) == 0);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_OK);
  CHECK(batch.rows == 4);
  CHECK(batch.time_ns[1] == 2500000 && batch.id[1] == 0x124 && batch.bus[1] == 2 && batch.dlc[1] == 9);
  CHECK(batch.flags[1] == (XLATR_FLAG_TRANSMITTED | XLATR_FLAG_FD | XLATR_FLAG_BRS));
  CHECK(batch.data_offsets[2] - batch.data_offsets[1] == 12 && batch.data[batch.data_offsets[1] + 11] == 12);
  CHECK(batch.kind[2] == XLATR_KIND_COMMENT && batch.place[2] == 6);
  CHECK(batch.kind[3] == XLATR_KIND_EVENT && batch.text_validity[0] == 0x0C);
  CHECK(memcmp(batch.text + batch.text_offsets[3], "an event", 8) == 0);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_END && batch.rows == 0);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_END);
  CHECK(xlatr_stream_get_account(stream, &account) == XLATR_OK);
  CHECK(account.read == 4 && account.dropped == 0);
  CHECK(xlatr_stream_get_position(stream, &bytes, &size) == XLATR_OK && bytes == size && size == sizeof kTrace - 1);
  CHECK(strcmp(xlatr_stream_error(stream), "") == 0);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_stream_close(stream) == XLATR_ERROR_HANDLE);
}

/* A caller whose record is older gets what it knows; one whose record is newer gets zeros beyond. */
static void records_may_grow(void) {
  struct {
    xlatr_job_progress known;
    uint64_t unknown;
  } newer;
  struct {
    uint64_t size;
    TraceFormat format;
    uint32_t start_known;
    uint64_t not_the_librarys;
  } older = {16, 0, 0, 42};
  uint64_t none = 4;
  xlatr_stream* stream = open_stream(in_folder("a.trc"));
  xlatr_job_options options = {.size = sizeof options};
  xlatr_job* job = NULL;
  CHECK(xlatr_stream_get_head(stream, (xlatr_head*)(void*)&older) == XLATR_OK);
  CHECK(older.size == 16 && older.format == XLATR_FORMAT_TRC && older.start_known == 1 && older.not_the_librarys == 42);
  CHECK(xlatr_stream_get_head(stream, (xlatr_head*)(void*)&none) == XLATR_ERROR_ARGUMENT && none == 4);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK);
  memset(&newer, 0xFF, sizeof newer);
  newer.known.size = sizeof newer;
  CHECK(xlatr_job_get_progress(job, &newer.known) == XLATR_OK);
  CHECK(newer.known.size == sizeof newer && newer.known.frames_read == 0 && newer.unknown == 0);
  CHECK(xlatr_job_close(job) == XLATR_OK);
}

static void write_frames(void) {
  xlatr_sink_options options = {.size = sizeof options, .version = 1.3};
  xlatr_head head = {.size = sizeof head, .start_known = 1, .start_ns = 1583323200000000000};
  xlatr_account account = {.size = sizeof account};
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_stream* stream = open_stream(in_folder("a.trc"));
  xlatr_sink* sink = NULL;
  int64_t far_away = INT64_MAX;
  uint8_t unknown_kind = XLATR_KIND_COUNT;
  FILE* kept = NULL;
  CHECK(xlatr_sink_create(in_folder("b.trc"), &head, &options, &sink) == XLATR_OK);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_OK);
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_OK);
  batch.rows = 1;
  batch.time_ns = &far_away;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT && strstr(xlatr_sink_error(sink), "285 years") != NULL);
  batch.kind = &unknown_kind;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT && strstr(xlatr_sink_error(sink), "no kind") != NULL);
  batch.kind = NULL;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT && strstr(xlatr_sink_error(sink), "null") != NULL);
  CHECK(xlatr_sink_write(sink, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_sink_finish(sink) == XLATR_OK);
  CHECK(xlatr_sink_finish(sink) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_sink_get_account(sink, &account) == XLATR_OK);
  CHECK(account.read == 4 && account.written == 4 && account.commented == 2 && account.dropped == 0);
  CHECK(account.complete == 0);
  CHECK(xlatr_sink_close(sink) == XLATR_OK && xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_sink_create(in_folder("b.trc"), &head, &options, &sink) == XLATR_ERROR_TARGET_EXISTS);
  CHECK(strstr(xlatr_sink_error(sink), "b.trc: the file exists") != NULL);
  CHECK(xlatr_sink_close(sink) == XLATR_OK);
  options.replace = 1;
  CHECK(xlatr_sink_create(in_folder("b.trc"), NULL, &options, &sink) == XLATR_OK);
  CHECK(xlatr_sink_close(sink) == XLATR_OK);
  kept = fopen(in_folder("b.trc"), "rb");
  CHECK(kept != NULL && fclose(kept) == 0);
  CHECK(remove(in_folder("b.trc")) == 0);
  CHECK(xlatr_sink_create(in_folder("b.trc"), NULL, &options, &sink) == XLATR_OK);
  CHECK(xlatr_sink_close(sink) == XLATR_OK);
  CHECK(fopen(in_folder("b.trc"), "rb") == NULL);
}

/* One batch after the other, each with one thing that is wrong. */
static void refuse_batches(void) {
  int64_t time = 0;
  uint8_t kind = 0;
  uint16_t number = 0;
  uint32_t id = 0;
  int32_t none[2] = {0, 0};
  int32_t falling[2] = {4, 2};
  int32_t negative[2] = {-1, 0};
  int32_t some[2] = {0, 1};
  const xlatr_batch good = {.size = sizeof good,
                            .rows = 1,
                            .time_ns = &time,
                            .kind = &kind,
                            .bus = &number,
                            .id = &id,
                            .flags = &number,
                            .dlc = &number,
                            .data_offsets = none,
                            .text_offsets = none};
  xlatr_sink_options options = {.size = sizeof options, .separator = ","};
  xlatr_head head = {.size = sizeof head, .start_known = 1, .zone_known = 1, .zone_minutes = 60};
  xlatr_sink* sink = NULL;
  xlatr_batch batch = good;
  CHECK(xlatr_sink_create(in_folder("f.csv"), &head, &options, &sink) == XLATR_OK);
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_OK);
  batch.rows = 0;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_OK);
  batch = good;
  batch.attributes = 1U << XLATR_ATTRIBUTE_COUNT;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT);
  batch.attributes = 1;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT);
  batch = good;
  batch.data_offsets = some;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT);
  batch = good;
  batch.data = &kind;
  batch.data_offsets = falling;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT);
  batch.data_offsets = negative;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT);
  batch = good;
  batch.text = "\xFF";
  batch.text_offsets = some;
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_ARGUMENT && strstr(xlatr_sink_error(sink), "UTF-8") != NULL);
  CHECK(xlatr_sink_finish(sink) == XLATR_OK && xlatr_sink_close(sink) == XLATR_OK);
}

static void refuse_options(void) {
  xlatr_id_rule rule = {.length = 12};
  xlatr_selection selection = {.size = sizeof selection, .ids = &rule, .id_count = 1};
  xlatr_stream_options options = {.size = sizeof options, .selection = &selection};
  uint64_t short_record = 4;
  xlatr_stream* stream = NULL;
  CHECK(xlatr_stream_open(in_folder("a.trc"), &options, &stream) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  selection.ids = NULL;
  CHECK(xlatr_stream_open(in_folder("a.trc"), &options, &stream) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  options.selection = (const xlatr_selection*)(void*)&short_record;
  CHECK(xlatr_stream_open(in_folder("a.trc"), &options, &stream) == XLATR_ERROR_ARGUMENT);
  CHECK(strstr(xlatr_stream_error(stream), "size") != NULL && xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_stream_open(in_folder("a.trc"), (const xlatr_stream_options*)(void*)&short_record, &stream) ==
        XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
}

static void release_stream(struct ArrowArrayStream* stream) {
  stream->release = NULL;
}

/* Targets that can't be, and a stream of nothing. */
static void refuse_targets(void) {
  const char* source = NULL;
  xlatr_sink_options replace = {.size = sizeof replace, .replace = 1};
  xlatr_job_options options = {.size = sizeof options, .sources = &source, .source_count = 1, .sink = &replace};
  struct ArrowArrayStream nothing;
  xlatr_sink* sink = NULL;
  xlatr_job* job = NULL;
  CHECK(xlatr_sink_create(in_folder("a.xyz"), NULL, NULL, &sink) == XLATR_ERROR_NOT_WRITTEN);
  CHECK(strstr(xlatr_sink_error(sink), "names no format") != NULL && xlatr_sink_close(sink) == XLATR_OK);
  CHECK(xlatr_sink_create(in_folder("a.blf"), NULL, NULL, &sink) == XLATR_ERROR_NOT_WRITTEN);
  CHECK(strstr(xlatr_sink_error(sink), ".blf are not written") != NULL && xlatr_sink_close(sink) == XLATR_OK);
  CHECK(xlatr_sink_create(in_folder("none/a.trc"), NULL, NULL, &sink) == XLATR_ERROR_TARGET);
  CHECK(strstr(xlatr_sink_error(sink), "none/a.trc") != NULL && xlatr_sink_close(sink) == XLATR_OK);
  source = in_folder("a.trc");
  options.target = source;
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK && xlatr_job_run(job) == XLATR_ERROR_TARGET_IS_SOURCE);
  CHECK(xlatr_job_close(job) == XLATR_OK);
  options.target = in_folder("none/a.trc");
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK && xlatr_job_run(job) == XLATR_ERROR_TARGET);
  CHECK(xlatr_job_close(job) == XLATR_OK);
  memset(&nothing, 0, sizeof nothing);
  nothing.release = release_stream;
  CHECK(xlatr_sink_create(in_folder("f.csv"), NULL, &replace, &sink) == XLATR_OK);
  CHECK(xlatr_sink_write_arrow(sink, &nothing) == XLATR_ERROR_ARGUMENT && nothing.release == NULL);
  CHECK(strstr(xlatr_sink_error(sink), "released already") != NULL && xlatr_sink_close(sink) == XLATR_OK);
}

/* What an input reads, and how often it was released. */
typedef struct memory {
  const char* bytes;
  uint64_t size;
  uint64_t at_once; /* 0: the function fails */
  int released;
} memory;

static int64_t read_memory(void* context, uint64_t offset, void* buffer, uint64_t bytes) {
  const memory* from = context;
  uint64_t count = offset < from->size ? from->size - offset : 0;
  if (from->at_once == 0) {
    return -1;
  }
  count = count < bytes ? count : bytes;
  count = count < from->at_once ? count : from->at_once;
  memcpy(buffer, from->bytes + (count == 0 ? 0 : offset), (size_t)count);
  return (int64_t)count;
}

static int64_t read_too_much(void* context, uint64_t offset, void* buffer, uint64_t bytes) {
  (void)context;
  (void)offset;
  (void)buffer;
  return (int64_t)bytes + 1;
}

static void release_memory(void* context) {
  ++((memory*)context)->released;
}

static xlatr_input input_of(memory* from) {
  const xlatr_input input = {
      .size = sizeof input, .read = read_memory, .release = release_memory, .context = from, .name = "pipe.trc"};
  return input;
}

static uint64_t rows_of(xlatr_stream* stream) {
  xlatr_batch batch = {.size = sizeof batch};
  uint64_t rows = 0;
  while (xlatr_stream_next(stream, &batch) == XLATR_OK) {
    rows += batch.rows;
  }
  return rows;
}

/* Traces that are no files. */
static void read_inputs(void) {
  memory from = {kTrace, strlen(kTrace), 7, 0};
  xlatr_input input = input_of(&from);
  xlatr_head head = {.size = sizeof head};
  xlatr_stream* stream = NULL;
  uint64_t bytes = 0;
  uint64_t size = 0;
  input.in_order = 1;
  CHECK(xlatr_stream_open_input(&input, NULL, &stream) == XLATR_OK && from.released == 0);
  CHECK(xlatr_stream_get_head(stream, &head) == XLATR_OK && head.format == XLATR_FORMAT_TRC);
  CHECK(strcmp(head.path, "pipe.trc") == 0 && rows_of(stream) == 4);
  CHECK(xlatr_stream_get_position(stream, &bytes, &size) == XLATR_OK && bytes == strlen(kTrace) && size == 0);
  CHECK(xlatr_stream_close(stream) == XLATR_OK && from.released == 1);
  input.in_order = 0;
  input.length = from.size;
  input.length_known = 1;
  CHECK(xlatr_stream_open_input(&input, NULL, &stream) == XLATR_OK && rows_of(stream) == 4);
  CHECK(xlatr_stream_get_position(stream, &bytes, &size) == XLATR_OK && size == strlen(kTrace));
  CHECK(xlatr_stream_close(stream) == XLATR_OK && from.released == 2);
}

static void refuse_input(const xlatr_input* input, const xlatr_stream_options* options, xlatr_code code,
                         const char* text) {
  xlatr_stream* stream = NULL;
  CHECK(xlatr_stream_open_input(input, options, &stream) == code);
  CHECK(strstr(xlatr_stream_error(stream), text) != NULL && xlatr_stream_close(stream) == XLATR_OK);
}

static void refuse_inputs(void) {
  memory from = {kTrace, strlen(kTrace), 7, 0};
  xlatr_input input = input_of(&from);
  xlatr_stream_options as_mf4 = {.size = sizeof as_mf4, .format = XLATR_FORMAT_MF4};
  const xlatr_input short_record = {.size = 4};
  refuse_input(NULL, NULL, XLATR_ERROR_ARGUMENT, "there is none");
  refuse_input(&short_record, NULL, XLATR_ERROR_ARGUMENT, "does not begin with its size");
  refuse_input(&input, NULL, XLATR_ERROR_ARGUMENT, "pipe.trc: say how long it is");
  CHECK(from.released == 1);
  input.in_order = 1;
  refuse_input(&input, &as_mf4, XLATR_ERROR_ARGUMENT, "files of the format .mf4 are not read in order");
  CHECK(from.released == 2);
  from.at_once = 0;
  refuse_input(&input, NULL, XLATR_ERROR_SYSTEM, "pipe.trc: the caller's function can't read at byte 0");
  input.read = read_too_much;
  refuse_input(&input, NULL, XLATR_ERROR_SYSTEM, "pipe.trc: the caller's function can't read at byte 0");
  input.read = NULL;
  input.name = NULL;
  refuse_input(&input, NULL, XLATR_ERROR_ARGUMENT, "the input: there is no function");
  CHECK(from.released == 5);
  CHECK(xlatr_stream_open_input(&input, NULL, NULL) == XLATR_ERROR_ARGUMENT && from.released == 6);
}

static void run_job_of_inputs(void) {
  memory from[2] = {{kTrace, strlen(kTrace), 1000, 0}, {kTrace, strlen(kTrace), 10, 0}};
  xlatr_input inputs[2] = {input_of(&from[0]), input_of(&from[1])};
  const xlatr_input* const both[2] = {&inputs[0], &inputs[1]};
  const xlatr_sink_options replace = {.size = sizeof replace, .replace = 1};
  xlatr_job_options options = {.size = sizeof options,
                               .target = in_folder("from_inputs.trc"),
                               .sink = &replace,
                               .inputs = both,
                               .input_count = 2};
  xlatr_account account = {.size = sizeof account};
  xlatr_job* job = NULL;
  inputs[0].in_order = 1;
  inputs[1].in_order = 1;
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK && xlatr_job_run(job) == XLATR_OK);
  CHECK(xlatr_job_get_account(job, &account) == XLATR_OK && account.read == 8 && account.written == 8);
  CHECK(xlatr_job_close(job) == XLATR_OK && from[0].released == 1 && from[1].released == 1);
  inputs[1].read = NULL;
  CHECK(xlatr_job_create(&options, &job) == XLATR_ERROR_ARGUMENT && from[1].released == 2);
  CHECK(xlatr_job_close(job) == XLATR_OK && from[0].released == 2);
}

/* What an output takes, and how often it was released. */
typedef struct taken_bytes {
  char bytes[4096];
  uint64_t size;
  int released;
  int fails;
} taken_bytes;

static int32_t take_bytes(void* context, const void* bytes, uint64_t count) {
  taken_bytes* to = context;
  if (to->fails != 0) {
    return -1;
  }
  CHECK(to->size + count < sizeof to->bytes);
  memcpy(to->bytes + to->size, bytes, (size_t)count);
  to->size += count;
  return 0;
}

static void release_bytes(void* context) {
  ++((taken_bytes*)context)->released;
}

static xlatr_output output_to(taken_bytes* to) {
  const xlatr_output output = {
      .size = sizeof output, .write = take_bytes, .release = release_bytes, .context = to, .name = "pipe.csv"};
  return output;
}

/* Traces that go to no files. */
static void write_outputs(void) {
  taken_bytes to = {{0}, 0, 0, 0};
  xlatr_output output = output_to(&to);
  const xlatr_output short_record = {.size = 4};
  const char* const source = in_folder("a.trc");
  xlatr_sink_options table = {.size = sizeof table, .version = 2.0};
  xlatr_job_options options = {
      .size = sizeof options, .sources = &source, .source_count = 1, .sink = &table, .output = &output};
  xlatr_written written = {.size = sizeof written};
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_stream* stream = open_stream(source);
  xlatr_sink* sink = NULL;
  xlatr_job* job = NULL;
  CHECK(xlatr_sink_create_output(&output, NULL, &table, &sink) == XLATR_OK);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_OK && xlatr_sink_write(sink, &batch) == XLATR_OK);
  CHECK(xlatr_sink_get_written(sink, 0, &written) == XLATR_END);
  CHECK(xlatr_sink_finish(sink) == XLATR_OK && xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_sink_get_written(sink, 0, &written) == XLATR_OK && strcmp(written.path, "pipe.csv") == 0);
  CHECK(written.bytes == to.size && written.frames == 4 && xlatr_sink_get_written(sink, 1, &written) == XLATR_END);
  CHECK(xlatr_sink_close(sink) == XLATR_OK && to.released == 1);
  CHECK(memcmp(to.bytes, "time_ns,kind,bus,", 17) == 0);
  to.size = 0;
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK && xlatr_job_run(job) == XLATR_OK);
  CHECK(xlatr_job_get_written(job, 0, &written) == XLATR_OK && written.bytes == to.size && written.frames == 4);
  CHECK(xlatr_job_get_written(job, 1, &written) == XLATR_END);
  CHECK(xlatr_job_close(job) == XLATR_OK && to.released == 2);
  to.fails = 1;
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK && xlatr_job_run(job) == XLATR_ERROR_TARGET);
  CHECK(strstr(xlatr_job_error(job), "pipe.csv: the caller's function can't write") != NULL);
  CHECK(xlatr_job_close(job) == XLATR_OK && to.released == 3);
  table.format = XLATR_FORMAT_MF4;
  table.version = 0;
  CHECK(xlatr_sink_create_output(&output, NULL, &table, &sink) == XLATR_ERROR_ARGUMENT && to.released == 4);
  CHECK(strstr(xlatr_sink_error(sink), ".mf4 are not written in order") != NULL && xlatr_sink_close(sink) == XLATR_OK);
  table.format = 0;
  table.split_ns = 1;
  CHECK(xlatr_sink_create_output(&output, NULL, &table, &sink) == XLATR_ERROR_ARGUMENT);
  CHECK(strstr(xlatr_sink_error(sink), "only files can be split") != NULL && xlatr_sink_close(sink) == XLATR_OK);
  table.split_ns = -1;
  CHECK(xlatr_sink_create_output(&output, NULL, &table, &sink) == XLATR_ERROR_ARGUMENT);
  CHECK(strstr(xlatr_sink_error(sink), "negative") != NULL && xlatr_sink_close(sink) == XLATR_OK);
  output.write = NULL;
  output.name = NULL;
  CHECK(xlatr_sink_create_output(&output, NULL, NULL, &sink) == XLATR_ERROR_ARGUMENT && to.released == 7);
  CHECK(strstr(xlatr_sink_error(sink), "the output: there is no function") != NULL);
  CHECK(xlatr_sink_close(sink) == XLATR_OK);
  CHECK(xlatr_sink_create_output(&short_record, NULL, NULL, &sink) == XLATR_ERROR_ARGUMENT);
  CHECK(strstr(xlatr_sink_error(sink), "size") != NULL && xlatr_sink_close(sink) == XLATR_OK);
  CHECK(xlatr_sink_create_output(NULL, NULL, NULL, NULL) == XLATR_ERROR_ARGUMENT);
}

/* The trace has a line that is not understood. */
static void run_strict_job(void) {
  const char* const source = in_folder("a.trc");
  xlatr_job_options options = {
      .size = sizeof options, .sources = &source, .source_count = 1, .target = in_folder("strict.trc"), .strict = 1};
  xlatr_account account = {.size = sizeof account};
  xlatr_job* job = NULL;
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK && xlatr_job_run(job) == XLATR_ERROR_INCOMPLETE);
  CHECK(xlatr_job_get_account(job, &account) == XLATR_OK && account.read == 4);
  CHECK(xlatr_job_close(job) == XLATR_OK && fopen(in_folder("strict.trc"), "rb") == NULL);
}

/* A log with a single FlexRay frame, which is passed over. */
static void tell_what_is_passed_over(void) {
  static const uint8_t kObject[32] = {'L', 'O', 'B', 'J', 32, 0, 1, 0, 32, 0, 0, 0, 41, 0, 0, 0};
  uint8_t log[144 + sizeof kObject] = {'L', 'O', 'G', 'G', 144, 0, 0, 0};
  memory from = {(const char*)log, sizeof log, sizeof log, 0};
  xlatr_input input = input_of(&from);
  const xlatr_input* const one = &input;
  const xlatr_sink_options replace = {.size = sizeof replace, .replace = 1};
  xlatr_job_options options = {.size = sizeof options,
                               .target = in_folder("passed_over.trc"),
                               .sink = &replace,
                               .inputs = &one,
                               .input_count = 1};
  xlatr_passed_over type = {.size = sizeof type};
  xlatr_stream* stream = NULL;
  xlatr_job* job = NULL;
  memcpy(log + 144, kObject, sizeof kObject);
  input.length = sizeof log;
  input.length_known = 1;
  CHECK(xlatr_stream_open_input(&input, NULL, &stream) == XLATR_OK);
  CHECK(xlatr_stream_get_passed_over(stream, 0, &type) == XLATR_END && rows_of(stream) == 0);
  CHECK(xlatr_stream_get_passed_over(stream, 0, &type) == XLATR_OK && type.count == 1);
  CHECK(strstr(type.name, "FlexRay") != NULL && strstr(type.name, "41") != NULL);
  CHECK(xlatr_stream_get_passed_over(stream, 1, &type) == XLATR_END);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK && xlatr_job_run(job) == XLATR_OK);
  CHECK(xlatr_job_get_passed_over(job, 0, &type) == XLATR_OK && type.count == 1);
  CHECK(xlatr_job_get_passed_over(job, 1, &type) == XLATR_END && xlatr_job_close(job) == XLATR_OK);
}

static int32_t count_calls(void* context, const xlatr_job_progress* progress) {
  CHECK(progress->size == sizeof *progress && progress->frames_read == 4 && progress->bytes_total > 0);
  ++*(int*)context;
  return 0;
}

static int32_t refuse_to_go_on(void* context, const xlatr_job_progress* progress) {
  (void)progress;
  return context == NULL;
}

static void run_jobs(void) {
  const char* sources[2] = {in_folder("a.trc"), in_folder("a.trc")};
  int calls = 0;
  xlatr_selection selection = {.size = sizeof selection, .kinds = 1U << XLATR_KIND_DATA};
  xlatr_job_options options = {.size = sizeof options,
                               .sources = sources,
                               .source_count = 1,
                               .target = in_folder("c.trc"),
                               .selection = &selection,
                               .progress = count_calls,
                               .context = &calls};
  xlatr_account account = {.size = sizeof account};
  xlatr_head head = {.size = sizeof head};
  xlatr_job* job = NULL;
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK);
  CHECK(xlatr_job_run(job) == XLATR_OK && calls == 1);
  CHECK(xlatr_job_run(job) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_job_get_account(job, &account) == XLATR_OK);
  CHECK(account.read == 4 && account.written == 2 && account.dropped == 2 && account.dropped_by[0].frames == 2);
  CHECK(xlatr_remark_class(0) == XLATR_CLASS_SELECTION);
  CHECK(xlatr_job_get_head(job, &head) == XLATR_OK && head.format == XLATR_FORMAT_TRC);
  CHECK(xlatr_job_close(job) == XLATR_OK);

  CHECK(xlatr_job_create(&options, &job) == XLATR_OK);
  CHECK(xlatr_job_run(job) == XLATR_ERROR_TARGET_EXISTS);
  CHECK(xlatr_job_close(job) == XLATR_OK);

  options.target = in_folder("d.trc");
  options.progress = refuse_to_go_on;
  options.context = NULL;
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK);
  CHECK(xlatr_job_run(job) == XLATR_ERROR_CANCELLED && strstr(xlatr_job_error(job), "cancelled") != NULL);
  CHECK(xlatr_job_close(job) == XLATR_OK);
  CHECK(xlatr_job_create(&options, &job) == XLATR_OK);
  CHECK(xlatr_job_cancel(job) == XLATR_OK && xlatr_job_run(job) == XLATR_ERROR_CANCELLED);
  CHECK(xlatr_job_close(job) == XLATR_OK);
  CHECK(fopen(in_folder("d.trc"), "rb") == NULL);
  sources[0] = NULL;
  CHECK(xlatr_job_create(&options, &job) == XLATR_ERROR_ARGUMENT && xlatr_job_close(job) == XLATR_OK);
}

static int32_t see_reading(void* context, const xlatr_job_progress* progress) {
  CHECK(progress->size == sizeof *progress && progress->frames_read == 4 && progress->bytes_read > 0);
  CHECK(progress->bytes_total > 0 && progress->seconds >= 0.0);
  ++*(int*)context;
  return 0;
}

static void watch_streams(void) {
  int calls = 0;
  xlatr_stream_options options = {.size = sizeof options, .progress = see_reading, .context = &calls};
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_account account = {.size = sizeof account};
  xlatr_stream* stream = NULL;
  CHECK(xlatr_stream_open(in_folder("a.trc"), &options, &stream) == XLATR_OK);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_OK && batch.rows == 4 && calls == 0);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_END && calls == 1);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);

  options.progress = refuse_to_go_on;
  options.context = NULL;
  CHECK(xlatr_stream_open(in_folder("a.trc"), &options, &stream) == XLATR_OK);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_OK);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_ERROR_CANCELLED);
  CHECK(strstr(xlatr_stream_error(stream), "a.trc: reading was cancelled") != NULL);
  CHECK(xlatr_stream_get_account(stream, &account) == XLATR_OK && account.read == 4);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);

  xlatr_analysis* analysis = NULL;
  CHECK(xlatr_stream_open(in_folder("a.trc"), &options, &stream) == XLATR_OK);
  CHECK(xlatr_analysis_create(NULL, &analysis) == XLATR_OK);
  CHECK(xlatr_analysis_run(analysis, stream) == XLATR_ERROR_CANCELLED);
  CHECK(xlatr_analysis_close(analysis) == XLATR_OK && xlatr_stream_close(stream) == XLATR_OK);
}

static void tell_what_was_met(void) {
  write_file(in_folder("noise.trc"), ";$FILEVERSION=2.1\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\nsome noise\r\n");
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_account account = {.size = sizeof account};
  xlatr_stream* stream = open_stream(in_folder("noise.trc"));
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_OK && batch.rows == 1);
  CHECK(xlatr_stream_get_account(stream, &account) == XLATR_OK);
  for (uint32_t remark = 0; xlatr_remark_name(remark) != NULL; ++remark) {
    CHECK(strcmp(account.met[remark], account.noted[remark].frames == 0 ? "" : "some noise") == 0);
  }
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
}

static void merge_streams(void) {
  xlatr_stream* streams[3] = {open_stream(in_folder("a.trc")), open_stream(in_folder("a.trc")), NULL};
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_stream* merged = NULL;
  CHECK(xlatr_stream_merge(streams, 3, &merged) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_close(merged) == XLATR_OK);
  streams[2] = streams[0];
  CHECK(xlatr_stream_merge(streams, 3, &merged) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_close(merged) == XLATR_OK);
  CHECK(xlatr_stream_merge(streams, 2, &merged) == XLATR_OK);
  CHECK(xlatr_stream_close(streams[0]) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_next(merged, &batch) == XLATR_OK && batch.rows == 8 && batch.time_ns[1] == 1500000);
  CHECK(xlatr_stream_close(merged) == XLATR_OK);
}

/* A stream that is exported and read again by a sink. */
static void pass_arrow(void) {
  struct ArrowArrayStream frames;
  struct ArrowArrayStream released;
  xlatr_account account = {.size = sizeof account};
  xlatr_stream* stream = open_stream(in_folder("a.trc"));
  xlatr_sink* sink = NULL;
  CHECK(xlatr_stream_export_arrow(stream, 1U << XLATR_ATTRIBUTE_COUNT, &frames) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_export_arrow(stream, 0, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_export_arrow(stream, (1U << XLATR_ATTRIBUTE_COUNT) - 1, &frames) == XLATR_OK);
  CHECK(xlatr_stream_close(stream) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_sink_create(in_folder("e.trc"), NULL, NULL, &sink) == XLATR_OK);
  CHECK(xlatr_sink_write_arrow(sink, &frames) == XLATR_OK && frames.release == NULL);
  CHECK(xlatr_sink_get_account(sink, &account) == XLATR_OK && account.written == 4 && account.commented == 0);
  memset(&released, 0, sizeof released);
  CHECK(xlatr_sink_write_arrow(sink, &released) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_sink_finish(sink) == XLATR_OK && xlatr_sink_close(sink) == XLATR_OK);
  /* A stream for no sink is released all the same. */
  CHECK(xlatr_stream_export_arrow(open_stream(in_folder("a.trc")), 0, &frames) == XLATR_OK);
  CHECK(xlatr_sink_write_arrow(NULL, &frames) == XLATR_ERROR_HANDLE && frames.release == NULL);
}

static void open_what_is_none(void) {
  xlatr_stream* stream = NULL;
  xlatr_batch batch = {.size = sizeof batch};
  TraceFormat format = XLATR_FORMAT_BLF;
  CHECK(xlatr_stream_open(in_folder("missing.trc"), NULL, &stream) == XLATR_ERROR_NOT_FOUND);
  CHECK(strstr(xlatr_stream_error(stream), "missing.trc: there is no such file") != NULL);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_stream_open(in_folder("letter.txt"), NULL, &stream) == XLATR_ERROR_NOT_A_TRACE);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_get_format(in_folder("letter.txt"), &format) == XLATR_ERROR_NOT_A_TRACE && format == XLATR_FORMAT_NONE);
  CHECK(xlatr_get_format(in_folder("a.trc"), &format) == XLATR_OK && format == XLATR_FORMAT_TRC);
  CHECK(xlatr_stream_open(NULL, NULL, &stream) == XLATR_ERROR_ARGUMENT && xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_stream_open(in_folder("a.trc"), NULL, NULL) == XLATR_ERROR_ARGUMENT);
}

/* kTrace has a frame on each of two buses; that on the first one takes 63 bits of 2 us. */
static void analyse(void) {
  const xlatr_analysis_options options = {
      .size = sizeof options, .nominal_rate = 500000, .data_rate = 2000000, .stuffing = XLATR_STUFFING_NONE};
  xlatr_analysis_summary summary = {.size = sizeof summary};
  xlatr_bus_statistics bus = {.size = sizeof bus};
  xlatr_id_statistics id = {.size = sizeof id};
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_stream* stream = open_stream(in_folder("a.trc"));
  xlatr_analysis* analysis = NULL;
  CHECK(xlatr_analysis_create(&options, &analysis) == XLATR_OK);
  CHECK(xlatr_analysis_run(analysis, stream) == XLATR_OK && xlatr_analysis_run(analysis, stream) == XLATR_OK);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_analysis_get_summary(analysis, &summary) == XLATR_OK);
  CHECK(summary.traffic == 2 && summary.buses == 2 && summary.ids == 2);
  CHECK(summary.frames[XLATR_KIND_DATA] == 2 && summary.frames[XLATR_KIND_COMMENT] == 1);
  CHECK(summary.frames[XLATR_KIND_EVENT] == 1 && summary.first_ns == 1500000 && summary.last_ns == 2500000);
  CHECK(xlatr_analysis_get_bus(analysis, 0, &bus) == XLATR_OK && bus.bus == 1 && bus.ids == 1 && bus.data_bytes == 2);
  CHECK(bus.load_known == 1 && bus.load > 0.1259 && bus.load < 0.1261 && bus.highest_load == bus.load);
  CHECK(bus.bins == 256 && bus.frames_over_time[0] == 1 && bus.busy_over_time[0] > 125999.0);
  CHECK(bus.bins_begin_ns == 1500000 && bus.bin_ns == 1048576);
  CHECK(xlatr_analysis_get_bus(analysis, 2, &bus) == XLATR_END);
  CHECK(xlatr_analysis_get_id(analysis, 1, &id) == XLATR_OK && id.id == 0x124 && id.bus == 2);
  CHECK(id.frames == 1 && id.longest == 12 && id.last_data[11] == 12 && (id.flags & XLATR_FLAG_FD) != 0);
  CHECK(id.bins == 64 && id.frames_over_time[0] == 1 && id.cycle_counts[0] == 0 && id.cycle_bounds_ns[1] == 16384);
  CHECK(xlatr_analysis_get_id(analysis, 2, &id) == XLATR_END);

  stream = open_stream(in_folder("a.trc"));
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_OK && xlatr_analysis_add(analysis, &batch) == XLATR_OK);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_analysis_get_id(analysis, 0, &id) == XLATR_OK && id.id == 0x123 && id.frames == 2 && id.cycles == 1);
  CHECK(id.cycle_p99_ns == 0 && xlatr_analysis_get_id(analysis, 0, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_analysis_add(analysis, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(strstr(xlatr_analysis_error(analysis), "batch: there is none") != NULL);
  CHECK(xlatr_analysis_run(analysis, NULL) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_analysis_close(analysis) == XLATR_OK);
}

static void analyse_attributes(void) {
  const int64_t times[2] = {0, 1};
  const uint8_t kinds[2] = {XLATR_KIND_COUNTERS, XLATR_KIND_STATUS};
  const uint16_t zeros[2] = {0, 0};
  const uint32_t ids[2] = {0, 0};
  const int32_t offsets[3] = {0, 0, 0};
  const uint32_t counters[2] = {200, 0};
  const uint32_t states[2] = {16, 16};
  const uint8_t first = 1;
  const uint8_t second = 2;
  xlatr_batch batch = {.size = sizeof batch,
                       .rows = 2,
                       .time_ns = times,
                       .kind = kinds,
                       .bus = zeros,
                       .id = ids,
                       .flags = zeros,
                       .dlc = zeros,
                       .data_offsets = offsets,
                       .text_offsets = offsets};
  xlatr_bus_statistics bus = {.size = sizeof bus};
  xlatr_analysis* analysis = NULL;
  batch.attributes = 1U << XLATR_ATTRIBUTE_TX_ERRORS | 1U << XLATR_ATTRIBUTE_BUS_STATE;
  batch.attribute[XLATR_ATTRIBUTE_TX_ERRORS] = counters;
  batch.attribute[XLATR_ATTRIBUTE_BUS_STATE] = states;
  batch.attribute_validity[XLATR_ATTRIBUTE_TX_ERRORS] = &first;
  batch.attribute_validity[XLATR_ATTRIBUTE_BUS_STATE] = &second;
  CHECK(xlatr_analysis_create(NULL, &analysis) == XLATR_OK && xlatr_analysis_add(analysis, &batch) == XLATR_OK);
  CHECK(xlatr_analysis_get_bus(analysis, 0, &bus) == XLATR_OK && bus.traffic == 2 && bus.load_known == 0);
  CHECK(bus.highest_tx_errors == 200 && bus.highest_rx_errors == 0 && bus.bus_offs == 1);
  batch.attribute_validity[XLATR_ATTRIBUTE_BUS_STATE] = NULL;
  CHECK(xlatr_analysis_add(analysis, &batch) == XLATR_OK);
  CHECK(xlatr_analysis_get_bus(analysis, 0, &bus) == XLATR_OK && bus.bus_offs == 3 && bus.steps_back == 1);
  CHECK(xlatr_analysis_close(analysis) == XLATR_OK);
}

static void refuse_analysis(xlatr_analysis_options options, const char* text) {
  xlatr_analysis_summary summary = {.size = sizeof summary};
  xlatr_analysis* analysis = NULL;
  CHECK(xlatr_analysis_create(&options, &analysis) == XLATR_ERROR_ARGUMENT);
  CHECK(strstr(xlatr_analysis_error(analysis), text) != NULL);
  CHECK(xlatr_analysis_get_summary(analysis, &summary) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_analysis_close(analysis) == XLATR_OK);
}

static void refuse_analyses(void) {
  const uint64_t size = sizeof(xlatr_analysis_options);
  refuse_analysis((xlatr_analysis_options){.size = 3}, "does not begin with its size");
  refuse_analysis((xlatr_analysis_options){.size = size, .stuffing = 3}, "stuffing");
  refuse_analysis((xlatr_analysis_options){.size = size, .most_ids = 1048577}, "most_ids");
}

static const char kChangedTrace[] =
    ";$FILEVERSION=2.1\r\n"
    ";$STARTTIME=43894.5\r\n"
    ";$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
    "1 1.5 DT 1 0123 Rx - 2 01 03\r\n"
    "3 3.5 EV 1 another event\r\n";

static void compare_traces(void) {
  const xlatr_comparison_options options = {
      .size = sizeof options, .tolerance_known = 1, .texts = 1, .attributes = 1, .ahead = 10, .most_differences = 2};
  xlatr_comparison_summary summary = {.size = sizeof summary};
  xlatr_difference difference = {.size = sizeof difference};
  xlatr_stream* first = open_stream(in_folder("a.trc"));
  xlatr_stream* second = NULL;
  xlatr_comparison* comparison = NULL;
  write_file(in_folder("changed.trc"), kChangedTrace);
  second = open_stream(in_folder("changed.trc"));
  CHECK(xlatr_comparison_create(&options, &comparison) == XLATR_OK);
  CHECK(xlatr_comparison_run(comparison, first, second) == XLATR_OK);
  CHECK(xlatr_comparison_get_summary(comparison, &summary) == XLATR_OK && summary.same == 0);
  CHECK(summary.first_frames == 3 && summary.second_frames == 2 && summary.tolerance_ns == 0 && summary.equal == 0);
  CHECK(summary.different == 2 && summary.only_first == 1 && summary.only_second == 0);
  CHECK(summary.different_by[XLATR_FIELD_DATA] == 1 && summary.different_by[XLATR_FIELD_TEXT] == 1);
  CHECK(summary.differences == 2);
  CHECK(xlatr_comparison_get_difference(comparison, 0, &difference) == XLATR_OK);
  CHECK(difference.fields == 1U << XLATR_FIELD_DATA && difference.first->data_size == 2);
  CHECK(difference.first->data[1] == 2 && difference.second->data[1] == 3 && difference.second->place == 4);
  CHECK(difference.first->size == sizeof(xlatr_frame) && difference.first->has_text == 0);
  CHECK(xlatr_comparison_get_difference(comparison, 1, &difference) == XLATR_OK && difference.fields == 0);
  CHECK(difference.first->id == 0x124 && difference.first->bus == 2 && difference.second == NULL);
  CHECK(xlatr_comparison_get_difference(comparison, 2, &difference) == XLATR_END);
  CHECK(xlatr_comparison_run(comparison, first, first) == XLATR_ERROR_HANDLE);
  /* Nothing is left. */
  CHECK(xlatr_comparison_run(comparison, first, second) == XLATR_OK);
  CHECK(xlatr_comparison_get_summary(comparison, &summary) == XLATR_OK && summary.same == 1 && summary.equal == 0);
  CHECK(xlatr_stream_close(first) == XLATR_OK && xlatr_stream_close(second) == XLATR_OK);
  CHECK(xlatr_comparison_close(comparison) == XLATR_OK);
}

static void compare_attributes(void) {
  const xlatr_comparison_options options = {.size = sizeof options, .kinds = 1U << XLATR_KIND_ERROR};
  xlatr_difference difference = {.size = sizeof difference};
  xlatr_stream* first = open_stream(in_folder("a.trc"));
  xlatr_stream* second = NULL;
  xlatr_comparison* comparison = NULL;
  write_file(in_folder("error.trc"),
             ";$FILEVERSION=2.1\r\n;$STARTTIME=43894.5\r\n;$COLUMNS=N,O,T,B,I,d,R,L,D\r\n"
             "1 1.5 ER 1 - Rx - 5 04 00 02 00 00\r\n");
  second = open_stream(in_folder("error.trc"));
  CHECK(xlatr_comparison_create(&options, &comparison) == XLATR_OK);
  CHECK(xlatr_comparison_run(comparison, first, second) == XLATR_OK);
  CHECK(xlatr_comparison_get_difference(comparison, 0, &difference) == XLATR_OK && difference.first == NULL);
  CHECK((difference.second->attributes & 1U << XLATR_ATTRIBUTE_ERROR_TYPE) != 0);
  CHECK(difference.second->attribute[XLATR_ATTRIBUTE_ERROR_TYPE] == 2);
  CHECK(xlatr_stream_close(first) == XLATR_OK && xlatr_stream_close(second) == XLATR_OK);
  CHECK(xlatr_comparison_close(comparison) == XLATR_OK);
}

static void refuse_comparison(xlatr_comparison_options options, const char* text) {
  xlatr_comparison* comparison = NULL;
  CHECK(xlatr_comparison_create(&options, &comparison) == XLATR_ERROR_ARGUMENT);
  CHECK(strstr(xlatr_comparison_error(comparison), text) != NULL && xlatr_comparison_close(comparison) == XLATR_OK);
}

static void refuse_comparisons(void) {
  const uint64_t size = sizeof(xlatr_comparison_options);
  refuse_comparison((xlatr_comparison_options){.size = 3}, "does not begin with its size");
  refuse_comparison((xlatr_comparison_options){.size = size, .kinds = 1U << XLATR_KIND_COUNT}, "kinds");
  refuse_comparison((xlatr_comparison_options){.size = size, .ahead = 16385}, "ahead");
  refuse_comparison((xlatr_comparison_options){.size = size, .most_differences = 100001}, "most_differences");
}

/* All functions that take a handle, with one that is none. */
static void use_handle(void* none) {
  xlatr_stream* stream = none;
  xlatr_sink* sink = none;
  xlatr_job* job = none;
  xlatr_analysis* analysis = none;
  xlatr_comparison* comparison = none;
  xlatr_analysis_summary summary = {.size = sizeof summary};
  xlatr_bus_statistics bus = {.size = sizeof bus};
  xlatr_id_statistics id = {.size = sizeof id};
  xlatr_comparison_summary compared = {.size = sizeof compared};
  xlatr_difference difference = {.size = sizeof difference};
  xlatr_head head = {.size = sizeof head};
  xlatr_batch batch = {.size = sizeof batch};
  xlatr_account account = {.size = sizeof account};
  xlatr_job_progress progress = {.size = sizeof progress};
  xlatr_passed_over passed_over = {.size = sizeof passed_over};
  struct ArrowArrayStream frames;
  uint64_t bytes = 0;
  CHECK(xlatr_stream_get_head(stream, &head) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_next(stream, &batch) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_get_account(stream, &account) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_get_position(stream, &bytes, &bytes) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_get_passed_over(stream, 0, &passed_over) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_export_arrow(stream, 0, &frames) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_stream_error(stream) == NULL);
  CHECK(xlatr_stream_close(stream) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_sink_write(sink, &batch) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_sink_get_account(sink, &account) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_sink_error(sink) == NULL);
  CHECK(xlatr_sink_finish(sink) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_sink_close(sink) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_job_run(job) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_job_cancel(job) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_job_get_progress(job, &progress) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_job_get_head(job, &head) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_job_get_account(job, &account) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_job_get_passed_over(job, 0, &passed_over) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_job_error(job) == NULL);
  CHECK(xlatr_job_close(job) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_analysis_add(analysis, &batch) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_analysis_run(analysis, stream) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_analysis_get_summary(analysis, &summary) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_analysis_get_bus(analysis, 0, &bus) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_analysis_get_id(analysis, 0, &id) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_analysis_error(analysis) == NULL);
  CHECK(xlatr_analysis_close(analysis) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_comparison_run(comparison, stream, stream) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_comparison_get_summary(comparison, &compared) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_comparison_get_difference(comparison, 0, &difference) == XLATR_ERROR_HANDLE);
  CHECK(xlatr_comparison_error(comparison) == NULL);
  CHECK(xlatr_comparison_close(comparison) == XLATR_ERROR_HANDLE);
}

static void use_wrong_handles(void) {
  char object[64] = "no handle";
  xlatr_stream* closed = open_stream(in_folder("a.trc"));
  CHECK(xlatr_stream_close(closed) == XLATR_OK);
  use_handle(NULL);
  use_handle(closed);
  use_handle(object);
  use_handle((void*)(uintptr_t)12345677);
}

/* Results that have no place to go to. */
static void give_no_places(void) {
  xlatr_stream* stream = open_stream(in_folder("a.trc"));
  CHECK(xlatr_stream_get_head(stream, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_next(stream, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_get_account(stream, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_get_position(stream, NULL, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_stream_merge(NULL, 1, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_stream_merge(NULL, 1, &stream) == XLATR_ERROR_ARGUMENT && xlatr_stream_close(stream) == XLATR_OK);
  CHECK(xlatr_sink_create(NULL, NULL, NULL, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_sink_write_arrow(NULL, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_job_create(NULL, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_analysis_create(NULL, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_comparison_create(NULL, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_get_capacity(0, NULL) == XLATR_ERROR_ARGUMENT);
  CHECK(xlatr_get_format(NULL, NULL) == XLATR_ERROR_ARGUMENT);
}

static void read_tables(void) {
  xlatr_capacity capacity = {.size = sizeof capacity};
  uint32_t rows = 0;
  uint32_t remarks = 0;
  int32_t code = 0;
  CHECK(xlatr_version() == (XLATR_VERSION_MAJOR << 16 | XLATR_VERSION_MINOR << 8 | XLATR_VERSION_PATCH));
  for (; xlatr_get_capacity(rows, &capacity) == XLATR_OK; ++rows) {
    CHECK(xlatr_format_extension(capacity.format)[0] == '.' && xlatr_format_description(capacity.format) != NULL);
    CHECK(capacity.kinds != 0 && capacity.resolution_ns > 0 && capacity.earliest_ns < capacity.latest_ns);
  }
  CHECK(rows > 7 && xlatr_get_capacity(rows, &capacity) == XLATR_END);
  for (; xlatr_remark_name(remarks) != NULL; ++remarks) {
    CHECK(xlatr_remark_text(remarks) != NULL && xlatr_remark_class(remarks) >= 0);
  }
  CHECK(remarks > 20 && remarks < XLATR_REMARK_LIMIT && xlatr_remark_text(remarks) == NULL);
  CHECK(xlatr_remark_class(remarks) == -1);
  CHECK(strcmp(xlatr_kind_name(XLATR_KIND_LIN_EVENT), "lin_event") == 0 && xlatr_kind_name(XLATR_KIND_COUNT) == NULL);
  CHECK(strcmp(xlatr_attribute_name(XLATR_ATTRIBUTE_BUS_LOAD), "bus_load") == 0);
  CHECK(xlatr_attribute_name(XLATR_ATTRIBUTE_COUNT) == NULL);
  CHECK(strcmp(xlatr_field_name(XLATR_FIELD_DATA), "data") == 0 && xlatr_field_name(XLATR_FIELD_COUNT) == NULL);
  CHECK(xlatr_format_extension(0) == NULL && xlatr_format_description(3) == NULL);
  for (code = -12; code < 3; ++code) {
    CHECK(strlen(xlatr_code_text(code)) > 5);
  }
}

int main(int argc, char** argv) {
  CHECK(argc == 2);
  folder = argv[1];
  remove(in_folder("b.trc"));
  remove(in_folder("c.trc"));
  remove(in_folder("e.trc"));
  remove(in_folder("f.csv"));
  write_file(in_folder("a.trc"), kTrace);
  write_file(in_folder("letter.txt"), "hello\n");
  read_frames();
  records_may_grow();
  write_frames();
  refuse_batches();
  refuse_options();
  refuse_targets();
  read_inputs();
  refuse_inputs();
  run_job_of_inputs();
  write_outputs();
  run_strict_job();
  tell_what_is_passed_over();
  run_jobs();
  watch_streams();
  tell_what_was_met();
  merge_streams();
  pass_arrow();
  analyse();
  analyse_attributes();
  refuse_analyses();
  compare_traces();
  compare_attributes();
  refuse_comparisons();
  open_what_is_none();
  use_wrong_handles();
  give_no_places();
  read_tables();
  return 0;
}
