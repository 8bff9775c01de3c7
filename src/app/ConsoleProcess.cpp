#include "app/ConsoleProcess.h"

#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/Sysset_Unit.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

using namespace Qt::StringLiterals;

ConsoleProcess::ConsoleProcess(QObject *parent) : QObject(parent) {}

ConsoleProcess::~ConsoleProcess() = default;

void ConsoleProcess::Start(const QString &home) {
  SetAppPath(home.isEmpty() ? QCoreApplication::applicationDirPath() : home);
  SetShippedRoot(QString::fromUtf16(kShippedRoot));

  // A folder that can't be made or written is no reason to stop: the console
  // runs on its defaults and says so.
  QStringList failed;
  if (!QDir().mkpath(AppPath()))
    failed << AppPath();
  else
    SeedHome(QString::fromUtf16(kShippedRoot), AppPath(), &failed);
  if (!failed.isEmpty())
    std::fprintf(stderr, "trunkdesk: could not write into %s: %s\n", qUtf8Printable(AppPath()),
                 qUtf8Printable(failed.join(u", "_s)));

  // The language comes first, ahead of any window; then the windows, whose
  // creation loads the settings.
  LanguageStart();

  m_sysset = std::make_unique<Tsysset_Form>();
  m_sysset->FormCreate();

  WriteLog(u"Application Start: "_s + AppPath());
  // One line for whoever started the console from a shell or a service manager.
  std::printf("trunkdesk: running, home %s\n", qUtf8Printable(AppPath()));
  std::fflush(stdout);
  if (!failed.isEmpty())
    WriteLog(u"Could not seed: "_s + failed.join(u", "_s));
}

void ConsoleProcess::SilentClose() {
  if (m_closed)
    return;
  m_closed = true;
  SaveConfig(SysConfig());
  WriteLog(u"Application Close!"_s);
  QCoreApplication::quit();
}
