#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "GpuFixture.h"
#include "core/Memory.h"
#include "support/LogCapture.h"

namespace {

const char* kGreen =
    "precision mediump float;\nvarying vec2 v_texcoord;\n"
    "void main() { gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0); }\n";

// A cache directory of its own for each test.
class CacheDir {
 public:
  CacheDir() {
    char pattern[] = "/tmp/ov-gpu-cache-XXXXXX";
    char* made = mkdtemp(pattern);
    EXPECT_NE(made, nullptr);
    path = std::string(made != nullptr ? made : "/tmp") + "/";
    GPUScript::setCacheDirectory(path.c_str());
  }
  ~CacheDir() {
    for (const std::string& f : files()) unlink((path + f).c_str());
    rmdir(path.c_str());
    GPUScript::setCacheDirectory(nullptr);
  }
  std::vector<std::string> files() const {
    std::vector<std::string> out;
    DIR* d = opendir(path.c_str());
    if (d == nullptr) return out;
    while (dirent* e = readdir(d)) {
      if (e->d_name[0] != '.') out.push_back(e->d_name);
    }
    closedir(d);
    return out;
  }
  std::vector<unsigned char> read(const std::string& name) const {
    std::vector<unsigned char> out;
    FILE* f = fopen((path + name).c_str(), "rb");
    if (f == nullptr) return out;
    int c;
    while ((c = fgetc(f)) != EOF) out.push_back(static_cast<unsigned char>(c));
    fclose(f);
    return out;
  }
  void write(const std::string& name, const std::vector<unsigned char>& bytes) const {
    FILE* f = fopen((path + name).c_str(), "wb");
    ASSERT_NE(f, nullptr);
    if (!bytes.empty()) fwrite(bytes.data(), 1, bytes.size(), f);
    fclose(f);
  }
  std::string path;
};

unsigned le32(const std::vector<unsigned char>& b) {
  return b[0] | (b[1] << 8) | (b[2] << 16) | (static_cast<unsigned>(b[3]) << 24);
}

auto_ptr<GPUScript> makeScript(auto_ptr<GPUContext>& ctx, const char* name, const char* vertex,
                               const char* fragment) {
  auto_ptr<GPUScript> script(new GPUScript(ctx, name));
  script->addSource("VertexShader", vertex);
  script->addSource("FragmentShader", fragment);
  return script;
}

// Draws the program once into a w x h RGBA image and returns the pixels.
std::vector<unsigned char> drawOnce(auto_ptr<GPUContext>& ctx, GPUProgram* program, int w, int h,
                                    GPUImage2D* source = nullptr) {
  auto_ptr<GPUImage2D> out(new GPUImage2D(ctx, w, h, 4));
  std::vector<unsigned char> px(static_cast<size_t>(w) * h * 4, 7);
  if (!program->beganCompute()) return px;
  program->setOutputTarget(out);
  program->setOutputSize(0, 0, w, h);
  if (source != nullptr) program->setSourceTarget("tex", 0, source);
  program->endCompute();
  out->download(px.data(), static_cast<int>(px.size()));
  return px;
}

bool isGreen(const std::vector<unsigned char>& px) {
  for (size_t i = 0; i < px.size(); i += 4) {
    if (px[i] != 0 || px[i + 1] != 255 || px[i + 2] != 0 || px[i + 3] != 255) return false;
  }
  return !px.empty();
}

}  // namespace

