/*
 * xlatr frames: every trace as one stream of frames, in SI units and the field's terms, and every readable format into
 * every writable one. Nothing is lost without being counted.
 *
 * A stream reads a trace batch by batch, a sink writes one, a job does both for whole files; an analysis tells what the
 * traffic is like, a comparison whether two traces hold the same frames; and the Arrow C data interface connects
 * streams and sinks to other programs without a copy.
 *
 * Conventions
 *  1. Functions answer codes, of which those below 0 are failures; none throws, whatever it is given. The text of a
 *     failure belongs to the handle and names the file, the place and what to do.
 *  2. Handles are never dereferenced: one that is null, closed, of another kind or made up is answered with
 *     XLATR_ERROR_HANDLE. A handle that an opening function made is to be closed even if that function failed; until
 *     then it tells why.
 *  3. Records that a caller owns begin with their own size, which the caller sets to sizeof before each call, so that
 * they can grow: what an older caller does not know is left out, what a newer caller knows in vain is 0. A record that
 * is all 0 but for its size asks for the defaults.
 *  4. Text is UTF-8, paths too, on every platform. What a function returns as text stays until the next call with the
 *     same handle, unless its comment says that it stays for ever.
 *  5. One handle, one thread at a time, but where a comment says any thread; different handles at the same time, truly
 * in parallel. No function reads or changes the locale, the time zone or the working folder.
 */
#ifndef XLATR_FRAMES_H
#define XLATR_FRAMES_H

#include <stdint.h>

#include "xlatr/export.h"
#include "xlatr/xlatr.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of this header. The library that runs may be newer: xlatr_version(). */
#define XLATR_VERSION_MAJOR 0
#define XLATR_VERSION_MINOR 1
#define XLATR_VERSION_PATCH 0

/* The version of the library: major * 65536 + minor * 256 + patch. */
XLATR_API uint32_t xlatr_version(void);

/* What functions answer. */
typedef int32_t xlatr_code;
enum {
  XLATR_OK = 0,
  XLATR_END = 1,                  /* of a stream: there are no more frames */
  XLATR_ERROR_ARGUMENT = -1,      /* a null where something must be, or a value that there is not */
  XLATR_ERROR_HANDLE = -2,        /* no live handle of this kind */
  XLATR_ERROR_NOT_FOUND = -3,     /* there is no such file */
  XLATR_ERROR_NOT_A_TRACE = -4,   /* the file is none that xlatr reads */
  XLATR_ERROR_NOT_WRITTEN = -5,   /* the format is not written, or has no such version */
  XLATR_ERROR_TARGET_EXISTS = -6, /* and was not to be replaced */
  XLATR_ERROR_TARGET_IS_SOURCE = -7,
  XLATR_ERROR_CANCELLED = -8,
  XLATR_ERROR_SYSTEM = -9,      /* the system refused to read */
  XLATR_ERROR_MEMORY = -10,     /* the system has no memory left */
  XLATR_ERROR_UNEXPECTED = -11, /* a state that should not occur */
  XLATR_ERROR_TARGET = -12,     /* the system refused to write: a full disk, a folder that is not there */
  XLATR_ERROR_INCOMPLETE = -13  /* not everything came over, and that was not wanted */
};

/* What a code means, as a sentence's end. Stays for ever. Any thread. */
XLATR_API const char* xlatr_code_text(xlatr_code code);

/* ---- what a frame is */

/* The kinds of frames. */
enum {
  XLATR_KIND_DATA = 0,      /* a CAN, CAN FD or CAN XL data frame */
  XLATR_KIND_REMOTE = 1,    /* a remote frame, which has a DLC and no data */
  XLATR_KIND_ERROR = 2,     /* an error frame */
  XLATR_KIND_OVERLOAD = 3,  /* an overload frame */
  XLATR_KIND_STATUS = 4,    /* the state of a bus or of its controller has changed */
  XLATR_KIND_COUNTERS = 5,  /* the error counters of a controller */
  XLATR_KIND_LIN = 6,       /* a LIN frame */
  XLATR_KIND_LIN_EVENT = 7, /* wake-up, sleep, checksum or synchronisation errors and the like; the text says which */
  XLATR_KIND_EVENT = 8,     /* a user's text, and what a producer logs beside the traffic */
  XLATR_KIND_COMMENT = 9,   /* a line or record that is no frame */
  XLATR_KIND_COUNT = 10
};

/* Properties of a frame. One with neither direction has none that is known. */
enum {
  XLATR_FLAG_EXTENDED = 0x0001, /* a 29-bit identifier */
  XLATR_FLAG_RECEIVED = 0x0002,
  XLATR_FLAG_TRANSMITTED = 0x0004,
  XLATR_FLAG_FD = 0x0008,               /* CAN FD */
  XLATR_FLAG_BRS = 0x0010,              /* bit rate switch */
  XLATR_FLAG_ESI = 0x0020,              /* error state indicator */
  XLATR_FLAG_XL = 0x0040,               /* CAN XL */
  XLATR_FLAG_DLC_KNOWN = 0x0080,        /* of a remote frame: the source states its DLC */
  XLATR_FLAG_ENHANCED_CHECKSUM = 0x0100 /* of a LIN frame */
};

