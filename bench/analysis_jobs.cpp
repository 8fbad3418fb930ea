#include "bench/analysis_jobs.h"

#include <memory>

#include <morvale/morvale.h>
#include "bench/camera.h"
#include "bench/floor.h"
#include "bench/peers/chain.h"
#include "bench/peers/opencv_analyses.h"

namespace bench {
namespace {

constexpr int kWidth = 256, kHeight = 192, kPixels = kWidth * kHeight;
constexpr int kFrameWidth = 4000, kFrameHeight = 3000;

/// The shrunk frame beside a front camera's map.
struct SmallFrame {
  Bytes luma = picture(kWidth, kHeight, 1, 1), rgb = picture(kWidth, kHeight, 3, 2);
};

Job faces(int count, int columns, int rows) {
  const ScoreMap map = faces_on_grid(kWidth, kHeight, count, columns, rows);
  return {
      "faces_256x192_" + std::to_string(count) + (count == 1 ? "_blob" : "_blobs"),
      "OpenCV: whole regions (outer contours, or components), one window at every border; the rule loses "
      "parts "
      "in merges and keeps asymmetric borders. Ours includes matching and an empty face rectangle's figures",
      {.of_fastest_peer = 0.15},
      our_faces(map, kWidth, kHeight),
      {{"opencv", opencv_faces(map, kWidth, kHeight, true)},
       {"opencv:components", opencv_faces(map, kWidth, kHeight, false)}},
      move_bytes(5 * kPixels, kPixels)};
}

constexpr int kFaceWidth = 120, kFaceHeight = 150, kFaceLeft = 60, kFaceTop = 20;

/// Every pixel of the rectangle takes part.
struct FaceRectangle {
  Bytes scores = Bytes(kPixels, 235), mask = Bytes(kPixels, 255);
  Bytes luma = picture(kWidth, kHeight, 1, 1), rgb = picture(kWidth, kHeight, 3, 2);
};

Work our_figures() {
  const auto camera = std::make_shared<Camera>(morvale::kFrontCamera, portrait(), kFrameWidth, kFrameHeight);
  const auto face = std::make_shared<FaceRectangle>();
  camera->core().segFactor = 48;
  return [=] {
    camera->core().WriteFaceInfo(face->scores.data(), face->luma.data(), face->rgb.data(), face->mask.data(),
                                 kWidth, 0, kFaceLeft, kFaceLeft + kFaceWidth, kFaceTop,
                                 kFaceTop + kFaceHeight, 0);
  };
}

Work opencv_figures() {
  const auto figures = std::make_shared<ocv::FaceFigures>();
  const auto face = std::make_shared<FaceRectangle>();
  return [=] {
    (*figures)(face->scores.data(), face->luma.data(), face->rgb.data(),
               ocv::over(face->mask.data(), kHeight, kWidth, CV_8UC1),
               {kFaceLeft, kFaceTop, kFaceWidth, kFaceHeight});
  };
}

Job face_figures() {
  constexpr size_t kFace = kFaceWidth * kFaceHeight;
  return {
      "face_figures_120x150",
      "OpenCV: 8-bit HSV with 256 hues, never negative, and histograms; the rule: whole degrees from -60, "
      "float saturation",
      {.of_fastest_peer = 0.30},
      our_figures,
      {{"opencv", opencv_figures}},
      move_bytes(6 * kFace, 0)};
}

Work our_front_scene() {
  const auto camera = std::make_shared<Camera>(morvale::kFrontCamera, portrait(), kFrameWidth, kFrameHeight);
  const auto frame = std::make_shared<SmallFrame>();
  const auto map = std::make_shared<Bytes>(portrait().bytes());
  camera->core().segFactor = 48;
  camera->core().scaleRatio = kFrameWidth / 256.0f;
  return [=] { camera->core().argMax_human_onlySkin(frame->rgb.data(), frame->luma.data(), map->data()); };
}

Work chain_front_scene() {
  const auto chain = std::make_shared<ChainFrontScene>();
  const auto frame = std::make_shared<SmallFrame>();
  const auto map = std::make_shared<Bytes>(portrait().bytes());
  return [=] { (*chain)(map->data(), 64, 48, frame->luma.data(), frame->rgb.data()); };
}

Job front_scene() {
  return {"front_scene_64x48",
          "the fastest library call for each step: split, 4x up, faces, figures of one face",
          {.of_fastest_peer = 0.18},
          our_front_scene,
          {{"chain", chain_front_scene}},
          move_bytes(5 * 64 * 48, 0)};
}

Work our_back_scene() {
  const auto camera = std::make_shared<Camera>(kBackCamera, person(), 1920, 1080);
  const auto map = std::make_shared<Bytes>(person().bytes());
  camera->core().segFactor = 18;
  return [=] { camera->core().argMax_back_only_human(map->data()); };
}

Work opencv_back_scene() {
  const auto scene = std::make_shared<ocv::BackScene>();
  const auto map = std::make_shared<Bytes>(person().bytes());
  return [=] { (*scene)(map->data(), 32, 18); };
}

Job back_scene() {
  return {
      "back_scene_32x18",
      "OpenCV: masks, dilation, outer contours, a centred resize; the rule: trailing window, lossy merges",
      {.of_fastest_peer = 0.20},
      our_back_scene,
      {{"opencv", opencv_back_scene}},
      move_bytes(5 * 32 * 18, 288)};
}

}  // namespace

Way our_faces(const ScoreMap& map, int width, int height) {
  return [=]() -> Work {
    const auto camera =
        std::make_shared<Camera>(morvale::kFrontCamera, portrait(), kFrameWidth, kFrameHeight);
    const auto planes = std::make_shared<std::vector<Bytes>>(map.planes());
    camera->core().segFactor = 48;
    camera->core().scaleRatio = 1e-6f;  // every box shrinks to a point: no pixel is measured
    return [=] {
      auto& p = *planes;
      camera->core().DL_FD_Calc(p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data(), nullptr,
                                nullptr, width, height, 0);
    };
  };
}

Way opencv_faces(const ScoreMap& map, int width, int height, bool by_contours) {
  return [=]() -> Work {
    const auto regions = std::make_shared<ocv::FaceRegions>();
    const auto planes = std::make_shared<std::vector<Bytes>>(map.planes());
    const auto by = by_contours ? ocv::FaceRegions::By::kContours : ocv::FaceRegions::By::kComponents;
    return [=] {
      const auto& p = *planes;
      (*regions)({p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data()}, width, height, by);
    };
  };
}

Jobs analysis_jobs() {
  return {faces(1, 2, 1), faces(5, 3, 2), faces(50, 10, 5), face_figures(), front_scene(), back_scene()};
}

}  // namespace bench