TEST(GPUScriptTest, SourcesList) {
  EXPECT_EQ(GPUScriptSource::createScriptSource("", "x"), nullptr);
  EXPECT_EQ(GPUScriptSource::createScriptSource("x", ""), nullptr);
  EXPECT_EQ(GPUScriptSource::createScriptSource(nullptr, "x"), nullptr);
  EXPECT_EQ(GPUScriptSource::createScriptSource("x", nullptr), nullptr);
  char name[] = "label";
  auto_ptr<GPUScriptSource> made(GPUScriptSource::createScriptSource(name, "text"));
  ASSERT_NE(made, nullptr);
  name[0] = 'X';  // the source holds its own copy
  EXPECT_STREQ(made->getName(), "label");
  EXPECT_STREQ(made->getSource(), "text");

  // No context and no name: the script never touches GL or the cache.
  auto_ptr<GPUScript> script(new GPUScript(static_cast<GPUContext*>(nullptr), nullptr));
  EXPECT_EQ(script->getName(), nullptr);
  EXPECT_FALSE(script->addSource("a", ""));
  EXPECT_TRUE(script->addSource("a", "one"));
  script->addSource(made);
  EXPECT_EQ(made->getRefCount(), 2);
  EXPECT_TRUE(script->addSource("c", "three"));
  ASSERT_EQ(script->getSourceCount(), 3);
  EXPECT_EQ(script->getScriptSourceByIndex(-1), nullptr);
  EXPECT_EQ(script->getScriptSourceByIndex(3), nullptr);
  EXPECT_STREQ(script->getScriptSourceByIndex(1)->getSource(), "text");
  // Removing keeps the order of the rest; an absent source changes nothing.
  script->remove(made);
  EXPECT_EQ(made->getRefCount(), 1);
  ASSERT_EQ(script->getSourceCount(), 2);
  EXPECT_STREQ(script->getScriptSourceByIndex(0)->getSource(), "one");
  EXPECT_STREQ(script->getScriptSourceByIndex(1)->getSource(), "three");
  script->remove(made);
  EXPECT_EQ(script->getSourceCount(), 2);
  // clear drops the sources but keeps a binary.
  void* blob = galloc_malloc(8);
  memset(blob, 1, 8);
  script->setScriptBinaryFormat(0x875f);
  script->setScriptBinary(blob, 8);
  script->clear();
  EXPECT_EQ(script->getSourceCount(), 0);
  EXPECT_EQ(script->getScriptBinary(), blob);
  EXPECT_EQ(script->getScriptBinaryLength(), 8);
  EXPECT_EQ(script->getScriptBinaryFormat(), 0x875fu);
}

using GPUProgramTest = GpuTest;

// Every parameter type reaches its uniform: the shader writes the uniform's
// components out as a colour, compared with the values sent (0..1 -> 0..255).
TEST_F(GPUProgramTest, ParameterTypes) {
  struct Case {
    GPUProgram::GPUProgramParameterType type;
    const char* decl;
    const char* expr;
    std::vector<float> value;     // as sent (ints converted on use)
    std::vector<float> expected;  // colour in 0..1
  };
  std::vector<float> m3(9), m4(16);
  for (int i = 0; i < 9; ++i) m3[i] = i / 10.0f;
  for (int i = 0; i < 16; ++i) m4[i] = i / 20.0f;
  const std::vector<Case> cases = {
      {GPUProgram::INT1, "uniform int u;", "vec4(float(u) / 255.0, 0.0, 0.0, 1.0)", {51}, {0.2f, 0, 0, 1}},
      {GPUProgram::INT2,
       "uniform ivec2 u;",
       "vec4(vec2(u) / 255.0, 0.0, 1.0)",
       {51, 102},
       {0.2f, 0.4f, 0, 1}},
      {GPUProgram::INT3,
       "uniform ivec3 u;",
       "vec4(vec3(u) / 255.0, 1.0)",
       {51, 102, 153},
       {0.2f, 0.4f, 0.6f, 1}},
      {GPUProgram::INT4,
       "uniform ivec4 u;",
       "vec4(u) / 255.0",
       {51, 102, 153, 204},
       {0.2f, 0.4f, 0.6f, 0.8f}},
      {GPUProgram::FLOAT1, "uniform float u;", "vec4(u, 0.0, 0.0, 1.0)", {0.25f}, {0.25f, 0, 0, 1}},
      {GPUProgram::FLOAT2, "uniform vec2 u;", "vec4(u, 0.0, 1.0)", {0.25f, 0.5f}, {0.25f, 0.5f, 0, 1}},
      {GPUProgram::FLOAT3, "uniform vec3 u;", "vec4(u, 1.0)", {0.25f, 0.5f, 0.75f}, {0.25f, 0.5f, 0.75f, 1}},
      {GPUProgram::FLOAT4, "uniform vec4 u;", "u", {0.1f, 0.3f, 0.5f, 0.7f}, {0.1f, 0.3f, 0.5f, 0.7f}},
      // Column-major: m[c][r] is value[c * n + r].
      {GPUProgram::MATRIX2,
       "uniform mat2 u;",
       "vec4(u[0][0], u[0][1], u[1][0], u[1][1])",
       {0.1f, 0.2f, 0.3f, 0.4f},
       {0.1f, 0.2f, 0.3f, 0.4f}},
      {GPUProgram::MATRIX3,
       "uniform mat3 u;",
       "vec4(u[0][1], u[1][0], u[2][2], u[2][0])",
       m3,
       {m3[1], m3[3], m3[8], m3[6]}},
      {GPUProgram::MATRIX4,
       "uniform mat4 u;",
       "vec4(u[0][3], u[3][0], u[1][2], u[2][1])",
       m4,
       {m4[3], m4[12], m4[6], m4[9]}},
  };
  for (const Case& c : cases) {
    std::string fragment = std::string("precision mediump float;\n") + c.decl +
                           "\nvoid main() { gl_FragColor = " + c.expr + "; }\n";
    auto_ptr<GPUScript> script = makeScript(ctx, nullptr, quadVertexShader(), fragment.c_str());
    auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
    ASSERT_NE(program->getProgram(), 0u) << c.decl;
    ASSERT_TRUE(program->beganCompute());
    std::vector<int> ints(c.value.begin(), c.value.end());
    std::vector<float> floats = c.value;
    bool isInt = c.type <= GPUProgram::INT4;
    program->setParameters("u", c.type, isInt ? static_cast<void*>(ints.data()) : floats.data());
    // Ignored: a type past the table and a null value.
    std::vector<float> junk(16, 1.0f);
    program->setParameters("u", static_cast<GPUProgram::GPUProgramParameterType>(11), junk.data());
    program->setParameters("u", c.type, nullptr);
    std::vector<unsigned char> px = drawOnce(ctx, program.get(), 2, 2);
    for (int k = 0; k < 4; ++k) {
      EXPECT_NEAR(px[k], c.expected[k] * 255.0f, 1.0) << c.decl << " component " << k;
    }
  }
}

