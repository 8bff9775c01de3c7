// Wake-up calls: the packet of each sub-code, the time texts, the dialog's
// opening, query answer and apply on a real store, and one round trip with the
// simulated exchange through the main window's wiring.
#include "common/LoginSteps.h"
#include "GuestDesk.h"

#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "guest/MoringCall.h"
#include "support/LanguagePack.h"

#include "ExchangeSim.h"

#include <QTest>

using namespace Qt::StringLiterals;
using G = TExtGridModel;

namespace {
const TDateTime kJan3At0705 = TDateTime::FromQDateTime(QDateTime(QDate(2027, 1, 3), QTime(7, 5)));

QByteArray Answer(const QByteArray &text, int mode) {
  QByteArray w(2048, '\0');
  PutU16(w.data(), 6, 35);
  w[12] = 2;
  w.replace(18, qMin<qsizetype>(text.size(), 20), text.left(20));
  w[38] = char(mode);
  return w;
}
} // namespace

class WakeUpTest : public QObject {
  Q_OBJECT

private slots:
  // Bytes worked out by hand from the packet table: magic, checksum (the
  // negated byte sum from offset 6), type 35, session 9, length 40.
  void wakeUpPacket_data() {
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("session");
    QTest::addColumn<QByteArray>("hex");
    QTest::newRow("set, mode 1")
        << 2 << 1 << 9
        << QByteArray("12191039ea0023000900280001000000050032303237303130333037303530310000000000000000");
    QTest::newRow("set, mode 3")
        << 2 << 3 << 9
        << QByteArray("12191039e40023000900280004000000050032303237303130333037303530310000000000000300");
    QTest::newRow("cancel")
        << 3 << 1 << 9
        << QByteArray("12191039a40023000900280003000000050000000000000000000000000000000000000000000000");
    QTest::newRow("query")
        << 4 << 1 << 9
        << QByteArray("12191039a50023000900280002000000050000000000000000000000000000000000000000000000");
    QTest::newRow("unknown mode") << 2 << 7 << 9 << QByteArray();
    QTest::newRow("no session") << 2 << 1 << 65535 << QByteArray();
  }
  void wakeUpPacket() {
    QFETCH(int, code);
    QFETCH(int, mode);
    QFETCH(int, session);
    QFETCH(QByteArray, hex);
    GuestDesk d;
    SysParam().MyID = quint16(session);
    d.net.LastCommand = 0;
    d.net.DstID = 5;
    d.net.MoringMode = mode;
    d.net.CallTime = MoringCallTimeText(kJan3At0705);
    QCOMPARE(d.net.CallTime, u"20270103070501"_s);
    CapturedPackets.clear();
    d.net.Send(code);
    QCOMPARE(CapturedPackets.value(0).toHex(), hex);
    QCOMPARE(d.net.LastCommand, session == 65535 ? 0 : code);
  }

