/// What a small input may cost: memory follows what is read, not what a header claims.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "common/command.h"
#include "fakes/peak_memory.h"
#include "service/camera_service.h"
#include "service/faces.h"
#include "sources/frame_source.h"

namespace {

using testing_memory::peak_mib;
using namespace tool;

constexpr long kSmall = 48;  // MiB; the claims below would take hundreds and more

class SmallInput : public testing::Test {
 protected:
  SmallInput() {
    std::string pattern = (std::filesystem::temp_directory_path() / "input_test_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~SmallInput() override { std::filesystem::remove_all(folder_); }

  std::string file(const std::string& name, const std::string& text, uintmax_t size = 0) {
    const std::string path = folder_ / name;
    std::ofstream(path) << text;
    if (size > 0) std::filesystem::resize_file(path, size);
    return path;
  }

  std::filesystem::path folder_;
};

std::string refusal(const auto& action) {
  try {
    action();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST_F(SmallInput, AStreamsHeaderTakesNoFrame) {
  const std::string header = "YUV4MPEG2 W16384 H16384 C420\n";
  const std::string alone = file("a.y4m", header), begun = file("b.y4m", header + "FRAME\nabc");
  EXPECT_FALSE(make_y4m_source(alone)->next());
  const auto read = [&] { return refusal([&] { make_y4m_source(begun)->next(); }); };
  EXPECT_NE(read().find("ends within frame 0"), std::string::npos) << read();
  EXPECT_LT(peak_mib([&] { make_y4m_source(alone)->next(), read(); }), kSmall);
}

TEST_F(SmallInput, AFrameWithoutPixelsTakesNone) {
  setenv("VEXA_ENGINE", "fixed", 1);
  setenv("MORVALE_LOG", "S", 1);
  const auto replay = [](morvale::session::ChromaPlace chroma, float gate) {
    morvale::session::FrameInput input;
    input.record.width = input.record.stride = input.record.height = 37800;  // 2 GB
    input.record.gateLevel = gate;
    input.chroma = chroma;
    return CameraService(Camera::kFront).replay(input).process;
  };
  using morvale::session::ChromaPlace;
  EXPECT_EQ(replay(ChromaPlace::kFound, 0), 0) << "a frame that is analysed";
#ifdef SANITIZED
  GTEST_SKIP() << "a sanitizer writes books over every byte that is allocated";
#endif
  const long peak = peak_mib([&] {
    replay(ChromaPlace::kFound, 26);
    replay(ChromaPlace::kApart, 0);
    replay(ChromaPlace::kBehind, 0);
  });
  EXPECT_GE(peak, 0);
  EXPECT_LT(peak, 4 * kSmall) << "the few rows that shrinking looks at";
}

TEST_F(SmallInput, AFaceListHasALengthAndWholeNumbers) {
  const std::pair<std::string, std::string> cases[] = {
      {file("long.json", "[", 3ull << 30), "longer than 4 MiB"},
      {file("wide.json", R"([{"x": 1, "y": 2, "w": 3000000000, "h": 4}])"), "\"w\" is out of range"},
      {file("huge.json", R"([{"x": 1, "y": 1e300, "w": 3, "h": 4}])"), "whole number \"y\""},
      {file("twice.json", R"([{"x": 1, "x": 2, "w": 3, "h": 4}])"), "holds \"x\" twice"},
  };
  for (const auto& [path, words] : cases) {
    const auto read = [file = path] { return refusal([&] { make_face_source(file, "", {"a.png"}); }); };
    EXPECT_NE(read().find(words), std::string::npos) << path << ": " << read();
    EXPECT_LT(peak_mib(read), kSmall) << path;
  }
}

}  // namespace