TEST_F(GPUProgramTest, HostValueArraysAndTranspose) {
  auto_ptr<GPUScript> script =
      makeScript(ctx, nullptr, quadVertexShader(),
                 "precision mediump float;\nuniform float arr[2];\nuniform mat2 m;\n"
                 "void main() { gl_FragColor = vec4(arr[0], arr[1], m[0][1], m[1][0]); }\n");
  auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
  ASSERT_TRUE(program->beganCompute());
  float arr[2] = {0.2f, 0.6f};
  program->_SetHostValue1fv("arr", 2, arr);
  const float m[4] = {0.0f, 0.4f, 0.8f, 1.0f};       // columns (0, 0.4) and (0.8, 1)
  program->_SetHostValueMatrix2fv("m", 1, true, m);  // transposed: m[0][1] = 0.8, m[1][0] = 0.4
  program->_SetHostValue1fv("arr", 2, nullptr);      // ignored
  std::vector<unsigned char> px = drawOnce(ctx, program.get(), 1, 1);
  EXPECT_NEAR(px[0], 51, 1);
  EXPECT_NEAR(px[1], 153, 1);
  EXPECT_NEAR(px[2], 204, 1);
  EXPECT_NEAR(px[3], 102, 1);
}

// The default quad samples the texture a quarter turn against the output:
// at normalised device position (X, Y), s = (Y + 1) / 2 and t = (1 - X) / 2.
TEST_F(GPUProgramTest, DefaultVerticesTurnAQuarter) {
  const int n = 4;
  std::vector<unsigned char> tex = noiseBytes(n * n * 4, 11);
  for (size_t i = 3; i < tex.size(); i += 4) tex[i] = 255;
  auto_ptr<GPUImage2D> source(new GPUImage2D(ctx, n, n, 4, tex.data()));
  glBindTexture(GL_TEXTURE_2D, source->getTexture());
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  auto_ptr<GPUScript> script =
      makeScript(ctx, nullptr, quadVertexShader(),
                 "precision mediump float;\nuniform sampler2D tex;\nvarying vec2 v_texcoord;\n"
                 "void main() { gl_FragColor = texture2D(tex, v_texcoord); }\n");
  auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
  std::vector<unsigned char> px = drawOnce(ctx, program.get(), n, n, source.get());
  for (int y = 0; y < n; ++y) {
    for (int x = 0; x < n; ++x) {
      double X = (x + 0.5) * 2.0 / n - 1.0, Y = (y + 0.5) * 2.0 / n - 1.0;
      int s = static_cast<int>(std::floor((Y + 1) / 2 * n)),
          t = static_cast<int>(std::floor((1 - X) / 2 * n));
      EXPECT_EQ(memcmp(rgbaAt(px, n, x, y), rgbaAt(tex, n, s, t), 4), 0) << x << "," << y;
    }
  }
  // release makes the program inert.
  program->release();
  EXPECT_EQ(program->getProgram(), 0u);
  EXPECT_FALSE(program->beganCompute());
  EXPECT_FALSE(program->endCompute());
}

