#include "drive/device_text.h"

#include <gtest/gtest.h>

#include <cmath>

#include "drive/thermistor.h"

namespace orsanta {
namespace {

TEST(C_Device_Text, Reads_Identity_Words_And_Fault_Bits) {
  const C_Device_Text text;
  const std::wstring known = text.Device_Type_Name(11).Text();
  EXPECT_NE(known, L"未定义设备");
  EXPECT_EQ(text.Device_Info_Text((11 << 16) | (200 << 8) | 7).Text(),
            L"设备类型：" + known + L" \r\n软件版本：7\r\n硬件版本：200\r\n");
  EXPECT_EQ(text.Device_Info_Text(12 << 16).Text(), L"设备类型：未定义设备 \r\n软件版本：0\r\n硬件版本：0\r\n");
  EXPECT_EQ(text.Device_Info_Text(-1).Text(), L"设备类型：未定义设备 \r\n软件版本：255\r\n硬件版本：255\r\n");

  EXPECT_EQ(text.Fault_Text(0).Text(), L"");
  EXPECT_EQ(text.Fault_Text(3).Text(), L"1：电机超电流\r\n2：回零超时\r\n");
  EXPECT_EQ(text.Fault_Text(0x400).Text(), L"11：刹车电阻失效或超电压\r\n");
  EXPECT_EQ(text.Fault_Text(0x800).Text(), L"未定义错误");
  EXPECT_EQ(text.Fault_Text(0x80000004).Text(), L"3：IIR过热保护\r\n");
}

// Resistance of a 10 kOhm thermistor with B(25/100) = 3950 K, from its data sheet curve, in ohms.
struct C_Point {
  double celsius;
  double ohms;
};
constexpr C_Point Curve[] = {{-20, 105385}, {-10, 58246}, {0, 33621}, {10, 20175}, {20, 12535}, {30, 8037}, {40, 5301},
                             {50, 3588},    {60, 2486},   {70, 1760}, {80, 1270},  {90, 934},   {100, 698}};

double Exact_Adc(double ohms, double full_scale) {
  return full_scale * ohms / (10000.0 + ohms);
}

TEST(Thermistor, Follows_The_Published_Curve_To_One_Step_Of_The_Adc) {
  for (const C_Point& point : Curve) {
    const double exact = Exact_Adc(point.ohms, 4096.0);
    const int adc = static_cast<int>(std::lround(exact));
    const double step = std::abs(static_cast<double>(NTC_Adc_To_Temp(adc + 1) - NTC_Adc_To_Temp(adc - 1))) / 2.0;
    EXPECT_LT(step, 0.6) << point.celsius;  // the resolution of the input, or the check below would hold nothing
    EXPECT_NEAR(NTC_Adc_To_Temp(adc), point.celsius, step) << point.celsius;
    EXPECT_NEAR(NTC_Temp_To_Adc(static_cast<float>(point.celsius)), Exact_Adc(point.ohms, 4095.0), 1.0);
    EXPECT_NEAR(temp2rt()(static_cast<float>(point.celsius)), point.ohms, 1e-3 * point.ohms);
  }
}

TEST(Thermistor, Ends_Of_The_Range) {
  EXPECT_EQ(Rt2ADC()(10000.0F), 2047);  // cut off from 2047.5 on a scale of 4095
  EXPECT_EQ(ADC2Rt()(0), 0.0F);
  EXPECT_TRUE(std::isinf(ADC2Rt()(4096)));
}

}  // namespace
}  // namespace orsanta
