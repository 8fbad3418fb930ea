/// The two records that cross the library's boundary. Both are binary contracts with the camera service:
/// their offsets are proved below and must never move. All fields are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// A rectangle in pixels: columns x .. x+w-1, rows y .. y+h-1. In the boxes that the library writes w and
/// h are the distance of the last column and row from the first, one less.
struct FaceRect {
  int32_t x, y, w, h;
};
static_assert(sizeof(FaceRect) == 16);

namespace morvale {

/// The value of MorvaleData_t::cameraType that means the front camera. Every other value is a back camera.
constexpr int32_t kFrontCamera = 16;

/// MorvaleData_t::gateLevel above this value: the camera service wants no analysis of the frame.
constexpr float kGateLimit = 25.0f;

/// How many faces or persons a record has room for.
constexpr int32_t kMaxFaces = 5;

/// The occupancy grid that the back camera packs into the record.
constexpr int kOccupancyColumns = 19;
constexpr int kOccupancyRows = 15;  ///< as above

}  // namespace morvale

/// The caller's record of one frame. The caller owns it, refreshes it before every frame and keeps it alive
/// from Morvale_core_init to Morvale_core_deinit. The library reads only the named fields.
struct MorvaleData_t {
  int32_t cameraType;  ///<   0  kFrontCamera, or anything else for a back camera; read on every frame
  int32_t unread0[3];  ///<   4  the caller's own
  int32_t width;       ///<  16  frame width in pixels
  int32_t height;      ///<  20  frame height in pixels
  int32_t unread1[2];  ///<  24  the caller's own
  float gateLevel;     ///<  32  above 25.0 the frame is not analysed and the result is cleared
  int32_t unread2;     ///<  36  alignment of the pointer
  uint8_t* yPlane;     ///<  40  luma plane; written by debug views and box drawings only
  uint8_t* uvPlane;    ///<  48  chroma plane, V first; equal to yPlane: it follows the luma plane
  int32_t unread3[4];  ///<  56  the caller's own
  int32_t faceCount;   ///<  72  valid entries of faces, 0..5; further ones are ignored
  FaceRect faces[morvale::kMaxFaces];  ///<  76  faces of the camera's own detector, frame pixels
  int32_t stride;                      ///< 156  finds the chroma (0: width); luma is read as packed
  int32_t unread4[2];                  ///< 160  the caller's own
  int32_t qermHint;                    ///< 168  resource hint, passed through into the back camera's result
  int32_t isUDC;                       ///< 172  nonzero: the front camera sits under the display
};
static_assert(sizeof(MorvaleData_t) == 176 && std::is_trivially_copyable_v<MorvaleData_t>);
static_assert(offsetof(MorvaleData_t, width) == 16 && offsetof(MorvaleData_t, gateLevel) == 32);
static_assert(offsetof(MorvaleData_t, yPlane) == 40 && offsetof(MorvaleData_t, uvPlane) == 48);
static_assert(offsetof(MorvaleData_t, faceCount) == 72 && offsetof(MorvaleData_t, faces) == 76);
static_assert(offsetof(MorvaleData_t, stride) == 156 && offsetof(MorvaleData_t, qermHint) == 168);
static_assert(offsetof(MorvaleData_t, isUDC) == 172);

/// One measured face or person: 14 words. On the front camera elements 0..2 carry one measured face each; on
/// the back camera only `box` is used.
struct PersonMeta {
  uint32_t brightCount[2];  ///<  0  face pixels with luma above 200, above 230
  int32_t faceYavg;         ///<  8  mean luma of the face, 0..255
  int32_t hsvMin[3];        ///< 12  per H, S, V: distance from the mean down to the low band
  int32_t hsv[3];           ///< 24  per H, S, V: trimmed mean; H of 0 or less is written with 360 added
  int32_t skinRatio;        ///< 36  visited face rectangle per thousand of the enlarged label map
  int32_t box[4];           ///< 40  back camera, element 0: x, w, y, h (this order), frame pixels;
                            ///<     back camera, elements 1..4: words of the packed occupancy grid, but the
                            ///     last of element 3 (offset 228) is the resource hint;
                            ///<     front camera: [0..2] per H, S, V: distance from the mean to the high band
};
static_assert(sizeof(PersonMeta) == 56 && offsetof(PersonMeta, faceYavg) == 8);
static_assert(offsetof(PersonMeta, hsvMin) == 12 && offsetof(PersonMeta, hsv) == 24);
static_assert(offsetof(PersonMeta, skinRatio) == 36 && offsetof(PersonMeta, box) == 40);

/// The result of a frame, 288 bytes. A word that the current camera's analysis does not write keeps the value
/// it last had; the whole record is zero after Morvale_core_init and after a gated frame.
struct PersonWholeMeta {
  int32_t ver;         ///<   0  front: faces measured, or the camera's faces (0..5) where the map has none;
                       ///      back: 5 once a person candidate was seen
  int32_t humanRatio;  ///<   4  share of the label map classed as person, per cent
  PersonMeta meta[morvale::kMaxFaces];  ///<   8, 64, 120, 176, 232
};
static_assert(sizeof(PersonWholeMeta) == 288 && std::is_trivially_copyable_v<PersonWholeMeta>);
static_assert(offsetof(PersonWholeMeta, meta) == 8);

/// A region found in a label map: its area and its label.
struct info {
  int32_t area, label;
};
