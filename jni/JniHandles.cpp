#include "jni/JniHandles.h"

#include <cstdint>
#include <mutex>
#include <unordered_map>

namespace orvan::ovjni {

#if UINTPTR_MAX > 0xffffffffu

namespace {

// Live objects at once; beyond this nativeCreate refuses.
const size_t kMaxHandles = 65536;

struct HandleTable {
  std::mutex lock;
  std::unordered_map<jint, void*> objects;
  jint last = 0;
};

// Built on first use: nothing runs at load time.
HandleTable& table() {
  static HandleTable* t = new HandleTable();
  return *t;
}

}  // namespace

jint intHandleAdd(void* p) {
  if (p == nullptr) return 0;
  HandleTable& t = table();
  std::lock_guard<std::mutex> guard(t.lock);
  if (t.objects.size() >= kMaxHandles) return 0;
  // Ids count up through the positive ints and wrap, skipping live ones.
  jint id = t.last;
  do {
    id = id == INT32_MAX ? 1 : id + 1;
  } while (t.objects.count(id) != 0);
  t.last = id;
  t.objects.emplace(id, p);
  return id;
}

void* intHandleGet(jint handle) {
  if (handle == 0) return nullptr;
  HandleTable& t = table();
  std::lock_guard<std::mutex> guard(t.lock);
  auto it = t.objects.find(handle);
  return it == t.objects.end() ? nullptr : it->second;
}

void* intHandleRemove(jint handle) {
  if (handle == 0) return nullptr;
  HandleTable& t = table();
  std::lock_guard<std::mutex> guard(t.lock);
  auto it = t.objects.find(handle);
  if (it == t.objects.end()) return nullptr;
  void* p = it->second;
  t.objects.erase(it);
  return p;
}

#else

jint intHandleAdd(void* p) { return static_cast<jint>(reinterpret_cast<intptr_t>(p)); }
void* intHandleGet(jint handle) { return reinterpret_cast<void*>(static_cast<intptr_t>(handle)); }
void* intHandleRemove(jint handle) { return intHandleGet(handle); }

#endif

}  // namespace orvan::ovjni
