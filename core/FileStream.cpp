#include <climits>
#include <cstdint>

#include "core/SizeRule.h"
#include "core/Stream.h"

FileStream::FileStream(const char* path, FileMode mode) {
  char flags[4];
  int n = 0;
  if (mode & FILE_MODE_READ) flags[n++] = 'r';
  if (mode & FILE_MODE_WRITE) flags[n++] = 'w';
  flags[n++] = 'b';
  flags[n] = '\0';
  // Mode 0 gives "b", which fopen refuses.
  mFile = path != nullptr ? fopen(path, flags) : nullptr;
  if (mFile != nullptr) {
    fseek(mFile, 0, SEEK_END);
    long end = ftell(mFile);
    mLength = end > 0 ? static_cast<unsigned int>(end) : 0;
    fseek(mFile, 0, SEEK_SET);
  }
}

FileStream::~FileStream() { close(); }

int FileStream::read(void* buffer, unsigned int size) {
  // The count is returned as an int.
  if (mFile == nullptr || !orvan::sizerule::fitsInt(size)) return 0;
  if (buffer != nullptr) return static_cast<int>(fread(buffer, 1, size, mFile));
  if (ftell(mFile) < 0) return 0;
  if (fseek(mFile, static_cast<long>(size), SEEK_CUR) != 0) return 0;
  return static_cast<int>(size);
}

int FileStream::write(void* buffer, unsigned int size) {
  if (mFile == nullptr || buffer == nullptr || size == 0 || !orvan::sizerule::fitsInt(size)) return 0;
  return static_cast<int>(fwrite(buffer, 1, size, mFile));
}

long long FileStream::seek(long long offset, SeekOrign origin) {
  if (mFile == nullptr) return 0;
  // Only the low 32 bits of the offset take part.
  return fseek(mFile, static_cast<long>(static_cast<int32_t>(offset)), static_cast<int>(origin));
}

int FileStream::rewind() {
  if (mFile == nullptr) return 0;
  ::rewind(mFile);
  return 1;
}

unsigned int FileStream::getLength() { return mLength; }

void FileStream::flush() {
  if (mFile != nullptr) fflush(mFile);
}

int FileStream::close() {
  if (mFile != nullptr) {
    fclose(mFile);
    mFile = nullptr;
  }
  return 0;
}
