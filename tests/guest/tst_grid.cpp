// The extension list on a real store: rows joined with Exts, checks that no
// refresh overwrites, the filter's split between what is painted and what is
// walked, the wake-up results, the room number edit.
#include "GuestDesk.h"

#include "guest/MoringCall.h"

#include <QTest>

using namespace Qt::StringLiterals;
using G = TExtGridModel;

class GridTest : public QObject {
  Q_OBJECT

private slots:
  void firstExtensionTakesTheEmptyRow() {
    GuestDesk d;
    QCOMPARE(d.exts.AdvStringGrid_Exts.ShownCount(), 1);
    QCOMPARE(d.exts.Ext_CurrentID(), -1); // an empty row has no extension to act on
    d.Report(4, "8004", 0x0040);
    d.Report(7, "8007");
    QCOMPARE(d.exts.AdvStringGrid_Exts.ShownCount(), 2);
    QCOMPARE(d.CellOf(4, G::ColTelNos), u"8004"_s);
    QCOMPARE(d.CellOf(4, G::ColMoringTime), u"关"_s);
    QCOMPARE(d.CellOf(4, G::ColVoiceMail), u"有"_s);
    QCOMPARE(d.CellOf(7, G::ColVoiceMail), u"无"_s);
    QCOMPARE(d.CellOf(4, G::ColSrvClass), u"1:无限制"_s);
    QCOMPARE(d.exts.AdvStringGrid_Exts.Check(d.exts.AdvStringGrid_Exts.SlotOfId(4)), u"FALSE"_s);
    // The exchange's class names come after the rows; the class column follows them.
    d.exts.SrvClassItems = [] { return QStringList{u"1:客房"_s}; };
    d.exts.Ext_RefreshSrvClassColumn();
    QCOMPARE(d.CellOf(4, G::ColSrvClass), u"1:客房"_s);
  }

  void refreshKeepsChecksWhileSorted() {
    GuestDesk d;
    for (int id : {1, 2, 3})
      d.Report(id, "80" + QByteArray::number(id));
    G &g = d.exts.AdvStringGrid_Exts;
    g.setData(g.index(g.ShownRowOf(g.SlotOfId(2)), G::ColCheck), Qt::Checked, Qt::CheckStateRole);
    g.sort(G::ColTelNos, Qt::DescendingOrder);
    QCOMPARE(g.Cell(g.SlotAt(0), G::ColID), u"3"_s);
    d.Status(2, 7, 0x0800);
    QCOMPARE(d.CellOf(2, G::ColMoringMode), u"中文"_s);
    QCOMPARE(g.data(g.index(1, G::ColCheck), G::CheckTextRole).toString(), u"TRUE"_s);
    QCOMPARE(d.exts.Ext_NextSelected(1), 2);
    QCOMPARE(g.CurrentRow(), 1);
    g.sort(G::ColCheck); // the check column never sorts
    QCOMPARE(g.Cell(g.SlotAt(0), G::ColID), u"3"_s);
  }

  void statusOfADeviceWithoutARowChangesNoCell() {
    GuestDesk d;
    d.Report(1, "8001");
    const QString before = d.CellOf(1, G::ColTelNos) + d.CellOf(1, G::ColMoringTime);
    d.table.Device(9)->TelNos = u"8009"_s;
    d.exts.Ext_UpdateRow(9);
    d.exts.Ext_UpdateRow(5000);
    QCOMPARE(d.exts.AdvStringGrid_Exts.SlotCount(), 1);
    QCOMPARE(d.CellOf(1, G::ColTelNos) + d.CellOf(1, G::ColMoringTime), before);
  }