  void wakeUpTimeText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("read"); // "" none, "!" an error
    QTest::newRow("twelve digits") << u"202701030705"_s << u"2027-01-03 07:05:00"_s;
    QTest::newRow("as sent, trimmed") << u" 20270103070501 "_s << u"2027-01-03 07:05:00"_s;
    QTest::newRow("blank") << u"  "_s << QString();
    QTest::newRow("letters") << u"2027O1O3O7O5"_s << u"!"_s;
    QTest::newRow("eleven digits") << u"20270103070"_s << u"!"_s;
    QTest::newRow("month 13") << u"202713030705"_s << u"!"_s;
  }
  void wakeUpTimeText() {
    QFETCH(QString, text);
    QFETCH(QString, read);
    try {
      const TDateTime t = MoringCallText2DateTime(text);
      QCOMPARE(t.IsZero() ? QString() : FormatFull(t), read);
    } catch (const EConvertError &) {
      QCOMPARE(u"!"_s, read);
    }
  }

  // The dialog opens one mode item down from the stored mode, asks, and takes
  // the answer; a text it can't read leaves it as it was.
  void dialogOpensAndTakesTheAnswer_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("modeByte");
    QTest::addColumn<QString>("shown"); // flag item, date, hour, minute, mode item
    QTest::newRow("a wake-up") << QByteArray("202701030705") << 3 << u"1 2027-01-03 7 5 2"_s;
    QTest::newRow("no NUL") << QByteArray("20270103070501012345") << 2 << u"1 2027-01-03 7 5 1"_s;
    QTest::newRow("mode 0") << QByteArray("202701030705") << 0 << u"1 2027-01-03 7 5 0"_s;
    QTest::newRow("mode 200") << QByteArray("202701030705") << 200 << u"1 2027-01-03 7 5 0"_s;
    QTest::newRow("none") << QByteArray() << 0 << u"0 2027-01-04 7 30 0"_s;
    QTest::newRow("letters") << QByteArray("2027010307ab") << 2 << u"0 2027-01-01 6 15 2"_s;
    QTest::newRow("11 digits") << QByteArray("20270103070") << 2 << u"0 2027-01-01 6 15 2"_s;
  }
  void dialogOpensAndTakesTheAnswer() {
    QFETCH(QByteArray, text);
    QFETCH(int, modeByte);
    QFETCH(QString, shown);
    GuestDesk d;
    d.Report(5, "8005");
    d.table.Device(5)->LastExt.MoringCall_Mode = 2;
    TMoringCall_Form &f = d.dialog;
    f.MoCallDate_TeDateTimePicker = TDateTime::FromDate(QDate(2027, 1, 1));
    f.MoCall_Hour_TeSpinEdit = 6;
    f.MoCall_Minute_TeSpinEdit = 15;
    d.exts.AdvStringGrid_Exts.SetCurrentRow(0);
    CapturedPackets.clear();
    f.tefxButton_MoringCallClick();
    QVERIFY(f.Visible());
    QCOMPARE(f.TelNos_StaticText, u"8005"_s);
    QCOMPARE(f.Caption, u"8005-叫醒设置"_s);
    QCOMPARE(f.TeSComboBox_MoringCallMode_ItemIndex, 2);
    QCOMPARE(GetU16(CapturedPackets.value(0).constData(), 12), 2); // the query
    d.net.CallTime = u"sent"_s;
    d.events.processPacketFromSocket_MoringCall(Answer(text, modeByte).constData());
    QCOMPARE(u"%1 %2 %3 %4 %5"_s.arg(f.MoCall_Flag_TeSComboBox_ItemIndex)
                 .arg(DateToStr(f.MoCallDate_TeDateTimePicker))
                 .arg(f.MoCall_Hour_TeSpinEdit)
                 .arg(f.MoCall_Minute_TeSpinEdit)
                 .arg(f.TeSComboBox_MoringCallMode_ItemIndex),
             shown);
    QCOMPARE(d.net.CallTime, u"sent"_s); // the answer is the dialog's alone
  }

  // Apply sends, shows and stores at once; the daily columns are written also
  // when the wake-up goes off. A store that refuses the write leaves the
  // dialog open and tells the operator.
  void apply_data() {
    QTest::addColumn<int>("flag");
    QTest::addColumn<bool>("readOnly");
    QTest::addColumn<int>("subCode");
    QTest::addColumn<QString>("cell");
    QTest::newRow("on, English") << 1 << false << 4 << u"2027-01-03 07:05:00(每天:06:30)"_s;
    QTest::newRow("off keeps the daily") << 0 << false << 3 << u"关(每天:06:30)"_s;
    QTest::newRow("read-only store") << 1 << true << 4 << u"关"_s;
  }
  void apply() {
    QFETCH(int, flag);
    QFETCH(bool, readOnly);
    QFETCH(int, subCode);
    QFETCH(QString, cell);
    GuestDesk d;
    d.Report(5, "8005");
    TMoringCall_Form &f = d.dialog;
    f.OpenFor(5);
    f.MoCall_Flag_TeSComboBox_ItemIndex = flag;
    f.MoCallDate_TeDateTimePicker = kJan3At0705.DatePart();
    f.MoCall_Hour_TeSpinEdit = 7;
    f.MoCall_Minute_TeSpinEdit = 5;
    f.TeSComboBox_MoringCallMode_ItemIndex = 2;
    f.TeCheckBox_MoringCall_isEveryDay = true;
    f.TeDateTimePicker_MoringCall_EveryDayTime = TDateTime::FromTime(QTime(6, 30));
    if (readOnly)
      QSqlQuery(StoreConnection()).exec(u"PRAGMA query_only = ON"_s);
    CapturedPackets.clear();
    f.TeButton1Click();
    QCOMPARE(GetU16(CapturedPackets.value(0).constData(), 12), subCode);
    QCOMPARE(d.CellOf(5, G::ColMoringTime), cell);
    QCOMPARE(f.Visible(), readOnly);
    QCOMPARE(d.shell.Messages.size(), readOnly ? 1 : 0);
    QSqlQuery(StoreConnection()).exec(u"PRAGMA query_only = OFF"_s);
    QCOMPARE(GuestDesk::Column(
                 u"select MoringCall_isEveryDay || ' ' || MoringCall_EveryDay_Time || ' ' || "
                 u"MoringCall_Mode from Exts where PortID = 5"_s),
             QStringList{readOnly ? QString() : u"1 1899-12-30 06:30:00 3"_s});
    QCOMPARE(GuestDesk::Column(u"select count(*) from MoringCallLog"_s), QStringList{u"0"_s});
  }

  void batchKeyWantsACheckedRow() {
    GuestDesk d;
    d.Report(1, "8001");
    d.Report(2, "8002");
    TMoringCall_Form &f = d.dialog;
    f.OpenFor(1);
    CapturedPackets.clear();
    f.TeButton_MoringCallSet_MultiClick();
    QCOMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages[0].Text, u"警告提示:请先选择!"_s);
    QVERIFY(f.Visible() && f.MultiApply && CapturedPackets.isEmpty());
    d.exts.AdvStringGrid_Exts.SetCheck(d.exts.AdvStringGrid_Exts.SlotOfId(2), u"TRUE"_s);
    f.MoCall_Flag_TeSComboBox_ItemIndex = 1;
    f.TeButton_MoringCallSet_MultiClick();
    QCOMPARE(GetU16(CapturedPackets.value(0).constData(), 16), 2);
    QVERIFY(!d.table.Device(2)->MoringCallTime.IsZero());
  }

  // Login, enumeration, the dialog's query and apply against the simulated
  // exchange, through the main window's own wiring.
  void roundTripWithTheExchange() {
    TestHome home;
    RecordingShell shell;
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    SysConfig().TypeVisible.fill(true);
    SysParam() = TNetPhone_SysParam{};
    LastSysParam() = TNetPhone_SysParam{};
    TMain_Form main;
    TLogin_Form login(&main);
    main.ExtsView().ExtsView_Init();
    ExchangeSim sim;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.SetPulsePeriod(0);
    sim.AddDevices(0, 4, 1, u"8001"_s);
    QVERIFY(sim.Listen());
    main.Link().StartWorker();
    TypeLogin(login, sim.Port());
    login.Login_TeButtonClick();
    QTRY_COMPARE_WITH_TIMEOUT(main.ExtsView().AdvStringGrid_Exts.ShownCount(), 4, 20000);

    TMoringCall_Form &f = main.MoringCall_Form();
    main.OpenMoringCall(3);
    QTRY_COMPARE(f.MoCall_Hour_TeSpinEdit, 7); // the empty answer's 7:30
    f.MoCall_Flag_TeSComboBox_ItemIndex = 1;
    f.MoCallDate_TeDateTimePicker = kJan3At0705.DatePart();
    f.MoCall_Hour_TeSpinEdit = 6;
    f.MoCall_Minute_TeSpinEdit = 45;
    f.TeButton1Click();
    QVERIFY(!f.Visible());
    main.OpenMoringCall(3);
    QTRY_COMPARE(f.MoCall_Flag_TeSComboBox_ItemIndex, 1);
    QCOMPARE(f.MoCall_Hour_TeSpinEdit, 6);
    QCOMPARE(f.MoCall_Minute_TeSpinEdit, 45);
    main.Link().StopWorker();
  }
};

QTEST_GUILESS_MAIN(WakeUpTest)
#include "tst_wakeup.moc"
