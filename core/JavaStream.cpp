#include "core/JavaStream.h"

#include <cstdint>

#include "core/Log.h"
#include "core/SizeRule.h"

namespace {

// Describes and clears a pending Java exception; true if there was one.
bool takeException(JNIEnv* env) {
  if (!env->ExceptionCheck()) return false;
  env->ExceptionDescribe();
  env->ExceptionClear();
  return true;
}

// Method ids of one java.io class; the class reference is not kept.
jmethodID lookUp(JNIEnv* env, jclass cls, const char* name, const char* sig) {
  if (cls == nullptr) return nullptr;
  jmethodID id = env->GetMethodID(cls, name, sig);
  if (id == nullptr && env->ExceptionCheck()) env->ExceptionClear();
  return id;
}

unsigned int arrayLength(JNIEnv* env, jbyteArray array) {
  if (env == nullptr || array == nullptr) return 0;
  jsize n = env->GetArrayLength(array);
  return n > 0 ? static_cast<unsigned int>(n) : 0;
}

}  // namespace

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

JavaOutputStream::JavaOutputStream(JNIEnv* env, jobject stream, jbyteArray buffer)
    : mEnv(env), mStream(stream), mArray(buffer), mArrayLength(arrayLength(env, buffer)) {
  if (env == nullptr) return;
  jclass cls = env->FindClass("java/io/OutputStream");
  if (cls == nullptr && env->ExceptionCheck()) env->ExceptionClear();
  mWrite = lookUp(env, cls, "write", "([BII)V");
  mFlush = lookUp(env, cls, "flush", "()V");
  if (cls != nullptr) env->DeleteLocalRef(cls);
}

JavaOutputStream::~JavaOutputStream() = default;

int JavaOutputStream::read(void*, unsigned int) { return 0; }

int JavaOutputStream::write(void* buffer, unsigned int size) {
  if (size == 0 || !orvan::sizerule::fitsInt(size) || buffer == nullptr || mEnv == nullptr ||
      mStream == nullptr || mArray == nullptr || mArrayLength == 0 || mWrite == nullptr) {
    return 0;
  }
  const auto* in = static_cast<const jbyte*>(buffer);
  unsigned int done = 0;
  while (done < size) {
    unsigned int left = size - done;
    jint chunk = static_cast<jint>(left < mArrayLength ? left : mArrayLength);
    mEnv->SetByteArrayRegion(mArray, 0, chunk, in + done);
    if (takeException(mEnv)) {
      OV_LOGD("--- write:SetByteArrayElements threw an exception\n");
      return 0;
    }
    mEnv->CallVoidMethod(mStream, mWrite, mArray, 0, chunk);
    if (takeException(mEnv)) {
      OV_LOGD("------- write threw an exception\n");
      return 0;
    }
    done += static_cast<unsigned int>(chunk);
  }
  return static_cast<int>(done);
}

long long JavaOutputStream::seek(long long, SeekOrign) { return 0; }

unsigned int JavaOutputStream::getLength() { return 0; }

void JavaOutputStream::flush() {
  if (mEnv == nullptr || mStream == nullptr || mFlush == nullptr) return;
  mEnv->CallVoidMethod(mStream, mFlush);
  if (takeException(mEnv)) OV_LOGD("------- flush threw an exception\n");
}

int JavaOutputStream::close() { return 0; }