  // One log row for each result the exchange's events show, none for the
  // operator's own change.
  void wakeUpResults_data() {
    QTest::addColumn<bool>("live");
    QTest::addColumn<QByteArray>("wakeUp");
    QTest::addColumn<int>("status"); // after ringing (3)
    QTest::addColumn<quint16>("mix");
    QTest::addColumn<QStringList>("states");
    const QByteArray at = "202701030700";
    QTest::newRow("answered") << true << at << 7 << quint16(0x0100) << QStringList{u"1"_s};
    QTest::newRow("rang out") << true << at << 1 << quint16(0) << QStringList{u"2"_s};
    QTest::newRow("both") << true << at << 1 << quint16(0x0100) << QStringList{u"1"_s, u"2"_s};
    QTest::newRow("no time set") << true << QByteArray() << 7 << quint16(0x0100) << QStringList{};
    QTest::newRow("from the dialog") << false << at << 1 << quint16(0) << QStringList{};
  }
  void wakeUpResults() {
    QFETCH(bool, live);
    QFETCH(QByteArray, wakeUp);
    QFETCH(int, status);
    QFETCH(quint16, mix);
    QFETCH(QStringList, states);
    GuestDesk d;
    d.Report(5, "8005", 0, wakeUp);
    d.exts.Exts_Write(5, [](TADOQuery &q) { q.SetString(u"RoomNo"_s, u"305"_s); });
    d.Status(5, 3, 0, wakeUp);
    if (live) {
      d.Status(5, status, mix, wakeUp);
    } else {
      TPhoneTis &p = *d.table.Device(5);
      p.Status = status;
      p.LiveUpdate = false;
      d.exts.Ext_UpdateRow(5);
    }
    QCOMPARE(GuestDesk::Column(u"select State from MoringCallLog order by ID"_s), states);
    if (!states.isEmpty())
      QCOMPARE(GuestDesk::Column(u"select RoomNo || Ext from MoringCallLog"_s).first(),
               u"3058005"_s);
    QCOMPARE(d.CellOf(5, G::ColMoringTime).isEmpty(), false);
  }

  // The filter hides rows from what is walked, never from what is painted.
  void filterNarrowsSelectionBatchAndTick() {
    GuestDesk d;
    for (int id : {1, 2, 3, 4})
      d.Report(id, "80" + QByteArray::number(id));
    G &g = d.exts.AdvStringGrid_Exts;
    g.SetCheck(g.SlotOfId(1), u"TRUE"_s);
    for (int id : {2, 4})
      d.SetMemo(id, u"VIP"_s);
    for (int id : {1, 2})
      d.exts.Exts_Write(id, [](TADOQuery &q) {
        q.SetBoolean(u"MoringCall_isEveryDay"_s, true);
        q.SetDateTime(u"MoringCall_EveryDay_Time"_s, TDateTime::FromTime(QTime(7, 0)));
      });
    for (int id : {1, 2})
      d.exts.Ext_UpdateRow(id);
    g.SetFilter(G::ColMemo, u"v*"_s);
    QCOMPARE(g.ShownCount(), 2);
    d.exts.N27Click();
    QCOMPARE(d.exts.Ext_NextSelected(1), 2);
    QCOMPARE(d.exts.Ext_NextSelected(2), 4);
    QCOMPARE(d.exts.Ext_NextSelected(3), -1);
    QVERIFY(!d.exts.Ext_LocateRow(u"801"_s));
    d.Status(1, 7, 0x0004); // a hidden row is still painted
    QCOMPARE(d.CellOf(1, G::ColNodisturb), u"内外线免打扰"_s);
    CapturedPackets.clear();
    d.exts.Timer_ExcuteActionTimer(); // only room 2 is shown and daily
    QCOMPARE(CapturedPackets.size(), 1);
    QCOMPARE(GetU16(CapturedPackets[0].constData(), 16), 2);

    d.exts.tefxButton_Ext_CancelFilterClick();
    QCOMPARE(g.ShownCount(), 4);
    QCOMPARE(d.exts.Ext_NextSelected(1), 1); // the earlier check was kept
    QCOMPARE(g.Check(g.SlotOfId(3)), u"FALSE"_s);
    d.exts.N28Click();
    QCOMPARE(d.exts.Ext_NextSelected(1), 3);
  }

