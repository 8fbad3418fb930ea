#include "kernels/color_rows.h"

#if defined(__AVX2__)
#include "kernels/color_steps_avx2.h"
#else
#include "kernels/color_steps_neon.h"
#endif

namespace morvale::MORVALE_VARIANT {
namespace {

template <YuvFormat kFormat, YuvRounding kRounding, bool kAroundCaches, int kCount>
inline void decode_block(const YuvRows& src, const ColorRowsOut& dst, ptrdiff_t x) {
  const ColorTerms terms = decode_chroma<kFormat != kUvToRgb, kRounding>(src.chroma + x);
  for (int row = 0; row < kCount; ++row) {
    const Bytes luma = load(src.luma + row * src.luma_stride + x);
    const auto sum = [&](const Terms& t) { return subtract_saturating(add_saturating(luma, t.up), t.down); };
    const Bytes r = sum(terms.red), g = sum(terms.green), b = sum(terms.blue);
    const ptrdiff_t at = row * dst.stride;
    if constexpr (kFormat == kVuToBgrPlanes) {
      store(dst.planes[0] + at + x, b);
      store(dst.planes[1] + at + x, g);
      store(dst.planes[2] + at + x, r);
    } else if constexpr (kFormat == kVuToBgr) {
      store_pixels<kAroundCaches>(dst.planes[0] + at + 3 * x, b, g, r);
    } else {
      store_pixels<kAroundCaches>(dst.planes[0] + at + 3 * x, r, g, b);
    }
  }
}

/// One or two rows of at least kBytes columns; leaves an odd last column.
template <YuvFormat kFormat, YuvRounding kRounding, bool kAroundCaches, int kCount>
inline void decode_rows(const YuvRows& src, const ColorRowsOut& dst, ptrdiff_t n) {
  const ptrdiff_t pairs_end = n & ~ptrdiff_t{1};
  ptrdiff_t x = 0;
  for (; x + kBytes <= n; x += kBytes) decode_block<kFormat, kRounding, kAroundCaches, kCount>(src, dst, x);
  // The last block overlaps the one before.
  if (x < pairs_end) decode_block<kFormat, kRounding, false, kCount>(src, dst, pairs_end - kBytes);
}

/// The rows come by value: the compiler cannot know that no pixel is written over a pointer to them.
template <YuvFormat kFormat, YuvRounding kRounding, bool kAroundCaches>
void decode_pairs(YuvRows src, ColorRowsOut dst, ptrdiff_t n) {
  for (; src.count >= 2; src.count -= 2) {
    decode_rows<kFormat, kRounding, kAroundCaches, 2>(src, dst, n);
    src.luma += 2 * src.luma_stride;
    src.chroma += src.chroma_stride;
    dst.planes[0] += 2 * dst.stride;
    if constexpr (kFormat == kVuToBgrPlanes) {
      dst.planes[1] += 2 * dst.stride;
      dst.planes[2] += 2 * dst.stride;
    }
  }
  if (src.count == 1) decode_rows<kFormat, kRounding, kAroundCaches, 1>(src, dst, n);
}

template <YuvFormat kFormat, YuvRounding kRounding>
void decode(const YuvRows& src, const ColorRowsOut& dst, ptrdiff_t n) {
  ptrdiff_t done = 0;
  if (n >= kBytes) {
    done = n & ~ptrdiff_t{1};
    if (kFormat != kVuToBgrPlanes && dst.around_caches && can_go_around_caches(dst)) {
      decode_pairs<kFormat, kRounding, kFormat != kVuToBgrPlanes>(src, dst, n);
      settle();
    } else {
      decode_pairs<kFormat, kRounding, false>(src, dst, n);
    }
  }
  if (done == n) return;
  constexpr ptrdiff_t kStep = kFormat == kVuToBgrPlanes ? 1 : 3;
  YuvRows src_rest = src;
  src_rest.luma += done;
  src_rest.chroma += done;
  ColorRowsOut dst_rest = dst;
  for (uint8_t*& plane : dst_rest.planes) {
    if (plane != nullptr) plane += kStep * done;
  }
  portable::kColorRows.decode[kFormat][kRounding](src_rest, dst_rest, n - done);
}

template <int kRed, int kBlue>
void encode(const uint8_t* pixels, uint8_t* luma, uint8_t* vu, ptrdiff_t n) {
  const auto block = [&](ptrdiff_t x) {
    encode_block<kRed, kBlue>(pixels + 3 * x, luma + x, vu == nullptr ? nullptr : vu + x);
  };
  const ptrdiff_t pairs_end = n & ~ptrdiff_t{1};
  ptrdiff_t x = 0;
  for (; x + kBytes <= n; x += kBytes) block(x);
  if (x < pairs_end && x > 0) {
    block(pairs_end - kBytes);
    x = pairs_end;
  }
  constexpr auto rest = kRed == 0 ? &ColorRows::rgb_to_nv21 : &ColorRows::bgr_to_nv21;
  (portable::kColorRows.*rest)(pixels + 3 * x, luma + x, vu == nullptr ? nullptr : vu + x, n - x);
}

void bgr_to_grey(const uint8_t* bgr, uint8_t* grey, ptrdiff_t n) {
  ptrdiff_t i = 0;
  for (; i + kBytes <= n; i += kBytes) store(grey + i, grey_block(bgr + 3 * i));
  portable::kColorRows.bgr_to_grey(bgr + 3 * i, grey + i, n - i);
}

void bgr_to_hsv(const uint8_t* bgr, float* hsv, ptrdiff_t n) {
  ptrdiff_t i = 0;
  for (; i + kHsvBlock <= n; i += kHsvBlock) hsv_block(bgr + 3 * i, hsv + 3 * i);
  portable::kColorRows.bgr_to_hsv(bgr + 3 * i, hsv + 3 * i, n - i);
}

}  // namespace

constinit const ColorRows kColorRows = {
    {{decode<kVuToRgb, kTruncate>, decode<kVuToRgb, kRound>},
     {decode<kVuToBgr, kTruncate>, decode<kVuToBgr, kRound>},
     {decode<kUvToRgb, kTruncate>, decode<kUvToRgb, kRound>},
     {decode<kVuToBgrPlanes, kTruncate>, decode<kVuToBgrPlanes, kRound>}},
    encode<0, 2>,
    encode<2, 0>,
    bgr_to_grey,
    bgr_to_hsv,
};

}  // namespace morvale::MORVALE_VARIANT
