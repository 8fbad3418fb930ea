#include "selfcheck/golden.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

#include "selfcheck/cases.h"

namespace morvale::selfcheck {
namespace {

struct GoldenFigure {
  const char* name;
  uint64_t digest;
};
constexpr GoldenFigure kGolden[] = {
#include "selfcheck/golden.inc"
};

Figures golden() {
  Figures figures;
  for (const GoldenFigure& figure : kGolden) figures.push_back({figure.name, figure.digest});
  return figures;
}

}  // namespace

std::string first_difference(const Figures& figures) { return first_difference(figures, golden()); }

std::string first_difference(const Figures& figures, const Figures& expected) {
  const auto same = [](const Figure& a, const Figure& b) { return a.name == b.name && a.digest == b.digest; };
  const auto [ours, theirs] =
      std::mismatch(figures.begin(), figures.end(), expected.begin(), expected.end(), same);
  if (ours != figures.end()) return ours->name;
  return theirs != expected.end() ? theirs->name : std::string();
}

std::string golden_text(const Figures& figures) {
  std::string text = "// Made by `./dev golden`. Do not edit.\n";
  for (const Figure& figure : figures) {
    char digest[32];
    std::snprintf(digest, sizeof digest, "0x%016" PRIx64, figure.digest);
    text += "{\"" + figure.name + "\", " + digest + "},\n";
  }
  return text;
}

void flush_small_numbers(bool flush) {
#if defined(__x86_64__)
  constexpr unsigned kBoth = 0x8040;  // results, and operands
  _mm_setcsr(flush ? _mm_getcsr() | kBoth : _mm_getcsr() & ~kBoth);
#elif defined(__aarch64__)
  constexpr uint64_t kFlush = uint64_t{1} << 24;
  uint64_t control;
  __asm__ volatile("mrs %0, fpcr" : "=r"(control));
  control = flush ? control | kFlush : control & ~kFlush;
  __asm__ volatile("msr fpcr, %0" : : "r"(control));
#endif
}

std::string check() {
  for (const bool flush : {false, true}) {
    flush_small_numbers(flush);
    const Figures figures = measure();
    flush_small_numbers(false);
    const std::string difference = first_difference(figures);
    if (!difference.empty()) return difference + (flush ? " (with small numbers flushed to 0)" : "");
  }
  return {};
}

}  // namespace morvale::selfcheck
