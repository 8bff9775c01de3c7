#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QPushButton;
class QSpinBox;
class QTimeEdit;
class TDeviceEvents;
class TMoringCall_Form;

// The wake-up dialog over TMoringCall_Form. It opens over the window without
// blocking the event loop, since the exchange's answer to its query must come
// in while it is open; that answer fills it again.
class MoringCallDialog : public QDialog {
  Q_OBJECT

public:
  MoringCallDialog(TMoringCall_Form &logic, TDeviceEvents &events, QWidget *parent = nullptr);

  void Refresh();

public slots:
  void reject() override;

private:
  void StoreEdits();
  void OnShown();

  TMoringCall_Form &m_logic;
  QLabel *m_telNos;
  QComboBox *m_flag;
  QDateEdit *m_date;
  QSpinBox *m_hour;
  QSpinBox *m_minute;
  QComboBox *m_mode;
  QCheckBox *m_everyDay;
  QTimeEdit *m_everyDayTime;
  QPushButton *m_apply;
  QPushButton *m_multi;
};
