#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "camera/OrvanCameraParameters.h"

using android::OrvanCameraParameters;

namespace {

// Looks a static member up in the library's dynamic symbol table by its
// qualified (mangled) name, the way a separately built client resolves it,
// and reports the symbol's size. (The library's own definition: an executable
// may hold a copy of the data.)
const void* exported(const char* member, size_t* size) {
  const std::string name =
      std::string("_ZN7android21OrvanCameraParameters") + std::to_string(strlen(member)) + member + "E";
  void* lib = dlopen(OV_LIBRARY_SONAME, RTLD_LAZY | RTLD_NOLOAD);
  void* addr = lib ? dlsym(lib, name.c_str()) : nullptr;
  if (lib) dlclose(lib);
  Dl_info info;
  const ElfW(Sym)* sym = nullptr;
  if (!addr || !dladdr1(addr, &info, (void**)&sym, RTLD_DL_SYMENT) || !sym) return nullptr;
  *size = sym->st_size;
  return addr;
}

}  // namespace

TEST(CameraParameters, EveryStringIsExportedExactlyAndSizedToItsText) {
  // One row per member: its name, its text, and its value through the header.
  // clang-format off
#define S(m, t) {#m, t, OrvanCameraParameters::m}
  const struct { const char *member, *text, *value; } strings[] = {
      S(KEY_MF_FOCUS_POSITION, "mf-pos"), S(KEY_DIGITAL_WATERMARK, "digital-Watermark"),
      S(KEY_SHUTTER_VALUE, "shutter-value"), S(KEY_SHUTTER_VALUE_SUPPORTED, "shutter-value-supported"),
      S(FRONT_FLIP, "front-mirror"), S(WATERMARK_DATE, "watermark-Date"),
      S(OV_VIDEO_STABILIZATION, "ov-video-stabilization"), S(FOCUS_MODE_MANUAL, "manual"),
      S(FOCUS_MODE_FULLSCAN, "fullscan"), S(CAPTURE_MODE_CARTOON_SHOT, "cartoonshot"),
      S(CAPTURE_MODE_NIGHT_ENHANCEMENT, "night-enhancement"), S(CAPTURE_MODE_SHARE_SHOT, "shareshot"),
      S(CAPTURE_MODE_LIGHT_FIELD, "light-field"), S(SCENE_MODE_TEXT, "text"),
      S(SCENE_MODE_FALLCOLOR, "fallcolor"), S(SCENE_MODE_BACKLIT_NIGHT, "backlit-night"),
      S(SCENE_MODE_DAWN, "dawn"), S(EFFECT_FILM, "film"), S(EFFECT_BLACK_AND_WHITE, "black_and_white"),
      S(EFFECT_OXIDIZE, "oxidize"), S(EFFECT_LEAF, "leaf"), S(EFFECT_VIOLET, "violet"),
      S(EFFECT_PALE_GREEN, "pale_green"), S(EFFECT_TOY, "toy"), S(EFFECT_AZURE, "azure"),
      S(EFFECT_OLIVE_YELLOW, "olive_yellow"), S(EFFECT_MAROON, "maroon"), S(EFFECT_WOOD, "wood"),
      S(EFFECT_CLAY_BANK, "clay_bank"), S(EFFECT_PALE_BLUE, "pale_blue"),
      S(EFFECT_LIGHT_YELLOW, "light_yellow"), S(EFFECT_SUNNY, "sunny"), S(EFFECT_VIRIDITY, "viridity"),
      S(EFFECT_CORN_FIELD, "corn_field"), S(EFFECT_FADING, "fading")};
  // clang-format on
#undef S
  for (const auto& c : strings) {
    SCOPED_TRACE(c.member);
    EXPECT_STREQ(c.value, c.text);
    size_t size = 0;
    const void* addr = exported(c.member, &size);
    ASSERT_NE(addr, nullptr) << "not exported under its qualified name";
    EXPECT_STREQ(static_cast<const char*>(addr), c.text);
    EXPECT_EQ(size, strlen(c.text) + 1);  // a character array, not a pointer
  }
}

TEST(CameraParameters, FocusTablesHoldTheCalibrationAsSeparateMutableArrays) {
  const int plain[7] = {0, 70, 140, 250, 310, 650, 900}, sharp[7] = {0, 70, 242, 352, 473, 588, 802};
  const double ratio[7] = {1.0, 0.9075, 0.92, 0.927, 0.957, 0.995, 1.0};
  EXPECT_TRUE(std::equal(plain, plain + 7, OrvanCameraParameters::mFocusPostionArray));
  EXPECT_TRUE(std::equal(sharp, sharp + 7, OrvanCameraParameters::mSharpFocusPostionArray));
  EXPECT_TRUE(std::equal(ratio, ratio + 7, OrvanCameraParameters::mClipRatio));
  EXPECT_TRUE(std::equal(ratio, ratio + 7, OrvanCameraParameters::mSharpClipRatio));
  for (auto [table, bytes] : {std::pair{"mFocusPostionArray", 7 * 4u},
                              {"mSharpFocusPostionArray", 7 * 4u},
                              {"mClipRatio", 7 * 8u},
                              {"mSharpClipRatio", 7 * 8u}}) {
    size_t size = 0;
    EXPECT_NE(exported(table, &size), nullptr) << table;
    EXPECT_EQ(size, bytes) << table;
  }
  double& entry = OrvanCameraParameters::mClipRatio[3];
  entry = 0.5;
  EXPECT_EQ(OrvanCameraParameters::mSharpClipRatio[3], 0.927);
  entry = 0.927;
}
