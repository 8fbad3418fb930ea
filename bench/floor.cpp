#include "bench/floor.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "bench/pictures.h"

namespace bench {
namespace {

constexpr ptrdiff_t kCacheLine = 64;

void touch_bytes(const uint8_t* bytes, ptrdiff_t count) {
  uint64_t sum = 0;
  for (ptrdiff_t i = 0; i + 8 <= count; i += kCacheLine) {
    uint64_t word;
    std::memcpy(&word, bytes + i, sizeof word);
    sum += word;
  }
  benchmark::DoNotOptimize(sum);
}

}  // namespace

Way move_bytes(size_t read, size_t written) {
  return [=]() -> Work {
    const auto from = std::make_shared<Bytes>(read, uint8_t{1});
    const auto to = std::make_shared<Bytes>(written, uint8_t{2});
    const size_t copied = std::min(read, written);
    return [=] {
      std::memcpy(to->data(), from->data(), copied);
      std::memset(to->data() + copied, 3, written - copied);
      touch_bytes(from->data() + copied, static_cast<ptrdiff_t>(read - copied));
      benchmark::DoNotOptimize(to->data());
      benchmark::ClobberMemory();
    };
  };
}

void touch(const ReadRows& rows) {
  for (const int row : rows.rows) touch_bytes(rows.plane + row * rows.stride, rows.stride);
}

std::vector<int> sampled_rows(int source_rows, int output_rows) {
  const int step = (source_rows << 8) / output_rows;
  std::vector<int> rows;
  for (int y = 0; y < output_rows; ++y) {
    const int position = y * step, row = position >> 8;
    if (rows.empty() || rows.back() < row) rows.push_back(row);
    if ((position & 255) != 0) rows.push_back(row + 1);
  }
  return rows;
}

Way all_of(std::vector<Way> ways) {
  return [ways = std::move(ways)]() -> Work {
    std::vector<Work> works;
    for (const Way& way : ways) works.push_back(way());
    return [works = std::move(works)] {
      for (const Work& work : works) work();
    };
  };
}

}  // namespace bench
