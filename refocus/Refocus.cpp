#include "refocus/Refocus.h"

#include <cstring>
#include <ctime>

#include "core/Memory.h"
#include "core/MemoryTag.h"
#include "core/SizeRule.h"

namespace {

constexpr int kSide = RF_WORK_SIDE;
constexpr int64_t kSideArea = int64_t{kSide} * kSide;
// The scratch area holds the column sums while downscaling and then the
// integral table of the gradient (32-bit cells) while smoothing.
constexpr int64_t kTableBytes = kSideArea * 4;
// Record words: mark, first position, count, grid columns, grid rows, id.
constexpr int64_t kHeaderWords = 6;
// The reported record length covers seven position words; the block itself has
// room for all twenty.
constexpr int64_t kReportedPositionWords = 7;

// Each record block starts with a link to the record made before it, so every
// record handed out stays valid until the module is released.
struct RecordLink {
  unsigned char* previous;
};
constexpr int64_t kLinkBytes = sizeof(RecordLink);

RecordLink* linkOf(unsigned char* record) { return reinterpret_cast<RecordLink*>(record - kLinkBytes); }

void freeRecords(unsigned char* newest) {
  while (newest != nullptr) {
    RecordLink* link = linkOf(newest);
    newest = link->previous;
    ov_free(link);
  }
}

int64_t recordBytes(int64_t cells) { return (cells + kHeaderWords + RF_MAX_POSITIONS) * 4 + kLinkBytes; }

// The first value lrand48() gives after srand48(seed), from the generator's
// definition: X0 = seed << 16 | 0x330E, X1 = (0x5DEECE66D * X0 + 0xB) mod 2^48,
// result = X1 >> 17. Computed here rather than through the process-wide
// generator, which is not safe to seed from several threads at once.
int firstLrand48(long seed) {
  const uint64_t x0 = (static_cast<uint64_t>(static_cast<uint32_t>(seed)) << 16) | 0x330E;
  const uint64_t x1 = (0x5DEECE66Dull * x0 + 0xB) & ((uint64_t{1} << 48) - 1);
  return static_cast<int>(x1 >> 17);
}

bool tagged(intptr_t handle) {
  return handle != 0 && ov_read_tag(reinterpret_cast<void*>(handle)) == RF_MODULE_TAG;
}

void storeBigEndian(unsigned char* at, uint32_t v) {
  at[0] = static_cast<unsigned char>(v >> 24);
  at[1] = static_cast<unsigned char>(v >> 16);
  at[2] = static_cast<unsigned char>(v >> 8);
  at[3] = static_cast<unsigned char>(v);
}

// The luma area (W x H bytes, at least the integral table's size) is the
// scratch: the luma itself is read straight from the frame.
int64_t scratchBytes(int64_t pixels) { return pixels > kTableBytes ? pixels : kTableBytes; }

// The work buffer: cell sums first (4-byte aligned), the scratch, the small
// image and the gradient image. -1 when it does not fit the allocator.
int64_t workBytes(int64_t cells, int64_t pixels) {
  return orvan::sizerule::within(orvan::sizerule::kUintLimit,
                                 cells * 4 + scratchBytes(pixels) + 2 * kSideArea);
}

int cellCount(const RFModule* m) { return m->gridCols * m->gridRows; }
int* cellSums(RFModule* m) { return reinterpret_cast<int*>(m->work); }
uint32_t* scratch(RFModule* m) { return reinterpret_cast<uint32_t*>(m->work + int64_t{4} * cellCount(m)); }
unsigned char* smallImage(RFModule* m) {
  return m->work + int64_t{4} * cellCount(m) + scratchBytes(int64_t{m->width} * m->height);
}
unsigned char* gradientImage(RFModule* m) { return smallImage(m) + kSideArea; }

// Box average of the luma (the frame's even bytes) over fy x fx blocks into the
// 600 x 600 image; blocks are empty, and the result 0, when a side is below 600.
// The column sums (600 fx <= W entries) fit the scratch, which has W x H bytes.
// The scratch is a pointer now rather than a local array: restrict tells the
// compiler it aliases neither the frame nor the small image.
void downscale(const unsigned char* __restrict frame, int width, int height, unsigned char* __restrict small,
               uint32_t* __restrict sums) {
  const int fx = width / kSide;
  const int fy = height / kSide;
  if (fx == 0 || fy == 0) {
    memset(small, 0, kSideArea);
    return;
  }
  const int used = kSide * fx;
  const uint32_t area = static_cast<uint32_t>(fx) * static_cast<uint32_t>(fy);
  // Column sums of fy rows, then fx columns each.
  for (int r = 0; r < kSide; ++r) {
    const unsigned char* row = frame + 2 * (int64_t{r} * fy * width);
    for (int x = 0; x < used; ++x) sums[x] = row[2 * x];
    for (int k = 1; k < fy; ++k) {
      row += 2 * int64_t{width};
      for (int x = 0; x < used; ++x) sums[x] += row[2 * x];
    }
    unsigned char* out = small + r * kSide;
    const uint32_t* s = sums;
    for (int c = 0; c < kSide; ++c) {
      uint32_t total = 0;
      for (int k = 0; k < fx; ++k) total += s[k];
      s += fx;
      out[c] = static_cast<unsigned char>(total / area);
    }
  }
}

// |S[y][x + 1] - S[y][x]| inside the one-pixel border, which is never written.
void gradient(const unsigned char* small, unsigned char* grad) {
  for (int y = 1; y < kSide - 1; ++y) {
    const unsigned char* s = small + y * kSide;
    unsigned char* g = grad + y * kSide;
    for (int x = 1; x < kSide - 1; ++x) {
      const int d = s[x + 1] - s[x];
      g[x] = static_cast<unsigned char>(d < 0 ? -d : d);
    }
  }
}

// 3 x 3 mean (divisor 9 also at the border) from the inclusive summed-area
// table of the gradient, built in the scratch as ov_createIntegralImage would
// build it, so that a frame allocates nothing.
void smooth(const unsigned char* __restrict grad, unsigned char* __restrict small,
            uint32_t* __restrict table) {
  for (int y = 0; y < kSide; ++y) {
    uint32_t rowSum = 0;
    uint32_t* out = table + y * kSide;
    for (int x = 0; x < kSide; ++x) {
      rowSum += grad[y * kSide + x];
      out[x] = y == 0 ? rowSum : rowSum + out[x - kSide];
    }
  }
  auto at = [table](int r, int c) -> int64_t {
    return (r < 0 || c < 0) ? 0 : static_cast<int64_t>(table[r * kSide + c]);
  };
  for (int y = 0; y < kSide; ++y) {
    const int r1 = y - 2;
    const int r2 = y + 1 < kSide - 1 ? y + 1 : kSide - 1;
    unsigned char* out = small + y * kSide;
    for (int x = 0; x < kSide; ++x) {
      const int c1 = x - 2;
      const int c2 = x + 1 < kSide - 1 ? x + 1 : kSide - 1;
      int64_t sum = at(r2, c2) - at(r1, c2) - at(r2, c1) + at(r1, c1);
      if (sum < 0) sum = 0;
      out[x] = static_cast<unsigned char>(sum / 9);
    }
  }
}

void cellSumsOf(const unsigned char* small, int gridCols, int gridRows, int* cells) {
  const int cw = kSide / gridCols;
  const int ch = kSide / gridRows;
  for (int gr = 0; gr < gridRows; ++gr) {
    for (int gc = 0; gc < gridCols; ++gc) {
      int sum = 0;
      for (int r = gr * ch; r < gr * ch + ch; ++r) {
        const unsigned char* s = small + r * kSide + gc * cw;
        for (int c = 0; c < cw; ++c) sum += s[c];
      }
      cells[gr * gridCols + gc] = sum;
    }
  }
}

}  // namespace

