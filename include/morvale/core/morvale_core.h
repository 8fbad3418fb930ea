/// The capture core: turns one camera frame after another into a PersonWholeMeta.
///
/// Life: construct, Morvale_core_init, Morvale_core_setModel, then per frame Morvale_process,
/// Morvale_core_afterProcss and Morvale_core_getresult, then Morvale_core_deinit, destruct. One live core per
/// process, one calling thread at a time; nothing is locked. The misspelt names are the interface and stay.
///
/// Morvale_process and Morvale_core_afterProcss work in round-to-nearest and give the calling thread's
/// rounding mode back. No method throws anything but std::bad_alloc; the runtime's operations must not throw.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <morvale/core/export.h>
#include <morvale/core/records.h>

class MORVALE_API MorvaleCore {
 public:
  /// Clears everything and sets status to -1. Morvale_core_init must follow.
  MorvaleCore();
  /// Frees the work buffers. Does not close the runtime session: Morvale_core_deinit does.
  ~MorvaleCore();
  MorvaleCore(const MorvaleCore&) = delete;
  MorvaleCore& operator=(const MorvaleCore&) = delete;

  // --- lifecycle (src/core/lifecycle.cpp) ---

  /// Registers the caller's record, which must stay alive until Morvale_core_deinit, reads the debug level,
  /// clears the result and resets the ring. Returns 1.
  int Morvale_core_init(MorvaleData_t* data);

  /// Opens the front (16) or back (any other value) model: sets PADSIZE and NETSIZE, allocates zeroed work
  /// buffers, opens a runtime session. Call once per init, after it: a second call replaces the buffers and
  /// leaks the first session. Returns 1, or -1 when the session is null or its open returned 1.
  int Morvale_core_setModel(int cameraType);

  /// Closes and destroys the session. The buffers live on until the destructor. session_ keeps its stale
  /// value, but a destroyed session is neither run nor closed again. Returns 1.
  int Morvale_core_deinit();

  // --- every frame, called by the camera service ---

  /// (src/core/process.cpp) Runs the network on the caller's current frame and stores its smoothed label map
  /// in ring slot N0. Returns
  ///    0  analysed; or gated out (result and frameCount cleared); or no model loaded yet;
  ///   -1  the model failed to open or is disabled as sluggish, the frame cannot be used, or the run failed
  ///       (or answered with too few scores). Rings and frameCount stay.
  /// Does not advance the ring: Morvale_core_afterProcss does.
  int Morvale_process();

  /// (src/core/after_process.cpp) Runs the camera's scene analysis on slot N0, then advances the ring. Does
  /// nothing but log while frameCount is 0 or there is no record. Does not ask whether the last
  /// Morvale_process succeeded: after a failed frame it analyses what the slot held, the map of three frames
  /// before or, early in a session, of the session before, and advances all the same. Returns 0.
  int Morvale_core_afterProcss();

  /// (src/core/after_process.cpp) Copies the 288 bytes of `result` to `out` (not checked) and logs them every
  /// 50th frame, or always at debug level 1 and above. Returns 1.
  int Morvale_core_getresult(PersonWholeMeta* out);

  // --- scene analysis ---

  /// (src/analysis/front_scene.cpp; called by Morvale_core_afterProcss) Front camera. segMap: NETSIZE x
  /// segFactor cells of five scores. Splits it into five planes, enlarges them four times and calls
  /// DL_FD_Calc with them, with resizedFrame as luma and rgbInput as rgb. At debug level 1 and above copies
  /// the enlarged label-2 plane into the caller's luma plane, row r at r * stride, inside the plane.
  void argMax_human_onlySkin(uint8_t* rgbInput, uint8_t* resizedFrame, uint8_t* segMap);

  /// (src/analysis/back_scene.cpp; called by Morvale_core_afterProcss) Back camera. segMap as above. Writes
  /// humanRatio and clears personBoxes and the record's boxes; where a region is found also personCount, ver,
  /// personBoxes[0], the box, the packed 19 x 15 grid and the resource hint.
  void argMax_back_only_human(uint8_t* segMap);

  /// (src/analysis/label_planes.cpp; for callers) Splits a label map into six planes of NETSIZE x segFactor
  /// bytes. Takes no maximum, despite its name. The cell stride is five bytes: the sixth plane receives the
  /// first byte of the following cell, so one byte beyond the five-byte map must be readable. Writes nothing
  /// when NETSIZE or segFactor is below 1.
  void argMax_6label(uint8_t* plane0, uint8_t* plane1, uint8_t* plane2, uint8_t* plane3, uint8_t* plane4,
                     uint8_t* plane5, uint8_t* segMap);

  /// (src/analysis/face_fusion.cpp; called by argMax_human_onlySkin) Finds the faces that the segmentation
  /// sees. c0..c4: W x H score planes of labels 0..4. Writes humanRatio, personCount and the first
  /// personCount entries of personBoxes (frame pixels), then calls Intersection_Calc with the face mask. luma
  /// and rgb are handed on. The last argument is not read.
  void DL_FD_Calc(uint8_t* c0, uint8_t* c1, uint8_t* c2, uint8_t* c3, uint8_t* c4, uint8_t* luma,
                  uint8_t* rgb, int W, int H, int unused);

