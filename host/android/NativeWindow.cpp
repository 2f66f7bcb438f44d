// ANativeWindow over X11 for host builds. A handle is the X window id cast to
// a pointer; its bookkeeping lives in a small list keyed by that id.

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xcomposite.h>
#include <android/native_window.h>
#include <android/native_window_host.h>
#include <android/native_window_jni.h>
#include <errno.h>
#include <pthread.h>

#define HOST_API extern "C" __attribute__((visibility("default")))

namespace {

struct HostWindow {
  HostWindow* next;
  Window xid;
  Display* display;
  int width;
  int height;
  int format;
  int refs;
};

pthread_mutex_t gLock = PTHREAD_MUTEX_INITIALIZER;
HostWindow* gWindows = nullptr;

// Caller holds gLock.
HostWindow* find(ANativeWindow* window) {
  Window xid = static_cast<Window>(reinterpret_cast<uintptr_t>(window));
  for (HostWindow* w = gWindows; w != nullptr; w = w->next) {
    if (w->xid == xid && xid != 0) return w;
  }
  return nullptr;
}

// One size or format field of a known window, else -EINVAL.
int32_t readField(ANativeWindow* window, int HostWindow::*field) {
  pthread_mutex_lock(&gLock);
  HostWindow* w = find(window);
  int32_t value = w != nullptr ? w->*field : -EINVAL;
  pthread_mutex_unlock(&gLock);
  return value;
}

void unlink(HostWindow* target) {
  for (HostWindow** p = &gWindows; *p != nullptr; p = &(*p)->next) {
    if (*p == target) {
      *p = target->next;
      return;
    }
  }
}

// X errors (for example reading an unmapped window) must not end the process.
int gLastXError = 0;
int recordXError(Display*, XErrorEvent* event) {
  gLastXError = event->error_code;
  return 0;
}

}  // namespace

HOST_API ANativeWindow* ANativeWindowHost_create(int32_t width, int32_t height) {
  if (width < 1 || height < 1 || width > 16384 || height > 16384) return nullptr;
  Display* display = XOpenDisplay(nullptr);
  if (display == nullptr) return nullptr;
  int screen = DefaultScreen(display);
  Window xid = XCreateSimpleWindow(display, RootWindow(display, screen), 0, 0, static_cast<unsigned>(width),
                                   static_cast<unsigned>(height), 0, BlackPixel(display, screen),
                                   BlackPixel(display, screen));
  // Every window sits at the screen's origin, and windows of parallel
  // processes overlap. Redirected windows keep their whole contents in a
  // pixmap of their own, so rendering and read-back ignore what covers them.
  int eventBase = 0, errorBase = 0;
  if (XCompositeQueryExtension(display, &eventBase, &errorBase)) {
    XCompositeRedirectWindow(display, xid, CompositeRedirectAutomatic);
  }
  HostWindow* w = new HostWindow{nullptr, xid, display, width, height, 0, 1};
  XMapWindow(display, xid);
  XSync(display, False);
  pthread_mutex_lock(&gLock);
  w->next = gWindows;
  gWindows = w;
  pthread_mutex_unlock(&gLock);
  return reinterpret_cast<ANativeWindow*>(static_cast<uintptr_t>(xid));
}

HOST_API unsigned long ANativeWindowHost_getXWindow(ANativeWindow* window) {
  pthread_mutex_lock(&gLock);
  HostWindow* w = find(window);
  unsigned long xid = w != nullptr ? w->xid : 0;
  pthread_mutex_unlock(&gLock);
  return xid;
}

