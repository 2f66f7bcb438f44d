#pragma once

#include <cstddef>

#include "core/Atomic.h"
#include "core/Export.h"

// Base of every shared object. The count starts at 0: a new object belongs to
// nobody until the first auto_ptr takes it, and the holder that drops the
// count back to 0 deletes it.
class OV_EXPORT RefBase {
 public:
  RefBase() : mRefCount(0) {}
  RefBase(const RefBase&) : mRefCount(0) {}
  RefBase& operator=(const RefBase&) { return *this; }
  virtual ~RefBase();

  // Kept so that derived virtuals start after it; nothing calls it.
  virtual int baseQuery();

  int incStrong() { return atomic_inc32(&mRefCount); }
  int decStrong() { return atomic_dec32(&mRefCount); }
  int getRefCount() const { return __atomic_load_n(&mRefCount, __ATOMIC_SEQ_CST); }

 private:
  int mRefCount;
};

// Intrusive strong pointer (not the standard library's class of that name):
// every non-null auto_ptr holds exactly one count on its target.
template <typename T>
class auto_ptr {
 public:
  auto_ptr() : mPtr(nullptr) {}
  auto_ptr(std::nullptr_t) : mPtr(nullptr) {}
  auto_ptr(T* p) : mPtr(p) {
    if (mPtr != nullptr) mPtr->incStrong();
  }
  auto_ptr(const auto_ptr& other) : auto_ptr(other.mPtr) {}
  template <typename U>
  auto_ptr(const auto_ptr<U>& other) : auto_ptr(static_cast<T*>(other.get())) {}

  virtual ~auto_ptr() {
    if (mPtr != nullptr && mPtr->decStrong() == 0) delete mPtr;
    mPtr = nullptr;
  }

  auto_ptr& operator=(const auto_ptr& other) { return assign(other.mPtr); }
  template <typename U>
  auto_ptr& operator=(const auto_ptr<U>& other) {
    return assign(static_cast<T*>(other.get()));
  }
  auto_ptr& operator=(T* p) { return assign(p); }
  auto_ptr& operator=(std::nullptr_t) { return assign(nullptr); }

  T* get() const { return mPtr; }
  T* operator->() const { return mPtr; }
  T& operator*() const { return *mPtr; }
  explicit operator bool() const { return mPtr != nullptr; }
  bool operator==(std::nullptr_t) const { return mPtr == nullptr; }
  bool operator!=(std::nullptr_t) const { return mPtr != nullptr; }
  bool operator==(const T* p) const { return mPtr == p; }
  bool operator!=(const T* p) const { return mPtr != p; }

 private:
  // Take the new count before dropping the old one, so self-assignment is safe.
  auto_ptr& assign(T* p) {
    if (p != nullptr) p->incStrong();
    if (mPtr != nullptr && mPtr->decStrong() == 0) {
      delete mPtr;
      mPtr = nullptr;
    }
    mPtr = p;
    return *this;
  }

  T* mPtr;
};
