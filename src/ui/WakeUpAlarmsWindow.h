#pragma once

#include <QWidget>

class QTableWidget;
class TForm_WakeUpAlarms;

// The window of failed wake-ups nobody has acknowledged yet: room, number,
// wake-up time and failed attempts, with the keys to acknowledge the current
// one or all. It stays on top and leaves the main window usable.
class WakeUpAlarmsWindow : public QWidget {
  Q_OBJECT

public:
  WakeUpAlarmsWindow(TForm_WakeUpAlarms &logic, QWidget *parent);

protected:
  void closeEvent(QCloseEvent *event) override;

private:
  void Refill();

  TForm_WakeUpAlarms &m_logic;
  QTableWidget *m_list = nullptr;
};
