#include "analysis/run_labeller.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "analysis/scratch.h"

namespace morvale {
namespace {

/// Growing pixels first .. end - 1 of a row, as the columns where a row changes: begin, end, begin, end, ...
struct Runs {
  int32_t* edges;
  uint8_t* labels;
  int count = 0;

  int32_t first(int k) const { return edges[2 * k]; }
  int32_t last(int k) const { return edges[2 * k + 1] - 1; }
};

void read_runs(const BitRows& rows, int y, Runs& runs) {
  int32_t* edge = runs.edges;
  uint64_t carry = 0;
  for (int j = 0; j < rows.columns(); ++j) {
    const uint64_t word = rows.column(j)[y];
    for (uint64_t changes = word ^ (word << 1 | carry); changes != 0; changes &= changes - 1) {
      *edge++ = j * BitRows::kBits + std::countr_zero(changes);
    }
    carry = word >> (BitRows::kBits - 1);
  }
  const auto edges = edge - runs.edges;
  if (edges % 2 != 0) *edge = rows.width;
  runs.count = static_cast<int>((edges + 1) / 2);
}

bool same_row(const BitRows& rows, int y, int other) {
  for (int j = 0; j < rows.columns(); ++j) {
    if (rows.column(j)[y] != rows.column(j)[other]) return false;
  }
  return true;
}

/// Below itself a run meets nobody but itself.
void continue_runs(const Runs& runs, int y, RegionTable& regions) {
  for (int k = 0; k < runs.count; ++k) {
    regions.reach_down(runs.labels[k], y);
    if (runs.last(k) > runs.first(k)) regions.reach_right(runs.labels[k], runs.last(k));
  }
}

/// False when a label would not fit a byte.
bool label_row(const Runs& above, Runs& runs, int y, RegionTable& regions) {
  int up = 0;
  for (int k = 0; k < runs.count; ++k) {
    const int32_t first = runs.first(k), last = runs.last(k);
    while (up < above.count && above.last(up) < first) ++up;

    // The first pixel has no left neighbour: it takes the label above it, dead or alive, or begins a region.
    int32_t label;
    if (up < above.count && above.first(up) <= first) {
      label = above.labels[up];
      regions.reach_down(label, y);
    } else {
      if (regions.count() >= kLastLabel - 1) return false;
      label = regions.start(first, y);
    }
    runs.labels[k] = static_cast<uint8_t>(label);

    // The others take the first one's. Where a run above begins to touch them, it is merged; a merge may take
    // columns back, so what was reached before it and what is reached behind it are two things.
    int32_t reached = first;
    for (int other = up; other < above.count && above.first(other) <= last; ++other) {
      const int32_t touched = std::max(above.first(other), first + 1);
      if (touched > last || touched > above.last(other) || above.labels[other] == label) continue;
      regions.reach_right(label, touched);
      regions.merge(above.labels[other], label);
      reached = touched;
    }
    if (last > reached) regions.reach_right(label, last);
  }
  return true;
}

void paint_row(const Runs& runs, uint8_t* row, int width) {
  std::memset(row, 0, static_cast<size_t>(width));
  for (int k = 0; k < runs.count; ++k) {
    std::memset(row + runs.first(k), runs.labels[k], static_cast<size_t>(runs.last(k) - runs.first(k) + 1));
  }
}

/// False when there are too many regions for labels of a byte.
bool label_runs(const BitRows& grows, RegionTable& regions, uint8_t* labels) {
  const auto most_runs = static_cast<size_t>(grows.width) / 2 + 1;
  Scratch scratch(2 * most_runs * (2 * sizeof(int32_t) + 1));
  Runs above{scratch.take<int32_t>(2 * most_runs), nullptr},
      runs{scratch.take<int32_t>(2 * most_runs), nullptr};
  above.labels = scratch.take<uint8_t>(most_runs);
  runs.labels = scratch.take<uint8_t>(most_runs);

  for (int y = 0; y < grows.height; ++y) {
    if (y > 0 && same_row(grows, y, y - 1)) {
      continue_runs(above, y, regions);
    } else {
      read_runs(grows, y, runs);
      if (!label_row(above, runs, y, regions)) return false;
      std::swap(above, runs);
    }
    if (labels != nullptr) paint_row(above, labels + static_cast<ptrdiff_t>(y) * grows.width, grows.width);
  }
  return true;
}

void label_pixels(const BitRows& grows, RegionTable& regions, uint8_t* labels) {
  RegionLabeller labeller(labels, grows.width, regions);
  for (int y = 0; y < grows.height; ++y) {
    for (int x = 0; x < grows.width; ++x) labeller.visit(x, y, grows.at(x, y));
  }
}

}  // namespace

void label_regions(const BitRows& grows, RegionTable& regions, uint8_t* labels) {
  if (label_runs(grows, regions, labels)) return;
  regions.clear();
  if (labels != nullptr) {
    label_pixels(grows, regions, labels);
    return;
  }
  const size_t pixels = static_cast<size_t>(grows.width) * static_cast<size_t>(grows.height);
  Scratch image(pixels);
  label_pixels(grows, regions, image.take<uint8_t>(pixels));
}

}  // namespace morvale
