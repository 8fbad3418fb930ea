/// A camera service in miniature for record_test: drives the library and writes the results.
///   record_camera film front|back RESULTS      a made-up session: moving pictures, gates, broken frames
///   record_camera maps front|back RESULTS      the same; RESULTS.maps gets the label maps that the analyses
///   read record_camera twice front|back RESULTS     two of them record_camera crash front|back RESULTS one,
///   killed in its seventh frame record_camera fork front|back RESULTS      one, with a child that goes on
///   with it from the seventh frame on and
///                                              then has a session of its own
///   record_camera unread front|back RESULTS    one whose planes are not mapped
///   record_camera unloaded front|back RESULTS  the same without a model
///   record_camera replay BUNDLE RESULTS        the frames of a bundle, as they were delivered
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

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
#include "session/frame_files.h"

namespace {

using namespace morvale;
using namespace morvale::session;

constexpr int kFrames = 15;

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

/// What the caller gets from a session.
struct Results {
  std::ofstream records, maps;
};

/// Keeps the map that the analysis is going to read; of a frame without one its size, 0.
void keep_map(const MorvaleCore& core, bool analysed, std::ofstream& maps) {
  const bool front = core.inputData->cameraType == kFrontCamera;
  const uint8_t* map = (front ? N_segResult_Front : N_segResult_Back) + N0 * kRingSlotBytes;
  const int32_t bytes = analysed && core.frameCount > 0 ? NETSIZE * core.segFactor * kLabels : 0;
  maps.write(reinterpret_cast<const char*>(&bytes), sizeof bytes);
  maps.write(reinterpret_cast<const char*>(map), bytes);
}

void process(MorvaleCore& core, const Calls& calls, Results& results) {
  PersonWholeMeta result{};
  const int answer = core.Morvale_process();
  calls.between(*core.inputData);
  keep_map(core, calls.after_process, results.maps);
  if (calls.after_process) core.Morvale_core_afterProcss();
  if (calls.fetch) {
    core.Morvale_core_getresult(&result);
  } else {
    result = core.result;
  }
  results.records.write(reinterpret_cast<const char*>(&answer), sizeof answer);
  results.records.write(reinterpret_cast<const char*>(&result), sizeof result);
}

/// Memory that ends the process when it is read.
uint8_t* unmapped() {
  static void* const pages = mmap(nullptr, 1 << 20, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return static_cast<uint8_t*>(pages);
}

/// Small frames, which the shrink enlarges and so reads a row beyond, with strides that are no row length.
void deliver_small(int frame, MorvaleData_t& record, Planes& planes) {
  record.width = 60;
  record.height = 40;
  constexpr int kLuma = 60 * 40;
  if (frame == 12) record.stride = 33;
  if (frame == 13) {
    record.stride = -5;
    record.uvPlane = record.yPlane + kLuma;
  }
  if (frame == 14) {
    record.stride = 7;
    planes.chroma.assign(kLuma / 2, 99);
    record.uvPlane = planes.chroma.data();
  }
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
  if (frame == 4) record.yPlane = record.uvPlane = unmapped();
  if (frame == 6) record.yPlane = nullptr;
  if (frame >= 12) deliver_small(frame, record, planes);
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

/// What befalls a session.
struct Fate {
  bool killed = false, forks = false;
  bool unmapped = false;  ///< no plane is mapped
  bool loads = true;      ///< Morvale_core_setModel is called
};

void film(int camera, const Fate& fate, Results& results) {
  MorvaleData_t record{};
  record.cameraType = camera;
  MorvaleCore core;
  core.Morvale_core_init(&record);
  if (fate.loads) core.Morvale_core_setModel(camera);
  pid_t child = -1;
  for (int frame = 0; frame < kFrames; ++frame) {
    const Planes planes = deliver(frame, camera, record);
    if (fate.unmapped && record.yPlane != nullptr) record.yPlane = record.uvPlane = unmapped();
    if (fate.killed && frame == 6) std::raise(SIGKILL);
    if (fate.forks && frame == 6) {
      results.records.flush();
      child = fork();
      if (child == 0) results.records.close();
    }
    process(core, {frame != 8, frame != 10, [=](MorvaleData_t& seen) { change(frame, seen); }}, results);
  }
  core.Morvale_core_deinit();
  if (child == 0) {
    film(camera, {}, results);
    _exit(0);
  }
  if (child > 0) waitpid(child, nullptr, 0);
}

/// As the caller of the recorded session changed it. Pointers that lead nowhere are not read.
void change(const LaterRecord& later, MorvaleData_t& record) {
  record.cameraType = later.camera_type;
  record.width = later.width;
  record.height = later.height;
  record.stride = later.stride;
  if (!later.has_luma) record.yPlane = nullptr;
}

void replay(const std::string& folder, Results& results) {
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
    if (planes.luma.empty()) planes.luma.resize(1);
    record.yPlane = record.uvPlane = input.has_planes ? planes.luma.data() : nullptr;
    if (input.chroma == ChromaPlace::kBehind) record.uvPlane += luma_bytes(record);
    if (input.chroma == ChromaPlace::kApart && input.has_planes) {
      planes.chroma.assign(planes.luma.begin() + luma_bytes(record), planes.luma.end());
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
  Results results{std::ofstream(argv[3], std::ios::binary), {}};
  if (what == "maps") results.maps.open(std::string(argv[3]) + ".maps", std::ios::binary);
  const int camera = which == "front" ? kFrontCamera : 0;
  try {
    if (what == "replay") {
      replay(which, results);
    } else {
      film(camera,
           {.killed = what == "crash",
            .forks = what == "fork",
            .unmapped = what == "unread" || what == "unloaded",
            .loads = what != "unloaded"},
           results);
    }
    if (what == "twice") film(camera, {}, results);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
