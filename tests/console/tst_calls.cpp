// The operator's own extension: call states through the dispatcher, the screen
// pop, the call log by last and new state, dialling and the call-control keys.
#include "common/PacketCapture.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/CallDirectory.h"
#include "console/Main_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// What went out, as "type:code" for commands and "18:digits" for dialling.
QStringList Sent() {
  QStringList out;
  for (const QByteArray &p : CapturedPackets) {
    const int type = GetI16(p.constData(), 6);
    if (type == 18) {
      QString digits;
      for (int i = 0; i < p[12]; ++i)
        digits += QString::number(int(p[13 + i]));
      out << u"18:"_s + digits;
    } else {
      out << u"%1:%2"_s.arg(type).arg(GetU16(p.constData(), 12));
    }
  }
  return out;
}

// The phone book and call log as the call handling sees them.
struct Directory : TCallDirectory {
  QStringList Calls; // "what:number"
  QStringList Row{u"张三"_s, {}, {}, {}, u"海景酒店"_s};
  bool Selected = false;
  void AddIncoming(const QString &n) override { Calls << u"incoming:"_s + n; }
  void RemoveIncoming(const QString &n) override { Calls << u"remove:"_s + n; }
  QStringList LookUp(const QString &n) override {
    Calls << u"lookup:"_s + n;
    return Row;
  }
  bool ContactSelected() const override { return Selected; }
  void RestoreAndShowContact(const QString &n, bool lookUp) override {
    Calls << u"restore:%1:%2"_s.arg(n).arg(lookUp);
  }
  void ShowPopMsg(const QString &n) override { Calls << u"popmsg:"_s + n; }
  void ExternalCall() override { Calls << u"external:"_s + LastSysParam().CallerNo; }
  QStringList LogCall(int kind, const QString &n) override {
    Calls << u"log%1:%2"_s.arg(kind).arg(n);
    return Row;
  }
};

struct Desk {
  TestHome home;
  RecordingShell shell;
  Directory directory;
  TMain_Form main;

  Desk() {
    home.UseChinese();
    SysParam() = TNetPhone_SysParam{};
    SysParam().MyID = 3;
    LastSysParam() = TNetPhone_SysParam{};
    SysConfig().OutNo = u"9"_s;
    main.CallDirectory = &directory;
    main.Display().Timer2.start();
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
  }
  ~Desk() { SetPacketOutlet(nullptr, nullptr); }

  void State(int state, const QByteArray &caller = {}, int line = 0, int flags = 0, int rights = 0,
             int len = 66) {
    QByteArray p(2048, '\0');
    PutU32(p.data(), 0, kPacketMagic);
    PutU16(p.data(), 6, 17);
    PutU16(p.data(), 8, 3);
    PutU16(p.data(), 10, quint16(len));
    p[12] = char(state);
    PutU16(p.data(), 14, quint16(line));
    p.replace(17, qMin<qsizetype>(caller.size(), 21), caller.left(21));
    p[59] = char(flags);
    PutU16(p.data(), 64, quint16(rights));
    main.processPacketFromSocket(p.constData(), len);
  }
  QString Line1() const { return main.Display().Buffer1().left(20).trimmed(); }
  bool Blinking() const { return main.Display().Buffer2() == TDisplay::BlankBuffer(); }
};
} // namespace

class CallsTest : public QObject {
  Q_OBJECT

private slots:
  void statesOnTheDisplay_data() {
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("line1");
    QTest::addColumn<bool>("blink");
    QTest::addColumn<bool>("ringing");
    QTest::newRow("0 out of service") << 0 << u"OutService!"_s << true << false;
    QTest::newRow("2 ringing") << 2 << u"8002"_s << true << true;
    QTest::newRow("3 call back") << 3 << u"8002 CallBack"_s << true << true;
    QTest::newRow("4 dialling") << 4 << u"Dial:"_s << false << false;
    QTest::newRow("5 calling") << 5 << u"Calling 8002"_s << false << false;
    QTest::newRow("6 hang up") << 6 << u"Please Hangup!"_s << true << false;
    QTest::newRow("7 connected") << 7 << u"8002 Connected"_s << false << false;
  }
  void statesOnTheDisplay() {
    QFETCH(int, state);
    QFETCH(QString, line1);
    QFETCH(bool, blink);
    QFETCH(bool, ringing);
    Desk d;
    d.State(state, "8002");
    QCOMPARE(d.Line1(), line1);
    QCOMPARE(d.Blinking(), blink);
    QCOMPARE(d.shell.Ringing, ringing);
    QCOMPARE(int(SysParam().CallState), state);
  }

