#include "kernels/network_rows.h"
#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

/// Cells are handled in groups of 16 bytes (three whole cells, or a part of a run of 16 cells); AVX2 does two
/// groups at once.
constexpr ptrdiff_t kGroups = kBytes / 16;

/// The change of a cell that takes `now` as it is, whichever divisor: see smooth().
constexpr short kFullChange = 1000;

/// What kBytes bytes become.
constexpr ptrdiff_t kParts = kBytes / kFloats;
struct RunOfFloats {
  Floats part[kParts];
};

#if defined(__AVX2__)

/// kBytes bytes as floats, each kOffset more.
constexpr float kOffset = 0.0f;
RunOfFloats as_floats(const uint8_t* bytes) {
  RunOfFloats floats;
  for (ptrdiff_t k = 0; k < kParts; ++k) {
    const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bytes + kFloats * k));
    floats.part[k] = _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(eight));
  }
  return floats;
}

/// trunc((score + 10) * 255 / 20), at most 255 for large scores; a negative number for low ones and for NaN.
__m256i scaled(const float* scores) {
  const __m256 sum = _mm256_add_ps(_mm256_loadu_ps(scores), _mm256_set1_ps(10.0f));
  // 0.05f for / 20: another rounding, but all 255 thresholds stay where they are.
  const __m256 value = _mm256_mul_ps(_mm256_mul_ps(sum, _mm256_set1_ps(255.0f)), _mm256_set1_ps(0.05f));
  // The minimum hands NaN on, as its second operand. The conversion gives INT_MIN for it.
  return _mm256_cvttps_epi32(_mm256_min_ps(_mm256_set1_ps(255.0f), value));
}
Bytes scores_to_bytes(const float* scores) {
  const __m256i low = _mm256_packs_epi32(scaled(scores), scaled(scores + 8));
  const __m256i high = _mm256_packs_epi32(scaled(scores + 16), scaled(scores + 24));
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  return _mm256_permutevar8x32_epi32(_mm256_packus_epi16(low, high), order);
}

Bytes load_groups(const uint8_t* p, ptrdiff_t distance) {
  const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + distance));
  return _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
}
void store_groups(uint8_t* p, ptrdiff_t distance, Bytes v) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(v));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p + distance), _mm256_extracti128_si256(v, 1));
}
/// The 16 bytes in every group.
Bytes in_groups(const uint8_t* p) {
  return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(p)));
}
/// Byte i of a group becomes byte index[i] of it, 0 for an index with the high bit set.
Bytes pick(Bytes v, Bytes index) { return _mm256_shuffle_epi8(v, index); }
/// a where the mask is 0, b where it is 255.
Bytes select(Bytes a, Bytes b, Bytes mask) { return _mm256_blendv_epi8(a, b, mask); }

/// Per group the sums of |a - b| over its two halves, as 64-bit numbers.
using Sums = __m256i;
Sums difference_sums(Bytes a, Bytes b) { return _mm256_sad_epu8(a, b); }

/// From the sums of a group's cells (0, 1 and 2, none) the weights of `before` and `now`, 0..128 each, as
/// byte pairs: cell c's at bytes 4 c and 4 c + 1, and (0, 128) at bytes 12 and 13.
template <int kDivisor>
Bytes weights(Sums cells01, Sums cell2) {
  const __m256i sums = _mm256_packs_epi32(cells01, cell2);
  const __m256i rounded = _mm256_add_epi16(
      sums, _mm256_setr_epi16(2, 2, 2, 2, 2, 2, kFullChange, 2, 2, 2, 2, 2, 2, 2, kFullChange, 2));
  // 13108 / 65536 is a fifth, exact when truncated for all sums up to 1277.
  const __m256i change = kDivisor == 4
                             ? _mm256_and_si256(_mm256_srli_epi16(rounded, 2), _mm256_set1_epi16(255))
                             : _mm256_mulhi_epi16(rounded, _mm256_set1_epi16(13108));
  const __m256i full = _mm256_set1_epi16(128);
  const __m256i weight = _mm256_subs_epu16(full, change);
  return _mm256_or_si256(weight, _mm256_slli_epi16(_mm256_sub_epi16(full, weight), 8));
}

