#include "support/base/hash.h"

#include <algorithm>
#include <functional>

#include "support/base/assertion.h"

namespace orsanta {

int CBuffer::AllocateBuffer(size_t bytes, int /*reserved*/) {
  m_Bytes.assign(bytes, 0);
  return 1;
}

void CBuffer::Append(const void* data, size_t size) {
  std::vector<char> grown(m_Bytes.size() + size);
  std::copy(m_Bytes.begin(), m_Bytes.end(), grown.begin());
  if (size > 0) std::memcpy(grown.data() + m_Bytes.size(), data, size);
  m_Bytes.swap(grown);
}

void CHashOpt_DataBuffer::Append(const void* data, size_t size) {
  MY_ASSERT(m_Mode == Mode_Key || m_Mode == Mode_Value);
  (m_Mode == Mode_Key ? m_Key : m_Value).Append(data, size);
}

void CHashOpt_DataBuffer::Append_Or_Read(void* data, size_t size) {
  if (m_Mode != Mode_Read) {
    Append(data, size);
    return;
  }
  const std::string_view bytes = m_Found->m_Buffer.Bytes();
  MY_ASSERT(m_Read_At + size <= bytes.size());
  std::memcpy(data, bytes.data() + m_Read_At, size);
  m_Read_At += size;
}

CHashOpt_DataBuffer& CHashOpt_DataBuffer::ConnectIndexDataOrOutputData(const char* text) {
  Append(text, std::strlen(text) + 1);
  return *this;
}

CHashOpt_DataBuffer& CHashOpt_DataBuffer::ConnectIndexDataOrOutputData(char* text) {
  if (m_Mode != Mode_Read) return ConnectIndexDataOrOutputData(static_cast<const char*>(text));
  const size_t end = m_Found->m_Buffer.Bytes().find('\0', m_Read_At);
  MY_ASSERT(end != std::string_view::npos);
  Append_Or_Read(text, end + 1 - m_Read_At);
  return *this;
}

CHashObject_Buffer* CHashOpt_DataBuffer::Find() {
  const auto place = m_Table.find(Key_Text());
  return place == m_Table.end() ? nullptr : &place->second;
}

void CHashOpt_DataBuffer::operator>(int& value) {
  m_Found = Find();
  if (m_Found == nullptr) {
    m_Mode = Mode_None;
    value = -1;
    return;
  }
  m_Mode = Mode_Read;
  m_Read_At = 0;
  ConnectIndexDataOrOutputData(value);
}

CHashObject_Buffer& CHashOpt_DataBuffer::Entry() {
  const auto [place, is_new] = m_Table.try_emplace(Key_Text());
  if (is_new) place->second.m_Serial = m_Next_Serial++;
  return place->second;
}

void CHashOpt::operator++(int) {
  Entry().m_Buffer = m_Value;
}

void CHashOpt::operator--(int) {
  m_Table.erase(Key_Text());
  m_Mode = Mode_None;  // an entry that was being read may be gone
}

unsigned CHashGather::GetUniqueID() {
  unsigned id = static_cast<unsigned>(m_In_Use.size());
  if (m_Free.empty()) {
    m_In_Use.push_back(true);
    return id;
  }
  std::pop_heap(m_Free.begin(), m_Free.end(), std::greater<>());
  id = m_Free.back();
  m_Free.pop_back();
  m_In_Use[id] = true;
  return id;
}

void CHashGather::DeleteUniqueID(unsigned id) {
  MY_ASSERT(id < m_In_Use.size());
  MY_ASSERT(m_In_Use[id]);
  m_In_Use[id] = false;
  m_Free.push_back(id);
  std::push_heap(m_Free.begin(), m_Free.end(), std::greater<>());
}

}  // namespace orsanta