/* What few formats have: a number that a frame has or lacks. */
enum {
  XLATR_ATTRIBUTE_ERROR_TYPE = 0,     /* 0 bit, 1 form, 2 stuff, 3 any other */
  XLATR_ATTRIBUTE_ERROR_POSITION = 1, /* the bit of the frame at which the error was seen */
  XLATR_ATTRIBUTE_TX_ERRORS = 2,      /* transmit error counter */
  XLATR_ATTRIBUTE_RX_ERRORS = 3,      /* receive error counter */
  XLATR_ATTRIBUTE_BUS_STATE = 4,      /* an OR of the bits of a bus status */
  XLATR_ATTRIBUTE_BUS_LOAD = 5,       /* hundredths of a percent */
  XLATR_ATTRIBUTE_VCID = 6,           /* CAN XL: virtual CAN network id */
  XLATR_ATTRIBUTE_SDT = 7,            /* CAN XL: SDU type */
  XLATR_ATTRIBUTE_ACCEPTANCE_FIELD = 8,
  XLATR_ATTRIBUTE_RRS = 9,
  XLATR_ATTRIBUTE_SEC = 10,
  XLATR_ATTRIBUTE_CHECKSUM = 11,       /* of a LIN frame */
  XLATR_ATTRIBUTE_CHECKSUM_MODEL = 12, /* 1 classic, 2 enhanced, 3 automatic */
  XLATR_ATTRIBUTE_LIN_ERRORS = 13,     /* an OR of the bits of LIN errors */
  XLATR_ATTRIBUTE_LIN_DIRECTION = 14,  /* 3: a subscriber that learns the length */
  XLATR_ATTRIBUTE_RESERVED = 15,       /* TRC's column for future use */
  XLATR_ATTRIBUTE_RECORD_TYPE = 16,    /* of a logger's record that has no other home; its bytes are the data */
  XLATR_ATTRIBUTE_COUNT = 17
};

/* The names that users see, such as "data" and "error_type"; null beyond the last. They stay for ever. Any thread. */
XLATR_API const char* xlatr_kind_name(uint32_t kind);
XLATR_API const char* xlatr_attribute_name(uint32_t attribute);

/*
 * Frames as columns, laid out as Apache Arrow lays out its arrays: each column has `rows` values, the offsets have one
 * more, and a validity has one bit a row, the lowest bit of a byte first. What xlatr_stream_next fills stays until the
 * next call with the stream.
 */
typedef struct xlatr_batch {
  uint64_t size; /* of this record */
  uint64_t rows;
  const int64_t* time_ns; /* since the start of the trace; may be negative */
  const uint8_t* kind;
  const uint16_t* bus; /* counted from 1; 0 when the source names none */
  const uint32_t* id;  /* 11, 29 or, for LIN, 6 bits */
  const uint16_t* flags;
  const uint16_t* dlc; /* the code, as the standard defines it for the kind of frame */
  const int32_t*
      data_offsets; /* the payload of row n: data[data_offsets[n]] up to, without, data[data_offsets[n + 1]] */
  const uint8_t* data;
  const int32_t* text_offsets; /* the same for UTF-8 text */
  const char* text;
  const uint8_t* text_validity; /* null when given to a sink: every row has a text */
  const uint64_t* place;        /* in the source, from 1: the line of a text, the record of a binary trace. Given to a
                                   sink it may be null */
  uint32_t attributes;          /* one bit for each attribute that a frame of this batch has */
  const uint32_t* attribute[XLATR_ATTRIBUTE_COUNT];         /* of those: the values, 0 where a row lacks it */
  const uint8_t* attribute_validity[XLATR_ATTRIBUTE_COUNT]; /* and which rows have it */
} xlatr_batch;

/* What a trace says before its first frame. */
typedef struct xlatr_head {
  uint64_t size;
  TraceFormat format; /* 0 of what is no file, such as frames of an Arrow stream */
  uint32_t start_known;
  double version;
  int64_t start_ns; /* since 1970-01-01 00:00:00, on the clock that the trace means */
  uint32_t zone_known;
  int32_t zone_minutes; /* what that clock is ahead of UTC */
  uint32_t frames_known;
  uint32_t places_are_records; /* 0: the places are lines */
  uint64_t frames;             /* as the file states it */
  const char* path;            /* "" for what is no file */
  const char* producer;        /* "" if the file names none */
  uint32_t unfinished;         /* 1: the file says that its writer was stopped before the end */
} xlatr_head;

/* ---- accounting */

/* What can happen to a frame on its way, or to a piece of a source that should have been one. The numbers of remarks
 * are those of xlatr_remark_name. */
enum { XLATR_REMARK_LIMIT = 64 };

