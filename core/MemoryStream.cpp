#include <climits>
#include <cstdint>
#include <cstring>

#include "core/Memory.h"
#include "core/SizeRule.h"
#include "core/Stream.h"

MemoryStream::MemoryStream(void* buffer, unsigned int size)
    : mBuffer(static_cast<unsigned char*>(buffer)), mCapacity(buffer != nullptr ? size : 0) {}

MemoryStream::MemoryStream(unsigned int size)
    : mBuffer(static_cast<unsigned char*>(galloc_malloc(size))), mOwnsBuffer(true) {
  mCapacity = mBuffer != nullptr ? size : 0;
}

MemoryStream::~MemoryStream() { close(); }

int MemoryStream::read(void* buffer, unsigned int size) {
  if (mBuffer == nullptr || buffer == nullptr || size == 0) return -1;
  unsigned int count = size > mCapacity - mPosition ? mCapacity - mPosition : size;
  if (!orvan::sizerule::fitsInt(count)) return -1;  // the count is returned as an int
  memcpy(buffer, mBuffer + mPosition, count);
  mPosition += count;
  return static_cast<int>(count);
}

int MemoryStream::write(void* buffer, unsigned int size) {
  if (mBuffer == nullptr || buffer == nullptr || size == 0) return -1;
  unsigned int count = size > mCapacity - mPosition ? mCapacity - mPosition : size;
  if (!orvan::sizerule::fitsInt(count)) return -1;
  memcpy(mBuffer + mPosition, buffer, count);
  mPosition += count;
  return static_cast<int>(count);
}

long long MemoryStream::seek(long long offset, SeekOrign origin) {
  if (mBuffer == nullptr) return -1;
  const long long old = mPosition;
  // Target and result as exact arithmetic gives them: a target past the long
  // long range lies past the end anyway, and a result too low to represent
  // saturates (old is never negative, so nothing else can overflow).
  long long target = old;
  long long moved = 0;
  switch (origin) {
    case SEEK_ORIGN_BEGIN:
      target = offset;
      if (__builtin_sub_overflow(offset, old, &moved)) moved = LLONG_MIN;
      break;
    case SEEK_ORIGN_CURRENT:
    case SEEK_ORIGN_END:  // measured from the current position, not the end
      if (__builtin_add_overflow(old, offset, &target)) target = LLONG_MAX;
      moved = offset;
      break;
    default:
      break;
  }
  long long clamped = target < 0 ? 0 : (target > mCapacity ? mCapacity : target);
  mPosition = static_cast<unsigned int>(clamped);
  return moved;
}

int MemoryStream::rewind() {
  if (mBuffer == nullptr) return 0;
  mPosition = 0;
  return 1;
}

unsigned int MemoryStream::getLength() { return mCapacity; }

int MemoryStream::close() {
  if (mOwnsBuffer && mBuffer != nullptr) galloc_free(mBuffer);
  mBuffer = nullptr;
  mCapacity = 0;
  mPosition = 0;
  mOwnsBuffer = false;
  return 0;
}
