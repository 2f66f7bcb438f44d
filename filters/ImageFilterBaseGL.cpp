#include "filters/ImageFilterBaseGL.h"

#include <EGL/egl.h>

#include <climits>
#include <cstdint>
#include <cstring>

#include "core/Log.h"
#include "core/Memory.h"
#include "filters/FilterShaders.h"
#include "gpu/GPUScript.h"

namespace {

const float kDefaultPosVertices[8] = {-1.0f, -1.0f, 1.0f, -1.0f, -1.0f, 1.0f, 1.0f, 1.0f};
// A quarter turn against the positions: s = (1 - y) / 2, t = (1 - x) / 2.
const float kDefaultTexVertices[8] = {1.0f, 1.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f, 0.0f};

const int kMaxScriptName = 255;
const char kOesSuffix[] = "_oes";
const int kRgba = GPU_FORMAT_RGBA;
const int kExternal = GPU_FORMAT_EXTERNAL;

// RGBA byte count of a picture, or -1 when a side is negative or the count
// does not fit an int.
int64_t rgbaBytes(int width, int height) {
  if (width < 0 || height < 0) return -1;
  int64_t bytes = static_cast<int64_t>(width) * height * 4;
  return bytes > INT_MAX ? -1 : bytes;
}

}  // namespace

ImageFilterBaseGL::ImageFilterBaseGL() : mode(0), width(0), height(0) {
  memcpy(mPosVertices, kDefaultPosVertices, sizeof(mPosVertices));
  memcpy(mTexVertices, kDefaultTexVertices, sizeof(mTexVertices));
  memset(mTextureMatrix, 0, sizeof(mTextureMatrix));
}

ImageFilterBaseGL::~ImageFilterBaseGL() {
  // GL objects go first, while the context that made them may still be
  // current; an engine of our own is torn down last.
  program = nullptr;
  input = nullptr;
  output = nullptr;
  framebuffer = nullptr;
  if (engine != nullptr) {
    engine->close();
    engine->destroy();
    engine = nullptr;
  }
  mGPUContext = nullptr;
}

bool ImageFilterBaseGL::initEngine() {
  // An engine owns its EGL objects only until destroy(): a second call must
  // not leave the first one's context and surface behind.
  if (engine != nullptr) {
    engine->close();
    engine->destroy();
  }
  engine = new GPUEngine(nullptr, 0, 0);
  if (engine == nullptr) return false;
  bool ok = engine->setup();
  engine->startup();
  return ok;
}

const char* ImageFilterBaseGL::getFragmentHeader(unsigned m) {
  return m != 0 ? orvan::filter_shaders::kFragmentHeader2D : orvan::filter_shaders::kFragmentHeaderOES;
}

bool ImageFilterBaseGL::setupGraphics(unsigned m) {
  mGPUContext = new GPUContext(nullptr, 0, 0);
  if (mGPUContext == nullptr) return false;
  OV_LOGD("NULL != mGPUContext.get()----------");
  mGPUContext->display = eglGetCurrentDisplay();
  mGPUContext->surface = eglGetCurrentSurface(EGL_DRAW);
  mGPUContext->context = eglGetCurrentContext();
  // Without a current context no GL object can be made: the filter keeps no
  // program, so render and process draw nothing.
  bool current = mGPUContext->display != EGL_NO_DISPLAY && mGPUContext->context != EGL_NO_CONTEXT;

  const char* body = getFragmentShader();
  const char* header = getFragmentHeader(m);
  if (body == nullptr) return false;
  size_t headerLength = strlen(header);
  size_t bodyLength = strlen(body);
  char* text = static_cast<char*>(galloc_malloc(static_cast<unsigned>(headerLength + bodyLength + 1)));
  if (text == nullptr) return false;
  memcpy(text, header, headerLength);
  memcpy(text + headerLength, body, bodyLength + 1);

  char name[kMaxScriptName + sizeof(kOesSuffix)];
  memset(name, 0, sizeof(name));
  const char* filterName = getFilterName();
  if (filterName != nullptr) strncpy(name, filterName, kMaxScriptName);
  OV_LOGD("ImageFilterBaseGL::setupGraphics  1 this:%p", this);
  mode = m;

  auto_ptr<GPUScript> script;
  program = nullptr;
  framebuffer = nullptr;
  if (m != 0) {
    if (current) {
      script = new GPUScript(mGPUContext, name);
      script->addSource("VertexShader", getVertexShader());
      script->addSource("FragmentShader", text);
      framebuffer = new GPUFramebuffer(mGPUContext);
    }
  } else {
    OV_LOGD("ImageFilterBaseGL::setupGraphics  1  1 this:%p", this);
    strcat(name, kOesSuffix);
    OV_LOGD("ImageFilterBaseGL::setupGraphics  1  2 this:%p", this);
    if (current) {
      script = new GPUScript(mGPUContext, name);
      script->addSource("VertexShader", getVertexShader());
      script->addSource("FragmentShaderOES", text);
    }
    // An external texture is drawn straight to the bound surface.
    OV_LOGD("ImageFilterBaseGL::setupGraphics  1  5 this:%p", this);
  }
  galloc_free(text);

  // The filter cache fills itself on first use and heals itself when the
  // driver no longer accepts a stored binary.
  if (script != nullptr) {
    program =
        new GPUProgram(mGPUContext, script,
                       GPUScript::OPTION_RECOMPILE_REJECTED_BINARY | GPUScript::OPTION_STORE_COMPILED_BINARY);
  }
  OV_LOGD("ImageFilterBaseGL::setupGraphics  4 this:%p", this);
  // Dropping the last script reference writes its binary to the cache.
  script = nullptr;
  return initParameters();
}