/* The classes of remarks. */
enum {
  XLATR_CLASS_SELECTION = 0,  /* nobody asked for the frame */
  XLATR_CLASS_DAMAGE = 1,     /* in the source */
  XLATR_CLASS_GUESS = 2,      /* decided without being told */
  XLATR_CLASS_NOT_HELD = 3,   /* the target can't hold the frame */
  XLATR_CLASS_REDUCED = 4,    /* the frame is in the target, but for something */
  XLATR_CLASS_PASSED_OVER = 5 /* in the source, and no frame */
};

/* How often, and where first. */
typedef struct xlatr_count {
  uint64_t frames;
  uint64_t first; /* the place of the first */
} xlatr_count;

enum { XLATR_MET_SIZE = 64 };

/* read = written + dropped. Remarks beyond the last are 0. */
typedef struct xlatr_account {
  uint64_t size;
  uint64_t read;
  uint64_t written; /* as themselves or as comments */
  uint64_t dropped;
  uint64_t commented;                           /* those of the written ones that stand as comments */
  xlatr_count dropped_by[XLATR_REMARK_LIMIT];   /* adds up to `dropped` */
  xlatr_count commented_by[XLATR_REMARK_LIMIT]; /* adds up to `commented` */
  xlatr_count noted[XLATR_REMARK_LIMIT];        /* what else is to be told */
  uint32_t complete; /* 1: everything that was wanted came over as it was, but for the rounding of times */
  uint32_t reserved;
  char met[XLATR_REMARK_LIMIT][XLATR_MET_SIZE]; /* how the first line or record that was noted so begins: UTF-8, or a
                                                   record's bytes in hexadecimal digits; "" where that is not known */
} xlatr_account;

/* "kind_not_held"; "the target has no such kind of frame"; XLATR_CLASS_NOT_HELD. Null, null and -1 beyond the last
 * remark. The texts stay for ever. Any thread. */
XLATR_API const char* xlatr_remark_name(uint32_t remark);
XLATR_API const char* xlatr_remark_text(uint32_t remark);
XLATR_API int32_t xlatr_remark_class(uint32_t remark);

/* What is in a source and belongs to no CAN or LIN bus, each type once. The remark "other_bus" counts them all. */
typedef struct xlatr_passed_over {
  uint64_t size;
  const char* name; /* "FlexRay frame (object type 41)" */
  uint64_t count;
} xlatr_passed_over;

/* ---- what is wanted */

/* Identifiers from `first` to `last`; with a mask that is not 0, those of which the bits in it are those of `first`. */
typedef struct xlatr_id_rule {
  uint32_t first;
  uint32_t last;
  uint32_t mask;
  uint32_t length; /* 0 both, 11 base identifiers only, 29 extended ones only */
} xlatr_id_rule;

/* Buses from `first` to `last`. */
typedef struct xlatr_bus_rule {
  uint16_t first;
  uint16_t last;
} xlatr_bus_rule;

/* A frame is wanted if all of this says so. Rules of buses, identifiers and directions want no frame that has none of
 * them; turned round by `other_buses` and `other_ids` they want those too. */
typedef struct xlatr_selection {
  uint64_t size;
  int64_t from_ns;
  int64_t until_ns; /* this time is not wanted any more; with from_ns 0 and until_ns 0 all times are */
  const xlatr_bus_rule* buses;
  const xlatr_id_rule* ids;
  uint32_t bus_count;
  uint32_t id_count;
  uint32_t other_buses; /* 1: the buses that no rule names */
  uint32_t other_ids;
  uint32_t kinds;          /* one bit for each kind; 0 for all */
  uint32_t directions;     /* XLATR_FLAG_RECEIVED, XLATR_FLAG_TRANSMITTED; 0 for all */
  uint32_t absolute_times; /* 1: from_ns and until_ns count from 1970 on the clock of the trace, which must state its
                              start */
} xlatr_selection;

/* What is changed of every frame that is wanted. */
typedef struct xlatr_changes {
  uint64_t size;
  int64_t shift_ns;      /* added to all times */
  const uint16_t* buses; /* pairs: from, to */
  uint32_t bus_pair_count;
  uint32_t rebase;     /* 1: the first frame that is wanted is the start */
  uint32_t zone_known; /* 1: sources that state no zone are in this one */
  int32_t zone_minutes;
} xlatr_changes;

/* ---- progress */

/* How far a trace is read. */
typedef struct xlatr_job_progress {
  uint64_t size;
  uint64_t bytes_read;
  uint64_t bytes_total; /* 0 if nobody knows */
  uint64_t frames_read;
  double seconds;          /* since the start of the job, or since the stream was opened */
  double bytes_per_second; /* since then */
} xlatr_job_progress;

/* Called for about every 16,000 frames, on the thread that runs the job or reads the stream. 0 goes on, anything else
 * cancels. */
typedef int32_t (*xlatr_progress_function)(void* context, const xlatr_job_progress* progress);

/* ---- streams */

/* A trace that is read. */
typedef struct xlatr_stream xlatr_stream;

