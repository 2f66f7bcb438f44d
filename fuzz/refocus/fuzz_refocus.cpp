// The refocus module over random frame sizes, grids and sweeps, plus targets
// made, added and removed by hand.
#include <cstdint>
#include <vector>

#include "../FuzzInput.h"
#include "refocus/Refocus.h"

namespace {

uint32_t bigEndian(const unsigned char* p) {
  return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  // Sides up to 1300 reach both the empty (below 600) and the 2x box paths.
  const int width = static_cast<int>(in.range(0, 1300));
  const int height = static_cast<int>(in.range(0, 1300));
  // Grids are mostly small; now and then finer than the 600-pixel work side.
  const bool fine = in.range(0, 3) == 0;
  const int cols = static_cast<int>(in.range(0, fine ? 700 : 40));
  const int rows = static_cast<int>(in.range(0, fine ? 700 : 40));
  const unsigned frames = in.range(0, 5);

  intptr_t handle = RefocusModule_Initialize(width, height, cols, rows);
  if (width < 1 || height < 1 || cols < 1 || rows < 1) {
    FUZZ_CHECK(handle == 0);
    return 0;
  }
  FUZZ_CHECK(handle != 0);
  RFModule* m = reinterpret_cast<RFModule*>(handle);

  std::vector<unsigned char> frame(size_t(width) * height * 2);
  for (unsigned k = 0; k < frames && in.restSize() > 0; ++k) {
    switch (in.range(0, 3)) {
      case 0: {
        // A fresh picture only now and then: the sweep's cost is in the module.
        if (k == 0 || in.flag()) in.tile(frame.data(), frame.size());
        FUZZ_CHECK(RefocusModule_Process(handle, frame.data(), in.take<int>()) == m->id);
        break;
      }
      case 1: {
        const int tc = static_cast<int>(in.range(0, 40));
        const int tr = static_cast<int>(in.range(0, 40));
        std::vector<int> sums(size_t(tc) * tr + 1);
        for (int& v : sums) v = in.take<int16_t>();
        RFTarget* t = RFTarget_Create(sums.data(), tc, tr);
        FUZZ_CHECK((t != nullptr) == (tc > 0 && tr > 0));
        RFModule_AddTarget(m, t, in.take<int>());
        break;
      }
      case 2:
        // Removing walks the list, so a pointer no longer in it is harmless;
        // only the module's current list head is certainly alive.
        RFModule_RemoveTarget(m, in.flag() ? m->targets : nullptr);
        break;
      default: {
        int bytes = -1;
        unsigned char* record = RefocusModule_GetResultBuf(handle, &bytes);
        FUZZ_CHECK(record != nullptr);
        const int64_t cells = int64_t{cols} * rows;
        FUZZ_CHECK(bytes == (cells + 13) * 4);
        FUZZ_CHECK(bigEndian(record) == RF_RECORD_MARK);
        FUZZ_CHECK(bigEndian(record + 12) == uint32_t(cols) && bigEndian(record + 16) == uint32_t(rows));
        for (int64_t i = 0; i < cells; ++i) {
          // A winner is an index into the list, which never held more than a
          // target per step.
          const uint32_t winner = bigEndian(record + 24 + 4 * i);
          FUZZ_CHECK(winner < frames);
        }
        break;
      }
    }
  }
  RefocusModule_Release(handle);
  return 0;
}
