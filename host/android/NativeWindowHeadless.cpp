// ANativeWindow for host builds without X11 (the emulated ARM build): no
// window can be made, so every handle is unknown and calls fail as they do for
// an unknown window of the X11 stand-in.

#include <android/native_window.h>
#include <android/native_window_host.h>
#include <android/native_window_jni.h>
#include <errno.h>

#define HOST_API extern "C" __attribute__((visibility("default")))

HOST_API ANativeWindow* ANativeWindowHost_create(int32_t, int32_t) { return nullptr; }
HOST_API unsigned long ANativeWindowHost_getXWindow(ANativeWindow*) { return 0; }
HOST_API int32_t ANativeWindowHost_readPixels(ANativeWindow*, uint8_t*, int64_t) { return -EINVAL; }
HOST_API void ANativeWindow_acquire(ANativeWindow*) {}
HOST_API void ANativeWindow_release(ANativeWindow*) {}
HOST_API int32_t ANativeWindow_getWidth(ANativeWindow*) { return -EINVAL; }
HOST_API int32_t ANativeWindow_getHeight(ANativeWindow*) { return -EINVAL; }
HOST_API int32_t ANativeWindow_getFormat(ANativeWindow*) { return -EINVAL; }
HOST_API int32_t ANativeWindow_setBuffersGeometry(ANativeWindow*, int32_t, int32_t, int32_t) {
  return -EINVAL;
}
HOST_API ANativeWindow* ANativeWindow_fromSurface(JNIEnv*, jobject) { return nullptr; }
