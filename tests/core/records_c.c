/* The records as C sees them: name, offset, size, and the kind of value of every field. */
#include <morvale/c/records.h>

#include "core/records_c.h"

#define KIND(field) \
  _Generic((field), int32_t: 'i', uint32_t: 'u', float: 'f', int32_t*: 'i', uint32_t*: 'u', uint8_t*: 'p', default: 'r')
#define FIELD(record, field) \
  {#record "." #field, offsetof(record, field), sizeof(((record*)0)->field), KIND(((record*)0)->field)},

const struct RecordField kFieldsInC[] = {
#include "core/records_fields.inc"
    {0, 0, 0, 0}};

const int32_t kConstantsInC[] = {MORVALE_FRONT_CAMERA, MORVALE_MAX_FACES};
