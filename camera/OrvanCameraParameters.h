#pragma once

#include "core/Export.h"

namespace android {

// Vendor camera parameter vocabulary exchanged with the camera service in its
// key=value strings. The texts are matched exactly by the other side (mixed
// case and separators included), so they must never be normalised. Each
// string is a character array sized to its text.
class OV_EXPORT OrvanCameraParameters {
 public:
  // Keys.
  static const char KEY_MF_FOCUS_POSITION[];
  static const char KEY_DIGITAL_WATERMARK[];
  static const char KEY_SHUTTER_VALUE[];
  static const char KEY_SHUTTER_VALUE_SUPPORTED[];

  // Values.
  static const char FRONT_FLIP[];
  static const char WATERMARK_DATE[];
  static const char OV_VIDEO_STABILIZATION[];
  static const char FOCUS_MODE_MANUAL[];
  static const char FOCUS_MODE_FULLSCAN[];
  static const char CAPTURE_MODE_CARTOON_SHOT[];
  static const char CAPTURE_MODE_NIGHT_ENHANCEMENT[];
  static const char CAPTURE_MODE_SHARE_SHOT[];
  static const char CAPTURE_MODE_LIGHT_FIELD[];
  static const char SCENE_MODE_TEXT[];
  static const char SCENE_MODE_FALLCOLOR[];
  static const char SCENE_MODE_BACKLIT_NIGHT[];
  static const char SCENE_MODE_DAWN[];
  static const char EFFECT_FILM[];
  static const char EFFECT_BLACK_AND_WHITE[];
  static const char EFFECT_OXIDIZE[];
  static const char EFFECT_LEAF[];
  static const char EFFECT_VIOLET[];
  static const char EFFECT_PALE_GREEN[];
  static const char EFFECT_TOY[];
  static const char EFFECT_AZURE[];
  static const char EFFECT_OLIVE_YELLOW[];
  static const char EFFECT_MAROON[];
  static const char EFFECT_WOOD[];
  static const char EFFECT_CLAY_BANK[];
  static const char EFFECT_PALE_BLUE[];
  static const char EFFECT_LIGHT_YELLOW[];
  static const char EFFECT_SUNNY[];
  static const char EFFECT_VIRIDITY[];
  static const char EFFECT_CORN_FIELD[];
  static const char EFFECT_FADING[];

  // Manual-focus calibration, seven steps each; mutable at run time. The
  // member names ("Postion") are part of the interface.
  static int mFocusPostionArray[7];
  static int mSharpFocusPostionArray[7];
  static double mClipRatio[7];
  static double mSharpClipRatio[7];
};

}  // namespace android
