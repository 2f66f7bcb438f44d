#include "image/ColorConvert.h"

// Placeholder bodies; the converters follow.
int color_convert_gray2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_gray2rgba(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2gray(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgba2gray(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2rgba(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgba2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2yuv(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_yuv2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2yuyv(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_yuyv2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2yvyu(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_yvyu2rgb(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2yuv422p(const unsigned char* rgb, unsigned char* y, unsigned char* u, unsigned char* v,
                              int width, int height) {
  (void)rgb;
  (void)y;
  (void)u;
  (void)v;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_yuv422p2rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                              unsigned char* rgb, int width, int height) {
  (void)y;
  (void)u;
  (void)v;
  (void)rgb;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2yv12oryu12(const unsigned char* rgb, unsigned char* y, unsigned char* u,
                                 unsigned char* v, int width, int height) {
  (void)rgb;
  (void)y;
  (void)u;
  (void)v;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_yv12oryu122rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                                 unsigned char* rgb, int width, int height) {
  (void)y;
  (void)u;
  (void)v;
  (void)rgb;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2nv12(const unsigned char* rgb, unsigned char* y, unsigned char* uv, int width,
                           int height) {
  (void)rgb;
  (void)y;
  (void)uv;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_rgb2nv21(const unsigned char* rgb, unsigned char* y, unsigned char* vu, int width,
                           int height) {
  (void)rgb;
  (void)y;
  (void)vu;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_nv122rgb(const unsigned char* y, const unsigned char* uv, unsigned char* rgb, int width,
                           int height) {
  (void)y;
  (void)uv;
  (void)rgb;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_nv212rgb(const unsigned char* y, const unsigned char* vu, unsigned char* rgb, int width,
                           int height) {
  (void)y;
  (void)vu;
  (void)rgb;
  (void)width;
  (void)height;
  return 0;
}
int color_convert_yuv2gray(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
  return 0;
}
void convert_nv12_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
}
void convert_nv21_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height) {
  (void)src;
  (void)dst;
  (void)width;
  (void)height;
}
Image* ColorConvert::convert(Image* s, int c) {
  (void)s;
  (void)c;
  return nullptr;
}
Image* ColorConvert::convert(auto_ptr<Image>& s, int c) { return convert(s.get(), c); }
