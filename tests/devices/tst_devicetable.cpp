// The device table: the ordered list through it, the board's layout, the drag
// rule, pruning, and the device types.
#include "common/TestHome.h"
#include "devices/CallControlDev.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
std::vector<int> Ids(std::initializer_list<int> ids) {
  return std::vector<int>(ids);
}
} // namespace

class DeviceTableTest : public QObject {
  Q_OBJECT

private slots:
  void freshTableHasOnlyItsSentinels() {
    TCallControlDev t;
    QCOMPARE(t.PanelCount(), 0);
    QCOMPARE(t.Record(TCallControlDev::kHeadIndex).Next, int(TCallControlDev::kTailIndex));
    QCOMPARE(t.Record(TCallControlDev::kTailIndex).Prev, int(TCallControlDev::kHeadIndex));
    QCOMPARE(t.Record(7).SrvClass, -1);
    QVERIFY(!t.Record(7).InList);
  }

  // With the default geometry and a board 755 wide the pitch is 91: eight columns.
  void layoutWrapsByEquality() {
    TCallControlDev t;
    t.ParentWidth = 755;
    for (int id = 0; id < 9; ++id)
      t.AddPanel(id);
    t.Relayout();
    QCOMPARE(t.Columns, 8);
    QCOMPARE(t.Record(7).Left, 642);
    QCOMPARE(t.Record(7).Top, 5);
    QCOMPARE(t.Record(8).Left, 5);
    QCOMPARE(t.Record(8).Top, 77); // the row pitch is the panel's height plus 15
  }

  void boardNarrowerThanAPanelKeepsOneRow() {
    TCallControlDev t;
    t.ParentWidth = 50;
    for (int id = 0; id < 12; ++id)
      t.AddPanel(id);
    t.Relayout();
    QCOMPARE(t.Columns, 0);
    QCOMPARE(t.Record(11).Top, 5);
    QCOMPARE(t.Record(11).Left, 5 + 11 * 91);
  }

  void addingTwiceKeepsOnePanelWhereItWas() {
    TCallControlDev t;
    t.ParentWidth = 755;
    t.AddPanel(3);
    t.AddPanel(4);
    const int left = t.Record(4).Left;
    t.AddPanel(4);
    QCOMPARE(t.Ordered(), Ids({3, 4}));
    QCOMPARE(t.Record(4).Left, left);
  }

  void dragsLandBehindOrInFront_data() {
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("target");
    QTest::addColumn<std::vector<int>>("order");
    QTest::newRow("forward lands behind") << 1 << 3 << Ids({0, 2, 3, 1, 4});
    QTest::newRow("backward lands in front") << 4 << 1 << Ids({0, 4, 1, 2, 3});
    QTest::newRow("onto itself: nothing") << 2 << 2 << Ids({0, 1, 2, 3, 4});
    QTest::newRow("to the next row, forward") << 0 << 4 << Ids({1, 2, 3, 4, 0});
  }
  void dragsLandBehindOrInFront() {
    QFETCH(int, source);
    QFETCH(int, target);
    QFETCH(std::vector<int>, order);
    TCallControlDev t;
    t.ParentWidth = 3 * 91; // three columns: 0 1 2 / 3 4
    for (int id = 0; id < 5; ++id)
      t.AddPanel(id);
    t.Relayout();
    t.ParentWidth = 755; // a move relayouts; a move onto itself does not
    t.MovePanel(source, target);
    QCOMPARE(t.Ordered(), order);
    QCOMPARE(t.Columns, source == target ? 3 : 8);
  }

  void removingTheOnlyPanelClosesTheList() {
    TCallControlDev t;
    t.AddPanel(5);
    t.RemovePanel(5);
    QCOMPARE(t.Record(TCallControlDev::kHeadIndex).Next, int(TCallControlDev::kTailIndex));
    QCOMPARE(t.Record(TCallControlDev::kTailIndex).Prev, int(TCallControlDev::kHeadIndex));
    QVERIFY(!t.Record(5).HasPanel);
  }

