/// A camera service in miniature for record_test: drives the library and writes the results.
///   record_camera film front|back RESULTS    a made-up session: moving pictures, gates, broken frames
///   record_camera replay BUNDLE RESULTS      the frames of a bundle, as they were delivered
///   record_camera crash front|back RESULTS   the made-up session, killed in its seventh frame
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include <morvale/morvale.h>
#include "session/bundle.h"

namespace {

using namespace morvale::session;

constexpr int kFrames = 12;

/// A frame's pixels in a plane or two of their own.
struct Planes {
  std::vector<uint8_t> luma, chroma;
};

/// What the caller does with one frame.
struct Calls {
  bool after_process = true;
  bool fetch = true;                                                    ///< calls Morvale_core_getresult
  std::function<void(MorvaleData_t&)> between = [](MorvaleData_t&) {};  ///< behind Morvale_process
};

void process(MorvaleCore& core, const Calls& calls, std::ofstream& results) {
  PersonWholeMeta result{};
  const int answer = core.Morvale_process();
  calls.between(*core.inputData);
  if (calls.after_process) core.Morvale_core_afterProcss();
  if (calls.fetch) {
    core.Morvale_core_getresult(&result);
  } else {
    result = core.result;
  }
  results.write(reinterpret_cast<const char*>(&answer), sizeof answer);
  results.write(reinterpret_cast<const char*>(&result), sizeof result);
}

/// Every way in which a frame can differ from a plain one comes up once.
Planes deliver(int frame, int camera, MorvaleData_t& record) {
  record = {};
  record.cameraType = camera;
  record.width = frame < 8 ? 320 : 180;
  record.height = 240;
  record.stride = frame == 3 ? 352 : 0;
  record.gateLevel = frame == 4 ? 25.5f : frame == 7 ? std::numeric_limits<float>::quiet_NaN() : 0.1f;
  record.faceCount = frame == 11 ? 0 : frame % 3;
  record.faces[0] = {130 + frame, 40, 60, 70};
  record.faces[1] = {10, 10, 30 + frame, 30};
  record.qermHint = 3 * frame;
  record.isUDC = frame == 9;
  const size_t stride = static_cast<size_t>(record.stride == 0 ? record.width : record.stride);
  Planes planes{std::vector<uint8_t>(stride * 360), {}};
  for (size_t i = 0; i < planes.luma.size(); ++i) {
    planes.luma[i] = static_cast<uint8_t>(i / stride + i % stride * 3 + static_cast<size_t>(frame) * 11);
  }
  record.yPlane = record.uvPlane = planes.luma.data();
  if (frame == 5) {
    planes.chroma.assign(stride * 120, 77);
    record.uvPlane = planes.chroma.data();
  }
  if (frame == 6) record.yPlane = nullptr;
  return planes;
}

/// What the caller changes in the record between the two calls: frame 9 gets the other camera and size, 10
/// loses its planes, 11 gets its face.
void change(int frame, MorvaleData_t& record) {
  if (frame == 9) {
    record.cameraType = record.cameraType == kFrontCamera ? 0 : kFrontCamera;
    record.width = 1000;
    record.height = 60;
    record.stride = 1008;
  }
  if (frame == 10) record.yPlane = record.uvPlane = nullptr;
  if (frame == 11) record.faceCount = 1;
}

void film(int camera, bool crash, std::ofstream& results) {
  MorvaleData_t record{};
  record.cameraType = camera;
  MorvaleCore core;
  core.Morvale_core_init(&record);
  core.Morvale_core_setModel(camera);
  for (int frame = 0; frame < kFrames; ++frame) {
    const Planes planes = deliver(frame, camera, record);
    if (crash && frame == 6) std::raise(SIGKILL);
    process(core, {frame != 8, frame != 10, [=](MorvaleData_t& seen) { change(frame, seen); }}, results);
  }
  core.Morvale_core_deinit();
}

/// As the caller of the recorded session changed it. Pointers that lead nowhere are not read.
void change(const LaterRecord& later, MorvaleData_t& record) {
  record.cameraType = later.camera_type;
  record.width = later.width;
  record.height = later.height;
  record.stride = later.stride;
  if (!later.has_luma) record.yPlane = nullptr;
}

void replay(const std::string& folder, std::ofstream& results) {
  const BundleReader bundle(folder);
  MorvaleData_t record{};
  record.cameraType = bundle.info().camera_type;
  MorvaleCore core;
  core.Morvale_core_init(&record);
  core.Morvale_core_setModel(bundle.info().camera_type);
  for (int frame = 0; frame < bundle.frame_count(); ++frame) {
    FrameInput input = bundle.input(frame);
    record = input.record;
    Planes planes{std::move(input.nv21), {}};
    record.yPlane = record.uvPlane = input.has_planes ? planes.luma.data() : nullptr;
    if (!input.chroma_follows) {
      const auto split = planes.luma.begin() + record.width * record.height;
      planes.chroma.assign(split, planes.luma.end());
      record.uvPlane = planes.chroma.data();
    }
    Calls calls{.after_process = input.after_process};
    if (input.later) calls.between = [&](MorvaleData_t& seen) { change(*input.later, seen); };
    process(core, calls, results);
  }
  core.Morvale_core_deinit();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string what = argv[1], which = argv[2];
  std::ofstream results(argv[3], std::ios::binary);
  try {
    if (what == "replay") {
      replay(which, results);
    } else {
      film(which == "front" ? morvale::kFrontCamera : 0, what == "crash", results);
    }
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
