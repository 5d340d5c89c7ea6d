#include "support/base/smart_pointer.h"

#include "support/base/hash.h"
#include "support/time/critical_section.h"
#include "support/time/no_destructor.h"

namespace orsanta::smart_pointer_table {

namespace {

constexpr unsigned No_Heap_ID = 0xFFFFFFFF;

struct C_Table {
  CMyCriticalSection hEvent_SmartPointer;
  CHashOpt cPointerAddr2ID GUARDED_BY(hEvent_SmartPointer);
  CMyArray<CSmartHeapDataStruct> cHeapInformationList_SmartPointer GUARDED_BY(hEvent_SmartPointer);
  CHashGather cAllocateHeapIDs_SmartPointer GUARDED_BY(hEvent_SmartPointer);
};

C_Table& Table() {
  static C_No_Destructor<C_Table> table;
  return table.Get();
}

}  // namespace

C_Place Enter(void* data, int count) {
  C_Table& table = Table();
  const C_Lock_Guard hold(table.hEvent_SmartPointer);
  const unsigned id = table.cAllocateHeapIDs_SmartPointer.GetUniqueID();
  CMyArray<CSmartHeapDataStruct>& records = table.cHeapInformationList_SmartPointer;
  const int needed = static_cast<int>(id) + 1;
  if (records.GetSize() < needed) records.SetArraySize(needed);
  CSmartHeapDataStruct& record = records.GetAt(id);
  ++record.nSerial;
  record.nRef = 1;
  record.nCount = count;
  record.pData = data;
  table.cPointerAddr2ID << reinterpret_cast<uintptr_t>(data);
  table.cPointerAddr2ID.StartAddVarToLogInData(id);
  table.cPointerAddr2ID++;
  return {id, record.nSerial};
}

void Add_Reference(uint32_t heap_id) {
  C_Table& table = Table();
  const C_Lock_Guard hold(table.hEvent_SmartPointer);
  ++table.cHeapInformationList_SmartPointer.GetAt(heap_id).nRef;
}

bool Release(uint32_t heap_id, void* data) {
  C_Table& table = Table();
  const C_Lock_Guard hold(table.hEvent_SmartPointer);
  CSmartHeapDataStruct& record = table.cHeapInformationList_SmartPointer.GetAt(heap_id);
  if (--record.nRef != 0) return false;
  table.cPointerAddr2ID << reinterpret_cast<uintptr_t>(data);
  int found = 0;
  table.cPointerAddr2ID > found;
  MY_ASSERT(static_cast<unsigned>(found) != No_Heap_ID);
  table.cPointerAddr2ID--;
  table.cAllocateHeapIDs_SmartPointer.DeleteUniqueID(heap_id);
  record.pData = nullptr;
  return true;
}

int Live_Records() {
  C_Table& table = Table();
  const C_Lock_Guard hold(table.hEvent_SmartPointer);
  return static_cast<int>(table.cPointerAddr2ID.Entries().size());
}

}  // namespace orsanta::smart_pointer_table
