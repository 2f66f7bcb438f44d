#pragma once

#include <cstdio>
#include <string>

namespace demo {

// The output folder a demo gets as its one argument; without it prints the
// usage and returns false.
inline bool outputFolder(int argc, char** argv, std::string* folder) {
  if (argc < 2) {
    fprintf(stderr, "usage: %s OUTPUT_DIR\n", argv[0]);
    return false;
  }
  *folder = argv[1];
  return true;
}

}  // namespace demo
