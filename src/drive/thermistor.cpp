#include "drive/thermistor.h"

#include <cmath>

namespace orsanta {

namespace {
constexpr C_Ntc_Constants Ntc = theNtcConstants;
constexpr int Adc_Range = 1 << Ntc.NTC_Bits;
}  // namespace

float ADC2Rt::operator()(int adc) const {
  return -(Ntc.NTC_R * static_cast<float>(adc)) / static_cast<float>(adc - Adc_Range);
}

float rt2temp::operator()(float ohms) const {
  return 1.0F / (std::log(ohms / Ntc.NTC_R) / Ntc.NTC_B + 1.0F / Ntc.NTC_T0) - Ntc.NTC_Kelvin;
}

float temp2rt::operator()(float celsius) const {
  return Ntc.NTC_R * std::exp(Ntc.NTC_B * (1.0F / (Ntc.NTC_Kelvin + celsius) - 1.0F / Ntc.NTC_T0));
}

int Rt2ADC::operator()(float ohms) const {
  return static_cast<int>(static_cast<float>(Adc_Range - 1) * ohms / (Ntc.NTC_R + ohms));
}

float NTC_Adc_To_Temp(int adc) {
  return rt2temp()(ADC2Rt()(adc));
}

int NTC_Temp_To_Adc(float celsius) {
  return Rt2ADC()(temp2rt()(celsius));
}

}  // namespace orsanta
