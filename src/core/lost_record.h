/// A core without a record: Morvale_core_init got a null pointer, or was never called.
#pragma once

#include <morvale/core/records.h>
#include "platform/log.h"

namespace morvale {

/// False, with one error line that names the step, when there is no record: the frame has failed.
inline bool has_record(const MorvaleData_t* record, const char* step) {
  if (record == nullptr) MORVALE_ERROR("[NON ERROR] Morvale no frame record in %s", step);
  return record != nullptr;
}

}  // namespace morvale