  void idleShowsTheClockAndStopsTheRing() {
    Desk d;
    d.State(2, "8002");
    QVERIFY(d.shell.Ringing);
    SetClock([] { return QDateTime(QDate(2026, 11, 22), QTime(6, 59, 59)); });
    d.State(1);
    QVERIFY(!d.shell.Ringing);
    QVERIFY(d.main.showTime_Timer.isActive());
    d.main.showTime_TimerTimer();
    QCOMPARE(d.Line1(), u"2026-11-22 06:59:59"_s);
    QVERIFY(d.main.showTime_Timer.isActive()); // it starts itself again
  }

  void mutedRingingShowsEverythingButPlaysNothing() {
    Desk d;
    SysConfig().RingFlag = 1;
    d.State(2, "8002");
    QCOMPARE(d.Line1(), u"8002"_s);
    QCOMPARE(d.shell.RingStarts, 0);
    QVERIFY(d.directory.Calls.contains(u"incoming:8002"_s));
  }

  void popByIncomStyle_data() {
    QTest::addColumn<int>("style");
    QTest::addColumn<QString>("call");
    QTest::newRow("0 brings the window up") << 0 << u"restore:13800138000:1"_s;
    QTest::newRow("3 pop-up window") << 3 << u"popmsg:13800138000"_s;
    QTest::newRow("2 external program") << 2 << u"external:13800138000"_s;
    QTest::newRow("7 acts as 2") << 7 << u"external:13800138000"_s;
  }
  void popByIncomStyle() {
    QFETCH(int, style);
    QFETCH(QString, call);
    Desk d;
    SysConfig().IncomStyle = style;
    d.State(2, "13800138000");
    QVERIFY2(d.directory.Calls.contains(call), qPrintable(d.directory.Calls.join(u' ')));
    QVERIFY(d.directory.Calls.contains(u"lookup:13800138000"_s));
  }

  void balloonPopNamesTheTrunk_data() {
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("trunk");
    QTest::newRow("an extension's line") << 5 << QString();
    QTest::newRow("an analogue trunk") << 40 << u"T1"_s;
    QTest::newRow("a line beyond the table") << 9000 << QString();
    QTest::newRow("a negative line") << -4 << QString();
  }
  void balloonPopNamesTheTrunk() {
    QFETCH(int, line);
    QFETCH(QString, trunk);
    Desk d;
    SysConfig().IncomStyle = 1;
    d.main.AnalogTrunkName = [](int l) { return l == 40 ? u"T1"_s : QString(); };
    d.State(2, "13800138000", line);
    QCOMPARE(d.shell.Balloons.size(), 1);
    QCOMPARE(d.shell.Balloons[0].Title, trunk.isEmpty() ? LangText(329) : LangFormat(328, {trunk}));
    const QString cr = u"\r"_s;
    QCOMPARE(d.shell.Balloons[0].Text, LangFormat(319, {u"13800138000"_s, cr}) +
                                           LangFormat(320, {u"张三"_s, cr}) +
                                           LangFormat(321, {u"海景酒店"_s, cr}));
  }

  void anonymousCallPopsWithoutLookup() {
    Desk d;
    SysConfig().IncomStyle = 1;
    d.State(2, "");
    QVERIFY(!d.directory.Calls.join(u' ').contains(u"lookup"_s));
    const QString cr = u"\r"_s;
    QCOMPARE(d.shell.Balloons[0].Text, LangFormat(322, {LangText(323), cr}) +
                                           LangFormat(324, {LangText(325), cr}) +
                                           LangFormat(326, {LangText(327), cr}));
  }

