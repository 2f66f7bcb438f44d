// Filters as separate processes and threads meet them: the program cache in
// its default folder and shared between writers, and filters made and
// destroyed one after another. Parts that must start from a process with no
// EGL state re-run this binary with OV_FILTER_CHILD naming the part.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "core/Memory.h"
#include "filters/FilterTestSupport.h"
#include "filters/ImageFilters.h"
#include "gpu/GPUScript.h"
#include "support/LogCapture.h"

extern char** environ;

namespace {

const char* const kNames[] = {"ImageFilterNone",       "ImageFilterTable",  "ImageFilterDistorted",
                              "ImageFilterExtrusion",  "ImageFilterMirror", "ImageFilterTemperature",
                              "ImageFilterTimetunnel", "ImageFilterXray"};

const char* child() { return getenv("OV_FILTER_CHILD"); }

// Runs this test binary's ChildPart test with OV_FILTER_CHILD=part (and any
// extra variables); its exit status.
int runChild(const char* part, std::vector<std::string> extra = {}) {
  std::vector<std::string> env = {std::string("OV_FILTER_CHILD=") + part};
  for (auto& e : extra) env.push_back(e);
  for (char** e = environ; *e != nullptr; ++e) env.push_back(*e);
  std::vector<char*> envp;
  for (auto& e : env) envp.push_back(&e[0]);
  envp.push_back(nullptr);
  char self[4096] = {0};
  if (readlink("/proc/self/exe", self, sizeof(self) - 1) <= 0) return -1;
  char filter[] = "--gtest_filter=FilterSharing.ChildPart";
  char* argv[] = {self, filter, nullptr};
  pid_t pid = 0;
  if (posix_spawn(&pid, self, nullptr, nullptr, argv, envp.data()) != 0) return -1;
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Makes, uses and deletes one filter as FiltersRender's nativeCreate,
// nativeProcess and nativeOnSurfaceDestroyed do; false if its engine or
// program could not be made.
bool stillPicture(const char* name, std::vector<uint8_t>& pixels, int w, int h, bool* fromBinary = nullptr) {
  ImageFilterBaseGL* f = ImageFilterFactory::createFilter(name);
  if (f == nullptr) return false;
  if (!f->initEngine() || !f->setupGraphics(1) || f->program == nullptr) {
    delete f;
    return false;
  }
  if (fromBinary != nullptr) *fromBinary = f->program->isFromBinary();
  f->process(pixels.data(), w, h);
  delete f;
  return true;
}

std::string defaultFile(const char* name) { return std::string(OV_TEST_DEFAULT_CACHE_DIR) + name + ".osb"; }

}  // namespace

// The parts run in child processes.
TEST(FilterSharing, ChildPart) {
  if (child() == nullptr) GTEST_SKIP() << "runs in a child process";
  std::string part = child();
  std::vector<uint8_t> pixels(64 * 48 * 4, 0x80);
  if (part == "fill" || part == "load") {
    for (const char* name : kNames) {
      bool fromBinary = false;
      ASSERT_TRUE(stillPicture(name, pixels, 64, 48, &fromBinary)) << name;
      EXPECT_TRUE(fromBinary || part == "fill") << name;
    }
  } else if (part == "cycles") {
    // The parent's private X server resets whenever its last client leaves.
    ASSERT_EQ(setenv("DISPLAY", getenv("OV_CYCLE_DISPLAY"), 1), 0);
    LogCapture log;
    for (int round = 0; round < atoi(getenv("OV_CYCLE_ROUNDS")); ++round) {
      for (const char* name : kNames) {
        log.clear();
        bool made = stillPicture(name, pixels, 64, 48);
        std::string lines;
        for (const auto& l : log.texts()) lines += l.back() == '\n' ? l : l + "\n";
        ASSERT_TRUE(made) << round << " " << name << "\n" << lines;
      }
    }
  }
}

// A user who never names a folder: binaries stored by one process serve the next.
TEST(FilterSharing, DefaultCacheFolderServesTheNextProcess) {
  if (child() != nullptr) GTEST_SKIP();
  EXPECT_STREQ(GPUScript::getCacheDirectory(), OV_TEST_DEFAULT_CACHE_DIR);
  for (const char* name : kNames) unlink(defaultFile(name).c_str());
  ASSERT_EQ(runChild("fill"), 0);
  for (const char* name : kNames) EXPECT_EQ(access(defaultFile(name).c_str(), R_OK), 0) << name;
  EXPECT_EQ(runChild("load"), 0);
}

// Still pictures one filter at a time, each taking the last engine with it,
// against an X server that resets when its last client leaves.
TEST(FilterSharing, OneFilterAfterAnotherAlwaysStarts) {
  if (child() != nullptr) GTEST_SKIP();
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fds[1], 3);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  char xvfb[] = "Xvfb", displayfd[] = "-displayfd", three[] = "3", screen[] = "-screen", zero[] = "0",
       size[] = "64x64x24";
  char* argv[] = {xvfb, displayfd, three, screen, zero, size, nullptr};
  pid_t server = 0;
  int spawned = posix_spawnp(&server, "Xvfb", &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(fds[1]);
  if (spawned != 0) GTEST_SKIP() << "no Xvfb";
  char number[16] = {0};
  ssize_t got = read(fds[0], number, sizeof(number) - 1);
  close(fds[0]);
  if (got > 0) {
    std::string display = ":" + std::string(number, strcspn(number, "\n"));
    // Without a driver to probe, Mesa's first eglInitialize opens one X
    // connection instead of trying DRI3 on one, closing it (a reset here) and
    // opening the next: only the engine's own reconnects remain to be seen.
    EXPECT_EQ(runChild("cycles", {"OV_CYCLE_DISPLAY=" + display, "OV_CYCLE_ROUNDS=" OV_TEST_CYCLE_ROUNDS,
                                  "LIBGL_ALWAYS_SOFTWARE=1"}),
              0);
  } else {
    ADD_FAILURE() << "Xvfb gave no display number";
  }
  kill(server, SIGTERM);
  waitpid(server, nullptr, 0);
}

class FilterSharingCache : public filtertest::PrivateCache {};

// Writers replacing one cache file while readers load it: a reader finds no
// file or a whole one, never a mix or a prefix. Every binary is one byte
// repeated, so a torn file shows. Scripts need no GL context.
TEST_F(FilterSharingCache, ReadersOnlySeeWholeFiles) {
  const int kBytes = 256 * 1024;
  std::vector<std::thread> threads;
  std::vector<int> torn(4, 0);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t, &torn] {
      for (int i = 0; i < 100; ++i) {
        auto_ptr<GPUScript> script(new GPUScript(static_cast<GPUContext*>(nullptr), "shared"));
        const unsigned char* b = static_cast<const unsigned char*>(script->getScriptBinary());
        int n = script->getScriptBinaryLength();
        if (b != nullptr) {
          bool whole = n == kBytes && script->getScriptBinaryFormat() == 0x875fu;
          for (int k = 0; whole && k < n; ++k) whole = b[k] == b[0];
          torn[t] += whole ? 0 : 1;
        }
        void* mine = galloc_malloc(kBytes);
        memset(mine, 'a' + t, kBytes);
        script->setScriptBinaryFormat(0x875f);
        script->setScriptBinary(mine, kBytes);
      }
    });
  }
  for (auto& th : threads) th.join();
  for (int t = 0; t < 4; ++t) EXPECT_EQ(torn[t], 0) << "thread " << t;
  // No temporary file is left behind.
  EXPECT_EQ(system(("test $(ls -A '" + cacheDir() + "' | wc -l) -eq 1").c_str()), 0);
}

// Threads with engines of their own share the cache and all draw right.
TEST_F(FilterSharingCache, EnginesOnThreadsShareTheCache) {
  model::Picture in = filtertest::noise(16, 16, 5);
  std::vector<uint8_t> want = in.pixels;
  ASSERT_TRUE(stillPicture("ImageFilterXray", want, 16, 16));
  std::vector<std::thread> threads;
  std::vector<int> wrong(3, 0);
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 10; ++i) {
        std::vector<uint8_t> px = in.pixels;
        wrong[t] += stillPicture("ImageFilterXray", px, 16, 16) && px == want ? 0 : 1;
      }
    });
  }
  for (auto& th : threads) th.join();
  for (int t = 0; t < 3; ++t) EXPECT_EQ(wrong[t], 0) << "thread " << t;
}
