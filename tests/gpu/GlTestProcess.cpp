// Process-wide set-up for every test that uses GL (ov_add_test adds this file
// to tests labelled "gpu").
//
// 1. Mesa unloads its DRI driver when the last EGL display is terminated,
//    after which LeakSanitizer can no longer name the driver's own small
//    leaks (they show as "<unknown module>" and escape the suppressions).
//    Pinning the driver keeps them attributable.
// 2. An X server started without -noreset resets whenever its last client
//    leaves, and refuses connections meanwhile: one test tearing down its
//    engine would make the next test's connection fail. Holding one
//    connection for the life of the process prevents those resets.
// 3. Mesa is not built with ThreadSanitizer: its own synchronisation (atomics,
//    futexes) is invisible, so TSan reports races between the pthread calls
//    it does make. Reports within the driver modules are suppressed.
#include <dlfcn.h>

namespace {

struct GlTestProcess {
  GlTestProcess() {
    const char* drivers[] = {"/usr/lib/" OV_LIBRARY_ARCHITECTURE "/dri/swrast_dri.so", "swrast_dri.so"};
    for (const char* path : drivers) {
      if (dlopen(path, RTLD_LAZY | RTLD_NODELETE) != nullptr) break;
    }
    // Looked up at run time so tests need not link libX11.
    void* x11 = dlopen("libX11.so.6", RTLD_LAZY);
    if (x11 == nullptr) return;
    using OpenDisplay = void* (*)(const char*);
    auto open = reinterpret_cast<OpenDisplay>(dlsym(x11, "XOpenDisplay"));
    if (open != nullptr) mDisplay = open(nullptr);  // null without a server: fine
  }
  // The connection is deliberately kept until the process exits.
  void* mDisplay = nullptr;
};

GlTestProcess gGlTestProcess;

}  // namespace

extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
  return "race:swrast_dri.so\n"
         "race:libgallium\n"
         "race:libLLVM\n";
}
