/* A process that forks after a conversion: the child has the library, but none of its threads, and must end all the
   same. fork_client FOLDER */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "xlatr/xlatr.h"

int main(int argc, char** argv) {
  ConversionOptions options;
  char missing[4096];
  int status = 0;
  if (argc != 2) {
    return 2;
  }
  snprintf(missing, sizeof missing, "%s/none.trc", argv[1]);
  memset(&options, 0, sizeof options);
  options.target_format = XLATR_FORMAT_TRC;
  /* Many times, since the conversion may still be there when the child is made, or be gone already. */
  for (int i = 0; i < 30; ++i) {
    if (xlatr_convert(missing, missing, &options, NULL) != XLATR_NOTHING_CONVERTED) {
      return 1;
    }
    const pid_t child = fork();
    if (child == 0) {
      alarm(20); /* ends a child that waits for a thread that it does not have */
      exit(7);   /* runs the library's own end */
    }
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 7) {
      fprintf(stderr, "the child did not end by itself\n");
      return 1;
    }
  }
  return 0;
}
