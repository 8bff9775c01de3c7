#include "support/Log.h"

#include "support/Clock.h"
#include "support/Paths.h"

#include <QCoreApplication>
#include <QFile>
#include <QThread>

#include <atomic>

using namespace Qt::StringLiterals;

void TLogMemo::Append(const QString &line) {
  m_lines.append(line);
  emit lineAdded(line);
  if (m_lines.size() > kMaxLines)
    Clear();
}

void TLogMemo::Clear() {
  m_lines.clear();
  emit cleared();
}

TLogMemo &LogMemo() {
  static TLogMemo memo;
  return memo;
}

QString LogFileName(const QDate &day) {
  // The program folder already ends in a separator; the doubled one is harmless.
  return AppPath() + u"/TrunkdeskLog"_s + day.toString(u"yyyy-MM-dd"_s) + u".ini"_s;
}

namespace {
QString Stamp() {
  return CurrentDateTime().toString(u"yyyy-MM-dd hh:mm:ss"_s);
}
} // namespace

void WriteLogFile(const QString &text) {
  const QDateTime now = CurrentDateTime();
  QFile file(LogFileName(now.date()));
  if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
    return;
  file.write((now.toString(u"yyyy-MM-dd hh:mm:ss"_s) + u": "_s + text + u"\r\n"_s).toUtf8());
}

namespace {
std::atomic<const int *> g_logSwitch{nullptr};
} // namespace

void SetLogSwitch(const int *on) {
  g_logSwitch = on;
}

bool LogEnabled() {
  const int *on = g_logSwitch.load(std::memory_order_relaxed);
  return on && *on != 0;
}

void WriteLog(const QString &text) {
  if (!LogEnabled())
    return;
  // The memo belongs to the main thread; a line from elsewhere is carried over.
  QCoreApplication *app = QCoreApplication::instance();
  if (app && QThread::currentThread() != app->thread()) {
    QMetaObject::invokeMethod(
        app, [text] { WriteLog(text); }, Qt::QueuedConnection);
    return;
  }
  LogMemo().Append(Stamp() + u": "_s + text);
  try {
    WriteLogFile(text);
  } catch (...) {
    // A log that fails must never take the console with it.
  }
}
