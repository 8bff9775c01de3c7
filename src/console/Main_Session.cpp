// The session part of the main window's logic: the link's events, the login
// answer, the pulse check, re-login and log off.
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

void TMain_Form::Winsock_TCPConnect() {
  SysParam().Connected = 1;
  ShowDisplay(LangText(336), false);
  WriteLog(u"Connected."_s);
  EverConnected = 1;
  Login_ToolButtonClick();
}

void TMain_Form::Winsock_TCPClose() {
  SysParam().Connected = 0;
  const QString text = LangText(337);
  ShowDisplay(text, false);
  TheShell().Balloon(LangText(338), text, 10, BalloonIcon::Info);
  SetUdpLoggedIn(false);
  WriteLog(u"DisConnected!!!"_s);
}

void TMain_Form::Login_ToolButtonClick() {
  if (!Login_Form)
    return;
  SendLogin(Login_Form->TelNo_TeComboBox, Login_Form->Pwd_TeMaskEdit);
}

void TMain_Form::processPacketFromSocket_Login(const char *work, const QString &result) {
  TNetPhone_SysParam &sp = SysParam();
  const QString number = Login_Form ? Login_Form->TelNo_TeComboBox : sp.MyTelNo;
  if (result == u"1000"_s) {
    sp.LoggedIn = 1;
    sp.LoginDone = 1;
    sp.MyID = GetU16(work, 8);
    const QString status = LangFormat(304, {number});
    ShowDisplay(status, false);
    TheShell().Balloon(LangText(305), status, 10, BalloonIcon::Info);
    SetCaption(AppTitle + LangFormat(306, {number}));
    Edit_Caller_Text = number;
    Edit_Caller_Enabled = true;
    Edit_Caller_Hint = u"非管理员此项不可编辑"_s;
    CheckBox_Caller_Enabled = true;
    sp.MyTelNo = number;
    sp.Password = Login_Form ? Login_Form->Pwd_TeMaskEdit : QString();
    LoadConRecords();
    sp.PulseSeen = 1;
    PulseCheck_Timer.start();
    SendPhoneCommand(133);
    LoginDialogOpen = 0;
    if (Login_Form)
      Login_Form->Close();
    SetFront(FrontPanel::Dial_TeTabControl);
    LoadPhones_tefxButtonClick();
    QCoreApplication::processEvents();
    RefrshPhones_tefxButtonClick();
    SetUdpLoggedIn(true);
  } else if (result == u"1001"_s) {
    sp.LoggedIn = 0;
    SetCaption(LangText(307));
    TheShell().Balloon(LangText(308), LangText(309), 10, BalloonIcon::Warning);
    ShowDisplay(LangText(310), true);
    if (Login_Form)
      Login_Form->Close();
    SetFront(FrontPanel::Company_TePanel);
  } else if (result == u"1002"_s) {
    sp.LoggedIn = 0;
    if (Login_Form)
      Login_Form->Logininfo_TeLabel = LangText(311);
    TheShell().Balloon(LangText(312), LangText(313), 10, BalloonIcon::Warning);
    ShowDisplay(LangText(314), true);
    if (Login_Form)
      Login_Form->Close();
    SetFront(FrontPanel::Company_TePanel);
    SetUdpLoggedIn(false);
  } else if (result == u"1003"_s) {
    // Unlike the two refusals above, this one leaves LoggedIn as it was.
    ShowDisplay(LangText(315), true);
    if (Login_Form)
      Login_Form->Logininfo_TeLabel = LangText(316);
    TheShell().Balloon(LangText(317), LangText(318), 10, BalloonIcon::Warning);
    if (Login_Form)
      Login_Form->Close();
    SetFront(FrontPanel::Company_TePanel);
    SetUdpLoggedIn(false);
  }
}

void TMain_Form::PulseCheck_TimerTimer() {
  TNetPhone_SysParam &sp = SysParam();
  if (sp.PulseSeen == 1) {
    sp.PulseSeen = 0;
    return;
  }
  WriteLog(u"No Pulse!!!"_s);
  if (Login_Form)
    Login_Form->disConnectTeButtonClick();
  TheShell().Balloon(LangText(343), LangText(344), 10, BalloonIcon::Error);
  if (Login_Form) {
    Login_Form->ActivePage = TLogin_Form::Login_TeTabSheet;
    Login_Form->Login_TeButtonClick();
  }
  PulseCheck_Timer.stop();
}

void TMain_Form::TeSpeedButton9Click() {
  SilentExit = 0;
  if (!Login_Form)
    return;
  Login_Form->ActivePage = TLogin_Form::Login_TeTabSheet;
  Login_Form->Pwd_TeMaskEdit.clear();
  Login_Form->LoginMode = 1;
  Login_Form->ShowModal();
}

void TMain_Form::TeSpeedButton11Click() {
  // The socket stays open, and MyID stays, until the next login's disconnect step.
  SilentExit = 1;
  SysParam().LoggedIn = 0;
  PulseCheck_Timer.stop();
  if (!Login_Form)
    return;
  Login_Form->ActivePage = TLogin_Form::Login_TeTabSheet;
  Login_Form->LoginMode = 0;
  Login_Form->ShowModal();
}
