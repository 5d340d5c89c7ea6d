#include "drive/bus_search.h"

#include "drive/motor_channels.h"
#include "drive/tremalink.h"

namespace orsanta {

CMyStringW Search_Bus() {
  CMyStringW id_list = L"总线上搜索到的设备id\r\n";
  bool found = false;
  for (int id = 1; id <= motor_channels::Last_Can_Id; ++id) {
    int beExist = 0;
    CheckDeviceExist(id, &beExist);
    if (beExist == 0) continue;
    found = true;
    id_list.Append(Format_Text("CAN_ID：%d \r\n", id));
  }
  if (!found) id_list.Append(L"无设备");
  return id_list;
}

CMyStringW Missing_Drive_Report(int can_id, const CMyStringW& id_list) {
  return Format_Text("无法找到ID：%d的驱动器\r\n", can_id)
      .Append(id_list)
      .Append(L"请检查CANID拨码\r\n请检查CAN线路\r\n");
}

}  // namespace orsanta
