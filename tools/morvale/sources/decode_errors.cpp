#include "sources/decode_errors.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

namespace tool {
namespace {

// FFmpeg's log as its interface has it. OpenCV brings the library, but not its headers.
using LogCallback = void (*)(void* speaker, int level, const char* format, va_list words);
using SetCallback = void (*)(LogCallback);
constexpr int kErrorLevel = 16;  // this and below: something is wrong

std::mutex guard;
std::thread::id reader;  ///< who asks for frames
int asked = 0;           ///< frames asked for so far
int damaged = 0;
std::map<void*, int> counted;  ///< by decoder: when its last damaged frame was counted

/// Every speaker begins with a pointer to its class, and that with the class's name.
bool is_decoder(void* speaker) {
  if (speaker == nullptr) return false;
  const char* const* const kind = *static_cast<const char* const* const*>(speaker);
  return kind != nullptr && std::strcmp(*kind, "AVCodecContext") == 0;
}

/// What is heard in the reader's own thread is about the frame it waits for. Beside it several decoders work
/// on frames in turn, each on its next one only after all others had theirs: within that time it speaks of
/// the same frame.
void hear(void* speaker, int level, const char*, va_list) {
  if (level > kErrorLevel || !is_decoder(speaker)) return;
  const std::lock_guard lock(guard);
  const bool alone = std::this_thread::get_id() == reader;
  const int decoders = alone ? 1 : static_cast<int>(std::max(std::thread::hardware_concurrency(), 1u));
  const auto [last, fresh] = counted.try_emplace(speaker, asked);
  if (!fresh && asked - last->second < decoders) return;
  last->second = asked;
  ++damaged;
}

void set_callback(LogCallback callback) {
  if (void* const found = dlsym(RTLD_DEFAULT, "av_log_set_callback"))
    reinterpret_cast<SetCallback>(found)(callback);
}

void hear_nothing(void*, int, const char*, va_list) {}

}  // namespace

DecodeErrors::DecodeErrors() {
  const std::lock_guard lock(guard);
  reader = std::this_thread::get_id();
  asked = damaged = 0;
  counted.clear();
  set_callback(hear);
}

DecodeErrors::~DecodeErrors() { set_callback(hear_nothing); }

void DecodeErrors::next_frame() {
  const std::lock_guard lock(guard);
  ++asked;
}

int DecodeErrors::damaged_frames() const {
  const std::lock_guard lock(guard);
  return damaged;
}

}  // namespace tool
