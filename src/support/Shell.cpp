#include "support/Shell.h"

#include "support/Log.h"

using namespace Qt::StringLiterals;

void LogShell::Balloon(const QString &title, const QString &text, int, BalloonIcon) {
  WriteLog(title + u": "_s + text);
}

void LogShell::Message(MessageKind, const QString &text) {
  WriteLog(text);
}

bool LogShell::Question(const QString &text) {
  WriteLog(text);
  return false;
}

QString LogShell::ChooseOpenFile(const QString &, const QString &) {
  return QString();
}

void LogShell::Open(const QString &target, const QString &parameters) {
  WriteLog(u"Open: "_s + target + u' ' + parameters);
}

void LogShell::HintAt(const QString &title, const QString &text, int, int, int) {
  WriteLog(title + u": "_s + text);
}

namespace {
Shell *&Installed() {
  static Shell *shell = nullptr;
  return shell;
}
} // namespace

Shell &TheShell() {
  static LogShell quiet;
  Shell *shell = Installed();
  return shell ? *shell : quiet;
}

void SetShell(Shell *shell) {
  Installed() = shell;
}

void ApplicationHandleException(const std::exception &error) {
  const QString text = QString::fromUtf8(error.what());
  WriteLog(u"Error: "_s + text);
  if (!dynamic_cast<const ToldError *>(&error))
    TheShell().Message(MessageKind::Error, text);
}
