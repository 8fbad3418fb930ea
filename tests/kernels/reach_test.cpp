/// How far the image kernels reach, in every set: each source and destination has exactly the bytes that the
/// checked form asks for, between forbidden pages, first right behind one, then right before one. With one
/// byte less some set must run into the page, or the header asks for too much.
///
/// MORVALE_EVERY_SIZE=1 goes through all sizes up to 130 x 34 and a dozen camera's sizes.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <morvale/checked.h>
#include "fakes/guarded_bytes.h"
#include "kernels/kernel_set.h"

namespace {

namespace checked = morvale::checked;
using checked::Status;
using guarded::Bytes;
using guarded::Edge;
using guarded::kEdges;
using Source = std::span<const uint8_t>;
using Target = std::span<uint8_t>;
using Buffers = std::vector<Target>;  // the sources, then the destinations

/// One kernel with one set of arguments.
struct Case {
  std::string name;
  size_t sources, destinations;
  std::function<Status(const Buffers&)> checked;
  std::function<void(const Buffers&)> plain;
  size_t grain = 1;          ///< bytes of what a destination consists of
  bool idle_source = false;  ///< its last byte is named for simplicity and not read in these arguments

  size_t buffers() const { return sources + destinations; }
};

template <size_t kSources, size_t kDestinations, class Checked, class Plain, class... Arguments>
Case make_case(std::string name, Checked check, Plain plain, Arguments... arguments) {
  (name.append(1, ' ').append(std::to_string(arguments)), ...);
  const auto with_spans = [=]<size_t... kIndex>(const Buffers& b, std::index_sequence<kIndex...>) {
    return check(b[kIndex]..., arguments...);
  };
  const auto with_pointers = [=]<size_t... kIndex>(const Buffers& b, std::index_sequence<kIndex...>) {
    plain(b[kIndex].data()..., arguments...);
  };
  const std::make_index_sequence<kSources + kDestinations> all;
  return {std::move(name), kSources, kDestinations, [=](const Buffers& b) { return with_spans(b, all); },
          [=](const Buffers& b) { with_pointers(b, all); }};
}

bool every_size() { return std::getenv("MORVALE_EVERY_SIZE") != nullptr; }

const size_t kMost =
    size_t{1} << (every_size() ? 24 : 22);  // bytes of a buffer; a call that needs more is left out
constexpr size_t kCanaries = 64;

/// Memory between two pages without access, for one buffer after another.
class Room {
 public:
  Room() {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* const pages = mmap(nullptr, kMost + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    first_ = static_cast<uint8_t*>(pages) + page;
    if (mprotect(first_, kMost, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
  }
  Target at(Edge edge, size_t size) const {
    return {edge == Edge::kFront ? first_ : first_ + kMost - size, size};
  }
  /// Reaches `missing` bytes into the page behind.
  Target beyond(size_t size, size_t missing) const { return {at(Edge::kBack, size).data() + missing, size}; }

 private:
  uint8_t* first_;
};

/// The strip on the open side of a buffer.
Target open_side(Target buffer, Edge edge) {
  return {edge == Edge::kFront ? buffer.data() + buffer.size() : buffer.data() - kCanaries, kCanaries};
}

sigjmp_buf at_fault;

/// Whether `action` touches a forbidden page.
template <class Action>
bool faults(Action action) {
  struct sigaction caught {
  }, former{};
  caught.sa_handler = [](int) { siglongjmp(at_fault, 1); };
  sigaction(SIGSEGV, &caught, &former);
  const bool faulted = sigsetjmp(at_fault, 1) != 0;
  if (!faulted) action();
  sigaction(SIGSEGV, &former, nullptr);
  return faulted;
}

class Reach : public testing::Test {
 protected:
  static constexpr size_t kKernels = 29;
  std::set<std::string> examined_;

  Reach() : used_(morvale::kernels().name) { testing::internal::CaptureStdout(); }  // one kernel speaks
  ~Reach() override {
    morvale::use_kernels(used_);
    const std::string said = testing::internal::GetCapturedStdout();
    if (HasFailure()) std::fputs(said.c_str(), stdout);
  }

  void expect_exact(const Case& c, size_t most) {
    SCOPED_TRACE(c.name);
    const std::vector<size_t> required = required_sizes(c, most);
    if (required.empty()) return;
    examined_.insert(c.name.substr(0, c.name.find(' ')));
    expect_same_between_pages(c, required);
    for (size_t i = c.idle_source ? c.sources : 0; i < c.buffers(); ++i) {
      EXPECT_TRUE(required[i] == 0 || somebody_needs_the_end(c, required, i))
          << "nobody needs the end of buffer " << i << ", of " << required[i] << " bytes";
    }
  }

 private:
  Buffers placed(const std::vector<size_t>& sizes, Edge edge) const {
    Buffers buffers;
    for (size_t i = 0; i < sizes.size(); ++i) buffers.push_back(rooms_[i].at(edge, sizes[i]));
    return buffers;
  }

  void fill(const Buffers& buffers) const {
    for (size_t i = 0; i < buffers.size(); ++i)
      std::memcpy(buffers[i].data(), noise_.data() + 61 * i, buffers[i].size());
  }

  /// The smallest sizes that the call accepts, found by halving; none where no size would do.
  std::vector<size_t> required_sizes(const Case& c, size_t most) const {
    std::vector<size_t> required(c.buffers(), most);
    const auto status = [&](size_t i, size_t size) {
      Buffers buffers = placed(std::vector<size_t>(c.buffers(), most), Edge::kBack);
      buffers[i] = buffers[i].first(size);
      for (size_t k = c.sources; i < c.sources && k < buffers.size(); ++k)
        buffers[k] = {};  // so that nothing runs
      return c.checked(buffers);
    };
    for (size_t i = 0; i < c.buffers(); ++i) {
      const Status refusal = i < c.sources ? Status::kSourceTooSmall : Status::kDestinationTooSmall;
      const Status all = status(i, most);
      if (all == Status::kBadSize || all == refusal) return {};
      for (size_t refused = 0; refused < required[i];) {
        const size_t middle = (refused + required[i]) / 2;
        if (status(i, middle) == refusal)
          refused = middle + 1;
        else
          required[i] = middle;
      }
    }
    return required;
  }

  void expect_same_between_pages(const Case& c, const std::vector<size_t>& required) const {
    std::vector<Bytes> expected;  // of the portable set, the first
    for (const morvale::KernelSet* set : morvale::runnable_kernels()) {
      morvale::use_kernels(set->name);
      for (const Edge edge : kEdges) {
        Buffers buffers = placed(required, edge);
        fill(buffers);
        for (const Target& buffer : buffers) std::memset(open_side(buffer, edge).data(), 0xA5, kCanaries);
        auto status = Status::kBadSize;
        ASSERT_FALSE(faults([&] { status = c.checked(buffers); })) << set->name << " leaves its buffers";
        ASSERT_EQ(status, Status::kOk);
        for (size_t i = c.sources; i < buffers.size(); ++i) {
          for (const uint8_t canary : open_side(buffers[i], edge)) ASSERT_EQ(canary, 0xA5) << set->name;
          if (expected.size() < c.destinations) expected.emplace_back(buffers[i].begin(), buffers[i].end());
          ASSERT_TRUE(std::ranges::equal(expected[i - c.sources], buffers[i])) << set->name;
        }
      }
    }
  }

  bool somebody_needs_the_end(const Case& c, const std::vector<size_t>& required, size_t i) const {
    for (const morvale::KernelSet* set : morvale::runnable_kernels()) {
      morvale::use_kernels(set->name);
      Buffers buffers = placed(required, Edge::kBack);
      fill(buffers);
      buffers[i] = rooms_[i].beyond(required[i], i < c.sources ? 1 : c.grain);
      if (faults([&] { c.plain(buffers); })) return true;
    }
    return false;
  }

  std::string used_;
  Room rooms_[4];
  Bytes noise_ = guarded::random_bytes(kMost + 256, 1);
};

void add_colours(std::vector<Case>& cases, int w, int h) {
  cases.push_back(make_case<2, 1>("NV21toRGB", checked::NV21toRGB, NV21toRGB, w, h));
  cases.push_back(make_case<1, 1>("NV21toBGR", checked::NV21toBGR, NV21toBGR, w, h));
  cases.push_back(make_case<1, 3>(
      "NV21toBGR_planar",
      [](Source src, Target b, Target g, Target r, int width, int height) {
        return checked::NV21toBGR_planar(src, {b, g, r}, width, height);
      },
      [](const uint8_t* src, uint8_t* b, uint8_t* g, uint8_t* r, int width, int height) {
        uint8_t* const planes[3] = {b, g, r};
        NV21toBGR_planar(src, planes, width, height);
      },
      w, h));
  cases.push_back(make_case<1, 2>("RGBtoNV21", checked::RGBtoNV21, RGBtoNV21, w, h));
  cases.push_back(make_case<1, 1>("BGRtoNV21", checked::BGRtoNV21, BGRtoNV21, w, h));
  cases.push_back(make_case<1, 1>("BGR2GRAY", checked::BGR2GRAY, BGR2GRAY, w, h));
  cases.push_back(make_case<1, 1>(
      "BGR2HSV",
      [](Source src, Target hsv, int width, int height) {
        return checked::BGR2HSV(src, {reinterpret_cast<float*>(hsv.data()), hsv.size() / 4}, width, height);
      },
      [](uint8_t* src, uint8_t* hsv, int width, int height) {
        BGR2HSV(src, reinterpret_cast<float*>(hsv), width, height);
      },
      w, h));
  cases.back().grain = sizeof(float);
}

/// Without margins, mirrored to the next 8 or 16, as far as the picture goes, and cut.
void add_padded(std::vector<Case>& cases, int w, int h) {
  for (const int right : {0, (w + h) % 17, w, -(w / 3)}) {
    const int bottom = right < 0 ? 0 : (w * 5 + h) % (h + 1);
    const auto add = [&](const char* name, auto check, auto plain) {
      cases.push_back(make_case<1, 1>(name, check, plain, w, h, w + right, h + bottom, right, bottom));
      // The margin's tail may overwrite the last pair, and a picture of one column has none.
      cases.back().idle_source = ((w + right) & ~7) < w - 1 || w == 1;
    };
    add("NV21toRGB_pad", checked::NV21toRGB_pad, NV21toRGB_pad);
    add("NV21toBGR_pad", checked::NV21toBGR_pad, NV21toBGR_pad);
    add("NV12toRGB_pad", checked::NV12toRGB_pad, NV12toRGB_pad);
    add("NV21toBGR_pad_lsi", checked::NV21toBGR_pad_lsi, NV21toBGR_pad_lsi);
  }
}

void add_scaled(std::vector<Case>& cases, int w, int h) {
  // A result that is too small for chroma needs of the source some of the luma alone: all of it is asked for.
  const auto add = [&](const char* name, auto check, auto plain, bool no_chroma, auto... rest) {
    cases.push_back(make_case<1, 1>(name, check, plain, w, h, rest...));
    cases.back().idle_source = no_chroma;
  };
  add("resize_NV21_2x_up", checked::resize_NV21_2x_up, resize_NV21_2x_up, false);
  add("resize_NV21_2x_down", checked::resize_NV21_2x_down, resize_NV21_2x_down, w < 4 || h < 4);
  add("resize_NV21_3x_down", checked::resize_NV21_3x_down, resize_NV21_3x_down, w < 6 || h < 6);
  add("resize_y_2x_up", checked::resize_y_2x_up, resize_y_2x_up, false);
  add("resize_y_4x_up", checked::resize_y_4x_up, resize_y_4x_up, false);
  add("resize_y_6x_up", checked::resize_y_6x_up, resize_y_6x_up, false);
  add("resize_y", checked::resize_y, resize_y, false, 1 + (w + h) % 7);
  for (const auto& [wide, high] : {std::pair(w * 2 / 3, h * 2 / 3), {w / 2, h / 2}, {w + w / 3, h + 2}}) {
    cases.push_back(
        make_case<2, 1>("resize_NV21_opt", checked::resize_NV21_opt, resize_NV21_opt, w, h, wide, high));
    add("resize_NV21", checked::resize_NV21, resize_NV21, wide < 2 || high < 2, wide, high);
    add("resize_Y_1", checked::resize_Y_1, resize_Y_1, false, wide, high);
  }
  const int x = w / 3, y = h / 4, wide = w - x - w % 2, high = h - y;
  const auto add_region = [&](const char* name, auto check, auto plain, int stride) {
    cases.push_back(make_case<1, 1>(name, check, plain, w, x, y, wide, high, stride));
  };
  add_region("hori", checked::resize_y_8x_up_RR_hori, resize_y_8x_up_RR_hori, 8 * wide + h % 5);
  add_region("vert", checked::resize_y_8x_up_RR_vert, resize_y_8x_up_RR_vert, wide + h % 5);
}

void add_turned(std::vector<Case>& cases, int w, int h) {
  const auto add = [&](const char* name, auto check, auto plain) {
    cases.push_back(make_case<1, 1>(name, check, plain, w, h, (w + h) % 3));
  };
  add("rotate_y", checked::rotate_y, rotate_y);
  add("rotate_y_opt", checked::rotate_y_opt, rotate_y_opt);
  add("rotate_NV21", checked::rotate_NV21, rotate_NV21);
  add("rotate_NV21_opt", checked::rotate_NV21_opt, rotate_NV21_opt);
}

void add_blurs(std::vector<Case>& cases, int w, int h) {
  static constexpr uint16_t kWeights[] = {1000, 2000, 3000, 4384, 3000, 2000, 1000};
  const std::span<const uint16_t> weights(kWeights);
  constexpr int kRadius = 3, kBits = 14;
  const auto add = [&](const char* name, auto check, auto plain) {
    cases.push_back(make_case<2, 1>(
        name,
        [=](Source src, Source grid, Target dst, int width, int height) {
          return check(src, dst, grid, width, height, weights, kRadius, kBits);
        },
        [=](const uint8_t* src, const uint8_t* grid, uint8_t* dst, int width, int height) {
          plain(src, dst, grid, width, height, weights.data(), kRadius, kBits);
        },
        w, h));
  };
  add("GaussianBlur_Grid_Hori", checked::GaussianBlur_Grid_Hori, GaussianBlur_Grid_Hori);
  add("GaussianBlur_Grid_Vert", checked::GaussianBlur_Grid_Vert, GaussianBlur_Grid_Vert);
}

std::vector<Case> cases_of(int w, int h) {
  std::vector<Case> cases;
  for (const auto add : {add_colours, add_padded, add_scaled, add_turned, add_blurs}) add(cases, w, h);
  return cases;
}

TEST_F(Reach, OfSmallPictures) {
  for (int w = 0; w <= 130; ++w) {
    for (int h = 0; h <= 34; ++h) {
      if (!every_size() && h != w * 11 % 35 && h != (w * 5 + 2) % 35) continue;
      for (const Case& c : cases_of(w, h)) expect_exact(c, static_cast<size_t>(64 * (w + 8) * (h + 8)));
    }
  }
  EXPECT_EQ(examined_.size(), kKernels);
}

TEST_F(Reach, OfCameraPictures) {
  constexpr std::pair<int, int> kSizes[] = {{176, 144},  {320, 240},  {432, 768},   {640, 480},
                                            {640, 360},  {800, 600},  {960, 540},   {1080, 607},
                                            {1280, 720}, {720, 1280}, {1440, 1080}, {1920, 1080}};
  for (const auto& [w, h] : kSizes) {
    for (const Case& c : cases_of(w, h)) expect_exact(c, kMost);
    if (!every_size() && w >= 320) break;
  }
  EXPECT_EQ(examined_.size(), kKernels);
}

}  // namespace
