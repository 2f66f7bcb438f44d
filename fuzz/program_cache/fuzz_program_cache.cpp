// The program-binary cache file as a named script reads it at construction,
// without a GL context: a format word, then the binary to the end of the file.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "../FuzzInput.h"
#include "gpu/GPUScript.h"

namespace {

std::string gDirectory;

// A private cache folder per process, so parallel runs do not share files.
const std::string& cacheDirectory() {
  if (gDirectory.empty()) {
    char pattern[] = "/tmp/ov-fuzz-cache-XXXXXX";
    if (mkdtemp(pattern) == nullptr) abort();
    gDirectory = std::string(pattern) + "/";
    GPUScript::setCacheDirectory(gDirectory.c_str());
  }
  return gDirectory;
}

void writeFile(const std::string& path, const uint8_t* data, size_t size) {
  FILE* f = fopen(path.c_str(), "wb");
  if (f == nullptr) abort();
  if (size > 0 && fwrite(data, 1, size, f) != size) abort();
  fclose(f);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string path = cacheDirectory() + "p.osb";
  writeFile(path, data, size);
  {
    auto_ptr<GPUScript> script(new GPUScript(static_cast<GPUContext*>(nullptr), "p"));
    // A binary, when one is taken, is the file after its format word; a file
    // of at most the format word holds none.
    const int length = script->getScriptBinaryLength();
    if (length > 0) {
      FUZZ_CHECK(size > 4 && length == static_cast<int>(size - 4));
      unsigned format;
      memcpy(&format, data, 4);
      FUZZ_CHECK(script->getScriptBinaryFormat() == format);
      FUZZ_CHECK(memcmp(script->getScriptBinary(), data + 4, size - 4) == 0);
    } else {
      FUZZ_CHECK(length == 0);
    }
    // Destruction writes the binary back; an empty script leaves the file alone.
  }
  // Either way the file holds the same bytes again.
  FILE* f = fopen(path.c_str(), "rb");
  FUZZ_CHECK(f != nullptr);
  std::vector<uint8_t> back(size + 1);
  FUZZ_CHECK(fread(back.data(), 1, size + 1, f) == size);
  FUZZ_CHECK(size == 0 || memcmp(back.data(), data, size) == 0);
  fclose(f);
  unlink(path.c_str());
  return 0;
}
