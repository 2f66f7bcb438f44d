#include "core/Utils.h"

#include <sys/time.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

void WriteFile(const char* path, const unsigned char* data, unsigned int size) {
  if (path == nullptr || data == nullptr || size == 0) return;
  FILE* f = fopen(path, "w+");
  if (f == nullptr) return;
  fwrite(data, 1, size, f);
  fflush(f);
  fclose(f);
}

char* string_format(const char* fmt, ...) {
  static char buffer[2048];
  memset(buffer, 0, sizeof(buffer));
  if (fmt == nullptr) return buffer;
  va_list args;
  va_start(args, fmt);
  vsnprintf(buffer, sizeof(buffer), fmt, args);
  va_end(args);
  return buffer;
}

long long systemTime(void) {
  struct timeval tv;
  gettimeofday(&tv, nullptr);
  return static_cast<long long>(tv.tv_sec) * 1000000000LL + static_cast<long long>(tv.tv_usec) * 1000LL;
}

int toMillisecondTimeoutDelay(long long referenceTime, long long timeoutTime) {
  if (timeoutTime <= referenceTime) return 0;
  // Unsigned so that extreme inputs cannot overflow the subtraction.
  unsigned long long diff =
      static_cast<unsigned long long>(timeoutTime) - static_cast<unsigned long long>(referenceTime);
  if (diff > 2147483646000000ULL) return -1;
  return static_cast<int>((diff + 999999ULL) / 1000000ULL);
}

void make_timeout(void) {}
