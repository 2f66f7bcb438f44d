#include "camera/OrvanCameraParameters.h"

namespace android {

const char OrvanCameraParameters::KEY_MF_FOCUS_POSITION[] = "mf-pos";
const char OrvanCameraParameters::KEY_DIGITAL_WATERMARK[] = "digital-Watermark";
const char OrvanCameraParameters::KEY_SHUTTER_VALUE[] = "shutter-value";
const char OrvanCameraParameters::KEY_SHUTTER_VALUE_SUPPORTED[] = "shutter-value-supported";

const char OrvanCameraParameters::FRONT_FLIP[] = "front-mirror";
const char OrvanCameraParameters::WATERMARK_DATE[] = "watermark-Date";
const char OrvanCameraParameters::OV_VIDEO_STABILIZATION[] = "ov-video-stabilization";
const char OrvanCameraParameters::FOCUS_MODE_MANUAL[] = "manual";
const char OrvanCameraParameters::FOCUS_MODE_FULLSCAN[] = "fullscan";
const char OrvanCameraParameters::CAPTURE_MODE_CARTOON_SHOT[] = "cartoonshot";
const char OrvanCameraParameters::CAPTURE_MODE_NIGHT_ENHANCEMENT[] = "night-enhancement";
const char OrvanCameraParameters::CAPTURE_MODE_SHARE_SHOT[] = "shareshot";
const char OrvanCameraParameters::CAPTURE_MODE_LIGHT_FIELD[] = "light-field";
const char OrvanCameraParameters::SCENE_MODE_TEXT[] = "text";
const char OrvanCameraParameters::SCENE_MODE_FALLCOLOR[] = "fallcolor";
const char OrvanCameraParameters::SCENE_MODE_BACKLIT_NIGHT[] = "backlit-night";
const char OrvanCameraParameters::SCENE_MODE_DAWN[] = "dawn";
const char OrvanCameraParameters::EFFECT_FILM[] = "film";
const char OrvanCameraParameters::EFFECT_BLACK_AND_WHITE[] = "black_and_white";
const char OrvanCameraParameters::EFFECT_OXIDIZE[] = "oxidize";
const char OrvanCameraParameters::EFFECT_LEAF[] = "leaf";
const char OrvanCameraParameters::EFFECT_VIOLET[] = "violet";
const char OrvanCameraParameters::EFFECT_PALE_GREEN[] = "pale_green";
const char OrvanCameraParameters::EFFECT_TOY[] = "toy";
const char OrvanCameraParameters::EFFECT_AZURE[] = "azure";
const char OrvanCameraParameters::EFFECT_OLIVE_YELLOW[] = "olive_yellow";
const char OrvanCameraParameters::EFFECT_MAROON[] = "maroon";
const char OrvanCameraParameters::EFFECT_WOOD[] = "wood";
const char OrvanCameraParameters::EFFECT_CLAY_BANK[] = "clay_bank";
const char OrvanCameraParameters::EFFECT_PALE_BLUE[] = "pale_blue";
const char OrvanCameraParameters::EFFECT_LIGHT_YELLOW[] = "light_yellow";
const char OrvanCameraParameters::EFFECT_SUNNY[] = "sunny";
const char OrvanCameraParameters::EFFECT_VIRIDITY[] = "viridity";
const char OrvanCameraParameters::EFFECT_CORN_FIELD[] = "corn_field";
const char OrvanCameraParameters::EFFECT_FADING[] = "fading";

int OrvanCameraParameters::mFocusPostionArray[7] = {0, 70, 140, 250, 310, 650, 900};
int OrvanCameraParameters::mSharpFocusPostionArray[7] = {0, 70, 242, 352, 473, 588, 802};
double OrvanCameraParameters::mClipRatio[7] = {1.0, 0.9075, 0.92, 0.927, 0.957, 0.995, 1.0};
double OrvanCameraParameters::mSharpClipRatio[7] = {1.0, 0.9075, 0.92, 0.927, 0.957, 0.995, 1.0};

}  // namespace android
