#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include "analysis/scratch.h"
#include "core/session.h"
#include "core/work_buffer.h"
#include "platform/clock.h"
#include "platform/log.h"
#include "platform/properties.h"

namespace morvale {
namespace {

/// Three times the cells in use; part of the interface.
constexpr int kGridMapBytes = 3 * kOccupancyColumns * kOccupancyRows;

struct Model {
  const char* side;
  const char* path;
  int32_t pad_size, net_size;
};

constexpr Model kFrontModel = {
    "front", "/vendor/etc/tavu/morvale_1.0/PhotoParsing5_AWB_FACE_256_DSP_iter_495623_v2.0_q.dlc", 256, 64};
constexpr Model kBackModel = {
    "back", "/vendor/etc/tavu/morvale_1.0/PhotoParsing5_AF_FACE_128_DSP_iter_300000_v2.0_q.dlc", 128, 32};

/// 0, 1 or 2, or any negative value; 3 and above mean 1.
int32_t read_debug_level() {
  char value[kPropertyValueMax] = {};
  if (__system_property_get("persist.morvale.capture.debug", value) < 1) return 0;
  value[kPropertyValueMax - 1] = '\0';
  const long level = std::max<long>(std::strtol(value, nullptr, 10), std::numeric_limits<int32_t>::min());
  return level < 3 ? static_cast<int32_t>(level) : 1;
}

vexa::VexaOptionsV2 open_options(const Model& model) {
  vexa::VexaOptionsV2 options;
  options.inputNames = {"MobilenetV2/MobilenetV2/input:0"};
  options.outputNames = {"logits/semantic/BiasAdd:0"};
  options.modelPath = model.path;
  return options;
}

/// The new buffer exists before the old one goes.
template <class T>
void replace_buffer(T*& buffer, int32_t count) {
  T* fresh = new_work_buffer<T>(static_cast<size_t>(count));
  delete_work_buffer(buffer);
  buffer = fresh;
}

/// Sends an empty label map through the front camera's analysis, on a core of its own, so that the first
/// frame finds its scratch memory and code in place. Nothing of it is seen: no face, no log line, no plane.
void rehearse_front(const MorvaleCore& core) {
  MorvaleData_t record{};
  MorvaleCore rehearsal;
  rehearsal.inputData = &record;
  rehearsal.segFactor = NETSIZE;
  rehearsal.argMax_human_onlySkin(core.rgbInput, core.resizedFrame,
                                  reinterpret_cast<uint8_t*>(core.netInput));
}

template <class T>
void release(std::vector<T>& list) {
  std::vector<T>().swap(list);
}

}  // namespace
}  // namespace morvale

using namespace morvale;

MorvaleCore::MorvaleCore()
    : firstWord(0),
      inputData(nullptr),
      workWordsA{},
      personCount(0),
      personBoxes{},
      workWordsB{},
      result{},
      frameCount(0),
      segFactor(0),
      scaleRatio(0),
      status(-1),
      resizedFrame(nullptr),
      rgbInput(nullptr),
      netInput(nullptr),
      gridMap(nullptr),
      labelMapA(nullptr),
      labelMapB(nullptr),
      labelMapWide(nullptr) {}

MorvaleCore::~MorvaleCore() {
  frameCount = 0;
  delete_work_buffer(labelMapWide);
  delete_work_buffer(labelMapB);
  delete_work_buffer(labelMapA);
  delete_work_buffer(gridMap);
  delete_work_buffer(netInput);
  delete_work_buffer(rgbInput);
  delete_work_buffer(resizedFrame);
}

int MorvaleCore::Morvale_core_init(MorvaleData_t* data) {
  inputData = data;
  status = -1;
  std::fill(std::begin(workWordsA), std::end(workWordsA), 0);
  personCount = 0;
  std::fill(std::begin(personBoxes), std::end(personBoxes), FaceRect{});
  std::fill(std::begin(workWordsB), std::end(workWordsB), 0);
  result = {};

  VISUALDEBUG = read_debug_level();
  MORVALE_DEBUG("[MORVALE] VISUALDEBUG is set to %d", VISUALDEBUG);
  N0 = 1;
  N1 = 0;
  N2 = 0;
  frameCount = 0;
  return 1;
}

int MorvaleCore::Morvale_core_setModel(int cameraType) {
  const WallTime start = wall_time();
  const auto elapsed = [&] { return static_cast<long long>(elapsed_ms(start, wall_time())); };

  const Model& model = cameraType == kFrontCamera ? kFrontModel : kBackModel;
  MORVALE_DEBUG("[Morvale] cameraType  %d in %s", cameraType, model.side);
  vexa::VexaOptionsV2 options = open_options(model);
  // Until the new model is open no frame may run, and no analysis on a map of the former model's size: also
  // when one of the allocations below fails.
  status = -1;
  segFactor = 0;
  PADSIZE = model.pad_size;
  NETSIZE = model.net_size;
  const int32_t pixels = PADSIZE * PADSIZE, cells = NETSIZE * NETSIZE;
  replace_buffer(resizedFrame, pixels * 3 / 2);
  replace_buffer(rgbInput, pixels * 3);
  replace_buffer(netInput, pixels * 3);
  replace_buffer(gridMap, kGridMapBytes);
  replace_buffer(labelMapA, cells);
  replace_buffer(labelMapB, cells);
  replace_buffer(labelMapWide, cells);
  if (cameraType == kFrontCamera) rehearse_front(*this);

  input.shape = {1, PADSIZE, PADSIZE, 3};
  input.tail0 = 0;
  input.tail1 = 1;
  status = open_session(std::move(options));  // a copy could fail with a session half open

  // The time is taken afresh for each message; callers read both.
  MORVALE_DEBUG("[MORVALE] qc x7 capture Model init Time %lld  status %d ", elapsed(), status);
  std::printf("[MORVALE] qc x7 capture init Time %lld status %d\n", elapsed(), status);
  if (status == kOpenFailed) {
    MORVALE_ERROR("Morvale imprint open Fail ERRROR");
    std::printf("Morvale imprint open Fail ERRROR");
    return -1;
  }
  MORVALE_DEBUG("[MORVALE] qc pal Model init Time %lld  status %d ", elapsed(), status);
  MORVALE_DEBUG("[MORVALE] qc PADSIZE %d  NETSIZE %d ", PADSIZE, NETSIZE);
  return 1;
}

int MorvaleCore::Morvale_core_deinit() {
  const WallTime start = wall_time();
  MORVALE_DEBUG("MORVALE deinit  START_S ");
  release(inputs);
  release(outputs);
  close_session();
  free_scratch();
  MORVALE_DEBUG("MORVALE deinit START_X %lld", static_cast<long long>(elapsed_ms(start, wall_time())));
  frameCount = 0;
  return 1;
}
