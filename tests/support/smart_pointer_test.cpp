#include "support/base/smart_pointer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "support/threads/thread.h"

namespace orsanta {
namespace {

struct C_Alive {
  C_Alive() { ++live; }
  ~C_Alive() { --live; }
  static inline std::atomic<int> live{0};
};

using C_Pointer = CSmartPointer<C_Alive, 0>;

TEST(Smart_Pointer, The_Last_Copy_Frees_Objects_And_Arrays_And_Their_Records) {
  const int records_before = smart_pointer_table::Live_Records();
  {
    C_Pointer last;
    {
      const C_Pointer first(1);
      C_Pointer many(3);
      EXPECT_EQ(C_Alive::live, 4);
      EXPECT_EQ(smart_pointer_table::Live_Records(), records_before + 2);
      last = first;
      last = *&last;
      many = C_Pointer();  // gives the array back
    }
    EXPECT_EQ(C_Alive::live, 1);
    for (int i = 0; i < 2; ++i) last.ReleaseCurSmartPointReference();
    EXPECT_EQ(C_Alive::live, 0);
  }
  EXPECT_EQ(smart_pointer_table::Live_Records(), records_before);

  // A place that is used again has a new serial.
  int object = 0;
  smart_pointer_table::C_Place places[2];
  for (auto& place : places) {
    place = smart_pointer_table::Enter(&object, 1);
    EXPECT_TRUE(smart_pointer_table::Release(place.heap_id, &object));
  }
  EXPECT_EQ(places[1].heap_id, places[0].heap_id);
  EXPECT_EQ(places[1].serial, places[0].serial + 1);
}

TEST(Smart_Pointer, Threads_Copy_And_Release_The_Same_Object) {
  constexpr int Threads = 4, Least_Turns = 20000;
  const int records_before = smart_pointer_table::Live_Records();
  {
    const C_Pointer shared(1);
    std::atomic<int> begun{0}, ready{0};
    C_Thread threads[Threads];
    for (C_Thread& thread : threads) {
      thread.Start("copier", [&] {
        for (++begun; begun < Threads;) continue;
        // All go on until the last has made its turns, so that they never stop to overlap.
        for (int i = 0; ready < Threads; ++i) {
          const std::vector<C_Pointer> copies(30, shared);
          C_Pointer own(1 + i % 2);
          own = shared;
          if (i == Least_Turns) ++ready;
        }
      });
    }
    for (C_Thread& thread : threads) thread.Join();
    EXPECT_EQ(C_Alive::live, 1);
  }
  EXPECT_EQ(C_Alive::live, 0);
  EXPECT_EQ(smart_pointer_table::Live_Records(), records_before);
}

}  // namespace
}  // namespace orsanta
