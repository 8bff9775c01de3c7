#pragma once

#include "support/FormLogic.h"

#include <QStringList>
#include <QTimer>

class TMain_Form;

// The login dialog: number, password, host and port. Pressing login tears down
// any old connection, connects, and closes the dialog at once; the exchange's
// answer arrives later as a Login packet.
class TLogin_Form : public TFormLogic {
  Q_OBJECT

public:
  enum Page { Login_TeTabSheet, TeTabSheet2, info_TeTabSheet };

  explicit TLogin_Form(TMain_Form *main, QObject *parent = nullptr);

  QString TelNo_TeComboBox;
  QStringList TelNo_Items;
  QString Pwd_TeMaskEdit;
  bool recPwd_TeCheckBox = false;
  QString HostIP_TeMaskEdit;
  QString HostPort_TeMaskEdit; // shown disabled
  QString Logininfo_TeLabel;
  int Login_TeProgressBar = 0;
  static constexpr int kProgressMax = 100;
  QTimer LoginInfo_Timer;
  Page ActivePage = Login_TeTabSheet;

  // 0: at start or after log off, where leaving ends the program; 1: re-login
  // from the running console, where leaving only closes the dialog.
  quint32 LoginMode = 0;
  QString TeButton2_Caption;

  // The dialog comes up; the first time it fills its boxes from the settings.
  void FormShow();
  void ShowModal(); // opens it as the frame does: flagged open on the main form

  void Login_TeButtonClick();
  void connect_TeButtonClick();
  void disConnectTeButtonClick();
  void TeButton1Click(); // "重置": host and port back from the settings
  void TeButton2Click(); // leave
  void EnterPressed();   // Enter in the number or a password box
  void LoginInfo_TimerTimer();

  // --login: press Login at the first show with the saved number and password.
  bool AutoLogin = false;

signals:
  void quitRequested(); // leaving at LoginMode 0 ends the program

private:
  TMain_Form *m_main;
  bool m_shownOnce = false;
};
