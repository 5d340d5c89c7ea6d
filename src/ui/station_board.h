// C_Station_Board: what the panel tells of all its stations at a glance. A thread of its own reads the stations ten
// times a second and hands what it finds to the front, so that the board goes on while a command keeps the panel's
// thread. It only reads, and takes none of the flags that others wait for.
//
// Lives as long as its panel.
#pragma once

#include <vector>

#include "support/dialog/front.h"
#include "support/threads/thread.h"

namespace orsanta {

class C_VoiceMotor;
class C_VoiceMotorBase;

class C_Station_Board : public CBaseBindThread {
 public:
  // base: the supervisor, which must outlive the board.
  explicit C_Station_Board(C_VoiceMotorBase& base);
  ~C_Station_Board() override;

 protected:
  void OnThreadLoop(void* param) override;

 private:
  // What was seen of a station so far.
  struct C_Watched {
    double last_time_ms = 0.0;  // duration of the last cycle, by which a new one is noticed
    bool has_measured = false;  // since the board was made
    bool is_measured = false;   // since the probe was up
  };

  C_Station_Tile Look_At(int index, C_Watched& watched) const;

  C_VoiceMotorBase& m_Base;
  std::vector<C_Watched> m_Watched;
};

}  // namespace orsanta
