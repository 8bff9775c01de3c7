#include "console/Login_Form.h"

#include "console/Main_Form.h"
#include "link/SysParam.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <stdexcept>

using namespace Qt::StringLiterals;

TLogin_Form::TLogin_Form(TMain_Form *main, QObject *parent)
    : TFormLogic("TLogin_Form", parent), m_main(main) {
  LoginInfo_Timer.setObjectName(u"LoginInfo_Timer"_s);
  LoginInfo_Timer.setInterval(100);
  connect(&LoginInfo_Timer, &QTimer::timeout, this, &TLogin_Form::LoginInfo_TimerTimer);
  main->Login_Form = this;
}

void TLogin_Form::FormShow() {
  TeButton2_Caption = LangText(LoginMode == 0 ? 573 : 574);
  SetControlText(u"TeButton2"_s, TextProperty::Caption, 0, TeButton2_Caption);
  if (m_shownOnce)
    return;
  m_shownOnce = true;
  const TSysConfig &c = SysConfig();
  TelNo_TeComboBox = c.UserName;
  if (!c.UserName.isEmpty() && !TelNo_Items.contains(c.UserName))
    TelNo_Items.append(c.UserName);
  Pwd_TeMaskEdit = c.Password;
  recPwd_TeCheckBox = c.RecPwdFlag;
  HostIP_TeMaskEdit = c.Host;
  HostPort_TeMaskEdit = c.Port;
  if (AutoLogin) {
    AutoLogin = false;
    Login_TeButtonClick();
  }
}

void TLogin_Form::ShowModal() {
  m_main->LoginDialogOpen = 1;
  Show();
  FormShow();
}

void TLogin_Form::Login_TeButtonClick() {
  TSysConfig &c = SysConfig();
  m_main->HostText = HostIP_TeMaskEdit;
  m_main->HostIP_tefxButton_Caption = LangFormat(566, {HostIP_TeMaskEdit});
  m_main->HostIP_tefxButton_Hint = LangFormat(567, {HostIP_TeMaskEdit});
  c.Host = HostIP_TeMaskEdit;

  c.UserName = TelNo_TeComboBox;
  c.RecPwdFlag = recPwd_TeCheckBox;
  if (recPwd_TeCheckBox)
    c.Password = Pwd_TeMaskEdit;

  if (TelNo_TeComboBox.isEmpty()) {
    TheShell().Message(MessageKind::Warning, LangText(568));
    return;
  }

  LoginInfo_Timer.start();
  Logininfo_TeLabel = LangText(569);
  TheShell().Balloon(LangText(570), Logininfo_TeLabel, 10, BalloonIcon::Info);
  ActivePage = info_TeTabSheet;

  try {
    disConnectTeButtonClick();
    connect_TeButtonClick();
    m_main->LoginDialogOpen = 0;
    Close();
  } catch (const std::exception &e) {
    WriteLog(u"Login failed: "_s + QString::fromLocal8Bit(e.what()));
    m_main->LoginDialogOpen = 0;
    Close();
    m_main->Front = TMain_Form::FrontPanel::Company_TePanel;
    emit m_main->frontChanged();
    Logininfo_TeLabel = LangText(571);
    ActivePage = info_TeTabSheet;
    TheShell().Balloon(LangText(572), Logininfo_TeLabel, 10, BalloonIcon::Error);
  }
  LoginInfo_Timer.stop();
  Login_TeProgressBar = 0;
}

void TLogin_Form::connect_TeButtonClick() {
  TSysConfig &c = SysConfig();
  c.Host = HostIP_TeMaskEdit;
  c.Port = HostPort_TeMaskEdit;
  c.UserName = TelNo_TeComboBox;
  c.RecPwdFlag = recPwd_TeCheckBox;
  c.Password = recPwd_TeCheckBox ? Pwd_TeMaskEdit : QString();
  SaveConfig(c);

  TExchangeSocket &socket = m_main->Link().Winsock_TCP();
  socket.Close();
  bool portOk = false;
  const uint port = HostPort_TeMaskEdit.trimmed().toUInt(&portOk);
  if (!portOk || port == 0 || port > 65535)
    throw std::invalid_argument("bad exchange port");
  socket.RemoteHost = HostIP_TeMaskEdit.trimmed();
  socket.RemotePort = quint16(port);

  TheShell().Balloon(LangText(575), LangText(576), 10, BalloonIcon::Info);
  WriteLog(u"Connecting to IP:%1"_s.arg(socket.RemoteHost));
  socket.Connect();
  TheShell().Balloon(LangText(577), LangText(578), 10, BalloonIcon::Info);
}

void TLogin_Form::disConnectTeButtonClick() {
  m_main->Link().Winsock_TCP().Close();
  SysParam().MyID = 65535;
  TheShell().Balloon(LangText(581), LangText(582), 10, BalloonIcon::Warning);
}

void TLogin_Form::TeButton1Click() {
  HostIP_TeMaskEdit = SysConfig().Host;
  HostPort_TeMaskEdit = SysConfig().Port;
}

void TLogin_Form::TeButton2Click() {
  m_main->LoginDialogOpen = 0;
  Close();
  if (LoginMode == 0) {
    m_main->SilentExit = 1;
    emit quitRequested();
  }
}

void TLogin_Form::EnterPressed() {
  Login_TeButtonClick();
}

void TLogin_Form::LoginInfo_TimerTimer() {
  // Runs only while a login click lets events through.
  Login_TeProgressBar += 10;
  if (Login_TeProgressBar < kProgressMax)
    return;
  LoginInfo_Timer.stop();
  m_main->LoginDialogOpen = 0;
  Close();
  TheShell().Balloon(LangText(583), LangText(584), 10, BalloonIcon::Error);
  m_main->Front = TMain_Form::FrontPanel::Company_TePanel;
  emit m_main->frontChanged();
  m_main->LoadConRecords();
}
