// CMyArray: the one growable array of the system.
//
// Every access is checked, and a failed check is an assertion report (support/base/assertion.h), not an error code. The
// array has no lock: an array that two threads share is guarded by its owner.
//
// Invariant: 0 <= count <= size, and the memory holds `size` constructed elements. Elements that a removal leaves
// behind stay constructed in the block until it is freed; a later Add assigns over them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <utility>

#include "support/base/assertion.h"

namespace orsanta {

template <class T>
class CMyArray {
 public:
  CMyArray() = default;

  CMyArray(const CMyArray& other) {
    ReallocateMem(other.m_nCount);
    for (int i = 0; i < m_nCount; ++i) m_pData[i] = other.m_pData[i];
  }

  CMyArray(CMyArray&& other) noexcept { swap(other); }

  CMyArray& operator=(CMyArray other) noexcept {
    swap(other);
    return *this;
  }

  ~CMyArray() { delete[] m_pData; }

  // Number of elements in use.
  int GetSize() const { return m_nCount; }
  // Number of elements allocated.
  int GetAllocatedSize() const { return m_nSize; }
  // The elements, null while nothing is allocated. Valid until the next growth or Clear.
  T* GetData() { return m_pData; }
  const T* GetData() const { return m_pData; }

  // Element i, which must be in use.
  T& GetAt(int64_t i) {
    MY_ASSERT(i < m_nCount);
    MY_ASSERT(i >= 0);
    return m_pData[i];
  }
  const T& GetAt(int64_t i) const {
    MY_ASSERT(i < m_nCount);
    MY_ASSERT(i >= 0);
    return m_pData[i];
  }
  T& operator[](int64_t i) { return GetAt(i); }
  const T& operator[](int64_t i) const { return GetAt(i); }

  // The last element; there must be one.
  T& GetEndData() {
    MY_ASSERT(m_nCount >= 1);
    return m_pData[m_nCount - 1];
  }

  // Address of element i, unchecked: it serves byte blocks, where one past the end is asked for too.
  T* operator+(int i) { return m_pData + i; }

  // Sets the count to n. Elements in use are kept; new ones hold whatever the block holds.
  void SetArraySize(int n) {
    MY_ASSERT(n >= 0);
    if (m_nSize < n) ExpandMem(n);
    m_nCount = n;
  }

  // Sets the count to n and fills the places that this call allocated, up to n - 1.
  // Required: places below the old allocated size keep what they held, and nothing is filled when the block was large
  // enough; callers that grow rows rely on it.
  void SetArraySize(int n, T fill) {
    MY_ASSERT(n >= 0);
    if (m_nSize < n) {
      const int old_size = m_nSize;
      m_nCount = old_size;  // so that the places beyond the count move to the new block too
      ExpandMem(n);
      for (int i = old_size; i < n; ++i) m_pData[i] = fill;
    }
    m_nCount = n;
  }

  // Makes room for n elements, by doubling so that a loop of appends copies only at each power of two. Keeps the count.
  void ExpandMem(int n) {
    if (n <= m_nSize || n <= 0) return;  // the second test prevents a false warning about an array of length 0
    // Beyond the middle of the range doubling would overflow.
    const int nDoubled = m_nSize <= std::numeric_limits<int>::max() / 2 ? m_nSize * 2 : n;
    const int nNewSize = nDoubled < n ? n : nDoubled;
    T* pNewData = new (std::nothrow) T[static_cast<size_t>(nNewSize)];
    if (pNewData == nullptr) Report_No_Memory(nNewSize);
    for (int i = 0; i < m_nCount; ++i) pNewData[i] = m_pData[i];
    delete[] m_pData;
    m_pData = pNewData;
    m_nSize = nNewSize;
  }

