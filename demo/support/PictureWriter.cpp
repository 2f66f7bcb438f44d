#include "support/PictureWriter.h"

#include <cstdio>
#include <vector>

namespace demo {
namespace {

uint32_t crc32(const uint8_t* data, size_t n, uint32_t crc = 0) {
  static uint32_t table[256];
  static bool ready = false;
  if (!ready) {
    for (uint32_t i = 0; i < 256; ++i) {
      uint32_t c = i;
      for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
      table[i] = c;
    }
    ready = true;
  }
  crc = ~crc;
  for (size_t i = 0; i < n; ++i) crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
  return ~crc;
}

void put32(std::vector<uint8_t>& out, uint32_t v) {
  out.push_back(static_cast<uint8_t>(v >> 24));
  out.push_back(static_cast<uint8_t>(v >> 16));
  out.push_back(static_cast<uint8_t>(v >> 8));
  out.push_back(static_cast<uint8_t>(v));
}

void chunk(std::vector<uint8_t>& out, const char* type, const std::vector<uint8_t>& body) {
  put32(out, static_cast<uint32_t>(body.size()));
  std::vector<uint8_t> typed(type, type + 4);
  typed.insert(typed.end(), body.begin(), body.end());
  out.insert(out.end(), typed.begin(), typed.end());
  put32(out, crc32(typed.data(), typed.size()));
}

}  // namespace

bool writePng(const std::string& path, const uint8_t* pixels, int width, int height, int channels) {
  if (pixels == nullptr || width <= 0 || height <= 0) return false;
  static const uint8_t kColourType[5] = {0, 0, 4, 2, 6};
  if (channels < 1 || channels > 4 || channels == 2) return false;

  std::vector<uint8_t> raw;
  const size_t row = static_cast<size_t>(width) * channels;
  raw.reserve((row + 1) * height);
  for (int y = 0; y < height; ++y) {
    raw.push_back(0);  // filter: none
    raw.insert(raw.end(), pixels + y * row, pixels + (y + 1) * row);
  }

  // zlib stream of stored blocks.
  std::vector<uint8_t> z = {0x78, 0x01};
  uint32_t a = 1, b = 0;
  for (uint8_t v : raw) {
    a = (a + v) % 65521;
    b = (b + a) % 65521;
  }
  for (size_t off = 0; off < raw.size() || off == 0; off += 65535) {
    size_t n = raw.size() - off < 65535 ? raw.size() - off : 65535;
    z.push_back(off + n >= raw.size() ? 1 : 0);
    z.push_back(static_cast<uint8_t>(n));
    z.push_back(static_cast<uint8_t>(n >> 8));
    z.push_back(static_cast<uint8_t>(~n));
    z.push_back(static_cast<uint8_t>(~n >> 8));
    z.insert(z.end(), raw.begin() + off, raw.begin() + off + n);
    if (raw.empty()) break;
  }
  put32(z, (b << 16) | a);

  std::vector<uint8_t> out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  std::vector<uint8_t> ihdr;
  put32(ihdr, static_cast<uint32_t>(width));
  put32(ihdr, static_cast<uint32_t>(height));
  ihdr.push_back(8);
  ihdr.push_back(kColourType[channels]);
  ihdr.push_back(0);
  ihdr.push_back(0);
  ihdr.push_back(0);
  chunk(out, "IHDR", ihdr);
  chunk(out, "IDAT", z);
  chunk(out, "IEND", {});

  FILE* f = fopen(path.c_str(), "wb");
  if (f == nullptr) return false;
  bool ok = fwrite(out.data(), 1, out.size(), f) == out.size();
  return fclose(f) == 0 && ok;
}

bool writePnm(const std::string& path, const uint8_t* pixels, int width, int height, int channels) {
  if (pixels == nullptr || width <= 0 || height <= 0 || (channels != 1 && channels != 3)) return false;
  FILE* f = fopen(path.c_str(), "wb");
  if (f == nullptr) return false;
  fprintf(f, "P%d\n%d %d\n255\n", channels == 1 ? 5 : 6, width, height);
  size_t n = static_cast<size_t>(width) * height * channels;
  bool ok = fwrite(pixels, 1, n, f) == n;
  return fclose(f) == 0 && ok;
}

}  // namespace demo
