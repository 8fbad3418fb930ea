/// The kernels under C names, out of libmorvale_kernels.so: whatever the lengths of the buffers, the verdicts
/// and the bytes of the C++ ones.
#include <gtest/gtest.h>
#include <morvale/morvale_kernels.h>

#include <tuple>
#include <vector>

#include "fakes/guarded_bytes.h"
#include "kernel_list/kernel_list.h"

namespace {

using namespace kernel_list;
using guarded::Bytes;
using guarded::random_bytes;

template <class T>
auto flat(std::span<T> buffer) {
  return std::tuple(buffer.data(), buffer.size_bytes());
}
auto flat(int number) { return std::tuple(number); }

/// A C function as its C++ form is called: a buffer is a span.
template <auto kKernel>
struct InC {
  Status operator()(auto... given) const {
    return static_cast<Status>(std::apply(kKernel, std::tuple_cat(flat(given)...)));
  }
};

Status bgr_to_floats(Source s, Target t, int width, int height) {
  return InC<morvale_BGR2HSV>{}(s, std::span(reinterpret_cast<float*>(t.data()), t.size() / sizeof(float)),
                                width, height);
}

struct CKernel {
  std::string_view name;
  Status (*run)(Source source, Target target, const Arguments& arguments);
};

template <Group kGroup, auto kKernel>
constexpr CKernel plain(std::string_view name) {
  return {name, call<kGroup, InC<kKernel>{}>};
}

const CKernel kInC[] = {
    {"NV21toRGB", call<kSized, SourceJoined<InC<morvale_NV21toRGB>{}>{}>},
    plain<kSized, morvale_NV21toBGR>("NV21toBGR"),
    plain<kPadded, morvale_NV21toRGB_pad>("NV21toRGB_pad"),
    plain<kPadded, morvale_NV21toBGR_pad>("NV21toBGR_pad"),
    plain<kPadded, morvale_NV12toRGB_pad>("NV12toRGB_pad"),
    plain<kPadded, morvale_NV21toBGR_pad_lsi>("NV21toBGR_pad_lsi"),
    {"RGBtoNV21", call<kSized, TargetJoined<InC<morvale_RGBtoNV21>{}>{}>},
    plain<kSized, morvale_BGRtoNV21>("BGRtoNV21"),
    plain<kSized, morvale_BGR2GRAY>("BGR2GRAY"),
    {"BGR2HSV", call<kSized, bgr_to_floats>},
    plain<kScaled, morvale_resize_NV21>("resize_NV21"),
    {"resize_NV21_opt", call<kScaled, SourceJoined<InC<morvale_resize_NV21_opt>{}>{}>},
    plain<kSized, morvale_resize_NV21_2x_up>("resize_NV21_2x_up"),
    plain<kSized, morvale_resize_NV21_2x_down>("resize_NV21_2x_down"),
    plain<kSized, morvale_resize_NV21_3x_down>("resize_NV21_3x_down"),
    plain<kScaled, morvale_resize_Y_1>("resize_Y_1"),
    plain<kByFactor, morvale_resize_y>("resize_y"),
    plain<kSized, morvale_resize_y_2x_up>("resize_y_2x_up"),
    plain<kSized, morvale_resize_y_4x_up>("resize_y_4x_up"),
    plain<kSized, morvale_resize_y_6x_up>("resize_y_6x_up"),
    plain<kRegion, morvale_resize_y_8x_up_RR_hori>("resize_y_8x_up_RR_hori"),
    plain<kRegion, morvale_resize_y_8x_up_RR_vert>("resize_y_8x_up_RR_vert"),
    plain<kTurned, morvale_rotate_y>("rotate_y"),
    plain<kTurned, morvale_rotate_y_opt>("rotate_y_opt"),
    plain<kTurned, morvale_rotate_NV21>("rotate_NV21"),
    plain<kTurned, morvale_rotate_NV21_opt>("rotate_NV21_opt"),
    plain<kBlurred, morvale_GaussianBlur_Grid_Hori>("GaussianBlur_Grid_Hori"),
    plain<kBlurred, morvale_GaussianBlur_Grid_Vert>("GaussianBlur_Grid_Vert"),
};

const Bytes kGrid(morvale::kBlurGridColumns + 2, 1);
const std::vector<uint16_t> kWeights = {16, 64, 96, 64, 16};

/// No two numbers alike, so that none can stand for another.
Arguments arguments_of(Group group) {
  Arguments a{.width = 9, .height = 6, .out_width = 17, .out_height = 11};
  a.right_margin = 4, a.bottom_margin = 3, a.mode = 2, a.factor = 3;
  a.region = {1, 2, 5, 3};
  a.blur = {kGrid, kWeights, 2, 8};
  if (group == kRegion) a.out_width = 43;
  return a;
}

TEST(KernelsInC, VerdictsAndBytesAreThoseOfCppWhateverTheLengths) {
  const Bytes source = random_bytes(200, 1), held = random_bytes(2000, 2);
  for (const CKernel& in_c : kInC) {
    SCOPED_TRACE(in_c.name);
    const Kernel& in_cpp = *find(in_c.name);
    int done = 0, refused = 0;
    const auto expect_same = [&](size_t reads, size_t writes, const Arguments& a) {
      Bytes expected = held, found = held;
      const Source from = Source(source).first(reads);
      const Status verdict = in_cpp.checked(from, Target(expected).first(writes), a);
      ASSERT_EQ(in_c.run(from, Target(found).first(writes), a), verdict) << reads << ", " << writes;
      ASSERT_EQ(found, expected) << reads << ", " << writes;
      ++(verdict == Status::kOk ? done : refused);
    };
    Arguments a = arguments_of(in_cpp.group);
    for (size_t n = 0; n < source.size(); ++n) expect_same(n, held.size(), a);
    for (size_t n = 0; n < held.size(); ++n) expect_same(source.size(), n, a);
    if (in_cpp.group == kBlurred) {
      for (a.blur.grid = {}; a.blur.grid.size() < kGrid.size();
           a.blur.grid = Source(kGrid).first(a.blur.grid.size() + 1))
        expect_same(source.size(), held.size(), a);
      a.blur.weights = a.blur.weights.first(4);
      expect_same(source.size(), held.size(), a);
    }
    EXPECT_GT(done, 0);
    EXPECT_GT(refused, 0);
  }
}

TEST(KernelsInC, PlanesHaveSizesOfTheirOwn) {
  constexpr int kWidth = 8, kHeight = 3;
  constexpr size_t kPixels = 24;
  const Bytes nv21 = random_bytes(kPixels + 16, 1);
  Bytes expected[3], planes[3];
  for (int k = 0; k < 3; ++k) expected[k] = planes[k] = Bytes(kPixels, 9);
  const auto convert = [&](size_t blue, size_t green, size_t red) {
    return morvale_NV21toBGR_planar(nv21.data(), nv21.size(), planes[0].data(), blue, planes[1].data(), green,
                                    planes[2].data(), red, kWidth, kHeight);
  };
  EXPECT_EQ(convert(kPixels - 1, kPixels, kPixels), MORVALE_DESTINATION_TOO_SMALL);
  EXPECT_EQ(convert(kPixels, kPixels - 1, kPixels), MORVALE_DESTINATION_TOO_SMALL);
  EXPECT_EQ(convert(kPixels, kPixels, kPixels - 1), MORVALE_DESTINATION_TOO_SMALL);
  EXPECT_EQ(planes[0], expected[0]);
  ASSERT_EQ(convert(kPixels, kPixels, kPixels), MORVALE_OK);
  uint8_t* const starts[] = {expected[0].data(), expected[1].data(), expected[2].data()};
  NV21toBGR_planar(nv21.data(), starts, kWidth, kHeight);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(planes[k], expected[k]) << k;
}

TEST(KernelsInC, WeightsAreCountedInBytes) {
  std::vector<uint16_t> expected(5), weights(5, 7);
  EXPECT_EQ(morvale_GFilterCreation(1.2f, 2, 14, weights.data(), 9), MORVALE_DESTINATION_TOO_SMALL);
  EXPECT_EQ(weights, std::vector<uint16_t>(5, 7));
  EXPECT_EQ(morvale_GFilterCreation(1.2f, 2, 14, weights.data(), 10), MORVALE_OK);
  GFilterCreation(1.2f, 2, 14, expected.data());
  EXPECT_EQ(weights, expected);
}

TEST(KernelsInC, TheLibrarySaysWhoItIsAndWhatAStatusMeans) {
  EXPECT_STREQ(morvale_kernels_version(), MORVALE_KERNELS_VERSION);
  EXPECT_NE(std::string_view("portable avx2 avx512 neon").find(morvale_kernels_set()),
            std::string_view::npos);
  for (int status = MORVALE_OK; status <= MORVALE_DESTINATION_TOO_SMALL + 1; ++status)
    EXPECT_STREQ(morvale_status_text(status), checked::message(static_cast<Status>(status)));
}

TEST(KernelsInC, ANullPointerHoldsNothing) {
  uint8_t bytes[12] = {};
  EXPECT_EQ(morvale_BGR2GRAY(nullptr, 12, bytes, 12, 2, 2), MORVALE_SOURCE_TOO_SMALL);
  EXPECT_EQ(morvale_BGR2GRAY(bytes, 12, nullptr, 12, 2, 2), MORVALE_DESTINATION_TOO_SMALL);
  EXPECT_EQ(morvale_BGR2GRAY(nullptr, 0, nullptr, 0, 0, 2), MORVALE_OK) << "of an empty picture";
}

}  // namespace
