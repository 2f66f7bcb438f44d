// Replays fuzz inputs without libFuzzer: every file named on the command line,
// and every file inside a named folder, goes once through
// LLVMFuzzerTestOneInput. A folder that does not exist counts as empty (a
// target's regressions/ appears with its first reproducer); finding no file at
// all fails.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

int main(int argc, char** argv) {
  if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
  namespace fs = std::filesystem;
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    std::error_code ec;
    if (fs::is_directory(argv[i], ec)) {
      for (const auto& entry : fs::directory_iterator(argv[i]))
        if (entry.is_regular_file()) files.push_back(entry.path().string());
    } else if (fs::is_regular_file(argv[i], ec)) {
      files.push_back(argv[i]);
    }
  }
  std::sort(files.begin(), files.end());
  for (const std::string& path : files) {
    std::ifstream in(path, std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    printf("%s (%zu bytes)\n", path.c_str(), bytes.size());
    fflush(stdout);
    // A copy of exactly the file's size, so reads past the end are caught.
    uint8_t* copy = new uint8_t[bytes.size()];
    std::copy(bytes.begin(), bytes.end(), copy);
    LLVMFuzzerTestOneInput(copy, bytes.size());
    delete[] copy;
  }
  printf("%zu inputs replayed\n", files.size());
  return files.empty() ? 1 : 0;
}
