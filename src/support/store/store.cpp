#include "support/store/store.h"

#include <algorithm>
#include <functional>
#include <unordered_map>

#include "support/base/type_name.h"
#include "support/dialog/message_box.h"
#include "support/store/store_access.h"
#include "support/store/store_words.h"
#include "support/time/lock.h"
#include "support/time/no_destructor.h"

namespace orsanta {

namespace {

// First word of a key: the kind of entry.
constexpr int Member_Entry = 0;   // further: area id, key text, index
constexpr int Text_Entry = 1;     // further: id; holds a text of the pass
constexpr int Text_ID_Entry = 2;  // further: text; holds its id

constexpr int Array_Record_Bytes = 12;  // 0, id of the type text, element count

// The class paths and their area ids, for the whole process.
struct C_Areas {
  C_Leaf_Lock lock;
  std::unordered_map<std::string, int> ids GUARDED_BY(lock);
  std::unordered_map<int, std::string> paths GUARDED_BY(lock);
};

C_Areas& Areas() {
  static C_No_Destructor<C_Areas> areas;
  return areas.Get();
}

void Start_Key(CHashOpt& hash, int area_id, const char* key, int index) {
  (hash << Member_Entry)
      .ConnectIndexDataOrOutputData(area_id)
      .ConnectIndexDataOrOutputData(key)
      .ConnectIndexDataOrOutputData(index);
}

// The key of the present member.
void Start_Key(CAutoSaveClassData_Data& data) {
  Start_Key(data.m_Hash, data.m_AreaIDList.GetEndData(), data.m_Key.GetBuffer(0), data.m_IndexList.GetEndData());
}

void Put_Bytes(CHashObject_Buffer& entry, C_Entry_Kind kind, std::string_view bytes) {
  entry.m_Kind = kind;
  entry.m_Buffer.AllocateBuffer(bytes.size(), 0);
  std::copy(bytes.begin(), bytes.end(), entry.m_Buffer.GetBuffer());
}

void Put_Array_Record(CHashObject_Buffer& entry, int type_id, int count) {
  const int record[] = {0, type_id, count};
  static_assert(sizeof record == Array_Record_Bytes);
  Put_Bytes(entry, C_Entry_Kind::Array, {reinterpret_cast<const char*>(record), sizeof record});
}

// The entry of the present key as an operator finds it in the file.
std::string Entry_Name(CAutoSaveClassData_Data& data) {
  return Area_Path(data.m_AreaIDList.GetEndData()) + " " + std::string(data.m_Key.Text()) + " " +
         std::to_string(data.m_IndexList.GetEndData());
}

// Saving: puts the bytes under the present key. Loading: gives the bytes found there. False when there is nothing to
// read.
bool Process_Bytes(std::string& bytes, C_Entry_Kind kind, CAutoSaveClassData_Data& data) {
  Start_Key(data);
  if (data.m_bLoad == 0) {
    Put_Bytes(data.m_Hash.Entry(), kind, bytes);
    return false;
  }
  const CHashObject_Buffer* entry = data.m_Hash.Find();
  if (entry == nullptr) return false;
  if (entry->m_Kind != kind) {
    data.m_Mismatches.push_back({entry->m_Line, From_Utf8(Entry_Name(data) + " 应为 " + Kind_Word(kind))});
    return false;
  }
  bytes = entry->m_Buffer.Bytes();
  return true;
}

template <class T>
void Process_Number(T& value, C_Entry_Kind kind, CAutoSaveClassData_Data& data) {
  std::string bytes(reinterpret_cast<const char*>(&value), sizeof value);
  if (!Process_Bytes(bytes, kind, data)) return;
  MY_ASSERT(bytes.size() == sizeof value);
  std::memcpy(&value, bytes.data(), sizeof value);
}

// The entries of a pass in the order in which they were made, each with the parts of its key.
C_Store_Content Content_Of(const CAutoSaveClassData_Data& data, const std::function<std::string(int)>& text_of_id) {
  std::vector<std::pair<const std::string*, const CHashObject_Buffer*>> ordered;
  for (const auto& [key, entry] : data.m_Hash.Entries()) ordered.emplace_back(&key, &entry);
  std::sort(ordered.begin(), ordered.end(),
            [](const auto& a, const auto& b) { return a.second->m_Serial < b.second->m_Serial; });

  const auto word = [](std::string_view bytes, size_t at) {
    int value = 0;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
  };
  C_Store_Content content;
  for (const auto& [key, entry] : ordered) {
    if (word(*key, 0) != Member_Entry) continue;
    C_Store_Entry& line = content.entries.emplace_back();
    line.path = Area_Path(word(*key, 4));
    line.key = key->c_str() + 8;
    line.index = word(*key, key->size() - 4);
    line.kind = entry->m_Kind;
    line.bytes = entry->m_Buffer.Bytes();
    if (line.kind != C_Entry_Kind::Array) continue;
    line.count = word(entry->m_Buffer.Bytes(), 8);
    line.bytes = text_of_id(word(entry->m_Buffer.Bytes(), 4));
  }
  return content;
}

void Show(const C_Store_Report& report) {
  const std::wstring text = Report_Text(report);
  if (!text.empty()) Message_Box(text);
}

}  // namespace

std::string Area_Path(int area_id) {
  C_Areas& areas = Areas();
  const C_Lock_Guard hold(areas.lock);
  const auto place = areas.paths.find(area_id);
  return place == areas.paths.end() ? std::string() : place->second;
}

int Area_ID(const std::string& path) {
  C_Areas& areas = Areas();
  const C_Lock_Guard hold(areas.lock);
  const auto known = areas.ids.find(path);
  if (known != areas.ids.end()) return known->second;
  auto id = static_cast<uint32_t>(std::hash<std::string>()(path));
  while (!areas.paths.try_emplace(static_cast<int>(id), path).second) ++id;  // the number belongs to another path
  areas.ids.emplace(path, static_cast<int>(id));
  return static_cast<int>(id);
}

int CAutoSaveClassData_Data::GetAreaIDFrom_OptSaveFunctionCallInClassNameList() {
  std::string path;
  for (const CHashObject_String& name : OptSaveFunctionCallInClassNameList) {
    if (!path.empty()) path.push_back('/');
    path += name.Text();
  }
  return Area_ID(path);
}

C_Store_Class::C_Store_Class(const CAutoSaveClassData2& object, CAutoSaveClassData_Data& data) : m_Data(data) {
  data.OptSaveFunctionCallInClassNameList.Add(Type_Name(typeid(object)).c_str());
  data.m_AreaIDList.Add(data.GetAreaIDFrom_OptSaveFunctionCallInClassNameList());
  // Stays when the class is left: it serves the next class of the pass.
  if (data.m_IndexList.GetSize() == 0) data.m_IndexList.Add(0);
}

C_Store_Class::~C_Store_Class() {
  m_Data.m_AreaIDList.DelEndData();
  m_Data.OptSaveFunctionCallInClassNameList.DelEndData();
}

int CAutoSaveClassData2::SaveAllClassParameterToHashOpt(const wchar_t* store, int /*reserved*/) {
  if (m_Owns && Own_Store(store) == 0) return 0;
  const auto content = [this] {
    CAutoSaveClassData_Data data;
    OptSaveAndLoadDataStore(data);
    return Content_Of(data, [&](int id) { return std::string(LoadStrFromSaveHash(id, data)->Text()); });
  };
  const C_Store_Report report = Write_Store(To_Utf8(store), content, m_Copy_First);
  if (report.error == 0) m_Copy_First = false;
  Show(report);
  return report.error == 0 ? 1 : 0;
}

int CAutoSaveClassData2::LoadAllClassParameterFromHashOpt(const wchar_t* store, int /*reserved*/) {
  C_Store_Reading reading = Read_Store(To_Utf8(store));
  C_Store_Report& report = reading.report;
  const bool is_read = report.state == C_Store_State::Whole || report.state == C_Store_State::Faulty;
  if (is_read) Load_Members(reading);
  if (!report.faults.empty()) report.copy = Keep_Copy(report.name, reading.bytes);
  m_Copy_First = report.error != 0 || report.copy.error != 0;
  Show(report);
  return is_read ? 1 : 0;
}

int CAutoSaveClassData2::Own_Store(const wchar_t* store) {
  m_Owns = true;
  const std::string name = To_Utf8(store);
  const int owner = m_Claim.Take(name);
  if (owner != 0) Show({.name = name, .owner = owner});
  return owner == 0 ? 1 : 0;
}

void CAutoSaveClassData2::Load_Members(C_Store_Reading& reading) {
  CAutoSaveClassData_Data data;
  data.m_bLoad = 1;
  data.m_Store = reading.report.name;
  for (const C_Store_Entry& line : reading.content.entries) {
    Start_Key(data.m_Hash, Area_ID(line.path), line.key.c_str(), line.index);
    CHashObject_Buffer& entry = data.m_Hash.Entry();
    entry.m_Line = line.line;
    if (line.kind == C_Entry_Kind::Array) {
      Put_Array_Record(entry, SaveStrToSaveHash(line.bytes.c_str(), data), line.count);
    } else {
      Put_Bytes(entry, line.kind, line.bytes);
    }
  }
  OptSaveAndLoadDataStore(data);

  std::vector<C_Store_Fault>& faults = reading.report.faults;
  faults.insert(faults.end(), data.m_Mismatches.begin(), data.m_Mismatches.end());
  std::stable_sort(faults.begin(), faults.end(), [](const auto& a, const auto& b) { return a.line < b.line; });
}

void CAutoSaveClassData2::OptSaveAndLoadDataStore(CAutoSaveClassData_Data& /*data*/) {}

void CAutoSaveClassData2::ProcessData(int& value, CAutoSaveClassData_Data& data) {
  Process_Number(value, C_Entry_Kind::Int, data);
}

void CAutoSaveClassData2::ProcessData(float& value, CAutoSaveClassData_Data& data) {
  Process_Number(value, C_Entry_Kind::Float, data);
}

void CAutoSaveClassData2::ProcessData(double& value, CAutoSaveClassData_Data& data) {
  Process_Number(value, C_Entry_Kind::Double, data);
}

void CAutoSaveClassData2::ProcessData(std::wstring& value, CAutoSaveClassData_Data& data) {
  std::string bytes = To_Utf8(value);
  if (Process_Bytes(bytes, C_Entry_Kind::Text, data)) value = From_Utf8(bytes);
}

void CAutoSaveClassData2::ProcessData(CMyStringW& value, CAutoSaveClassData_Data& data) {
  std::wstring text = value.Text();
  ProcessData(text, data);
  if (data.m_bLoad != 0) value = text;
}

bool CAutoSaveClassData2::Begin_Array(const std::type_info& type, int& count, CAutoSaveClassData_Data& data) {
  const std::string type_name = Type_Name(type);
  Start_Key(data);
  CHashObject_Buffer& entry = data.m_Hash.Entry();
  if (data.m_bLoad != 0) {
    if (entry.m_Buffer.GetLogicalBufferSize() == 0) return false;
    int record[3] = {};
    const CHashObject_String* stored_type = nullptr;
    if (entry.m_Buffer.GetLogicalBufferSize() == Array_Record_Bytes) {
      std::memcpy(record, entry.m_Buffer.GetBuffer(), sizeof record);
      stored_type = LoadStrFromSaveHash(record[1], data);
    }
    // A store of another layout is not repaired: the member would hold what was never measured.
    if (record[0] != 0 || stored_type == nullptr || stored_type->Text() != type_name)
      MY_ASSERT_REPORT("参数文件 " + data.m_Store + " 第" + std::to_string(entry.m_Line) + "行 " + Entry_Name(data) +
                       " 应为 array " + type_name + ",请修正或移走该文件后再启动");
    count = record[2];
  } else {
    Put_Array_Record(entry, SaveStrToSaveHash(type_name.c_str(), data), count);
  }
  data.OptSaveFunctionCallInClassNameList.Add("CMyArray");
  data.m_IndexList.Add(0);
  data.m_AreaIDList.Add(data.GetAreaIDFrom_OptSaveFunctionCallInClassNameList());
  return true;
}

void CAutoSaveClassData2::End_Array(CAutoSaveClassData_Data& data) {
  data.OptSaveFunctionCallInClassNameList.DelEndData();
  data.m_AreaIDList.DelEndData();
  data.m_IndexList.DelEndData();
}

int CAutoSaveClassData2::SaveStrToSaveHash(const char* text, CAutoSaveClassData_Data& data) {
  int id = -1;
  (data.m_Hash << Text_ID_Entry).ConnectIndexDataOrOutputData(text) > id;
  if (id >= 0) return id;
  id = data.m_TextCount++;
  (data.m_Hash << Text_ID_Entry).ConnectIndexDataOrOutputData(text);
  data.m_Hash.StartAddVarToLogInData(id);
  data.m_Hash++;
  data.m_Hash << Text_Entry;
  data.m_Hash.ConnectIndexDataOrOutputData(id);
  Put_Bytes(data.m_Hash.Entry(), C_Entry_Kind::Text, text);
  return id;
}

CHashObject_String* CAutoSaveClassData2::LoadStrFromSaveHash(int id, CAutoSaveClassData_Data& data) {
  data.m_Hash << Text_Entry;
  data.m_Hash.ConnectIndexDataOrOutputData(id);
  const CHashObject_Buffer* entry = data.m_Hash.Find();
  if (entry == nullptr) return nullptr;
  data.m_Text_Found = std::string(entry->m_Buffer.Bytes()).c_str();
  return &data.m_Text_Found;
}

}  // namespace orsanta
