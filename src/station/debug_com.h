// C_VoiceDebugCom: the serial link of one station. It carries the station's bare result outward and its trigger byte
// inward; while it is open it takes the place of the station's IO input.
//
// Wire format outward: "%6.0f\n", the value in micrometres. Inward: "T" as the last byte of a read asks for a
// measurement.
//
// The loop thread reads and the station's lane writes, at once and without a common lock. The panel replaces a link
// while both go on: the station hands links out by shared pointer, and closes the old one before it makes the new one,
// since a port has one user at a time.
#pragma once

#include "support/services/serial.h"
#include "support/store/store.h"
#include "support/system/wide_string.h"
#include "support/time/shared.h"

namespace orsanta {

class C_VoiceDebugCom : public CAutoSaveClassData2 {
 public:
  // Loads the link's settings from the store "电机%d串口参数" with the id, and opens the port if one is set. A port
  // that will not open, or does not take the rate, is shown in a message box; the link then stays closed.
  explicit C_VoiceDebugCom(int CanID);

  int Is_Open() const { return m_Open; }
  // Reads all that has arrived (up to 256 bytes): 1 if the last byte is "T", else 0; 0 if the link is closed.
  int Read_Trigger();
  // Sends the value (micrometres) as one line, if the link is open.
  void Send_Value(double value);
  // Stores the settings.
  void Save() { SaveAllClassParameterToHashOpt(m_Title.GetBuffer(), 1); }
  // Lets the operator choose port and rate, and stores them on confirmation. They take effect in a new link.
  void Settings_Dialog();
  // Gives the port back for good; no read or write is under way after it.
  void Close();

  Shared<int> ValBaud = 115200;
  Shared<int> ValComNum = 0;  // 0: no port

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override;

 private:
  CComSerial m_Port;
  Shared<int> m_Open = 0;
  CMyStringW m_Title;
};

}  // namespace orsanta
