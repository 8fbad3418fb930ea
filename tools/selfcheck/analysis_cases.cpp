/// The analyses, on maps of their own: sizes that no frame gives, scores around every threshold, more regions
/// than there are labels.
#include <array>

#include <morvale/morvale.h>
#include "selfcheck/camera.h"
#include "selfcheck/cases.h"
#include "selfcheck/crash.h"

namespace morvale::selfcheck {
namespace {

struct MapSize {
  int width, height;
};
constexpr MapSize kMaps[] = {{256, 192}, {256, 144}, {130, 66}, {100, 67}, {70, 37}, {64, 48},
                             {63, 17},   {17, 40},   {9, 9},    {4, 3},    {1, 1},   {0, 5}};

constexpr int kTurns = 5, kCorner = 5, kGrid = 6;

/// Few regions, many, of one size, or specks everywhere; a region in the corner; a grid of regions that the
/// near window does not join, the last of them the largest.
ScoreMap map_of(MapSize size, int turn) {
  ScoreMap map(size.width, size.height, static_cast<uint64_t>(size.width * 8 + turn));
  if (turn == 3) return map.confetti();
  if (turn == 4) return map.squares(size.width / 24, size.width / 6 + 1);
  if (turn == kCorner) return map.squares(size.width / 2, size.width);
  if (turn == kGrid) return map.squares(12, 32).blob(size.width - 28, size.height - 31, 28, 31, 2);
  return size.width < 1 ? map : map.blobs(1 + 6 * turn);
}

/// What an analysis of planes takes.
struct Planes {
  Planes(MapSize size, int turn)
      : scores(map_of(size, turn).planes()),
        luma(bytes_of(kKinds[turn % 3], pixels(size), 21)),
        rgb(bytes_of(kKinds[(turn + 1) % 3], 3 * pixels(size), 22)),
        sixth(bytes_of(Kind::kNoise, pixels(size), 23)) {
    for (uint8_t& byte : sixth) byte /= 2;
  }
  static size_t pixels(MapSize size) { return static_cast<size_t>(size.width * size.height) + 8; }

  uint8_t* operator[](size_t k) { return scores[k].data(); }

