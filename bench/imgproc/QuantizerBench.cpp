// Colour quantization of a 12 MP photograph, ours beside libimagequant (no
// dithering, default speed), one thread, same palette sizes.
#include <benchmark/benchmark.h>
#include <libimagequant.h>
#include <omp.h>

#include <cstdio>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "core/RefBase.h"
#include "core/Stream.h"
#include "image/Image.h"
#include "image/ImageDecoder.h"
#include "imgproc/ColorQuantizer.h"

namespace {

constexpr int kW = 4000, kH = 3000;

// The coffee sample scaled up bilinearly to 4000x3000 RGBA (smooth gradients,
// so the colour count grows as in a real capture).
const std::vector<unsigned char>& photo() {
  static std::vector<unsigned char> rgba;
  if (!rgba.empty()) return rgba;
  const std::string path = std::string(OV_SAMPLES_DIR) + "/coffee.jpg";
  auto_ptr<Stream> stream(new FileStream(path.c_str(), FileStream::FILE_MODE_READ));
  auto_ptr<Image> image(Image::createImage(1, 1, 1, Image::IMAGE_FORMAT_GRAY, nullptr));
  JpegDecoder decoder;
  if (decoder.decode(stream, image) != 1 || image->format != Image::IMAGE_FORMAT_RGB) {
    fprintf(stderr, "cannot decode %s\n", path.c_str());
    abort();
  }
  cv::Mat src((int)image->height, (int)image->width, CV_8UC3, image->planes[0]), big, out;
  cv::resize(src, big, cv::Size(kW, kH), 0, 0, cv::INTER_LINEAR);
  cv::cvtColor(big, out, cv::COLOR_RGB2RGBA);
  rgba.assign(out.data, out.data + (size_t)kW * kH * 4);
  return rgba;
}

// Histogram, moments and palette; with state.range(1) also the nearest-colour map.
void BM_ColorQuantizer(benchmark::State& state) {
  const std::vector<unsigned char>& px = photo();
  const int colors = (int)state.range(0);
  const bool map = state.range(1) != 0;
  std::vector<unsigned char> pal(3 * 256), idx((size_t)kW * kH);
  ColorQuantizer q;
  for (auto _ : state) {
    q.reset();
    q.addColor(px.data(), kW, kH, 4);
    q.prepare();
    const int n = q.getPalette(colors, pal.data());
    if (map) q.mapToPalette(px.data(), kW, kH, 4, pal.data(), n, idx.data());
    benchmark::DoNotOptimize(idx.data());
  }
  state.SetItemsProcessed(state.iterations() * kW * kH);
}

// liq_image_quantize, with state.range(1) also the remap (dithering off);
// its OpenMP loops held to one thread like ours.
void BM_Libimagequant(benchmark::State& state) {
  const std::vector<unsigned char>& px = photo();
  const int colors = (int)state.range(0);
  const bool map = state.range(1) != 0;
  std::vector<unsigned char> idx((size_t)kW * kH);
  omp_set_num_threads(1);
  liq_attr* attr = liq_attr_create();
  liq_set_max_colors(attr, colors);
  for (auto _ : state) {
    liq_image* img = liq_image_create_rgba(attr, px.data(), kW, kH, 0);
    liq_result* res = nullptr;
    if (liq_image_quantize(img, attr, &res) == LIQ_OK) {
      if (map) {
        liq_set_dithering_level(res, 0);
        liq_write_remapped_image(res, img, idx.data(), idx.size());
      }
      liq_result_destroy(res);
    }
    liq_image_destroy(img);
    benchmark::DoNotOptimize(idx.data());
  }
  liq_attr_destroy(attr);
  state.SetItemsProcessed(state.iterations() * kW * kH);
}

void paletteSizes(benchmark::internal::Benchmark* b) {
  b->ArgNames({"colors", "map"});
  for (int map : {0, 1})
    for (int colors : {16, 64, 256}) b->Args({colors, map});
  b->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_ColorQuantizer)->Apply(paletteSizes);
BENCHMARK(BM_Libimagequant)->Apply(paletteSizes);

}  // namespace
