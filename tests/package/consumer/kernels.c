/// A stranger's program in C11: a kernel by its C name, and what it says of a buffer that is too short.
#include <morvale/morvale_kernels.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  const uint8_t bgr[6] = {255, 0, 0, 0, 0, 255};
  uint8_t grey[2] = {9, 9};
  const morvale_status refused = morvale_BGR2GRAY(bgr, sizeof bgr, grey, 1, 2, 1);
  const int untouched = grey[0] == 9 && grey[1] == 9;
  const morvale_status done = morvale_BGR2GRAY(bgr, sizeof bgr, grey, sizeof grey, 2, 1);
  printf("%s, kernels %s: %d %d; a byte short: %s\n", morvale_kernels_version(), morvale_kernels_set(),
         grey[0], grey[1], morvale_status_text(refused));
  return done == MORVALE_OK && grey[0] == 18 && grey[1] == 54 && untouched &&
                 refused == MORVALE_DESTINATION_TOO_SMALL &&
                 strcmp(morvale_kernels_version(), MORVALE_KERNELS_VERSION) == 0
             ? 0
             : 1;
}