  void callBackLooksUpOnlyWithoutAContact() {
    Desk d;
    d.directory.Selected = true;
    d.State(3, "8002");
    QVERIFY(!d.directory.Calls.contains(u"lookup:8002"_s));
    d.directory.Selected = false;
    d.State(3, "8002");
    QVERIFY(d.directory.Calls.contains(u"lookup:8002"_s));
  }

  // The kind of a finished call comes from where it was.
  void callLog_data() {
    QTest::addColumn<int>("last");
    QTest::addColumn<int>("next");
    QTest::addColumn<int>("dialOutFlag");
    QTest::addColumn<QString>("logged");
    QTest::newRow("2 to 1 missed, last number") << 2 << 1 << 0 << u"log1:8002"_s;
    QTest::newRow("2 to 7 answered") << 2 << 7 << 0 << u"log2:8009"_s;
    QTest::newRow("4 to 7 dialled out") << 4 << 7 << 1 << u"log3:8009"_s;
    QTest::newRow("4 to 7 answered") << 4 << 7 << 0 << u"log2:8009"_s;
    QTest::newRow("5 to 7 dialled") << 5 << 7 << 0 << u"log3:8009"_s;
    QTest::newRow("5 to 1 dialled, last number") << 5 << 1 << 0 << u"log3:8002"_s;
    QTest::newRow("7 to 1 nothing") << 7 << 1 << 0 << QString();
    QTest::newRow("3 to 1 nothing") << 3 << 1 << 0 << QString();
  }
  void callLog() {
    QFETCH(int, last);
    QFETCH(int, next);
    QFETCH(int, dialOutFlag);
    QFETCH(QString, logged);
    Desk d;
    d.State(last, "8002");
    d.directory.Calls.clear();
    d.State(next, next == 1 ? QByteArray() : QByteArray("8009"), 0, dialOutFlag);
    QStringList logs;
    for (const QString &c : d.directory.Calls)
      if (c.startsWith(u"log"_s))
        logs << c;
    QCOMPARE(logs, logged.isEmpty() ? QStringList() : QStringList{logged});
  }

  void incomingRowGoesWhenTheRingingEnds() {
    Desk d;
    d.State(2, "8002");
    d.State(7, "8002");
    QVERIFY(d.directory.Calls.contains(u"remove:8002"_s));
  }

  void rightsBarTheGuestRoomActions() {
    Desk d;
    QSignalSpy allowed(&d.main, &TMain_Form::serviceAllowedChanged);
    d.State(1, {}, 0, 0, 16);
    QVERIFY(!d.main.ServiceAllowed);
    d.State(1, {}, 0, 0, 0);
    QVERIFY(d.main.ServiceAllowed);
    QCOMPARE(allowed.size(), 2);
  }

  // Numbers are text: a quote, Chinese and a full field arrive as they were sent.
  void oddNumbersStayText_data() {
    QTest::addColumn<QByteArray>("caller");
    QTest::addColumn<QString>("number");
    QTest::newRow("quote") << QByteArray("80'2") << u"80'2"_s;
    QTest::newRow("gbk") << QByteArray("\xD5\xC5\xC8\xFD") << u"张三"_s;
    QTest::newRow("field without NUL") << QByteArray(21, '7') << QString(21, u'7');
  }
  void oddNumbersStayText() {
    QFETCH(QByteArray, caller);
    QFETCH(QString, number);
    Desk d;
    d.State(2, caller);
    d.State(1);
    QVERIFY(d.directory.Calls.contains(u"log1:"_s + number));
    QCOMPARE(SysParam().LastCallerNo, number);
  }

  void unknownStateIsLoggedAndHarmless() {
    Desk d;
    SysConfig().Debug = 1;
    d.State(2, "8002");
    d.State(9, "8002");
    QVERIFY(LogMemo().Lines().join(u' ').contains(u"CallState: unknown state 9"_s));
    QCOMPARE(int(SysParam().CallState), 9);
    d.State(1);
    QCOMPARE(int(SysParam().CallState), 1);
  }

  void shortPacketReadsStateZero() {
    Desk d;
    d.State(7, "8002", 0, 0, 0, 12);
    QCOMPARE(d.Line1(), u"OutService!"_s);
  }

