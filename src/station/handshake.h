// C_Handshake: the flags by which a level that stays asks for one task and not for two. Level 0 asks for a measurement,
// level 1 for the probe to go back, and each start takes the flag that the other task sets:
//
//                      level 0, Force_Back_Finish taken
//        probe up  ------------------------------------------>  task 1, which sets Test_Finish
//            ^                                                      |
//            |                                                      v
//     task 2, which sets Force_Back_Finish  <-------------------  probe on the part
//                      level 1, Test_Finish taken
//
// The supervisor's loop takes Test_Finish and Force_Back_Finish, the panel takes Test_Finish_Panel, the host looks at
// Force_Back_Finish. A task that comes by another way than a level sets the same flags; one that measures takes
// Force_Back_Finish at its start.
//
// Any thread may call any operation. A take reads and clears in two steps.
#pragma once

#include "support/time/shared.h"

namespace orsanta {

class C_Handshake {
 public:
  void Set_Test_Finish() {
    Test_Finish = 1;
    Test_Finish_Panel = 1;
  }
  int Get_Test_Finish() const { return Test_Finish; }
  // The old value; clears only a 1.
  int Take_Test_Finish() { return Take(Test_Finish); }
  int Take_Test_Finish_Panel() { return Take(Test_Finish_Panel); }

  void Set_Force_Back_Finish() { Force_Back_Finish = 1; }
  int Get_Force_Back_Finish() const { return Force_Back_Finish; }
  // The old value; always writes 0.
  int Take_Force_Back_Finish() {
    const int old = Force_Back_Finish;
    Force_Back_Finish = 0;
    return old;
  }

  Shared<int> Test_Finish;           // 1 after each measuring task
  Shared<int> Force_Back_Finish{1};  // 1 after each force-back task; a station starts as one that is back
  Shared<int> Test_Finish_Panel;     // as Test_Finish

 private:
  static int Take(Shared<int>& flag) {
    const int old = flag;
    if (old == 1) flag = 0;
    return old;
  }
};

}  // namespace orsanta
