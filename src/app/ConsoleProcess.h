#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class TApiServer;
class TForm_PopMsg;
class TGSM_Form;
class TLogin_Form;
class TMain_Form;
class TTasks_Form;
class TUDPMainForm;
class TUserInfo_Form;
class Tsysset_Form;

// The process around the windows: it prepares the program folder, brings the
// language and the settings up in their order, builds the window logics, and
// closes everything once, whichever way the end comes.
class ConsoleProcess : public QObject {
  Q_OBJECT

public:
  // The folder every shipped default file is seeded from.
  static constexpr char16_t kShippedRoot[] = u":/shipped";

  explicit ConsoleProcess(QObject *parent = nullptr);
  ~ConsoleProcess() override;

  // `home` empty means the executable's folder. `autoLogin` presses Login at the
  // login dialog's first show. False when the console can't run at all (its
  // event port is taken); the reason has been shown.
  bool Start(const QString &home, bool autoLogin, quint16 udpPort = 5009);
  // The main window's first show: the language at first show, the worker, and
  // the login dialog when the link was never up. Once the screens exist.
  void FirstShow();

  // The close that asks nothing: disconnect, settings saved, "Application
  // Close!" logged, the event loop told to end. Runs once.
  void SilentClose();
  // The operator closes the main window: asks unless the close is a silent one.
  // False when the operator said No and the session goes on.
  bool WindowClose();
  // The console has closed (by either way) and the event loop was told to end.
  bool Closed() const { return m_closed; }

  TMain_Form *Main() const { return m_main.get(); }
  TLogin_Form *Login() const { return m_login.get(); }
  Tsysset_Form *Sysset() const { return m_sysset.get(); }
  TUserInfo_Form *UserInfo() const { return m_userInfo.get(); }
  TGSM_Form *Gsm() const { return m_gsm.get(); }
  TForm_PopMsg *PopMsg() const { return m_popMsg.get(); }
  TTasks_Form *Tasks() const { return m_tasks.get(); }
  TUDPMainForm *Udp() const { return m_udp.get(); }
  // The automation API; null unless [Api] enables it and it started.
  TApiServer *Api() const { return m_api.get(); }

private:
  std::unique_ptr<TMain_Form> m_main;
  std::unique_ptr<TForm_PopMsg> m_popMsg;
  std::unique_ptr<Tsysset_Form> m_sysset;
  std::unique_ptr<TLogin_Form> m_login;
  std::unique_ptr<TUserInfo_Form> m_userInfo;
  std::unique_ptr<TTasks_Form> m_tasks;
  std::unique_ptr<TGSM_Form> m_gsm;
  std::unique_ptr<TUDPMainForm> m_udp;
  // Last, so it goes first: no request reaches windows being torn down.
  std::unique_ptr<TApiServer> m_api;
  bool m_closed = false;
  // The call-record page searches again after stored records, at most once in
  // this interval: a burst of records then costs one search, not one each.
  QTimer m_recordsRefresh;
  static constexpr int kRecordsRefreshMs = 250;
};
