#pragma once

#include <android/log.h>

// Every message of the library goes to the Android log at debug priority under
// one tag; the texts are part of the behaviour, so callers pass them verbatim.
#define OV_LOG_TAG "@@@"
#define OV_LOGD(...) __android_log_print(ANDROID_LOG_DEBUG, OV_LOG_TAG, __VA_ARGS__)
