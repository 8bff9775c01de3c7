#include "app/CommandLine.h"
#include "app/ConsoleProcess.h"
#include "app/ConsoleShell.h"
#include "app/TerminationSignals.h"

#include "support/Shell.h"

#include <QApplication>

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

  ConsoleShell shell;
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
  const int rc = app.exec();
  SetShell(nullptr);
  return rc;
}
