/// Front camera: brightness and colour of one face.
#include <algorithm>
#include <array>
#include <cstdlib>

#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include "core/lost_record.h"
#include "core/numeric.h"
#include "kernels/kernel_set.h"
#include "platform/log.h"

namespace morvale {
namespace {

/// Faces that the record has figures for.
constexpr int kLastFaceIndex = 2;

/// Per cent cut from both ends of the sorted samples, and width of the bands next to the cuts. Skin seen
/// through a display is noisier at both ends. When the hue bands lie more than 40 degrees from the mean, all
/// channels are taken again with the wide trim.
struct Trim {
  double cut, band;
};
constexpr Trim kTrim = {3, 7};
constexpr Trim kTrimUnderDisplay = {5, 7};
constexpr Trim kTrimWide = {10, 5};
constexpr int32_t kMaxHueSpread = 40;

/// The samples of one channel, counted by value: counts[k] of them are lowest + k.
struct Histogram {
  const uint32_t* counts;
  int size, lowest;

  /// Replaces every n by the sum of the n lowest samples. The numbers ascend; none exceeds the samples.
  template <size_t kNumbers>
  void sum_lowest(std::array<int64_t, kNumbers>& numbers) const {
    int64_t taken = 0, sum = 0;
    size_t next = 0;
    for (int k = 0; k < size && next < kNumbers; ++k) {
      const int64_t count = counts[k], value = lowest + k;
      for (; next < kNumbers && numbers[next] <= taken + count; ++next) {
        numbers[next] = sum + (numbers[next] - taken) * value;
      }
      taken += count;
      sum += count * value;
    }
  }
};

/// Per channel: mean of the trimmed samples, and of the bands at their low and high end.
struct Bands {
  int32_t mean, low, high;

  int32_t below() const { return std::abs(mean - low); }
  int32_t above() const { return std::abs(high - mean); }
};

/// Mean of `samples` samples, truncated toward zero; an empty band gives 0.
int32_t band_mean(int64_t sum, int32_t samples) {
  return samples <= 0 ? 0 : static_cast<int32_t>(sum / samples);
}

/// The bands of n samples. Their edges are places in the sorted list, formed left to right in double
/// precision and truncated: the order decides which samples fall into a band.
Bands bands(const Histogram& samples, int32_t n, Trim trim) {
  const double p = n / 100.0;
  const int32_t low_first = to_int32(trim.cut * p);
  const int32_t low_end = to_int32(trim.cut * p + trim.band * p);
  const int32_t high_end = to_int32(n - trim.cut * p);
  const int32_t high_first = to_int32(n - trim.cut * p - trim.band * p);
  std::array<int64_t, 4> below = {low_first, low_end, high_first, high_end};
  samples.sum_lowest(below);
  return {band_mean(below[3] - below[0], high_end - low_first),
          band_mean(below[1] - below[0], low_end - low_first),
          band_mean(below[3] - below[2], high_end - high_first)};
}

struct ColourFigures {
  Bands hue, saturation, value;
};

ColourFigures colour_figures(const FaceCounts& counts, Trim trim) {
  const uint32_t* bins = counts.bins[0];
  const auto n = static_cast<int32_t>(counts.colour_pixels);
  return {bands({bins + FaceCounts::kHueBins, FaceCounts::kHues, FaceCounts::kLowestHue}, n, trim),
          bands({bins + FaceCounts::kSaturationBins, FaceCounts::kBytes, 0}, n, trim),
          bands({bins + FaceCounts::kValueBins, FaceCounts::kBytes, 0}, n, trim)};
}

ColourFigures robust_colour_figures(const FaceCounts& counts, Trim trim) {
  const ColourFigures figures = colour_figures(counts, trim);
  const bool scattered = figures.hue.below() > kMaxHueSpread || figures.hue.above() > kMaxHueSpread;
  return scattered ? colour_figures(counts, kTrimWide) : figures;
}

/// All pixels of the rectangle, the bins of the sets in set 0.
FaceCounts count_pixels(const uint8_t* c2, const uint8_t* luma, const uint8_t* rgb, const uint8_t* mask,
                        int W, int left, int right, int top, int bottom) {
  FaceCounts counts;
  if (left >= right) return counts;
  // All planes are walked with the map's width, the luma plane too, although a shrunk portrait frame has
  // shorter rows.
  for (int y = top; y < bottom; ++y) {
    const ptrdiff_t i = static_cast<ptrdiff_t>(y) * W + left;
    kernels().face.count_face(c2 + i, mask + i, luma + i, rgb + 3 * i, ptrdiff_t{right} - left, counts);
  }
  for (int set = 1; set < FaceCounts::kSets; ++set) {
    for (int k = 0; k < FaceCounts::kBins; ++k) counts.bins[0][k] += counts.bins[set][k];
  }
  return counts;
}

int32_t mean_luma(const FaceCounts& counts) {
  if (counts.luma_pixels == 0) return 0;
  const auto pixels = static_cast<int32_t>(counts.luma_pixels);
  return to_int32(static_cast<float>(counts.luma_sum) / static_cast<float>(pixels));
}

/// Share of the enlarged label map, per thousand.
int32_t map_share(double area, double map_area) {
  return std::max(to_int32(area / map_area * 100.0 * 10.0), 0);
}

}  // namespace
}  // namespace morvale

using namespace morvale;

void MorvaleCore::WriteFaceInfo(uint8_t* c2, uint8_t* luma, uint8_t* rgb, uint8_t* faceMask, int W,
                                int /*unused*/, int left, int right, int top, int bottom, int faceIndex) {
  if (faceIndex < 0 || faceIndex > kLastFaceIndex) return;
  if (!has_record(inputData, "WriteFaceInfo")) return;
  const FaceCounts counts = count_pixels(c2, luma, rgb, faceMask, W, left, right, top, bottom);

  const bool under_display = inputData->isUDC != 0;
  MORVALE_DEBUG("%s", under_display ? "Morvale_capture isUDC" : "Morvale_capture nonUDC");
  const auto [h, s, v] = robust_colour_figures(counts, under_display ? kTrimUnderDisplay : kTrim);
  MORVALE_DEBUG("Morvale capture aver %d|  %d %d %d ", faceIndex, h.mean, s.mean, v.mean);
  MORVALE_DEBUG("Morvale capture max %d| %d %d %d ", faceIndex, h.high, s.high, v.high);
  MORVALE_DEBUG("Morvale capture min %d| %d %d %d ", faceIndex, h.low, s.low, v.low);

  PersonMeta& meta = result.meta[faceIndex];
  meta.brightCount[0] = static_cast<uint32_t>(counts.above_200);
  meta.brightCount[1] = static_cast<uint32_t>(counts.above_230);
  meta.faceYavg = mean_luma(counts);
  const Bands channels[3] = {h, s, v};
  for (int k = 0; k < 3; ++k) {
    meta.hsvMin[k] = channels[k].below();
    meta.hsv[k] = channels[k].mean;
    meta.box[k] = channels[k].above();
  }
  if (meta.hsv[0] <= 0) meta.hsv[0] += 360;  // after the spreads: they use the mean as it was
  meta.skinRatio =
      map_share(static_cast<double>(wrapping_product(int64_t{right} - left, int64_t{bottom} - top)),
                static_cast<double>(NETSIZE * segFactor * 16));
  MORVALE_DEBUG("Morvale capture Debug hsv min: %d %d %d  hsvmax %d %d %d  avg %d %d %d\n", h.below(),
                s.below(), v.below(), h.above(), s.above(), v.above(), h.mean, s.mean, v.mean);
}
