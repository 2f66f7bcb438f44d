// JavaInputStream / JavaOutputStream over real java.io streams.
#include <gtest/gtest.h>

#include <cstdarg>
#include <vector>

#include "JvmEnvironment.h"
#include "core/JavaStream.h"
#include "support/LogCapture.h"

namespace {

std::vector<unsigned char> pattern(int n) {
  std::vector<unsigned char> v(n);
  for (int i = 0; i < n; ++i) v[i] = static_cast<unsigned char>(i * 13 + 5);
  return v;
}

jbyteArray javaBytes(JNIEnv* env, const std::vector<unsigned char>& v) {
  jbyteArray a = env->NewByteArray(static_cast<jsize>(v.size()));
  env->SetByteArrayRegion(a, 0, static_cast<jsize>(v.size()), reinterpret_cast<const jbyte*>(v.data()));
  return a;
}

jobject newObject(JNIEnv* env, const char* cls, const char* sig, ...) {
  jclass c = env->FindClass(cls);
  jmethodID ctor = env->GetMethodID(c, "<init>", sig);
  va_list args;
  va_start(args, sig);
  jobject o = env->NewObjectV(c, ctor, args);
  va_end(args);
  EXPECT_FALSE(env->ExceptionCheck());
  return o;
}

jobject byteInput(JNIEnv* env, const std::vector<unsigned char>& v) {
  return newObject(env, "java/io/ByteArrayInputStream", "([B)V", javaBytes(env, v));
}

// A FileInputStream / FileOutputStream on /dev/null that is already closed:
// every real operation on it throws IOException.
jobject closedFileStream(JNIEnv* env, const char* cls) {
  jobject s = newObject(env, cls, "(Ljava/lang/String;)V", env->NewStringUTF("/dev/null"));
  env->CallVoidMethod(s, env->GetMethodID(env->FindClass(cls), "close", "()V"));
  EXPECT_FALSE(env->ExceptionCheck());
  return s;
}

}  // namespace

TEST(JavaInputStream, ReadsInChunksAroundTheTransferArray) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  std::vector<unsigned char> data = pattern(1000);
  JavaInputStream in(env, byteInput(env, data), env->NewByteArray(64));

  std::vector<unsigned char> got(1000, 0);
  EXPECT_EQ(10, in.read(got.data(), 10));         // within one transfer
  EXPECT_EQ(300, in.read(got.data() + 10, 300));  // several transfers
  EXPECT_EQ(64, in.read(got.data() + 310, 64));   // exactly one
  EXPECT_EQ(310u + 64u, in.getBytesRead());
  EXPECT_EQ(1000u - 374u, in.getLength());  // available()
  EXPECT_FALSE(in.isAtEnd());
  EXPECT_EQ(626, in.read(got.data() + 374, 626));
  EXPECT_EQ(data, got);
  // A transfer array larger than the request.
  JavaInputStream big(env, byteInput(env, data), env->NewByteArray(4096));
  std::vector<unsigned char> part(100);
  EXPECT_EQ(100, big.read(part.data(), 100));
  EXPECT_EQ(std::vector<unsigned char>(data.begin(), data.begin() + 100), part);
}

TEST(JavaInputStream, SkipsAndReachesTheEnd) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  std::vector<unsigned char> data = pattern(300);
  JavaInputStream in(env, byteInput(env, data), env->NewByteArray(32));
  EXPECT_EQ(100, in.read(nullptr, 100));
  EXPECT_EQ(50, in.skip(50));
  unsigned char b = 0;
  EXPECT_EQ(1, in.read(&b, 1));
  EXPECT_EQ(data[150], b);
  // 149 bytes are left: a longer read returns them and marks the end.
  std::vector<unsigned char> rest(400, 0);
  EXPECT_EQ(149, in.read(rest.data(), 400));
  EXPECT_TRUE(in.isAtEnd());
  EXPECT_EQ(std::vector<unsigned char>(data.begin() + 151, data.end()),
            std::vector<unsigned char>(rest.begin(), rest.begin() + 149));
  EXPECT_EQ(0, in.read(rest.data(), 10));
  EXPECT_EQ(0, in.getLength());

  // Skipping past the end stops where the data does.
  JavaInputStream shortIn(env, byteInput(env, pattern(20)), env->NewByteArray(8));
  EXPECT_EQ(20, shortIn.read(nullptr, 50));
  EXPECT_TRUE(shortIn.isAtEnd());
  EXPECT_EQ(0, shortIn.seek(5, Stream::SEEK_ORIGN_BEGIN));
  EXPECT_EQ(1, shortIn.rewind());
  EXPECT_EQ(0, shortIn.write(rest.data(), 4));
}

