#include "app/CommandLine.h"
#include "app/ConsoleProcess.h"
#include "app/ConsoleScreens.h"
#include "app/CopyStoreCommand.h"
#include "app/DemoExchange.h"
#include "app/TerminationSignals.h"
#include "support/Shell.h"
#include "ui/MainWindow.h"
#include "ui/WidgetShell.h"

#include <QApplication>
#include <QSessionManager>
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

  if (!cl.CopyFrom.isEmpty()) {
    QCoreApplication app(argc, argv);
    return CopyStoreCommand(cl);
  }

  TerminationSignals::Install();
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trunkdesk"));
  QApplication::setApplicationVersion(QStringLiteral("5.2"));

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

  DemoExchange demo;
  const bool demoUp = cl.Demo && demo.Start();
  if (cl.Demo && !demoUp)
    std::fprintf(stderr, "trunkdesk: the demo exchange could not start\n");
  const QString home = demoUp ? demo.Home() : cl.Home;
  const quint16 udpPort = demoUp ? demo.EventPort() : cl.UdpPort;
  if (!process.Start(home, cl.Login || demoUp, udpPort)) {
    SetShell(nullptr);
    return 1;
  }

  // The program ends by its own close path, not when a dialog is the last window.
  QApplication::setQuitOnLastWindowClosed(false);
  ConsoleScreens screens(process, shell);
  screens.Show();
  TMainWindow &window = screens.Window();
  if (!cl.Screenshot.isEmpty()) {
    // The pictures, then the silent close: a script waits for the program to end.
    QTimer::singleShot(4000, &window, [&screens, &process, file = cl.Screenshot] {
      screens.WritePictures(file);
      process.SilentClose();
    });
  }

  const int rc = app.exec();
  SetShell(nullptr);
  return rc;
}
