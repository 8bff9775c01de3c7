// The dispatcher: its limits, its log line, the state copy rule, and the
// handlers of the core's own packets.
#include "common/RecordingShell.h"
#include "common/StoreFixture.h"
#include "common/TestHome.h"
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "console/UserInfo_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "directory/DirectoryPages.h"
#include "directory/RecordServerPage.h"
#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QSignalSpy>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QByteArray Packet(PacketType type, quint16 id, const QByteArray &payload, int len = -1) {
  QByteArray p(12, '\0');
  p += payload;
  PutU32(p.data(), 0, kPacketMagic);
  PutU16(p.data(), 6, quint16(type));
  PutU16(p.data(), 8, id);
  PutU16(p.data(), 10, quint16(len < 0 ? p.size() : len));
  return p;
}

QByteArray Text(const char *text, int field) {
  QByteArray b(text);
  b.resize(field, '\0');
  return b;
}

struct Console {
  TestHome home;
  RecordingShell shell;
  TMain_Form main;
  TLogin_Form login{&main};
  TUserInfo_Form userInfo;

  Console() {
    home.UseChinese();
    SysConfig().Debug = 1;
    SysParam() = TNetPhone_SysParam{};
    LastSysParam() = TNetPhone_SysParam{};
    main.UserInfo_Form = &userInfo;
    main.AppTitle = u"Trunkdesk ver5.2"_s;
  }
  void Feed(const QByteArray &packet, int length = -1) {
    QByteArray padded = packet;
    padded.resize(qMax<qsizetype>(padded.size(), 2048), '\0');
    main.processPacketFromSocket(padded.constData(), length < 0 ? int(packet.size()) : length);
  }
};
} // namespace

