#pragma once

// Host-only extras of the ANativeWindow stand-in (not part of the NDK).
//
// The handle's value is the X11 window id itself, so EGL's X11 platform takes
// an ANativeWindow* unchanged as its native window: library code stays the
// same on Android and on the host.

#include <android/native_window.h>

#ifdef __cplusplus
extern "C" {
#endif

// Opens the X display named by $DISPLAY, creates a mapped window of the given
// size and returns it with one reference (ANativeWindow_release drops it and
// destroys the window). Null when there is no X server or a size is below 1.
ANativeWindow* ANativeWindowHost_create(int32_t width, int32_t height);

// The X11 window id (0 for an unknown handle).
unsigned long ANativeWindowHost_getXWindow(ANativeWindow* window);

// Copies the window's visible contents, top row first, as RGBA bytes (alpha
// 255) into rgba, which holds at least width * height * 4 bytes of the current
// window size. Returns 0, or -22 for an unknown window, null pointer or too
// small a buffer, -5 when the X server gives no image.
int32_t ANativeWindowHost_readPixels(ANativeWindow* window, uint8_t* rgba, int64_t capacity);

#ifdef __cplusplus
}
#endif
