// JavaInputStream / JavaOutputStream over real java.io streams.
#include <gtest/gtest.h>
#include <jvmti.h>

#include <cstdarg>
#include <vector>

#include "JvmEnvironment.h"
#include "core/JavaStream.h"
#include "support/LogCapture.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes pattern(int n) {
  Bytes v(n);
  for (int i = 0; i < n; ++i) v[i] = static_cast<unsigned char>(i * 13 + 5);
  return v;
}

jobject newObject(JNIEnv* env, const char* cls, const char* sig, ...) {
  jclass c = env->FindClass(cls);
  va_list args;
  va_start(args, sig);
  jobject o = env->NewObjectV(c, env->GetMethodID(c, "<init>", sig), args);
  va_end(args);
  EXPECT_FALSE(env->ExceptionCheck());
  return o;
}

jobject byteInput(JNIEnv* env, const Bytes& v) {
  jbyteArray a = env->NewByteArray(static_cast<jsize>(v.size()));
  env->SetByteArrayRegion(a, 0, static_cast<jsize>(v.size()), reinterpret_cast<const jbyte*>(v.data()));
  return newObject(env, "java/io/ByteArrayInputStream", "([B)V", a);
}

// A FileInputStream / FileOutputStream on /dev/null that is already closed:
// every real operation on it throws IOException.
jobject closedFileStream(JNIEnv* env, const char* cls) {
  jobject s = newObject(env, cls, "(Ljava/lang/String;)V", env->NewStringUTF("/dev/null"));
  env->CallVoidMethod(s, env->GetMethodID(env->FindClass(cls), "close", "()V"));
  EXPECT_FALSE(env->ExceptionCheck());
  return s;
}

Bytes slice(const Bytes& v, size_t from, size_t n) { return Bytes(v.begin() + from, v.begin() + from + n); }

// While it lives, the JNI byte-array region copies throw instead of copying
// (JVMTI's JNI function-table interception): no real array can make them fail
// for the streams, which never pass a region beyond their array.
class ThrowingArrayRegions {
 public:
  explicit ThrowingArrayRegions(JNIEnv* env) {
    JavaVM* vm = nullptr;
    EXPECT_EQ(JNI_OK, env->GetJavaVM(&vm));
    EXPECT_EQ(JNI_OK, vm->GetEnv(reinterpret_cast<void**>(&mJvmti), JVMTI_VERSION_1_2));
    EXPECT_EQ(JVMTI_ERROR_NONE, mJvmti->GetJNIFunctionTable(&mOriginal));
    mPatched = *mOriginal;
    mPatched.GetByteArrayRegion = [](JNIEnv* e, jbyteArray, jsize, jsize, jbyte*) { raise(e); };
    mPatched.SetByteArrayRegion = [](JNIEnv* e, jbyteArray, jsize, jsize, const jbyte*) { raise(e); };
    EXPECT_EQ(JVMTI_ERROR_NONE, mJvmti->SetJNIFunctionTable(&mPatched));
  }
  ~ThrowingArrayRegions() {
    mJvmti->SetJNIFunctionTable(mOriginal);
    mJvmti->Deallocate(reinterpret_cast<unsigned char*>(const_cast<jniNativeInterface*>(mOriginal)));
  }

 private:
  static void raise(JNIEnv* env) {
    env->ThrowNew(env->FindClass("java/lang/ArrayIndexOutOfBoundsException"), "test");
  }
  jvmtiEnv* mJvmti = nullptr;
  jniNativeInterface* mOriginal = nullptr;
  jniNativeInterface mPatched{};
};

}  // namespace