TEST_F(GPUProgramTest, CompileFailuresAreLogged) {
  LogCapture cap;
  auto_ptr<GPUScript> script = makeScript(ctx, nullptr, quadVertexShader(), "void main() { nonsense; }\n");
  auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
  EXPECT_EQ(program->getProgram(), 0u);
  EXPECT_EQ(cap.countPrefix("Could not compiled shader:35632\n"), 1);  // GL_FRAGMENT_SHADER
  // A vertex shader writing an attribute the fragment does not read links;
  // mismatched varyings do not.
  cap.clear();
  EXPECT_EQ(GPUUtils::createProgram(quadVertexShader(),
                                    "precision mediump float;\nvarying vec3 v_texcoord;\n"
                                    "void main() { gl_FragColor = vec4(v_texcoord, 1.0); }\n"),
            0u);
  EXPECT_EQ(cap.countPrefix("Could not link program:\n"), 1);
  // A script with fewer than two sources builds nothing.
  auto_ptr<GPUScript> lonely(new GPUScript(ctx, nullptr));
  lonely->addSource("VertexShader", quadVertexShader());
  auto_ptr<GPUProgram> none(new GPUProgram(ctx, lonely));
  EXPECT_EQ(none->getProgram(), 0u);
  EXPECT_EQ(GPUUtils::createProgram(0x875f, nullptr, 10), 0u);
  // Compute programs link alone; a broken one is logged with its shader type (0x91b9).
  unsigned compute =
      GPUUtils::createComputeProgram("#version 310 es\nlayout(local_size_x = 1) in;\nvoid main() {}\n");
  EXPECT_NE(compute, 0u);
  glDeleteProgram(compute);
  cap.clear();
  EXPECT_EQ(GPUUtils::createComputeProgram("#version 310 es\nvoid main() { oops }\n"), 0u);
  EXPECT_EQ(cap.countPrefix("Could not compiled shader:37305\n"), 1);
  int length = 0;
  unsigned format = 0;
  void* binary = nullptr;
  EXPECT_EQ(GPUUtils::getProgramBinary(0, &length, &format, &binary), 0);
  EXPECT_EQ(binary, nullptr);
}

// First run compiles and (with the store option) writes <name>.osb; a second
// engine loads it even though the script's sources are unusable.
TEST(GPUProgramCacheTest, FirstRunWritesSecondEngineLoads) {
  CacheDir dir;
  std::vector<GLint> formats;
  {
    auto_ptr<GPUEngine> engine(new GPUEngine(nullptr, 4, 4));
    ASSERT_TRUE(engine->setup());
    engine->startup();
    auto_ptr<GPUContext> ctx = engine->getContext();
    GLint count = 0;
    glGetIntegerv(GL_NUM_PROGRAM_BINARY_FORMATS, &count);
    ASSERT_GT(count, 0);
    formats.resize(static_cast<size_t>(count));
    glGetIntegerv(GL_PROGRAM_BINARY_FORMATS, formats.data());
    {
      // Default options: compiled, nothing stored, nothing written.
      auto_ptr<GPUScript> plain = makeScript(ctx, "plain", quadVertexShader(), kGreen);
      auto_ptr<GPUProgram> program(new GPUProgram(ctx, plain));
      EXPECT_NE(program->getProgram(), 0u);
      EXPECT_EQ(plain->getScriptBinary(), nullptr);
    }
    EXPECT_TRUE(dir.files().empty());
    GLint binaryLength = 0;
    {
      auto_ptr<GPUScript> script = makeScript(ctx, "green", quadVertexShader(), kGreen);
      EXPECT_EQ(script->getScriptBinary(), nullptr);
      auto_ptr<GPUProgram> program(new GPUProgram(ctx, script, GPUScript::OPTION_STORE_COMPILED_BINARY));
      ASSERT_NE(program->getProgram(), 0u);
      EXPECT_FALSE(program->isFromBinary());
      glGetProgramiv(program->getProgram(), GL_PROGRAM_BINARY_LENGTH, &binaryLength);
      EXPECT_EQ(script->getScriptBinaryLength(), binaryLength);
      EXPECT_TRUE(isGreen(drawOnce(ctx, program.get(), 2, 2)));
      EXPECT_TRUE(dir.files().empty());  // written by clear(), not before
    }
    ASSERT_EQ(dir.files(), std::vector<std::string>{"green.osb"});
    std::vector<unsigned char> file = dir.read("green.osb");
    ASSERT_EQ(file.size(), 4u + static_cast<size_t>(binaryLength));
    bool known = false;
    for (GLint f : formats) known = known || static_cast<unsigned>(f) == le32(file);
    EXPECT_TRUE(known) << std::hex << le32(file);
    engine->close();
    engine->destroy();
  }
  auto_ptr<GPUEngine> second(new GPUEngine(nullptr, 4, 4));
  ASSERT_TRUE(second->setup());
  second->startup();
  auto_ptr<GPUContext> ctx = second->getContext();
  {
    auto_ptr<GPUScript> script = makeScript(ctx, "green", "not a shader", "nor this");
    ASSERT_NE(script->getScriptBinary(), nullptr);
    auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
    ASSERT_NE(program->getProgram(), 0u);
    EXPECT_TRUE(program->isFromBinary());
    EXPECT_TRUE(isGreen(drawOnce(ctx, program.get(), 3, 2)));
  }
  second->close();
  second->destroy();
}

