#include <gtest/gtest.h>

#include "core/Atomic.h"
#include "core/RefBase.h"

namespace {

// Counts destructions so "deleted exactly once" is observable.
struct Tracked : RefBase {
  explicit Tracked(int* deaths) : deaths(deaths) {}
  ~Tracked() override { ++*deaths; }
  int* deaths;
};
struct Derived : Tracked {
  using Tracked::Tracked;
};

TEST(RefBase, CountFollowsHoldersAndLastOneDeletesOnce) {
  int deaths = 0;
  auto* obj = new Tracked(&deaths);
  EXPECT_EQ(obj->getRefCount(), 0);
  {
    auto_ptr<Tracked> a(obj);
    {
      auto_ptr<Tracked> b(a);
      auto_ptr<Tracked> c;
      c = b;
      EXPECT_EQ(obj->getRefCount(), 3);
    }
    EXPECT_EQ(obj->getRefCount(), 1);
    // Self-assignment, through a reference or the raw pointer, keeps object and count.
    auto_ptr<Tracked>& alias = a;
    a = alias;
    a = a.get();
    EXPECT_EQ(obj->getRefCount(), 1);
    EXPECT_EQ(deaths, 0);
  }
  EXPECT_EQ(deaths, 1);
}

TEST(RefBase, ReassignmentNullAndDerivedCopies) {
  int deathsA = 0, deathsB = 0;
  auto_ptr<Tracked> p(new Tracked(&deathsA));
  p = new Tracked(&deathsB);
  EXPECT_EQ(deathsA, 1);
  EXPECT_EQ(deathsB, 0);
  p = nullptr;
  EXPECT_EQ(deathsB, 1);
  p = nullptr;  // releasing an empty pointer is harmless
  EXPECT_EQ(deathsB, 1);
  // A converting copy from a derived pointer shares the one count.
  int deaths = 0;
  auto_ptr<Derived> d(new Derived(&deaths));
  {
    auto_ptr<Tracked> base(d);
    EXPECT_EQ(base.get(), d.get());
    EXPECT_EQ(d->getRefCount(), 2);
  }
  EXPECT_EQ(d->getRefCount(), 1);
  d = nullptr;
  EXPECT_EQ(deaths, 1);
}

TEST(Atomics, ReturnTheNewValue) {
  int v = 0;
  EXPECT_EQ(atomic_inc32(&v), 1);
  EXPECT_EQ(atomic_dec32(&v), 0);
  EXPECT_EQ(atomic_dec32(&v), -1);
  v = 10;
  EXPECT_EQ(atomic_add32(&v, 5), 15);
  // The addend is unsigned: adding 2^32 - 1 is subtracting one modulo 2^32.
  EXPECT_EQ(atomic_add32(&v, 0xFFFFFFFFu), 14);
  v = 0x7FFFFFFF;
  EXPECT_EQ(atomic_inc32(&v), static_cast<int>(0x80000000u));
}

}  // namespace