TEST(JavaInputStream, ReadsInChunksAroundTheTransferArraySkipsAndEnds) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  Bytes data = pattern(1000);
  JavaInputStream in(env, byteInput(env, data), env->NewByteArray(64));
  Bytes got(1000, 0);
  EXPECT_EQ(10, in.read(got.data(), 10));         // within one transfer
  EXPECT_EQ(300, in.read(got.data() + 10, 300));  // several transfers
  EXPECT_EQ(64, in.read(got.data() + 310, 64));   // exactly one
  EXPECT_EQ(626u, in.getLength());                // available()
  EXPECT_EQ(slice(data, 0, 374), slice(got, 0, 374));
  EXPECT_EQ(100, in.read(nullptr, 100));  // a null buffer skips by reading
  EXPECT_EQ(50, in.skip(50));
  unsigned char b = 0;
  EXPECT_EQ(1, in.read(&b, 1));
  EXPECT_EQ(data[524], b);
  EXPECT_FALSE(in.isAtEnd());
  // 475 bytes are left: a longer read returns them and marks the end.
  EXPECT_EQ(475, in.read(got.data(), 600));
  EXPECT_EQ(slice(data, 525, 475), slice(got, 0, 475));
  EXPECT_TRUE(in.isAtEnd());
  EXPECT_EQ(0, in.read(got.data(), 10));
  EXPECT_EQ(0u, in.getLength());

  // A transfer array larger than the request.
  JavaInputStream big(env, byteInput(env, data), env->NewByteArray(4096));
  EXPECT_EQ(100, big.read(got.data(), 100));
  EXPECT_EQ(slice(data, 0, 100), slice(got, 0, 100));
}

TEST(JavaOutputStream, WritesEverythingInChunksOfTheArray) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  jobject sink = newObject(env, "java/io/ByteArrayOutputStream", "()V");
  JavaOutputStream out(env, sink, env->NewByteArray(64));
  Bytes data = pattern(1000);
  EXPECT_EQ(1000, out.write(data.data(), 1000));
  EXPECT_EQ(7, out.write(data.data(), 7));
  out.flush();

  auto written = static_cast<jbyteArray>(
      env->CallObjectMethod(sink, env->GetMethodID(env->GetObjectClass(sink), "toByteArray", "()[B")));
  ASSERT_FALSE(env->ExceptionCheck());
  ASSERT_EQ(1007, env->GetArrayLength(written));
  Bytes got(1007);
  env->GetByteArrayRegion(written, 0, 1007, reinterpret_cast<jbyte*>(got.data()));
  Bytes expected = data;
  expected.insert(expected.end(), data.begin(), data.begin() + 7);
  EXPECT_EQ(expected, got);
}

TEST(JavaStreams, JavaExceptionsBecomeZeroAndALogLine) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  LogCapture cap;
  JavaInputStream in(env, closedFileStream(env, "java/io/FileInputStream"), env->NewByteArray(16));
  Bytes buf(8, 0x77);
  EXPECT_EQ(0, in.read(buf.data(), 8));
  EXPECT_EQ(Bytes(8, 0x77), buf);
  EXPECT_EQ(0, in.skip(4));
  EXPECT_EQ(0u, in.getLength());
  JavaOutputStream out(env, closedFileStream(env, "java/io/FileOutputStream"), env->NewByteArray(16));
  EXPECT_EQ(0, out.write(buf.data(), 8));
  // A buffered stream takes the bytes and fails only when flushed.
  jobject buffered = newObject(env, "java/io/BufferedOutputStream", "(Ljava/io/OutputStream;)V",
                               closedFileStream(env, "java/io/FileOutputStream"));
  JavaOutputStream late(env, buffered, env->NewByteArray(16));
  EXPECT_EQ(8, late.write(buf.data(), 8));
  late.flush();
  {
    JavaInputStream source(env, byteInput(env, pattern(10)), env->NewByteArray(16));
    JavaOutputStream sink(env, newObject(env, "java/io/ByteArrayOutputStream", "()V"), env->NewByteArray(16));
    ThrowingArrayRegions failing(env);
    EXPECT_EQ(0, source.read(buf.data(), 8));
    EXPECT_EQ(Bytes(8, 0x77), buf);
    EXPECT_EQ(0, sink.write(buf.data(), 8));
  }
  EXPECT_FALSE(env->ExceptionCheck());
  for (const char* line :
       {"---- read threw an exception\n", "------- skip threw an exception\n",
        "------- Available threw an exception\n", "------- write threw an exception\n",
        "------- flush threw an exception\n", "---- read:GetByteArrayRegion threw an exception\n",
        "--- write:SetByteArrayElements threw an exception\n"})
    EXPECT_EQ(1, cap.count(line)) << line;
  // Without a transfer array nothing can be read.
  JavaInputStream noArray(env, byteInput(env, pattern(10)), nullptr);
  EXPECT_EQ(0, noArray.read(buf.data(), 8));
}
