#pragma once

// Host stand-in for the NDK's <android/native_window_jni.h>.

#include <android/native_window.h>
#include <jni.h>

#ifdef __cplusplus
extern "C" {
#endif

// The host has no android.view.Surface: any object with a long field
// "mNativeObject" holding a window made by ANativeWindowHost_create will do.
// Returns the window with one more reference, or null.
ANativeWindow* ANativeWindow_fromSurface(JNIEnv* env, jobject surface);

#ifdef __cplusplus
}
#endif
