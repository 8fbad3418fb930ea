/// The floor: what moving a job's data costs, without any arithmetic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bench/job.h"

namespace bench {

/// Copies the bytes that are both read and written, fills those that are only written, loads one word from
/// each cache line of those that are only read.
Way move_bytes(size_t read, size_t written);

/// Rows of a plane that a job reads, when it does not read all.
struct ReadRows {
  const uint8_t* plane;
  ptrdiff_t stride;
  std::vector<int> rows;
};

/// Loads one word from each cache line of the rows.
void touch(const ReadRows& rows);

/// The source rows that bilinear sampling from the top-left corner of each step needs.
std::vector<int> sampled_rows(int source_rows, int output_rows);

/// Does all of them, one after the other.
Way all_of(std::vector<Way> ways);

}  // namespace bench
