// Timestamp text into YUYV photos of random sizes, and the stamp pieces alone.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "../FuzzInput.h"
#include "core/Memory.h"
#include "watermark/TimestampWatermark.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  // Sides up to 1400 take in both aspect classes without slow executions.
  const int width = static_cast<int>(in.range(0, 1400)) - 1;
  const int height = static_cast<int>(in.range(0, 1400)) - 1;
  const int setIndex = static_cast<int>(in.range(0, 3)) - 1;
  // Mostly characters the glyph sets have, now and then any byte.
  std::string text;
  for (unsigned n = in.range(0, 40); n > 0; --n) {
    static const char kGlyphs[] = "0123456789:- ";
    const uint8_t c = in.take<uint8_t>();
    text += c < 240 ? kGlyphs[c % 13] : static_cast<char>(c);
  }

  unsigned char* mark = nullptr;
  int markW = -1;
  int markH = -1;
  CreateTimestampWatermark(text.c_str(), &mark, &markW, &markH, setIndex);
  if (mark != nullptr) {
    FUZZ_CHECK(markW > 0 && markW % 2 == 0 && markH > 0);
    // Ink coverage over the whole stamp must be readable.
    volatile unsigned sum = 0;
    for (int i = 0; i < markW * markH; ++i) sum = sum + mark[i];
    galloc_free(mark);
  } else {
    FUZZ_CHECK(markW == 0 && markH == 0);
  }

  if (!text.empty()) {
    Symbol* sym = in.flag() ? GetTimestampSymbol_4_to_3(text[0]) : GetTimestampSymbol_16_to_9(text[0]);
    const int dw = static_cast<int>(in.range(0, 300));
    const int dh = static_cast<int>(in.range(0, 300));
    std::vector<unsigned char> canvas(size_t(dw) * dh + 1);
    DrawSymbol(canvas.data(), dw, dh, sym, in.take<int16_t>(), in.take<int16_t>(), in.take<int16_t>(),
               in.take<int16_t>());
  }

  if (width < 1 || height < 1) {
    unsigned char byte = 0;
    FUZZ_CHECK(make_photo_timestamp_watermark_to_yuyv(&byte, width, height, text.c_str()) == 0);
    return 0;
  }
  std::vector<unsigned char> photo(size_t(width) * height * 2);
  in.tile(photo.data(), photo.size());
  const std::vector<unsigned char> before = photo;
  if (make_photo_timestamp_watermark_to_yuyv(photo.data(), width, height, text.c_str()) == 0)
    FUZZ_CHECK(photo == before);
  return 0;
}
