/// The face detector's boxes on large pictures.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "service/faces.h"
#include "service/frame_input.h"

namespace {

using namespace tool;

/// The largest face where the detector looks at every pixel.
struct LargePicture {
  const char* name;
  FrameSize size;
  FaceRect face;
};

TEST(CascadeFaces, LargePicturesGiveTheBoxesThatAllOfTheirPixelsGive) {
  const LargePicture pictures[] = {
      {"grace_hopper_512x512.jpg", {512, 512}, {150, 85, 226, 226}},
      {"grace_hopper_512x512.jpg", {1024, 1024}, {308, 175, 437, 437}},
      {"grace_hopper_512x512.jpg", {3464, 3464}, {1032, 591, 1510, 1510}},
      {"grace_hopper_512x512.jpg", {4000, 3000}, {1352, 488, 1350, 1350}},
      {"astronaut.png", {512, 512}, {178, 68, 92, 92}},
      {"astronaut.png", {1024, 1024}, {353, 131, 193, 193}},
      {"astronaut.png", {3464, 3464}, {1196, 450, 651, 651}},
      {"astronaut.png", {4000, 3000}, {1406, 318, 699, 699}},
  };
  for (const LargePicture& picture : pictures) {
    const std::string file = std::string(MORVALE_PHOTO_DIR "/") + picture.name;
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "needs " << file;
    const Frame frame = read_input(file, {picture.size, {}});
    const std::vector<FaceRect> faces = make_face_source("auto", kUsualCascade, {file})->faces(frame);
    ASSERT_FALSE(faces.empty()) << file;
    const double within = 0.02 * std::max(frame.width, frame.height);
    SCOPED_TRACE(picture.name + (" " + text_of(picture.size)));
    EXPECT_NEAR(faces[0].x, picture.face.x, within);
    EXPECT_NEAR(faces[0].y, picture.face.y, within);
    EXPECT_NEAR(faces[0].w, picture.face.w, within);
    EXPECT_NEAR(faces[0].h, picture.face.h, within);
  }
}

}  // namespace
