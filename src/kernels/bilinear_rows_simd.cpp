#include "kernels/bilinear_rows.h"

#include <cstring>

#include "kernels/simd.h"
#include "kernels/simd_tables.h"

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
Lanes lanes_of_halves(int low, int high) {
  return halves(_mm_set1_epi16(static_cast<short>(low)), _mm_set1_epi16(static_cast<short>(high)));
}
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

inline int load_two(const uint8_t* p) {
  short v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
inline int load_four(const uint8_t* p) {
  int v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

/// Without optimisation the intrinsic is a macro, which turns the int into a short before GCC's eyes.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
template <int kLane>
__m128i insert_two(__m128i v, const uint8_t* p) {
  return _mm_insert_epi16(v, load_two(p), kLane);
}
#pragma GCC diagnostic pop

inline __m128i eight_neighbours(const uint8_t* row, const uint32_t* at) {
  __m128i v = _mm_cvtsi32_si128(load_two(row + at[0]));
  v = insert_two<1>(v, row + at[1]);
  v = insert_two<2>(v, row + at[2]);
  v = insert_two<3>(v, row + at[3]);
  v = insert_two<4>(v, row + at[4]);
  v = insert_two<5>(v, row + at[5]);
  v = insert_two<6>(v, row + at[6]);
  return insert_two<7>(v, row + at[7]);
}
inline __m128i four_pair_neighbours(const uint8_t* row, const uint32_t* at) {
  __m128i v = _mm_cvtsi32_si128(load_four(row + at[0]));
  v = _mm_insert_epi32(v, load_four(row + at[1]), 1);
  v = _mm_insert_epi32(v, load_four(row + at[2]), 2);
  return _mm_insert_epi32(v, load_four(row + at[3]), 3);
}

/// The neighbours of a block's columns in both rows. Eight or four columns of both are done before the next:
/// more offsets than that do not fit the registers.
struct BothRows {
  Bytes top, below;
};
template <int kChannels>
inline BothRows neighbours(const uint8_t* top, const uint8_t* below, const uint32_t* at, bool /*roomy*/) {
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

Bytes at_least(Bytes a, int b) {
  const Bytes limit = all_bytes(b);
  return _mm256_cmpeq_epi8(_mm256_max_epu8(a, limit), a);
}

#else

using Lanes = uint16x8_t;

Lanes all_lanes(int v) { return vdupq_n_u16(static_cast<uint16_t>(v)); }
Lanes lanes_of_halves(int low, int /*high*/) { return all_lanes(low); }
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

/// A window of 16 bytes for each column, and a table look-up that takes the neighbours out of four. Left to
/// themselves compilers gather two bytes at a time through the stack, where a wide load waits for the narrow
/// stores before it, or through the general registers, at up to five times the modelled cycles. Of the forms
/// that were tried this one is the best on A55-class and A76-class cores together, whichever compiler: loads
/// into single lanes wait for one another on the one, interleaving costs more instructions on both.
template <int kChannels>
inline Bytes row_neighbours(const uint8_t* row, const uint32_t* at) {
  const auto four = [&](const uint32_t* of, const uint8_t(&numbers)[16]) {
    const uint8x16x4_t windows = {
        {load(row + of[0]), load(row + of[1]), load(row + of[2]), load(row + of[3])}};
    return vqtbl4q_u8(windows, load(numbers));
  };
  if constexpr (kChannels == 1) {
    constexpr uint8_t kTwo[16] = {0, 1, 16, 17, 32, 33, 48, 49};
    return lower_eights(four(at, kTwo), four(at + 4, kTwo));
  } else {
    constexpr uint8_t kFour[16] = {0, 2, 1, 3, 16, 18, 17, 19, 32, 34, 33, 35, 48, 50, 49, 51};
    return four(at, kFour);
  }
}

/// The same without a byte more than the neighbours.
template <int kChannels>
inline Bytes row_neighbours_alone(const uint8_t* row, const uint32_t* at) {
  constexpr int kColumns = 8 / kChannels, kSize = 2 * kChannels;
  uint8_t gathered[kColumns * kSize];
  for (int i = 0; i < kColumns; ++i) std::memcpy(gathered + kSize * i, row + at[i], kSize);
  constexpr uint8_t kOrder[] = {0, 2, 1, 3, 4, 6, 5, 7, 8, 10, 9, 11, 12, 14, 13, 15};
  return kChannels == 1 ? load(gathered) : vqtbl1q_u8(load(gathered), load(kOrder));
}

struct BothRows {
  Bytes top, below;
};
template <int kChannels>
inline BothRows neighbours(const uint8_t* top, const uint8_t* below, const uint32_t* at, bool roomy) {
  if (roomy) return {row_neighbours<kChannels>(top, at), row_neighbours<kChannels>(below, at)};
  return {row_neighbours_alone<kChannels>(top, at), row_neighbours_alone<kChannels>(below, at)};
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

Bytes at_least(Bytes a, int b) { return vcgeq_u8(a, all_bytes(b)); }

#endif

/// Q8 positions of a row's output samples.
struct Positions {
  int first, step;
  int at(int x) const { return first + x * step; }
  int left(int x) const { return at(x) >> 8; }
  int right(int x) const { return (at(x) + 255) >> 8; }
};

/// Positions of a block's lanes behind the first one's.
template <int kChannels>
Lanes counted_steps(Positions positions) {
  return multiply_lanes(counting<kChannels>(), all_lanes(positions.step));
}

template <int kChannels>
void blend_rest(const BilinearSource& source, int position, uint8_t* dst, int width) {
  const auto rest = kChannels == 1 ? portable::kBilinearRows.bytes : portable::kBilinearRows.pairs;
  if (width > 0) rest(source, position, dst, width);
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
int blend_blocks(const BilinearSource& source, Positions positions, int limit, uint8_t* dst, int columns) {
  constexpr int kColumns = kLanes / kChannels, kStrip = 8 * kColumns;
  const uint8_t *top = source.top.data, *below = source.below.data;
  const int fy = source.fy;
  const ptrdiff_t ahead = source.ahead;
  // Columns are asked for one by one where a cache line holds fewer than four (two of pairs).
  const bool sparse = positions.step > 16 * 256;
  const Lanes counted = counted_steps<kChannels>(positions);
  const Lanes block_step = all_lanes(kColumns * positions.step);
  uint32_t at[kStrip];  // byte offsets of a strip of columns
  for (int x = 0; x < columns;) {
    x = lesser(x, columns - kColumns);
    const int strip = lesser(kStrip, (columns - x) / kColumns * kColumns);
    for (int i = 0; i < strip; ++i) at[i] = static_cast<uint32_t>(positions.left(x + i)) * kChannels;
    Lanes position = add_lanes(counted, all_lanes(positions.at(x)));
    for (int i = 0; i < strip; i += kColumns, x += kColumns) {
      const int last = static_cast<int>(at[i + kColumns - 1]);
      if (last >= limit * kChannels) return x;
      if (ahead != 0) {
        if (sparse) {
          prefetch<kColumns, 1>(top + ahead, below + ahead, at + i);
        } else {
          prefetch<kColumns, 4 / kChannels>(top + ahead, below + ahead, at + i);
        }
      }
      const BothRows both = neighbours<kChannels>(top, below, at + i, last + 16 <= (limit + 1) * kChannels);
      const Lanes fx = low_bytes(position);
      store_rows_mix(dst + x * kChannels, mix_columns(both.top, fx), mix_columns(both.below, fx), fy);
      position = add_lanes(position, block_step);
    }
  }
  return columns;
}

/// What 64 bytes hold, from which the eight output bytes of each half of a block can be picked.
template <int kChannels>
struct Near {
  static constexpr int kColumns = 8 / kChannels;  ///< output columns of a half
  static constexpr int kSource = 64 / kChannels;  ///< source columns

  /// Whether that is so at this step, in a row of `span` source columns.
  static bool holds(Positions positions, int span) {
    return (((kColumns - 1) * positions.step + 510) >> 8) + 1 <= kSource && span >= kSource;
  }
  /// Numbers of the bytes of both neighbours, from the left one's column in each lane.
  static Bytes numbers(Lanes column) {
    constexpr uint8_t kPairs[16] = {0, 2, 1, 3, 0, 2, 1, 3, 0, 2, 1, 3, 0, 2, 1, 3};
    const Bytes offsets = kChannels == 1 ? as_bytes(all_lanes(256)) : for_each_half(kPairs);
    return add(as_bytes(multiply_lanes(column, all_lanes(257 * kChannels))), offsets);
  }
};

/// Columns so near each other that a table look-up replaces most loads. As in blend_blocks, no block is
/// done that needs a column behind `limit`; the bytes to pick from lie between the row's first column and
/// that one.
template <int kChannels>
int blend_near(const BilinearSource& source, Positions positions, int limit, uint8_t* dst, int columns) {
  using Half = Near<kChannels>;
  constexpr int kColumns = kLanes / kChannels;
  const Lanes counted = counted_steps<kChannels>(positions);
  const int last_begin = limit + 1 - Half::kSource;
  for (int x = 0; x < columns; x += kColumns) {
    x = lesser(x, columns - kColumns);
    if (positions.right(x + kColumns - 1) > limit) return x;
    const int low = lesser(positions.left(x), last_begin);
    const int high = lesser(positions.left(x + kColumns - Half::kColumns), last_begin);
    const ptrdiff_t low_byte = ptrdiff_t{kChannels} * low, high_byte = ptrdiff_t{kChannels} * high;
    const uint8_t *top = source.top.data, *below = source.below.data;
    if (source.ahead != 0) {
      __builtin_prefetch(top + source.ahead + low_byte);
      __builtin_prefetch(below + source.ahead + low_byte);
      if constexpr (kColumns > Half::kColumns) {
        __builtin_prefetch(top + source.ahead + high_byte);
        __builtin_prefetch(below + source.ahead + high_byte);
      }
    }
    const int at = positions.at(x);
    const Lanes position = add_lanes(counted, lanes_of_halves(at - 256 * low, at - 256 * high));
    const WindowPick<4> pick(Half::numbers(high_bytes(position)));
    const Lanes fx = low_bytes(position);
    const auto mixed = [&](const uint8_t* row) {
      return mix_columns(pick_from_windows<4, false>(row + low_byte, row + high_byte, 16, 0, pick), fx);
    };
    store_rows_mix(dst + x * kChannels, mixed(top), mixed(below), source.fy);
  }
  return columns;
}

/// A source of 17 to 32 bytes lies in two registers: columns are picked by a shuffle.
void blend_short(const BilinearSource& source, Positions positions, int span, uint8_t* dst, int columns) {
  const int first = positions.left(0);
  const ByteTable top = byte_table(source.top.data + first, source.top.data + first + span - 16);
  const ByteTable below = byte_table(source.below.data + first, source.below.data + first + span - 16);
  const Lanes counted = add_lanes(counted_steps<1>(positions), all_lanes(positions.first - 256 * first));
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
                   source.fy);
    x = begin + kLanes;
  }
}

/// Apart, so that a row that is only sampled does not pay for saving the registers that are needed here.
template <int kChannels>
[[gnu::noinline]] void blend_row(const BilinearSource& source, Positions positions, uint8_t* dst, int width) {
  const int columns = width / kChannels;  // a sample that does not fit is left to the portable loop
  int done = 0;
  if (columns >= kLanes / kChannels) {
    const int last = positions.right(columns - 1), span = last - positions.left(0) + 1;
    const int inside = lesser(source.top.last, source.below.last), limit = lesser(last, inside);
    if (kChannels == 1 && span > 16 && span <= 32 && last <= inside) {
      blend_short(source, positions, span, dst, columns);
      done = columns;
    } else if (Near<kChannels>::holds(positions, limit - positions.left(0) + 1)) {
      done = blend_near<kChannels>(source, positions, limit, dst, columns);
    } else {
      done = blend_blocks<kChannels>(source, positions, limit, dst, columns);
    }
  }
  blend_rest<kChannels>(source, positions.at(done), dst + done * kChannels, width - done * kChannels);
}

template <int kChannels>
void bilinear(const BilinearSource& source, int position, uint8_t* dst, int width) {
  const Positions positions{position, source.step};
  const bool sampled = source.fy == 0 && ((position | source.step) & 255) == 0 && width % kChannels == 0;
  if (sampled && positions.left(width / kChannels - 1) <= source.top.last) {
    sample_row<kChannels>(source.top.data + ptrdiff_t{kChannels} * positions.left(0),
                          ptrdiff_t{kChannels} * (source.step >> 8), dst, width / kChannels);
  } else {
    blend_row<kChannels>(source, positions, dst, width);
  }
}

}  // namespace

constinit const BilinearRows kBilinearRows = {bilinear<1>, bilinear<2>};

}  // namespace morvale::MORVALE_VARIANT
