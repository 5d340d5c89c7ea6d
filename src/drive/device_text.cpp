#include "drive/device_text.h"

namespace orsanta {

namespace {

// By device type code.
constexpr const wchar_t* Device_Names[] = {
    L"ORS-VC10 音圈电机驱动器", L"ORS-VC20 音圈电机驱动器", L"ORS-VC40 大推力音圈电机驱动器",
    L"ORS-VR10 直线旋转驱动器", L"ORS-LM20 直线电机驱动器", L"ORS-SV10 伺服电机驱动器",
    L"ORS-ST10 步进电机驱动器", L"ORS-IP10 插补驱动器",     L"ORS-TS08 温度采集板",
    L"ORS-IO08 输入输出卡",     L"ORS-AD04 模拟量采集卡",   L"ORS-GW01 总线网关",
};
constexpr int Device_Name_Count = static_cast<int>(sizeof(Device_Names) / sizeof(Device_Names[0]));
static_assert(Device_Name_Count == 12);

}  // namespace

C_Device_Text::C_Device_Text() {
  Fault_Texts.Add(L"1：电机超电流\r\n");
  Fault_Texts.Add(L"2：回零超时\r\n");
  Fault_Texts.Add(L"3：IIR过热保护\r\n");
  Fault_Texts.Add(L"4：电机漏电流过大(超最大电流)\r\n");
  Fault_Texts.Add(L"5：485通信线路异常\r\n");
  Fault_Texts.Add(L"6：驱动器背板超温\r\n");
  Fault_Texts.Add(L"7：驱动器电压低\r\n");
  Fault_Texts.Add(L"8：CPU超温\r\n");
  Fault_Texts.Add(L"9：驱动器超误差\r\n");
  Fault_Texts.Add(L"10：断使能\r\n");
  Fault_Texts.Add(L"11：刹车电阻失效或超电压\r\n");
}

CMyStringW C_Device_Text::Device_Type_Name(int type) const {
  return type >= 0 && type < Device_Name_Count ? Device_Names[type] : L"未定义设备";
}

CMyStringW C_Device_Text::Device_Info_Text(int32_t word) const {
  const int type = word >> 16;  // keeps the sign: a negative word is an undefined device
  const int hardware = (word >> 8) & 255;
  const int software = word & 255;
  return Format_Text("设备类型：%s \r\n软件版本：%d\r\n硬件版本：%d\r\n",
                     To_Utf8(Device_Type_Name(type).Text()).c_str(), software, hardware);
}

CMyStringW C_Device_Text::Fault_Text(uint32_t mask) const {
  CMyStringW text;
  if (mask == 0) return text;
  for (int i = 0; i < Fault_Texts.GetSize(); ++i) {
    if ((mask >> i & 1U) != 0) text.Append(Fault_Texts[i]);
  }
  return text.Is_Empty() ? CMyStringW(L"未定义错误") : text;
}

}  // namespace orsanta
