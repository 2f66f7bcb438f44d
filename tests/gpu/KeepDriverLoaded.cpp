// Mesa unloads its DRI driver when the last EGL display is terminated, after
// which LeakSanitizer can no longer name the driver's own small leaks (they
// show as "<unknown module>" and escape the suppressions). Pinning the driver
// for the whole test process keeps them attributable.
#include <dlfcn.h>

namespace {

struct KeepDriverLoaded {
  KeepDriverLoaded() {
    const char* candidates[] = {"/usr/lib/x86_64-linux-gnu/dri/swrast_dri.so", "swrast_dri.so"};
    for (const char* path : candidates) {
      if (dlopen(path, RTLD_LAZY | RTLD_NODELETE) != nullptr) break;
    }
  }
};

KeepDriverLoaded gKeepDriverLoaded;

}  // namespace
