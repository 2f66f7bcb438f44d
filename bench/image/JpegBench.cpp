// JPEG encode and decode of a 12-megapixel photograph (a bundled sample
// scaled up to 4000x3000) through MemoryStream, beside TurboJPEG's
// tjCompress2 / tjDecompress2 on the same pixels and the same file. Both use
// libjpeg-turbo's defaults: 4:2:0, integer DCT, fancy upsampling.
#include <benchmark/benchmark.h>
#include <turbojpeg.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "core/Stream.h"
#include "image/ImageDecoder.h"
#include "image/ImageEncoder.h"

namespace {

constexpr int kWidth = 4000, kHeight = 3000, kQuality = 90;

struct Photo {
  auto_ptr<Image> rgb;
  std::vector<unsigned char> jpeg;  // our encoding of rgb
  bool ok = false;

  Photo() {
    auto_ptr<Stream> in(new FileStream(OV_SAMPLES_DIR "/astronaut.jpg", FileStream::FILE_MODE_READ));
    auto_ptr<Image> small(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_NONE, nullptr));
    JpegDecoder decoder;
    if (decoder.decode(in, small) != 1) return;
    cv::setNumThreads(1);
    cv::Mat src(static_cast<int>(small->height), static_cast<int>(small->width), CV_8UC3, small->planes[0]);
    cv::Mat big;
    cv::resize(src, big, cv::Size(kWidth, kHeight), 0, 0, cv::INTER_CUBIC);
    unsigned char* planes[3] = {big.data, nullptr, nullptr};
    rgb = Image::createImage(kWidth, kHeight, 1, Image::IMAGE_FORMAT_RGB, planes);
    auto_ptr<MemoryStream> memory(new MemoryStream(kWidth * kHeight * 3));
    auto_ptr<Stream> stream(memory);
    JpegEncoder encoder;
    if (encoder.encode(stream, rgb, kQuality) != 1) return;
    jpeg.assign(memory->getBuffer(), memory->getBuffer() + memory->getPosition());
    ok = true;
  }
};

Photo& photo() {
  static Photo p;
  return p;
}

void BM_Ours_JpegEncode(benchmark::State& state) {
  Photo& p = photo();
  if (!p.ok) return state.SkipWithError("no photograph");
  std::vector<unsigned char> out(kWidth * kHeight * 3);
  JpegEncoder encoder;
  for (auto _ : state) {
    auto_ptr<Stream> stream(new MemoryStream(out.data(), static_cast<unsigned>(out.size())));
    if (encoder.encode(stream, p.rgb, kQuality) != 1) state.SkipWithError("encode failed");
    benchmark::ClobberMemory();
  }
}

void BM_TurboJPEG_tjCompress2(benchmark::State& state) {
  Photo& p = photo();
  if (!p.ok) return state.SkipWithError("no photograph");
  tjhandle tj = tjInitCompress();
  unsigned long capacity = tjBufSize(kWidth, kHeight, TJSAMP_420);
  unsigned char* out = tjAlloc(static_cast<int>(capacity));
  for (auto _ : state) {
    unsigned long size = capacity;
    if (tjCompress2(tj, p.rgb->planes[0], kWidth, 0, kHeight, TJPF_RGB, &out, &size, TJSAMP_420, kQuality,
                    TJFLAG_NOREALLOC) != 0)
      state.SkipWithError("tjCompress2 failed");
    benchmark::ClobberMemory();
  }
  tjFree(out);
  tjDestroy(tj);
}

void BM_Ours_JpegDecode(benchmark::State& state) {
  Photo& p = photo();
  if (!p.ok) return state.SkipWithError("no photograph");
  JpegDecoder decoder;
  auto_ptr<Image> image(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_NONE, nullptr));
  for (auto _ : state) {
    auto_ptr<Stream> stream(new MemoryStream(p.jpeg.data(), static_cast<unsigned>(p.jpeg.size())));
    if (decoder.decode(stream, image) != 1) state.SkipWithError("decode failed");
    benchmark::ClobberMemory();
  }
}

// A new blank image each time: nothing is given up, so there is no spare to
// reuse and every decode writes fresh pages.
void BM_Ours_JpegDecode_freshImage(benchmark::State& state) {
  Photo& p = photo();
  if (!p.ok) return state.SkipWithError("no photograph");
  JpegDecoder decoder;
  for (auto _ : state) {
    auto_ptr<Image> image(Image::createImage(0, 0, 1, Image::IMAGE_FORMAT_NONE, nullptr));
    auto_ptr<Stream> stream(new MemoryStream(p.jpeg.data(), static_cast<unsigned>(p.jpeg.size())));
    if (decoder.decode(stream, image) != 1) state.SkipWithError("decode failed");
    benchmark::ClobberMemory();
  }
}

void BM_TurboJPEG_tjDecompress2(benchmark::State& state) {
  Photo& p = photo();
  if (!p.ok) return state.SkipWithError("no photograph");
  tjhandle tj = tjInitDecompress();
  std::vector<unsigned char> out(kWidth * kHeight * 3);
  for (auto _ : state) {
    if (tjDecompress2(tj, p.jpeg.data(), p.jpeg.size(), out.data(), kWidth, 0, kHeight, TJPF_RGB, 0) != 0)
      state.SkipWithError("tjDecompress2 failed");
    benchmark::ClobberMemory();
  }
  tjDestroy(tj);
}

// The same into a new buffer each time, as a decoder that hands out a new
// image must: shows what page faults on fresh memory cost.
void BM_TurboJPEG_tjDecompress2_freshBuffer(benchmark::State& state) {
  Photo& p = photo();
  tjhandle tj = tjInitDecompress();
  for (auto _ : state) {
    std::vector<unsigned char> out(kWidth * kHeight * 3);
    if (tjDecompress2(tj, p.jpeg.data(), p.jpeg.size(), out.data(), kWidth, 0, kHeight, TJPF_RGB, 0) != 0)
      state.SkipWithError("tjDecompress2 failed");
    benchmark::ClobberMemory();
  }
  tjDestroy(tj);
}
BENCHMARK(BM_Ours_JpegEncode)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TurboJPEG_tjCompress2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Ours_JpegDecode)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Ours_JpegDecode_freshImage)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TurboJPEG_tjDecompress2)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TurboJPEG_tjDecompress2_freshBuffer)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
