#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstring>
#include <string>

#include "camera/OrvanCameraParameters.h"

using android::OrvanCameraParameters;

namespace {

// Looks a static member up in the library's dynamic symbol table by its
// qualified (mangled) name, the way a separately built client resolves it.
// (The library's own definition: an executable may hold a copy of the data.)
const void* exported(const char* member, size_t* size) {
  const std::string name =
      std::string("_ZN7android21OrvanCameraParameters") + std::to_string(strlen(member)) + member + "E";
  void* lib = dlopen("libcam.common.orvan.so", RTLD_LAZY | RTLD_NOLOAD);
  if (!lib) return nullptr;
  void* addr = dlsym(lib, name.c_str());
  dlclose(lib);
  if (!addr) return nullptr;
  Dl_info info;
  const ElfW(Sym)* sym = nullptr;
  if (!dladdr1(addr, &info, (void**)&sym, RTLD_DL_SYMENT) || !sym) return nullptr;
  *size = sym->st_size;
  return addr;
}

struct StringCase {
  const char* member;
  const char* text;
  const char* value;
};

#define CASE(m, t) \
  { #m, t, OrvanCameraParameters::m }

const StringCase kStrings[] = {
    CASE(KEY_MF_FOCUS_POSITION, "mf-pos"),
    CASE(KEY_DIGITAL_WATERMARK, "digital-Watermark"),
    CASE(KEY_SHUTTER_VALUE, "shutter-value"),
    CASE(KEY_SHUTTER_VALUE_SUPPORTED, "shutter-value-supported"),
    CASE(FRONT_FLIP, "front-mirror"),
    CASE(WATERMARK_DATE, "watermark-Date"),
    CASE(OV_VIDEO_STABILIZATION, "ov-video-stabilization"),
    CASE(FOCUS_MODE_MANUAL, "manual"),
    CASE(FOCUS_MODE_FULLSCAN, "fullscan"),
    CASE(CAPTURE_MODE_CARTOON_SHOT, "cartoonshot"),
    CASE(CAPTURE_MODE_NIGHT_ENHANCEMENT, "night-enhancement"),
    CASE(CAPTURE_MODE_SHARE_SHOT, "shareshot"),
    CASE(CAPTURE_MODE_LIGHT_FIELD, "light-field"),
    CASE(SCENE_MODE_TEXT, "text"),
    CASE(SCENE_MODE_FALLCOLOR, "fallcolor"),
    CASE(SCENE_MODE_BACKLIT_NIGHT, "backlit-night"),
    CASE(SCENE_MODE_DAWN, "dawn"),
    CASE(EFFECT_FILM, "film"),
    CASE(EFFECT_BLACK_AND_WHITE, "black_and_white"),
    CASE(EFFECT_OXIDIZE, "oxidize"),
    CASE(EFFECT_LEAF, "leaf"),
    CASE(EFFECT_VIOLET, "violet"),
    CASE(EFFECT_PALE_GREEN, "pale_green"),
    CASE(EFFECT_TOY, "toy"),
    CASE(EFFECT_AZURE, "azure"),
    CASE(EFFECT_OLIVE_YELLOW, "olive_yellow"),
    CASE(EFFECT_MAROON, "maroon"),
    CASE(EFFECT_WOOD, "wood"),
    CASE(EFFECT_CLAY_BANK, "clay_bank"),
    CASE(EFFECT_PALE_BLUE, "pale_blue"),
    CASE(EFFECT_LIGHT_YELLOW, "light_yellow"),
    CASE(EFFECT_SUNNY, "sunny"),
    CASE(EFFECT_VIRIDITY, "viridity"),
    CASE(EFFECT_CORN_FIELD, "corn_field"),
    CASE(EFFECT_FADING, "fading"),
};

}  // namespace

TEST(CameraParameters, EveryStringIsExportedExactlyAndSizedToItsText) {
  for (const StringCase& c : kStrings) {
    SCOPED_TRACE(c.member);
    EXPECT_STREQ(c.value, c.text);
    size_t size = 0;
    const void* addr = exported(c.member, &size);
    ASSERT_NE(addr, nullptr) << "not exported under its qualified name";
    EXPECT_STREQ(static_cast<const char*>(addr), c.text);
    // A character array holding the text and one terminating zero.
    EXPECT_EQ(size, strlen(c.text) + 1);
  }
}

TEST(CameraParameters, FocusTablesHoldTheCalibration) {
  const int plain[7] = {0, 70, 140, 250, 310, 650, 900};
  const int sharp[7] = {0, 70, 242, 352, 473, 588, 802};
  const double ratio[7] = {1.0, 0.9075, 0.92, 0.927, 0.957, 0.995, 1.0};
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(OrvanCameraParameters::mFocusPostionArray[i], plain[i]) << i;
    EXPECT_EQ(OrvanCameraParameters::mSharpFocusPostionArray[i], sharp[i]) << i;
    EXPECT_EQ(OrvanCameraParameters::mClipRatio[i], ratio[i]) << i;
    EXPECT_EQ(OrvanCameraParameters::mSharpClipRatio[i], ratio[i]) << i;
  }
  const char* tables[4] = {"mFocusPostionArray", "mSharpFocusPostionArray", "mClipRatio", "mSharpClipRatio"};
  const size_t sizes[4] = {7 * 4, 7 * 4, 7 * 8, 7 * 8};
  for (int t = 0; t < 4; ++t) {
    size_t size = 0;
    EXPECT_NE(exported(tables[t], &size), nullptr) << tables[t];
    EXPECT_EQ(size, sizes[t]) << tables[t];
  }
}

TEST(CameraParameters, RatioTablesAreDistinctMutableObjects) {
  double& entry = OrvanCameraParameters::mClipRatio[3];
  const double saved = entry;
  entry = 0.5;
  EXPECT_EQ(OrvanCameraParameters::mClipRatio[3], 0.5);
  EXPECT_EQ(OrvanCameraParameters::mSharpClipRatio[3], 0.927);
  entry = saved;
}
