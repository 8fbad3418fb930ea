/// Files for developers: an input to load, an image to look at.
#include <cstdio>
#include <cstdlib>

#include <morvale/core/morvale_core.h>
#include <morvale/core/segmentation.h>

int loadInputData(uint8_t* buffer, int /*size*/) {
  std::FILE* file = std::fopen("/data/vendor/camera/inarray.raw", "rb");
  if (file == nullptr) std::exit(1);
  const long length = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : -1;
  if (length < 1) std::exit(1);
  std::rewind(file);
  if (std::fread(buffer, 1, static_cast<size_t>(length), file) != static_cast<size_t>(length)) std::exit(1);
  return std::fclose(file);
}

// The callers' binaries hold the path by value. NOLINTNEXTLINE(performance-unnecessary-value-param)
void MorvaleCore::dumpImage(const uint8_t* data, std::string path, int size) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return;
  if (size > 0) std::fwrite(data, 1, static_cast<size_t>(size), file);
  std::fclose(file);
}
