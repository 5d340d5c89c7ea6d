#include "drive/device_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "drive/thermistor.h"

namespace orsanta {

TEST(Device_Text, Reads_Identity_Words_And_Fault_Bits) {
  const C_Device_Text text;
  EXPECT_NE(text.Device_Type_Name(0).Text(), std::wstring(L"未定义设备"));
  EXPECT_EQ(text.Device_Info_Text((11 << 16) | (200 << 8) | 7).Text(),
            std::wstring(L"设备类型：ORS-GW01 总线网关 \r\n软件版本：7\r\n硬件版本：200\r\n"));
  EXPECT_EQ(text.Device_Info_Text(12 << 16).Text(), L"设备类型：未定义设备 \r\n软件版本：0\r\n硬件版本：0\r\n");
  EXPECT_EQ(text.Device_Info_Text(-1).Text(), L"设备类型：未定义设备 \r\n软件版本：255\r\n硬件版本：255\r\n");

  EXPECT_EQ(text.Fault_Text(0).Text(), L"");
  EXPECT_EQ(text.Fault_Text(0x7FF).Text(),
            L"1：电机超电流\r\n2：回零超时\r\n3：IIR过热保护\r\n4：电机漏电流过大(超最大电流)\r\n5：485通信线路异常\r\n"
            L"6：驱动器背板超温\r\n7：驱动器电压低\r\n8：CPU超温\r\n9：驱动器超误差\r\n10：断使能\r\n"
            L"11：刹车电阻失效或超电压\r\n");
  EXPECT_EQ(text.Fault_Text(0x800).Text(), L"未定义错误");
  EXPECT_EQ(text.Fault_Text(0x80000004).Text(), L"3：IIR过热保护\r\n");
}

// Degrees Celsius and ohms of a 10 kOhm thermistor of B = 3950 K as resistance tables give them, R = R25 exp(B (1/T -
// 1/298.15 K)): made once in double precision outside this system, and rounded to the ohm.
constexpr std::pair<double, double> Curve[] = {{-20, 105385}, {-10, 58246}, {0, 33621}, {10, 20175}, {20, 12535},
                                               {30, 8037},    {40, 5301},   {50, 3588}, {60, 2486},  {70, 1760},
                                               {80, 1270},    {90, 934},    {100, 698}};

TEST(Thermistor, Follows_The_Published_Curve_To_One_Step_Of_The_Adc_And_Ends_As_The_Divider_Does) {
  for (const auto& [celsius, ohms] : Curve) {
    const double share = ohms / (10000.0 + ohms);
    const int adc = static_cast<int>(std::lround(4096.0 * share));
    const double step = std::abs(static_cast<double>(NTC_Adc_To_Temp(adc + 1) - NTC_Adc_To_Temp(adc - 1))) / 2.0;
    EXPECT_LT(step, 0.6) << celsius;  // the resolution of the input, or the check below would hold nothing
    EXPECT_NEAR(NTC_Adc_To_Temp(adc), celsius, step);
    EXPECT_NEAR(NTC_Temp_To_Adc(static_cast<float>(celsius)), 4095.0 * share, 1.0);
    EXPECT_NEAR(temp2rt()(static_cast<float>(celsius)), ohms, 1e-3 * ohms);
  }
  EXPECT_EQ(Rt2ADC()(10000.0F), 2047);  // cut off from 2047.5 on a scale of 4095
  EXPECT_EQ(ADC2Rt()(0), 0.0F);
  EXPECT_TRUE(std::isinf(ADC2Rt()(4096)));
}

}  // namespace orsanta
