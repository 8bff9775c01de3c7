#include "console/DeviceTestPanel.h"

#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

TDeviceTestPanel::TDeviceTestPanel(TDisplay &display, QObject *parent)
    : QObject(parent), m_device(display) {}

void TDeviceTestPanel::LMDButton1Click() {
  m_device.Parse(LMDEdit1);
  m_device.AfterParse(CurrentDateTime());
  for (int bit = 0; bit < 8; ++bit) {
    LMDCheckGroup1[size_t(bit)] = (m_device.State.LedOn >> bit) & 1;
    LMDCheckGroup2[size_t(bit)] = (m_device.State.LedFlash >> bit) & 1;
  }
  HookCaption = m_device.HookCaption;
  emit changed();
}

void TDeviceTestPanel::LMDButton3Click() {
  const QByteArray bytes = TMain_Form_SendHex(LMDEdit1);
  const int low = bytes.size() > 0 ? quint8(bytes[0]) : 0;
  const int high = bytes.size() > 1 ? quint8(bytes[1]) : 0;
  TheShell().Message(MessageKind::Information,
                     FormatText(u"userWndL:%d H:%d Length:%d "_s, {low, high, int(bytes.size())}));
}

QByteArray TDeviceTestPanel::TMain_Form_SendHex(const QString &text) {
  QByteArray bytes;
  int high = -1;
  for (const QChar c : text) {
    const char16_t u = c.unicode();
    int digit = -1;
    if (u >= u'0' && u <= u'9')
      digit = u - u'0';
    else if (u >= u'a' && u <= u'f')
      digit = u - u'a' + 10;
    else if (u >= u'A' && u <= u'F')
      digit = u - u'A' + 10;
    if (digit < 0)
      continue;
    if (high < 0) {
      high = digit;
    } else {
      bytes.append(char(high << 4 | digit));
      high = -1;
    }
  }
  return bytes;
}
