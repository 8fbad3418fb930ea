#include "kernels/half_ratio_rows.h"
#include "kernels/simd.h"
#include "kernels/simd_tables.h"

namespace morvale::MORVALE_VARIANT {
namespace {

/// The two samples that each output byte is the mean of. An even column finds one sample twice: it is its own
/// mean, and the mean of four is that of two.
struct Samples {
  Bytes first, second;
};

/// The sum of four is 2 (p + q) + r + s with the floor means p, q and the odd bits r, s of its two pairs: the
/// mean of p and q, rounded up only where both bits are odd too.
Bytes mean_of_four(Samples upper, Samples lower) {
  const Bytes p = average_down(upper.first, upper.second), q = average_down(lower.first, lower.second);
  const Bytes both_odd = bit_and(bit_xor(upper.first, upper.second), bit_xor(lower.first, lower.second));
  return add(average_down(p, q), bit_and(both_odd, bit_and(bit_xor(p, q), all_bytes(1))));
}

/// Source columns in pairs of output columns: what one pair takes, how far its last sample lies behind its
/// first, and how many pairs fill a block.
template <int kChannels>
struct Runs {
  explicit Runs(int ix) : columns(2 * ix + 1), reach(ix + 1) {}
  static constexpr int kBlock = static_cast<int>(kBytes) / 2 / kChannels;
  int columns, reach;
};

/// Ratio 1.5: 16 output bytes find their sources among 24.
template <int kChannels>
class ThreeToTwo {
 public:
  Samples operator()(const uint8_t* p) const {
    const ByteTable bytes = two_dozen_bytes(p);
    return {pick(bytes, first_), pick(bytes, second_)};
  }

 private:
  // The table's upper register begins at byte 8, so bytes from 16 on lie 8 further up.
  static constexpr uint8_t kFirst[2][16] = {{0, 1, 3, 4, 6, 7, 9, 10, 12, 13, 15, 24, 26, 27, 29, 30},
                                            {0, 1, 2, 3, 6, 7, 8, 9, 12, 13, 14, 15, 26, 27, 28, 29}};
  static constexpr uint8_t kSecond[2][16] = {{0, 2, 3, 5, 6, 8, 9, 11, 12, 14, 15, 25, 26, 28, 29, 31},
                                             {0, 1, 4, 5, 6, 7, 10, 11, 12, 13, 24, 25, 26, 27, 30, 31}};
  Bytes first_ = for_each_half(kFirst[kChannels - 1]), second_ = for_each_half(kSecond[kChannels - 1]);
};

/// Any other ratio: a window of 16 bytes holds the samples of a pair of output columns, for one load a run
/// where single samples would be two, and one look-up for several runs.
template <int kChannels, bool kSplit>
class Windows {
 public:
  /// Where in a window the even column's sample lies and the left one of the odd column's.
  struct Place {
    int even, left;
  };

  Windows(Runs<kChannels> runs, Place place)
      : step_(ptrdiff_t{kChannels} * runs.columns),
        gap_(ptrdiff_t{kChannels} * (runs.reach + 1) - 8),
        pick_(numbers(place)) {}

  Samples operator()(const uint8_t* p) const {
    const Bytes a = eight(p), b = eight(p + kCount * step_);
    return {lower_eights(a, b), upper_eights(a, b)};
  }

 private:
  static constexpr int kCount = 4 / kChannels;  // windows for eight output bytes

  /// Of eight first samples and the eight second ones behind them: what of their numbers does not hang on the
  /// ratio, and which are an odd column's.
  struct Layout {
    uint8_t base[16], odd[16];
  };
  // never run: made while compiling
  static constexpr Layout layout() {
    Layout result{};
    for (int i = 0; i < 16; ++i) {
      const int byte = i % 8, odd = byte / kChannels % 2, second = i / 8;
      result.base[i] =
          static_cast<uint8_t>(byte / (2 * kChannels) * 16 + byte % kChannels + odd * second * kChannels);
      result.odd[i] = odd != 0 ? 255 : 0;
    }
    return result;
  }
  /// The samples of eight output bytes, the first ones in front; on AVX2 in the upper half of those 16
  /// further on.
  Bytes eight(const uint8_t* p) const {
    return pick_from_windows<kCount, kSplit>(p, p + 2 * kCount * step_, step_, gap_, pick_);
  }

