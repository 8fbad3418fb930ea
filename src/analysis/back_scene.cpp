/// Back camera: person share, person box, occupancy grid and resource hint.
#include <algorithm>
#include <cstring>

#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include <morvale/imgproc/resize_plane.h>
#include "analysis/bit_rows.h"
#include "analysis/grow_rows.h"
#include "analysis/run_labeller.h"
#include "analysis/scratch.h"
#include "core/lost_record.h"
#include "core/numeric.h"
#include "kernels/kernel_set.h"
#include "platform/log.h"

namespace morvale {
namespace {

constexpr int32_t kBackVersion = 5;

/// The best region must exceed this share of the map.
constexpr double kMinPersonShare = 0.0125;

constexpr int kOccupancyCells = kOccupancyColumns * kOccupancyRows;

/// The 12th grid word, offset 228 of the record, carries the resource hint instead.
int32_t& hint_word(PersonWholeMeta& result) { return result.meta[3].box[3]; }

/// Writes the foreground mask and the person bits row by row. Returns the cells that label 4 wins.
int64_t classify(const uint8_t* const* planes, uint8_t* foreground, const BitRows& persons) {
  int64_t label4_cells = 0;
  for (ptrdiff_t y = 0; y < persons.height; ++y) {
    const ptrdiff_t row = y * persons.width;
    const uint8_t* scores[kLabels];
    for (int k = 0; k < kLabels; ++k) scores[k] = planes[k] + row;
    label4_cells += kernels().face.classify_persons(scores, foreground + row, persons.words + y,
                                                    persons.height, persons.width);
  }
  return label4_cells;
}

/// The mask's summed-area table (F. C. Crow, "Summed-area tables for texture mapping", 1984), which nothing
/// here needs but tools look at. A row is the row above plus the pixels so far. Eight at a time: bits become
/// bytes of 0 and 1, and their product with eight ones holds the running sums: what passes the word's top is
/// of no byte.
MORVALE_WRAPS void sum_areas(const BitRows& mask, int32_t* table) {
  constexpr uint64_t kOnes = 0x0101010101010101, kDiagonal = 0x8040201008040201;
  for (int y = 0; y < mask.height; ++y) {
    int32_t* row = table + static_cast<ptrdiff_t>(y) * mask.width;
    int32_t before = 0;
    for (int x = 0; x < mask.width; x += 8) {
      const uint64_t eight = mask.column(x / BitRows::kBits)[y] >> (x % BitRows::kBits) & 255;
      const uint64_t running = (((eight * kOnes & kDiagonal) + 0x7f * kOnes) >> 7 & kOnes) * kOnes;
      uint8_t sums[8];
      std::memcpy(sums, &running, sizeof sums);
      const int count = std::min(mask.width - x, 8);
      for (int k = 0; k < count; ++k) row[x + k] = before + sums[k] + (y > 0 ? row[x + k - mask.width] : 0);
      before += sums[7];
    }
  }
}

void clear_boxes(PersonWholeMeta& result) {
  for (PersonMeta& meta : result.meta) std::fill(std::begin(meta.box), std::end(meta.box), 0);
}

/// The next grid word, most significant bit first; the cursor moves on by 32 cells. The word in which the
/// cells end takes one byte behind them (always 0) and two more zeros; so do the words after it.
uint32_t pack_word(const uint8_t* grid, int& cursor) {
  constexpr int kLastCell = kOccupancyCells - 1;
  uint32_t word = grid[cursor];
  if (cursor > kLastCell) return word << 2;
  for (int j = 1; j <= 31; ++j) {
    word = word << 1 | grid[cursor + j];
    if (cursor + j > kLastCell) {
      cursor += j;
      return word << 2;
    }
  }
  cursor += 32;
  return word;
}

void pack_grid(const uint8_t* grid, PersonWholeMeta& result) {
  int cursor = 0;
  for (int element = 1; element < kMaxFaces; ++element) {
    for (int32_t& word : result.meta[element].box) word = static_cast<int32_t>(pack_word(grid, cursor));
  }
}

/// Frame pixels per map cell, cut to a whole number.
float whole_scale(int32_t frame_size, int32_t map_size) {
  return static_cast<float>(to_int32(static_cast<float>(frame_size) / static_cast<float>(map_size)));
}

FaceRect frame_box(const Region& box, float scale_x, float scale_y) {
  const auto scaled = [](float scale, int32_t cells) { return to_int32(scale * static_cast<float>(cells)); };
  return {scaled(scale_x, box.min_x), scaled(scale_y, box.min_y), scaled(scale_x, box.max_x - box.min_x),
          scaled(scale_y, box.max_y - box.min_y)};
}

/// The record's order is not FaceRect's.
void store_box(const FaceRect& box, PersonWholeMeta& result) {
  const int32_t words[4] = {box.x, box.w, box.y, box.h};
  std::copy(std::begin(words), std::end(words), result.meta[0].box);
}

void log_scene(const PersonWholeMeta& result, int32_t hint, const uint8_t* grid) {
  const int32_t* box = result.meta[0].box;
  MORVALE_DEBUG("MorvaleMeta = qermHint %d ", hint);
  MORVALE_DEBUG("MorvaleMeta :: %d %d %d %d", box[0], box[1], box[2], box[3]);
  for (int row = 0; row < kOccupancyRows; ++row) {
    char cells[kOccupancyColumns + 1] = {};
    for (int x = 0; x < kOccupancyColumns; ++x)
      cells[x] = static_cast<char>('0' + grid[row * kOccupancyColumns + x]);
    MORVALE_DEBUG("MorvaleMeta :: %s", cells);
  }
}

}  // namespace
}  // namespace morvale

