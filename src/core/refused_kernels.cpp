/// Reports, when the library is loaded, that its environment asked for kernels in vain. Not where the kernels
/// are chosen: libmorvale_kernels.so has those too, and has no log.
#include "kernels/processor.h"
#include "platform/log.h"

namespace morvale {
namespace {

bool report() {
  const std::string_view refused = choose_kernels().refused;
  if (!refused.empty()) MORVALE_ERROR("[NON ERROR] Morvale kernels \"%s\" cannot run here", refused.data());
  return true;
}

[[maybe_unused]] const bool reported = report();

}  // namespace
}  // namespace morvale
