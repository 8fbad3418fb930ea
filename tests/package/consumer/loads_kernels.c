/// A stranger's program in C11 that loads the kernels when it runs, from the path in its first argument.
#include <dlfcn.h>
#include <morvale/morvale_kernels.h>
#include <stdio.h>

typedef morvale_status Turn(const uint8_t*, size_t, uint8_t*, size_t, int, int, int);

int main(int argc, char** argv) {
  void* const library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : NULL;
  if (library == NULL) return fprintf(stderr, "%s\n", argc == 2 ? dlerror() : "which library?"), 1;
  Turn* turn;
  *(void**)&turn = dlsym(library, "morvale_rotate_y");
  const uint8_t row[3] = {1, 2, 3};
  uint8_t column[3] = {0};
  const morvale_status done = turn(row, sizeof row, column, sizeof column, 3, 1, 2);
  printf("counter-clockwise: %d %d %d\n", column[0], column[1], column[2]);
  return done == MORVALE_OK && column[0] == 3 && column[2] == 1 && dlclose(library) == 0 ? 0 : 1;
}
