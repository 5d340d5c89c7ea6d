// The last look at a value on its way out to a device. What a drive makes of a value that is no number is anybody's
// guess, and a current clamp that such a value opens presses with all the force that the coil has.
//
// Any thread; the message box blocks the calling thread until the operator has answered.
#pragma once

namespace orsanta {

// Whether the value is a number and so may be sent. One that is none, infinite or not-a-number, is told to the
// operator, with the device's CAN id and what it was meant for ("电流"); the caller then sends nothing.
bool May_Send(int can_id, const char* what, double value);

}  // namespace orsanta
