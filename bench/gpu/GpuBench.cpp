// GPU layer costs: program creation from sources (cold) against the binary
// cache (warm), and 1920x1080 RGBA transfers through the pixel-buffer path
// against plain client-memory GL calls.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "gpu/GLHeaders.h"
#include "gpu/GPU.h"

namespace {

// One off-screen engine for the whole run, current on the benchmark thread.
GPUEngine* engine() {
  static GPUEngine* e = [] {
    GPUEngine* made = new GPUEngine(nullptr, 16, 16);
    made->incStrong();
    if (!made->setup()) return static_cast<GPUEngine*>(nullptr);
    made->startup();
    return made;
  }();
  return e;
}

std::string cacheDir() {
  static std::string dir = [] {
    char pattern[] = "/tmp/ov-gpu-bench-XXXXXX";
    char* made = mkdtemp(pattern);
    std::string d = std::string(made != nullptr ? made : "/tmp") + "/";
    GPUScript::setCacheDirectory(d.c_str());
    return d;
  }();
  return dir;
}

const char* kVertex =
    "attribute vec4 a_position;\nattribute vec2 a_texcoord;\nvarying vec2 v_texcoord;\n"
    "void main() {\n  gl_Position = a_position;\n  v_texcoord = a_texcoord;\n}\n";

// About the weight of a real-time filter: a swirl with a colour grade.
const char* kFragment =
    "precision mediump float;\nuniform sampler2D tex_sampler;\nvarying vec2 v_texcoord;\n"
    "uniform float mRadius;\nuniform float mAngle;\nuniform vec2 mCenter;\n"
    "void main() {\n"
    "  vec2 d = v_texcoord - mCenter;\n"
    "  float r = length(d);\n"
    "  float k = clamp(1.0 - r / mRadius, 0.0, 1.0);\n"
    "  float a = mAngle * k * k;\n"
    "  vec2 p = mCenter + vec2(d.x * cos(a) - d.y * sin(a), d.x * sin(a) + d.y * cos(a));\n"
    "  vec4 c = texture2D(tex_sampler, p);\n"
    "  vec3 g = pow(c.rgb, vec3(0.8)) * vec3(1.05, 1.0, 0.92);\n"
    "  float l = dot(g, vec3(0.299, 0.587, 0.114));\n"
    "  gl_FragColor = vec4(mix(vec3(l), g, 1.2), c.a) * SEED;\n"
    "}\n";

// Mesa caches compiled shaders itself (by source and by generated code), so
// every cold iteration gets a fragment shader with a constant of its own.
std::string fragmentWithSeed(unsigned seed) {
  std::string text = std::string("#define SEED ") + std::to_string(0.5f + seed * 1e-6f) + "\n" + kFragment;
  return text;
}

void programSetup(benchmark::State& state, bool warm) {
  GPUEngine* e = engine();
  if (e == nullptr) {
    state.SkipWithError("no EGL display");
    return;
  }
  std::string dir = cacheDir();
  const char* name = "bench_swirl";
  std::string file = dir + name + ".osb";
  unlink(file.c_str());
  if (warm) {
    // Fill the cache once.
    auto_ptr<GPUScript> script(new GPUScript(e->getContext(), name));
    script->addSource("VertexShader", kVertex);
    script->addSource("FragmentShader", fragmentWithSeed(0).c_str());
    auto_ptr<GPUProgram> program(
        new GPUProgram(e->getContext(), script, GPUScript::OPTION_STORE_COMPILED_BINARY));
  }
  auto_ptr<GPUImage2D> target(new GPUImage2D(e->getContext(), 8, 8, 4));
  static unsigned seed = 1;
  for (auto _ : state) {
    std::string fragment = fragmentWithSeed(warm ? 0 : seed++);
    auto_ptr<GPUScript> script(new GPUScript(e->getContext(), warm ? name : nullptr));
    script->addSource("VertexShader", kVertex);
    script->addSource("FragmentShader", fragment.c_str());
    auto_ptr<GPUProgram> program(new GPUProgram(e->getContext(), script));
    if (program->getProgram() == 0 || program->isFromBinary() != warm) {
      state.SkipWithError("program not built the expected way");
      break;
    }
    // The warm path also rewrites the cache file when the script goes (clear()),
    // exactly as a filter's setup does; both are inside the timing.
    // One small draw: the driver generates code at first use, for either path.
    program->beganCompute();
    program->setOutputTarget(target);
    program->setOutputSize(0, 0, 8, 8);
    program->endCompute();
    glFinish();
  }
  unlink(file.c_str());
}

void BM_ProgramSetupCold(benchmark::State& state) { programSetup(state, false); }
void BM_ProgramSetupWarm(benchmark::State& state) { programSetup(state, true); }
BENCHMARK(BM_ProgramSetupCold)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ProgramSetupWarm)->Unit(benchmark::kMillisecond);

