// The hash store: keys and values that are composed of the bytes of single values, and the strings and blocks in it.
//
// A CHashOpt is driven in steps. A key is started with <<, lengthened with ConnectIndexDataOrOutputData, and then
// looked up (operator>, operator>=), removed (operator--), or given a value (StartAddVarToLogInData, lengthened in the
// same way) and committed with operator++. The classes have no lock: the owner of a store guards it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace orsanta {

// A narrow string with value semantics. The text ends at its first zero byte.
class CHashObject_String {
 public:
  CHashObject_String() = default;
  CHashObject_String(const char* text) : m_Text(text != nullptr ? text : "") {}  // NOLINT: converts like a literal
  CHashObject_String& operator=(const char* text) {
    m_Text = text != nullptr ? text : "";
    return *this;
  }

  int operator==(const char* text) const { return Text() == text ? 1 : 0; }
  int operator==(const CHashObject_String& other) const { return Text() == other.Text() ? 1 : 0; }

  // The characters, closed by a zero, with room for at least `room` of them, which the caller may overwrite. Valid
  // until the next change.
  char* GetBuffer(size_t room) {
    if (m_Text.size() < room) m_Text.resize(room);
    return m_Text.data();
  }
  std::string_view Text() const { return m_Text.c_str(); }

 private:
  std::string m_Text;
};

// A block of bytes with a logical size, 0 while nothing is stored.
class CBuffer {
 public:
  // Sets the logical size to `bytes` and fills the block with zeros. Returns 1.
  int AllocateBuffer(size_t bytes, int reserved);
  char* GetBuffer() { return m_Bytes.data(); }
  const char* GetBuffer() const { return m_Bytes.data(); }
  int GetLogicalBufferSize() const { return static_cast<int>(m_Bytes.size()); }

  // Grows the block by exactly `size` bytes: the blocks are short, and most are never appended to again.
  void Append(const void* data, size_t size);
  std::string_view Bytes() const { return {m_Bytes.data(), m_Bytes.size()}; }

 private:
  std::vector<char> m_Bytes;
};

// The type of the value whose bytes an entry has. The hash makes no use of it; the store's file needs it to write a
// readable value.
enum class C_Entry_Kind { Raw, Int, Float, Double, Text, Array };

// One entry: the block under a key.
class CHashObject_Buffer {
 public:
  CBuffer m_Buffer;
  C_Entry_Kind m_Kind = C_Entry_Kind::Raw;
  int m_Line = 0;         // of the file that the entry was read from
  uint64_t m_Serial = 0;  // rises with each new entry: entries sorted by it are in the order in which they were made
};

// Composes keys and values, and holds the table.
class CHashOpt_DataBuffer {
 public:
  using C_Table = std::unordered_map<std::string, CHashObject_Buffer>;

  // Restarts the key with the bytes of the value.
  template <class T>
  CHashOpt_DataBuffer& StartAddValToIndex(const T& value) {
    m_Mode = Mode_Key;
    m_Key = CBuffer();
    return ConnectIndexDataOrOutputData(value);
  }
  template <class T>
  CHashOpt_DataBuffer& operator<<(const T& value) {
    return StartAddValToIndex(value);
  }
  // Restarts the value with the bytes of the value.
  template <class T>
  CHashOpt_DataBuffer& StartAddVarToLogInData(const T& value) {
    m_Mode = Mode_Value;
    m_Value = CBuffer();
    return ConnectIndexDataOrOutputData(value);
  }

  // Appends the value to the key or to the value, whichever was started last.
  template <class T>
  requires(!std::is_pointer_v<T> &&
           !std::is_array_v<T>) CHashOpt_DataBuffer& ConnectIndexDataOrOutputData(const T& value) {
    static_assert(std::is_trivially_copyable_v<T>);
    Append(&value, sizeof(T));
    return *this;
  }
  // The same; after a lookup it reads the next bytes of the entry found instead. A read past its end is a fault of the
  // program.
  template <class T>
  requires(!std::is_pointer_v<T> && !std::is_array_v<T> &&
           !std::is_const_v<T>) CHashOpt_DataBuffer& ConnectIndexDataOrOutputData(T& value) {
    static_assert(std::is_trivially_copyable_v<T>);
    Append_Or_Read(&value, sizeof(T));
    return *this;
  }
  // A text with its closing zero. When it reads, the caller's memory must have room for the text found.
  CHashOpt_DataBuffer& ConnectIndexDataOrOutputData(const char* text);
  CHashOpt_DataBuffer& ConnectIndexDataOrOutputData(char* text);

  // Looks the key up and reads a 32-bit value from the start of its entry; -1 (0xFFFFFFFF) when the key is absent.
  // Further bytes of the entry are read with ConnectIndexDataOrOutputData.
  void operator>(int& value);
  // The entry of the key, an empty new one when it is absent. Valid until the entry is removed.
  CHashObject_Buffer& Entry();
  void operator>=(CHashObject_Buffer*& entry) { entry = &Entry(); }
  // The entry of the key, null when it is absent.
  CHashObject_Buffer* Find();

  const C_Table& Entries() const { return m_Table; }

 protected:
  enum C_Mode { Mode_None = 0, Mode_Key = 1, Mode_Value = 3, Mode_Read = 4 };

  void Append(const void* data, size_t size);
  void Append_Or_Read(void* data, size_t size);
  std::string Key_Text() const { return std::string(m_Key.Bytes()); }

  C_Mode m_Mode = Mode_None;
  CBuffer m_Key;
  CBuffer m_Value;
  C_Table m_Table;

 private:
  const CHashObject_Buffer* m_Found = nullptr;  // Mode_Read: the entry that is read
  size_t m_Read_At = 0;                         // Mode_Read: place of the next byte
  uint64_t m_Next_Serial = 1;
};

class CHashOpt : public CHashOpt_DataBuffer {
 public:
  // Commits the present key and value as an entry; an entry with that key is replaced.
  void operator++(int);
  // Removes the entry of the present key, if there is one.
  void operator--(int);
};

// Allocates unsigned numbers, the smallest free ones first. No lock.
class CHashGather {
 public:
  unsigned GetUniqueID();
  // Frees an allocated number.
  void DeleteUniqueID(unsigned id);

 private:
  std::vector<bool> m_In_Use;
  std::vector<unsigned> m_Free;
};

}  // namespace orsanta