/// (weight * before + (128 - weight) * now) >> 7. `low` and `high` are the weight pairs of the bytes of the
/// lower and the upper half of each group. The bytes are made signed, since of the multiplication's operands
/// one must be and a weight of 128 cannot.
Bytes blend(Bytes now, Bytes before, Bytes low, Bytes high) {
  const __m256i sign = _mm256_set1_epi8(-128);
  const __m256i n = _mm256_xor_si256(now, sign), b = _mm256_xor_si256(before, sign);
  const __m256i sum_low = _mm256_maddubs_epi16(low, _mm256_unpacklo_epi8(b, n));
  const __m256i sum_high = _mm256_maddubs_epi16(high, _mm256_unpackhi_epi8(b, n));
  const __m256i out = _mm256_packs_epi16(_mm256_srai_epi16(sum_low, 7), _mm256_srai_epi16(sum_high, 7));
  return _mm256_xor_si256(out, sign);
}

#else

/// kBytes bytes as floats, each kOffset more: a byte in the mantissa of 2^15. Interleaving it with zero and
/// the exponent costs less than widening and converting it, on small cores and large ones.
constexpr float kOffset = 32768.0f;
RunOfFloats as_floats(const uint8_t* bytes) {
  const Bytes sixteen = load(bytes), zero = all_bytes(0);
  const uint16x8_t exponent = vdupq_n_u16(0x4700);
  const uint16x8_t low = vreinterpretq_u16_u8(vzip1q_u8(zero, sixteen));
  const uint16x8_t high = vreinterpretq_u16_u8(vzip2q_u8(zero, sixteen));
  return {{vreinterpretq_f32_u16(vzip1q_u16(low, exponent)), vreinterpretq_f32_u16(vzip2q_u16(low, exponent)),
           vreinterpretq_f32_u16(vzip1q_u16(high, exponent)),
           vreinterpretq_f32_u16(vzip2q_u16(high, exponent))}};
}

/// trunc((score + 10) * 255 / 20); the conversion saturates and gives 0 for NaN.
int16x4_t scaled(const float* scores) {
  const float32x4_t sum = vaddq_f32(vld1q_f32(scores), vdupq_n_f32(10.0f));
  // 0.05f for / 20: another rounding, but all 255 thresholds stay where they are.
  const float32x4_t value = vmulq_f32(vmulq_f32(sum, vdupq_n_f32(255.0f)), vdupq_n_f32(0.05f));
  return vqmovn_s32(vcvtq_s32_f32(value));
}
Bytes scores_to_bytes(const float* scores) {
  const uint8x8_t low = vqmovun_s16(vcombine_s16(scaled(scores), scaled(scores + 4)));
  return vcombine_u8(low, vqmovun_s16(vcombine_s16(scaled(scores + 8), scaled(scores + 12))));
}

Bytes load_groups(const uint8_t* p, ptrdiff_t /*distance*/) { return vld1q_u8(p); }
void store_groups(uint8_t* p, ptrdiff_t /*distance*/, Bytes v) { vst1q_u8(p, v); }
Bytes in_groups(const uint8_t* p) { return vld1q_u8(p); }
/// Byte i of a group becomes byte index[i] of it, 0 for an index with the high bit set.
Bytes pick(Bytes v, Bytes index) { return vqtbl1q_u8(v, index); }
/// a where the mask is 0, b where it is 255.
Bytes select(Bytes a, Bytes b, Bytes mask) { return vbslq_u8(mask, b, a); }

/// The sums of |a - b| over both halves.
using Sums = uint64x2_t;
Sums difference_sums(Bytes a, Bytes b) { return vpaddlq_u32(vpaddlq_u16(vpaddlq_u8(vabdq_u8(a, b)))); }