// Broken cache files: a rejected binary leaves program 0 by default and is
// replaced by a compiled program (and a fresh file) with the options on.
TEST_F(GPUProgramTest, RejectedAndEmptyCacheFiles) {
  CacheDir dir;
  std::vector<unsigned char> good;
  {
    auto_ptr<GPUScript> script = makeScript(ctx, "source", quadVertexShader(), kGreen);
    auto_ptr<GPUProgram> program(new GPUProgram(ctx, script, GPUScript::OPTION_STORE_COMPILED_BINARY));
    ASSERT_NE(program->getProgram(), 0u);
  }
  good = dir.read("source.osb");
  ASSERT_GT(good.size(), 20u);

  std::vector<unsigned char> truncated(good.begin(), good.begin() + 20);
  std::vector<unsigned char> foreign = good;
  foreign[0] ^= 0x5a;  // a binary format this driver does not have
  std::vector<unsigned char> garbage = noiseBytes(good.size(), 3);
  memcpy(garbage.data(), good.data(), 4);  // right format, wrong contents
  const std::pair<const char*, std::vector<unsigned char>> broken[] = {
      {"truncated", truncated}, {"foreign", foreign}, {"garbage", garbage}};
  for (const auto& b : broken) {
    std::string file = std::string(b.first) + ".osb";
    dir.write(file, b.second);
    {
      auto_ptr<GPUScript> script = makeScript(ctx, b.first, quadVertexShader(), kGreen);
      EXPECT_EQ(script->getScriptBinaryLength(), static_cast<int>(b.second.size()) - 4);
      auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
      EXPECT_EQ(program->getProgram(), 0u) << b.first;
      EXPECT_FALSE(program->beganCompute());
    }
    // The script wrote the same bytes back: still broken on disk.
    EXPECT_EQ(dir.read(file), b.second) << b.first;
    {
      auto_ptr<GPUScript> script = makeScript(ctx, b.first, quadVertexShader(), kGreen);
      script->setOptions(GPUScript::OPTION_RECOMPILE_REJECTED_BINARY |
                         GPUScript::OPTION_STORE_COMPILED_BINARY);
      auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
      ASSERT_NE(program->getProgram(), 0u) << b.first;
      EXPECT_FALSE(program->isFromBinary());
      EXPECT_TRUE(isGreen(drawOnce(ctx, program.get(), 2, 2)));
    }
    // Healed: the next script loads the fresh binary without sources.
    {
      auto_ptr<GPUScript> script = makeScript(ctx, b.first, "junk", "junk");
      auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
      EXPECT_TRUE(program->isFromBinary()) << b.first;
      EXPECT_TRUE(isGreen(drawOnce(ctx, program.get(), 2, 2)));
    }
  }

  // Recompiling without storing: the program works, the stale file stays.
  dir.write("stale.osb", truncated);
  {
    auto_ptr<GPUScript> script = makeScript(ctx, "stale", quadVertexShader(), kGreen);
    auto_ptr<GPUProgram> program(new GPUProgram(ctx, script, GPUScript::OPTION_RECOMPILE_REJECTED_BINARY));
    EXPECT_NE(program->getProgram(), 0u);
  }
  EXPECT_EQ(dir.read("stale.osb"), truncated);

  // Files of 4 bytes or fewer hold no binary: the sources are used.
  for (size_t size : {0u, 3u, 4u}) {
    dir.write("tiny.osb", std::vector<unsigned char>(good.begin(), good.begin() + size));
    auto_ptr<GPUScript> script = makeScript(ctx, "tiny", quadVertexShader(), kGreen);
    EXPECT_EQ(script->getScriptBinary(), nullptr) << size;
    EXPECT_EQ(script->getScriptBinaryLength(), 0);
    auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
    EXPECT_NE(program->getProgram(), 0u) << size;
  }
}

