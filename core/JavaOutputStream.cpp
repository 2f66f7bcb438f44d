#include <cstdint>

#include "core/JavaStream.h"
#include "core/JavaStreamCalls.h"
#include "core/Log.h"
#include "core/SizeRule.h"

using orvan::javastream::arrayLength;
using orvan::javastream::lookUp;
using orvan::javastream::takeException;

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
