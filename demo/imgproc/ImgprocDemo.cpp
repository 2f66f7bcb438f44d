// Blurs and tints the sample photograph the way the Java BlurRender does,
// shows the other blurs beside it, draws the photo's LBP pattern map and its
// FAST-16 corners.
#include <cstdio>
#include <string>
#include <vector>

#include "imgproc/Blur.h"
#include "imgproc/Lbp.h"
#include "support/PictureWriter.h"
#include "support/SamplePhoto.h"

bool fast16Demo(const std::string& dir, const std::vector<unsigned char>& rgb,
                const std::vector<unsigned char>& gray, int w, int h);

namespace {

bool save(const std::string& dir, const char* name, const unsigned char* px, int w, int h, int channels,
          const char* entryPoint, const std::string& text) {
  const std::string path = dir + "/" + name;
  demo::caption(path, "CPU image processing", entryPoint, text);
  if (!demo::writePng(path, px, w, h, channels)) {
    fprintf(stderr, "cannot write %s\n", path.c_str());
    return false;
  }
  printf("  %s\n", path.c_str());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::string out;
  demo::RgbPhoto photo;
  if (int failed = demo::startSampleDemo(argc, argv, "coffee.jpg", &out, &photo)) return failed;
  const int w = photo.width, h = photo.height;
  const std::vector<unsigned char>& rgb = photo.rgb;
  const size_t n = (size_t)w * h;
  const std::vector<unsigned char> rgba = demo::toRgba(photo);
  std::vector<unsigned char> gray(n);
  for (size_t i = 0; i < n; ++i)
    gray[i] = (unsigned char)((77 * rgb[i * 3] + 150 * rgb[i * 3 + 1] + 29 * rgb[i * 3 + 2]) >> 8);
  printf("%s: %dx%d\n", demo::samplePath("coffee.jpg").c_str(), w, h);
  bool ok = save(out, "imgproc-photo.png", rgba.data(), w, h, 4, "demo::RgbPhoto",
                 "The sample photograph as the RGBA bitmap the blurs take.");

  // The BlurRender path: stack blur, then a warm tint over every whole group of eight pixels.
  std::vector<unsigned char> tinted = rgba;
  stack_blur(tinted.data(), w, h, 14);
  alpha_blend_neon(tinted.data(), (int)n, 255, 170, 60, 70);
  ok &= save(out, "imgproc-stackblur-tint.png", tinted.data(), w, h, 4, "stack_blur, alpha_blend_neon",
             "The Java BlurRender path: stack blur of radius 14, then a warm tint (alpha 70) over every "
             "whole group of eight pixels.");

  std::vector<unsigned char> iir = rgb;
  gaussiir(iir.data(), w, h, 3, w * 3, 10.0f, 10.0f);
  ok &= save(out, "imgproc-gaussiir.png", iir.data(), w, h, 3, "gaussiir",
             "Deriche's recursive Gaussian, radius 10 along rows and columns.");

  std::vector<unsigned int> px(n), fast(n);
  for (size_t i = 0; i < n; ++i) px[i] = rgb[i * 3] | rgb[i * 3 + 1] << 8 | (unsigned)rgb[i * 3 + 2] << 16;
  fast_blur(px.data(), fast.data(), w, h, 8);
  std::vector<unsigned char> fastRgba(n * 4);
  for (size_t i = 0; i < n; ++i)
    for (int c = 0; c < 4; ++c) fastRgba[i * 4 + c] = (unsigned char)(fast[i] >> (8 * c));
  ok &= save(out, "imgproc-fastblur.png", fastRgba.data(), w, h, 4, "fast_blur",
             "Box blur of 32-bit pixels, radius 8.");

  std::vector<unsigned char> src = gray, blurred(n);
  gauss_blur(src.data(), blurred.data(), w, h, 6);
  ok &= save(out, "imgproc-gauss-gray.png", blurred.data(), w, h, 1, "gauss_blur",
             "Three box blurs approximating a Gaussian of deviation 6 on the grey photograph.");

  // LBP patterns of the first pyramid level, drawn where they were found.
  const unsigned short rows = (unsigned short)h, cols = (unsigned short)w;
  std::vector<unsigned int> img(n);
  for (int x = 0; x < w; ++x)
    for (int y = 0; y < h; ++y) img[(size_t)x * rows + y] = gray[(size_t)y * w + x];
  const unsigned positions = lbp_pyr_get_dim(rows, cols, 1) / 256;
  std::vector<unsigned int> features(positions);
  lbp_pyr_features_sparse(features.data(), positions, img.data(), rows, cols);
  std::vector<unsigned char> map(n, 0);
  for (unsigned i = 0; i < positions; ++i) {
    const int x = (int)(i / (rows - 2u)) + 1, y = (int)(i % (rows - 2u)) + 1;
    map[(size_t)y * w + x] = (unsigned char)(features[i] & 255);
  }
  ok &= save(out, "imgproc-lbp.png", map.data(), w, h, 1, "lbp_pyr_get_dim, lbp_pyr_features_sparse",
             "The LBP pattern (0..255) of each of the " + std::to_string(positions) +
                 " interior positions of the first pyramid level.");

  // Classifier-style score of a 64x64 centre patch over three levels.
  std::vector<unsigned int> patch(64 * 64);
  for (int x = 0; x < 64; ++x)
    for (int y = 0; y < 64; ++y) patch[x * 64 + y] = gray[(size_t)(h / 2 - 32 + y) * w + (w / 2 - 32 + x)];
  const unsigned dim = lbp_pyr_get_dim(64, 64, 3);
  std::vector<double> weights(dim, 1.0);
  printf("LBP: %u features over 3 levels of a 64x64 patch, %.0f positions\n", dim,
         lbp_pyr_dotprod(weights.data(), dim, patch.data(), 64, 64));
  ok &= fast16Demo(out, rgb, gray, w, h);
  return ok ? 0 : 1;
}