TEST_F(GPUProgramTest, UnnamedScriptNeverTouchesTheCache) {
  CacheDir dir;
  {
    auto_ptr<GPUScript> script = makeScript(ctx, nullptr, quadVertexShader(), kGreen);
    auto_ptr<GPUProgram> program(new GPUProgram(ctx, script, GPUScript::OPTION_STORE_COMPILED_BINARY));
    EXPECT_NE(script->getScriptBinary(), nullptr);
  }
  EXPECT_TRUE(dir.files().empty());
}

// A camera-style external texture: an EGLImage made from a 2D texture, bound
// to GL_TEXTURE_EXTERNAL_OES and sampled through samplerExternalOES.
TEST_F(GPUProgramTest, ExternalTextureSampling) {
  auto createImage = reinterpret_cast<PFNEGLCREATEIMAGEKHRPROC>(eglGetProcAddress("eglCreateImageKHR"));
  auto destroyImage = reinterpret_cast<PFNEGLDESTROYIMAGEKHRPROC>(eglGetProcAddress("eglDestroyImageKHR"));
  auto targetTexture = reinterpret_cast<PFNGLEGLIMAGETARGETTEXTURE2DOESPROC>(
      eglGetProcAddress("glEGLImageTargetTexture2DOES"));
  ASSERT_TRUE(createImage != nullptr && destroyImage != nullptr && targetTexture != nullptr);
  const int w = 5, h = 3;
  std::vector<unsigned char> pixels = noiseBytes(w * h * 4, 21);
  for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
  auto_ptr<GPUImage2D> camera(new GPUImage2D(ctx, w, h, 4, pixels.data()));
  const EGLint attribs[] = {EGL_GL_TEXTURE_LEVEL_KHR, 0, EGL_NONE};
  EGLImageKHR eglImage =
      createImage(ctx->display, ctx->context, EGL_GL_TEXTURE_2D_KHR,
                  reinterpret_cast<EGLClientBuffer>(static_cast<uintptr_t>(camera->getTexture())), attribs);
  ASSERT_NE(eglImage, EGL_NO_IMAGE_KHR);
  GLuint external = 0;
  glGenTextures(1, &external);
  glBindTexture(GL_TEXTURE_EXTERNAL_OES, external);
  targetTexture(GL_TEXTURE_EXTERNAL_OES, eglImage);
  ASSERT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  glBindTexture(GL_TEXTURE_EXTERNAL_OES, 0);
  {
    auto_ptr<GPUImage2D> input(new GPUImage2D(ctx, external, w, h, 5, false, false));
    EXPECT_EQ(input->getTarget(), static_cast<unsigned>(GL_TEXTURE_EXTERNAL_OES));
    auto_ptr<GPUScript> script = makeScript(ctx, nullptr, quadVertexShader(),
                                            "#extension GL_OES_EGL_image_external : require\n"
                                            "precision mediump float;\nuniform samplerExternalOES tex;\n"
                                            "varying vec2 v_texcoord;\n"
                                            "void main() { gl_FragColor = texture2D(tex, v_texcoord); }\n");
    auto_ptr<GPUProgram> program(new GPUProgram(ctx, script));
    ASSERT_NE(program->getProgram(), 0u);
    const float straight[8] = {0, 0, 1, 0, 0, 1, 1, 1};
    program->setTexVertices(straight);
    std::vector<unsigned char> px = drawOnce(ctx, program.get(), w, h, input.get());
    EXPECT_EQ(px, pixels);
    // The external texture is borrowed: recycling leaves it alive.
    input->recycle();
    EXPECT_EQ(glIsTexture(external), GL_TRUE);
  }
  glDeleteTextures(1, &external);
  destroyImage(ctx->display, eglImage);
}
