#include "fakes/platform_double.h"

#include <dlfcn.h>
#include <sys/time.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace fakes {

std::ostream& operator<<(std::ostream& out, const LogLine& line) {
  return out << line.priority << " " << line.tag << ": \"" << line.text << "\"";
}

int Platform::count(const std::string& call) const {
  return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

Platform& platform() {
  static Platform instance;
  return instance;
}

namespace {

class ScriptedSession final : public vexa::VexaSession {
 public:
  void reserved1() override { note("reserved1"); }
  void reserved2() override { note("reserved2"); }
  void reserved3() override { note("reserved3"); }

  int32_t execute(std::vector<vexa::DataBuffer>& in, std::vector<vexa::DataBuffer>& out) override {
    note("execute");
    Platform& p = platform();
    p.inputs = in;
    p.outputs_on_entry = out.size();
    p.clock_us += p.execute_us;
    if (p.output == Output::kNone) return p.execute_result;
    vexa::DataBuffer tensor;
    tensor.shape = p.shape.value_or(std::vector<int32_t>{1, NETSIZE, NETSIZE, 5});
    tensor.data = p.output == Output::kLogits ? p.logits.data() : nullptr;
    out.push_back(tensor);
    return p.execute_result;
  }

  void close() override { note("close"); }
  void reserved6() override { note("reserved6"); }
  void reserved7() override { note("reserved7"); }

  int32_t open(vexa::VexaOptionsV2 options) override {
    note("open");
    Platform& p = platform();
    p.options = options;
    p.clock_us += p.open_us;
    return p.open_result;
  }

 private:
  static void note(const char* call) { platform().calls.emplace_back(call); }
};

}  // namespace
}  // namespace fakes

extern "C" {

int __android_log_print(int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

int __android_log_print(int priority, const char* tag, const char* format, ...) {
  char text[1024];
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  fakes::platform().log.push_back({priority, text, tag});
  return length;
}

// An unset property leaves rubbish behind, so that only the returned length tells.
int __system_property_get(const char* name, char* value);

int __system_property_get(const char* name, char* value) {
  const auto& properties = fakes::platform().properties;
  const auto found = properties.find(name);
  std::strcpy(value, found == properties.end() ? "2" : found->second.c_str());
  return found == properties.end() ? 0 : static_cast<int>(found->second.size());
}

void ATrace_beginSection(const char* name);
void ATrace_endSection();

void ATrace_beginSection(const char* name) { fakes::platform().trace.emplace_back(std::string("+") + name); }

void ATrace_endSection() { fakes::platform().trace.emplace_back("-"); }

vexa::VexaSession* CreateVexaSession() {
  static fakes::ScriptedSession session;
  fakes::platform().calls.emplace_back("create");
  return fakes::platform().null_session ? nullptr : &session;
}

void DestroyVexaSession(vexa::VexaSession*) { fakes::platform().calls.emplace_back("destroy"); }

int gettimeofday(timeval* now, void*) noexcept {
  now->tv_sec = static_cast<time_t>(fakes::platform().clock_us / 1'000'000);
  now->tv_usec = static_cast<suseconds_t>(fakes::platform().clock_us % 1'000'000);
  return 0;
}

/// The only path that a test cannot provide is answered from another.
std::FILE* fopen(const char* path, const char* mode) {
  static const auto next =
      reinterpret_cast<std::FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
  const std::string& file = fakes::platform().input_file;
  const bool wanted = path == std::string_view("/data/vendor/camera/inarray.raw") && !file.empty();
  return next(wanted ? file.c_str() : path, mode);
}

}  // extern "C"
