/// Sizes of frames, and how many bytes their luma planes have: for the library, which reads them, and for
/// recordings, which keep them.
#pragma once

#include <climits>
#include <cstdint>

struct LumaPlane {
  int width, height, stride;
  int64_t bytes;
};

inline constexpr int kSideEnd = 1 << 23;  ///< no frame has a side of this
inline constexpr LumaPlane kLumaPlanes[] = {{256, 64, 0, 256 * 64},
                                            {256, 64, 255, 256 * 64},
                                            {256, 64, 257, 257 * 64},
                                            {1, 1, 0, 1},
                                            {256, 0, 256, 0},
                                            {256, 1, 300, 300},
                                            {0, 4, 0, 0},
                                            {0, 4, 1, 4},
                                            {-5, 4, -5, 0},
                                            {256, 4, kSideEnd - 1, 4 * (kSideEnd - 1)},
                                            {256, 4, kSideEnd, 256 * 4},
                                            {256, 4, INT_MAX, 256 * 4},
                                            {kSideEnd - 1, 1, 0, kSideEnd - 1},
                                            {kSideEnd, 1, 0, 0},
                                            {256, kSideEnd - 1, 0, 256 * int64_t{kSideEnd - 1}},
                                            {1, kSideEnd, 0, 0},
                                            {257, kSideEnd - 1, 0, 0},  // 2^31 bytes and more
                                            {200, kSideEnd / 2, 512, 200 * int64_t{kSideEnd / 2}}};
