#include "gpu/GPUScriptSource.h"

#include <new>

#include "core/Memory.h"
#include "gpu/GPUStrings.h"

GPUScriptSource* GPUScriptSource::createScriptSource(const char* name, const char* source) {
  if (name == nullptr || source == nullptr || name[0] == 0 || source[0] == 0) return nullptr;
  char* nameCopy = orvan::gpu_internal::copyString(name, 100);
  char* sourceCopy = orvan::gpu_internal::copyString(source, 100);
  if (nameCopy == nullptr || sourceCopy == nullptr) {
    galloc_free(nameCopy);
    galloc_free(sourceCopy);
    return nullptr;
  }
  GPUScriptSource* result = new (std::nothrow) GPUScriptSource(nameCopy, sourceCopy);
  if (result == nullptr) {
    galloc_free(nameCopy);
    galloc_free(sourceCopy);
  }
  return result;
}

GPUScriptSource::GPUScriptSource(char* name, char* source) : mName(name), mSource(source) {}

GPUScriptSource::~GPUScriptSource() {
  galloc_free(mName);
  galloc_free(mSource);
  mName = nullptr;
  mSource = nullptr;
}