TEST(JavaInputStream, JavaExceptionsBecomeZero) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  LogCapture cap;
  JavaInputStream in(env, closedFileStream(env, "java/io/FileInputStream"), env->NewByteArray(16));
  std::vector<unsigned char> buf(8, 0x77);
  EXPECT_EQ(0, in.read(buf.data(), 8));
  EXPECT_FALSE(env->ExceptionCheck());
  EXPECT_EQ(1, cap.count("---- read threw an exception\n"));
  EXPECT_EQ(std::vector<unsigned char>(8, 0x77), buf);
  EXPECT_EQ(0, in.skip(4));
  EXPECT_EQ(1, cap.count("------- skip threw an exception\n"));
  EXPECT_EQ(0u, in.getLength());
  EXPECT_EQ(1, cap.count("------- Available threw an exception\n"));
  EXPECT_FALSE(env->ExceptionCheck());
  // Without a usable transfer array nothing can be read.
  JavaInputStream noArray(env, byteInput(env, pattern(10)), nullptr);
  EXPECT_EQ(0, noArray.read(buf.data(), 8));
  JavaInputStream emptyArray(env, byteInput(env, pattern(10)), env->NewByteArray(0));
  EXPECT_EQ(0, emptyArray.read(buf.data(), 8));
}

TEST(JavaOutputStream, WritesEverythingInChunksOfTheArray) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  jobject sink = newObject(env, "java/io/ByteArrayOutputStream", "()V");
  JavaOutputStream out(env, sink, env->NewByteArray(64));
  std::vector<unsigned char> data = pattern(1000);
  EXPECT_EQ(1000, out.write(data.data(), 1000));
  EXPECT_EQ(7, out.write(data.data(), 7));
  EXPECT_EQ(0, out.write(data.data(), 0));
  out.flush();

  auto written = static_cast<jbyteArray>(
      env->CallObjectMethod(sink, env->GetMethodID(env->GetObjectClass(sink), "toByteArray", "()[B")));
  ASSERT_FALSE(env->ExceptionCheck());
  ASSERT_EQ(1007, env->GetArrayLength(written));
  std::vector<unsigned char> got(1007);
  env->GetByteArrayRegion(written, 0, 1007, reinterpret_cast<jbyte*>(got.data()));
  std::vector<unsigned char> expected = data;
  expected.insert(expected.end(), data.begin(), data.begin() + 7);
  EXPECT_EQ(expected, got);
  EXPECT_EQ(0, out.read(got.data(), 4));
  EXPECT_EQ(0u, out.getLength());
}

TEST(JavaOutputStream, JavaExceptionsBecomeZero) {
  JNIEnv* env = testJniEnv();
  LocalFrame frame(env);
  LogCapture cap;
  std::vector<unsigned char> data = pattern(100);
  JavaOutputStream out(env, closedFileStream(env, "java/io/FileOutputStream"), env->NewByteArray(16));
  EXPECT_EQ(0, out.write(data.data(), 100));
  EXPECT_EQ(1, cap.count("------- write threw an exception\n"));
  EXPECT_FALSE(env->ExceptionCheck());

  // A buffered stream over a closed file throws when it flushes.
  jobject buffered = newObject(env, "java/io/BufferedOutputStream", "(Ljava/io/OutputStream;)V",
                               closedFileStream(env, "java/io/FileOutputStream"));
  JavaOutputStream bufferedOut(env, buffered, env->NewByteArray(16));
  EXPECT_EQ(100, bufferedOut.write(data.data(), 100));
  bufferedOut.flush();
  EXPECT_EQ(1, cap.count("------- flush threw an exception\n"));
  EXPECT_FALSE(env->ExceptionCheck());
}