RFTarget* RFTarget_Create(int* data, int cols, int rows) {
  if (data == nullptr || cols < 1 || rows < 1) return nullptr;
  const int64_t bytes = orvan::sizerule::intCount(cols, rows, 4);
  if (bytes < 0) return nullptr;
  auto* t = static_cast<RFTarget*>(ov_malloc(sizeof(RFTarget)));
  if (t == nullptr) return nullptr;
  t->data = static_cast<int*>(ov_malloc(static_cast<unsigned int>(bytes)));
  if (t->data == nullptr) {
    ov_free(t);
    return nullptr;
  }
  memcpy(t->data, data, static_cast<size_t>(bytes));
  t->cols = cols;
  t->rows = rows;
  t->next = nullptr;
  return t;
}

void RFTarget_Release(RFTarget** pt) {
  if (pt == nullptr || *pt == nullptr) return;
  ov_free((*pt)->data);
  ov_free(*pt);
  *pt = nullptr;
}

RFModule* RFModule_Create(int width, int height, int gridCols, int gridRows) {
  if (width < 1 || height < 1 || gridCols < 1 || gridRows < 1) return nullptr;
  // The frame (two bytes per pixel) and the record length reported in an int
  // must fit an int; the work buffer and the record block the allocator's
  // 32 bits.
  if (orvan::sizerule::intCount(width, height, 2) < 0) return nullptr;
  const int64_t cells = orvan::sizerule::intCount(gridCols, gridRows);
  if (cells < 0 || orvan::sizerule::within(orvan::sizerule::kIntLimit,
                                           (cells + kHeaderWords + kReportedPositionWords) * 4) < 0)
    return nullptr;
  const int64_t work = workBytes(cells, int64_t{width} * height);
  if (work < 0 || orvan::sizerule::within(orvan::sizerule::kUintLimit, recordBytes(cells)) < 0)
    return nullptr;

  auto* m = static_cast<RFModule*>(ov_malloc_has_tag(RF_MODULE_TAG, sizeof(RFModule)));
  if (m == nullptr) return nullptr;
  memset(m, 0, sizeof(RFModule));
  m->id = firstLrand48(static_cast<long>(time(nullptr)));
  m->width = width;
  m->height = height;
  m->gridCols = gridCols;
  m->gridRows = gridRows;
  m->result = static_cast<int*>(ov_malloc(static_cast<unsigned int>(cells * 4)));
  m->work = static_cast<unsigned char*>(ov_malloc(static_cast<unsigned int>(work)));
  if (m->result == nullptr || m->work == nullptr) {
    RFModule_Release(&m);
    return nullptr;
  }
  memset(m->result, 0, static_cast<size_t>(cells * 4));
  memset(m->work, 0, static_cast<size_t>(work));
  return m;
}

