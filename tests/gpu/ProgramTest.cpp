#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "GpuFixture.h"

namespace {

const char* kGreen =
    "precision mediump float;\nvarying vec2 v_texcoord;\n"
    "void main() { gl_FragColor = vec4(0.0, 1.0, 0.0, 1.0); }\n";

// A cache directory of its own for each test.
struct CacheDir {
  CacheDir() {
    char pattern[] = "/tmp/ov-gpu-cache-XXXXXX";
    path = std::string(mkdtemp(pattern)) + "/";
    GPUScript::setCacheDirectory(path.c_str());
  }
  ~CacheDir() {
    std::filesystem::remove_all(path);
    GPUScript::setCacheDirectory(nullptr);
  }
  bool empty() const { return std::filesystem::is_empty(path); }
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
      {GPUProgram::INT3, "ivec3 u", "vec4(vec3(u) / 255.0, 1.0)", {0.2f, 0.4f, 0.6f, 1}},
      {GPUProgram::INT4, "ivec4 u", "vec4(u) / 255.0", {0.2f, 0.4f, 0.6f, 0.8f}},
      {GPUProgram::FLOAT1, "float u", "vec4(u, 0.0, 0.0, 1.0)", {0.05f, 0, 0, 1}},
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

// First run compiles and (with the store option) writes <name>.osb; a second
// engine loads it even though the script's sources are unusable.
TEST(GPUProgramCacheTest, FirstRunWritesSecondEngineLoads) {
  CacheDir dir;
  GLint binaryLength = 0;
  {
    auto_ptr<GPUEngine> engine = startEngine(nullptr, 4, 4);
    ASSERT_NE(engine, nullptr);
    GPUContext* ctx = engine->getContext().get();
    {
      Cached plain(ctx, "plain");  // default options: compiled, nothing stored
      EXPECT_TRUE(plain.drawsGreen);
      EXPECT_EQ(plain.script->getScriptBinary(), nullptr);
    }
    {
      Cached first(ctx, "green", GPUScript::OPTION_STORE_COMPILED_BINARY);
      EXPECT_EQ(first.loadedLength, 0);
      EXPECT_FALSE(first.program->isFromBinary());
      EXPECT_TRUE(first.drawsGreen);
      glGetProgramiv(first.program->getProgram(), GL_PROGRAM_BINARY_LENGTH, &binaryLength);
      EXPECT_TRUE(dir.empty());  // nothing from "plain"; "green" is written by clear(), not before
    }
    stopEngine(engine);
  }
  Pixels file = dir.read("green.osb");
  ASSERT_EQ(file.size(), 4u + static_cast<size_t>(binaryLength));

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
  Pixels foreign = good;
  foreign[0] ^= 0x5a;  // a binary format this driver does not have
  const std::pair<const char*, Pixels> broken[] = {{"truncated", truncated}, {"foreign", foreign}};
  const unsigned both = GPUScript::OPTION_RECOMPILE_REJECTED_BINARY | GPUScript::OPTION_STORE_COMPILED_BINARY;
  for (const auto& b : broken) {
    const std::string file = std::string(b.first) + ".osb";
    dir.write(file, b.second);
    {
      Cached stuck(ctx.get(), b.first);
      EXPECT_EQ(stuck.loadedLength, static_cast<int>(b.second.size()) - 4) << b.first;
      EXPECT_EQ(stuck.program->getProgram(), 0u) << b.first;
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
  }
  glDeleteTextures(1, &external);
  destroyImage(ctx->display, eglImage);
}
