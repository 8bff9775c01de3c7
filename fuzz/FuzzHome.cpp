#include "FuzzHome.h"

#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdlib>

namespace {
// The application object and the console live until the process ends and are
// never destroyed: libFuzzer leaves by exit(), after Qt's own globals are gone.
QCoreApplication *g_app = nullptr;
QString *g_homePath = nullptr;

void RemoveHome() {
  if (g_homePath)
    QDir(*g_homePath).removeRecursively();
}
} // namespace

namespace FuzzHome {
void Start(int *argc, char ***argv) {
  if (g_app)
    return;
  g_app = new QCoreApplication(*argc, *argv);
  QTemporaryDir home;
  home.setAutoRemove(false);
  g_homePath = new QString(home.path());
  std::atexit(RemoveHome);
  SetAppPath(*g_homePath);
  // No shell installed: the console's own, which only logs, answers.
  SysConfig().Debug = 1;
}

QString Path() {
  return AppPath();
}

void Write(const QString &relative, const QByteArray &bytes) {
  const QString path = AppFile(relative);
  QDir().mkpath(QFileInfo(path).absolutePath());
  QFile file(path);
  if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
    file.write(bytes);
}

void ForgetLog() {
  LogMemo().Clear();
  // The daily log file grows with every traced line; a long run would fill the disk.
  static int calls = 0;
  if (++calls % 256 == 0)
    for (const QString &name : QDir(AppPath()).entryList({QStringLiteral("TrunkdeskLog*.ini")}))
      QFile::remove(AppFile(name));
}
} // namespace FuzzHome