void RFModule_Release(RFModule** pm) {
  if (pm == nullptr || *pm == nullptr) return;
  RFModule* m = *pm;
  ov_free(m->work);
  m->work = nullptr;
  freeRecords(m->output);
  m->output = nullptr;
  ov_free(m->result);
  m->result = nullptr;
  RFModule_Clear(m);
  ov_free_has_tag(RF_MODULE_TAG, m);
  *pm = nullptr;
}

void RFModule_Clear(RFModule* m) {
  if (m == nullptr) return;
  RFTarget* t = m->targets;
  while (t != nullptr) {
    RFTarget* next = t->next;
    RFTarget_Release(&t);
    t = next;
  }
  m->targetCount = 0;
  m->targets = nullptr;
}

void RFModule_AddTarget(RFModule* m, RFTarget* t, int position) {
  if (m == nullptr || t == nullptr) return;
  RFTarget* last = nullptr;
  for (RFTarget* it = m->targets; it != nullptr; it = it->next) {
    if (it == t) return;  // already listed: adding it again would close a loop
    last = it;
  }
  t->next = nullptr;
  if (last == nullptr) {
    m->targets = t;
  } else {
    last->next = t;
  }
  // After removals the count can drop below the number of stored positions,
  // even below 0; only slots 0..19 are ever written.
  if (m->targetCount >= 0 && m->targetCount < RF_MAX_POSITIONS) m->positions[m->targetCount] = position;
  ++m->targetCount;
}

