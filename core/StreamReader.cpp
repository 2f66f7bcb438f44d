#include "core/Stream.h"

namespace {

// Values travel in host byte order; a reader without a stream reads 0.
template <typename T>
T readValue(auto_ptr<Stream>& stream) {
  if (stream == nullptr) return 0;
  T v = 0;
  stream->read(&v, sizeof(v));
  return v;
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
