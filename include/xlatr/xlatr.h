/*
 * xlatr: converts bus trace files, one file per call.
 *
 * Five functions: two that say what can be converted into what, one that starts a conversion, one that tells how far it
 * is, and one that frees what a conversion left. objects.h has the finer grain: information objects, readers, writers
 * and single messages.
 *
 * Conventions
 *  1. Text is narrow and zero-terminated; paths are handed to the system as they are.
 *  2. All records have natural alignment and their fields in the order given here.
 *  3. A caller may call from any thread. While a synchronous xlatr_convert runs on another thread, all functions of
 *     this header except xlatr_free wait for it; a caller who wants progress converts asynchronously.
 *  4. None of the five functions throws because of the files it is given: ConversionResult says what went wrong with a
 *     source or a target. They throw only if the system has no memory or no thread left to give.
 */
#ifndef XLATR_XLATR_H
#define XLATR_XLATR_H

#include <stdint.h>

#include "xlatr/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A trace format: one of the flags below, or an OR of several if a function takes or returns a set. */
typedef int32_t TraceFormat;

enum {
  XLATR_FORMAT_NONE = 0,
  XLATR_FORMAT_TRC = 1,   /* TRC text trace, ".trc" */
  XLATR_FORMAT_BTR = 2,   /* session file of the hardware logger, ".btr" */
  XLATR_FORMAT_ASC = 4,   /* ASC text log, ".asc" */
  XLATR_FORMAT_LIN = 8,   /* LIN text trace, ".ltrc" */
  XLATR_FORMAT_CSV = 16,  /* CSV table, ".csv"; never a source */
  XLATR_FORMAT_BTRC = 32, /* binary trace of the hardware logger, ".btrc" */
  XLATR_FORMAT_MF4 = 64,  /* ASAM MDF 4 measurement file, ".mf4" */
  XLATR_FORMAT_BLF = 128  /* BLF log, ".blf"; read through the objects only */
};

/* Status codes, as the functions return them and as the records hold them. */
enum {
  XLATR_SUCCESS = 0,            /* all targets were written; the text may hold warnings */
  XLATR_IN_PROGRESS = 1,        /* in a record only: from the start of a conversion to its end */
  XLATR_NOTHING_CONVERTED = 2,  /* the source file does not exist, or no session was selected */
  XLATR_FAILED = 3,             /* at least one target failed; the text says why */
  XLATR_BAD_ARGUMENT = 4,       /* the options of xlatr_convert or the record of xlatr_get_progress were null */
  XLATR_UNKNOWN_CONVERSION = 5, /* no live conversion has this id; a conversion that ended is one of these */
  XLATR_UNEXPECTED = -1         /* a state that should not occur */
};

/* The tags of ConversionOption. Any other tag is ignored; one that does not apply to the target format has no effect.
 */
enum {
  XLATR_OPTION_TARGET_VERSION = 1, /* value.version */
  XLATR_OPTION_SESSION = 2,        /* value.session, may be given several times */
  XLATR_OPTION_SEPARATOR = 3,      /* value.separator */
  XLATR_OPTION_ZIPPED = 4,         /* value.flag: compress the data of an MF4 target; default 0 */
  XLATR_OPTION_SORTED = 5,         /* value.flag: sort the records of an MF4 target by kind of frame; default 0 */
  XLATR_OPTION_SAFE = 6, /* value.flag: a target has its name when it is whole; until then it is written beside
                            it, and a conversion that fails leaves no target, or the one that was there before.
                            A pipe that somebody reads is written as it is, at the pace of its reader. default 0: a
                            target is written under its name from the start, and is no pipe */
  XLATR_OPTION_NEW = 7   /* value.flag: a target that is there already is kept and the conversion fails; default 0: it
                            is replaced */
};

/* The size of each buffer in ConversionResult.files: a name is cut to 260 characters. */
enum { XLATR_FILE_NAME_SIZE = 261 };

/* One option of a conversion: a tag and the member of the value that belongs to it. */
typedef struct ConversionOption {
  int32_t tag;
  union {
    double version;   /* file version of the target, for example 2.1; -1.0 is the target format's current one */
    uint32_t session; /* one session of a BTR source to convert, counted from 1; 0 is ignored. While no session is
                         named all are converted */
    char separator;   /* between the columns of a CSV target; default ';' */
    uint8_t flag;     /* 0 off, anything else on */
    uint8_t bytes[8]; /* the value is 8 bytes wide */
  } value;
} ConversionOption;