typedef struct xlatr_stream_options {
  uint64_t size;
  TraceFormat format; /* 0: that of the content */
  const xlatr_selection* selection;
  const xlatr_changes* changes;
  xlatr_progress_function progress; /* whoever reads the stream; one that it cancels ends with XLATR_ERROR_CANCELLED.
                                       May be null */
  void* context;
} xlatr_stream_options;

/* A trace that is no file: its bytes come from a function of the caller. */
typedef struct xlatr_input {
  uint64_t size;
  /* Fills the buffer with bytes from this offset on and answers how many those are: at least one, but 0 at the end, and
   * below 0 for a failure. Called on the thread that calls the library. */
  int64_t (*read)(void* context, uint64_t offset, void* buffer, uint64_t bytes);
  void (*release)(void* context); /* called once, when the library needs the context no more; may be null */
  void* context;
  const char* name; /* stands for the path in heads and failures; its extension breaks ties as a path's does. May be
                       null */
  uint64_t length;  /* of all bytes */
  uint32_t length_known;
  uint32_t in_order; /* 1: each byte can be read once, in order, such as those of a pipe. MF4 and BTR are not read so */
} xlatr_input;

/* Opens a file. `options` may be null. */
XLATR_API xlatr_code xlatr_stream_open(const char* path, const xlatr_stream_options* options, xlatr_stream** stream);
/* The same for what is no file. The input is released by the end of the stream, or at once if the function fails. */
XLATR_API xlatr_code xlatr_stream_open_input(const xlatr_input* input, const xlatr_stream_options* options,
                                             xlatr_stream** stream);
/* Several streams as one, by time, counted from the earliest start if all state one. The streams become parts of the
 * new one: their handles are closed, unless the function fails. */
XLATR_API xlatr_code xlatr_stream_merge(xlatr_stream** streams, uint32_t count, xlatr_stream** merged);
XLATR_API xlatr_code xlatr_stream_get_head(xlatr_stream* stream, xlatr_head* head);
/* The next frames, at least one; XLATR_END without any. */
XLATR_API xlatr_code xlatr_stream_next(xlatr_stream* stream, xlatr_batch* batch);
/* What was read so far. Nothing of it is written: read = dropped, by the selection, + what the batches held. */
XLATR_API xlatr_code xlatr_stream_get_account(xlatr_stream* stream, xlatr_account* account);
/* The types that were passed over so far, by a number from 0; XLATR_END beyond the last. */
XLATR_API xlatr_code xlatr_stream_get_passed_over(xlatr_stream* stream, uint32_t row, xlatr_passed_over* passed_over);
/* Of the file, in bytes: what was read, and its size, which is 0 if nobody knows it. */
XLATR_API xlatr_code xlatr_stream_get_position(xlatr_stream* stream, uint64_t* bytes, uint64_t* size);
/* The text of the last failure of the handle; "" if there was none, null for what is no handle. */
XLATR_API const char* xlatr_stream_error(xlatr_stream* stream);
XLATR_API xlatr_code xlatr_stream_close(xlatr_stream* stream);

/* ---- sinks */

/* A trace that is written. */
typedef struct xlatr_sink xlatr_sink;

/* A trace may be split into several files, each of which is a whole trace whose times count from the start of all. The
 * path then has places to fill in: %b the bus, %n the number of the part, %t when it begins ("20240301-080000", or
 * seconds since the start of the trace if it does not say when that was), %% a percent sign; %3n is 001. A path without
 * any gets "_BUS%b" for the buses and "_%3n" for the parts. What names no bus goes where the frame before it went. */
typedef struct xlatr_sink_options {
  uint64_t size;
  TraceFormat format;    /* 0: that of the path's extension */
  uint32_t replace;      /* 1: a file that exists may be replaced */
  double version;        /* 0.0: what the format writes when no version is asked for */
  uint32_t zipped;       /* of an MF4 target */
  uint32_t compact;      /* of an MF4 target: records as short as their frames */
  const char* separator; /* of a CSV target of version 1.0; null: ";" */
  uint32_t keep_partial; /* 1: what is not finished stays under a name that says so: drive.partial.trc */
  uint32_t split_buses;  /* 1: files for each bus, of which there may be 64 */
  uint64_t split_bytes;  /* a file grows to about this size; an MF4 file, whose blocks are that large, may be 4 MiB
                            larger. 0: to any */
  int64_t split_ns;      /* a file has the frames of one multiple of this time; 0: of all times */
} xlatr_sink_options;

/* A trace that goes to no file: its bytes go to a function of the caller, in order. MF4 and BTR are not written so. */
typedef struct xlatr_output {
  uint64_t size;
  /* Takes all of the bytes. Below 0 is a failure. Called on the thread that calls the library. */
  int32_t (*write)(void* context, const void* bytes, uint64_t count);
  void (*release)(void* context); /* called once, when the library needs the context no more; may be null */
  void* context;
  const char* name; /* stands for the path in failures and in the trace; its extension may name the format. May be
                       null */
} xlatr_output;