/// From the sums of a group's cells (0, 1 and 2, none) the weights of `before` and `now`, 0..128 each, as
/// byte pairs: cell c's at bytes 4 c and 4 c + 1, and (0, 128) at bytes 12 and 13.
template <int kDivisor>
Bytes weights(Sums cells01, Sums cell2) {
  const uint32x4_t sums = vcombine_u32(vmovn_u64(cells01), vmovn_u64(cell2));
  const uint32x4_t rounded = vaddq_u32(sums, vsetq_lane_u32(kFullChange, vdupq_n_u32(2), 3));
  // 13108 / 65536 is a fifth, exact when truncated for all sums up to 1277.
  const uint32x4_t change = kDivisor == 4 ? vandq_u32(vshrq_n_u32(rounded, 2), vdupq_n_u32(255))
                                          : vshrq_n_u32(vmulq_n_u32(rounded, 13108), 16);
  const uint32x4_t full = vdupq_n_u32(128);
  const uint32x4_t weight = vqsubq_u32(full, change);
  return vreinterpretq_u8_u32(vorrq_u32(weight, vshlq_n_u32(vsubq_u32(full, weight), 8)));
}

/// (weight * before + (128 - weight) * now) >> 7. `low` and `high` are the weight pairs of the bytes of the
/// lower and the upper half.
Bytes blend(Bytes now, Bytes before, Bytes low, Bytes high) {
  const Bytes wb = vuzp1q_u8(low, high), wn = vuzp2q_u8(low, high);
  const uint16x8_t l =
      vmlal_u8(vmull_u8(vget_low_u8(before), vget_low_u8(wb)), vget_low_u8(now), vget_low_u8(wn));
  const uint16x8_t h = vmlal_high_u8(vmull_high_u8(before, wb), now, wn);
  return vshrn_high_n_u16(vshrn_n_u16(l, 7), h, 7);
}

#endif

/// 2 byte / 255 - 1 is (byte - 127.5) times 2 / 255, and that factor stands in two parts: the first has so
/// few bits that its product is exact, so the sum rounds once. Gives the double sum's float for all 256
/// bytes.
void to_input(const uint8_t* bytes, float* floats, ptrdiff_t n) {
  constexpr float kHigh = 257.0f / 32768.0f, kLow = static_cast<float>(2.0 / 255.0 - 257.0 / 32768.0);
  const Floats high = all_floats(kHigh), low = all_floats(kLow), middle = all_floats(kOffset + 127.5f);
  ptrdiff_t i = 0;
  for (; i + kBytes <= n; i += kBytes) {
    const RunOfFloats run = as_floats(bytes + i);
    for (ptrdiff_t k = 0; k < kParts; ++k) {
      const Floats centred = subtract(run.part[k], middle);
      store_floats(floats + i + kFloats * k, multiply_add(centred, low, multiply(centred, high)));
    }
  }
  portable::kNetworkRows.to_input(bytes + i, floats + i, n - i);
}

void to_bytes(const float* scores, uint8_t* bytes, ptrdiff_t n) {
  ptrdiff_t i = 0;
  for (; i + kBytes <= n; i += kBytes) store(bytes + i, scores_to_bytes(scores + i));
  portable::kNetworkRows.to_bytes(scores + i, bytes + i, n - i);
}

constexpr uint8_t kNone = 0x80;

/// The scores of cells 0, 1 and 2 of a group, spread over halves of 8 bytes.
alignas(16) constexpr uint8_t kCells01[16] = {0, 1, 2, 3, 4, kNone, kNone, kNone,
                                              5, 6, 7, 8, 9, kNone, kNone, kNone};
alignas(16) constexpr uint8_t kCell2[16] = {10,    11,    12,    13,    14,    kNone, kNone, kNone,
                                            kNone, kNone, kNone, kNone, kNone, kNone, kNone, kNone};

