// The thermistor input of a temperature board: ADC counts to degrees Celsius and back, in single precision.
//
// A 10 kOhm NTC thermistor stands on the low side of a divider, against a resistor of NTC_R to the ADC's reference:
//
//     reference --[ NTC_R ]--+--[ thermistor Rt ]-- ground        adc / 2^NTC_Bits = Rt / (NTC_R + Rt)
//                            +--> ADC
//
// Temperature and resistance follow the Beta equation of NTC thermistors: 1/T = 1/T0 + ln(Rt/R0)/B, T in kelvin.
// Stateless; any thread.
#pragma once

namespace orsanta {

struct C_Ntc_Constants {
  float NTC_R = 10000.0F;      // ohms: the divider's resistor, and R0, the thermistor's resistance at NTC_T0
  float NTC_T0 = 298.15F;      // kelvin
  float NTC_B = 3950.0F;       // kelvin
  float NTC_Kelvin = 273.15F;  // kelvin of 0 degrees Celsius
  int NTC_Bits = 12;           // resolution of the ADC
};
inline constexpr C_Ntc_Constants theNtcConstants;

// ADC counts to ohms. 4096 gives an infinity, 0 gives 0.
struct ADC2Rt {
  float operator()(int adc) const;
};
// Ohms to degrees Celsius.
struct rt2temp {
  float operator()(float ohms) const;
};
// Degrees Celsius to ohms.
struct temp2rt {
  float operator()(float celsius) const;
};
// Ohms to ADC counts, cut off to an integer. Required: its full scale is 4095, while ADC2Rt's is 4096, as the boards
// were calibrated; a round trip is not exact.
struct Rt2ADC {
  int operator()(float ohms) const;
};

// ADC counts to degrees Celsius.
float NTC_Adc_To_Temp(int adc);
// Degrees Celsius to ADC counts.
int NTC_Temp_To_Adc(float celsius);

}  // namespace orsanta