/* A file that was written. */
typedef struct xlatr_written {
  uint64_t size;
  const char* path;
  uint64_t bytes;
  uint64_t frames; /* that were put into it, some of them perhaps as comments or not at all */
} xlatr_written;

/* Creates a file, which has another name until it is finished: under its own there is the old file, or none, before.
 * `head`, which says when the trace started, and `options` may be null. */
XLATR_API xlatr_code xlatr_sink_create(const char* path, const xlatr_head* head, const xlatr_sink_options* options,
                                       xlatr_sink** sink);
/* The same for what is no file. The output is released by the end of the sink, or at once if the function fails. */
XLATR_API xlatr_code xlatr_sink_create_output(const xlatr_output* output, const xlatr_head* head,
                                              const xlatr_sink_options* options, xlatr_sink** sink);
/* Of the batch, the text must be UTF-8 and every column but the last ones must be there; a batch that breaks this is
 * XLATR_ERROR_ARGUMENT, and nothing of it is written. */
XLATR_API xlatr_code xlatr_sink_write(xlatr_sink* sink, const xlatr_batch* batch);
XLATR_API xlatr_code xlatr_sink_get_account(xlatr_sink* sink, xlatr_account* account);
/* The files that are finished, by a number from 0; XLATR_END beyond the last. */
XLATR_API xlatr_code xlatr_sink_get_written(xlatr_sink* sink, uint32_t row, xlatr_written* written);
XLATR_API const char* xlatr_sink_error(xlatr_sink* sink);
/* Finishes the file. The handle stays, for the account and the text of a failure. */
XLATR_API xlatr_code xlatr_sink_finish(xlatr_sink* sink);
/* A sink that is not finished leaves no file, or the one that was there before. */
XLATR_API xlatr_code xlatr_sink_close(xlatr_sink* sink);

/* ---- jobs */

/* A whole conversion: sources, what is wanted of them, and a target, in this process and without a file in between. */
typedef struct xlatr_job xlatr_job;

typedef struct xlatr_job_options {
  uint64_t size;
  const char* const* sources; /* paths; several are merged by time */
  uint32_t source_count;
  TraceFormat source_format; /* of all; 0: that of the content of each */
  const char* target;
  const xlatr_sink_options* sink;
  const xlatr_selection* selection;
  const xlatr_changes* changes;
  xlatr_progress_function progress; /* may be null */
  void* context;
  const xlatr_input* const* inputs; /* sources that are no files, besides those that are */
  uint32_t input_count;
  uint32_t strict;            /* 1: the job fails if not everything comes over, but for the rounding of times */
  const xlatr_output* output; /* instead of `target`, if it is not null */
  uint32_t align_starts;      /* 1: several sources are taken to have started together, whatever they state */
  uint32_t close_gaps;        /* 1: a source that begins after all before it have ended follows at once */
} xlatr_job_options;

/* Takes a copy of all that the options hold; nothing is opened yet. The inputs and the output are released by the end
 * of the job, or at once if the function fails. */
XLATR_API xlatr_code xlatr_job_create(const xlatr_job_options* options, xlatr_job** job);
/* Runs to the end, on this thread. A job that failed or was cancelled leaves no target, or the one that was
 * there before; parts of a split target that were finished before stay, unless it is strict. A job runs once. */
XLATR_API xlatr_code xlatr_job_run(xlatr_job* job);
/* The job ends soon with XLATR_ERROR_CANCELLED, or at once when it is started. Any thread. */
XLATR_API xlatr_code xlatr_job_cancel(xlatr_job* job);
/* Any thread. */
XLATR_API xlatr_code xlatr_job_get_progress(xlatr_job* job, xlatr_job_progress* progress);
/* After the end; of a job that failed or was cancelled, how far it came. */
XLATR_API xlatr_code xlatr_job_get_head(xlatr_job* job, xlatr_head* head);
XLATR_API xlatr_code xlatr_job_get_account(xlatr_job* job, xlatr_account* account);
XLATR_API xlatr_code xlatr_job_get_passed_over(xlatr_job* job, uint32_t row, xlatr_passed_over* passed_over);
XLATR_API xlatr_code xlatr_job_get_written(xlatr_job* job, uint32_t row, xlatr_written* written);
XLATR_API const char* xlatr_job_error(xlatr_job* job);
XLATR_API xlatr_code xlatr_job_close(xlatr_job* job);

/* ---- formats */

/* What the files of a version of a format can hold. The sets have one bit for each kind. */
typedef struct xlatr_capacity {
  uint64_t size;
  TraceFormat format;
  uint32_t comments; /* what can't stand in the file becomes a comment */
  double version;
  uint32_t kinds;
  uint32_t directions; /* the kinds whose direction comes back */
  uint32_t texts;      /* those whose text does, if it is of the form that the version has room for */
  uint32_t fd;
  uint32_t fd_bits; /* BRS and ESI */
  uint32_t xl;
  uint32_t longest_data; /* bytes, of what is not CAN XL */
  uint32_t remote_dlc;
  uint32_t lowest_bus;
  uint32_t highest_bus; /* 0: the files name no bus */
  uint32_t attributes;  /* one bit for each that comes back */
  uint32_t zone;        /* the start says in which zone it is */
  int64_t resolution_ns;
  int64_t earliest_ns;
  int64_t latest_ns;
  int64_t start_resolution_ns;
} xlatr_capacity;

