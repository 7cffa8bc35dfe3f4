#include "c_frame.h"

void set_target_path_in_c(TrcWriter* writer, const char* path, int* returned) {
  TrcWriter_setTargetPath(writer, path);
  ++*returned;
}
