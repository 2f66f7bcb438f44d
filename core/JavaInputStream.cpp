#include <cstdint>

#include "core/JavaStream.h"
#include "core/JavaStreamCalls.h"
#include "core/Log.h"
#include "core/SizeRule.h"

using orvan::javastream::arrayLength;
using orvan::javastream::lookUp;
using orvan::javastream::takeException;

JavaInputStream::JavaInputStream(JNIEnv* env, jobject stream, jbyteArray buffer)
    : mEnv(env), mStream(stream), mArray(buffer), mArrayLength(arrayLength(env, buffer)) {
  if (env == nullptr) return;
  jclass cls = env->FindClass("java/io/InputStream");
  if (cls == nullptr && env->ExceptionCheck()) env->ExceptionClear();
  mRead = lookUp(env, cls, "read", "([BII)I");
  mSkip = lookUp(env, cls, "skip", "(J)J");
  mAvailable = lookUp(env, cls, "available", "()I");
  if (cls != nullptr) env->DeleteLocalRef(cls);
}

JavaInputStream::~JavaInputStream() = default;

int JavaInputStream::read(void* buffer, unsigned int size) {
  if (!orvan::sizerule::fitsInt(size)) return 0;
  if (buffer != nullptr) return doRead(buffer, size);

  unsigned int done = 0;
  while (done < size) {
    int skipped = skip(size - done);
    if (skipped == 0) {
      // Some streams cannot skip: a read tells the end apart from that.
      unsigned char scratch;
      if (doRead(&scratch, 1) == 0) {
        mAtEnd = true;
        return static_cast<int>(done);
      }
      skipped = 1;
    }
    done += static_cast<unsigned int>(skipped);
  }
  return static_cast<int>(done);
}

int JavaInputStream::doRead(void* buffer, unsigned int size) {
  if (mEnv == nullptr || mStream == nullptr || mArray == nullptr || mArrayLength == 0 || mRead == nullptr ||
      buffer == nullptr || !orvan::sizerule::fitsInt(size)) {
    return 0;
  }
  auto* out = static_cast<jbyte*>(buffer);
  unsigned int total = 0;
  while (true) {
    unsigned int remaining = size - total;
    jint want = static_cast<jint>(remaining < mArrayLength ? remaining : mArrayLength);
    jint got = mEnv->CallIntMethod(mStream, mRead, mArray, 0, want);
    if (takeException(mEnv)) {
      OV_LOGD("---- read threw an exception\n");
      return 0;
    }
    if (got < 0) {
      mAtEnd = true;
      return static_cast<int>(total);
    }
    // A stream that reports more than asked is held to what was asked; one
    // that makes no progress ends the read rather than spinning.
    if (got > want) got = want;
    if (got == 0) return static_cast<int>(total);
    mEnv->GetByteArrayRegion(mArray, 0, got, out + total);
    if (takeException(mEnv)) {
      OV_LOGD("---- read:GetByteArrayRegion threw an exception\n");
      return 0;
    }
    total += static_cast<unsigned int>(got);
    mBytesRead += static_cast<unsigned int>(got);
    if (static_cast<unsigned int>(got) == remaining) return static_cast<int>(total);
  }
}

int JavaInputStream::skip(unsigned int count) {
  // The count skipped is returned as an int.
  if (mEnv == nullptr || mStream == nullptr || mSkip == nullptr || count == 0 ||
      !orvan::sizerule::fitsInt(count))
    return 0;
  jlong skipped = mEnv->CallLongMethod(mStream, mSkip, static_cast<jlong>(count));
  if (takeException(mEnv)) {
    OV_LOGD("------- skip threw an exception\n");
    return 0;
  }
  if (skipped < 0) return 0;
  if (skipped > static_cast<jlong>(count)) skipped = count;
  return static_cast<int>(skipped);
}

int JavaInputStream::write(void*, unsigned int) { return 0; }

long long JavaInputStream::seek(long long, SeekOrign) { return 0; }

int JavaInputStream::rewind() { return 1; }

unsigned int JavaInputStream::getLength() {
  if (mEnv == nullptr || mStream == nullptr || mAvailable == nullptr) return 0;
  jint available = mEnv->CallIntMethod(mStream, mAvailable);
  if (takeException(mEnv)) {
    OV_LOGD("------- Available threw an exception\n");
    return 0;
  }
  return available > 0 ? static_cast<unsigned int>(available) : 0;
}

bool JavaInputStream::isAtEnd() const { return mAtEnd; }

int JavaInputStream::close() { return 0; }
