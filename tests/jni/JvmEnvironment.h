#pragma once

#include <jni.h>

// One JVM for the whole test program (a process can create only one), with
// the library's jars on its class path. Created before the first test.
JNIEnv* testJniEnv();

// A local-reference frame for one test, so references do not pile up.
class LocalFrame {
 public:
  explicit LocalFrame(JNIEnv* env) : mEnv(env) { mEnv->PushLocalFrame(64); }
  ~LocalFrame() { mEnv->PopLocalFrame(nullptr); }

 private:
  JNIEnv* mEnv;
};
