#pragma once

#include <QWidget>

class QComboBox;
class QDateTimeEdit;
class QLineEdit;
class TForm_MoringCallLog;

// The wake-up log window ("叫醒记录") over its logic: on top of the main window
// but not holding it, the boxes, the grid with the state pictures, the page bar
// and the export key. It shows and hides as its logic says.
class MoringCallLogWindow : public QWidget {
  Q_OBJECT

public:
  MoringCallLogWindow(TForm_MoringCallLog &logic, QWidget *parent);

protected:
  void closeEvent(QCloseEvent *event) override;

private:
  void ToLogic();
  void FromLogic();

  TForm_MoringCallLog &m_logic;
  QDateTimeEdit *m_start = nullptr;
  QDateTimeEdit *m_end = nullptr;
  QLineEdit *m_ext = nullptr;
  QLineEdit *m_roomNo = nullptr;
  QComboBox *m_state = nullptr;
};
