// Do-not-disturb, service class, voice mail and memo on a real store: the
// 152 packet, the windows at set clocks, the class item rule, what an apply
// writes, and what a batch key does without a session.
#include "GuestDesk.h"

#include "guest/BatchWalk.h"
#include "guest/Hint_Form.h"
#include "guest/MemoSet.h"
#include "guest/Nodisturb.h"
#include "guest/Nodisturb_Form.h"
#include "guest/VoiceMail_Set.h"
#include "support/LanguagePack.h"

#include <QTest>

using namespace Qt::StringLiterals;
using G = TExtGridModel;

namespace {
TDateTime At(int h, int m, int s = 0, int ms = 0) {
  return TDateTime::FromTime(QTime(h, m, s, ms));
}

// The rooms' dialogs over one GuestDesk, wired as the main window wires them.
struct Rooms : GuestDesk {
  TBatchWalk walk{exts};
  TNodisturb nodisturb{table, net, exts};
  TForm_Nodisturb nodisturbForm{table, exts, nodisturb, walk};
  THint_Form hint{table, net, exts, walk};
  TForm_VoiceMail_Set voiceMail{table, net, exts, walk};
  TForm_MemoSet memo{table, exts};
  Rooms() {
    exts.RunNoDisturbWindows = [this](int id) { nodisturb.RunNoDisturbWindows(id); };
    for (int id = 1; id <= 3; ++id)
      Report(id, "800" + QByteArray::number(id));
    CapturedPackets.clear(); // the enumeration's next questions
  }
  void Check(int id) {
    exts.AdvStringGrid_Exts.SetCheck(exts.AdvStringGrid_Exts.SlotOfId(id), u"TRUE"_s);
  }
};
} // namespace

