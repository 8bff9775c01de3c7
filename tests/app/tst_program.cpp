// The program as a whole: its command line, the seeding of a home, and the
// silent close on a signal that leaves every setting on disk.
#include "common/TestHome.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QUdpSocket>

#include <csignal>
#include <functional>

#include "ExchangeSim.h"

using namespace Qt::StringLiterals;

namespace {
QString Program() {
  return QStringLiteral(TRUNKDESK_BIN_DIR) + u"/trunkdesk"_s;
}

QByteArray ReadFile(const QString &path) {
  QFile f(path);
  return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void WriteFile(const QString &path, const QByteArray &bytes) {
  QDir().mkpath(path.section(u'/', 0, -2));
  QFile f(path);
  QVERIFY(f.open(QIODevice::WriteOnly));
  f.write(bytes);
}

// Starts the console on a home, waits until it runs, ends it with a signal.
struct Run {
  int ExitCode = -1;
  QProcess::ExitStatus Status = QProcess::CrashExit;
  QByteArray Out;
  QByteArray Err;
};

Run RunAndSignal(const QString &home, int signalNumber, const QStringList &extra = {},
                 const std::function<bool()> &readyToStop = {}) {
  Run run;
  QProcess p;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
  p.setProcessEnvironment(env);
  p.start(Program(), QStringList{u"--home"_s, home} + extra);
  if (!p.waitForStarted(10000))
    return run;
  // The program says when its start is done and the event loop is about to run.
  QByteArray out;
  for (int i = 0; i < 300 && !out.contains("running"); ++i) {
    p.waitForReadyRead(100);
    out += p.readAllStandardOutput();
  }
  if (readyToStop)
    (void)QTest::qWaitFor(readyToStop, 20000); // the caller checks what it waited for
  ::kill(pid_t(p.processId()), signalNumber);
  if (!p.waitForFinished(20000)) {
    p.kill();
    p.waitForFinished();
  }
  run.ExitCode = p.exitCode();
  run.Status = p.exitStatus();
  run.Out = out + p.readAllStandardOutput();
  run.Err = p.readAllStandardError();
  return run;
}
} // namespace

class ProgramTest : public QObject {
  Q_OBJECT

private slots:
  void commandLine_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("output");
    QTest::newRow("version") << QStringList{u"--version"_s} << 0 << u"Trunkdesk ver5.2\n"_s;
    QTest::newRow("help") << QStringList{u"--help"_s} << 0 << u"Usage: trunkdesk"_s;
    QTest::newRow("unknown option") << QStringList{u"--bogus"_s} << 2 << QString();
    QTest::newRow("home without folder") << QStringList{u"--home"_s} << 2 << QString();
    // A copy that can't run says why and ends with a failure, before any window.
    QTest::newRow("copy from nothing")
        << QStringList{u"--copy-store"_s, u"/nonexistent/a.db"_s, u"/nonexistent/b.db"_s} << 1
        << QString();
    QTest::newRow("copy without a target") << QStringList{u"--copy-store"_s, u"a.db"_s} << 2
                                           << QString();
    QTest::newRow("replace alone") << QStringList{u"--replace"_s} << 2 << QString();
  }
  void commandLine() {
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    QFETCH(QString, output);
    QProcess p;
    p.start(Program(), args);
    QVERIFY(p.waitForFinished(10000));
    QCOMPARE(p.exitCode(), exitCode);
    QVERIFY(QString::fromUtf8(p.readAllStandardOutput()).startsWith(output));
  }

