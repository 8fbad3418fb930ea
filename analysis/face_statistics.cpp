/// Front camera: brightness and colour of one face.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "analysis/hsv.h"
#include "core/globals.h"
#include "core/morvale_core.h"
#include "core/numeric.h"
#include "platform/log.h"

namespace morvale {
namespace {

/// Faces that the record has figures for.
constexpr int kLastFaceIndex = 2;

/// Label-2 scores from which a masked pixel counts for the luma figures and for the colour figures.
constexpr int kLumaScore = 51;
constexpr int kColourScore = 201;

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

struct LumaFigures {
  uint32_t above_200 = 0, above_230 = 0;
  int64_t sum = 0;
  int32_t count = 0;

  void add(int y) {
    sum += y;
    ++count;
    above_200 += y > 200;
    above_230 += y > 230;
  }
  int32_t mean() const {
    return count == 0 ? 0 : to_int32(static_cast<float>(sum) / static_cast<float>(count));
  }
};

/// Hue, saturation and value of the sampled pixels, one list each.
using Samples = std::vector<int32_t>[3];

/// Per channel: mean of the trimmed samples, and of the bands at their low and high end.
struct Bands {
  int32_t mean, low, high;

  int32_t below() const { return std::abs(mean - low); }
  int32_t above() const { return std::abs(high - mean); }
};

/// Mean of the entries first .. end - 1, truncated toward zero; an empty band gives 0.
int32_t band_mean(const std::vector<int32_t>& sorted, int32_t first, int32_t end) {
  if (end <= first) return 0;
  int64_t sum = 0;
  for (int32_t i = first; i < end; ++i) sum += sorted[static_cast<size_t>(i)];
  return static_cast<int32_t>(sum / (end - first));
}

/// The band edges are formed left to right in double precision and truncated: the order decides which samples
/// fall into a band.
Bands bands(const std::vector<int32_t>& sorted, Trim trim) {
  const auto n = static_cast<int32_t>(sorted.size());
  const double p = n / 100.0;
  const int32_t low_first = to_int32(trim.cut * p);
  const int32_t low_end = to_int32(trim.cut * p + trim.band * p);
  const int32_t high_end = to_int32(n - trim.cut * p);
  const int32_t high_first = to_int32(n - trim.cut * p - trim.band * p);
  return {band_mean(sorted, low_first, high_end), band_mean(sorted, low_first, low_end),
          band_mean(sorted, high_first, high_end)};
}

struct ColourFigures {
  Bands hue, saturation, value;
};

ColourFigures colour_figures(const Samples& sorted, Trim trim) {
  return {bands(sorted[0], trim), bands(sorted[1], trim), bands(sorted[2], trim)};
}

ColourFigures robust_colour_figures(Samples& samples, Trim trim) {
  for (auto& channel : samples) std::sort(channel.begin(), channel.end());
  const ColourFigures figures = colour_figures(samples, trim);
  const bool scattered = figures.hue.below() > kMaxHueSpread || figures.hue.above() > kMaxHueSpread;
  return scattered ? colour_figures(samples, kTrimWide) : figures;
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
  if (faceIndex > kLastFaceIndex) return;
  LumaFigures brightness;
  Samples samples;
  // All planes are walked with the map's width, the luma plane too, although a shrunk portrait frame has
  // shorter rows.
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      const ptrdiff_t i = static_cast<ptrdiff_t>(y) * W + x;
      if (faceMask[i] == 0) continue;
      if (c2[i] >= kLumaScore) brightness.add(luma[i]);
      if (c2[i] < kColourScore) continue;
      int hsv[3];
      bgr2hsv_pixel_v2(rgb[3 * i + 2], rgb[3 * i + 1], rgb[3 * i], hsv);
      for (size_t k = 0; k < 3; ++k) samples[k].push_back(hsv[k]);
    }
  }

  const bool under_display = inputData->isUDC != 0;
  MORVALE_DEBUG("%s", under_display ? "Morvale_capture isUDC" : "Morvale_capture nonUDC");
  const auto [h, s, v] = robust_colour_figures(samples, under_display ? kTrimUnderDisplay : kTrim);
  MORVALE_DEBUG("Morvale capture aver %d|  %d %d %d ", faceIndex, h.mean, s.mean, v.mean);
  MORVALE_DEBUG("Morvale capture max %d| %d %d %d ", faceIndex, h.high, s.high, v.high);
  MORVALE_DEBUG("Morvale capture min %d| %d %d %d ", faceIndex, h.low, s.low, v.low);

  PersonMeta& meta = result.meta[faceIndex];
  meta.brightCount[0] = brightness.above_200;
  meta.brightCount[1] = brightness.above_230;
  meta.faceYavg = brightness.mean();
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
