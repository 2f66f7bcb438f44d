#pragma once

#include <cstdio>

#include "core/Export.h"
#include "core/RefBase.h"

// Byte stream the codecs read and write through. Failures are results, never
// exceptions: file streams answer 0, memory streams -1 for bad arguments.
class OV_EXPORT Stream : public RefBase {
 public:
  // The stdio origins. "Orign" is spelt as the interface has it.
  enum SeekOrign { SEEK_ORIGN_BEGIN = 0, SEEK_ORIGN_CURRENT = 1, SEEK_ORIGN_END = 2 };

  virtual int read(void* buffer, unsigned int size) = 0;
  virtual int write(void* buffer, unsigned int size);
  virtual long long seek(long long offset, SeekOrign origin) = 0;
  // Skips by reading into no buffer.
  virtual int skip(unsigned int count);
  virtual int rewind();
  virtual unsigned int getLength() = 0;
  virtual void flush();
  virtual bool isAtEnd() const;
  virtual int close() = 0;
};

class OV_EXPORT FileStream : public Stream {
 public:
  // Bit set: 1 read, 2 write.
  enum FileMode { FILE_MODE_READ = 1, FILE_MODE_WRITE = 2, FILE_MODE_READ_WRITE = 3 };

  FileStream(const char* path, FileMode mode);
  ~FileStream() override;

  int read(void* buffer, unsigned int size) override;
  int write(void* buffer, unsigned int size) override;
  long long seek(long long offset, SeekOrign origin) override;
  int rewind() override;
  unsigned int getLength() override;
  void flush() override;
  int close() override;

  bool isOpen() const { return mFile != nullptr; }

 private:
  FILE* mFile = nullptr;
  unsigned int mLength = 0;
};

// Fixed-size memory block; never grows, so writes past the end are cut short.
class OV_EXPORT MemoryStream : public Stream {
 public:
  // Wraps the caller's block and never frees it.
  MemoryStream(void* buffer, unsigned int size);
  // Allocates (and later frees) a block of its own.
  explicit MemoryStream(unsigned int size);
  ~MemoryStream() override;

  int read(void* buffer, unsigned int size) override;
  int write(void* buffer, unsigned int size) override;
  long long seek(long long offset, SeekOrign origin) override;
  // Back to position 0; 1 on success, 0 without a buffer.
  int rewind() override;
  // The capacity.
  unsigned int getLength() override;
  int close() override;

  unsigned char* getBuffer() const { return mBuffer; }
  unsigned int getPosition() const { return mPosition; }

 private:
  unsigned char* mBuffer = nullptr;
  unsigned int mCapacity = 0;
  unsigned int mPosition = 0;
  bool mOwnsBuffer = false;
};

// Adds little-endian integer reads to another stream.
class OV_EXPORT StreamReader : public Stream {
 public:
  explicit StreamReader(Stream* stream);
  explicit StreamReader(auto_ptr<Stream>& stream);

  int read(void* buffer, unsigned int size) override;
  int write(void* buffer, unsigned int size) override;
  long long seek(long long offset, SeekOrign origin) override;
  unsigned int getLength() override;
  void flush() override;
  int close() override;

  // Short reads are not detected: missing bytes read as 0.
  virtual signed char readByte();
  virtual short readShortInt();
  virtual int readInt();

 private:
  auto_ptr<Stream> mStream;
};

// Adds little-endian integer writes to another stream.
class OV_EXPORT StreamWriter : public Stream {
 public:
  explicit StreamWriter(Stream* stream);
  explicit StreamWriter(auto_ptr<Stream>& stream);

  int read(void* buffer, unsigned int size) override;
  int write(void* buffer, unsigned int size) override;
  long long seek(long long offset, SeekOrign origin) override;
  unsigned int getLength() override;
  void flush() override;
  int close() override;

  // Each returns 1, or 0 without a stream.
  virtual int writeByte(signed char value);
  virtual int writeShortInt(short value);
  virtual int writeInt(int value);

 private:
  auto_ptr<Stream> mStream;
};
