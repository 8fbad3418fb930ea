/// The two records that cross the library's boundary, for callers in C11: the same names, fields and offsets
/// as morvale/core/records.h, which says what the fields mean. A test holds the two headers equal. C++ gets
/// that header.
#ifndef MORVALE_C_RECORDS_H
#define MORVALE_C_RECORDS_H

#ifdef __cplusplus
#include <morvale/core/records.h>
#else

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

enum { MORVALE_FRONT_CAMERA = 16, MORVALE_MAX_FACES = 5 };

typedef struct FaceRect {
  int32_t x, y, w, h;
} FaceRect;
static_assert(sizeof(FaceRect) == 16, "FaceRect");

/// The caller's record of one frame.
typedef struct MorvaleData_t {
  int32_t cameraType;
  int32_t unread0[3];
  int32_t width, height;
  int32_t unread1[2];
  float gateLevel;
  int32_t unread2;
  uint8_t* yPlane;
  uint8_t* uvPlane;
  int32_t unread3[4];
  int32_t faceCount;
  FaceRect faces[MORVALE_MAX_FACES];
  int32_t stride;
  int32_t unread4[2];
  int32_t qermHint;
  int32_t isUDC;
} MorvaleData_t;
static_assert(sizeof(MorvaleData_t) == 176, "MorvaleData_t");

/// One measured face or person.
typedef struct PersonMeta {
  uint32_t brightCount[2];
  int32_t faceYavg;
  int32_t hsvMin[3];
  int32_t hsv[3];
  int32_t skinRatio;
  int32_t box[4];
} PersonMeta;
static_assert(sizeof(PersonMeta) == 56, "PersonMeta");

/// The result of a frame.
typedef struct PersonWholeMeta {
  int32_t ver;
  int32_t humanRatio;
  PersonMeta meta[MORVALE_MAX_FACES];
} PersonWholeMeta;
static_assert(sizeof(PersonWholeMeta) == 288, "PersonWholeMeta");

#endif
#endif
