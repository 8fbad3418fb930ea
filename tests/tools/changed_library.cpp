/// Stands for another build of the library: the one it is loaded in front of, but that each record tells a
/// larger share of people. With MORVALE_CHANGED_LIBRARY=ends it ends its process at the third record.
#include <dlfcn.h>

#include <cstdlib>

#include <morvale/morvale.h>

int MorvaleCore::Morvale_core_getresult(PersonWholeMeta* out) {
  using Next = int (*)(MorvaleCore*, PersonWholeMeta*);
  static const auto next =
      reinterpret_cast<Next>(dlsym(RTLD_NEXT, "_ZN11MorvaleCore22Morvale_core_getresultEP15PersonWholeMeta"));
  static int records = 0;
  if (++records == 3 && std::getenv("MORVALE_CHANGED_LIBRARY") != nullptr) std::abort();
  const int told = next(this, out);
  out->humanRatio += 5;
  return told;
}
