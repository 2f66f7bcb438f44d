// Filter set-up with and without the program-binary cache, and process() of a
// 1920 x 1080 picture split into upload, draw and download, per filter. A
// plain CPU loop of the Xray formula and a memcpy of the picture run beside
// them as peers. A cold set-up compiles a text that no cache (ours or the
// driver's own shader cache) has seen: the filter's body plus a fresh comment.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "filters/ImageFilters.h"
#include "gpu/GLHeaders.h"
#include "gpu/GPUEngine.h"
#include "gpu/GPUFramebuffer.h"
#include "gpu/GPUScript.h"

namespace {

const char* const kFilters[] = {"ImageFilterNone",       "ImageFilterTable",  "ImageFilterDistorted",
                                "ImageFilterExtrusion",  "ImageFilterMirror", "ImageFilterTemperature",
                                "ImageFilterTimetunnel", "ImageFilterXray"};
const int kWidth = 1920;
const int kHeight = 1080;

std::string gCacheDir;
auto_ptr<GPUEngine> gEngine;

std::vector<uint8_t> picture() {
  std::vector<uint8_t> p(size_t(kWidth) * kHeight * 4);
  for (size_t i = 0; i < p.size(); ++i) p[i] = static_cast<uint8_t>((i * 2654435761u) >> 24);
  return p;
}

std::string cacheFile(const char* name) { return gCacheDir + name + ".osb"; }

// A filter whose program text ends in a comment that changes on every
// construction, so that nothing can have cached it.
template <typename F>
class Uncached : public F {
 public:
  Uncached() {
    static unsigned serial = 0;
    mText = std::string(F::getFragmentShader()) + "// " + std::to_string(getpid()) + "." +
            std::to_string(++serial) + "\n";
  }
  const char* getFragmentShader() const override { return mText.c_str(); }

 private:
  std::string mText;
};

ImageFilterBaseGL* uncached(const char* name) {
  std::string n = name;
  if (n == "ImageFilterNone") return new Uncached<ImageFilterNoneGL>();
  if (n == "ImageFilterTable") return new Uncached<ImageFilterTableGL>();
  if (n == "ImageFilterDistorted") return new Uncached<ImageFilterDistortedGL>();
  if (n == "ImageFilterExtrusion") return new Uncached<ImageFilterExtrusionGL>();
  if (n == "ImageFilterMirror") return new Uncached<ImageFilterMirrorGL>();
  if (n == "ImageFilterTemperature") return new Uncached<ImageFilterTemperatureGL>();
  if (n == "ImageFilterTimetunnel") return new Uncached<ImageFilterTimetunnelGL>();
  return new Uncached<ImageFilterXrayGL>();
}

// Set-up in the engine's current context, as the GL view's renderer does;
// the first draw is included because drivers finish compiling there.
void setupCold(benchmark::State& state, const char* name) {
  std::vector<uint8_t> px(16 * 16 * 4, 0x80);
  for (auto _ : state) {
    state.PauseTiming();
    unlink(cacheFile(name).c_str());
    state.ResumeTiming();
    auto_ptr<ImageFilterBaseGL> f(uncached(name));
    f->setupGraphics(1);
    f->process(px.data(), 16, 16);
    glFinish();
    state.PauseTiming();
    f = nullptr;  // writes the cache file
    state.ResumeTiming();
  }
}

void setupWarm(benchmark::State& state, const char* name) {
  {
    auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter(name));
    f->setupGraphics(1);
  }
  if (access(cacheFile(name).c_str(), R_OK) != 0) state.SkipWithError("no cache file");
  std::vector<uint8_t> px(16 * 16 * 4, 0x80);
  for (auto _ : state) {
    auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter(name));
    f->setupGraphics(1);
    f->process(px.data(), 16, 16);
    state.PauseTiming();
    f = nullptr;
    state.ResumeTiming();
  }
}

