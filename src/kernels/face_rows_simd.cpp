#include "kernels/face_rows.h"
#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

#if defined(__AVX2__)

Bytes maximum(Bytes a, Bytes b) { return _mm256_max_epu8(a, b); }
Bytes bit_or(Bytes a, Bytes b) { return _mm256_or_si256(a, b); }

/// One bit a byte of a mask of 0 and 255, the first byte's lowest.
uint64_t bits_of(Bytes mask) { return static_cast<uint32_t>(_mm256_movemask_epi8(mask)); }
int64_t count_set(Bytes mask) {
  return __builtin_popcount(static_cast<uint32_t>(_mm256_movemask_epi8(mask)));
}
int64_t sum_of(Bytes v) {
  const __m256i sums = _mm256_sad_epu8(v, _mm256_setzero_si256());
  const __m128i pair = _mm_add_epi64(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
  return _mm_cvtsi128_si64(pair) + _mm_extract_epi64(pair, 1);
}

constexpr ptrdiff_t kLongs = 4;
using Longs = __m256i;
Longs load_longs(const uint64_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
void store_longs(uint64_t* p, Longs v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
Longs either(Longs a, Longs b) { return _mm256_or_si256(a, b); }
template <int k>
Longs shift_up(Longs v) {
  return _mm256_slli_epi64(v, k);
}
template <int k>
Longs shift_down(Longs v) {
  return _mm256_srli_epi64(v, k);
}

using Ints = __m256i;
Floats divide(Floats a, Floats b) { return _mm256_div_ps(a, b); }
Floats multiply_subtract(Floats a, Floats b, Floats c) { return _mm256_fmsub_ps(a, b, c); }
Floats largest_of(Floats a, Floats b) { return _mm256_max_ps(a, b); }
Ints truncate(Floats v) { return _mm256_cvttps_epi32(v); }
Floats to_floats(Ints v) { return _mm256_cvtepi32_ps(v); }
/// a less one where v is negative.
Ints one_less_where_negative(Ints a, Floats v) {
  return _mm256_add_epi32(a, _mm256_srai_epi32(_mm256_castps_si256(v), 31));
}
void store_shorts(int16_t* p, Ints low, Ints high) {
  const __m256i packed = _mm256_permute4x64_epi64(_mm256_packs_epi32(low, high), 0xd8);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), packed);
}

/// kFloats bytes as numbers, each once (`times` kOnce) or three times side by side (kThrice).
constexpr int kOnce = static_cast<int>(0x80808000u), kThrice = static_cast<int>(0x80000000u);
Ints numbers(const uint8_t* p, int times) {
  const __m256i eight = _mm256_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)));
  const __m256i lane =
      _mm256_setr_epi32(0x000000, 0x010101, 0x020202, 0x030303, 0x040404, 0x050505, 0x060606, 0x070707);
  return _mm256_shuffle_epi8(eight, _mm256_or_si256(lane, _mm256_set1_epi32(times)));
}

Bytes choose(Bytes mask, Bytes yes, Bytes no) { return _mm256_blendv_epi8(no, yes, mask); }

struct Pixels {
  Bytes red, green, blue;
};

/// Byte k of pixel p is byte 3 p + k; 3 and 16 have no common divisor, so the 16 bytes of a channel are all
/// in different columns of three vectors.
struct ChannelTables {
  alignas(16)
      uint8_t from[3][2][16] = {};  ///< channel, second and third vector: 255 in the columns taken from it
  alignas(16) uint8_t order[3][16] = {};  ///< channel: the column of each pixel
};
// never run: made while compiling
constexpr ChannelTables channel_tables() {
  ChannelTables tables;
  for (int k = 0; k < 3; ++k) {
    for (int p = 0; p < 16; ++p) {
      const int at = 3 * p + k;
      if (at >= 16) tables.from[k][at / 16 - 1][at % 16] = 255;
      tables.order[k][p] = static_cast<uint8_t>(at % 16);
    }
  }
  return tables;
}
constexpr ChannelTables kChannels = channel_tables();

