// Native methods of com.orvan.media.supercapture.mode.SuperCaptureMode.
#include <jni.h>

#include <cstdint>

#include "core/Export.h"
#include "core/Log.h"
#include "core/SizeRule.h"
#include "jni/JniHandles.h"
#include "jni/SuperCaptureMode.h"

OV_CAPI jint Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeCreate(JNIEnv*, jobject,
                                                                                  jint width, jint height,
                                                                                  jint format) {
  OV_LOGD(
      "Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeCreate  width:%d, height:%d, "
      "format:%d\n",
      width, height, format);
  // A size of 0 is accepted (such a monitor ignores every frame); negative
  // sizes and luma planes beyond an int are not.
  if (orvan::sizerule::intCount(width, height) < 0) return 0;
  auto* mode = new SuperCaptureMode();
  mode->init(static_cast<unsigned int>(width), static_cast<unsigned int>(height),
             static_cast<unsigned int>(format));
  jint handle = orvan::ovjni::intHandleAdd(mode);
  if (handle == 0) delete mode;
  return handle;
}

OV_CAPI void Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeProcess(JNIEnv* env, jobject thiz,
                                                                                   jint handle,
                                                                                   jbyteArray data) {
  if (data == nullptr) return;
  jbyte* bytes = env->GetByteArrayElements(data, nullptr);
  auto* mode = static_cast<SuperCaptureMode*>(orvan::ovjni::intHandleGet(handle));
  // The monitor reads a whole luma plane: a shorter array is not read at all.
  if (mode != nullptr && bytes != nullptr && env->GetArrayLength(data) >= mode->lumaSize()) {
    mode->process(env, thiz, reinterpret_cast<unsigned char*>(bytes));
  }
  if (bytes != nullptr) env->ReleaseByteArrayElements(data, bytes, 0);
}

OV_CAPI void Java_com_orvan_media_supercapture_mode_SuperCaptureMode_nativeDestroy(JNIEnv*, jobject,
                                                                                   jint handle) {
  delete static_cast<SuperCaptureMode*>(orvan::ovjni::intHandleRemove(handle));
}
