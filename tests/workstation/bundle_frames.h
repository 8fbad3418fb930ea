/// Made-up frames, and what a bundle must give back of them.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "session/bundle.h"

namespace bundle_frames {

namespace fs = std::filesystem;
using namespace morvale::session;

inline const SessionInfo kInfo{morvale::kFrontCamera, 16, 4, 2, 1, "bundle_test \"quoted\" \xff", ""};
inline constexpr size_t kScores = 4 * 4 * 5;

inline FrameInput frame_input(int seed) {
  FrameInput input;
  MorvaleData_t& record = input.record;
  record.cameraType = seed % 2 == 0 ? morvale::kFrontCamera : std::numeric_limits<int32_t>::min();
  record.width = 6;
  record.height = 5;
  record.stride = seed % 2 == 0 ? 0 : 8;
  record.gateLevel = std::nextafter(0.1f, 1.0f) * static_cast<float>(seed + 1);
  record.faceCount = seed % 3;
  for (int i = 0; i < record.faceCount; ++i)
    record.faces[i] = {seed, -1, std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::min()};
  record.qermHint = -seed;
  record.isUDC = seed;
  input.chroma = ChromaPlace{seed % 3};
  input.after_process = seed % 2 == 1;
  input.nv21.assign(static_cast<size_t>(record.stride == 0 ? 6 : 8) * 7, static_cast<uint8_t>(seed));
  return input;
}

inline FrameOutput frame_output(int seed) {
  FrameOutput output;
  output.logits.assign(kScores, 0.1f * static_cast<float>(seed));
  output.logits[1] = std::numeric_limits<float>::quiet_NaN();
  output.logits[2] = -0.0f;
  std::memset(&output.result, seed + 1, sizeof output.result);
  output.labels.assign(4 * 3 * 5, static_cast<uint8_t>(seed));
  output.network_ms = 1.0 / 3 * seed;
  return output;
}

inline std::vector<uint32_t> bits(const std::vector<float>& values) {
  std::vector<uint32_t> result;
  for (const float value : values) result.push_back(std::bit_cast<uint32_t>(value));
  return result;
}

inline void expect_frame(const BundleReader& bundle, int index, const FrameInput& input,
                         const FrameOutput& output) {
  SCOPED_TRACE("frame " + std::to_string(index));
  const FrameInput read = bundle.input(index);
  EXPECT_EQ(std::memcmp(&read.record, &input.record, sizeof read.record), 0);
  EXPECT_EQ(read.nv21, input.nv21);
  EXPECT_EQ(read.chroma, input.chroma);
  EXPECT_EQ(read.has_planes, input.has_planes);
  EXPECT_EQ(read.after_process, input.after_process);
  EXPECT_EQ(read.later, input.later);
  EXPECT_EQ(bundle.metadata(index).record.width, input.record.width);
  EXPECT_EQ(bundle.has_pixels(index), !input.nv21.empty());
  const FrameOutput made = bundle.output(index);
  EXPECT_EQ(made.process_result, output.process_result);
  EXPECT_EQ(made.execute_result, output.logits.empty() ? output.execute_result : std::optional(0));
  EXPECT_EQ(bits(made.logits), bits(output.logits));
  EXPECT_EQ(std::memcmp(&made.result, &output.result, sizeof made.result), 0);
  EXPECT_EQ(made.labels, output.labels);
  EXPECT_EQ(made.network_ms, output.network_ms);
}

class BundleTest : public testing::Test {
 protected:
  BundleTest() {
    std::string pattern = (fs::temp_directory_path() / "bundle_test_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~BundleTest() override { fs::remove_all(folder_); }

  fs::path three_frames(const std::string& name) {
    BundleWriter writer(folder_ / name, kInfo);
    for (int i = 0; i < 3; ++i) writer.add(frame_input(i), frame_output(i));
    return folder_ / name;
  }

  static std::string content(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  /// Makes the lines of a bundle's frames those of a version without hashes, so that what else is wrong with
  /// them comes to light.
  static void forget_hashes(const fs::path& bundle) {
    std::string lines = content(bundle / "metadata.jsonl");
    for (size_t at = 0; (at = lines.find(",\"hashes\"", at)) != std::string::npos;)
      lines.replace(at, lines.find('\n', at) - at, "}");
    std::ofstream(bundle / "metadata.jsonl", std::ios::binary) << lines;
  }

  /// What the reader says of `bundle`; "" when it takes it without a word.
  static std::string complaint(const fs::path& bundle) {
    try {
      return BundleReader(bundle).warning();
    } catch (const BundleError& error) {
      return error.what();
    }
  }

  fs::path folder_;
};

}  // namespace bundle_frames
