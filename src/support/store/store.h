// CAutoSaveClassData2: objects that keep parameters between runs.
//
// A class derives from it and names its persisted members once, in OptSaveAndLoadDataStore; the same function serves
// saving and loading. The way it is written:
//
//   void C_Example::OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) {
//     {
//       const C_Store_Class entered(*this, data);
//       Process_Member("Num", MotorNum, data);
//       Process_Member("m_P", m_P, data);
//     }
//     CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
//   }
//
// A key that is absent from the store leaves its member as it is, so that old stores work with newer classes.
//
// A pass runs on the caller's thread and takes no lock: other threads may use the members meanwhile. Saves in one
// folder by several threads or processes take turns, each with its pass, so that an older value never replaces a newer
// one; a pass must not wait for another thread. Loads wait for no lock. A store is a file under its bare name in the
// working directory. Beside this file: store_access.h, how it is read and replaced (store_disk.h, the steps on the
// disk; store_format.h and store_parser.h, its form), store_claim.h, to whom it belongs, and store_words.h, what the
// operator reads.
#pragma once

#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "support/base/array.h"
#include "support/base/hash.h"
#include "support/store/store_access.h"
#include "support/store/store_claim.h"
#include "support/system/wide_string.h"
#include "support/time/shared.h"
#include "support/time/uncopied.h"

namespace orsanta {

// The state of one pass over a store.
class CAutoSaveClassData_Data {
 public:
  int m_bLoad = 0;                                                  // 0 in a saving pass
  CHashObject_String m_Key;                                         // the present key
  CMyArray<int> m_AreaIDList;                                       // top: area of the present member
  CMyArray<int> m_IndexList;                                        // top: index of the present member
  CMyArray<CHashObject_String> OptSaveFunctionCallInClassNameList;  // classes that were entered, outermost first
  CMyArray<CHashObject_String> m_KeyList;
  CHashOpt m_Hash;  // the entries; a key is 0, area id, text, index

  // The number of the present stack of class names, the same in every pass.
  int GetAreaIDFrom_OptSaveFunctionCallInClassNameList();

  int m_TextCount = 0;                      // texts in the table of texts
  CHashObject_String m_Text_Found;          // what LoadStrFromSaveHash returns a pointer to
  std::string m_Store;                      // loading: name of the store
  std::vector<C_Store_Fault> m_Mismatches;  // loading: entries of another kind than their members take
};

// The class path, names joined by '/', that an area id belongs to.
std::string Area_Path(int area_id);
// The area id of a class path.
int Area_ID(const std::string& path);

// Root of the objects that are handled through their run-time type.
class CDynamicClassCreatorObject {
 public:
  virtual ~CDynamicClassCreatorObject() = default;
};

class CAutoSaveClassData2 : public CDynamicClassCreatorObject {
 public:
  // Writes the object's members to the store of that name. Entries of the present store that the object does not name
  // are kept. On failure a message box names the file and the reason, and the old store remains. store: bare file name.
  // Returns 1, or 0 on failure.
  int SaveAllClassParameterToHashOpt(const wchar_t* store, int reserved);
  // Reads the members from the store of that name, if it exists. What cannot be taken leaves its member as it is: a
  // line that does not parse, an entry of another kind than its member takes, the whole of a file that is no store.
  // Then the file stays as it is, a copy is kept under a name that ends in ".bad", and a message box says on which line
  // what is wrong. An array of another type is a fault of the program. Returns 1 when a store was read, else 0.
  int LoadAllClassParameterFromHashOpt(const wchar_t* store, int reserved);
  // Makes the store the property of this process while the object lives: of an object that owns its store, saves are
  // refused while another process owns it. A message box then names that process, here and at each refused save.
  // Returns 1, or 0 when another process has it.
  int Own_Store(const wchar_t* store);

 protected:
  // Names the persisted members; each override ends with a call of the base's.
  virtual void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data);

  // One member: stores it under the present key, or reads it back.
  void ProcessData(int& value, CAutoSaveClassData_Data& data);
  void ProcessData(float& value, CAutoSaveClassData_Data& data);
  void ProcessData(double& value, CAutoSaveClassData_Data& data);
  void ProcessData(std::wstring& value, CAutoSaveClassData_Data& data);
  void ProcessData(CMyStringW& value, CAutoSaveClassData_Data& data);
  template <class T>
  void ProcessData(Shared<T>& value, CAutoSaveClassData_Data& data) {
    T plain = value;
    ProcessData(plain, data);
    if (data.m_bLoad != 0) value = plain;
  }
  // An array: one record with the element type and the count, and one entry for each element. Where an element is of
  // another kind the array keeps what it has, whole.
  template <class T>
  void ProcessData(CMyArray<T>& array, CAutoSaveClassData_Data& data) {
    int count = array.GetSize();
    if (!Begin_Array(typeid(array), count, data)) return;
    CMyArray<T> elements = array;
    elements.SetArraySize(count);
    const size_t mismatches = data.m_Mismatches.size();
    for (int i = 0; i < count; ++i) {
      data.m_IndexList.GetEndData() = i;
      ProcessData(elements.GetAt(i), data);
    }
    End_Array(data);
    if (data.m_bLoad != 0 && data.m_Mismatches.size() == mismatches) array = std::move(elements);
  }

  // ProcessData under the key.
  template <class T>
  void Process_Member(const char* key, T& member, CAutoSaveClassData_Data& data) {
    data.m_Key = key;
    data.m_KeyList.Add(data.m_Key);
    ProcessData(member, data);
    data.m_KeyList.DelEndData();
  }

  // Adds a text to the pass's table of texts and returns its id, or the id that it has already.
  int SaveStrToSaveHash(const char* text, CAutoSaveClassData_Data& data);
  // The text of an id, null when there is none. Valid until the next call.
  CHashObject_String* LoadStrFromSaveHash(int id, CAutoSaveClassData_Data& data);

 private:
  // Processes the array's record, and enters the area of its elements. False when the array is absent and keeps what it
  // has.
  bool Begin_Array(const std::type_info& type, int& count, CAutoSaveClassData_Data& data);
  void End_Array(CAutoSaveClassData_Data& data);

  // Takes the entries of a store that was read, and adds to its faults.
  void Load_Members(C_Store_Reading& reading);

  Shared<bool> m_Copy_First = false;  // there is a store of which not all values are in use and no copy is kept
  Shared<bool> m_Owns = false;
  C_Store_Claim m_Claim;
};

// Enters a class for the span of a scope: its name goes on the stack of class names, and its area on the stack of
// areas.
class C_Store_Class : private C_Uncopied {
 public:
  C_Store_Class(const CAutoSaveClassData2& object, CAutoSaveClassData_Data& data);
  ~C_Store_Class();

 private:
  CAutoSaveClassData_Data& m_Data;
};

}  // namespace orsanta
