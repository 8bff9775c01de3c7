#include "app/ConsoleShell.h"

#include "support/Log.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {
void Print(const QString &line) {
  std::fprintf(stderr, "%s\n", line.toLocal8Bit().constData());
  std::fflush(stderr);
}
} // namespace

void ConsoleShell::Balloon(const QString &title, const QString &text, int, BalloonIcon) {
  Print(u"trunkdesk: "_s + title + u": "_s + text);
  WriteLog(title + u": "_s + text);
}

void ConsoleShell::Message(MessageKind, const QString &text) {
  Print(u"trunkdesk: "_s + text);
  WriteLog(text);
}

bool ConsoleShell::Question(const QString &text) {
  Print(u"trunkdesk: "_s + text + u" (no)"_s);
  return false;
}

QString ConsoleShell::ChooseOpenFile(const QString &, const QString &) {
  return QString();
}

void ConsoleShell::Open(const QString &target, const QString &parameters) {
  Print(u"trunkdesk: open "_s + target + u' ' + parameters);
  WriteLog(u"Open: "_s + target + u' ' + parameters);
}

// Without a window there is no sound either; the log says when it would ring.
void ConsoleShell::RingStart() {
  WriteLog(u"Ring start"_s);
}
void ConsoleShell::RingStop() {
  WriteLog(u"Ring stop"_s);
}

void ConsoleShell::HintAt(const QString &title, const QString &text, int, int, int) {
  Print(u"trunkdesk: "_s + title + u": "_s + text);
}
