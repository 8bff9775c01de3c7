// A ringing call through the main window's logic and the real directory pages on
// a real store: the incoming row, the caller's contact, each way of announcing
// the call, and the call log it leaves.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Main_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "directory/DirectoryPages.h"
#include "directory/PopMsg_Form.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QSignalSpy>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
struct Desk {
  TestHome home;
  RecordingShell shell;
  TMain_Form main;
  TForm_PopMsg pop;

  Desk() {
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    SysParam() = TNetPhone_SysParam{};
    SysParam().MyID = 3;
    SysParam().MyTelNo = u"8001"_s;
    LastSysParam() = TNetPhone_SysParam{};
    main.Pages().Form_PopMsg = &pop;
    SetClock([] { return QDateTime(QDate(2024, 3, 5), QTime(9, 7, 2)); });
    QSqlQuery q(StoreConnection());
    q.exec(u"INSERT INTO MainInfo (Name, Phone1, Company) VALUES ('丙', '8123', '丙公司')"_s);
  }

  void State(int state, const QByteArray &caller, int line = 0) {
    QByteArray p(2048, '\0');
    PutU32(p.data(), 0, kPacketMagic);
    PutU16(p.data(), 6, 17);
    PutU16(p.data(), 10, 66);
    p[12] = char(state);
    PutU16(p.data(), 14, quint16(line));
    p.replace(17, caller.size(), caller);
    main.processPacketFromSocket(p.constData(), 66);
  }

  int Logged(int kind) {
    QSqlQuery q(StoreConnection());
    q.exec(u"select count(*) from conRecords where State=%1"_s.arg(kind));
    return q.next() ? q.value(0).toInt() : -1;
  }
};
} // namespace

class AnnounceTest : public QObject {
  Q_OBJECT

private slots:
  void cleanup() { SetClock({}); }

  void eachWayOfAnnouncing_data() {
    QTest::addColumn<int>("style");
    QTest::addColumn<int>("balloons");
    QTest::addColumn<bool>("popped");
    QTest::addColumn<int>("opened");
    QTest::addColumn<int>("restored");
    QTest::addColumn<int>("incoming");
    // The external program reads the call from the state copy made for it; the
    // copy also makes the call look already seen, so its incoming row goes.
    QTest::newRow("direct") << 0 << 0 << false << 0 << 1 << 1;
    QTest::newRow("balloon") << 1 << 1 << false << 0 << 0 << 1;
    QTest::newRow("external program") << 2 << 0 << false << 1 << 0 << 0;
    QTest::newRow("pop-up window") << 3 << 0 << true << 0 << 0 << 1;
    QTest::newRow("any other value") << 7 << 0 << false << 1 << 0 << 0;
  }
  void eachWayOfAnnouncing() {
    QFETCH(int, style);
    QFETCH(int, balloons);
    QFETCH(bool, popped);
    QFETCH(int, opened);
    QFETCH(int, restored);
    QFETCH(int, incoming);
    Desk d;
    SysConfig().IncomStyle = style;
    SysConfig().LinkURL = u"http://crm.local/pop"_s;
    TDirectoryPages &p = d.main.Pages();
    QSignalSpy restore(&p, &TDirectoryPages::restoreMainWindowRequested);
    d.State(2, "8123");
    QCOMPARE(p.Incomings_LMDListBox.Count(), incoming);
    QVERIFY(p.CurrentConID != -1); // the call page shows the caller
    QCOMPARE(d.shell.Balloons.size(), balloons);
    QCOMPARE(d.pop.Visible(), popped);
    QCOMPARE(d.shell.Opened.size(), opened);
    QCOMPARE(restore.size(), restored);
    if (balloons) {
      QCOMPARE(d.shell.Balloons[0].Title, LangText(329));
      QCOMPARE(d.shell.Balloons[0].Text, u"来电号码: 8123\r姓名: 丙\r单位: 丙公司\r"_s);
    }
    if (popped)
      QCOMPARE(d.pop.Label_Incoming, u"8123"_s);
    if (opened)
      QCOMPARE(d.shell.Opened[0], u"http://crm.local/pop?TelNos=8001_8123"_s);
  }

  // The call ends: its kind goes to the store and to its list; the incoming
  // row goes.
  void finishedCallsLandInTheLog_data() {
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("then");
    QTest::addColumn<int>("kind");
    QTest::newRow("unanswered") << 2 << 1 << 1;
    QTest::newRow("answered") << 2 << 7 << 2;
    QTest::newRow("dialled") << 5 << 7 << 3;
  }
  void finishedCallsLandInTheLog() {
    QFETCH(int, first);
    QFETCH(int, then);
    QFETCH(int, kind);
    Desk d;
    SysConfig().IncomStyle = 1;
    d.State(first, "8123");
    d.State(then, then == 1 ? QByteArray() : QByteArray("8123"));
    QCOMPARE(d.Logged(kind), 1);
    TCallListModel *list = d.main.Pages().ListOfState(kind);
    QVERIFY(list);
    QCOMPARE(list->Count(), 1);
    QCOMPARE(list->Item(0).Number, u"8123"_s); // the number from before, for a missed call
    QCOMPARE(list->Item(0).Name, u"丙"_s);
    if (first == 2)
      QCOMPARE(d.main.Pages().Incomings_LMDListBox.Count(), 0);
  }

  void quoteInACallerNumberIsStoredAsText() {
    Desk d;
    SysConfig().IncomStyle = 1;
    d.State(2, "8'1; --");
    d.State(1, {});
    QCOMPARE(d.Logged(1), 1);
    QCOMPARE(d.main.Pages().lostIncom_LMDListBox.Item(0).Number, u"8'1; --"_s);
  }
};

QTEST_GUILESS_MAIN(AnnounceTest)
#include "tst_announce.moc"
