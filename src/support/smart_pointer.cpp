#include "support/smart_pointer.h"

#include <unordered_map>
#include <vector>

#include "support/critical_section.h"

namespace orsanta::smart_pointer_table {

namespace {

// Lives as long as the process: pointers in static objects are released after main has returned.
struct C_Table {
  CMyCriticalSection hEvent_SmartPointer;
  std::unordered_map<void*, uint32_t> cPointerAddr2ID;
  CMyArray<CSmartHeapDataStruct> cHeapInformationList_SmartPointer;
  std::vector<uint32_t> free_ids;
};

C_Table& Table() {
  static C_Table& table = *new C_Table;
  return table;
}

}  // namespace

C_Place Enter(void* data, int count) {
  C_Table& table = Table();
  const C_Section_Holder holder(table.hEvent_SmartPointer);
  CMyArray<CSmartHeapDataStruct>& records = table.cHeapInformationList_SmartPointer;
  auto id = static_cast<uint32_t>(records.GetSize());
  if (!table.free_ids.empty()) {
    id = table.free_ids.back();
    table.free_ids.pop_back();
  } else {
    records.Add(CSmartHeapDataStruct());
  }
  CSmartHeapDataStruct& record = records.GetAt(id);
  ++record.nSerial;
  record.nRef = 1;
  record.nCount = count;
  record.pData = data;
  table.cPointerAddr2ID[data] = id;
  return {id, record.nSerial};
}

void Add_Reference(uint32_t heap_id) {
  C_Table& table = Table();
  const C_Section_Holder holder(table.hEvent_SmartPointer);
  ++table.cHeapInformationList_SmartPointer.GetAt(heap_id).nRef;
}

bool Release(uint32_t heap_id, void* data) {
  C_Table& table = Table();
  const C_Section_Holder holder(table.hEvent_SmartPointer);
  CSmartHeapDataStruct& record = table.cHeapInformationList_SmartPointer.GetAt(heap_id);
  if (--record.nRef != 0) return false;
  MY_ASSERT(table.cPointerAddr2ID.erase(data) == 1);
  table.free_ids.push_back(heap_id);
  record.pData = nullptr;
  return true;
}

int Live_Records() {
  C_Table& table = Table();
  const C_Section_Holder holder(table.hEvent_SmartPointer);
  return static_cast<int>(table.cPointerAddr2ID.size());
}

}  // namespace orsanta::smart_pointer_table
