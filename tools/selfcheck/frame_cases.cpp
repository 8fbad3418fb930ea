/// Whole frames, as the camera service sends them: the picture the network sees, its label maps, the record.
#include <array>
#include <climits>
#include <limits>

#include <morvale/morvale.h>
#include "selfcheck/camera.h"
#include "selfcheck/cases.h"
#include "selfcheck/crash.h"

namespace morvale::selfcheck {
namespace {

/// Before the frame `index` of a scene is run: changes to the record, on top of size and planes.
using Change = void (*)(Camera& camera, int index);

struct Scene {
  const char* name;
  int camera_type, width, height, frames;
  Change change = nullptr;
};

void no_change(Camera&, int) {}

/// The camera sees a face in every box of the former frame: first far smaller, then far larger.
void faces_in_boxes(Camera& camera, int index) {
  camera.record.faceCount = std::min(camera.core.personCount, morvale::kMaxFaces);
  const int percent = 30 + 3 * index % 110;
  for (int k = 0; k < camera.record.faceCount; ++k) {
    const FaceRect& box = camera.core.personBoxes[k];
    camera.record.faces[k] = {box.x + box.w * (100 - percent) / 200, box.y + box.h * (100 - percent) / 200,
                              box.w * percent / 100, box.h * percent / 100};
  }
}

void under_display(Camera& camera, int index) {
  camera.record.isUDC = 1;
  faces_in_boxes(camera, 20 + index);
}

/// No frame is analysed while the gate is shut; the smoothing then starts afresh.
void gate_shuts(Camera& camera, int index) {
  faces_in_boxes(camera, index);
  camera.record.gateLevel = index == 30 ? 25.5f : 25.0f;
}

void planes_apart(Camera& camera, int) {
  camera.record.stride = camera.record.width + 15;
  camera.record.uvPlane = camera.frame.data() + camera.record.width * camera.record.height / 4;
}

template <int kLevel>
void debug_level(Camera& camera, int) {
  VISUALDEBUG = kLevel;
  camera.record.stride = camera.record.width;
}

/// Numbers that no camera sends, four rectangles a frame.
void hostile_faces(Camera& camera, int index) {
  constexpr int32_t kOdd[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 60, INT_MAX - 1, INT_MAX};
  const int32_t x = kOdd[index % 8], w = kOdd[index * 3 / 8 % 8], other = kOdd[(index + 5) % 8];
  camera.record.faceCount = index % 4 == 3 ? 6 : 4;
  camera.record.faces[0] = {x, x, w, w};
  camera.record.faces[1] = {x, other, w, other};
  camera.record.faces[2] = {other, x, other, w};
  camera.record.faces[3] = {60, 50, w, x};
  camera.record.faces[4] = {40, 40, 90, 90};
}

/// Sizes that cannot be: the frame fails, the analysis follows all the same.
void hostile_sizes(Camera& camera, int index) {
  constexpr int32_t kOdd[] = {0, -1, INT_MIN, INT_MAX, 65'536};
  if (index % 2 == 1) camera.record.width = camera.record.height = kOdd[index / 2 % 5];
}

void odd_scores(Camera& camera, int index) {
  std::vector<float> scores(static_cast<size_t>(5 * NETSIZE * NETSIZE));
  constexpr float kOdd[] = {std::numeric_limits<float>::quiet_NaN(),
                            std::numeric_limits<float>::infinity(),
                            -std::numeric_limits<float>::infinity(),
                            1e30f,
                            9.99f,
                            -9.99f,
                            0.0f};
  Random random(static_cast<uint64_t>(index));
  for (float& score : scores) score = kOdd[random.below(7)];
  camera.answer_with(scores);
}

void other_camera(Camera& camera, int index) {
  camera.record.cameraType = index % 2 == 0 ? morvale::kFrontCamera : kBackCamera;
}

constexpr Scene kScenes[] = {
    {"front 640x480", morvale::kFrontCamera, 640, 480, 4, faces_in_boxes},
    {"front 1920x1080", morvale::kFrontCamera, 1920, 1080, 3, no_change},
    {"front 1440x1080", morvale::kFrontCamera, 1440, 1080, 3, no_change},
    {"front 1000x750", morvale::kFrontCamera, 1000, 750, 3, faces_in_boxes},
    {"front portrait 480x640", morvale::kFrontCamera, 480, 640, 4, faces_in_boxes},
    {"front portrait 100x700", morvale::kFrontCamera, 100, 700, 3, no_change},
    {"front one column", morvale::kFrontCamera, 1, 400, 2, no_change},
    {"front odd 641x359", morvale::kFrontCamera, 641, 359, 3, no_change},
    {"front small 33x21", morvale::kFrontCamera, 33, 21, 3, no_change},
    {"front square 300x300", morvale::kFrontCamera, 300, 300, 3, no_change},
    {"front planes apart", morvale::kFrontCamera, 320, 240, 3, planes_apart},
    {"front debug view", morvale::kFrontCamera, 320, 240, 3, debug_level<1>},
    {"front under display", morvale::kFrontCamera, 400, 300, 12, under_display},
    {"front 60 frames", morvale::kFrontCamera, 320, 240, 60, gate_shuts},
    {"front hostile faces", morvale::kFrontCamera, 256, 256, 64, hostile_faces},
    {"front hostile sizes", morvale::kFrontCamera, 256, 192, 10, hostile_sizes},
    {"front odd scores", morvale::kFrontCamera, 256, 144, 5, odd_scores},
    {"front and back in turns", morvale::kFrontCamera, 320, 180, 6, other_camera},
    {"back 640x480", kBackCamera, 640, 480, 4, no_change},
    {"back 1920x1080", kBackCamera, 1920, 1080, 3, no_change},
    {"back portrait 270x480", kBackCamera, 270, 480, 4, no_change},
    {"back odd 333x187", kBackCamera, 333, 187, 3, no_change},
    {"back debug view", kBackCamera, 300, 300, 3, debug_level<2>},
    {"back 60 frames", kBackCamera, 480, 270, 60, no_change},
    {"back odd scores", kBackCamera, 256, 144, 5, odd_scores},
};

/// People come and go; every 16th frame is full of specks.
std::vector<float> scores_of(int index) {
  ScoreMap map(NETSIZE, NETSIZE * 3 / 4, static_cast<uint64_t>(index / 4));
  if (index % 16 == 15) return map.confetti().network_scores();
  // Faces of a size that counts, walking by; the rest is at random.
  map.blobs(index % 5);
  const int unit = NETSIZE / 16;
  map.blob(2 * unit + index % 7, 2 * unit, 5 * unit, 7 * unit, 2);
  map.blob(10 * unit, unit + index % 5, 3 * unit, 4 * unit, 2 + index % 2);
  return map.network_scores();
}

void run_scene(Figures& figures, const Scene& scene) {
  case_under_way = scene.name;
  Camera camera(scene.camera_type);
  camera.record.qermHint = 77;
  Sheet sheet;
  for (int index = 0; index < scene.frames; ++index) {
    camera.take(nv21_frame(scene.width, scene.height, static_cast<uint64_t>(index)), scene.width,
                scene.height);
    camera.answer_with(scores_of(index));
    scene.change(camera, index);
    sheet.add("Morvale_process", camera.run_frame());
    sheet.add_results(camera.core);
    sheet.add("frameCount", camera.core.frameCount);
    sheet.add("segFactor", camera.core.segFactor);
    sheet.add("scaleRatio", camera.core.scaleRatio);
    sheet.add("luma plane", camera.frame.data(), camera.frame.size());
  }
  const auto pixels = static_cast<size_t>(PADSIZE * PADSIZE);
  sheet.add("resizedFrame", camera.core.resizedFrame, pixels * 3 / 2);
  sheet.add("rgbInput", camera.core.rgbInput, pixels * 3);
  sheet.add("network input", camera.core.netInput, pixels * 3 * sizeof(float));
  sheet.add("front ring", N_segResult_Front, sizeof N_segResult_Front);
  sheet.add("back ring", N_segResult_Back, sizeof N_segResult_Back);
  sheet.append_to(figures, scene.name);
}

void add_state(Sheet& sheet, const MorvaleCore& core) {
  sheet.add_results(core);
  for (const int32_t word : {core.status, core.segFactor, N0, N1, N2}) sheet.add("state", word);
  sheet.add("frameCount", core.frameCount);
  sheet.add("scaleRatio", core.scaleRatio);
}

/// A core before its first frame: new, and initialised again.
void run_beginning(Figures& figures) {
  case_under_way = "a new core";
  Sheet sheet;
  MorvaleCore core;
  add_state(sheet, core);
  MorvaleData_t record{};
  core.status = core.personCount = core.result.humanRatio = N0 = N1 = N2 = 5;
  core.frameCount = 5;
  core.personBoxes[2] = {1, 2, 3, 4};
  core.Morvale_core_init(&record);
  VISUALDEBUG = 0;
  add_state(sheet, core);
  sheet.append_to(figures, "a new core");
}

}  // namespace

void measure_frames(Figures& figures) {
  run_beginning(figures);
  for (const Scene& scene : kScenes) run_scene(figures, scene);
}

Figures measure() {
  Figures figures;
  measure_kernels(figures);
  measure_network(figures);
  measure_analyses(figures);
  measure_frames(figures);
  return figures;
}

}  // namespace morvale::selfcheck
