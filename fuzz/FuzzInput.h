#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// Takes numbers off the front of a fuzz input; once it runs dry every number
// reads as 0, so short inputs still make whole calls.
class FuzzInput {
 public:
  FuzzInput(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

  template <typename T>
  T take() {
    T value{};
    const size_t n = mSize < sizeof(T) ? mSize : sizeof(T);
    if (n > 0) memcpy(&value, mData, n);
    mData += n;
    mSize -= n;
    return value;
  }
  // A value in [lo, hi].
  uint32_t range(uint32_t lo, uint32_t hi) {
    const uint64_t span = uint64_t{hi} - lo + 1;
    return static_cast<uint32_t>(lo + take<uint32_t>() % span);
  }
  bool flag() { return (take<uint8_t>() & 1) != 0; }

  const uint8_t* rest() const { return mData; }
  size_t restSize() const { return mSize; }

  // Fills dst with the unread bytes, repeated; zeros when none are left.
  void tile(uint8_t* dst, size_t n) const {
    if (n == 0) return;
    if (mSize == 0) {
      memset(dst, 0, n);
      return;
    }
    for (size_t done = 0; done < n;) {
      const size_t step = n - done < mSize ? n - done : mSize;
      memcpy(dst + done, mData, step);
      done += step;
    }
  }

 private:
  const uint8_t* mData;
  size_t mSize;
};

// A broken property: abort so that libFuzzer keeps the input.
#define FUZZ_CHECK(cond)                                                       \
  do {                                                                         \
    if (!(cond)) {                                                             \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
      abort();                                                                 \
    }                                                                          \
  } while (0)
