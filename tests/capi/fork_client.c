/* A process that forks after a conversion, and one that forks during one: the child has the library, but none of its
   threads and maybe one of its locks in the hands of a thread that it does not have. It must convert and end all the
   same. fork_client FOLDER */
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "xlatr/xlatr.h"

enum { PATH_SIZE = 4096, CHILD_CODE = 7, ROUNDS = 30 };

static char source[PATH_SIZE];
static const char* folder;

static void require(int holds, const char* what) {
  if (!holds) {
    fprintf(stderr, "%s\n", what);
    _exit(1);
  }
}

static void pathOf(char* path, const char* name) {
  snprintf(path, PATH_SIZE, "%s/%s", folder, name);
}

static void writeTrace(const char* path) {
  FILE* const file = fopen(path, "w");
  require(file != NULL, "no source");
  for (int i = 0; i < 1000; ++i) {
    fputs("1) 10.5 1 Rx 0123 1 AA\n", file);
  }
  fclose(file);
}

static void convert(const char* from, const char* to, uint8_t asynchronous) {
  ConversionOptions options;
  ConversionProgress progress;
  ConversionResult result;
  char target[PATH_SIZE];
  pathOf(target, to);
  memset(&options, 0, sizeof options);
  memset(&progress, 0, sizeof progress);
  memset(&result, 0, sizeof result);
  options.target_format = XLATR_FORMAT_TRC;
  options.asynchronous = asynchronous;
  options.progress = &progress;
  require(xlatr_convert(from, target, &options, &result) == XLATR_SUCCESS, "not converted");
  while (xlatr_get_progress(&progress) == XLATR_SUCCESS) {
    usleep(1000);
  }
  require(result.finished == 1 && result.status == XLATR_SUCCESS, "the conversion did not end");
  require(access(target, R_OK) == 0, "there is no target");
  xlatr_free(&result);
}

/* Ends a child that waits for a thread that it does not have. */
static void endIfItHangs(void) {
  alarm(20);
}

static void convertInChild(void) {
  const pid_t child = fork();
  require(child >= 0, "no child");
  if (child == 0) {
    endIfItHangs();
    require(xlatr_get_formats_convertible_from(XLATR_FORMAT_TRC) != 0, "no formats");
    convert(source, "child.trc", 0);
    convert(source, "child.trc", 1);
    exit(CHILD_CODE); /* runs the library's own end */
  }
  int status = 0;
  require(waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == CHILD_CODE,
          "the child did not end by itself");
}

/* One synchronous conversion after the other, so that nearly always one is under way. */
static void* convertUntilTold(void* told) {
  while (!atomic_load((atomic_int*)told)) {
    convert(source, "thread.trc", 0);
  }
  return NULL;
}

int main(int argc, char** argv) {
  if (argc != 2) {
    return 2;
  }
  folder = argv[1];
  mkdir(folder, 0700);
  pathOf(source, "source.trc");
  writeTrace(source);

  /* Many times, since the conversion may still be there when the child is made, or be gone already. */
  for (int i = 0; i < ROUNDS; ++i) {
    convert(source, "parent.trc", 0);
    convertInChild();
  }

  atomic_int told = 0;
  pthread_t thread;
  require(pthread_create(&thread, NULL, convertUntilTold, &told) == 0, "no thread");
  for (int i = 0; i < ROUNDS; ++i) {
    convertInChild();
  }
  atomic_store(&told, 1);
  pthread_join(thread, NULL);
  convert(source, "parent.trc", 1);
  return 0;
}
