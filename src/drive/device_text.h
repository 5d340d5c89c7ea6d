// C_Device_Text: how a bus device's identity word and fault bits read as text, for diagnostic displays.
// Immutable after construction; any thread.
#pragma once

#include <cstdint>

#include "support/base/array.h"
#include "support/system/wide_string.h"

namespace orsanta {

class C_Device_Text {
 public:
  C_Device_Text();

  // Model name of a device type code, 0 to 11; any other code is named as undefined.
  CMyStringW Device_Type_Name(int type) const;
  // Three lines: device type, software version, hardware version. word: type in bits 16 to 31 (signed), hardware
  // version in bits 8 to 15, software version in bits 0 to 7.
  CMyStringW Device_Info_Text(int32_t word) const;
  // One line for each set bit that has a text, lowest first. Empty without any bit; if only bits without a text are
  // set, the one text for an undefined fault.
  CMyStringW Fault_Text(uint32_t mask) const;

 private:
  CMyArray<CMyStringW> Fault_Texts;  // bit 0 first
};

}  // namespace orsanta