  void tickSendsTheNextDailyWakeUp_data() {
    QTest::addColumn<QTime>("now");
    QTest::addColumn<QString>("callTime");
    QTest::newRow("06:59") << QTime(6, 59) << u"20270103070001"_s;
    QTest::newRow("07:00 itself") << QTime(7, 0) << u"20270103070001"_s;
    QTest::newRow("07:01") << QTime(7, 1) << u"20270104070001"_s;
  }
  void tickSendsTheNextDailyWakeUp() {
    QFETCH(QTime, now);
    QFETCH(QString, callTime);
    GuestDesk d;
    d.Report(6, "8006");
    d.exts.Exts_Write(6, [](TADOQuery &q) {
      q.SetBoolean(u"MoringCall_isEveryDay"_s, true);
      q.SetDateTime(u"MoringCall_EveryDay_Time"_s,
                    TDateTime::FromQDateTime(QDateTime(QDate(2026, 5, 1), QTime(7, 0))));
      q.SetInteger(u"MoringCall_Mode"_s, 2);
    });
    d.exts.Ext_UpdateRow(6);
    QVERIFY(d.CellOf(6, G::ColMoringTime).endsWith(u"(每天:07:00)"_s));
    GuestDesk::At(QDateTime(QDate(2027, 1, 3), now));
    int ran = 0;
    d.exts.RunNoDisturbWindows = [&](int) { ++ran; };
    CapturedPackets.clear();
    d.exts.Timer_ExcuteActionTimer();
    QCOMPARE(ran, 1);
    QCOMPARE(CapturedPackets.size(), 1);
    const char *p = CapturedPackets[0].constData();
    QCOMPARE(GetU16(p, 12), 4); // mode 2 goes with its own sub-code
    QCOMPARE(GetText(p, 18, 20), callTime);
  }

  void findUsesTheActiveTabAndKeepsHistory() {
    GuestDesk d;
    d.Report(1, "8001");
    d.Report(2, "8002");
    QStringList panels;
    d.exts.LocatePanel = [&](const QString &n) { return panels << n, -1; };
    d.exts.TeSComboBox_Ext_Text = u" 8002 "_s;
    d.exts.tefxButton_ExtFindClick();
    QCOMPARE(panels, QStringList{u"8002"_s});
    d.exts.TeSPageControl_ExtView_ActivePage = TExtsView::TeSTabsheet_Listview;
    d.exts.tefxButton_ExtFindClick();
    QCOMPARE(d.exts.Ext_CurrentID(), 2);
    d.exts.TeSComboBox_Ext_Text = u"9999"_s;
    d.exts.tefxButton_ExtFindClick();
    QCOMPARE(d.exts.Ext_CurrentID(), 2); // not found: the current row stays
    QCOMPARE(d.exts.TeSComboBox_Ext_Items, (QStringList{u"9999"_s, u"8002"_s}));
    QCOMPARE(panels.size(), 1);
  }

  // A room number is stored as typed; a store that refuses it tells the
  // operator, and the cell shows what it showed.
  void roomNumberEdit_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("readOnly");
    QTest::newRow("quotes and a line end") << u"O'Brien \"2\"\n3"_s << false;
    QTest::newRow("500 characters") << QString(500, u'房') << false;
    QTest::newRow("read-only store") << u"301"_s << true;
  }
  void roomNumberEdit() {
    QFETCH(QString, text);
    QFETCH(bool, readOnly);
    GuestDesk d;
    d.Report(3, "8003");
    if (readOnly)
      QSqlQuery(StoreConnection()).exec(u"PRAGMA query_only = ON"_s);
    const bool taken = d.exts.AdvStringGrid_ExtsCellValidate(0, G::ColRoomNo, text);
    QCOMPARE(taken, !readOnly);
    QCOMPARE(d.CellOf(3, G::ColRoomNo), readOnly ? QString() : text);
    QCOMPARE(d.shell.Messages.size(), readOnly ? 1 : 0);
    QSqlQuery(StoreConnection()).exec(u"PRAGMA query_only = OFF"_s);
    d.exts.Ext_UpdateRow(3); // read back from the store
    QCOMPARE(d.CellOf(3, G::ColRoomNo), readOnly ? QString() : text);
  }
};

QTEST_GUILESS_MAIN(GridTest)
#include "tst_grid.moc"