class RoomsTest : public QObject {
  Q_OBJECT

private slots:
  // Bytes by hand: magic, checksum (negated byte sum from offset 6), type 24,
  // session 9, length 20, sub-code 152, the device at 16, the command at 18.
  void noDisturbPacket_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("id");
    QTest::addColumn<QByteArray>("hex");
    QTest::newRow("off") << 0 << 5
                         << QByteArray("121910392e00180009001400980000000500"
                                       "0000");
    QTest::newRow("both") << 1 << 5
                          << QByteArray("121910392d00180009001400980000000500"
                                        "0100");
    QTest::newRow("inside") << 2 << 5
                            << QByteArray("121910392c00180009001400980000000500"
                                          "0200");
    QTest::newRow("outside goes as 4") << 3 << 261
                                       << QByteArray("121910392900180009001400980000000501"
                                                     "0400");
  }
  void noDisturbPacket() {
    QFETCH(int, mode);
    QFETCH(int, id);
    QFETCH(QByteArray, hex);
    GuestDesk d;
    d.net.Send_NodisturbCtrl(id, NoDisturbCommandOf(mode));
    QCOMPARE(CapturedPackets.value(0).toHex(), hex);
    QCOMPARE(d.net.LastCommand, NoDisturbCommandOf(mode));
  }

  // One checked window 07:00-09:00 (or 22:00-06:00 across midnight) and the
  // mode the exchange last reported; what the tick sends at a set clock.
  void windows_data() {
    QTest::addColumn<QTime>("now");
    QTest::addColumn<bool>("overnight");
    QTest::addColumn<quint16>("mix");
    QTest::addColumn<int>("sent"); // the command, or -1 for none
    QTest::newRow("inside, off: on") << QTime(8, 0) << false << quint16(0) << 1;
    QTest::newRow("inside, already on") << QTime(8, 0) << false << quint16(0x0400) << -1;
    QTest::newRow("outside, on: off") << QTime(10, 0) << false << quint16(0x0200) << 0;
    QTest::newRow("outside, off") << QTime(10, 0) << false << quint16(0) << -1;
    QTest::newRow("at the start is outside") << QTime(7, 0) << false << quint16(0x0004) << 0;
    QTest::newRow("just before the end") << QTime(8, 59, 59, 990) << false << quint16(0) << 1;
    QTest::newRow("overnight never on") << QTime(23, 0) << true << quint16(0) << -1;
    QTest::newRow("overnight switches off") << QTime(23, 0) << true << quint16(0x0004) << 0;
  }
  void windows() {
    QFETCH(QTime, now);
    QFETCH(bool, overnight);
    QFETCH(quint16, mix);
    QFETCH(int, sent);
    Rooms d;
    d.Status(2, 1, mix);
    TExt_Record &l = d.table.Device(2)->LastExt;
    l.NoDisturb_Time2_Checked = true;
    l.NoDisturb_Time2_Start = overnight ? At(22, 0) : At(7, 0);
    l.NoDisturb_Time2_End = overnight ? At(6, 0) : At(9, 0);
    // A window is read by its time of day, whatever day the picker kept.
    l.NoDisturb_Time2_Start = l.NoDisturb_Time2_Start + 40000.0;
    d.net.MultiTask = true;
    GuestDesk::At(QDateTime(QDate(2027, 1, 3), now));
    CapturedPackets.clear();
    d.exts.TickYields = false;
    d.exts.Timer_ExcuteActionTimer();
    QCOMPARE(CapturedPackets.size(), sent < 0 ? 0 : 1);
    if (sent >= 0) {
      QCOMPARE(GetU16(CapturedPackets[0].constData(), 16), 2);
      QCOMPARE(int(GetU16(CapturedPackets[0].constData(), 18)), sent);
      QVERIFY(!d.net.MultiTask); // a tick's command ends a running batch
    }
  }

  // Closer than 1 ms to an edge is on the edge, and so outside.
  void windowEdges() {
    const double ms = 1.0 / 86400000.0;
    const TDateTime start = At(7, 0), end = At(9, 0);
    QVERIFY(!TNodisturb::InsideWindow(start + 0.5 * ms, start, end));
    QVERIFY(TNodisturb::InsideWindow(start + 2 * ms, start, end));
    QVERIFY(!TNodisturb::InsideWindow(end - 0.5 * ms, start, end));
  }

  void classItem_data() {
    QTest::addColumn<int>("srvClass");
    QTest::addColumn<int>("item");
    QTest::newRow("class 0") << 0 << 0;
    QTest::newRow("class 9 is 10:, not 1:") << 9 << 2;
    QTest::newRow("no such class") << 4 << -1;
  }
  void classItem() {
    QFETCH(int, srvClass);
    QFETCH(int, item);
    const QStringList items{u"1:无限制"_s, u"2:市话"_s, u"10:内线"_s};
    QCOMPARE(THint_Form::ItemOfClass(items, srvClass), item);
    QCOMPARE(THint_Form::ClassNumberOf(items.value(item)) - 1,
             item < 0 ? -2 : (item == 2 ? 9 : item));
  }

  // The dialog opens on a device's class and sends the item's number less 1;
  // with nothing selected the class goes as -2.
  void classApply() {
    Rooms d;
    d.exts.SrvClassItems = [] { return QStringList{u"1:a"_s, u"2:b"_s, u"10:c"_s}; };
    d.table.Device(3)->SrvClass = 9;
    d.hint.OpenFor(3, false);
    QCOMPARE(d.hint.srvClass_TeComboBox_ItemIndex, 2);
    QCOMPARE(d.hint.TelNos_LMDLabel, LangText(420) + u"8003"_s);
    d.hint.srvClsApply_TeButtonClick();
    QCOMPARE(GetU16(CapturedPackets.last().constData(), 16), 3);
    QCOMPARE(GetI16(CapturedPackets.last().constData(), 18), 9);
    d.hint.OpenFor(3, true);
    d.hint.srvClass_TeComboBox_ItemIndex = -1;
    d.hint.srvClsApply_TeButtonClick();
    QCOMPARE(GetI16(CapturedPackets.last().constData(), 18), -2);
    QVERIFY(!d.hint.Visible());
  }

  // A single apply keeps the windows in Exts and the row says "(定时)" at its
  // next refresh; a batch keeps them in the first room's memory only.
  void noDisturbApply() {
    Rooms d;
    TForm_Nodisturb &f = d.nodisturbForm;
    d.exts.AdvStringGrid_Exts.SetCurrentSlot(d.exts.AdvStringGrid_Exts.SlotOfId(2));
    f.OpenFor(2);
    QCOMPARE(f.Caption, u"8002-免打扰设置"_s);
    f.TeComboBox_Nodisturb_ItemIndex = 3;
    f.TeCheckBox_Time3 = true;
    f.TeDateTimePicker_Time3_Start = At(12, 30);
    f.TeDateTimePicker_Time3_End = At(14, 0);
    f.TeButton_Nodisturb_ApplyClick();
    QCOMPARE(int(GetU16(CapturedPackets.last().constData(), 18)), 4);
    QCOMPARE(GuestDesk::Column(
                 u"select NoDisturb_Time3_Checked || '|' || NoDisturb_Time3_Start || '|' || "
                 u"NoDisturb_Time3_End from Exts where PortID=2"_s),
             QStringList{u"1|1899-12-30 12:30:00|1899-12-30 14:00:00"_s});
    d.Status(2, 1, 0x0400);
    QCOMPARE(d.CellOf(2, G::ColNodisturb), u"外线免打扰(定时)"_s);

    d.Check(1);
    d.Check(3);
    f.OpenFor(2);
    f.TeCheckBox_Time1 = true;
    f.TeButton_Nodisturb_ApplyMultiClick();
    QVERIFY(d.net.MultiTask);
    QCOMPARE(GetU16(CapturedPackets.last().constData(), 16), 1);
    QVERIFY(d.table.Device(1)->LastExt.NoDisturb_Time1_Checked);
    QCOMPARE(GuestDesk::Column(u"select count(*) from Exts where NoDisturb_Time1_Checked"_s),
             QStringList{u"0"_s});
  }

  // With the link down a batch key sends nothing and shows nothing; with no
  // row checked it warns and the dialog stays.
  void batchKeys_data() {
    QTest::addColumn<bool>("session");
    QTest::addColumn<bool>("checked");
    QTest::newRow("nothing checked") << true << false;
    QTest::newRow("no session") << false << true;
  }
  void batchKeys() {
    QFETCH(bool, session);
    QFETCH(bool, checked);
    Rooms d;
    if (!session)
      SysParam().MyID = kNoSession;
    if (checked)
      d.Check(2);
    d.hint.OpenFor(1, false);
    d.hint.TeButton_srvClsApply_MultiClick();
    d.nodisturbForm.OpenFor(1);
    d.nodisturbForm.TeButton_Nodisturb_ApplyMultiClick();
    d.voiceMail.OpenFor(1);
    d.voiceMail.TeButton_VoiceMail_ApplyMultiClick();
    QVERIFY(CapturedPackets.isEmpty());
    QCOMPARE(d.shell.Messages.size(), checked ? 0 : 3);
    QCOMPARE(d.hint.Visible(), !checked);
    QCOMPARE(d.voiceMail.Visible(), !checked);
  }

  // A memo goes to every checked row, no packet; its filter shows those rows.
  void memoBatchAndFilter() {
    Rooms d;
    d.Check(1);
    d.Check(3);
    d.memo.OpenFor(2);
    d.memo.Memo_Memo = u"VIP"_s;
    d.memo.TeButton_MemoSet_ApplyMultiClick();
    QVERIFY(CapturedPackets.isEmpty());
    QCOMPARE(GuestDesk::Column(u"select PortID from Exts where Memo = 'VIP' || char(13, 10) "
                               u"order by PortID"_s),
             (QStringList{u"1"_s, u"3"_s}));
    d.memo.OpenFor(1);
    QCOMPARE(d.memo.Memo_Memo, u"VIP"_s);
    d.memo.TeButton3Click();
    QCOMPARE(d.exts.AdvStringGrid_Exts.ShownCount(), 2);
    d.exts.tefxButton_Ext_CancelFilterClick();
    QCOMPARE(d.exts.AdvStringGrid_Exts.ShownCount(), 3);
  }
};

QTEST_GUILESS_MAIN(RoomsTest)
#include "tst_rooms.moc"
