#pragma once

#include "link/DeviceLink.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <array>

class TDisplay;

// The hidden test panel (Panel2) of the old local console device: a text box
// whose stream goes through the device's parser onto the display and lamps.
// No device is attached any more; this is how the parser is reached by hand.
class TDeviceTestPanel : public QObject {
  Q_OBJECT

public:
  explicit TDeviceTestPanel(TDisplay &display, QObject *parent = nullptr);

  QString LMDEdit1;
  // The first lamps: lit (LMDCheckGroup1) and blinking (LMDCheckGroup2), bit by bit.
  std::array<bool, 8> LMDCheckGroup1{};
  std::array<bool, 8> LMDCheckGroup2{};
  QString HookCaption;

  // Parses the text, then sets the lamps and, at idle, the clock on the display.
  void LMDButton1Click();
  // Tells the first two bytes of the text as hex and how many there are.
  void LMDButton3Click();

  // The bytes of a hex text; every character that is no hex digit is passed
  // over, and a last unpaired digit is no byte.
  static QByteArray TMain_Form_SendHex(const QString &text);

  const TDeviceLink &Device() const { return m_device; }

signals:
  void changed(); // lamps or hook caption

private:
  TDeviceLink m_device;
};
