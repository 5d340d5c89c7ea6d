// The server's FIFO of one input channel. A full FIFO keeps its old samples and drops new ones.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace simulator {

class C_Sample_Fifo {
 public:
  static constexpr int Default_Depth = 256;
  static constexpr int Depth_Limit = 65536;

  void Reset(int depth) {
    m_Values.assign(static_cast<size_t>(depth), 0.0);
    m_Indices.assign(static_cast<size_t>(depth), 0);
    m_First = m_Count = 0;
  }

  bool Full() const { return m_Count == m_Values.size(); }

  void Push(double value, uint64_t index) {
    if (Full()) return;
    size_t place = m_First + m_Count;
    if (place >= m_Values.size()) place -= m_Values.size();
    m_Values[place] = value;
    m_Indices[place] = index;
    ++m_Count;
  }

  // Takes out up to max_count samples, oldest first; returns how many. indices may be null.
  int Take(int max_count, double* values, uint64_t* indices) {
    const size_t taken = std::min(m_Count, static_cast<size_t>(std::max(max_count, 0)));
    for (size_t i = 0; i < taken; ++i) {
      values[i] = m_Values[m_First];
      if (indices != nullptr) indices[i] = m_Indices[m_First];
      if (++m_First == m_Values.size()) m_First = 0;
    }
    m_Count -= taken;
    return static_cast<int>(taken);
  }

 private:
  std::vector<double> m_Values = std::vector<double>(Default_Depth);
  std::vector<uint64_t> m_Indices = std::vector<uint64_t>(Default_Depth);
  size_t m_First = 0;
  size_t m_Count = 0;
};

}  // namespace simulator
