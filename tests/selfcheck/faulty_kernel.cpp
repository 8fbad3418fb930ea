/// A kernel with a fault, to be preloaded ahead of the library's: grey rounds.
#include <cstdint>

#include <morvale/imgproc/color_convert.h>

int BGR2GRAY(const uint8_t* bgr, uint8_t* grey, int width, int height) {
  for (int i = 0; i < width * height; ++i)
    grey[i] = static_cast<uint8_t>(
        (4732 * bgr[3 * i] + 46871 * bgr[3 * i + 1] + 13933 * bgr[3 * i + 2] + 32768) >> 16);
  return 0;
}
