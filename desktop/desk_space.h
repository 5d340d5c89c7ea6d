// The part of the screen in which the windows of the panel open. Qt thread only.
#pragma once

#include <QScreen>
#include <QWidget>

namespace orsanta {

// Pixels at the bottom of the screen that `orsanta panel` keeps for its simulator strip; 0 in every other program.
inline int Strip_Height() {
  return qEnvironmentVariableIntValue("ORSANTA_STRIP_HEIGHT");
}

// What the screen of the window has for it, without what the desktop and the strip keep.
inline QRect Desk_Space(const QWidget& window) {
  return window.screen()->availableGeometry().adjusted(0, 0, 0, -Strip_Height());
}

}  // namespace orsanta
