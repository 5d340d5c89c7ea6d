// C_History: a row of measured values that one thread appends to while others copy or clear it.
//
// Any thread may call any operation; a leaf lock inside guards the values. The row is bounded, so that months of
// running stay in bounded memory: it never holds more than its limit. When it is full the oldest quarter goes at once,
// so that trimming costs next to nothing for each value; the newest values are always kept.
#pragma once

#include "support/base/array.h"
#include "support/time/lock.h"
#include "support/time/uncopied.h"

namespace orsanta {

class C_History : private C_Uncopied {
 public:
  // limit: greatest number of values held, at least 4.
  explicit C_History(int limit) : m_Limit(limit) { MY_ASSERT(limit >= 4); }

  void Append(double value);
  // Appends the values in their order; of more than the limit only the newest stay.
  void Append(const CMyArray<double>& values);
  CMyArray<double> Copy() const;
  int GetSize() const;
  // Empties the row and frees its memory.
  void Clear();

 private:
  void Make_Room(int n) REQUIRES(m_Lock);

  const int m_Limit;
  mutable C_Leaf_Lock m_Lock;
  CMyArray<double> m_Values GUARDED_BY(m_Lock);  // oldest first
};

}  // namespace orsanta
