#pragma once

#include <QWidget>

#include <array>

class QCheckBox;
class QLabel;
class QLineEdit;
class TDeviceTestPanel;

// The hidden test panel of the old local console device, a small tool window
// over TDeviceTestPanel. Ctrl+Shift+F12 in the window it belongs to shows and
// hides it; nothing else leads there, as no operator needs it.
class DeviceTestPanelView : public QWidget {
  Q_OBJECT

public:
  DeviceTestPanelView(TDeviceTestPanel &logic, QWidget *owner);

private:
  void Refresh();

  TDeviceTestPanel &m_logic;
  QLineEdit *m_text;
  std::array<QCheckBox *, 8> m_lit{};
  std::array<QCheckBox *, 8> m_blink{};
  QLabel *m_hook;
};
