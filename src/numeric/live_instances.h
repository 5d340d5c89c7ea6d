// The count of live objects of a class that holds no data.
//
// The numeric classes are made for one call and dropped after it. The first live object starts the floating-point
// constants (not-a-number and the two infinities) and the last one ends them; where the machine has IEEE numbers, as
// is checked here, the constants stand in the instruction set and the count is all that is left to keep.
//
// Any thread may make and drop objects.
#pragma once

#include <atomic>
#include <limits>

namespace orsanta {

static_assert(std::numeric_limits<double>::is_iec559, "not-a-number and infinity must be those of IEEE 754");

// Base of the class to be counted: class C_Thing : public C_Live_Instances<C_Thing>.
template <class Owner>
class C_Live_Instances {
 public:
  // Number of objects of Owner alive in the process at this moment.
  static int Live_Instances() { return m_Count.load(std::memory_order_relaxed); }

 protected:
  C_Live_Instances() { m_Count.fetch_add(1, std::memory_order_relaxed); }
  C_Live_Instances(const C_Live_Instances&) : C_Live_Instances() {}
  C_Live_Instances& operator=(const C_Live_Instances&) = default;
  ~C_Live_Instances() { m_Count.fetch_sub(1, std::memory_order_relaxed); }

 private:
  inline static std::atomic<int> m_Count{0};
};

}  // namespace orsanta