__m256i both(const uint8_t* p) {
  return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(p)));
}
__m256i sixteen_of_both(const uint8_t* rgb) {
  const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rgb));
  const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rgb + 48));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
}

Pixels load_pixels(const uint8_t* rgb) {
  const __m256i v[3] = {sixteen_of_both(rgb), sixteen_of_both(rgb + 16), sixteen_of_both(rgb + 32)};
  const auto channel = [&](int k) {
    const __m256i two = choose(both(kChannels.from[k][0]), v[1], v[0]);
    return _mm256_shuffle_epi8(choose(both(kChannels.from[k][1]), v[2], two), both(kChannels.order[k]));
  };
  return {channel(0), channel(1), channel(2)};
}

#else

Bytes maximum(Bytes a, Bytes b) { return vmaxq_u8(a, b); }
Bytes bit_or(Bytes a, Bytes b) { return vorrq_u8(a, b); }

/// One bit a byte of a mask of 0 and 255, the first byte's lowest.
uint64_t bits_of(Bytes mask) {
  constexpr uint8_t kBit[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
  const uint8x16_t bits = vandq_u8(mask, vld1q_u8(kBit));
  return vaddv_u8(vget_low_u8(bits)) | static_cast<uint64_t>(vaddv_u8(vget_high_u8(bits))) << 8;
}
int64_t count_set(Bytes mask) { return vaddvq_u8(vshrq_n_u8(mask, 7)); }
int64_t sum_of(Bytes v) { return vaddlvq_u8(v); }

constexpr ptrdiff_t kLongs = 2;
using Longs = uint64x2_t;
Longs load_longs(const uint64_t* p) { return vld1q_u64(p); }
void store_longs(uint64_t* p, Longs v) { vst1q_u64(p, v); }
Longs either(Longs a, Longs b) { return vorrq_u64(a, b); }
template <int k>
Longs shift_up(Longs v) {
  return vshlq_n_u64(v, k);
}
template <int k>
Longs shift_down(Longs v) {
  return vshrq_n_u64(v, k);
}

using Ints = int32x4_t;
Floats divide(Floats a, Floats b) { return vdivq_f32(a, b); }
Floats multiply_subtract(Floats a, Floats b, Floats c) { return vfmaq_f32(vnegq_f32(c), a, b); }
Floats largest_of(Floats a, Floats b) { return vmaxq_f32(a, b); }
Ints truncate(Floats v) { return vcvtq_s32_f32(v); }
Floats to_floats(Ints v) { return vcvtq_f32_s32(v); }
/// a less one where v is negative.
Ints one_less_where_negative(Ints a, Floats v) { return vsraq_n_s32(a, vreinterpretq_s32_f32(v), 31); }
void store_shorts(int16_t* p, Ints low, Ints high) {
  vst1q_s16(p, vcombine_s16(vqmovn_s32(low), vqmovn_s32(high)));
}

/// kFloats bytes as numbers, each once (`times` kOnce) or three times side by side (kThrice).
constexpr uint32_t kOnce = 0x80808000, kThrice = 0x80000000;
Ints numbers(const uint8_t* p, uint32_t times) {
  constexpr uint32_t kLane[4] = {0x000000, 0x010101, 0x020202, 0x030303};
  uint32_t four;
  __builtin_memcpy(&four, p, sizeof four);
  const uint32x4_t index = vorrq_u32(vld1q_u32(kLane), vdupq_n_u32(times));
  return vreinterpretq_s32_u8(
      vqtbl1q_u8(vreinterpretq_u8_u32(vdupq_n_u32(four)), vreinterpretq_u8_u32(index)));
}

Bytes choose(Bytes mask, Bytes yes, Bytes no) { return vbslq_u8(mask, yes, no); }

struct Pixels {
  Bytes red, green, blue;
};
Pixels load_pixels(const uint8_t* rgb) {
  const uint8x16x3_t v = vld3q_u8(rgb);
  return {v.val[0], v.val[1], v.val[2]};
}

#endif

Bytes complement(Bytes mask) { return equal(mask, all_bytes(0)); }

/// Whether a beats b, as mask.
Bytes beats(Bytes a, Bytes b) { return complement(equal(maximum(a, b), b)); }

/// The scores of labels 0..4 of kBytes pixels.
struct Scores {
  Scores(const uint8_t* const* rows, ptrdiff_t i)
      : c0(load(rows[0] + i)),
        c1(load(rows[1] + i)),
        c2(load(rows[2] + i)),
        c3(load(rows[3] + i)),
        c4(load(rows[4] + i)) {}
  Bytes c0, c1, c2, c3, c4;
};

/// The three results of a classification: bytes, bits, and what is counted.
struct Classes {
  Bytes mask, bits, counted;
};

/// Of labels 2 and 3 only one can beat all others: the larger one, and only if they differ.
Classes face_classes(const Scores& s) {
  const Bytes best = maximum(s.c2, s.c3);
  const Bytes rivals = maximum(maximum(s.c0, s.c1), maximum(s.c4, all_bytes(kMinFaceScore - 1)));
  const Bytes no_face = bit_or(equal(maximum(best, rivals), rivals), equal(s.c2, s.c3));
  const Bytes face = complement(no_face);
  const Bytes body = maximum(maximum(s.c1, s.c2), s.c4);
  return {face, face, equal(maximum(body, s.c0), body)};
}

Classes person_classes(const Scores& s) {
  const Bytes c13 = maximum(s.c1, s.c3), c04 = maximum(s.c0, s.c4), c123 = maximum(c13, s.c2);
  return {bit_and(beats(c123, c04), all_bytes(1)), beats(s.c2, maximum(c13, c04)),
          beats(s.c4, maximum(c123, s.c0))};
}

using Rest = int64_t (*)(const uint8_t* const* scores, uint8_t* mask, uint64_t* bits, ptrdiff_t stride,
                         ptrdiff_t n);

template <Classes (*classes_of)(const Scores&)>
int64_t classify(const uint8_t* const* scores, uint8_t* mask, uint64_t* bits, ptrdiff_t stride, ptrdiff_t n,
                 Rest classify_rest) {
  int64_t counted = 0;
  uint64_t word = 0;
  ptrdiff_t i = 0;
  for (; i + kBytes <= n; i += kBytes) {
    const Classes c = classes_of(Scores(scores, i));
    store(mask + i, c.mask);
    counted += count_set(c.counted);
    word |= bits_of(c.bits) << (i % 64);
    if ((i + kBytes) % 64 == 0) {
      *bits = word;
      bits += stride;
      word = 0;
    }
  }
  if (i < n) {  // fewer than kBytes pixels: they fit what is left of the word
    const uint8_t* rest[5];
    for (int k = 0; k < 5; ++k) rest[k] = scores[k] + i;
    uint64_t rest_bits = 0;
    counted += classify_rest(rest, mask + i, &rest_bits, 0, n - i);
    word |= rest_bits << (i % 64);
  }
  if (n % 64 != 0) *bits = word;
  return counted;
}

int64_t classify_faces(const uint8_t* const* scores, uint8_t* mask, uint64_t* bits, ptrdiff_t stride,
                       ptrdiff_t n) {
  return classify<face_classes>(scores, mask, bits, stride, n, portable::kFaceRows.classify_faces);
}

int64_t classify_persons(const uint8_t* const* scores, uint8_t* mask, uint64_t* bits, ptrdiff_t stride,
                         ptrdiff_t n) {
  return classify<person_classes>(scores, mask, bits, stride, n, portable::kFaceRows.classify_persons);
}

/// 64 bits and the 15 behind them that a window of 16 reaches.
struct Window {
  Longs word, behind;
};

/// Doubles the window: every bit takes in the one k behind it.
template <int k>
Window doubled(Window w) {
  return {either(either(w.word, shift_down<k>(w.word)), shift_up<64 - k>(w.behind)),
          either(w.behind, shift_down<k>(w.behind))};
}

void widen_words(const uint64_t* left, const uint64_t* middle, const uint64_t* right, uint64_t* out,
                 ptrdiff_t n) {
  ptrdiff_t y = 0;
  for (; y + kLongs <= n; y += kLongs) {
    const Longs l = load_longs(left + y), m = load_longs(middle + y), r = load_longs(right + y);
    // Moved by 7, bits x - 7 .. x + 8 are bits x .. x + 15.
    const Window moved = {either(shift_up<7>(m), shift_down<57>(l)),
                          either(shift_up<7>(r), shift_down<57>(m))};
    store_longs(out + y, doubled<8>(doubled<4>(doubled<2>(doubled<1>(moved)))).word);
  }
  portable::kFaceRows.widen_words(left + y, middle + y, right + y, out + y, n - y);
}

/// Which lanes of a block have not been counted yet: all of them at kAllFresh, all but the first k at
/// kAllFresh - k.
alignas(32) constexpr uint8_t kFresh[64] = {0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,
                                            0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,
                                            0,   0,   0,   0,   0,   0,   255, 255, 255, 255, 255, 255, 255,
                                            255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255,
                                            255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
constexpr const uint8_t* kAllFresh = kFresh + 32;

/// The pixels of a block as the hexcone model sees them: the largest and the smallest channel, the two others
/// that the hue lies between, and the number of the sextant that the hue counts from. Ties go to red, then
/// green.
struct Hexcone {
  alignas(32) uint8_t largest[kBytes], smallest[kBytes], first[kBytes], second[kBytes], sextant[kBytes];

  explicit Hexcone(const uint8_t* rgb) {
    const Pixels p = load_pixels(rgb);
    const Bytes largest_byte = maximum(maximum(p.red, p.green), p.blue);
    const Bytes is_red = equal(largest_byte, p.red), is_green = equal(largest_byte, p.green);
    store(largest, largest_byte);
    store(smallest, smaller(smaller(p.red, p.green), p.blue));
    store(first, choose(is_red, p.green, choose(is_green, p.blue, p.red)));
    store(second, choose(is_red, p.blue, choose(is_green, p.red, p.green)));
    store(sextant, choose(is_red, all_bytes(0), choose(is_green, all_bytes(2), all_bytes(4))));
  }
};

/// 2^24 * byte / 255, rounded once as byte / 255.0f is. Three times the byte are 24 bits, which a float
/// holds; what follows behind them is again the byte, three times.
Floats share(const uint8_t* bytes) {
  const Floats thrice = to_floats(numbers(bytes, kThrice));
  return multiply_add(thrice, all_floats(1.0f / 16777216.0f), thrice);
}

struct HueSaturation {
  Ints hue, saturation;
};

/// hsv_of (rules/hsv_pixel.h) in float lanes, channels 2^24 times as large, which no quotient sees. Double
/// precision is used twice there, and dispensed with here: a red's hue is a double product that is exact
/// before it is rounded to float, so the float product is the same; and the saturation, truncated from an
/// exact product there, is checked with a fused one here.
HueSaturation hue_saturation(const Hexcone& h, ptrdiff_t i) {
  const Floats largest = share(h.largest + i), delta = subtract(largest, share(h.smallest + i));
  // A grey's quotients are 0 / 1, not 0 / 0.
  const Floats one = all_floats(1.0f), full = all_floats(255.0f);
  const Floats across = divide(subtract(share(h.first + i), share(h.second + i)), largest_of(delta, one));
  const Floats sextant = to_floats(numbers(h.sextant + i, kOnce));
  const Ints hue = truncate(multiply(add(across, sextant), all_floats(60.0f)));

  const Floats ratio = divide(delta, largest_of(largest, one));
  const Ints rounded = truncate(multiply(ratio, full));
  // The rounded product may have reached a whole number that the exact one stays below.
  return {hue, one_less_where_negative(rounded, multiply_subtract(ratio, full, to_floats(rounded)))};
}

/// Counts the pixels of a block whose bit is set.
void count_colours(const uint8_t* rgb, uint64_t wanted, FaceCounts& counts) {
  const Hexcone hexcone(rgb);
  alignas(32) int16_t hue[kBytes], saturation[kBytes];
  for (ptrdiff_t i = 0; i < kBytes; i += 2 * kFloats) {
    const HueSaturation low = hue_saturation(hexcone, i), high = hue_saturation(hexcone, i + kFloats);
    store_shorts(hue + i, low.hue, high.hue);
    store_shorts(saturation + i, low.saturation, high.saturation);
  }
  const auto count = [&](ptrdiff_t i, uint32_t* bins) {
    ++bins[FaceCounts::kHueBins - FaceCounts::kLowestHue + ptrdiff_t{hue[i]}];
    ++bins[FaceCounts::kSaturationBins + ptrdiff_t{saturation[i]}];
    ++bins[FaceCounts::kValueBins + ptrdiff_t{hexcone.largest[i]}];
  };
  constexpr uint64_t kAll = ~uint64_t{0} >> (64 - kBytes);
  if (wanted == kAll) {
    for (ptrdiff_t i = 0; i < kBytes; i += 8) {
      for (ptrdiff_t k = 0; k < 8; ++k) count(i + k, counts.bins[k % FaceCounts::kSets]);
    }
  } else {
    uint32_t *bins = counts.bins[0], *next = counts.bins[1];
    for (; wanted != 0; wanted &= wanted - 1) {
      count(static_cast<ptrdiff_t>(__builtin_ctzll(wanted)), bins);
      uint32_t* const last = bins;
      bins = next;
      next = last;
    }
  }
}

/// Counts the pixels of a block that are fresh.
void count_block(const uint8_t* score2, const uint8_t* mask, const uint8_t* luma, const uint8_t* rgb,
                 const uint8_t* fresh, FaceCounts& counts) {
  const Bytes score = load(score2);
  const Bytes inside = bit_and(complement(equal(load(mask), all_bytes(0))), load(fresh));
  const auto scored = [&](int least) {
    return bit_and(inside, equal(maximum(score, all_bytes(least)), score));
  };
  const Bytes lit = scored(kLumaScore), y = bit_and(load(luma), lit);
  counts.luma_sum += sum_of(y);
  counts.luma_pixels += count_set(lit);
  counts.above_200 += count_set(beats(y, all_bytes(200)));
  counts.above_230 += count_set(beats(y, all_bytes(230)));
  const Bytes coloured = scored(kColourScore);
  counts.colour_pixels += count_set(coloured);
  const uint64_t wanted = bits_of(coloured);
  if (wanted != 0) count_colours(rgb, wanted, counts);
}

/// The last block moves back to the row's end, and only its last pixels are fresh.
void count_face(const uint8_t* score2, const uint8_t* mask, const uint8_t* luma, const uint8_t* rgb,
                ptrdiff_t n, FaceCounts& counts) {
  if (n < kBytes) {
    portable::kFaceRows.count_face(score2, mask, luma, rgb, n, counts);
    return;
  }
  const auto block = [&](ptrdiff_t i, const uint8_t* fresh) {
    count_block(score2 + i, mask + i, luma + i, rgb + 3 * i, fresh, counts);
  };
  ptrdiff_t i = 0;
  for (; i + kBytes <= n; i += kBytes) block(i, kAllFresh);
  if (i < n) block(n - kBytes, kAllFresh - (kBytes - (n - i)));
}

}  // namespace

constinit const FaceRows kFaceRows = {classify_faces, classify_persons, widen_words, count_face};

}  // namespace morvale::MORVALE_VARIANT