using namespace morvale;

void MorvaleCore::argMax_back_only_human(uint8_t* segMap) {
  if (!has_record(inputData, "argMax_back_only_human")) return;
  const int W = NETSIZE, H = segFactor;
  const int32_t cells = W * H;
  const bool empty = W < 1 || H < 1;
  const size_t plane_bytes = empty ? 0 : static_cast<size_t>(cells),
               bit_words = empty ? 0 : BitRows::size(W, H);
  Scratch scratch(bit_words * sizeof(uint64_t) + kLabels * plane_bytes);
  const BitRows persons{scratch.take<uint64_t>(bit_words), W, empty ? 0 : H};
  uint8_t* planes[kLabels];
  for (uint8_t*& plane : planes) plane = scratch.take<uint8_t>(plane_bytes);

  kernels().network.split(segMap, planes, static_cast<ptrdiff_t>(plane_bytes));
  const int64_t label4_cells = classify(planes, labelMapA, persons);
  sum_areas(persons, labelMapWide);
  grow_trailing(persons);
  RegionTable regions;
  label_regions(persons, regions, labelMapB);
  result.humanRatio = empty ? 0 : static_cast<int32_t>(label4_cells * 100 / cells);

  std::fill(std::begin(personBoxes), std::end(personBoxes), FaceRect{});
  clear_boxes(result);
  const RegionList candidates = regions.by_area();
  if (candidates.empty()) return;  // personCount and ver keep the last frame's values

  const info& best = candidates[0];
  personCount = best.area > to_int32(cells * kMinPersonShare) ? 1 : 0;
  if (personCount == 1) {
    personBoxes[0] =
        frame_box(regions[best.label], whole_scale(inputData->width, W), whole_scale(inputData->height, H));
    store_box(personBoxes[0], result);
  }
  resize_Y_1(labelMapA, gridMap, W, H, kOccupancyColumns, kOccupancyRows);
  result.ver = kBackVersion;
  pack_grid(gridMap, result);
  hint_word(result) = inputData->qermHint;
  if (VISUALDEBUG > 0) log_scene(result, inputData->qermHint, gridMap);
}