// A filter with its input and output made by one process() call.
auto_ptr<ImageFilterBaseGL> readyFilter(const char* name, std::vector<uint8_t>& px) {
  auto_ptr<ImageFilterBaseGL> f(ImageFilterFactory::createFilter(name));
  f->setupGraphics(1);
  f->process(px.data(), kWidth, kHeight);
  return f;
}

void processWhole(benchmark::State& state, const char* name) {
  std::vector<uint8_t> px = picture();
  auto_ptr<ImageFilterBaseGL> f = readyFilter(name, px);
  for (auto _ : state) f->process(px.data(), kWidth, kHeight);
  state.SetBytesProcessed(state.iterations() * int64_t(px.size()));
}

void draw(benchmark::State& state, const char* name) {
  std::vector<uint8_t> px = picture();
  auto_ptr<ImageFilterBaseGL> f = readyFilter(name, px);
  for (auto _ : state) {
    GPUFramebuffer::setFramebufferTarget(f->framebuffer, f->output);
    f->render();
    glFinish();
  }
}

void BM_Upload(benchmark::State& state) {
  std::vector<uint8_t> px = picture();
  auto_ptr<ImageFilterBaseGL> f = readyFilter("ImageFilterNone", px);
  for (auto _ : state) {
    f->input->set(kWidth, kHeight, 4, px.data());
    glFinish();
  }
  state.SetBytesProcessed(state.iterations() * int64_t(px.size()));
}

void BM_Download(benchmark::State& state) {
  std::vector<uint8_t> px = picture();
  auto_ptr<ImageFilterBaseGL> f = readyFilter("ImageFilterNone", px);
  for (auto _ : state) f->output->download(px.data(), static_cast<int>(px.size()));
  state.SetBytesProcessed(state.iterations() * int64_t(px.size()));
}

// Peers on the CPU: the Xray formula in a plain loop, and a copy of the picture.
void BM_CpuXrayLoop(benchmark::State& state) {
  std::vector<uint8_t> in = picture(), out(in.size());
  for (auto _ : state) {
    for (size_t i = 0; i < in.size(); i += 4) {
      uint8_t g = static_cast<uint8_t>(255 - (in[i] + in[i + 1] + in[i + 2]) / 3);
      out[i] = out[i + 1] = out[i + 2] = g;
      out[i + 3] = 255;
    }
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * int64_t(in.size()));
}

void BM_Memcpy(benchmark::State& state) {
  std::vector<uint8_t> in = picture(), out(in.size());
  for (auto _ : state) {
    memcpy(out.data(), in.data(), in.size());
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * int64_t(in.size()));
}

}  // namespace

int main(int argc, char** argv) {
  char dir[] = "/tmp/bench-filtersXXXXXX";
  if (mkdtemp(dir) == nullptr) return 1;
  gCacheDir = std::string(dir) + "/";
  GPUScript::setCacheDirectory(gCacheDir.c_str());
  gEngine = new GPUEngine(nullptr, 0, 0);
  if (!gEngine->setup()) return 1;
  gEngine->startup();

  auto add = [](const std::string& name, auto fn, auto... args) {
    benchmark::RegisterBenchmark(name.c_str(), fn, args...)->Unit(benchmark::kMillisecond)->UseRealTime();
  };
  for (const char* name : kFilters) {
    std::string shortName = name + strlen("ImageFilter");
    add("setupGraphics/cold/" + shortName, setupCold, name);
    add("setupGraphics/warm/" + shortName, setupWarm, name);
  }
  for (const char* name : kFilters) {
    std::string shortName = name + strlen("ImageFilter");
    add("process1080p/whole/" + shortName, processWhole, name);
    add("process1080p/draw/" + shortName, draw, name);
  }
  add("process1080p/upload", BM_Upload);
  add("process1080p/download", BM_Download);
  add("peer1080p/cpuXrayLoop", BM_CpuXrayLoop);
  add("peer1080p/memcpy", BM_Memcpy);

  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();

  gEngine->close();
  gEngine->destroy();
  gEngine = nullptr;
  std::string cmd = "rm -rf '" + gCacheDir + "'";
  return system(cmd.c_str()) == 0 ? 0 : 1;
}