void RFModule_RemoveTarget(RFModule* m, RFTarget* t) {
  if (m == nullptr || t == nullptr) return;
  RFTarget* previous = nullptr;
  for (RFTarget* it = m->targets; it != nullptr; previous = it, it = it->next) {
    if (it != t) continue;
    if (previous == nullptr) {
      m->targets = t->next;
    } else {
      previous->next = t->next;
    }
    RFTarget_Release(&t);
    --m->targetCount;
    return;
  }
}

void RFModule_PreProcess(RFModule* m, unsigned char* frame, int position) {
  if (m == nullptr || frame == nullptr) return;
  unsigned char* small = smallImage(m);
  unsigned char* grad = gradientImage(m);
  // The luma is read straight from the frame's even bytes while averaging;
  // the values are those a separate luma copy would give.
  downscale(frame, m->width, m->height, small, scratch(m));
  gradient(small, grad);
  smooth(grad, small, scratch(m));
  int* cells = cellSums(m);
  cellSumsOf(small, m->gridCols, m->gridRows, cells);
  RFModule_AddTarget(m, RFTarget_Create(cells, m->gridCols, m->gridRows), position);
}

void RFModule_Process(RFModule* m) {
  if (m == nullptr) return;
  const int n = cellCount(m);
  for (int i = 0; i < n; ++i) {
    int best = 0;
    int bestIndex = 0;
    int k = 0;
    for (const RFTarget* t = m->targets; t != nullptr; t = t->next, ++k) {
      // A target built elsewhere for a smaller grid has no value for this cell.
      if (int64_t{t->cols} * t->rows <= i) continue;
      const int v = t->data[i];
      if (v >= best) {
        best = v;
        bestIndex = k;
      }
    }
    m->result[i] = bestIndex;
  }
}

intptr_t RefocusModule_Initialize(int width, int height, int gridCols, int gridRows) {
  return reinterpret_cast<intptr_t>(RFModule_Create(width, height, gridCols, gridRows));
}

int RefocusModule_Process(intptr_t handle, unsigned char* frame, int position) {
  if (!tagged(handle)) return 0;
  auto* m = reinterpret_cast<RFModule*>(handle);
  RFModule_PreProcess(m, frame, position);
  return m->id;
}

unsigned char* RefocusModule_GetResultBuf(intptr_t handle, int* size) {
  if (size == nullptr) return nullptr;
  *size = 0;
  if (!tagged(handle)) return nullptr;
  auto* m = reinterpret_cast<RFModule*>(handle);
  RFModule_Process(m);

  const int n = cellCount(m);
  const int64_t bytes = recordBytes(n);
  auto* block = static_cast<unsigned char*>(ov_malloc(static_cast<unsigned int>(bytes)));
  if (block == nullptr) return nullptr;
  memset(block, 0, static_cast<size_t>(bytes));
  unsigned char* record = block + kLinkBytes;
  linkOf(record)->previous = m->output;
  m->output = record;

  storeBigEndian(record, RF_RECORD_MARK);
  storeBigEndian(record + 4, static_cast<uint32_t>(m->positions[0]));
  storeBigEndian(record + 8, static_cast<uint32_t>(m->targetCount));
  storeBigEndian(record + 12, static_cast<uint32_t>(m->gridCols));
  storeBigEndian(record + 16, static_cast<uint32_t>(m->gridRows));
  storeBigEndian(record + 20, static_cast<uint32_t>(m->id));
  unsigned char* word = record + kHeaderWords * 4;
  for (int i = 0; i < n; ++i, word += 4) storeBigEndian(word, static_cast<uint32_t>(m->result[i]));
  // The count in the header above is the full one; the module keeps at most 20.
  if (m->targetCount > RF_MAX_POSITIONS) m->targetCount = RF_MAX_POSITIONS;
  for (int k = 0; k < m->targetCount; ++k, word += 4)
    storeBigEndian(word, static_cast<uint32_t>(m->positions[k]));

  *size = static_cast<int>((int64_t{n} + kHeaderWords + kReportedPositionWords) * 4);
  return record;
}

void RefocusModule_Release(intptr_t handle) {
  if (!tagged(handle)) return;
  auto* m = reinterpret_cast<RFModule*>(handle);
  RFModule_Release(&m);
}
