// Native methods of com.orvan.media.effects.pano.PanoramaModule.
#include <jni.h>

#include "core/Export.h"
#include "core/Log.h"
#include "jni/JniHandles.h"
#include "panorama/PanoramaInterface.h"

OV_CAPI jlong Java_com_orvan_media_effects_pano_PanoramaModule_nativeCreate(JNIEnv*, jobject, jint width,
                                                                            jint height, jint format) {
  auto* pano = new PanoramaInterface();
  OV_LOGD("Java_com_orvan_media_effects_pano_PanoramaModule_nativeCreate width:%d, height:%d, format:%d\n",
          width, height, format);
  if (pano->startup(width, height, format, PanoramaModuleOnErrorCallback) == PANORAMA_RESULT_TYPE_NO_ERROR) {
    return orvan::ovjni::longHandleOf(pano);
  }
  pano->close();
  delete pano;
  return 0;
}

OV_CAPI jint Java_com_orvan_media_effects_pano_PanoramaModule_nativeProcess(JNIEnv* env, jobject thiz,
                                                                            jlong handle, jbyteArray data,
                                                                            jfloat gyroX, jfloat gyroY) {
  jbyte* pinned = data != nullptr ? env->GetByteArrayElements(data, nullptr) : nullptr;
  int offsetX = 0;
  int offsetY = 0;
  OV_LOGD(
      "Java_com_orvan_media_effects_pano_PanoramaModule_nativeProcess pano_handle:%p, data:%p, gyroX:%f, "
      "gyroY:%f\n",
      orvan::ovjni::fromLongHandle<void>(handle), static_cast<void*>(pinned), static_cast<double>(gyroX),
      static_cast<double>(gyroY));

  // A missing handle is not an error to the Java side.
  int result = PANORAMA_RESULT_TYPE_NO_ERROR;
  auto* pano = orvan::ovjni::fromLongHandle<PanoramaInterface>(handle);
  if (pano != nullptr) {
    // The module reads a whole frame: a shorter array counts as no frame.
    auto* frame = reinterpret_cast<unsigned char*>(pinned);
    long long needed = static_cast<long long>(pano->getModule().getFrameBytes());
    if (frame != nullptr && env->GetArrayLength(data) < needed) frame = nullptr;
    result = pano->addFrame(frame, gyroX, gyroY, offsetX, offsetY);
    if (result == PANORAMA_RESULT_TYPE_NO_ERROR) {
      jclass cls = env->FindClass("com/orvan/media/effects/pano/PanoramaModule");
      if (cls != nullptr) {
        jfieldID fieldX = env->GetFieldID(cls, "mOffsetX", "I");
        jfieldID fieldY = fieldX != nullptr ? env->GetFieldID(cls, "mOffsetY", "I") : nullptr;
        if (fieldX != nullptr && fieldY != nullptr && env->IsInstanceOf(thiz, cls)) {
          env->SetIntField(thiz, fieldX, offsetX);
          env->SetIntField(thiz, fieldY, offsetY);
        }
        env->DeleteLocalRef(cls);
      }
      if (env->ExceptionCheck()) env->ExceptionClear();
    }
  }

  if (pinned != nullptr) env->ReleaseByteArrayElements(data, pinned, 0);
  return result;
}

OV_CAPI void Java_com_orvan_media_effects_pano_PanoramaModule_nativeDestroy(JNIEnv*, jobject, jlong handle) {
  OV_LOGD("Java_com_orvan_media_effects_pano_PanoramaModule_nativeDestroy  pano_handle:%p\n",
          orvan::ovjni::fromLongHandle<void>(handle));
  auto* pano = orvan::ovjni::fromLongHandle<PanoramaInterface>(handle);
  if (pano != nullptr) {
    pano->close();
    delete pano;
  }
}
