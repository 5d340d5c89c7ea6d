#include "station/history.h"

#include <algorithm>

namespace orsanta {

void C_History::Append(double value) {
  const C_Lock_Guard hold(m_Lock);
  Make_Room(1);
  m_Values.Add(value);
}

void C_History::Append(const CMyArray<double>& values) {
  const C_Lock_Guard hold(m_Lock);
  const int surplus = values.GetSize() > m_Limit ? values.GetSize() - m_Limit : 0;
  Make_Room(values.GetSize() - surplus);
  m_Values.ExpandMem(m_Values.GetSize() + values.GetSize() - surplus);
  for (int i = surplus; i < values.GetSize(); ++i) m_Values.Add(values[i]);
}

// Drops oldest values until n more fit: a quarter of the limit at once, or more where n asks for it.
void C_History::Make_Room(int n) {
  const int excess = m_Values.GetSize() + n - m_Limit;
  if (excess <= 0) return;
  const int dropped = std::max(excess, m_Limit / 4);
  m_Values.RemoveData(0, std::min(dropped, m_Values.GetSize()));
}

CMyArray<double> C_History::Copy() const {
  const C_Lock_Guard hold(m_Lock);
  return m_Values;
}

int C_History::GetSize() const {
  const C_Lock_Guard hold(m_Lock);
  return m_Values.GetSize();
}

void C_History::Clear() {
  const C_Lock_Guard hold(m_Lock);
  m_Values.Clear();
}

}  // namespace orsanta