  /// (src/analysis/face_match.cpp; called by DL_FD_Calc) Matches the camera's faces with personBoxes, picks
  /// one rectangle per face and has each measured by WriteFaceInfo. Writes ver, the number of faces.
  /// faceMask: W x H bytes, nonzero on face pixels.
  void Intersection_Calc(uint8_t* c2, uint8_t* luma, uint8_t* rgb, uint8_t* faceMask, int W, int H);

  /// (src/analysis/face_statistics.cpp; called by Intersection_Calc) Measures the face inside columns
  /// left..right-1 and rows top..bottom-1 of the W-wide maps into result.meta[faceIndex]: bright pixels, mean
  /// luma, trimmed H, S, V figures, skinRatio. All planes, luma too, have row stride W; rgb has three bytes a
  /// pixel. Does nothing when faceIndex is not 0, 1 or 2.
  void WriteFaceInfo(uint8_t* c2, uint8_t* luma, uint8_t* rgb, uint8_t* faceMask, int W, int unused, int left,
                     int right, int top, int bottom, int faceIndex);

  /// (src/analysis/person_boxes.cpp; for callers) Person boxes of a six-label map: c0..c5 are W x H score
  /// planes. Writes the person mask (0 or 1) to P, and humanRatio, personBoxes, personCount and meta[0].box
  /// {x, y, w, h}; draws the person box black and the face boxes white into the caller's luma plane. Boxes
  /// are scaled by scaleRatio * k.
  void DL_Human_Calc(uint8_t* c0, uint8_t* c1, uint8_t* c2, uint8_t* c3, uint8_t* c4, uint8_t* c5,
                     uint8_t* unusedA, uint8_t* unusedB, uint8_t* P, int W, int H, int k);

  /// (src/analysis/person_boxes.cpp; called by DL_Human_Calc) Draw a box outline, two pixels wide, into the
  /// caller's luma plane: _DL in black (0), _HW in white (255). Rows top .. bottom - 1; the filled ones end
  /// at column right - 1, the others reach column right. Pixels that would leave their row or the plane are
  /// not drawn.
  void WriteFaceInfo_DL(void* unusedA, void* unusedB, int left, int right, int top, int bottom);
  void WriteFaceInfo_HW(void* unusedA, void* unusedB, int left, int right, int top, int bottom, int unusedC);

  /// (src/core/debug_files.cpp; for callers) Writes `size` bytes to a new or truncated file. Failures are
  /// silently ignored.
  void dumpImage(const uint8_t* data, std::string path, int size);

  // --- state, public on purpose: tools and tests look at it. The order is part of the interface. ---

  int32_t firstWord;  ///< cleared by the constructor, otherwise unused

  // From Morvale_core_init to Morvale_core_deinit:
  MorvaleData_t* inputData;  ///< the caller's record, not owned

  // Cleared by Morvale_core_init, written by the analyses:
  int32_t workWordsA[18];
  int32_t personCount;                       ///< persons or faces found in the last analysed frame
  FaceRect personBoxes[morvale::kMaxFaces];  ///< {x, y, w, h}, frame pixels
  int32_t workWordsB[5];
  PersonWholeMeta result;

  // Written by Morvale_process:
  uint32_t frameCount;  ///< frames analysed since init or since the last gated frame
  int32_t segFactor;    ///< label-map rows that hold picture
  float scaleRatio;     ///< frame width / PADSIZE: frame pixels per network-input pixel

  // Written by Morvale_core_init (-1) and Morvale_core_setModel (what open returned):
  int32_t status;  ///< -1 no model yet, 1 open failed, 2 disabled as sluggish, anything else ready

  // From Morvale_core_setModel to the destructor. Every buffer has slack before and after the pointer
  // (src/core/work_buffer.h): portrait frames make the converter reach a little past the picture.
  uint8_t* resizedFrame;  ///< the shrunk frame, NV21, PADSIZE^2 * 3 / 2 bytes
  uint8_t* rgbInput;      ///< the padded network input, RGB, PADSIZE^2 * 3 bytes
  float* netInput;        ///< the normalised network input, PADSIZE^2 * 3 values in -1..1
  uint8_t* gridMap;       ///< 855 bytes; the first 285 are the 19 x 15 grid, the others stay 0
  uint8_t* labelMapA;     ///< NETSIZE^2, back camera: foreground mask
  uint8_t* labelMapB;     ///< NETSIZE^2, back camera: region labels
  int32_t* labelMapWide;  ///< NETSIZE^2, back camera: summed-area table of the label-2 mask
};

static_assert(offsetof(MorvaleCore, personCount) == 88 && offsetof(MorvaleCore, personBoxes) == 92);
static_assert(offsetof(MorvaleCore, result) == 192);
static_assert(offsetof(MorvaleCore, frameCount) == offsetof(MorvaleCore, result) + 288);
static_assert(offsetof(MorvaleCore, status) == 492 && offsetof(MorvaleCore, resizedFrame) == 496);
