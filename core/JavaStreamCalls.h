#pragma once

#include <jni.h>

// JNI steps shared by the two java.io stream adapters.
namespace orvan::javastream {

// Describes and clears a pending Java exception; true if there was one.
inline bool takeException(JNIEnv* env) {
  if (!env->ExceptionCheck()) return false;
  env->ExceptionDescribe();
  env->ExceptionClear();
  return true;
}

// Method ids of one java.io class; the class reference is not kept.
inline jmethodID lookUp(JNIEnv* env, jclass cls, const char* name, const char* sig) {
  if (cls == nullptr) return nullptr;
  jmethodID id = env->GetMethodID(cls, name, sig);
  if (id == nullptr && env->ExceptionCheck()) env->ExceptionClear();
  return id;
}

inline unsigned int arrayLength(JNIEnv* env, jbyteArray array) {
  if (env == nullptr || array == nullptr) return 0;
  jsize n = env->GetArrayLength(array);
  return n > 0 ? static_cast<unsigned int>(n) : 0;
}

}  // namespace orvan::javastream