  std::vector<Bytes> scores;
  Bytes luma, rgb, sixth;
};

void front_faces_of(Sheet& sheet, MapSize size, int turn) {
  Camera camera(morvale::kFrontCamera);
  camera.record.width = camera.record.height = 700;
  camera.core.scaleRatio = 700 / 256.0f;
  camera.core.segFactor = 48;
  Planes p(size, turn);
  camera.core.DL_FD_Calc(p[0], p[1], p[2], p[3], p[4], p.luma.data(), p.rgb.data(), size.width, size.height,
                         0);
  sheet.add_results(camera.core);
}

void front_faces(Sheet& sheet) {
  for (const MapSize size : kMaps) {
    for (int turn = 0; turn < kTurns; ++turn) front_faces_of(sheet, size, turn);
  }
}

/// Regions at the first row and column; 255, 256 and 272 regions, where a byte's labels end.
void front_regions(Sheet& sheet) {
  for (const MapSize size : {MapSize{256, 192}, {70, 37}}) front_faces_of(sheet, size, kCorner);
  for (const MapSize size : {MapSize{480, 544}, {512, 512}, {544, 512}}) front_faces_of(sheet, size, kGrid);
}

/// One colour with a little noise, half of it on the other side of red: hues around 0.
void paint_skin(Bytes& rgb) {
  Random random(30);
  for (size_t i = 0; i + 2 < rgb.size(); i += 3) {
    rgb[i] = static_cast<uint8_t>(200 + random.below(40));
    rgb[i + 1] = static_cast<uint8_t>(120 + random.below(30));
    rgb[i + 2] = static_cast<uint8_t>(110 + random.below(30));
  }
}

/// Every rectangle of a list, over faces of all kinds of colours.
void face_figures(Sheet& sheet) {
  constexpr MapSize kSize{130, 66};
  struct Rectangle {
    int left, right, top, bottom;
  };
  constexpr Rectangle kRectangles[] = {{0, 130, 0, 66}, {3, 60, 5, 50},  {64, 129, 1, 9},  {50, 51, 20, 21},
                                       {20, 20, 3, 30}, {9, 40, 30, 30}, {60, 20, 40, 10}, {10, 27, 8, 60}};
  Camera camera(morvale::kFrontCamera);
  camera.core.segFactor = 48;
  for (int turn = 0; turn < 6; ++turn) {
    camera.record.isUDC = turn % 2;
    Planes p(kSize, turn % kTurns);
    Bytes mask = bytes_of(Kind::kExtremes, p.luma.size(), 24),
          score2 = bytes_of(Kind::kNoise, p.luma.size(), 25);
    if (turn > 3) paint_skin(p.rgb);
    if (turn > 2) mask.assign(mask.size(), 255), score2.assign(score2.size(), 250);
    for (const Rectangle& r : kRectangles) {
      for (const int face : {0, 1, 2, 3}) {
        camera.core.WriteFaceInfo(score2.data(), p.luma.data(), p.rgb.data(), mask.data(), kSize.width, 0,
                                  r.left + face, r.right, r.top, r.bottom, face);
        sheet.add_results(camera.core);
      }
    }
  }
}

/// The camera's faces against boxes: none, one or several in a box, smaller, alike, larger, and past the
/// frame.
void face_matches(Sheet& sheet) {
  constexpr MapSize kSize{256, 192};
  Camera camera(morvale::kFrontCamera);
  camera.record.width = 640;
  camera.record.height = 480;
  camera.core.scaleRatio = 640 / 256.0f;
  camera.core.segFactor = 48;
  Planes p(kSize, 1);
  Bytes mask(p.luma.size(), 255);
  Random random(26);
  for (int turn = 0; turn < 120; ++turn) {
    camera.core.personCount = turn % 6;
    for (FaceRect& box : camera.core.personBoxes)
      box = {random.below(400), random.below(300), 20 + random.below(300), 20 + random.below(250)};
    camera.record.faceCount = turn % 7;
    for (int k = 0; k < morvale::kMaxFaces; ++k) {
      const FaceRect& box = camera.core.personBoxes[turn % 3 == 0 ? 0 : k];
      const int percent = 40 + turn;
      camera.record.faces[k] = {box.x + box.w * (110 - percent) / 200 + k,
                                box.y + box.h * (100 - percent) / 200, box.w * percent / 100 + 1,
                                box.h * percent / 100 + 1};
    }
    camera.core.Intersection_Calc(p[2], p.luma.data(), p.rgb.data(), mask.data(), kSize.width, kSize.height);
    sheet.add_results(camera.core);
  }
}

/// Every edge of a face on the edge of the box, less a sixth of its width; and one pixel to either side.
void face_edges(Sheet& sheet) {
  Camera camera(morvale::kFrontCamera);
  camera.record.width = 640;
  camera.record.height = 480;
  camera.core.scaleRatio = 640 / 256.0f;
  camera.core.segFactor = 48;
  Planes p({256, 192}, 1);
  Bytes mask(p.luma.size(), 255);
  camera.core.personCount = camera.record.faceCount = 1;
  for (int turn = 0; turn < 4 * 27; ++turn) {
    const int width = 60 + turn % 4 * 40, margin = width / 6;
    camera.core.personBoxes[0] = {100, 80, width - 2 * margin + turn / 12 % 3,
                                  width - 2 * margin + turn / 36 % 3};
    camera.record.faces[0] = {100 - margin + turn / 4 % 3 - 1, 80 - margin + turn / 12 % 3 - 1, width, width};
    camera.core.Intersection_Calc(p[2], p.luma.data(), p.rgb.data(), mask.data(), 256, 192);
    sheet.add_results(camera.core);
  }
}

void persons(Sheet& sheet) {
  for (const MapSize size : kMaps) {
    for (int turn = 0; turn < kTurns; ++turn) {
      Camera camera(morvale::kFrontCamera);
      camera.take(nv21_frame(200, 150, 27), 200, 150);
      camera.core.scaleRatio = 200 / 256.0f;
      camera.core.personBoxes[0] = {150, 100, 80, 90};  // what a too small region leaves
      Planes p(size, turn);
      Bytes mask(p.luma.size(), 7);
      camera.core.DL_Human_Calc(p[0], p[1], p[2], p[3], p[4], p.sixth.data(), nullptr, nullptr, mask.data(),
                                size.width, size.height, 1 + turn % 2);
      sheet.add_results(camera.core);
      sheet.add("mask", mask.data(), mask.size());
      sheet.add("drawing", camera.frame.data(), camera.frame.size());
    }
  }
}

void outlines(Sheet& sheet) {
  struct Outline {
    int left, right, top, bottom;
  };
  constexpr Outline kOutlines[] = {{3, 30, 2, 20},   {-5, 10, -4, 9}, {50, 90, 30, 70}, {10, 10, 5, 5},
                                   {20, 21, 10, 12}, {70, 80, 5, 9},  {0, 63, 0, 47},   {30, 5, 40, 3}};
  for (const int stride : {0, 64, 70}) {
    Camera camera(morvale::kFrontCamera);
    camera.take(bytes_of(Kind::kNoise, 70 * 48 * 3 / 2, 28), 64, 48);
    camera.record.stride = stride;
    for (const Outline& o : kOutlines) {
      camera.core.WriteFaceInfo_DL(nullptr, nullptr, o.left, o.right, o.top, o.bottom);
      camera.core.WriteFaceInfo_HW(nullptr, nullptr, o.left + 1, o.right + 3, o.top, o.bottom + 2, 0);
      sheet.add("plane", camera.frame.data(), camera.frame.size());
    }
  }
}

/// What a box outside the picture leaves at its border, and nothing without a picture.
void outlines_outside(Sheet& sheet) {
  struct Outline {
    int left, right, top, bottom;
  };
  constexpr Outline kOutlines[] = {{70, 90, 5, 30},  {-40, -9, 5, 30}, {5, 50, 60, 80},
                                   {5, 50, -30, -3}, {63, 64, 2, 40},  {70, 90, 40, 70}};
  Camera camera(morvale::kFrontCamera);
  for (const Outline& o : kOutlines) {
    camera.take(bytes_of(Kind::kNoise, 64 * 48 * 3 / 2, 31), 64, 48);
    camera.core.WriteFaceInfo_HW(nullptr, nullptr, o.left, o.right, o.top, o.bottom, 0);
    sheet.add("plane", camera.frame.data(), camera.frame.size());
    camera.record.yPlane = nullptr;
    camera.core.WriteFaceInfo_DL(nullptr, nullptr, o.left, o.right, o.top, o.bottom);
  }
}

void label_planes(Sheet& sheet) {
  for (const int camera_type : {morvale::kFrontCamera, kBackCamera}) {
    Camera camera(camera_type);
    for (const int rows : {0, 1, 15, 18, 28, 32}) {
      camera.core.segFactor = rows;
      ScoreMap map = ScoreMap(NETSIZE, NETSIZE, 29).confetti();
      std::array<Bytes, 6> planes;
      for (Bytes& plane : planes) plane.assign(static_cast<size_t>(NETSIZE * NETSIZE), 9);
      camera.core.argMax_6label(planes[0].data(), planes[1].data(), planes[2].data(), planes[3].data(),
                                planes[4].data(), planes[5].data(), map.bytes.data());
      for (const Bytes& plane : planes) sheet.add("planes", plane.data(), plane.size());
    }
  }
}

void front_scenes(Sheet& sheet) {
  for (const int rows : {36, 48, 64, 28, 3, 1}) {
    for (int turn = 0; turn < kTurns; ++turn) {
      Camera camera(morvale::kFrontCamera);
      camera.record.width = camera.record.height = 500;
      camera.core.scaleRatio = 500 / 256.0f;
      camera.core.segFactor = rows;
      ScoreMap map = map_of({64, 64}, turn);
      Planes p({256, 256}, turn);
      camera.core.argMax_human_onlySkin(p.rgb.data(), p.luma.data(), map.bytes.data());
      sheet.add_results(camera.core);
    }
  }
}

/// Back camera: with the maps that it leaves for tools.
void back_scenes(Sheet& sheet) {
  for (const int rows : {18, 24, 32, 15, 4, 1, 0}) {
    for (int turn = 0; turn < 2 * kTurns; ++turn) {
      Camera camera(kBackCamera);
      camera.record.width = 480 + 33 * turn;
      camera.record.height = 270;
      camera.record.qermHint = 1234 + turn;
      camera.core.segFactor = rows;
      ScoreMap map = map_of({32, 32}, turn % kTurns);
      if (turn == 6) map.blob(10, 1, 6, 5, 2);  // near the share that a person must have
      if (turn == 7) map.blob(3, 2, 20, 14, 2);
      camera.core.argMax_back_only_human(map.bytes.data());
      sheet.add_results(camera.core);
      const auto cells = static_cast<size_t>(NETSIZE * NETSIZE);
      sheet.add("labelMapA", camera.core.labelMapA, cells);
      sheet.add("labelMapB", camera.core.labelMapB, cells);
      sheet.add("labelMapWide", camera.core.labelMapWide, cells * sizeof(int32_t));
      sheet.add("gridMap", camera.core.gridMap, 855);
    }
  }
}

}  // namespace

void measure_analyses(Figures& figures) {
  constexpr struct {
    const char* name;
    void (*measure)(Sheet& sheet);
  } kAnalyses[] = {{"DL_FD_Calc", front_faces},
                   {"DL_FD_Calc with more regions", front_regions},
                   {"WriteFaceInfo", face_figures},
                   {"Intersection_Calc", face_matches},
                   {"Intersection_Calc at the edges", face_edges},
                   {"DL_Human_Calc", persons},
                   {"WriteFaceInfo_DL and WriteFaceInfo_HW", outlines},
                   {"outlines outside the picture", outlines_outside},
                   {"argMax_6label", label_planes},
                   {"argMax_human_onlySkin", front_scenes},
                   {"argMax_back_only_human", back_scenes}};
  for (const auto& analysis : kAnalyses) {
    case_under_way = analysis.name;
    Sheet sheet;
    analysis.measure(sheet);
    sheet.append_to(figures, analysis.name);
  }
}

}  // namespace morvale::selfcheck
