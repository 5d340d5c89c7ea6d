// The one file that knows both the supervisor and the panel.
#include "host/motor_base.h"
#include "ui/panel.h"

namespace orsanta {

void C_VoiceMotorBase::show() {
  C_ORS_Dlg panel(this);  // runs to its end while it is constructed
}

}  // namespace orsanta
