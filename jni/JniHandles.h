#pragma once

#include <jni.h>

#include <cstdint>

// Java int handles for native objects. A 64-bit address does not fit a Java
// int, so 64-bit builds hand out small non-zero ids from a locked table (an id
// is not reused while its object lives; unknown ids resolve to null, like 0).
// On 32-bit builds the handle is the address itself.
namespace orvan::ovjni {

// A new handle for p, or 0 when p is null or the table is full.
jint intHandleAdd(void* p);
// The object of a handle, or null for 0 and unknown handles.
void* intHandleGet(jint handle);
// Forgets a handle and returns its object (null for 0 and unknown handles).
void* intHandleRemove(jint handle);

// Java long handles carry the full pointer.
inline jlong longHandleOf(void* p) { return static_cast<jlong>(reinterpret_cast<intptr_t>(p)); }
template <typename T>
inline T* fromLongHandle(jlong handle) {
  return reinterpret_cast<T*>(static_cast<intptr_t>(handle));
}

}  // namespace orvan::ovjni