  void filterDialString_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("number");
    QTest::newRow("area code and hyphen") << u"(010) 1234-5"_s << u"0101234"_s;
    QTest::newRow("plain") << u"13800138000"_s << u"13800138000"_s;
    QTest::newRow("star and hash") << u"*72#8001"_s << u"*72#8001"_s;
    QTest::newRow("stray early skipped") << u"a1b2c3"_s << u"123"_s;
    QTest::newRow("stray at place 8 ends") << u"1234567x89"_s << u"1234567"_s;
    QTest::newRow("letters only") << u"abc"_s << QString();
    QTest::newRow("full-width digits are not digits") << u"１２３"_s << QString();
  }
  void filterDialString() {
    QFETCH(QString, text);
    QFETCH(QString, number);
    QCOMPARE(TMain_Form::FilterDialString(text), number);
  }

  void outsideLinePrefix_data() {
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("sent");
    QTest::newRow("seven digits get the prefix") << u"1234567"_s << u"18:91234567"_s;
    QTest::newRow("leading 0 does not") << u"01234567"_s << u"18:101234567"_s; // 0 is code 10
    QTest::newRow("six digits never") << u"123456"_s << u"18:123456"_s;
  }
  void outsideLinePrefix() {
    QFETCH(QString, number);
    QFETCH(QString, sent);
    Desk d;
    d.State(4);
    CapturedPackets.clear();
    d.main.DialNumber(number);
    QCOMPARE(Sent(), QStringList{sent});
    QVERIFY(!d.main.tefxSpeedButton1_Enabled);
  }

  // At idle the number waits five seconds for the handset.
  void waitingNumberDialsWhenTheHandsetLifts() {
    Desk d;
    d.State(1);
    d.main.DialNumber(u"8005"_s);
    QVERIFY(CapturedPackets.isEmpty());
    QVERIFY(d.main.Msg_Panel_Visible);
    QCOMPARE(d.main.Msg_Panel_Caption, LangFormat(260, {u"8005"_s}));
    QCOMPARE(d.main.Msg_TeLabel, LangFormat(261, {5}));
    d.main.Msg_TimerTimer();
    QCOMPARE(d.main.Msg_TeLabel, LangFormat(347, {4}));
    d.State(4);
    QCOMPARE(Sent(), QStringList{u"18:810105"_s}); // 0 is code 10
    QVERIFY(!d.main.Msg_Panel_Visible);
    QVERIFY(!d.main.Msg_Timer.isActive());
  }

  void waitingNumberRunsOutOrIsCancelled() {
    Desk d;
    d.State(1);
    d.main.DialNumber(u"8005"_s);
    for (int i = 0; i < 5; ++i)
      d.main.Msg_TimerTimer();
    QVERIFY(!d.main.Msg_Panel_Visible);
    QVERIFY(SysParam().DialBuffer.isEmpty());
    d.State(4);
    QVERIFY(CapturedPackets.isEmpty());
    d.State(1);
    d.main.DialNumber(u"8006"_s);
    d.main.Msg_TeButton1Click();
    QVERIFY(SysParam().DialBuffer.isEmpty());
    QVERIFY(!d.main.Msg_Timer.isActive());
  }

  void nothingGoesWithoutASession() {
    Desk d;
    d.State(4);
    SysParam().MyID = 65535;
    d.main.DialNumber(u"8005"_s);
    d.main.DialOneDigit(5);
    d.main.HoldClick();
    d.main.Offhook_tefxButtonClick();
    QVERIFY(CapturedPackets.isEmpty());
  }

  void keypadSendsOneDigitAndShowsWhatWasKeyed() {
    Desk d;
    d.State(4);
    d.main.DialOneDigit(1);
    d.main.DialOneDigit(10);
    d.main.DialOneDigit(12);
    QCOMPARE(Sent(), (QStringList{u"18:1"_s, u"18:10"_s, u"18:12"_s}));
    QCOMPARE(d.Line1(), u"Dial:10#"_s);
  }

  void divertAppliesThePrefixInAnyState() {
    Desk d;
    d.State(7, "8002");
    d.main.DivertNumber(u"1234567"_s);
    QCOMPARE(Sent(), QStringList{u"18:91234567"_s});
    QCOMPARE(d.Line1(), u"Divert To: 91234567"_s);
  }

  void dialBoxKeepsItsHistory() {
    Desk d;
    d.State(4);
    d.main.dial_TeSComboBox_Text = u"8001"_s;
    d.main.dial_TeSComboBoxKeyPress(u'\r');
    d.main.dial_TeButtonClick();
    d.main.dial_TeSComboBox_Text = u"8002"_s;
    d.main.dial_TeButtonClick();
    QCOMPARE(d.main.dial_TeSComboBox_Items, (QStringList{u"8002"_s, u"8001"_s}));
    d.main.dial_TeSComboBox_SelText = u"80"_s; // a selection dials the selection
    d.main.dial_TeButtonClick();
    QCOMPARE(Sent().last(), u"18:810"_s);
    CapturedPackets.clear();
    d.main.dial_TeSComboBoxKeyPress(u'7'); // keying dials off: nothing
    QVERIFY(CapturedPackets.isEmpty());
    SysConfig().isAGMode = true;
    d.main.dial_TeSComboBoxKeyPress(u'7');
    QCOMPARE(Sent(), QStringList{u"18:7"_s});
  }

  void callControlKeysAndTheirGuards_data() {
    QTest::addColumn<int>("state");
    QTest::addColumn<QStringList>("sent"); // hold, conference, cancel, cancel2, transfer, query
    QTest::newRow("idle") << 1 << QStringList{u"20:128"_s};
    QTest::newRow("ringing") << 2
                             << QStringList{u"20:131"_s, u"20:129"_s, u"20:132"_s, u"20:128"_s};
    QTest::newRow("dialling") << 4 << QStringList{u"20:131"_s, u"20:129"_s, u"20:132"_s,
                                                  u"20:132"_s, u"20:130"_s, u"20:128"_s};
    QTest::newRow("connected") << 7
                               << QStringList{u"20:131"_s, u"20:129"_s, u"20:132"_s, u"20:132"_s,
                                              u"20:131"_s, u"20:130"_s, u"20:128"_s};
  }
  void callControlKeysAndTheirGuards() {
    QFETCH(int, state);
    QFETCH(QStringList, sent);
    Desk d;
    d.State(state, "8002");
    CapturedPackets.clear();
    d.main.HoldClick();
    d.main.ConferenceClick();
    d.main.LMDButton21Click();
    d.main.tefxButton3Click();
    d.main.TransferClick();
    d.main.QueryClick();
    QCOMPARE(Sent(), sent);
  }

  void hookKeysBehindTheModeKey() {
    Desk d;
    QVERIFY(!d.main.HookKeys_Enabled);
    d.main.CtrlMode_tefxButtonClick();
    QVERIFY(d.main.HookKeys_Enabled);
    QCOMPARE(d.main.CtrlMode_Caption, LangText(425));
    d.main.Offhook_tefxButtonClick();
    d.main.Onhook_tefxButtonClick();
    QCOMPARE(Sent(), (QStringList{u"24:134"_s, u"24:135"_s}));
    d.main.CtrlMode_tefxButtonClick();
    QCOMPARE(d.main.CtrlMode_Caption, LangText(424));
  }

  void ringKeyMutesAndUnmutes() {
    Desk d;
    d.State(2, "8002");
    QVERIFY(d.shell.Ringing);
    d.main.RingTone_TeSpeedButtonClick();
    QCOMPARE(SysConfig().RingFlag, 1);
    QCOMPARE(d.main.RingTone_ImageIndex, 14);
    QCOMPARE(d.main.RingTone_Caption, LangText(426));
    QVERIFY(!d.shell.Ringing); // the running ring stops
    d.main.RingTone_TeSpeedButtonClick();
    QCOMPARE(SysConfig().RingFlag, 0);
    QCOMPARE(d.main.RingTone_ImageIndex, 15);
    QCOMPARE(d.main.RingTone_Caption, LangText(428));
  }
};

QTEST_GUILESS_MAIN(CallsTest)
#include "tst_calls.moc"