constexpr int kW = 1920, kH = 1080;

std::vector<unsigned char>& frame() {
  static std::vector<unsigned char> pixels = [] {
    std::vector<unsigned char> p(static_cast<size_t>(kW) * kH * 4);
    for (size_t i = 0; i < p.size(); ++i) p[i] = static_cast<unsigned char>(i * 31 + (i >> 12));
    return p;
  }();
  return pixels;
}

// Times upload() into a bound kW x kH RGBA texture, one frame per iteration.
template <typename Upload>
void timeUpload(benchmark::State& state, Upload upload) {
  GPUEngine* e = engine();
  if (e == nullptr) return state.SkipWithError("no EGL display");
  auto_ptr<GPUImage2D> image(new GPUImage2D(e->getContext(), kW, kH, 4));
  std::vector<unsigned char>& px = frame();
  glBindTexture(GL_TEXTURE_2D, image->getTexture());
  for (auto _ : state) {
    upload(image.get(), px);
    glFinish();
  }
  glBindTexture(GL_TEXTURE_2D, 0);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(px.size()));
}

// Times download() of a texture holding the frame; bindOutput attaches the
// texture to a framebuffer for the whole run, for reads that need one bound.
template <typename Download>
void timeDownload(benchmark::State& state, bool bindOutput, Download download) {
  GPUEngine* e = engine();
  if (e == nullptr) return state.SkipWithError("no EGL display");
  auto_ptr<GPUImage2D> image(new GPUImage2D(e->getContext(), kW, kH, 4, frame().data()));
  std::vector<unsigned char> out(frame().size());
  if (bindOutput) GPUFramebuffer::setFramebufferTarget(&image->getFramebuffer(), image.get());
  for (auto _ : state) {
    download(image.get(), out);
    benchmark::DoNotOptimize(out.data());
  }
  if (bindOutput) GPUFramebuffer::setFramebufferTarget(nullptr, nullptr);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(out.size()));
}

void BM_UploadPixelBuffer(benchmark::State& state) {
  timeUpload(state, [](GPUImage2D* image, std::vector<unsigned char>& px) {
    image->upload(px.data(), static_cast<int>(px.size()));
  });
}

// Peer: the texture specified straight from client memory.
void BM_UploadClientMemory(benchmark::State& state) {
  timeUpload(state, [](GPUImage2D*, std::vector<unsigned char>& px) {
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kW, kH, 0, GL_RGBA, GL_UNSIGNED_BYTE, px.data());
  });
}

void BM_DownloadPixelBuffer(benchmark::State& state) {
  timeDownload(state, false, [](GPUImage2D* image, std::vector<unsigned char>& out) {
    image->download(out.data(), static_cast<int>(out.size()));
  });
}

// Peer: glReadPixels straight into client memory.
void BM_DownloadClientMemory(benchmark::State& state) {
  timeDownload(state, true, [](GPUImage2D*, std::vector<unsigned char>& out) {
    glReadPixels(0, 0, kW, kH, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
  });
}

// Reference: one plain copy of the frame.
void BM_Memcpy(benchmark::State& state) {
  std::vector<unsigned char>& px = frame();
  std::vector<unsigned char> out(px.size());
  for (auto _ : state) {
    memcpy(out.data(), px.data(), px.size());
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(px.size()));
}

BENCHMARK(BM_UploadPixelBuffer)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UploadClientMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DownloadPixelBuffer)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DownloadClientMemory)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond);

}  // namespace