HOST_API int32_t ANativeWindowHost_readPixels(ANativeWindow* window, uint8_t* rgba, int64_t capacity) {
  if (rgba == nullptr) return -EINVAL;
  pthread_mutex_lock(&gLock);
  HostWindow* w = find(window);
  if (w == nullptr || capacity < static_cast<int64_t>(w->width) * w->height * 4) {
    pthread_mutex_unlock(&gLock);
    return -EINVAL;
  }
  XSync(w->display, False);
  int (*previous)(Display*, XErrorEvent*) = XSetErrorHandler(recordXError);
  XImage* image = XGetImage(w->display, w->xid, 0, 0, static_cast<unsigned>(w->width),
                            static_cast<unsigned>(w->height), AllPlanes, ZPixmap);
  XSync(w->display, False);
  XSetErrorHandler(previous);
  int result = -EIO;
  if (image != nullptr) {
    // Turn each channel mask into a shift and a width so any TrueColor layout reads back.
    unsigned long masks[3] = {image->red_mask, image->green_mask, image->blue_mask};
    for (int y = 0; y < w->height; ++y) {
      for (int x = 0; x < w->width; ++x) {
        unsigned long pixel = XGetPixel(image, x, y);
        uint8_t* out = rgba + (static_cast<int64_t>(y) * w->width + x) * 4;
        for (int c = 0; c < 3; ++c) {
          unsigned long mask = masks[c];
          if (mask == 0) {
            out[c] = 0;
            continue;
          }
          int shift = __builtin_ctzl(mask);
          unsigned long value = (pixel & mask) >> shift;
          unsigned long top = mask >> shift;
          out[c] = static_cast<uint8_t>((value * 255 + top / 2) / top);
        }
        out[3] = 255;
      }
    }
    XDestroyImage(image);
    result = 0;
  }
  pthread_mutex_unlock(&gLock);
  return result;
}

HOST_API void ANativeWindow_acquire(ANativeWindow* window) {
  pthread_mutex_lock(&gLock);
  HostWindow* w = find(window);
  if (w != nullptr) ++w->refs;
  pthread_mutex_unlock(&gLock);
}

HOST_API void ANativeWindow_release(ANativeWindow* window) {
  pthread_mutex_lock(&gLock);
  HostWindow* w = find(window);
  if (w != nullptr && --w->refs == 0) {
    unlink(w);
  } else {
    w = nullptr;
  }
  pthread_mutex_unlock(&gLock);
  if (w != nullptr) {
    XDestroyWindow(w->display, w->xid);
    XCloseDisplay(w->display);
    delete w;
  }
}

HOST_API int32_t ANativeWindow_getWidth(ANativeWindow* window) {
  return readField(window, &HostWindow::width);
}

HOST_API int32_t ANativeWindow_getHeight(ANativeWindow* window) {
  return readField(window, &HostWindow::height);
}

HOST_API int32_t ANativeWindow_getFormat(ANativeWindow* window) {
  return readField(window, &HostWindow::format);
}

// Width and height 0 keep the current size; otherwise both must be positive
// and the X window is resized. The format is only recorded.
HOST_API int32_t ANativeWindow_setBuffersGeometry(ANativeWindow* window, int32_t width, int32_t height,
                                                  int32_t format) {
  if (width < 0 || height < 0 || (width == 0) != (height == 0) || width > 16384 || height > 16384) {
    return -EINVAL;
  }
  pthread_mutex_lock(&gLock);
  HostWindow* w = find(window);
  if (w == nullptr) {
    pthread_mutex_unlock(&gLock);
    return -EINVAL;
  }
  if (width > 0) {
    w->width = width;
    w->height = height;
    XResizeWindow(w->display, w->xid, static_cast<unsigned>(width), static_cast<unsigned>(height));
    XSync(w->display, False);
  }
  w->format = format;
  pthread_mutex_unlock(&gLock);
  return 0;
}

HOST_API ANativeWindow* ANativeWindow_fromSurface(JNIEnv* env, jobject surface) {
  if (env == nullptr || surface == nullptr) return nullptr;
  jclass cls = env->GetObjectClass(surface);
  if (cls == nullptr) return nullptr;
  jfieldID field = env->GetFieldID(cls, "mNativeObject", "J");
  env->DeleteLocalRef(cls);
  if (field == nullptr) {
    env->ExceptionClear();
    return nullptr;
  }
  ANativeWindow* window =
      reinterpret_cast<ANativeWindow*>(static_cast<uintptr_t>(env->GetLongField(surface, field)));
  pthread_mutex_lock(&gLock);
  HostWindow* w = find(window);
  if (w != nullptr) ++w->refs;
  pthread_mutex_unlock(&gLock);
  return w != nullptr ? window : nullptr;
}