/* The rows of the table, counted from 0, in the order of formats and versions; XLATR_END beyond the last. Any thread.
 */
XLATR_API xlatr_code xlatr_get_capacity(uint32_t row, xlatr_capacity* capacity);
/* The format that a file has by its content. Any thread. */
XLATR_API xlatr_code xlatr_get_format(const char* path, TraceFormat* format);
/* "BRIX trace file", ".trc"; null for what is no format. They stay for ever. Any thread. */
XLATR_API const char* xlatr_format_description(TraceFormat format);
XLATR_API const char* xlatr_format_extension(TraceFormat format);

/* ---- analysis */

/* What the traffic of a trace is like. Gathered in one pass, in memory that is bounded. Traffic is what has a bus and a
 * time of its own: all kinds but events and comments. */
typedef struct xlatr_analysis xlatr_analysis;

/* Of CAN and CAN FD frames; which stuff bits a frame has depends on its content, and is not counted. */
enum {
  XLATR_STUFFING_MEAN = 0,  /* what random content has: one bit after every 30 */
  XLATR_STUFFING_WORST = 1, /* the most that there can be: one bit after every 4 */
  XLATR_STUFFING_NONE = 2
};

typedef struct xlatr_analysis_options {
  uint64_t size;
  uint32_t nominal_rate; /* bits per second of CAN; 0: no load is told */
  uint32_t data_rate;    /* of CAN FD frames with BRS and of CAN XL; 0: the nominal one */
  uint32_t lin_rate;     /* of LIN; 0: no load is told */
  uint32_t stuffing;     /* XLATR_STUFFING_MEAN ... */
  uint64_t gap_ns;       /* a silence of a bus that is at least so long is a gap; 0: 1 s */
  uint64_t burst_ns;     /* error frames of a bus that follow each other within this are a burst; 0: 10 ms */
  uint32_t most_ids;     /* the frames of identifiers beyond are counted together. An identifier takes 2 kB. 0: 32,768;
                            at most 1,048,576 */
} xlatr_analysis_options;

enum { XLATR_KIND_LIMIT = 16 };

typedef struct xlatr_analysis_summary {
  uint64_t size;
  uint64_t frames[XLATR_KIND_LIMIT]; /* by kind */
  uint64_t traffic;                  /* frames that are traffic */
  int64_t first_ns;                  /* the earliest and the latest time of traffic; 0 if there is none */
  int64_t last_ns;
  uint64_t steps_back;       /* frames of the traffic that are before the one before them */
  uint64_t other_id_frames;  /* of identifiers beyond the limit */
  uint64_t other_bus_frames; /* of buses beyond 1,024; they count for no bus and no identifier */
  uint32_t buses;            /* rows of xlatr_analysis_get_bus */
  uint32_t ids;              /* rows of xlatr_analysis_get_id */
} xlatr_analysis_summary;

typedef struct xlatr_bus_statistics {
  uint64_t size;
  uint32_t bus;
  uint32_t ids; /* identifiers with rows of their own */
  uint64_t frames[XLATR_KIND_LIMIT];
  uint64_t traffic;
  uint64_t data_bytes; /* of data and LIN frames */
  int64_t first_ns;
  int64_t last_ns;
  uint64_t steps_back;
  uint32_t load_known;
  uint32_t reserved;
  double load;         /* the part of the trace's time in which the bus was busy, 0 to 1 */
  double highest_load; /* of the busiest second */
  uint64_t gaps;
  uint64_t longest_gap_ns; /* the longest time without traffic, a gap or not */
  int64_t longest_gap_begin_ns;
  uint64_t longest_gap_place; /* of the frame that ended it */
  uint64_t error_bursts;      /* of at least two error frames */
  uint64_t longest_burst;     /* error frames */
  int64_t longest_burst_begin_ns;
  uint64_t bus_offs; /* statuses that say bus off */
  uint32_t highest_tx_errors;
  uint32_t highest_rx_errors;
  /* Over time: frames, and nanoseconds in which the bus was busy, in bins that all buses share. They stay until the
   * next call with the analysis. */
  const uint64_t* frames_over_time;
  const double* busy_over_time;
  uint64_t bins;
  int64_t bins_begin_ns; /* what is before it is in the first bin */
  uint64_t bin_ns;       /* the width of a bin */
} xlatr_bus_statistics;

/* Of the data, the remote or the LIN frames of an identifier on a bus. Cycles are times between a frame and the next
 * one that is not before it. */