/// Where weights() put each byte's pair.
alignas(16) constexpr uint8_t kLowPairs[16] = {0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 4, 5, 4, 5, 4, 5};
alignas(16) constexpr uint8_t kHighPairs[16] = {4, 5, 4, 5, 8, 9, 8, 9, 8, 9, 8, 9, 8, 9, 12, 13};

/// Groups of three cells. The 16th byte is the next cell's: it is written as it was read.
template <int kDivisor>
void smooth(uint8_t* now, const uint8_t* before, ptrdiff_t cells) {
  constexpr ptrdiff_t kCells = 3, kStep = kCells * kCellScores;
  const Bytes cells01 = in_groups(kCells01), cell2 = in_groups(kCell2);
  const Bytes low = in_groups(kLowPairs), high = in_groups(kHighPairs);
  constexpr ptrdiff_t kBlock = kGroups * kStep;
  if (cells > kGroups * kCells) {
    // The next block is loaded before this one is stored: they share a byte, and a load that overlaps a fresh
    // store in part waits for it.
    Bytes n = load_groups(now, kStep);
    for (bool more = true; more; now += kBlock, before += kBlock) {
      cells -= kGroups * kCells;
      more = cells > kGroups * kCells;
      const Bytes next = more ? load_groups(now + kBlock, kStep) : n;
      const Bytes b = load_groups(before, kStep);
      const Bytes pairs = weights<kDivisor>(difference_sums(pick(n, cells01), pick(b, cells01)),
                                            difference_sums(pick(n, cell2), pick(b, cell2)));
      store_groups(now, kStep, blend(n, b, pick(pairs, low), pick(pairs, high)));
      n = next;
    }
  }
  if (kDivisor == 4) {
    portable::kNetworkRows.smooth_front(now, before, cells);
  } else {
    portable::kNetworkRows.smooth_back(now, before, cells);
  }
}

/// Where the bytes of a plane lie in a block of 16 cells, five vectors. Score k of cell p is byte 5 p + k; 5
/// and 16 have no common divisor, so the 16 bytes of one plane are all in different columns of the five
/// vectors.
struct SplitTables {
  alignas(16) uint8_t from[5][5][16] = {};  ///< plane, vector: 255 in the columns taken from it
  alignas(16) uint8_t order[5][16] = {};    ///< plane: the column of each cell
};

// never run: made while compiling
constexpr SplitTables split_tables() {
  SplitTables tables;
  for (int k = 0; k < 5; ++k) {
    for (int p = 0; p < 16; ++p) {
      const int at = 5 * p + k;
      tables.from[k][at / 16][at % 16] = 255;
      tables.order[k][p] = static_cast<uint8_t>(at % 16);
    }
  }
  return tables;
}
constexpr SplitTables kSplit = split_tables();

void split(const uint8_t* map, uint8_t* const* planes, ptrdiff_t cells) {
  constexpr ptrdiff_t kBlock = 16 * kCellScores;
  ptrdiff_t p = 0;
  for (; p + kBytes <= cells; p += kBytes) {
    Bytes v[5];
    for (int j = 0; j < 5; ++j) v[j] = load_groups(map + kCellScores * p + 16 * j, kBlock);
    for (int k = 0; k < 5; ++k) {
      Bytes plane = v[0];
      for (int j = 1; j < 5; ++j) plane = select(plane, v[j], in_groups(kSplit.from[k][j]));
      store(planes[k] + p, pick(plane, in_groups(kSplit.order[k])));
    }
  }
  uint8_t* rest[5];
  for (int k = 0; k < 5; ++k) rest[k] = planes[k] + p;
  portable::kNetworkRows.split(map + kCellScores * p, rest, cells - p);
}

}  // namespace

constinit const NetworkRows kNetworkRows = {to_input, to_bytes, smooth<4>, smooth<5>, split};

}  // namespace morvale::MORVALE_VARIANT