class DispatchTest : public QObject {
  Q_OBJECT

private slots:
  void stateCopyRule_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("copied");
    for (int t : {0, 1, 2, 17, 18, 20, 23, 25, 33, 37, 38, 39, 40, 41, 100, -1, -32768})
      QTest::addRow("type %d", t) << t << true;
    for (int t : {22, 24, 34, 35, 36})
      QTest::addRow("device type %d", t) << t << false;
  }
  void stateCopyRule() {
    QFETCH(int, type);
    QFETCH(bool, copied);
    Console c;
    SysParam().GsmNumber = u"8003"_s; // a field none of these packets touches
    c.Feed(Packet(PacketType(type), 1, QByteArray(60, '\0')));
    QCOMPARE(LastSysParam().GsmNumber == u"8003"_s, copied);
    QVERIFY(LogMemo().Lines().last().endsWith(
        u"typeCode:0x%1 "_s.arg(QString::number(quint32(qint32(type)), 16).toUpper())));
  }

  void lengthsOutsideTheLimitsAreSilent_data() {
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("handled");
    QTest::newRow("11") << 11 << false;
    QTest::newRow("12") << 12 << true;
    QTest::newRow("1023") << 1023 << true;
    QTest::newRow("1024") << 1024 << false;
    QTest::newRow("negative") << -5 << false;
  }
  void lengthsOutsideTheLimitsAreSilent() {
    QFETCH(int, length);
    QFETCH(bool, handled);
    Console c;
    SysParam().CallerNo = u"x"_s;
    c.Feed(Packet(PacketType::Pulse, 7, QByteArray(1100, '\0'), length), length);
    QCOMPARE(LogMemo().Lines().isEmpty(), !handled);
    QCOMPARE(LastSysParam().CallerNo == u"x"_s, handled);
    QCOMPARE(int(SysParam().PulseSeen), handled ? 1 : 0);
  }

  void logLineShowsFieldsAsSignedNumbers() {
    Console c;
    c.Feed(Packet(PacketType::Pulse, 65535, {}));
    QVERIFY(LogMemo().Lines().last().endsWith(u": ID:-1 Len:12 typeCode:0x1 "_s));
  }

  void loginAccepted() {
    Console c;
    c.login.TelNo_TeComboBox = u"8001"_s;
    c.login.Pwd_TeMaskEdit = u"1234"_s;
    c.login.Show();
    QSignalSpy udp(&c.main, &TMain_Form::udpLoggedInChanged);
    QSignalSpy lists(&c.main, &TMain_Form::callListsReloadRequested);
    QSignalSpy refresh(&c.main, &TMain_Form::phonesRefreshRequested);
    c.Feed(Packet(PacketType::Login, 42, Text("1000", 52)));
    const TNetPhone_SysParam &sp = SysParam();
    QCOMPARE(int(sp.LoggedIn), 1);
    QCOMPARE(int(sp.LoginDone), 1);
    QCOMPARE(int(sp.MyID), 42);
    QCOMPARE(sp.MyTelNo, u"8001"_s);
    QCOMPARE(sp.Password, u"1234"_s);
    QCOMPARE(int(sp.PulseSeen), 1);
    QVERIFY(c.main.PulseCheck_Timer.isActive());
    QVERIFY(c.main.Display().Buffer1().startsWith(LangFormat(304, {u"8001"_s}).left(10)));
    QCOMPARE(c.main.Display().Buffer2(), c.main.Display().Buffer1()); // no blink
    QCOMPARE(c.main.Caption, u"Trunkdesk ver5.2"_s + LangFormat(306, {u"8001"_s}));
    QCOMPARE(c.shell.Balloons.last().Title, LangText(305));
    QVERIFY(c.main.RecordServer().Edit_Caller_Enabled);
    QCOMPARE(c.main.RecordServer().Edit_Caller, u"8001"_s);
    QVERIFY(!c.login.Visible());
    QCOMPARE(c.main.Front, TMain_Form::FrontPanel::Dial_TeTabControl);
    QCOMPARE(udp.size(), 1);
    QCOMPARE(udp[0][0].toBool(), true);
    QCOMPARE(lists.size(), 1);
    QCOMPARE(refresh.size(), 1);
  }

  void loginRefused_data() {
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<int>("displayKey");
    QTest::addColumn<int>("balloonKey");
    QTest::addColumn<int>("loggedInAfter");
    QTest::addColumn<int>("udpCleared");
    QTest::newRow("1001") << QByteArray("1001") << 310 << 308 << 0 << 0;
    QTest::newRow("1002") << QByteArray("1002") << 314 << 312 << 0 << 1;
    QTest::newRow("1003 keeps LoggedIn") << QByteArray("1003") << 315 << 317 << 1 << 1;
  }
  void loginRefused() {
    QFETCH(QByteArray, code);
    QFETCH(int, displayKey);
    QFETCH(int, balloonKey);
    QFETCH(int, loggedInAfter);
    QFETCH(int, udpCleared);
    Console c;
    SysParam().LoggedIn = 1;
    c.login.Show();
    QSignalSpy udp(&c.main, &TMain_Form::udpLoggedInChanged);
    c.Feed(Packet(PacketType::Login, 9, Text(code.constData(), 52)));
    QCOMPARE(int(SysParam().LoggedIn), loggedInAfter);
    QCOMPARE(int(SysParam().MyID), 65535);
    QVERIFY(c.main.Display().Buffer1().startsWith(LangText(displayKey).left(5)));
    QCOMPARE(c.main.Display().Buffer2(), TDisplay::BlankBuffer()); // blinking
    QCOMPARE(c.shell.Balloons.last().Title, LangText(balloonKey));
    QCOMPARE(c.shell.Balloons.last().Icon, BalloonIcon::Warning);
    QVERIFY(!c.login.Visible());
    QCOMPARE(c.main.Front, TMain_Form::FrontPanel::Company_TePanel);
    QCOMPARE(udp.size(), udpCleared);
  }

  void otherLoginCodesChangeNothing() {
    Console c;
    c.login.Show();
    c.Feed(Packet(PacketType::Login, 9, Text("1004", 52)));
    QVERIFY(c.shell.Balloons.isEmpty());
    QVERIFY(c.login.Visible());
    QCOMPARE(int(SysParam().MyID), 65535);
  }

  void userInfoFillsItsWindow_data() {
    QTest::addColumn<int>("admin");
    QTest::addColumn<int>("lastKey");
    QTest::newRow("not admin") << 0 << 288;
    QTest::newRow("admin") << 3 << 289;
  }
  void userInfoFillsItsWindow() {
    QFETCH(int, admin);
    QFETCH(int, lastKey);
    Console c;
    QByteArray payload(1000, '\0');
    payload.replace(0, 4, "8001");
    payload.replace(21, 4, "Lobby");
    PutU16(payload.data(), 62, 17);
    payload.replace(64, 5, "Front");
    PutU16(payload.data(), 106, quint16(admin));
    payload.replace(108, 9, "*51 *52 #");
    c.Feed(Packet(PacketType::UserInfo, 1, payload));
    QVERIFY(c.userInfo.Visible());
    QCOMPARE(c.userInfo.Memo1, (QStringList{LangFormat(284, {u"8001"_s}),
                                            LangFormat(285, {u"Lobby"_s}), LangFormat(286, {17}),
                                            LangFormat(287, {u"Front"_s}), LangText(lastKey)}));
    QCOMPARE(c.userInfo.Memo2, u"*51 *52 #"_s);
  }

  // Each login (the answer packet) rebuilds the three lists from the call log,
  // with the callers looked up; rows added since the last login go.
  void loginRebuildsTheCallLists() {
    Console c;
    Sys_DM().DataModuleCreate();
    StoreContact(u"张三"_s, u"02150001234"_s);
    QSqlQuery q(StoreConnection());
    for (const auto &[number, state] :
         {std::pair{u"13950001234"_s, 1}, {u"8001"_s, 2}, {u"?"_s, 3}, {u"777"_s, 9}})
      QVERIFY(q.exec(u"INSERT INTO conRecords (TelNos, DateTime, State) "
                     u"VALUES ('%1', '2024-03-05 09:00:0%2', %2)"_s.arg(number).arg(state)));
    TDirectoryPages &p = c.main.Pages();
    for (int login = 0; login < 2; ++login) {
      p.lostIncom_LMDListBox.Add(TLmdlistItemRam{}); // a row added since
      c.Feed(Packet(PacketType::Login, 42, Text("1000", 52)));
      QCOMPARE(p.lostIncom_LMDListBox.Count(), 1);
      QCOMPARE(p.lostIncom_LMDListBox.Item(0).Name, u"张三"_s);
      QCOMPARE(p.Incomed_LMDListBox.Count(), 1);
      QCOMPARE(p.Incomed_LMDListBox.Item(0).Number, u"8001"_s);
      QCOMPARE(p.dialOut_LMDListBox.Count(), 1);
      QCOMPARE(p.dialOut_LMDListBox.Item(0).Number, u"?"_s);
    }
  }

  void missedCallStoresAndTellsTheOperator() {
    Console c;
    Sys_DM().DataModuleCreate();
    TADOQuery contact;
    Sys_DM().OpenSQL(u"select * from maininfo where (1=2)"_s, contact);
    contact.Append();
    contact.SetString(u"Name"_s, u"张三"_s);
    contact.SetString(u"MobilePhone"_s, u"13800138000"_s);
    contact.SetString(u"Company"_s, u"VIP"_s);
    contact.Post();
    c.Feed(Packet(PacketType::MissedCall, 1, Text("13800138000", 21) + Text("x", 21)));
    // Stored as a missed call, and on top of the missed calls' list.
    TADOQuery log;
    Sys_DM().OpenSQL(u"select * from conRecords"_s, log);
    QCOMPARE(log.RecordCount(), 1);
    QCOMPARE(log.AsString(u"TelNos"_s), u"13800138000"_s);
    QCOMPARE(log.AsInteger(u"State"_s), 1);
    QCOMPARE(c.main.Pages().lostIncom_LMDListBox.Count(), 1);
    QCOMPARE(c.shell.Balloons.size(), 1);
    QCOMPARE(c.shell.Balloons[0].Title, LangText(293));
    QCOMPARE(c.shell.Balloons[0].Text, LangFormat(290, {u"13800138000"_s, u"\r"_s}) +
                                           LangFormat(291, {u"张三"_s, u"\r"_s}) +
                                           LangFormat(292, {u"VIP"_s, u"\r"_s}));
  }

  void gsmAnswers_data() {
    QTest::addColumn<int>("sub");
    QTest::addColumn<int>("module");
    QTest::addColumn<int>("busy");
    QTest::addColumn<int>("titleKey");
    QTest::newRow("3 chooses the module") << 3 << 4 << 1 << 0;
    QTest::newRow("4 sent") << 4 << 4 << 0 << 298;
    QTest::newRow("5 failed") << 5 << 4 << 0 << 300;
    QTest::newRow("6 no module") << 6 << 65535 << 0 << 296;
    QTest::newRow("7 unknown") << 7 << 2 << 1 << 0;
  }
  void gsmAnswers() {
    QFETCH(int, sub);
    QFETCH(int, module);
    QFETCH(int, busy);
    QFETCH(int, titleKey);
    Console c;
    SysParam().GsmModule = 2;
    SysParam().GsmBusy = 1;
    SysParam().GsmNumber = u"13900000000"_s;
    QSignalSpy send(&c.main, &TMain_Form::gsmSendRequested);
    QByteArray payload(8, '\0');
    payload[0] = char(sub);
    PutU16(payload.data(), 2, 4);
    c.Feed(Packet(PacketType::GsmModule, 1, payload));
    QCOMPARE(int(SysParam().GsmModule), module);
    QCOMPARE(int(SysParam().GsmBusy), busy);
    QCOMPARE(send.size(), sub == 3 ? 1 : 0);
    if (titleKey)
      QCOMPARE(c.shell.Balloons.last().Title, LangFormat(titleKey, {u"13900000000"_s}));
    else
      QVERIFY(c.shell.Balloons.isEmpty());
  }

  void recordServerAnswer_data() {
    QTest::addColumn<int>("tag");
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("found") << 16 << QByteArray("1000") << u"10.0.0.9"_s << true;
    QTest::newRow("refused") << 16 << QByteArray("1001") << QString() << false;
    QTest::newRow("not for us") << 15 << QByteArray("1000") << u"old"_s << false;
  }
  void recordServerAnswer() {
    QFETCH(int, tag);
    QFETCH(QByteArray, code);
    QFETCH(QString, ip);
    QFETCH(bool, enabled);
    Console c;
    c.main.RecordServer().TeSEdit_RecordIP = u"old"_s;
    QByteArray payload(60, '\0');
    payload[0] = char(tag);
    payload.replace(4, 4, code);
    payload.replace(11, 8, "10.0.0.9");
    c.Feed(Packet(PacketType::RecordServerQuery, 1, payload));
    QCOMPARE(c.main.RecordServer().TeSEdit_RecordIP, ip);
    QCOMPARE(c.main.RecordServer().TeButton_RecordSearch_Enabled, enabled);
    QCOMPARE(SysParam().RecordRetCode, tag == 16 ? QString::fromLatin1(code) : QString());
  }
};

QTEST_GUILESS_MAIN(DispatchTest)
#include "tst_dispatch.moc"
