#pragma once

#include <QObject>
#include <QString>

#include <memory>

class TForm_PopMsg;
class TGSM_Form;
class TLogin_Form;
class TMain_Form;
class TTasks_Form;
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
  // login dialog's first show.
  void Start(const QString &home, bool autoLogin);

  // The close that asks nothing: disconnect, settings saved, "Application
  // Close!" logged, the event loop told to end. Runs once.
  void SilentClose();

  TMain_Form *Main() const { return m_main.get(); }

private:
  std::unique_ptr<TMain_Form> m_main;
  std::unique_ptr<TForm_PopMsg> m_popMsg;
  std::unique_ptr<Tsysset_Form> m_sysset;
  std::unique_ptr<TLogin_Form> m_login;
  std::unique_ptr<TUserInfo_Form> m_userInfo;
  std::unique_ptr<TTasks_Form> m_tasks;
  std::unique_ptr<TGSM_Form> m_gsm;
  bool m_closed = false;
};
