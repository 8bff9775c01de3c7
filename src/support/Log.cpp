#include "support/Log.h"

#include "support/Clock.h"
#include "support/Paths.h"

#include <QCoreApplication>
#include <QFile>
#include <QThread>

#include <atomic>
#include <utility>

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
// The stamp of a line and the day of its file. They change once a second;
// finding the local time and formatting it for every line of a burst would
// cost more than handling what the line is about.
struct LineTime {
  qint64 Second = -1;
  QDate Day;
  QString Stamp;
};

const LineTime &CurrentLineTime() {
  thread_local LineTime cached;
  const qint64 second = CurrentMSecsSinceEpoch() / 1000;
  if (second != cached.Second) {
    const QDateTime now = CurrentDateTime();
    cached.Second = second;
    cached.Day = now.date();
    cached.Stamp = now.toString(u"yyyy-MM-dd hh:mm:ss"_s);
  }
  return cached;
}

// Lines waiting for the end of the batch, and for which day's file.
struct PendingLines {
  int Depth = 0;
  QDate Day;
  QByteArray Bytes;
};
thread_local PendingLines t_pending;

void AppendToFile(const QDate &day, const QByteArray &bytes) {
  QFile file(LogFileName(day));
  if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
    return;
  file.write(bytes);
}

void FlushPending() {
  if (t_pending.Bytes.isEmpty())
    return;
  const QByteArray bytes = std::exchange(t_pending.Bytes, QByteArray());
  try {
    AppendToFile(t_pending.Day, bytes);
  } catch (...) {
  }
}
} // namespace

void WriteLogFile(const QString &text) {
  const LineTime &now = CurrentLineTime();
  const QByteArray line = (now.Stamp + u": "_s + text + u"\r\n"_s).toUtf8();
  if (t_pending.Depth > 0) {
    // A batch that runs over midnight still puts each line in its own day's file.
    if (t_pending.Day != now.Day)
      FlushPending();
    t_pending.Day = now.Day;
    t_pending.Bytes += line;
    return;
  }
  AppendToFile(now.Day, line);
}

TLogBatch::TLogBatch() {
  ++t_pending.Depth;
}

TLogBatch::~TLogBatch() {
  if (--t_pending.Depth == 0)
    FlushPending();
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
  LogMemo().Append(CurrentLineTime().Stamp + u": "_s + text);
  try {
    WriteLogFile(text);
  } catch (...) {
    // A log that fails must never take the console with it.
  }
}
