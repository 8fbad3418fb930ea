#include "kernels/resample_rows.h"

#include <cstring>

#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

/// Lanes of 16 bits in a vector: the output bytes of one block.
constexpr int kLanes = static_cast<int>(kBytes) / 2;

// A lane of "neighbours" holds a sample's byte below that of the sample to its right. A row's mix of them is
// 256 a + fx (b - a), which fits 16 bits unsigned; so does the sum of two such rows by 256 - fy and fy,
// shifted by 16.

#if defined(__AVX2__)

using Lanes = __m256i;

Lanes all_lanes(int v) { return _mm256_set1_epi16(static_cast<short>(v)); }
Lanes add_lanes(Lanes a, Lanes b) { return _mm256_add_epi16(a, b); }
Lanes multiply_lanes(Lanes a, Lanes b) { return _mm256_mullo_epi16(a, b); }
Lanes low_bytes(Lanes v) { return _mm256_and_si256(v, _mm256_set1_epi16(255)); }
Lanes high_bytes(Lanes v) { return _mm256_srli_epi16(v, 8); }
Bytes as_bytes(Lanes v) { return v; }

/// 0, 1, 2, ... for bytes; each number twice for pairs.
template <int kChannels>
Lanes counting() {
  if constexpr (kChannels == 1) {
    return _mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  } else {
    return _mm256_setr_epi16(0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7);
  }
}

int load16(const uint8_t* p) {
  short v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
int load32(const uint8_t* p) {
  int v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

inline __m128i eight_neighbours(const uint8_t* row, const uint32_t* at) {
  __m128i v = _mm_cvtsi32_si128(load16(row + at[0]));
  v = _mm_insert_epi16(v, load16(row + at[1]), 1);
  v = _mm_insert_epi16(v, load16(row + at[2]), 2);
  v = _mm_insert_epi16(v, load16(row + at[3]), 3);
  v = _mm_insert_epi16(v, load16(row + at[4]), 4);
  v = _mm_insert_epi16(v, load16(row + at[5]), 5);
  v = _mm_insert_epi16(v, load16(row + at[6]), 6);
  return _mm_insert_epi16(v, load16(row + at[7]), 7);
}
inline __m128i four_pair_neighbours(const uint8_t* row, const uint32_t* at) {
  __m128i v = _mm_cvtsi32_si128(load32(row + at[0]));
  v = _mm_insert_epi32(v, load32(row + at[1]), 1);
  v = _mm_insert_epi32(v, load32(row + at[2]), 2);
  return _mm_insert_epi32(v, load32(row + at[3]), 3);
}

/// The neighbours of a block's columns in both rows. Eight or four columns of both are done before the next:
/// more offsets than that do not fit the registers.
struct BothRows {
  Bytes top, below;
};
template <int kChannels>
inline BothRows neighbours(const uint8_t* top, const uint8_t* below, const uint32_t* at) {
  if constexpr (kChannels == 1) {
    const __m128i t = eight_neighbours(top, at), b = eight_neighbours(below, at);
    return {_mm256_set_m128i(eight_neighbours(top, at + 8), t),
            _mm256_set_m128i(eight_neighbours(below, at + 8), b)};
  } else {
    const __m128i t = four_pair_neighbours(top, at), b = four_pair_neighbours(below, at);
    const Bytes tops = _mm256_set_m128i(four_pair_neighbours(top, at + 4), t);
    const Bytes belows = _mm256_set_m128i(four_pair_neighbours(below, at + 4), b);
    const __m256i order =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 2, 1, 3, 4, 6, 5, 7, 8, 10, 9, 11, 12, 14, 13, 15));
    return {_mm256_shuffle_epi8(tops, order), _mm256_shuffle_epi8(belows, order)};
  }
}

inline Lanes mix_columns(Bytes pairs, Lanes fx) {
  const Lanes step = _mm256_sub_epi16(high_bytes(pairs), low_bytes(pairs));
  return _mm256_add_epi16(_mm256_slli_epi16(pairs, 8), _mm256_mullo_epi16(step, fx));
}

