/// What becomes of a video whose data is damaged.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>
#include <string>

#include "pictures/opencv_module.h"
#include "sources/frame_source.h"

namespace {

/// Motion JPEG of a still pattern, so that every frame is its own key frame.
std::string video(const std::filesystem::path& folder, int frames) {
  const std::string file = folder / "clip.avi";
  cv::Mat pattern(240, 320, CV_8UC3);
  cv::theRNG().state = 1;
  cv::randu(pattern, 0, 255);
  cv::VideoWriter writer(file, cv::CAP_FFMPEG, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25,
                         pattern.size());
  for (int i = 0; i < frames; ++i) writer.write(pattern);
  return file;
}

/// Overwrites the middle of a frame's data.
void damage(const std::string& file, int frame) {
  std::ifstream in(file, std::ios::binary);
  std::string bytes(std::istreambuf_iterator<char>(in), {});
  size_t at = bytes.find("movi");
  for (int i = 0; i <= frame; ++i) at = bytes.find("00dc", at + 4);
  ASSERT_NE(at, std::string::npos);
  bytes.replace(at + 8000, 2000, 2000, '\xff');
  std::ofstream(file, std::ios::binary) << bytes;
}

/// How many frames came, and how many of them are told of as damaged.
std::pair<int, int> read_all(const std::string& file) {
  const auto source = tool::open_video(file);
  int frames = 0;
  while (source->next()) ++frames;
  return {frames, source->damaged_frames()};
}

TEST(Video, DamagedFramesAreCounted) {
  std::string pattern = (std::filesystem::temp_directory_path() / "video_test_XXXXXX").string();
  const std::filesystem::path folder = mkdtemp(pattern.data());
  const std::string file = video(folder, 30);
  EXPECT_EQ(read_all(file), std::pair(30, 0));
  damage(file, 4);
  EXPECT_EQ(read_all(file), std::pair(30, 1));
  for (const int frame : {5, 20}) damage(file, frame);
  EXPECT_EQ(read_all(file), std::pair(30, 3));
  std::filesystem::remove_all(folder);
}

}  // namespace
