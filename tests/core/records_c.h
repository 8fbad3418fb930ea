/* What records_c.c tells records_c_test.cpp. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct RecordField {
  const char* name;
  size_t offset, size;
  char kind;  // i, u, f: numbers, also arrays of them; p: a pointer to bytes; r: records
};

extern const struct RecordField kFieldsInC[];
extern const int32_t kConstantsInC[2];

#ifdef __cplusplus
}
#endif
