#pragma once

#include "devices/DeviceTypes.h"

#include <QColor>
#include <QPalette>

// A colour of the status table as the screen shows it: a blue-green-red word,
// or one of the desktop's own colours.
inline QColor ToQColor(TColor colour, const QPalette &palette = QPalette()) {
  if (colour & kSystemColour) {
    switch (colour & 0xFF) {
    case 15: return palette.color(QPalette::Button);      // button face
    case 24: return palette.color(QPalette::ToolTipBase); // info background
    case 26: return palette.color(QPalette::Link);        // hot light
    default: return palette.color(QPalette::Window);
    }
  }
  return QColor(int(colour & 0xFF), int((colour >> 8) & 0xFF), int((colour >> 16) & 0xFF));
}

inline TColor FromQColor(const QColor &c) {
  return TColor(c.red()) | (TColor(c.green()) << 8) | (TColor(c.blue()) << 16);
}
