// The session part of the main window's logic: the link's events, the login
// answer, the pulse check, re-login and log off.
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "directory/RecordServerPage.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Settings.h"
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
  SetUdpLoggedIn(false);
  WriteLog(u"DisConnected!!!"_s);
  // An exchange that takes a retry's connect and drops it again is part of the
  // outage, already on the display: no balloon for each try.
  if (m_reconnecting)
    return;
  const QString text = LangText(337);
  ShowDisplay(text, false);
  TheShell().Balloon(LangText(338), text, 10, BalloonIcon::Info);
  // The session went with the connection: log in again at once, and on until back.
  if (SysParam().LoggedIn == 1) {
    StartRelogin();
    Relogin_TimerTimer();
  }
}

void TMain_Form::Winsock_TCPConnectFailed(const QString &error) {
  const TExchangeSocket &socket = m_link.Winsock_TCP();
  const QString where = u"%1:%2"_s.arg(socket.RemoteHost).arg(socket.RemotePort);
  m_lastConnectError = error;
  if (m_reconnecting)
    return; // the try's own log line tells it, once a minute
  WriteLog(u"Connect to %1 failed: %2"_s.arg(where, error));
  // Without this the desk would wait for an answer that can't come: a missing
  // or wrong address looks just like an exchange that is slow to answer.
  const QString text = LangText(571);
  ShowDisplay(text, true);
  if (Login_Form)
    Login_Form->Logininfo_TeLabel = text;
  SetFront(FrontPanel::Company_TePanel);
  TheShell().Message(MessageKind::Error, text + u"\n"_s + where + u": "_s + error);
}

QString TMain_Form::SessionStateText() const {
  if (m_reconnecting)
    return LangText(575);
  return LangText(SysParam().LoggedIn ? 336 : 343);
}

void TMain_Form::StartRelogin() {
  if (m_reconnecting)
    return;
  m_reconnecting = true;
  m_reloginTries = 0;
  m_reloginLogged.invalidate();
  m_lastConnectError.clear();
  // The pulse check would only start the same over again.
  PulseCheck_Timer.stop();
  SysParam().LoggedIn = 0;
  ShowDisplay(LangText(569), false);
  Relogin_Timer.start(ReloginFastInterval);
}

void TMain_Form::StopRelogin() {
  if (!m_reconnecting)
    return;
  m_reconnecting = false;
  Relogin_Timer.stop();
  WriteLog(u"Logging in again stopped after %1 tries"_s.arg(m_reloginTries));
}

void TMain_Form::Relogin_TimerTimer() {
  if (!m_reconnecting)
    return;
  ++m_reloginTries;
  const TSysConfig &c = SysConfig();
  TExchangeSocket &socket = m_link.Winsock_TCP();
  socket.Close();
  SysParam().MyID = kNoSession;
  socket.RemoteHost = c.Host.trimmed();
  bool portOk = false;
  const uint port = c.Port.trimmed().toUInt(&portOk);
  if (portOk && port > 0 && port <= 65535)
    socket.RemotePort = quint16(port);
  // A night's outage makes thousands of tries; the log hears of one a minute.
  if (!m_reloginLogged.isValid() || m_reloginLogged.elapsed() >= 60000) {
    m_reloginLogged.start();
    WriteLog(u"Logging in again to %1:%2, try %3%4"_s.arg(socket.RemoteHost)
                 .arg(socket.RemotePort)
                 .arg(m_reloginTries)
                 .arg(m_lastConnectError.isEmpty() ? QString()
                                                   : u" (last: "_s + m_lastConnectError + u')'));
  }
  ShowDisplay(LangText(569), false);
  socket.Connect();
  Relogin_Timer.start(m_reloginTries < ReloginFastTries ? ReloginFastInterval
                                                        : ReloginSlowInterval);
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
    StopRelogin();
    sp.LoggedIn = 1;
    sp.LoginDone = 1;
    sp.MyID = GetU16(work, 8);
    const QString status = LangFormat(304, {number});
    ShowDisplay(status, false);
    TheShell().Balloon(LangText(305), status, 10, BalloonIcon::Info);
    SetCaption(AppTitle + LangFormat(306, {number}));
    m_recordServer->LoggedInAs(number);
    sp.MyTelNo = number;
    sp.Password = Login_Form ? Login_Form->Pwd_TeMaskEdit : QString();
    LoadConRecords();
    sp.PulseSeen = 1;
    PulseCheck_Timer.start();
    SendPhoneCommand(133);
    AskRecordInfo();
    LoginDialogOpen = 0;
    if (Login_Form)
      Login_Form->Close();
    SetFront(FrontPanel::Dial_TeTabControl);
    LoadPhones_tefxButtonClick();
    QCoreApplication::processEvents();
    RefrshPhones_tefxButtonClick();
    SetUdpLoggedIn(true);
  } else if (result == u"1001"_s) {
    // A wrong password won't get better by trying: the operator must act. An
    // extension still held from before the outage (1002) frees itself, so the
    // tries go on through that one.
    StopRelogin();
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
    StopRelogin();
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
  // The login below is the first try; the next ones follow until the session is back.
  StartRelogin();
  if (Login_Form) {
    Login_Form->ActivePage = TLogin_Form::Login_TeTabSheet;
    Login_Form->Login_TeButtonClick();
    ++m_reloginTries;
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
  StopRelogin();
  if (!Login_Form)
    return;
  Login_Form->ActivePage = TLogin_Form::Login_TeTabSheet;
  Login_Form->LoginMode = 0;
  Login_Form->ShowModal();
}
