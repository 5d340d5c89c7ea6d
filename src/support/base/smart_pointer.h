// CSmartPointer: a reference-counted owning pointer, counted in one process-wide table. Any thread may copy and
// release; the object itself has no lock.
#pragma once

#include <cstdint>
#include <new>
#include <utility>

#include "support/base/array.h"

namespace orsanta {

// The record of one allocation. A record whose pData is null is free; nSerial counts the uses of a place.
struct CSmartHeapDataStruct {
  int nRef = 0;
  void* pData = nullptr;
  int nCount = 0;
  int nSerial = 0;
};

// The process-wide table behind all pointers (smart_pointer.cpp).
namespace smart_pointer_table {
struct C_Place {
  uint32_t heap_id;
  int serial;
};
C_Place Enter(void* data, int count);  // takes a record with one reference
void Add_Reference(uint32_t heap_id);
bool Release(uint32_t heap_id, void* data);  // true when it was the last reference: the caller deletes the object
int Live_Records();                          // for tests: records in use
}  // namespace smart_pointer_table

template <class T, int Variant = 0>
class CSmartPointer {
 public:
  // n = 0: an empty pointer. n = 1: a new T. n > 1: a new array of n.
  explicit CSmartPointer(int n = 0) {
    if (n == 0) return;
    MY_ASSERT(n >= 1);
    T* data = n == 1 ? new (std::nothrow) T : new (std::nothrow) T[static_cast<size_t>(n)];
    MY_ASSERT(data != nullptr);
    const smart_pointer_table::C_Place place = smart_pointer_table::Enter(data, n);
    m_nHeapID = place.heap_id;
    m_nSerial = place.serial;
    m_nCount = n;
    m_pT = data;
  }

  CSmartPointer(const CSmartPointer& other)
      : m_bNoCount(other.m_bNoCount),
        m_pT(other.m_pT),
        m_nHeapID(other.m_nHeapID),
        m_nCount(other.m_nCount),
        m_nSerial(other.m_nSerial) {
    if (m_pT != nullptr && m_nHeapID != No_Heap_ID && m_bNoCount == 0) smart_pointer_table::Add_Reference(m_nHeapID);
  }

  CSmartPointer& operator=(CSmartPointer other) noexcept {
    std::swap(m_bNoCount, other.m_bNoCount);
    std::swap(m_pT, other.m_pT);
    std::swap(m_nHeapID, other.m_nHeapID);
    std::swap(m_nCount, other.m_nCount);
    std::swap(m_nSerial, other.m_nSerial);
    return *this;
  }

  ~CSmartPointer() { ReleaseCurSmartPointReference(); }

  // Releases this pointer's reference and empties it; the last one deletes the object.
  void ReleaseCurSmartPointReference() {
    T* data = m_pT;
    m_pT = nullptr;
    if (data == nullptr || m_bNoCount != 0) return;
    if (!smart_pointer_table::Release(m_nHeapID, data)) return;
    if (m_nCount == 1) {
      delete data;
    } else {
      delete[] data;
    }
  }

  T* Get() const { return m_pT; }
  T* operator->() const { return m_pT; }
  T& operator*() const { return *m_pT; }
  explicit operator bool() const { return m_pT != nullptr; }

 private:
  static constexpr uint32_t No_Heap_ID = 0xFFFFFFFF;

  int m_bNoCount = 0;
  T* m_pT = nullptr;
  uint32_t m_nHeapID = 0;
  int m_nCount = 0;
  int m_nSerial = 0;
};

}  // namespace orsanta