/* How far a conversion is. Owned by the caller. */
typedef struct ConversionProgress {
  uint64_t id;      /* identity of the conversion, counted from 1; the key of xlatr_get_progress */
  uint8_t finished; /* 1 once the conversion has ended */
  int32_t status;   /* a status code */
  float percent;    /* 0.0 to 100.0; not a number if the conversion has nothing to do */
} ConversionProgress;

/* What to convert into and how. Read only, copied during the call. */
typedef struct ConversionOptions {
  int32_t reserved;                /* not read */
  TraceFormat target_format;       /* exactly one flag; any other value fails */
  uint8_t asynchronous;            /* 0: xlatr_convert returns when all is done; otherwise at once */
  ConversionProgress* progress;    /* filled once during the call with the id and the first state; may be null */
  uint32_t option_count;           /* entries of `options`; 0 means none */
  const ConversionOption* options; /* may be null */
} ConversionOptions;

/*
 * What a conversion ended with. The caller owns the record, which must live until the conversion has ended; the library
 * owns what it points to until xlatr_free. A new record is all zeros. A used record may be used again: the next
 * conversion frees its text, but its files must have been freed by xlatr_free.
 */
typedef struct ConversionResult {
  int32_t status;      /* a status code */
  uint8_t finished;    /* 1 once the conversion has ended; everything else in the record is complete then */
  char* text;          /* messages of the conversion, each followed by a blank: failures, or warnings of a success;
                          "In progress" meanwhile. Null before the first use: must be null or an earlier text. Null
                          after a failure for whose text there was no memory */
  uint32_t file_count; /* entries of `files` */
  char** files;        /* name and extension, without the directory, of each file written; null if there is none */
} ConversionResult;

/* Returns the set of formats that a source of this format can be converted into; 0 for a value that is not exactly one
   format flag, and for CSV. */
XLATR_API TraceFormat xlatr_get_formats_convertible_from(TraceFormat source);

/* Returns the set of formats from which every format of the set `targets` can be reached; all eight for an empty set.
 */
XLATR_API TraceFormat xlatr_get_formats_convertible_to(TraceFormat targets);

/*
 * Converts the file `source` into the format that `options` names.
 *
 * The target's directory and stem come from `target`, its extension from the target format: "out/x.trc" becomes
 * "out/x.asc" for an ASC target, and a name whose extension is no trace format's keeps it ("x.bak" becomes
 * "x.bak.asc"). An existing file is overwritten. Targets without a bus column (TRC 1.0, 1.1 and 2.0) give one file per
 * bus, named with "_BUS" and the bus number; a BTR source gives one file per session, named with "_S" and the session's
 * index.
 *
 * `source` and `target` may be null (an absent source, an empty stem); `result` may be null if nothing is to be
 * reported through it. If `options` is null the function does nothing and returns XLATR_BAD_ARGUMENT.
 *
 * Returns XLATR_SUCCESS, XLATR_NOTHING_CONVERTED or XLATR_FAILED, the last also for a target format that is not exactly
 * one flag or that no conversion can have, and if there is no memory or no thread for the conversion. An asynchronous
 * call returns the state at that moment, which is XLATR_SUCCESS once the work has begun; `result` holds what it ended
 * with when xlatr_get_progress returns XLATR_UNKNOWN_CONVERSION.
 */
XLATR_API int32_t xlatr_convert(const char* source, const char* target, const ConversionOptions* options,
                                ConversionResult* result);

/*
 * Tells how far the conversion `progress->id` is. Returns XLATR_SUCCESS and fills the record; XLATR_BAD_ARGUMENT for a
 * null record; XLATR_UNKNOWN_CONVERSION for an id that was never given out or whose conversion has ended, in which case
 * its ConversionResult is complete.
 */
XLATR_API int32_t xlatr_get_progress(ConversionProgress* progress);

/* Frees the text and the files of a conversion that has ended and clears both pointers; the file count stays, and the
   record itself is the caller's. A null record is ignored, and a second call does nothing. */
XLATR_API void xlatr_free(ConversionResult* result);

#ifdef __cplusplus
}
#endif

#endif