bool ImageFilterBaseGL::initParameters() { return true; }

int ImageFilterBaseGL::getParameterType(const char* name) {
  if (name == nullptr) return FILTER_PARAMETER_UNKNOWN;
  if (strcmp(name, "mPosVertices") == 0 || strcmp(name, "mTexVertices") == 0 ||
      strcmp(name, "mTextureMatrix") == 0) {
    return FILTER_PARAMETER_FLOAT_ARRAY;
  }
  return FILTER_PARAMETER_UNKNOWN;
}

void ImageFilterBaseGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (strcmp(name, "mPosVertices") == 0) {
    memcpy(mPosVertices, value, sizeof(mPosVertices));
  } else if (strcmp(name, "mTexVertices") == 0) {
    memcpy(mTexVertices, value, sizeof(mTexVertices));
    OV_LOGD("mTexVertices: %f, %f, %f, %f, %f, %f, %f, %f", mTexVertices[0], mTexVertices[1], mTexVertices[2],
            mTexVertices[3], mTexVertices[4], mTexVertices[5], mTexVertices[6], mTexVertices[7]);
  } else if (strcmp(name, "mTextureMatrix") == 0) {
    memcpy(mTextureMatrix, value, sizeof(mTextureMatrix));
  }
}

// The GPU images refuse sizes GL cannot take on their own (negative, or more
// bytes than fit 32 bits), so nothing here is refused: an empty texture is
// wrapped and drawn like any other.
void ImageFilterBaseGL::setTexture(int texture, int textureWidth, int textureHeight, int viewWidth,
                                   int viewHeight) {
  int format = mode != 0 ? kRgba : kExternal;
  if (input == nullptr) {
    input = new GPUImage2D(mGPUContext, static_cast<unsigned>(texture), textureWidth, textureHeight, format,
                           false, false);
  } else {
    // The first texture stays bound to the filter; later names are ignored.
    input->set(textureWidth, textureHeight, format, nullptr);
  }
  width = viewWidth;
  height = viewHeight;
}

void ImageFilterBaseGL::setBitmap(unsigned char* pixels, int w, int h) {
  if (input == nullptr) {
    input = new GPUImage2D(mGPUContext, w, h, kRgba, pixels);
  } else {
    input->set(w, h, kRgba, pixels);
  }
  width = w;
  height = h;
}

void ImageFilterBaseGL::setOutput(auto_ptr<GPUImage2D>& image) { output = image; }

void ImageFilterBaseGL::drawQuad() {
  program->setOutputSize(0, 0, width, height);
  program->setSourceTarget("tex_sampler", 0, input);
  updateParameters();
  program->setPosVertices(mPosVertices);
  program->setTexVertices(mTexVertices);
  program->endCompute();
}

void ImageFilterBaseGL::render() {
  if (program == nullptr || !program->beganCompute()) return;
  drawQuad();
}

void ImageFilterBaseGL::process(unsigned char* pixels, int w, int h) {
  // The result is read back into pixels by this count: one that does not fit
  // an int could not be checked against the output's size.
  int64_t bytes = rgbaBytes(w, h);
  if (bytes < 0) return;
  width = w;
  height = h;
  if (output == nullptr) {
    output = new GPUImage2D(engine != nullptr ? engine->getGPUContext() : mGPUContext.get(), w, h, kRgba);
  } else {
    output->set(w, h, kRgba, nullptr);
  }
  if (input == nullptr) {
    input = new GPUImage2D(mGPUContext, w, h, kRgba, pixels);
  } else {
    input->set(w, h, kRgba, pixels);
  }
  if (program == nullptr || !program->beganCompute() || output == nullptr) return;
  GPUFramebuffer::setFramebufferTarget(framebuffer, output);
  drawQuad();
  if (engine != nullptr) engine->flush();
  output->download(pixels, static_cast<int>(bytes));
}

void ImageFilterBaseGL::updateParameters() {}

void ImageFilterBaseGL::release() {
  if (program != nullptr) program->release();
  if (input != nullptr) input->recycle();
  if (engine != nullptr) {
    engine->close();
    engine->destroy();
  }
}

const char* ImageFilterBaseGL::getFilterName() const { return "ImageFilterBase"; }

const char* ImageFilterBaseGL::getVertexShader() const { return orvan::filter_shaders::kVertexShader; }

const char* ImageFilterBaseGL::getFragmentShader() const { return orvan::filter_shaders::kBaseFragment; }
