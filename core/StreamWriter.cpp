#include "core/Stream.h"

namespace {

// Values travel in host byte order; a writer without a stream writes nothing.
template <typename T>
int writeValue(auto_ptr<Stream>& stream, T value) {
  if (stream == nullptr) return 0;
  stream->write(&value, sizeof(value));
  return 1;
}

}  // namespace

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