  // Sets the count to n for a caller that overwrites all of it: the old content is gone if the block had to grow.
  void ReallocateMem(int n) {
    if (n <= m_nSize) {
      m_nCount = n;
      return;
    }
    delete[] m_pData;
    m_nCount = m_nSize = 0;
    m_pData = new (std::nothrow) T[static_cast<size_t>(n)];
    MY_ASSERT(m_pData != nullptr);
    m_nCount = m_nSize = n;
  }

  void Add(T value) {
    ExpandMem(m_nCount + 1);
    m_pData[m_nCount] = std::move(value);
    ++m_nCount;
  }

  // Drops the last element; there must be one.
  void DelEndData() {
    MY_ASSERT(m_nCount >= 1);
    --m_nCount;
  }

  // Drops the first element; there must be one.
  void DelStartData() {
    MY_ASSERT(m_nCount >= 1);
    int first = 0;
    RemoveData(&first, 1);
  }

  // Removes n elements from `start` on and closes the gap. n = 0 changes nothing.
  void RemoveData(int start, int n) {
    MY_ASSERT(start >= 0);
    if (n == 0) return;
    MY_ASSERT(int64_t{start} + n <= m_nCount);
    MY_ASSERT(n >= 1);
    Move_Down(start + n, m_nCount, start);
    m_nCount -= n;
  }

  // Removes the n places that `indices` lists in strictly ascending order, in one pass: each element moves at most
  // once. n = 0 changes nothing.
  void RemoveData(const int* indices, int n) {
    if (n == 0) return;
    MY_ASSERT(n - 1 < m_nCount);
    int write = indices[0];
    for (int k = 0; k + 1 < n; ++k) {
      const int from = indices[k] + 1;
      const int to = indices[k + 1];
      MY_ASSERT(from <= to);
      MY_ASSERT(to < m_nCount);
      MY_ASSERT(from >= 1);
      write = Move_Down(from, to, write);
    }
    const int tail = indices[n - 1] + 1;
    MY_ASSERT(tail >= 1);
    MY_ASSERT(tail <= m_nCount);
    m_nCount = Move_Down(tail, m_nCount, write);
  }

  // Copies n elements from `start` on into out, which may be this array itself.
  void GetSubArray(int start, int n, CMyArray<T>& out) const {
    MY_ASSERT(start >= 0);
    MY_ASSERT(start <= m_nCount);
    MY_ASSERT(n >= 0);
    MY_ASSERT(int64_t{start} + n <= m_nCount);
    if (&out == this || (m_pData != nullptr && out.m_pData == m_pData)) {
      const CMyArray<T> source(*this);
      source.GetSubArray(start, n, out);
      return;
    }
    out.SetArraySize(n);
    for (int i = 0; i < n; ++i) out.m_pData[i] = m_pData[start + i];
  }

  // Empties the array and frees its memory.
  void Clear() {
    m_nCount = 0;
    delete[] m_pData;
    m_nSize = 0;
    m_pData = nullptr;
  }

  void swap(CMyArray& other) noexcept {
    std::swap(m_pData, other.m_pData);
    std::swap(m_nCount, other.m_nCount);
    std::swap(m_nSize, other.m_nSize);
  }

  // Range-for over the elements in use.
  T* begin() { return m_pData; }
  T* end() { return m_pData + m_nCount; }
  const T* begin() const { return m_pData; }
  const T* end() const { return m_pData + m_nCount; }

 private:
  // Moves the elements from..to-1 down to `write`, in ascending order; returns the place behind the last one written.
  int Move_Down(int from, int to, int write) {
    for (int i = from; i < to; ++i) m_pData[write++] = std::move(m_pData[i]);
    return write;
  }

  [[noreturn]] static void Report_No_Memory(int nNewSize) {
    MY_ASSERT_REPORT(Format_Utf8("CMyArray<T>::ExpandMem错误: T* pNewData = new T[nNewSize]; nNewSize = %d", nNewSize));
  }

  T* m_pData = nullptr;
  int m_nCount = 0;
  int m_nSize = 0;
};

}  // namespace orsanta
