#pragma once

#include <jni.h>

#include "core/Export.h"
#include "core/Stream.h"

// Streams over a Java java.io.InputStream / java.io.OutputStream, moving bytes
// through a caller-supplied Java byte array. Java exceptions are described,
// cleared, logged and turned into 0. Use a stream only on the thread whose
// JNIEnv it was given; the stream, array and method ids are not kept beyond
// the native call that created them (local references).
class OV_EXPORT JavaInputStream : public Stream {
 public:
  JavaInputStream(JNIEnv* env, jobject stream, jbyteArray buffer);
  ~JavaInputStream() override;

  // With a buffer, reads up to size bytes (fewer only at the end of the Java
  // stream); with none, skips size bytes.
  int read(void* buffer, unsigned int size) override;
  int write(void* buffer, unsigned int size) override;
  long long seek(long long offset, SeekOrign origin) override;
  int skip(unsigned int count) override;
  int rewind() override;
  // What the Java stream says is available without blocking.
  unsigned int getLength() override;
  bool isAtEnd() const override;
  int close() override;

  unsigned int getBytesRead() const { return mBytesRead; }

 private:
  int doRead(void* buffer, unsigned int size);

  JNIEnv* mEnv;
  jobject mStream;
  jbyteArray mArray;
  unsigned int mArrayLength = 0;
  unsigned int mBytesRead = 0;
  bool mAtEnd = false;
  jmethodID mRead = nullptr;
  jmethodID mSkip = nullptr;
  jmethodID mAvailable = nullptr;
};

class OV_EXPORT JavaOutputStream : public Stream {
 public:
  JavaOutputStream(JNIEnv* env, jobject stream, jbyteArray buffer);
  ~JavaOutputStream() override;

  int read(void* buffer, unsigned int size) override;
  // Writes size bytes in chunks of the array's length; returns size, or 0 when
  // Java threw.
  int write(void* buffer, unsigned int size) override;
  long long seek(long long offset, SeekOrign origin) override;
  unsigned int getLength() override;
  void flush() override;
  int close() override;

 private:
  JNIEnv* mEnv;
  jobject mStream;
  jbyteArray mArray;
  unsigned int mArrayLength = 0;
  jmethodID mWrite = nullptr;
  jmethodID mFlush = nullptr;
};
