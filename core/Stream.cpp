#include "core/Stream.h"

#include <climits>
#include <cstdint>
#include <cstring>

#include "core/Memory.h"
#include "core/SizeRule.h"

int Stream::write(void*, unsigned int) { return 0; }
int Stream::skip(unsigned int count) { return read(nullptr, count); }
int Stream::rewind() { return 0; }
void Stream::flush() {}
bool Stream::isAtEnd() const { return false; }

// ---- FileStream

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

// ---- MemoryStream

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

// ---- StreamReader / StreamWriter

namespace {

// Values travel in host byte order; a reader or writer without a stream reads
// 0 and writes nothing.
template <typename T>
T readValue(auto_ptr<Stream>& stream) {
  if (stream == nullptr) return 0;
  T v = 0;
  stream->read(&v, sizeof(v));
  return v;
}

template <typename T>
int writeValue(auto_ptr<Stream>& stream, T value) {
  if (stream == nullptr) return 0;
  stream->write(&value, sizeof(value));
  return 1;
}

}  // namespace

StreamReader::StreamReader(Stream* stream) : mStream(stream) {}
StreamReader::StreamReader(auto_ptr<Stream>& stream) : mStream(stream) {}

int StreamReader::read(void* buffer, unsigned int size) {
  return mStream != nullptr ? mStream->read(buffer, size) : -1;
}
int StreamReader::write(void* buffer, unsigned int size) {
  return mStream != nullptr ? mStream->write(buffer, size) : 0;
}
long long StreamReader::seek(long long offset, SeekOrign origin) {
  return mStream != nullptr ? mStream->seek(offset, origin) : 0;
}
unsigned int StreamReader::getLength() { return mStream != nullptr ? mStream->getLength() : 0; }
void StreamReader::flush() {
  if (mStream != nullptr) mStream->flush();
}
int StreamReader::close() { return mStream != nullptr ? mStream->close() : 0; }

signed char StreamReader::readByte() { return readValue<signed char>(mStream); }

short StreamReader::readShortInt() { return readValue<short>(mStream); }

int StreamReader::readInt() { return readValue<int>(mStream); }

StreamWriter::StreamWriter(Stream* stream) : mStream(stream) {}
StreamWriter::StreamWriter(auto_ptr<Stream>& stream) : mStream(stream) {}

int StreamWriter::read(void* buffer, unsigned int size) {
  return mStream != nullptr ? mStream->read(buffer, size) : -1;
}
int StreamWriter::write(void* buffer, unsigned int size) {
  return mStream != nullptr ? mStream->write(buffer, size) : 0;
}
long long StreamWriter::seek(long long offset, SeekOrign origin) {
  return mStream != nullptr ? mStream->seek(offset, origin) : 0;
}
unsigned int StreamWriter::getLength() { return mStream != nullptr ? mStream->getLength() : 0; }
void StreamWriter::flush() {
  if (mStream != nullptr) mStream->flush();
}
int StreamWriter::close() { return mStream != nullptr ? mStream->close() : 0; }

int StreamWriter::writeByte(signed char value) { return writeValue(mStream, value); }

int StreamWriter::writeShortInt(short value) { return writeValue(mStream, value); }

int StreamWriter::writeInt(int value) { return writeValue(mStream, value); }
