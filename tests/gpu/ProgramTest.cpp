#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
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
struct CacheDir {
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
    if (DIR* d = opendir(path.c_str())) {
      while (dirent* e = readdir(d))
        if (e->d_name[0] != '.') out.push_back(e->d_name);
      closedir(d);
    }
    return out;
  }
  Pixels read(const std::string& name) const {
    std::ifstream in(path + name, std::ios::binary);
    return Pixels(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  void write(const std::string& name, const Pixels& bytes) const {
    std::ofstream(path + name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  std::string path;
};

bool isGreen(const Pixels& px) {
  const unsigned char green[4] = {0, 255, 0, 255};
  return !px.empty() && px == filled(static_cast<int>(px.size() / 4), 1, green);
}

// A script named `name` drawing green (or from `vertex`/`fragment`), its
// program built with options given to the program or to the script, and
// whether that program draws green.
struct Cached {
  Cached(GPUContext* ctx, const char* name, unsigned programOptions = 0, unsigned scriptOptions = 0,
         const char* vertex = quadVertexShader(), const char* fragment = kGreen)
      : script(makeScript(ctx, name, fragment, vertex)) {
    loadedLength = script->getScriptBinaryLength();
    script->setOptions(scriptOptions);
    program = new GPUProgram(ctx, script.get(), programOptions);
    drawsGreen = isGreen(drawOnce(ctx, program.get(), 3, 2));
  }
  auto_ptr<GPUScript> script;
  auto_ptr<GPUProgram> program;
  int loadedLength = 0;
  bool drawsGreen = false;
};

}  // namespace

TEST(GPUScriptTest, SourcesList) {
  const char* bad[][2] = {{"", "x"}, {"x", ""}, {nullptr, "x"}, {"x", nullptr}};
  for (auto& b : bad) EXPECT_EQ(GPUScriptSource::createScriptSource(b[0], b[1]), nullptr);
  char name[] = "label";
  auto_ptr<GPUScriptSource> made(GPUScriptSource::createScriptSource(name, "text"));
  ASSERT_NE(made, nullptr);
  name[0] = 'X';  // the source holds its own copy
  EXPECT_STREQ(made->getName(), "label");

  // No context and no name: the script never touches GL or the cache.
  auto_ptr<GPUScript> script(new GPUScript(static_cast<GPUContext*>(nullptr), nullptr));
  EXPECT_FALSE(script->addSource("a", ""));
  EXPECT_TRUE(script->addSource("a", "one"));
  script->addSource(made);
  EXPECT_EQ(made->getRefCount(), 2);
  EXPECT_TRUE(script->addSource("c", "three"));
  ASSERT_EQ(script->getSourceCount(), 3);
  EXPECT_EQ(script->getScriptSourceByIndex(-1), nullptr);
  EXPECT_EQ(script->getScriptSourceByIndex(3), nullptr);
  // Removing keeps the order of the rest; an absent source changes nothing.
  script->remove(made);
  script->remove(made);
  EXPECT_EQ(made->getRefCount(), 1);
  ASSERT_EQ(script->getSourceCount(), 2);
  EXPECT_STREQ(script->getScriptSourceByIndex(0)->getSource(), "one");
  EXPECT_STREQ(script->getScriptSourceByIndex(1)->getSource(), "three");
  // clear drops the sources but keeps a binary.
  void* blob = galloc_malloc(8);
  script->setScriptBinary(blob, 8);
  script->clear();
  EXPECT_EQ(script->getSourceCount(), 0);
  EXPECT_EQ(script->getScriptBinary(), blob);
}

using GPUProgramTest = GpuTest;

// Every parameter type reaches its uniform: the shader writes the uniform's
// components out as a colour (0..1 -> 0..255).
TEST_F(GPUProgramTest, ParameterTypes) {
  struct Case {
    GPUProgram::GPUProgramParameterType type;
    const char *decl, *expr;
    float expected[4];
  };
  int ints[4] = {51, 102, 153, 204};  // 0.2, 0.4, 0.6, 0.8 of 255
  float floats[16], junk[16];
  for (int i = 0; i < 16; ++i) floats[i] = (i + 1) / 20.0f, junk[i] = 1.0f;
  // Matrices are column-major: u[c][r] is value c * n + r.
  const Case cases[] = {
      {GPUProgram::INT1, "int u", "vec4(float(u) / 255.0, 0.0, 0.0, 1.0)", {0.2f, 0, 0, 1}},
      {GPUProgram::INT2, "ivec2 u", "vec4(vec2(u) / 255.0, 0.0, 1.0)", {0.2f, 0.4f, 0, 1}},
      {GPUProgram::INT3, "ivec3 u", "vec4(vec3(u) / 255.0, 1.0)", {0.2f, 0.4f, 0.6f, 1}},
      {GPUProgram::INT4, "ivec4 u", "vec4(u) / 255.0", {0.2f, 0.4f, 0.6f, 0.8f}},
      {GPUProgram::FLOAT1, "float u", "vec4(u, 0.0, 0.0, 1.0)", {0.05f, 0, 0, 1}},
      {GPUProgram::FLOAT2, "vec2 u", "vec4(u, 0.0, 1.0)", {0.05f, 0.1f, 0, 1}},
      {GPUProgram::FLOAT3, "vec3 u", "vec4(u, 1.0)", {0.05f, 0.1f, 0.15f, 1}},
      {GPUProgram::FLOAT4, "vec4 u", "u", {0.05f, 0.1f, 0.15f, 0.2f}},
      {GPUProgram::MATRIX2, "mat2 u", "vec4(u[0][1], u[1][0], u[1][1], u[0][0])", {0.1f, 0.15f, 0.2f, 0.05f}},
      {GPUProgram::MATRIX3, "mat3 u", "vec4(u[0][1], u[1][0], u[2][2], u[2][0])", {0.1f, 0.2f, 0.45f, 0.35f}},
      {GPUProgram::MATRIX4, "mat4 u", "vec4(u[0][3], u[3][0], u[1][2], u[2][1])", {0.2f, 0.65f, 0.35f, 0.5f}},
  };
  for (const Case& c : cases) {
    std::string fragment = std::string("precision mediump float;\nuniform ") + c.decl +
                           ";\nvoid main() { gl_FragColor = " + c.expr + "; }\n";
    auto_ptr<GPUProgram> program = makeProgram(ctx.get(), fragment.c_str());
    ASSERT_NE(program->getProgram(), 0u) << c.decl;
    ASSERT_TRUE(program->beganCompute());
    program->setParameters("u", c.type, c.type <= GPUProgram::INT4 ? static_cast<void*>(ints) : floats);
    // Ignored: a type past the table and a null value.
    program->setParameters("u", static_cast<GPUProgram::GPUProgramParameterType>(11), junk);
    program->setParameters("u", c.type, nullptr);
    Pixels px = drawOnce(ctx.get(), program.get(), 2, 2);
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(px[k], c.expected[k] * 255.0f, 1.0) << c.decl << " [" << k << "]";
  }
}

TEST_F(GPUProgramTest, HostValueArraysAndTranspose) {
  auto_ptr<GPUProgram> program =
      makeProgram(ctx.get(),
                  "precision mediump float;\nuniform float arr[2];\nuniform mat2 m;\n"
                  "void main() { gl_FragColor = vec4(arr[0], arr[1], m[0][1], m[1][0]); }\n");
  ASSERT_TRUE(program->beganCompute());
  float arr[2] = {0.2f, 0.6f};
  program->_SetHostValue1fv("arr", 2, arr);
  const float m[4] = {0.0f, 0.4f, 0.8f, 1.0f};       // columns (0, 0.4) and (0.8, 1)
  program->_SetHostValueMatrix2fv("m", 1, true, m);  // transposed: m[0][1] = 0.8, m[1][0] = 0.4
  program->_SetHostValue1fv("arr", 2, nullptr);      // ignored
  Pixels px = drawOnce(ctx.get(), program.get(), 1, 1);
  EXPECT_NEAR(px[0], 51, 1);
  EXPECT_NEAR(px[1], 153, 1);
  EXPECT_NEAR(px[2], 204, 1);
  EXPECT_NEAR(px[3], 102, 1);
}

// The default quad samples the texture a quarter turn against the output:
// at normalised device position (X, Y), s = (Y + 1) / 2 and t = (1 - X) / 2.
TEST_F(GPUProgramTest, DefaultVerticesTurnAQuarter) {
  const int n = 4;
  Pixels tex = noiseBytes(n * n * 4, 11, true);
  auto_ptr<GPUImage2D> source(new GPUImage2D(ctx, n, n, 4, tex.data()));
  useNearest(GL_TEXTURE_2D, source->getTexture());
  auto_ptr<GPUProgram> program = makeProgram(ctx.get(), kSample2D);
  Pixels px = drawOnce(ctx.get(), program.get(), n, n, source.get());
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
  EXPECT_EQ(makeProgram(ctx.get(), "void main() { nonsense; }\n")->getProgram(), 0u);
  EXPECT_EQ(cap.countPrefix("Could not compiled shader:35632\n"), 1);  // GL_FRAGMENT_SHADER
  // Mismatched varyings do not link.
  cap.clear();
  EXPECT_EQ(GPUUtils::createProgram(quadVertexShader(),
                                    "precision mediump float;\nvarying vec3 v_texcoord;\n"
                                    "void main() { gl_FragColor = vec4(v_texcoord, 1.0); }\n"),
            0u);
  EXPECT_EQ(cap.countPrefix("Could not link program:\n"), 1);
  // A script with fewer than two sources builds nothing.
  auto_ptr<GPUScript> lonely(new GPUScript(ctx, nullptr));
  lonely->addSource("VertexShader", quadVertexShader());
  EXPECT_EQ(auto_ptr<GPUProgram>(new GPUProgram(ctx, lonely))->getProgram(), 0u);
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
  GLint binaryLength = 0;
  {
    auto_ptr<GPUEngine> engine = startEngine(nullptr, 4, 4);
    ASSERT_NE(engine, nullptr);
    GPUContext* ctx = engine->getContext().get();
    GLint count = 0;
    glGetIntegerv(GL_NUM_PROGRAM_BINARY_FORMATS, &count);
    ASSERT_GT(count, 0);
    formats.resize(static_cast<size_t>(count));
    glGetIntegerv(GL_PROGRAM_BINARY_FORMATS, formats.data());
    {
      // Default options: compiled, nothing stored. Unnamed: stored, never written.
      Cached plain(ctx, "plain");
      EXPECT_NE(plain.program->getProgram(), 0u);
      EXPECT_EQ(plain.script->getScriptBinary(), nullptr);
      Cached unnamed(ctx, nullptr, GPUScript::OPTION_STORE_COMPILED_BINARY);
      EXPECT_NE(unnamed.script->getScriptBinary(), nullptr);
    }
    EXPECT_TRUE(dir.files().empty());
    {
      Cached first(ctx, "green", GPUScript::OPTION_STORE_COMPILED_BINARY);
      EXPECT_EQ(first.loadedLength, 0);
      EXPECT_FALSE(first.program->isFromBinary());
      EXPECT_TRUE(first.drawsGreen);
      glGetProgramiv(first.program->getProgram(), GL_PROGRAM_BINARY_LENGTH, &binaryLength);
      EXPECT_TRUE(dir.files().empty());  // written by clear(), not before
    }
    stopEngine(engine);
  }
  ASSERT_EQ(dir.files(), std::vector<std::string>{"green.osb"});
  Pixels file = dir.read("green.osb");
  ASSERT_EQ(file.size(), 4u + static_cast<size_t>(binaryLength));
  // The first four bytes name the format (little-endian), one the driver offers.
  unsigned format = file[0] | (file[1] << 8) | (file[2] << 16) | (static_cast<unsigned>(file[3]) << 24);
  EXPECT_NE(std::find(formats.begin(), formats.end(), static_cast<GLint>(format)), formats.end());

  auto_ptr<GPUEngine> second = startEngine(nullptr, 4, 4);
  ASSERT_NE(second, nullptr);
  {
    Cached loaded(second->getContext().get(), "green", 0, 0, "not a shader", "nor this");
    EXPECT_EQ(loaded.loadedLength, binaryLength);
    EXPECT_TRUE(loaded.program->isFromBinary());
    EXPECT_TRUE(loaded.drawsGreen);
  }
  stopEngine(second);
}

// Broken cache files: a rejected binary leaves program 0 by default and is
// replaced by a compiled program (and a fresh file) with both options on.
TEST_F(GPUProgramTest, RejectedAndEmptyCacheFiles) {
  CacheDir dir;
  { Cached source(ctx.get(), "source", GPUScript::OPTION_STORE_COMPILED_BINARY); }
  const Pixels good = dir.read("source.osb");
  ASSERT_GT(good.size(), 20u);

  const Pixels truncated(good.begin(), good.begin() + 20);
  Pixels foreign = good, garbage = noiseBytes(good.size(), 3);
  foreign[0] ^= 0x5a;                      // a binary format this driver does not have
  memcpy(garbage.data(), good.data(), 4);  // right format, wrong contents
  const std::pair<const char*, Pixels> broken[] = {
      {"truncated", truncated}, {"foreign", foreign}, {"garbage", garbage}};
  const unsigned both = GPUScript::OPTION_RECOMPILE_REJECTED_BINARY | GPUScript::OPTION_STORE_COMPILED_BINARY;
  for (const auto& b : broken) {
    const std::string file = std::string(b.first) + ".osb";
    dir.write(file, b.second);
    {
      Cached stuck(ctx.get(), b.first);
      EXPECT_EQ(stuck.loadedLength, static_cast<int>(b.second.size()) - 4) << b.first;
      EXPECT_EQ(stuck.program->getProgram(), 0u) << b.first;
      EXPECT_FALSE(stuck.program->beganCompute());
    }
    EXPECT_EQ(dir.read(file), b.second) << b.first;  // the same bytes written back: still broken
    {
      Cached healed(ctx.get(), b.first, 0, both);
      EXPECT_FALSE(healed.program->isFromBinary()) << b.first;
      EXPECT_TRUE(healed.drawsGreen) << b.first;
    }
    // The next script loads the fresh binary without sources.
    Cached next(ctx.get(), b.first, 0, 0, "junk", "junk");
    EXPECT_TRUE(next.program->isFromBinary()) << b.first;
    EXPECT_TRUE(next.drawsGreen) << b.first;
  }

  // Recompiling without storing: the program works, the stale file stays.
  dir.write("stale.osb", truncated);
  EXPECT_TRUE(Cached(ctx.get(), "stale", GPUScript::OPTION_RECOMPILE_REJECTED_BINARY).drawsGreen);
  EXPECT_EQ(dir.read("stale.osb"), truncated);

  // Files of 4 bytes or fewer hold no binary: the sources are used.
  for (size_t size : {0u, 3u, 4u}) {
    dir.write("tiny.osb", Pixels(good.begin(), good.begin() + size));
    Cached tiny(ctx.get(), "tiny");
    EXPECT_EQ(tiny.script->getScriptBinary(), nullptr) << size;
    EXPECT_TRUE(tiny.drawsGreen) << size;
  }
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
  Pixels pixels = noiseBytes(w * h * 4, 21, true);
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
    auto_ptr<GPUProgram> program =
        makeProgram(ctx.get(),
                    "#extension GL_OES_EGL_image_external : require\n"
                    "precision mediump float;\nuniform samplerExternalOES tex;\nvarying vec2 v_texcoord;\n"
                    "void main() { gl_FragColor = texture2D(tex, v_texcoord); }\n");
    ASSERT_NE(program->getProgram(), 0u);
    program->setTexVertices(kStraight);
    EXPECT_EQ(drawOnce(ctx.get(), program.get(), w, h, input.get()), pixels);
    // The external texture is borrowed: recycling leaves it alive.
    input->recycle();
    EXPECT_EQ(glIsTexture(external), GL_TRUE);
  }
  glDeleteTextures(1, &external);
  destroyImage(ctx->display, eglImage);
}
