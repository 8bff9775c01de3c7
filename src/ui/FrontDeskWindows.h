#pragma once

#include <QDialog>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QDateTimeEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class TForm_CheckIn;
class TForm_RoomHistory;

// The check-in dialog over TForm_CheckIn. Enter checks in the room, Escape
// leaves; Tab goes name, memo, wake-up, its time, its mode, then the keys.
class CheckInDialog : public QDialog {
  Q_OBJECT

public:
  CheckInDialog(TForm_CheckIn &logic, QWidget *parent = nullptr);
  void RefreshKeys();

public slots:
  void reject() override;

private:
  void Refresh();
  void Forward(void (TForm_CheckIn::*click)());

  TForm_CheckIn &m_logic;
  QLineEdit *m_name;
  QLabel *m_class;
  QLineEdit *m_memo;
  QCheckBox *m_wake;
  QDateTimeEdit *m_wakeTime;
  QComboBox *m_wakeMode;
  QPushButton *m_apply;
  QPushButton *m_multi;
};

// The room history window over TForm_RoomHistory, with the record views'
// page bar.
class RoomHistoryWindow : public QWidget {
  Q_OBJECT

public:
  RoomHistoryWindow(TForm_RoomHistory &logic, QWidget *parent = nullptr);

protected:
  void closeEvent(QCloseEvent *event) override;

private:
  TForm_RoomHistory &m_logic;
  QLineEdit *m_ext;
};
