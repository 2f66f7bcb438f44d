#include <cstring>

#include "filters/FilterShaders.h"
#include "filters/ImageFilters.h"
#include "image/FlatImage.h"

namespace {

bool named(const char* name, const char* expected) { return name != nullptr && strcmp(name, expected) == 0; }

}  // namespace

ImageFilterTableGL::ImageFilterTableGL() : mStrength(1.0f), mLookupSize(kSteps), mTable(nullptr) {}

ImageFilterTableGL::~ImageFilterTableGL() {
  mLookup = nullptr;
  freeTable();
}

void ImageFilterTableGL::freeTable() {
  if (mTable != nullptr) {
    ov_releaseImage(mTable);
    mTable = nullptr;
  }
}

bool ImageFilterTableGL::initParameters() {
  mLookupSize = kSteps;
  mStrength = 1.0f;
  freeTable();
  mTable = ov_createImage(kTableWidth, kTableHeight, kTableChannels);
  if (mTable == nullptr) return true;
  // Identity: row r, block g, column b holds (r, g, b) scaled to bytes.
  const float k = 255.0f / 63.0f;
  for (int r = 0; r < kSteps; ++r) {
    unsigned char* row = mTable->data + r * mTable->stride;
    for (int g = 0; g < kSteps; ++g) {
      for (int b = 0; b < kSteps; ++b) {
        unsigned char* p = row + (g * kSteps + b) * kTableChannels;
        p[0] = static_cast<unsigned char>(static_cast<float>(r) * k);
        p[1] = static_cast<unsigned char>(static_cast<float>(g) * k);
        p[2] = static_cast<unsigned char>(static_cast<float>(b) * k);
      }
    }
  }
  mLookup = new GPUImage2D(mGPUContext, kTableWidth, kTableHeight, GPU_FORMAT_RGB, mTable->data);
  return true;
}

int ImageFilterTableGL::getParameterType(const char* name) {
  if (named(name, "mFilterBitmap")) return FILTER_PARAMETER_BITMAP;
  if (named(name, "mStrength")) return FILTER_PARAMETER_FLOAT;
  return ImageFilterBaseGL::getParameterType(name);
}

void ImageFilterTableGL::setParameters(const char* name, void* value) {
  if (name == nullptr || value == nullptr) return;
  if (named(name, "mStrength")) {
    memcpy(&mStrength, value, sizeof(mStrength));
  } else if (named(name, "mFilterBitmap")) {
    const flat::Image* src = static_cast<const flat::Image*>(value);
    if (mTable == nullptr || mLookup == nullptr || src->data == nullptr || src->width != kTableWidth ||
        src->height != kTableHeight) {
      return;
    }
    // Three bytes are read per source pixel: narrower pixels or rows shorter
    // than their pixels would be read past their end.
    if (src->channels < kTableChannels || src->stride < src->width * src->channels) return;
    for (int y = 0; y < kTableHeight; ++y) {
      const unsigned char* s = src->data + static_cast<long>(y) * src->stride;
      unsigned char* d = mTable->data + y * mTable->stride;
      for (int x = 0; x < kTableWidth; ++x) {
        memcpy(d, s, kTableChannels);
        d += kTableChannels;
        s += src->channels;
      }
    }
    mLookup->set(kTableWidth, kTableHeight, GPU_FORMAT_RGB, mTable->data);
  } else {
    ImageFilterBaseGL::setParameters(name, value);
  }
}

void ImageFilterTableGL::updateParameters() {
  program->setParameters("mStrength", GPUProgram::FLOAT1, &mStrength);
  program->setSourceTarget("tex_frame", 1, mLookup);
}

void ImageFilterTableGL::release() {
  if (mLookup != nullptr) mLookup->recycle();
  freeTable();
  ImageFilterBaseGL::release();
}

const char* ImageFilterTableGL::getFilterName() const { return "ImageFilterTable"; }
const char* ImageFilterTableGL::getFragmentShader() const { return orvan::filter_shaders::kTableFragment; }
