#include "app/CommandLine.h"
#include "app/ConsoleProcess.h"
#include "app/TerminationSignals.h"

#include "core/console/Login_Form.h"
#include "core/console/Main_Form.h"
#include "core/console/UserInfo_Form.h"
#include "core/link/SysParam.h"
#include "devices/GSM_Unit.h"
#include "directory/DirectoryPages.h"
#include "directory/PopMsg_Form.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"
#include "support/Sysset_Unit.h"
#include "ui/GsmDialog.h"
#include "ui/LanguageBinding.h"
#include "ui/LoginDialog.h"
#include "ui/MainWindow.h"
#include "ui/PopMsgWindow.h"
#include "ui/SettingsDialog.h"
#include "ui/UserInfoDialog.h"
#include "ui/WidgetShell.h"

#include <QApplication>
#include <QSystemTrayIcon>
#include <QTimer>

#include <cstdio>

int main(int argc, char **argv) {
  const TCommandLine cl = ParseCommandLine(argc, argv);
  if (!cl.Error.isEmpty()) {
    std::fprintf(stderr, "trunkdesk: %s\n\n%s", qUtf8Printable(cl.Error),
                 qUtf8Printable(UsageText()));
    return 2;
  }
  if (cl.Help) {
    std::fputs(qUtf8Printable(UsageText()), stdout);
    return 0;
  }
  if (cl.Version) {
    std::printf("%s\n", qUtf8Printable(VersionText()));
    return 0;
  }

  TerminationSignals::Install();
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trunkdesk"));
  QApplication::setApplicationVersion(QStringLiteral("5.2"));
  // The hint pause the screens apply to their tool tips.
  app.setProperty("hintPause", 10000);

  // Without a screen (offscreen) nobody can answer a dialog: the shell says so on
  // standard error instead.
  const QString platform = QGuiApplication::platformName();
  WidgetShell shell(platform == QLatin1StringView("offscreen") ||
                    platform == QLatin1StringView("minimal"));
  SetShell(&shell);

  ConsoleProcess process;
  TerminationSignals signalsWatch;
  QObject::connect(&signalsWatch, &TerminationSignals::terminationRequested, &process,
                   &ConsoleProcess::SilentClose);
  // The desktop session's end closes like a signal does.
  QObject::connect(&app, &QGuiApplication::commitDataRequest, &process,
                   [&process](QSessionManager &) { process.SilentClose(); });

  if (!process.Start(cl.Home, cl.Login, cl.UdpPort)) {
    SetShell(nullptr);
    return 1;
  }

  // The program ends by its own close path, not when a dialog is the last window.
  QApplication::setQuitOnLastWindowClosed(false);
  TMain_Form &main = *process.Main();
  TMainWindow window(main);
  BindLanguage(main, &window);
  auto *login = new LoginDialog(*process.Login(), &window);
  auto *settings = new SettingsDialog(*process.Sysset(), &window);
  auto *userInfo = new UserInfoDialog(*process.UserInfo(), &window);
  auto *gsm = new GsmDialog(*process.Gsm(), &window);
  PopMsgWindow popMsg(*process.PopMsg()); // no parent: it stays up when the window is minimised
  BindLanguage(*process.Login(), login);
  BindLanguage(*process.Sysset(), settings);
  BindLanguage(*process.UserInfo(), userInfo);
  BindLanguage(*process.Gsm(), gsm);
  QObject::connect(&window, &TMainWindow::settingsRequested, &window,
                   [&process] { process.Sysset()->Show(); });
  QObject::connect(&main, &TMain_Form::settingsRequested, &window,
                   [&process] { process.Sysset()->Show(); });
  QObject::connect(&window, &TMainWindow::smsRequested, &window,
                   [&process] { process.Gsm()->Show(); });
  window.CloseHandler = [&process] { return process.WindowClose(); };
  shell.SetMainWindow(&window);
  shell.InWindowNotice = [&window](const QString &title, const QString &text, int seconds) {
    window.ShowNotice(title, text, seconds);
  };
  QObject::connect(&window, &TMainWindow::languageRequested, &window,
                   [](int id) { SelectLanguage(id); });
  // A click on a balloon brings the window back and, while a call rings, its caller.
  QObject::connect(&shell, &WidgetShell::balloonClicked, &window, [&window, &main] {
    window.showNormal();
    window.activateWindow();
    if (SysParam().CallState == 2 && !SysParam().CallerNo.isEmpty())
      main.Pages().ShowIncomingDirect(SysParam().CallerNo);
  });
  if (QSystemTrayIcon *tray = shell.Tray()) {
    QObject::connect(tray, &QSystemTrayIcon::activated, &window,
                     [&window](QSystemTrayIcon::ActivationReason r) {
                       if (r == QSystemTrayIcon::DoubleClick) {
                         window.showNormal();
                         window.activateWindow();
                       }
                     });
  }
  window.show();
  process.FirstShow();
  if (!cl.Screenshot.isEmpty()) {
    // The picture, then the silent close: a script waits for the program to end.
    QTimer::singleShot(4000, &window, [&window, &process, file = cl.Screenshot] {
      if (!window.grab().save(file))
        std::fprintf(stderr, "trunkdesk: could not write %s\n", qUtf8Printable(file));
      process.SilentClose();
    });
  }

  const int rc = app.exec();
  SetShell(nullptr);
  return rc;
}
