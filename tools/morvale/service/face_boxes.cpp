#include "service/face_boxes.h"

#include <algorithm>
#include <iterator>

#include "service/report_text.h"

namespace tool {
namespace {

/// The library's rule: the face, smaller by a sixth of its width on every side, lies inside the box.
bool belongs(const FaceRect& face, const FaceRect& box) {
  const int64_t margin = face.w / 6;
  return int64_t{face.x} + margin >= box.x && int64_t{face.y} + margin >= box.y &&
         int64_t{face.x} + face.w - 1 - margin < int64_t{box.x} + box.w &&
         int64_t{face.y} + face.h - 1 - margin < int64_t{box.y} + box.h;
}

}  // namespace

std::vector<FaceRect> face_boxes(const FrameReport& report) {
  const auto count = static_cast<size_t>(measured_faces(report));
  std::vector<FaceRect> boxes;
  for (const FaceRect& box : report.person_boxes) {
    std::vector<FaceRect> inside;
    std::copy_if(report.camera_faces.begin(), report.camera_faces.end(), std::back_inserter(inside),
                 [&](const FaceRect& face) { return belongs(face, box); });
    if (inside.size() < 2) inside = {box};
    boxes.insert(boxes.end(), inside.begin(), inside.end());
  }
  if (report.person_boxes.empty()) boxes = report.camera_faces;
  boxes.resize(std::min(boxes.size(), count));
  if (boxes.size() < count) boxes.clear();
  return boxes;
}

std::vector<int> left_to_right(const std::vector<FaceRect>& boxes) {
  std::vector<int> places;
  for (const FaceRect& box : boxes)
    places.push_back(static_cast<int>(std::count_if(boxes.begin(), boxes.end(), [&](const FaceRect& other) {
      return other.x < box.x || (other.x == box.x && &other < &box);
    })));
  return places;
}

}  // namespace tool