  static Bytes numbers(Place place) {
    static constexpr Layout kLayout = layout();
    const Bytes to_left = all_bytes(kChannels * (place.left - place.even));
    return add(add(for_each_half(kLayout.base), all_bytes(kChannels * place.even)),
               bit_and(for_each_half(kLayout.odd), to_left));
  }

  ptrdiff_t step_, gap_;
  WindowPick<kCount> pick_;
};

/// The rows of one call, and what of them is done.
template <int kChannels>
struct Progress {
  const HalfRatioSource& source;
  Runs<kChannels> runs;
  int column;   ///< the first source column
  int columns;  ///< output columns, an even number
  int last;     ///< the last source column that may be read
  uint8_t *above, *under;
  int done = 0;

  /// The next block's first output column: the last block moves back to end with the row.
  int next() const { return lesser(done, columns - 2 * Runs<kChannels>::kBlock); }
  int source_of(int x) const { return column + x / 2 * runs.columns; }
  bool more() const { return done < columns; }

  /// Blocks for as long as they read no further than `reach` columns behind the last run's first, nor more
  /// than `before` columns before the first run's.
  template <class Find>
  void fill(const Find& find, int reach, int before) {
    constexpr int kBlock = Runs<kChannels>::kBlock;
    while (more()) {
      const int x = next(), c = source_of(x);
      if (c - before < column || c + (kBlock - 1) * runs.columns + reach > last) return;
      const ptrdiff_t byte = ptrdiff_t{kChannels} * (c - before), out = ptrdiff_t{kChannels} * x;
      const Samples first = find(source.first.data + byte);
      store(above + out, average_down(first.first, first.second));
      store(under + out, mean_of_four(find(source.upper.data + byte), find(source.lower.data + byte)));
      done = x + 2 * kBlock;
    }
  }
};

/// Fills what can be filled in blocks: windows must not reach beyond the samples that the rule asks for.
template <int kChannels>
void fill_blocks(Progress<kChannels>& rows, int ix) {
  constexpr int kWindow = 16 / kChannels;
  const Runs<kChannels> runs = rows.runs;
  const int spare = kWindow - 1 - runs.reach;  // what of a window lies outside a run's samples
  if (ix == 1) {
    rows.fill(ThreeToTwo<kChannels>(), runs.reach, 0);
  } else if (spare < 0) {
    // A run too long for one window: one half begins with its first sample, the other ends with its last.
    rows.fill(Windows<kChannels, true>(runs, {0, kWindow - 2}), runs.reach, 0);
  } else {
    rows.fill(Windows<kChannels, false>(runs, {0, ix}), kWindow - 1, 0);
    // The last blocks' windows end with their last sample instead of beginning with the first.
    if (rows.more()) rows.fill(Windows<kChannels, false>(runs, {spare, spare + ix}), runs.reach, spare);
  }
}

template <int kChannels>
void half_ratio(const HalfRatioSource& source, int column, uint8_t* above, uint8_t* under, int width) {
  const Runs<kChannels> runs(source.ix);
  const int columns = width / kChannels & ~1;
  Progress<kChannels> rows{source, runs, column, columns, 0, above, under};
  const int inside = lesser(source.first.last, lesser(source.upper.last, source.lower.last));
  rows.last = lesser(rows.source_of(columns - 2) + runs.reach, inside);
  if (columns >= 2 * Runs<kChannels>::kBlock) fill_blocks(rows, source.ix);
  const auto rest = kChannels == 1 ? portable::kHalfRatioRows.bytes : portable::kHalfRatioRows.pairs;
  const ptrdiff_t out = ptrdiff_t{kChannels} * rows.done;
  rest(source, rows.source_of(rows.done), above + out, under + out, width - kChannels * rows.done);
}

}  // namespace

constinit const HalfRatioRows kHalfRatioRows = {half_ratio<1>, half_ratio<2>};

}  // namespace morvale::MORVALE_VARIANT