  void emptyHomeIsSeededAndSignalSavesEverySetting_data() {
    QTest::addColumn<int>("signalNumber");
    QTest::newRow("SIGTERM") << int(SIGTERM);
    QTest::newRow("SIGINT") << int(SIGINT);
    QTest::newRow("SIGHUP") << int(SIGHUP);
  }
  void emptyHomeIsSeededAndSignalSavesEverySetting() {
    QFETCH(int, signalNumber);
    QTemporaryDir dir;
    const QString home = dir.path() + u"/H"_s; // not there yet
    const Run run = RunAndSignal(home, signalNumber);
    QCOMPARE(run.Status, QProcess::NormalExit);
    QCOMPARE(run.ExitCode, 0);
    for (const QString &file :
         {u"ini/lang_chinese.lan"_s, u"ini/lang_English.lan"_s, u"ini/sys_RadioB.ini"_s,
          u"ini/company.jpg"_s, u"image/lstrunk_error.bmp"_s}) {
      QVERIFY2(QFile::exists(home + u'/' + file), qPrintable(file));
      QCOMPARE(ReadFile(home + u'/' + file), ReadFile(SourcePath(u"resources/"_s + file)));
    }
    // The store was made at the first start, with its whole schema.
    QVERIFY(QFile::exists(home + u"/Database/Notes_DB.db"_s));
    {
      QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"check"_s);
      db.setDatabaseName(home + u"/Database/Notes_DB.db"_s);
      QVERIFY(db.open());
      QSqlQuery q(db);
      QVERIFY(q.exec(u"select count(*), min(PortID), max(PortID) from Exts"_s) && q.next());
      QCOMPARE(q.value(0).toInt(), 3072);
      QCOMPARE(q.value(2).toInt(), 3071);
      QVERIFY(q.exec(u"select IDCard, GrpName, BranchTel from MainInfo"_s));
      QVERIFY(q.exec(u"select MoringCall_Mode, NoDisturb_Time3_End from Exts"_s));
    }
    QSqlDatabase::removeDatabase(u"check"_s);
    const QString ini = QString::fromUtf8(ReadFile(home + u"/ini/sys.ini"_s));
    const QStringList written{u"[Record]"_s,       u"[host]"_s,        u"IP="_s,
                              u"Port=5003"_s,      u"[user]"_s,        u"userName="_s,
                              u"passWord="_s,      u"recPwdFlag=0"_s,  u"[other]"_s,
                              u"outNo=9"_s,        u"lDNo=0"_s,        u"LinkURL="_s,
                              u"[company]"_s,      u"caption="_s,      u"URL="_s,
                              u"[GSM]"_s,          u"SMSReturnNos="_s, u"company="_s,
                              u"[MainDBgrid]"_s,   u"ColWidths0=20"_s, u"ColWidths5=100"_s,
                              u"[DB]"_s,           u"DBFile="_s,       u"[Ring]"_s,
                              u"Flag=0"_s,         u"IncomStyle=0"_s,  u"[Lang]"_s,
                              u"LangID=0"_s,       u"[ExtsPanel]"_s,   u"TypeVisible0=1"_s,
                              u"TypeVisible30=1"_s};
    const QStringList lines = ini.split(u'\n');
    for (const QString &w : written) {
      const bool found = std::any_of(lines.begin(), lines.end(),
                                     [&w](const QString &l) { return l.startsWith(w); });
      QVERIFY2(found, qPrintable(w + u" missing from\n"_s + ini));
    }
  }

  void debugHomeLogsTheCloseAndKeepsItsSwitches() {
    QTemporaryDir dir;
    WriteFile(dir.path() + u"/ini/sys.ini"_s, "[System]\nDebug=1\nisAGMode=1\n[Mine]\nx=y\n");
    const Run run = RunAndSignal(dir.path(), SIGTERM);
    QCOMPARE(run.ExitCode, 0);
    const QByteArray ini = ReadFile(dir.path() + u"/ini/sys.ini"_s);
    QVERIFY(ini.startsWith("[System]\nDebug=1\nisAGMode=1\n[Mine]\nx=y\n"));
    // A home with only sys.ini still gets its packs.
    QVERIFY(QFile::exists(dir.path() + u"/ini/lang_English.lan"_s));
    const QStringList logs = QDir(dir.path()).entryList({u"TrunkdeskLog*.ini"_s}, QDir::Files);
    QCOMPARE(logs.size(), 1);
    const QString log = QString::fromUtf8(ReadFile(dir.path() + u'/' + logs[0]));
    static const QRegularExpression close(
        u"\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d: Application Close!\r\n$"_s);
    QVERIFY2(close.match(log).hasMatch(), qPrintable(log));
  }

  void nothingPresentIsOverwritten() {
    QTemporaryDir dir;
    const QByteArray mine = "[Public]\nstr_333=My own question?\n";
    WriteFile(dir.path() + u"/INI/Lang_Chinese.lan"_s, mine); // another case, as from Windows
    RunAndSignal(dir.path(), SIGTERM);
    QCOMPARE(ReadFile(dir.path() + u"/INI/Lang_Chinese.lan"_s), mine);
    QVERIFY(!QFile::exists(dir.path() + u"/INI/lang_chinese.lan"_s));
    QVERIFY(QFile::exists(dir.path() + u"/INI/lang_English.lan"_s));
  }

  // An unattended front-desk PC: started with --login it logs in with the saved
  // number and password and holds the session on the exchange's pulses.
  void loginAtStartHoldsTheSession() {
    ExchangeSim sim;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.SetPulsePeriod(100);
    QVERIFY(sim.Listen());
    QTemporaryDir dir;
    WriteFile(dir.path() + u"/ini/sys.ini"_s,
              "[System]\nDebug=1\n[host]\nIP=127.0.0.1\nPort=" + QByteArray::number(sim.Port()) +
                  "\n[User]\nuserName=8001\npassword=1234\nrecPwdFlag=1\n");
    const Run run = RunAndSignal(dir.path(), SIGTERM, {u"--login"_s},
                                 [&sim] { return sim.IsSessionOpen() && sim.PulsesSent() >= 3; });
    QCOMPARE(run.ExitCode, 0);
    QVERIFY(sim.PulsesSent() >= 3);
    const QStringList logs = QDir(dir.path()).entryList({u"TrunkdeskLog*.ini"_s}, QDir::Files);
    QCOMPARE(logs.size(), 1);
    const QString log = QString::fromUtf8(ReadFile(dir.path() + u'/' + logs[0]));
    for (const QString &line :
         {u"Connecting to IP:127.0.0.1"_s, u"Connected."_s, u"ID:1 Len:64 typeCode:0x10 "_s,
          u"ID:1 Len:12 typeCode:0x1 "_s, u"Application Close!"_s})
      QVERIFY2(log.contains(line), qPrintable(line));
    QVERIFY(!log.contains(u"No Pulse!!!"_s));
  }

  // --demo brings its own exchange and logs in to it; a signal ends it cleanly.
  void demoRunsAndCloses() {
    QTemporaryDir dir;
    const Run run = RunAndSignal(dir.path(), SIGTERM, {u"--demo"_s});
    QCOMPARE(run.Status, QProcess::NormalExit);
    QCOMPARE(run.ExitCode, 0);
    QVERIFY(run.Out.contains("running"));
  }

  // The exchange's pushes can't reach a console whose port is taken: it says so
  // and ends, rather than running blind.
  void takenEventPortEndsTheProgram() {
    QUdpSocket holder;
    QVERIFY(holder.bind(QHostAddress::AnyIPv4, 0)); // no sharing
    QTemporaryDir dir;
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
    p.setProcessEnvironment(env);
    p.start(Program(),
            {u"--home"_s, dir.path(), u"--udp-port"_s, QString::number(holder.localPort())});
    QVERIFY(p.waitForFinished(20000));
    QCOMPARE(p.exitCode(), 1);
    QVERIFY(!p.readAllStandardError().isEmpty());
  }

  // A home where nothing can be written still starts, says why the settings
  // couldn't be saved in words (not "(Null)"), and closes cleanly.
  void unwritableHomeGoesOn() {
    QTemporaryDir dir;
    WriteFile(dir.path() + u"/ini"_s, "a file where the settings folder should be");
    const Run run = RunAndSignal(dir.path(), SIGTERM);
    QCOMPARE(run.Status, QProcess::NormalExit);
    QCOMPARE(run.ExitCode, 0);
    const QString err = QString::fromUtf8(run.Err);
    QVERIFY2(err.contains(u"sys.ini"_s), qPrintable(err));
    QVERIFY2(!err.contains(u"(Null)"_s), qPrintable(err));
  }
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_program.moc"
