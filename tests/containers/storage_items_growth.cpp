// clsZKStorageItems grows its lists geometrically: a run of Add calls reallocates them a
// logarithmic number of times, never once per call. Counted through the program's own
// operator new, which every allocation of the library goes through.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "tsruntime/clsZKStorage.h"

namespace {
long allocations = 0;
}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace tsruntime {
namespace {

TEST(StorageItems, AddReallocatesItsListsLogarithmicallyOften) {
  // Short texts fit inside a String, so storing one allocates nothing of its own.
  for (const int n : {1000, 64000}) {
    auto items = New<clsZKStorageItems>();
    const Variant value(int32_t{12345});
    const long before = allocations;
    for (int i = 0; i < n; ++i) items->Add(value);
    const long made = allocations - before;
    EXPECT_EQ(items->Count(), n);
    EXPECT_LT(made, 100) << n << " calls of Add made " << made << " allocations";
  }
}

}  // namespace
}  // namespace tsruntime