typedef struct xlatr_id_statistics {
  uint64_t size;
  uint32_t id;
  uint16_t bus;
  uint8_t kind;
  uint8_t extended;
  uint32_t flags; /* those that any of the frames has */
  uint32_t last_dlc;
  uint64_t frames;
  uint64_t data_bytes;
  uint32_t shortest; /* bytes of data */
  uint32_t longest;
  uint32_t last_length;
  uint32_t reserved;
  int64_t first_ns; /* of the first and the last frame in the order of the trace */
  int64_t last_ns;
  uint64_t first_place;
  uint64_t last_place;
  uint64_t steps_back;
  uint64_t cycles;
  uint64_t cycle_min_ns;
  uint64_t cycle_max_ns;
  int64_t cycle_max_begin_ns;
  uint64_t cycle_max_place; /* of the frame at its end */
  uint64_t cycle_p99_ns;    /* 99 % are no longer. Right to 3.2 % between 16 us and 69 s */
  double cycle_mean_ns;
  double cycle_deviation_ns; /* the standard deviation, that of all cycles */
  uint8_t last_data[64];     /* the first bytes of it */
  uint8_t changed[64];       /* bits that were different in two frames, one after the other */
  /* Frames over time, in bins that all identifiers share, and how many cycles are how long: the cycles of row n are at
   * least cycle_bounds_ns[n] long. They stay until the next call with the analysis. */
  const uint32_t* frames_over_time;
  uint64_t bins;
  int64_t bins_begin_ns;
  uint64_t bin_ns;
  const uint32_t* cycle_counts;
  const uint64_t* cycle_bounds_ns;
  uint64_t cycle_buckets;
} xlatr_id_statistics;

/* `options` may be null. */
XLATR_API xlatr_code xlatr_analysis_create(const xlatr_analysis_options* options, xlatr_analysis** analysis);
/* Adds frames, by the rules of xlatr_sink_write; what no stream filled may have no places. */
XLATR_API xlatr_code xlatr_analysis_add(xlatr_analysis* analysis, const xlatr_batch* batch);
/* Adds what is left of a stream, which stays open. */
XLATR_API xlatr_code xlatr_analysis_run(xlatr_analysis* analysis, xlatr_stream* stream);
XLATR_API xlatr_code xlatr_analysis_get_summary(xlatr_analysis* analysis, xlatr_analysis_summary* summary);
/* Rows from 0, by bus; XLATR_END beyond the last. */
XLATR_API xlatr_code xlatr_analysis_get_bus(xlatr_analysis* analysis, uint32_t row, xlatr_bus_statistics* bus);
/* Rows from 0, by bus, kind, length of the identifier and identifier; XLATR_END beyond the last. */
XLATR_API xlatr_code xlatr_analysis_get_id(xlatr_analysis* analysis, uint32_t row, xlatr_id_statistics* id);
XLATR_API const char* xlatr_analysis_error(xlatr_analysis* analysis);
XLATR_API xlatr_code xlatr_analysis_close(xlatr_analysis* analysis);

/* ---- comparison */

/* Whether two traces hold the same frames, and where not. Frames are equal if kind, identifier, flags, DLC, data and
 * bus are, and the times within the tolerance; what one of them does not state, a bus, a direction or the DLC of a
 * remote frame, is no difference. Traces are lined up by time and content: a frame that only one of them has makes no
 * others differ. */
typedef struct xlatr_comparison xlatr_comparison;

/* What two frames that belong together can differ in. */
enum {
  XLATR_FIELD_TIME = 0,
  XLATR_FIELD_BUS = 1,
  XLATR_FIELD_ID = 2,
  XLATR_FIELD_FLAGS = 3,
  XLATR_FIELD_DLC = 4,
  XLATR_FIELD_DATA = 5,
  XLATR_FIELD_TEXT = 6,
  XLATR_FIELD_ATTRIBUTES = 7,
  XLATR_FIELD_COUNT = 8,
  XLATR_FIELD_LIMIT = 16
};

/* "time", "data"; null beyond the last. Stays for ever. Any thread. */
XLATR_API const char* xlatr_field_name(uint32_t field);

typedef struct xlatr_comparison_options {
  uint64_t size;
  uint64_t tolerance_ns;     /* times that are no farther from each other are equal */
  uint32_t tolerance_known;  /* 0: the tolerance is the coarser resolution of both traces' formats */
  uint32_t texts;            /* 1: texts are compared too */
  uint32_t attributes;       /* 1: and those attributes that both frames have */
  uint32_t kinds;            /* one bit for each kind that is compared; 0 for all but comments */
  uint32_t ahead;            /* how many frames of the other trace are searched for one; 0: 1,024. At most 16,384 */
  uint32_t most_differences; /* that are told one by one; 0: 100. At most 100,000 */
} xlatr_comparison_options;