/// Stores sixteen results that came out 128 too low.
inline void store_words(uint8_t* dst, __m256i words) {
  const __m128i bytes = _mm_packs_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_xor_si128(bytes, _mm_set1_epi8(-128)));
}

/// The multiply-add takes signed lanes: both rows go in 32768 lower, which the weights' sum of 256 turns into
/// 128 after the shift.
inline void store_rows_mix(uint8_t* dst, Lanes top, Lanes below, int fy) {
  const __m256i sign = _mm256_set1_epi16(-32768);
  const __m256i weights = _mm256_set1_epi32((256 - fy) | fy << 16);
  const __m256i a = _mm256_xor_si256(top, sign), b = _mm256_xor_si256(below, sign);
  const __m256i low = _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), weights);
  const __m256i high = _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), weights);
  const __m256i words = _mm256_packs_epi32(_mm256_srai_epi32(low, 16), _mm256_srai_epi32(high, 16));
  store_words(dst, words);
}

inline __m128i load_half(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

/// 32 bytes to pick from: both 128-bit halves hold the first 16 in `low`, the others in `high`.
struct ByteTable {
  __m256i low, high;
};
ByteTable byte_table(const uint8_t* low, const uint8_t* high) {
  return {_mm256_broadcastsi128_si256(load_half(low)), _mm256_broadcastsi128_si256(load_half(high))};
}
/// The shuffle gives 0 where the top bit of its index is set, so each half of the table leaves the other's
/// bytes alone.
Bytes pick(const ByteTable& table, Bytes index) {
  return _mm256_or_si256(_mm256_shuffle_epi8(table.low, _mm256_adds_epu8(index, _mm256_set1_epi8(0x70))),
                         _mm256_shuffle_epi8(table.high, _mm256_sub_epi8(index, _mm256_set1_epi8(16))));
}

/// Two runs of 24 bytes, one behind the other: each half picks from its own.
ByteTable two_dozen_bytes(const uint8_t* p) {
  const auto halves = [](const uint8_t* low, const uint8_t* high) {
    return _mm256_set_m128i(load_half(high), load_half(low));
  };
  return {halves(p, p + 24), halves(p + 8, p + 32)};
}
/// The same 16 bytes for each half.
Bytes for_each_half(const uint8_t* p) { return _mm256_broadcastsi128_si256(load_half(p)); }
Bytes at_least(Bytes a, int b) {
  const Bytes limit = all_bytes(b);
  return _mm256_cmpeq_epi8(_mm256_max_epu8(a, limit), a);
}

#else

using Lanes = uint16x8_t;

Lanes all_lanes(int v) { return vdupq_n_u16(static_cast<uint16_t>(v)); }
Lanes add_lanes(Lanes a, Lanes b) { return vaddq_u16(a, b); }
Lanes multiply_lanes(Lanes a, Lanes b) { return vmulq_u16(a, b); }
Lanes low_bytes(Lanes v) { return vandq_u16(v, vdupq_n_u16(255)); }
Lanes high_bytes(Lanes v) { return vshrq_n_u16(v, 8); }
Bytes as_bytes(Lanes v) { return vreinterpretq_u8_u16(v); }

template <int kChannels>
Lanes counting() {
  constexpr uint16_t kBytesCount[] = {0, 1, 2, 3, 4, 5, 6, 7}, kPairsCount[] = {0, 0, 1, 1, 2, 2, 3, 3};
  return vld1q_u16(kChannels == 1 ? kBytesCount : kPairsCount);
}

template <int kChannels>
inline Bytes row_neighbours(const uint8_t* row, const uint32_t* at) {
  if constexpr (kChannels == 1) {
    uint16_t v[8];
    for (int i = 0; i < 8; ++i) std::memcpy(v + i, row + at[i], 2);
    return vreinterpretq_u8_u16(vld1q_u16(v));
  } else {
    uint32_t v[4];
    for (int i = 0; i < 4; ++i) std::memcpy(v + i, row + at[i], 4);
    const Bytes pairs = vreinterpretq_u8_u32(vld1q_u32(v));
    constexpr uint8_t kOrder[] = {0, 2, 1, 3, 4, 6, 5, 7, 8, 10, 9, 11, 12, 14, 13, 15};
    return vqtbl1q_u8(pairs, vld1q_u8(kOrder));
  }
}

struct BothRows {
  Bytes top, below;
};
template <int kChannels>
inline BothRows neighbours(const uint8_t* top, const uint8_t* below, const uint32_t* at) {
  return {row_neighbours<kChannels>(top, at), row_neighbours<kChannels>(below, at)};
}

inline Lanes mix_columns(Bytes pairs, Lanes fx) {
  const Lanes v = vreinterpretq_u16_u8(pairs);
  return vmlaq_u16(vshlq_n_u16(v, 8), vsubq_u16(high_bytes(v), low_bytes(v)), fx);
}

inline void store_rows_mix(uint8_t* dst, Lanes top, Lanes below, int fy) {
  const auto wa = static_cast<uint16_t>(256 - fy), wb = static_cast<uint16_t>(fy);
  const uint32x4_t low = vmlal_n_u16(vmull_n_u16(vget_low_u16(top), wa), vget_low_u16(below), wb);
  const uint32x4_t high = vmlal_n_u16(vmull_n_u16(vget_high_u16(top), wa), vget_high_u16(below), wb);
  vst1_u8(dst, vmovn_u16(vcombine_u16(vshrn_n_u32(low, 16), vshrn_n_u32(high, 16))));
}

using ByteTable = uint8x16x2_t;
ByteTable byte_table(const uint8_t* low, const uint8_t* high) { return {{vld1q_u8(low), vld1q_u8(high)}}; }
Bytes pick(const ByteTable& table, Bytes index) { return vqtbl2q_u8(table, index); }
ByteTable two_dozen_bytes(const uint8_t* p) { return byte_table(p, p + 8); }
Bytes for_each_half(const uint8_t* p) { return load(p); }
Bytes at_least(Bytes a, int b) { return vcgeq_u8(a, all_bytes(b)); }

#endif

int lesser(int a, int b) { return a < b ? a : b; }

/// Q8 positions of a row's output samples.
struct Positions {
  int first, step;
  int at(int x) const { return first + x * step; }
  int left(int x) const { return at(x) >> 8; }
  int right(int x) const { return (at(x) + 255) >> 8; }
};

template <int kChannels>
void bilinear_portable(const BilinearRows& rows, int position, uint8_t* dst, int width) {
  const auto loop =
      kChannels == 1 ? portable::kResampleRows.bilinear_bytes : portable::kResampleRows.bilinear_pairs;
  loop(rows, position, dst, width);
}

/// Every fraction is 0: one sample each, `step` bytes apart.
template <int kChannels>
void sample_row(const uint8_t* src, ptrdiff_t step, uint8_t* dst, int columns) {
  int x = 0;
  for (; x + 8 <= columns; x += 8, src += 8 * step, dst += 8 * kChannels) {
    const ptrdiff_t step3 = 3 * step, step5 = 5 * step, step7 = 7 * step;
    std::memcpy(dst, src, kChannels);
    std::memcpy(dst + kChannels, src + step, kChannels);
    std::memcpy(dst + 2 * kChannels, src + 2 * step, kChannels);
    std::memcpy(dst + 3 * kChannels, src + step3, kChannels);
    std::memcpy(dst + 4 * kChannels, src + 4 * step, kChannels);
    std::memcpy(dst + 5 * kChannels, src + step5, kChannels);
    std::memcpy(dst + 6 * kChannels, src + 2 * step3, kChannels);
    std::memcpy(dst + 7 * kChannels, src + step7, kChannels);
  }
  for (; x < columns; ++x, src += step, dst += kChannels) std::memcpy(dst, src, kChannels);
}

/// Asks for the cache lines where columns of the next output row lie.
template <int kColumns, int kEvery>
inline void prefetch(const uint8_t* top, const uint8_t* below, const uint32_t* at) {
  for (int i = 0; i < kColumns; i += kEvery) {
    __builtin_prefetch(top + at[i]);
    __builtin_prefetch(below + at[i]);
  }
}

/// Whole blocks of kLanes output bytes; the last one moves back to end with the row. Each column loads its
/// right neighbour too, whatever its weight: a block that would so read past column `limit` is not done, nor
/// is any behind it. Returns the columns done.
template <int kChannels>
int bilinear_blocks(const BilinearRows& rows, Positions positions, int limit, uint8_t* dst, int columns) {
  constexpr int kColumns = kLanes / kChannels, kStrip = 8 * kColumns;
  const uint8_t *top = rows.top.data, *below = rows.below.data;
  const int fy = rows.fy;
  const ptrdiff_t ahead = rows.ahead;
  // Columns are asked for one by one where a cache line holds fewer than four (two of pairs).
  const bool sparse = positions.step > 16 * 256;
  const Lanes counted = multiply_lanes(counting<kChannels>(), all_lanes(positions.step));
  const Lanes block_step = all_lanes(kColumns * positions.step);
  uint32_t at[kStrip];  // byte offsets of a strip of columns
  for (int x = 0; x < columns;) {
    x = lesser(x, columns - kColumns);
    const int strip = lesser(kStrip, (columns - x) / kColumns * kColumns);
    for (int i = 0; i < strip; ++i) at[i] = static_cast<uint32_t>(positions.left(x + i)) * kChannels;
    Lanes position = add_lanes(counted, all_lanes(positions.at(x)));
    for (int i = 0; i < strip; i += kColumns, x += kColumns) {
      if (static_cast<int>(at[i + kColumns - 1]) >= limit * kChannels) return x;
      if (ahead != 0) {
        if (sparse) {
          prefetch<kColumns, 1>(top + ahead, below + ahead, at + i);
        } else {
          prefetch<kColumns, 4 / kChannels>(top + ahead, below + ahead, at + i);
        }
      }
      const BothRows both = neighbours<kChannels>(top, below, at + i);
      const Lanes fx = low_bytes(position);
      store_rows_mix(dst + x * kChannels, mix_columns(both.top, fx), mix_columns(both.below, fx), fy);
      position = add_lanes(position, block_step);
    }
  }
  return columns;
}

/// A source of 17 to 32 bytes lies in two registers: columns are picked by a shuffle.
void bilinear_short(const BilinearRows& rows, Positions positions, int span, uint8_t* dst, int columns) {
  const int first = positions.left(0);
  const ByteTable top = byte_table(rows.top.data + first, rows.top.data + first + span - 16);
  const ByteTable below = byte_table(rows.below.data + first, rows.below.data + first + span - 16);
  const Lanes counted = add_lanes(multiply_lanes(counting<1>(), all_lanes(positions.step)),
                                  all_lanes(positions.first - 256 * first));
  for (int x = 0; x < columns;) {
    const int begin = lesser(x, columns - kLanes);
    const Lanes position = add_lanes(counted, all_lanes(begin * positions.step));
    const Lanes left = high_bytes(position);
    // Column c's lane asks for bytes c and c + 1. The upper register ends with the span: bytes from 16 on lie
    // 32 - span further up in it. A last column of fraction 0 picks what is no neighbour, by weight 0.
    const Bytes column = as_bytes(add_lanes(multiply_lanes(left, all_lanes(257)), all_lanes(256)));
    const Bytes index = add(column, bit_and(at_least(column, 16), all_bytes(32 - span)));
    const Lanes fx = low_bytes(position);
    store_rows_mix(dst + begin, mix_columns(pick(top, index), fx), mix_columns(pick(below, index), fx),
                   rows.fy);
    x = begin + kLanes;
  }
}

template <int kChannels>
void bilinear(const BilinearRows& rows, int position, uint8_t* dst, int width) {
  const Positions positions{position, rows.step};
  const int columns = width / kChannels;  // a sample that does not fit is left to the portable loop
  int done = 0;
  if (columns >= kLanes / kChannels) {
    const int last = positions.right(columns - 1), span = last - positions.left(0) + 1;
    const int inside = lesser(rows.top.last, rows.below.last), limit = lesser(last, inside);
    if (rows.fy == 0 && ((position | rows.step) & 255) == 0 && last <= inside) {
      sample_row<kChannels>(rows.top.data + ptrdiff_t{kChannels} * positions.left(0),
                            ptrdiff_t{kChannels} * (rows.step >> 8), dst, columns);
      done = columns;
    } else if (kChannels == 1 && span > 16 && span <= 32 && last <= inside) {
      bilinear_short(rows, positions, span, dst, columns);
      done = columns;
    } else {
      done = bilinear_blocks<kChannels>(rows, positions, limit, dst, columns);
    }
  }
  bilinear_portable<kChannels>(rows, positions.at(done), dst + done * kChannels, width - done * kChannels);
}

// ---- Half ratio 1.5: three source columns give two ----

/// The sum of four is 2 (p + q) + r + s with the floor means p, q and the odd bits r, s of its two pairs: the
/// mean of p and q, rounded up only where both bits are odd too.
Bytes mean_of_four(Bytes a, Bytes b, Bytes c, Bytes d) {
  const Bytes p = average_down(a, b), q = average_down(c, d);
  const Bytes carry = bit_and(bit_and(bit_xor(a, b), bit_xor(c, d)), bit_and(bit_xor(p, q), all_bytes(1)));
  return add(average_down(p, q), carry);
}

/// Where 16 output bytes find their source among 24: an even column its sample, an odd one the two behind
/// it. The table's upper register begins at byte 8, so bytes from 16 on lie 8 further up.
struct ThreeToTwo {
  uint8_t first[16], second[16];
};
constexpr ThreeToTwo kByteThirds = {{0, 1, 3, 4, 6, 7, 9, 10, 12, 13, 15, 24, 26, 27, 29, 30},
                                    {0, 2, 3, 5, 6, 8, 9, 11, 12, 14, 15, 25, 26, 28, 29, 31}};
constexpr ThreeToTwo kPairThirds = {{0, 1, 2, 3, 6, 7, 8, 9, 12, 13, 14, 15, 26, 27, 28, 29},
                                    {0, 1, 4, 5, 6, 7, 10, 11, 12, 13, 24, 25, 26, 27, 30, 31}};

template <int kChannels>
void half_ratio(const HalfRatioRows& rows, int column, uint8_t* above, uint8_t* under, int width) {
  constexpr int kBlock = static_cast<int>(kBytes), kSourceColumns = kBlock / 2 * 3 / kChannels;
  const int inside = lesser(rows.first.last, lesser(rows.upper.last, rows.lower.last));
  const ThreeToTwo& thirds = kChannels == 1 ? kByteThirds : kPairThirds;
  const Bytes first = for_each_half(thirds.first), second = for_each_half(thirds.second);
  int x = 0;
  // Other ratios than 1.5 are rare and stay with the portable loop.
  for (; rows.ix == 1 && x + kBlock <= width && column + kSourceColumns - 1 <= inside;
       x += kBlock, column += kSourceColumns) {
    const ptrdiff_t byte = ptrdiff_t{kChannels} * column;
    const ByteTable a = two_dozen_bytes(rows.first.data + byte), b = two_dozen_bytes(rows.upper.data + byte);
    const ByteTable c = two_dozen_bytes(rows.lower.data + byte);
    // An even column finds one sample twice: it is its own mean, and the mean of four is that of two.
    store(above + x, average_down(pick(a, first), pick(a, second)));
    store(under + x, mean_of_four(pick(b, first), pick(b, second), pick(c, first), pick(c, second)));
  }
  const auto tail =
      kChannels == 1 ? portable::kResampleRows.half_ratio_bytes : portable::kResampleRows.half_ratio_pairs;
  tail(rows, column, above + x, under + x, width - x);
}

}  // namespace

constinit const ResampleRows kResampleRows = {bilinear<1>, bilinear<2>, half_ratio<1>, half_ratio<2>};

}  // namespace morvale::MORVALE_VARIANT