  void insertingNextToAnUnlinkedRecordDoesNothing() {
    TCallControlDev t;
    t.AddPanel(1);
    QVERIFY(!t.InsertBefore(2, 9));
    QVERIFY(!t.InsertAfter(2, 9));
    QVERIFY(!t.Record(2).InList);
    QVERIFY(t.InsertAfter(2, 1));
    QCOMPARE(t.Ordered(), Ids({1, 2}));
  }

  void pruneKeepsWhatWasReported() {
    TCallControlDev t;
    t.ParentWidth = 755;
    for (int id : {1, 2, 3, 4}) {
      t.Record(id).ID = id;
      t.AddPanel(id);
    }
    t.PortsID_ComboBox = {u"2"_s, u"4"_s};
    t.PrunePanels();
    QCOMPARE(t.Ordered(), Ids({2, 4}));
    QCOMPARE(t.Record(4).Left, 96); // laid out again
  }

  // An ID from the exchange outside the table never reaches a record.
  void idsOutsideTheTable() {
    TCallControlDev t;
    for (int id : {-1, 3072, 3073, 40000}) {
      QVERIFY(!t.Device(id));
      t.AddPanel(id);
      t.RemovePanel(id);
      t.MovePanel(id, 0);
    }
    QCOMPARE(t.PanelCount(), 0);
    QVERIFY(t.Device(0) && t.Device(3071));
  }

  void removeAllEmptiesTheBoard() {
    TCallControlDev t;
    for (int id = 0; id < 100; ++id)
      t.AddPanel(id);
    t.RemoveAllPanels();
    QCOMPARE(t.PanelCount(), 0);
  }

  void typeVisibility_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("flagOff");
    QTest::addColumn<bool>("visible");
    QTest::newRow("SIP trunk follows the PRI flag") << 22 << 9 << false;
    QTest::newRow("SIP trunk ignores its own number") << 22 << 22 << true;
    QTest::newRow("code 21 always") << 21 << 21 << true;
    QTest::newRow("analogue extension") << 1 << 1 << false;
    QTest::newRow("unknown code beyond the flags") << 40 << 1 << true;
  }
  void typeVisibility() {
    QFETCH(int, type);
    QFETCH(int, flagOff);
    QFETCH(bool, visible);
    TestHome home;
    SysConfig().TypeVisible.fill(true);
    SysConfig().TypeVisible[size_t(flagOff)] = false;
    QCOMPARE(DeviceTypeVisible(type), visible);
  }

  void nameLinesAndStatusTexts() {
    TestHome home;
    home.UseChinese();
    ReloadTypeNames();
    QCOMPARE(NameLine(1, u"8001"_s), u"[8001]"_s);
    QCOMPARE(NameLine(9, u"1"_s), u"Pri[1]"_s);
    QCOMPARE(NameLine(22, u"2"_s), u"SIPT[2]"_s);
    QCOMPARE(NameLine(12, u"3"_s), u"RadioB[3]"_s);
    QCOMPARE(NameLine(6, u"4"_s), u"IVRA[4]"_s);
    QCOMPARE(NameLine(5, u"5"_s), LangFormat(390, {u"5"_s}));
    QCOMPARE(ExtensionStatusText(1), LangText(742));
    QCOMPARE(ExtensionStatusText(11), QString());
    QCOMPARE(DeviceStatusText(17), u"DTMF_Rev"_s);
    QCOMPARE(DeviceStatusText(25), u"联号"_s);
    QCOMPARE(DeviceStatusText(26), QString());
    QCOMPARE(DefaultStatusColour(4), TColor(0xFF0000));
    QCOMPARE(DefaultStatusColour(1), clBtnFace);
    QCOMPARE(LegendPanelName(8), u"Other_Panel"_s);
    QCOMPARE(LegendPanelName(9), QString());
  }
};

QTEST_GUILESS_MAIN(DeviceTableTest)
#include "tst_devicetable.moc"