typedef struct xlatr_comparison_summary {
  uint64_t size;
  uint32_t same;        /* 1: the traces hold the same frames */
  uint32_t differences; /* rows of xlatr_comparison_get_difference */
  uint64_t tolerance_ns;
  uint64_t first_frames; /* that were compared */
  uint64_t second_frames;
  uint64_t equal;
  uint64_t reordered; /* of the equal ones: those that stand in another order */
  uint64_t different; /* frames that both traces have */
  uint64_t only_first;
  uint64_t only_second;
  uint64_t farthest_ns; /* the greatest distance of times that were taken as equal */
  uint64_t different_by[XLATR_FIELD_LIMIT];
} xlatr_comparison_summary;

/* One frame. The library sets the size. */
typedef struct xlatr_frame {
  uint64_t size;
  int64_t time_ns;
  uint64_t place;
  uint32_t id;
  uint16_t bus;
  uint16_t flags;
  uint16_t dlc;
  uint8_t kind;
  uint8_t has_text;
  uint32_t attributes;       /* one bit for each that the frame has */
  const uint32_t* attribute; /* their values, by number */
  const uint8_t* data;
  const char* text;
  uint64_t data_size;
  uint64_t text_size;
} xlatr_frame;

typedef struct xlatr_difference {
  uint64_t size;
  uint32_t fields; /* one bit for each that differs; 0 if only one trace has the frame */
  uint32_t reserved;
  const xlatr_frame* first; /* null if only the second trace has it. Stays until the next call with the comparison */
  const xlatr_frame* second;
} xlatr_difference;

/* `options` may be null. */
XLATR_API xlatr_code xlatr_comparison_create(const xlatr_comparison_options* options, xlatr_comparison** comparison);
/* Compares what is left of two streams, which stay open. */
XLATR_API xlatr_code xlatr_comparison_run(xlatr_comparison* comparison, xlatr_stream* first, xlatr_stream* second);
/* Of the last run. */
XLATR_API xlatr_code xlatr_comparison_get_summary(xlatr_comparison* comparison, xlatr_comparison_summary* summary);
/* The first differences, in about the order of time, by a number from 0; XLATR_END beyond the last. */
XLATR_API xlatr_code xlatr_comparison_get_difference(xlatr_comparison* comparison, uint32_t row,
                                                     xlatr_difference* difference);
XLATR_API const char* xlatr_comparison_error(xlatr_comparison* comparison);
XLATR_API xlatr_code xlatr_comparison_close(xlatr_comparison* comparison);

/* ---- Apache Arrow (the C data interface and the C stream interface, version 1) */

#ifndef ARROW_C_DATA_INTERFACE
#define ARROW_C_DATA_INTERFACE

#define ARROW_FLAG_DICTIONARY_ORDERED 1
#define ARROW_FLAG_NULLABLE 2
#define ARROW_FLAG_MAP_KEYS_SORTED 4

struct ArrowSchema {
  const char* format;
  const char* name;
  const char* metadata;
  int64_t flags;
  int64_t n_children;
  struct ArrowSchema** children;
  struct ArrowSchema* dictionary;
  void (*release)(struct ArrowSchema*);
  void* private_data;
};

struct ArrowArray {
  int64_t length;
  int64_t null_count;
  int64_t offset;
  int64_t n_buffers;
  int64_t n_children;
  const void** buffers;
  struct ArrowArray** children;
  struct ArrowArray* dictionary;
  void (*release)(struct ArrowArray*);
  void* private_data;
};

#endif /* ARROW_C_DATA_INTERFACE */

#ifndef ARROW_C_STREAM_INTERFACE
#define ARROW_C_STREAM_INTERFACE

struct ArrowArrayStream {
  int (*get_schema)(struct ArrowArrayStream*, struct ArrowSchema* out);
  int (*get_next)(struct ArrowArrayStream*, struct ArrowArray* out);
  const char* (*get_last_error)(struct ArrowArrayStream*);
  void (*release)(struct ArrowArrayStream*);
  void* private_data;
};

#endif /* ARROW_C_STREAM_INTERFACE */

/* Hands the rest of a stream out as an Arrow stream of struct arrays, whose children are: time_ns (int64), kind (text,
 * as a dictionary), bus (uint16), id (uint32), flags (uint16), dlc (uint16), data (binary), text (utf8, nullable), and
 * each attribute of the mask by its name (uint32, nullable). The buffers are those of the batches: nothing is copied.
 * The stream's handle is closed, unless the function fails; `out` is to be released by its consumer. */
XLATR_API xlatr_code xlatr_stream_export_arrow(xlatr_stream* stream, uint32_t attributes, struct ArrowArrayStream* out);
/* Reads an Arrow stream to its end and writes its frames. Columns are found by the names above, in any order; time_ns
 * must be there, what lacks is 0 or null, others are ignored. Numbers may be of any integer type that holds their
 * values, kind a number or a name, texts and data of any form that Arrow has. Releases `frames`, in every case. */
XLATR_API xlatr_code xlatr_sink_write_arrow(xlatr_sink* sink, struct ArrowArrayStream* frames);

#ifdef __cplusplus
}
#endif

#endif
