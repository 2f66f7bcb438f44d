#pragma once

#include <cstddef>
#include <cstdint>

#include "core/Export.h"

// Per-region sharpness maps over a focus sweep. Each frame (packed two bytes per
// pixel, luma in the even bytes) is reduced to a 600 x 600 gradient image,
// smoothed and summed over a grid of cells; the result names, per cell, the
// frame that was sharpest. Records come from the tagged allocator and handles
// are checked by their tag.

constexpr unsigned int RF_MODULE_TAG = 0x110011;
constexpr int RF_MAX_POSITIONS = 20;
constexpr int RF_WORK_SIDE = 600;
constexpr unsigned int RF_RECORD_MARK = 0x1234;

// One added frame: its cell sums, row by row.
struct RFTarget {
  int cols;
  int rows;
  int* data;  // cols x rows sums, owned
  RFTarget* next;
};
typedef RFTarget _RFTarget;
// 16 bytes where pointers are 4 bytes wide.
static_assert(offsetof(RFTarget, data) == 8 && offsetof(RFTarget, next) == 8 + sizeof(void*) &&
                  sizeof(RFTarget) == 8 + 2 * sizeof(void*),
              "RFTarget layout");

// The record sits just behind its 4-byte tag, so on 64-bit targets it is only
// 4-byte aligned: the packing makes every member access safe there (a no-op
// where pointers are 4 bytes).
#pragma pack(push, 4)
struct RFModule {
  int id;
  int targetCount;
  int width;
  int height;
  int gridCols;
  int gridRows;
  int positions[RF_MAX_POSITIONS];  // of the first 20 frames, in order of addition
  RFTarget* targets;                // in order of addition
  int* result;                      // gridCols x gridRows winner indices
  // Cell sums (gridCols x gridRows ints, first so they stay aligned), then the
  // scratch for column sums and the integral table (width x height bytes, at
  // least 600 x 600 x 4), the small image and the gradient image (600 x 600
  // each). Zeroed at creation: the gradient's border is never written, so it
  // stays 0. Frames allocate nothing but their target.
  unsigned char* work;
  unsigned char* output;  // the newest result record, or null; older ones hang off it
};
#pragma pack(pop)
// 26 ints, then the four pointers back to back: 120 bytes on 32-bit builds.
static_assert(offsetof(RFModule, positions) == 24 && offsetof(RFModule, targets) == 104 &&
                  offsetof(RFModule, output) == 104 + 3 * sizeof(void*) &&
                  sizeof(RFModule) == 104 + 4 * sizeof(void*),
              "RFModule layout");

// Flat interface over integer handles (the record's address; 0 on failure).
OV_CAPI intptr_t RefocusModule_Initialize(int width, int height, int gridCols, int gridRows);
// Adds one frame of the sweep; returns the module's id, 0 for a foreign handle.
OV_CAPI int RefocusModule_Process(intptr_t handle, unsigned char* frame, int position);
// Builds a new big-endian result record and returns it (owned by the module,
// valid until RefocusModule_Release); *size = (cells + 13) x 4. A foreign handle
// gives null and *size = 0.
OV_CAPI unsigned char* RefocusModule_GetResultBuf(intptr_t handle, int* size);
OV_CAPI void RefocusModule_Release(intptr_t handle);

OV_CAPI RFModule* RFModule_Create(int width, int height, int gridCols, int gridRows);
OV_CAPI void RFModule_Release(RFModule** pm);
OV_CAPI void RFModule_Clear(RFModule* m);
OV_CAPI void RFModule_AddTarget(RFModule* m, RFTarget* t, int position);
OV_CAPI void RFModule_RemoveTarget(RFModule* m, RFTarget* t);
OV_CAPI void RFModule_PreProcess(RFModule* m, unsigned char* frame, int position);
OV_CAPI void RFModule_Process(RFModule* m);

OV_CAPI RFTarget* RFTarget_Create(int* data, int cols, int rows);
OV_CAPI void RFTarget_Release(RFTarget** pt);
