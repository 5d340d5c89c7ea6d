// C_InitDlg: the settings that the system needs before anything else exists. They live in the store "全局电机参数"; on
// the very first start, when the store does not exist yet, the operator is asked. A change takes effect at the next
// start.
//
// One thread makes and uses an object. The constructor may show a dialog and wait for its answer.
#pragma once

#include "support/store/store.h"

namespace orsanta {

class C_InitDlg : private CAutoSaveClassData2 {
 public:
  // Loads the settings. Without a store it runs the dialog and then writes the store, whatever the answer was.
  C_InitDlg();

  // Asks the operator; a confirmation takes the choices and saves them, a cancel changes nothing.
  void Settings_Dialog();
  // MotorNum: number of stations. PortNum: host serial port, 0 none, n for COMn. Baud: its rate. advanceduser: 0 in
  // every run. IoInit: 1 with the IO card, 0 without. Start_num: id of the first station.
  void Read_Out(int& MotorNum_out, int& PortNum_out, int& Baud_out, int& advanceduser_out, int& IoInit_out,
                int& Start_num_out) const;

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override;

 private:
  int MotorNum = 1;
  int PortNum = 0;
  int Baud = 115200;
  int advanceduser = 0;  // not stored
  int IoInit = 0;
  int Start_num = 1;
};

}  // namespace orsanta
