/* A function in C between a caller and a callee in C++. */
#ifndef XLATR_TESTS_CAPI_C_FRAME_H
#define XLATR_TESTS_CAPI_C_FRAME_H

#include "xlatr/objects.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Sets the target path, and adds 1 to `*returned` if that returns. */
void set_target_path_in_c(TrcWriter* writer, const char* path, int* returned);

#ifdef __cplusplus
}
#endif

#endif
