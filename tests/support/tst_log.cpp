// The trace: its Debug gate, the memo's limit, and the file of the day.
#include "common/TestHome.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
QStringList FileLines(const QDate &day) {
  QFile file(LogFileName(day));
  if (!file.open(QIODevice::ReadOnly))
    return {};
  QStringList lines = QString::fromUtf8(file.readAll()).split(u"\r\n"_s);
  if (!lines.isEmpty() && lines.last().isEmpty())
    lines.removeLast();
  return lines;
}

void StandAt(const QDateTime &moment) {
  SetClock([moment] { return moment; });
}
} // namespace

class LogTest : public QObject {
  Q_OBJECT

private slots:
  void debugOffWritesNothing() {
    TestHome home;
    SysConfig().Debug = 0;
    WriteLog(u"not to be seen"_s);
    QVERIFY(LogMemo().Lines().isEmpty());
    QVERIFY(QDir(home.Path()).entryList(QDir::Files).isEmpty());
  }

  void lineGoesToMemoAndFileOfTheDay() {
    TestHome home;
    SysConfig().Debug = 1;
    const QDateTime at(QDate(2026, 11, 22), QTime(8, 30, 5));
    StandAt(at);
    WriteLog(u"Login OK 8001"_s);
    QCOMPARE(LogMemo().Lines(), QStringList{u"2026-11-22 08:30:05: Login OK 8001"_s});
    QVERIFY(QFile::exists(home.Path() + u"TrunkdeskLog2026-11-22.ini"_s));
    QCOMPARE(FileLines(at.date()), QStringList{u"2026-11-22 08:30:05: Login OK 8001"_s});
  }

  void sameSecondKeepsOrder() {
    TestHome home;
    SysConfig().Debug = 1;
    StandAt(QDateTime(QDate(2026, 11, 22), QTime(9, 0)));
    WriteLog(u"first"_s);
    WriteLog(u"second"_s);
    QCOMPARE(FileLines(QDate(2026, 11, 22)),
             (QStringList{u"2026-11-22 09:00:00: first"_s, u"2026-11-22 09:00:00: second"_s}));
  }

  // A burst's lines reach the file together, each in its own day's file.
  void batchOverMidnightKeepsEveryLineInItsDay() {
    TestHome home;
    SysConfig().Debug = 1;
    const QDate day(2026, 11, 22);
    {
      TLogBatch batch;
      StandAt(QDateTime(day, QTime(23, 59, 59)));
      WriteLog(u"late"_s);
      WriteLog(u"later"_s);
      StandAt(QDateTime(day.addDays(1), QTime(0, 0)));
      WriteLog(u"early"_s);
      QCOMPARE(LogMemo().Lines().size(), 3);
    }
    QCOMPARE(FileLines(day), (QStringList{u"2026-11-22 23:59:59: late"_s,
                                          u"2026-11-22 23:59:59: later"_s}));
    QCOMPARE(FileLines(day.addDays(1)), QStringList{u"2026-11-23 00:00:00: early"_s});
  }

  void memoClearsPastItsLimitWhileTheFileKeepsAll() {
    TestHome home;
    SysConfig().Debug = 1;
    StandAt(QDateTime(QDate(2026, 11, 22), QTime(10, 0)));
    QSignalSpy cleared(&LogMemo(), &TLogMemo::cleared);
    for (int i = 1; i <= TLogMemo::kMaxLines; ++i)
      WriteLog(u"line %1"_s.arg(i));
    QCOMPARE(LogMemo().Lines().size(), TLogMemo::kMaxLines);
    QCOMPARE(cleared.size(), 0);
    WriteLog(u"line 2001"_s); // clears the memo, itself included
    QVERIFY(LogMemo().Lines().isEmpty());
    QCOMPARE(cleared.size(), 1);
    WriteLog(u"line 2002"_s);
    QCOMPARE(LogMemo().Lines().size(), 1);
    const QStringList lines = FileLines(QDate(2026, 11, 22));
    QCOMPARE(lines.size(), 2002);
    QVERIFY(lines[2000].endsWith(u"line 2001"_s));
  }

  void afterMidnightTheNextFileWithoutRestart() {
    TestHome home;
    SysConfig().Debug = 1;
    StandAt(QDateTime(QDate(2026, 11, 22), QTime(23, 59, 59)));
    WriteLog(u"late"_s);
    StandAt(QDateTime(QDate(2026, 11, 23), QTime(0, 0, 1)));
    WriteLog(u"early"_s);
    QCOMPARE(FileLines(QDate(2026, 11, 22)), QStringList{u"2026-11-22 23:59:59: late"_s});
    QCOMPARE(FileLines(QDate(2026, 11, 23)), QStringList{u"2026-11-23 00:00:01: early"_s});
  }

  void fileErrorsAreSwallowed() {
    TestHome home;
    SysConfig().Debug = 1;
    home.Write(u"blocked"_s, "a file, not a folder");
    SetAppPath(home.File(u"blocked"_s));
    WriteLog(u"still shown"_s);
    QCOMPARE(LogMemo().Lines().size(), 1);
    QVERIFY(LogMemo().Lines()[0].endsWith(u"still shown"_s));
  }

  void lineFromAnotherThreadArrivesOnTheMainThread() {
    TestHome home;
    SysConfig().Debug = 1;
    QThread *worker = QThread::create([] { WriteLog(u"from the worker"_s); });
    worker->start();
    QVERIFY(worker->wait(5000));
    delete worker;
    QTRY_COMPARE(LogMemo().Lines().size(), 1);
    QVERIFY(LogMemo().Lines()[0].endsWith(u"from the worker"_s));
  }
};

QTEST_GUILESS_MAIN(LogTest)
#include "tst_log.moc"
