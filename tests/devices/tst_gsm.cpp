// The SMS window: word count, the send key's checks, the two packets it sends
// (bytes against vectors worked out by hand), the time-out and the settings.
#include "common/PacketCapture.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/GSM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/TextCodec.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QByteArray Hex(const char *text) {
  return QByteArray::fromHex(text);
}
} // namespace

class GsmTest : public QObject {
  Q_OBJECT

  TestHome *home = nullptr;
  RecordingShell *shell = nullptr;

private slots:
  void init() {
    home = new TestHome;
    home->CopyShipped(u"ini/lang_chinese.lan"_s);
    LanguagePack().LoadLanguageFile(AppFile(u"ini/lang_chinese.lan"_s));
    shell = new RecordingShell;
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
    SysParam() = TNetPhone_SysParam{};
    SysParam().MyID = 7;
  }
  void cleanup() {
    SetPacketOutlet(nullptr, nullptr);
    delete shell;
    delete home;
  }

  void wordCount_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("words");
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("ascii") << u"abc 12"_s << 6;
    QTest::newRow("chinese") << u"你好"_s << 2;
    QTest::newRow("mixed") << u"a你b好c"_s << 5;
    QTest::newRow("quotes") << u"\"'"_s << 2;
    // The count goes by bytes: a GBK trail byte below 128 weighs as ASCII, so
    // 丂 (81 40) is one and a half words.
    QTest::newRow("low trail byte") << u"丂丂"_s << 3;
  }
  void wordCount() {
    QFETCH(QString, text);
    QFETCH(int, words);
    QCOMPARE(TGSM_Form::getWordCount(text), words);
  }

  void wordsLeft_data() {
    QTest::addColumn<QString>("telNo");
    QTest::addColumn<QString>("company");
    QTest::addColumn<QString>("body");
    QTest::addColumn<int>("left");
    QTest::newRow("70 ascii") << QString() << QString() << QString(70, u'a') << 0;
    QTest::newRow("71 ascii") << QString() << QString() << QString(71, u'a') << -1;
    QTest::newRow("35 chinese") << QString() << QString() << QString(35, u'中') << 35;
    QTest::newRow("body trimmed") << QString() << QString() << u"  ab \r\n"_s << 68;
    // " 回电:8001" is 8 words, " []ACME" 7.
    QTest::newRow("reply number") << u"8001"_s << QString() << u"ab"_s << 60;
    QTest::newRow("company") << QString() << u"ACME"_s << u"ab"_s << 61;
    QTest::newRow("both") << u" 8001 "_s << u"ACME"_s << u"ab"_s << 53;
    QTest::newRow("blank extras") << u"  "_s << u" "_s << u"ab"_s << 68;
  }
  void wordsLeft() {
    QFETCH(QString, telNo);
    QFETCH(QString, company);
    QFETCH(QString, body);
    QFETCH(int, left);
    TGSM_Form form;
    QCOMPARE(form.WordsLeft, -1);
    form.CallTelNo_TeSEdit = telNo;
    form.Company_TeSEdit = company;
    form.SMSBody_TeMemo = body;
    form.SMSBody_TeMemoChange();
    QCOMPARE(form.WordsLeft, left);
    QCOMPARE(form.Main_StatusBar[1], left < 0 ? u"字数超出限制！"_s : LangFormat(657, {left}));
  }

  void sendKeyChecks_data() {
    QTest::addColumn<QString>("dest");
    QTest::addColumn<QString>("body");
    QTest::addColumn<bool>("edited");
    QTest::addColumn<int>("busy");
    QTest::addColumn<int>("message"); // str_ key of a message, 0 for none
    QTest::addColumn<int>("balloon"); // str_ key of a balloon's title (its text is the next)
    const QString dest = u"13800000000"_s;
    QTest::newRow("untouched") << dest << u"hi"_s << false << 0 << 0 << 0;
    QTest::newRow("too long") << dest << QString(71, u'a') << true << 0 << 0 << 0;
    QTest::newRow("busy") << dest << u"hi"_s << true << 1 << 647 << 0;
    QTest::newRow("5 digits") << u"12345"_s << u"hi"_s << true << 0 << 0 << 649;
    QTest::newRow("blank body") << dest << u"  "_s << true << 0 << 0 << 651;
    QTest::newRow("70 words go") << dest << QString(70, u'a') << true << 0 << 0 << 653;
    QTest::newRow("6 digits go") << u"123456"_s << u"hi"_s << true << 0 << 0 << 653;
  }
  void sendKeyChecks() {
    QFETCH(QString, dest);
    QFETCH(QString, body);
    QFETCH(bool, edited);
    QFETCH(int, busy);
    QFETCH(int, message);
    QFETCH(int, balloon);
    const bool sent = balloon == 653;
    SysParam().GsmBusy = quint16(busy);
    TGSM_Form form;
    form.Show();
    form.SMSDest_TeSEdit = dest;
    form.SMSBody_TeMemo = body;
    if (edited)
      form.SMSBody_TeMemoChange();
    form.TeButton1Click();

    QCOMPARE(shell->Messages.size(), message ? 1 : 0);
    if (message) {
      QCOMPARE(shell->Messages[0].Text, LangText(message));
      QCOMPARE(int(shell->Messages[0].Kind), int(MessageKind::Warning));
    }
    QCOMPARE(shell->Balloons.size(), balloon ? 1 : 0);
    if (balloon) {
      QCOMPARE(shell->Balloons[0].Title, LangFormat(balloon, {dest}));
      QVERIFY(shell->Balloons[0].Title.contains(dest));
      QCOMPARE(shell->Balloons[0].Text, LangText(balloon + 1));
      QCOMPARE(shell->Balloons[0].Icon, sent ? BalloonIcon::Info : BalloonIcon::Warning);
      QCOMPARE(shell->Balloons[0].Seconds, 10);
    }
    QCOMPARE(CapturedPackets.size(), sent ? 1 : 0);
    QCOMPARE(int(SysParam().GsmBusy), sent ? 1 : busy);
    QCOMPARE(SysParam().GsmNumber, sent ? dest : QString());
    QCOMPARE(form.Visible(), !sent);
    QVERIFY(!form.GSM_SendSMS_Timer.isActive()); // nothing starts it
  }

  // Sub-code 1, session 7: 20 00 | 07 00 | 10 00 | 01; sum 0x38, checksum 0xC8.
  void chooseModulePacket() {
    TGSM_Form form;
    form.SMSDest_TeSEdit = u" 13800000000 "_s;
    form.SMSBody_TeMemo = u"ab"_s;
    form.SMSBody_TeMemoChange();
    form.TeButton1Click();
    QCOMPARE(CapturedPackets.size(), 1);
    QCOMPARE(CapturedPackets[0], Hex("12191039c800"
                                     "2000"
                                     "0700"
                                     "1000"
                                     "01000000"));
    QCOMPARE(SysParam().GsmNumber, u"13800000000"_s);
  }

  // Sub-code 2 on channel 3 with "ab" to 13800000000: the block is
  // D:13800000000 LF CR T:1 LF CR M:0002ab, 28 bytes; the bytes from 6 sum to
  // 0x6B7, so the checksum is 0x49.
  void sendTextPacket() {
    SysParam().GsmModule = 3;
    TGSM_Form form;
    form.SMSDest_TeSEdit = u"13800000000"_s;
    form.SMSBody_TeMemo = u"ab"_s;
    form.sendSms_TeButtonClick();
    QCOMPARE(CapturedPackets.size(), 1);
    QByteArray expected(220, '\0');
    expected.replace(0, 46,
                     Hex("121910394900"
                         "2000"
                         "0700"
                         "dc00"
                         "0200"
                         "0300"
                         "1c00"
                         "443a31333830303030303030300a0d543a310a0d4d3a303030326162"));
    QCOMPARE(CapturedPackets[0].size(), 220);
    QCOMPARE(CapturedPackets[0].toHex(), expected.toHex());
  }

  // Reply number, company and Chinese text: the message is
  // "你好" + " 回电:8001" + " [ACME]" = 4 + 10 + 7 GBK bytes, so M:0021, and the
  // block is 47 bytes. Session 5, channel 0x0102.
  void sendTextPacketGbk() {
    SysParam().MyID = 5;
    SysParam().GsmModule = 0x0102;
    SysConfig().SMSReturnNos = u" 8001"_s;
    SysConfig().GSMCompany = u"ACME "_s;
    TGSM_Form form;
    form.Show();
    form.SMSDest_TeSEdit = u"13912345678"_s;
    form.SMSBody_TeMemo = u"你好\r\n"_s;
    form.sendSms_TeButtonClick();
    QCOMPARE(CapturedPackets.size(), 1);
    QByteArray expected(220, '\0');
    const QByteArray head = Hex("12191039710020000500dc00020002012f00"
                                "443a31333931323334353637380a0d543a310a0d4d3a30303231"
                                "c4e3bac320bbd8b5e73a38303031205b41434d455d");
    expected.replace(0, head.size(), head);
    QCOMPARE(CapturedPackets[0].toHex(), expected.toHex());
  }

  // A destination of 101 digits and a full body of quotes and Chinese make a
  // block of 116 + 2 + 136 bytes; the field takes 201 at most, and a cut there
  // would split a character, so 200 go, the rest is zero and the length says 200.
  void longBlockCutOnCharacter() {
    TGSM_Form form;
    form.SMSDest_TeSEdit = QString(101, u'1');
    form.SMSBody_TeMemo = u"\"'"_s + QString(68, u'中');
    form.SMSBody_TeMemoChange();
    QCOMPARE(form.WordsLeft, 0);
    form.sendSms_TeButtonClick();
    QCOMPARE(CapturedPackets.size(), 1);
    const QByteArray &p = CapturedPackets[0];
    QCOMPARE(p.size(), 220);
    QCOMPARE(GetU16(p.constData(), 16), quint16(200));
    QCOMPARE(p.mid(218), QByteArray(2, '\0'));
    const QByteArray expected = ToGbk(
        QString(u"D:"_s + QString(101, u'1') + u"\n\rT:1\n\rM:0138\"'"_s + QString(41, u'中')));
    QCOMPARE(p.mid(18, 200), expected);
    QCOMPARE(PacketChecksum(p.constData(), 220), quint8(p[4]));
  }

  void noSessionSendsNothing() {
    SysParam().MyID = kNoSession;
    TGSM_Form form;
    form.SMSDest_TeSEdit = u"13800000000"_s;
    form.SMSBody_TeMemo = u"ab"_s;
    form.SMSBody_TeMemoChange();
    form.TeButton1Click();
    form.sendSms_TeButtonClick();
    QVERIFY(CapturedPackets.isEmpty());
  }

  void timeOut() {
    TGSM_Form form;
    QCOMPARE(form.GSM_SendSMS_Timer.interval(), 20000);
    SysParam().GsmBusy = 1;
    SysParam().GsmNumber = u"13800000000"_s;
    form.GSM_SendSMS_Timer.start();
    form.GSM_SendSMS_TimerTimer();
    QVERIFY(!form.GSM_SendSMS_Timer.isActive());
    QCOMPARE(SysParam().GsmBusy, quint16(0));
    QCOMPARE(shell->Balloons.size(), 1);
    QCOMPARE(shell->Balloons[0].Title, u"短信发送超时: 13800000000"_s);
    QCOMPARE(shell->Balloons[0].Text, LangText(660));
    QCOMPARE(shell->Balloons[0].Icon, BalloonIcon::Warning);

    // A result stops a running timer and says nothing itself.
    form.GSM_SendSMS_Timer.start();
    form.GSM_SendSMS_TimerStop();
    QVERIFY(!form.GSM_SendSMS_Timer.isActive());
    QCOMPARE(shell->Balloons.size(), 1);
  }

  void settingsRoundTrip() {
    SysConfig().SMSReturnNos = u"8001"_s;
    SysConfig().GSMCompany = u"总机"_s;
    {
      TGSM_Form form;
      form.Show();
      QCOMPARE(form.CallTelNo_TeSEdit, u"8001"_s);
      QCOMPARE(form.Company_TeSEdit, u"总机"_s);
      form.CallTelNo_TeSEdit = u"8002"_s;
      form.Company_TeSEdit = u"前台"_s;
      form.TeButton2Click();
      QVERIFY(!form.Visible());
    }
    QCOMPARE(SysConfig().SMSReturnNos, u"8002"_s);
    QCOMPARE(SysConfig().GSMCompany, u"前台"_s);
    SaveConfig(SysConfig());
    SysConfig() = TSysConfig{};
    LoadConfig(SysConfig());
    TGSM_Form again;
    again.Show();
    QCOMPARE(again.CallTelNo_TeSEdit, u"8002"_s);
    QCOMPARE(again.Company_TeSEdit, u"前台"_s);
  }

  void fromContact_data() {
    QTest::addColumn<QString>("mobile");
    QTest::addColumn<QString>("dest");
    QTest::newRow("trunk zero") << u" 013912345678 "_s << u"13912345678"_s;
    QTest::newRow("10 keep their zero") << u"0123456789"_s << u"0123456789"_s;
    QTest::newRow("only one zero goes") << u"0013912345678"_s << u"013912345678"_s;
  }
  void fromContact() {
    QFETCH(QString, mobile);
    QFETCH(QString, dest);
    TGSM_Form form;
    form.SendSMSTo(mobile);
    QVERIFY(form.Visible());
    QCOMPARE(form.SMSDest_TeSEdit, dest);
    QCOMPARE(form.SMSDest_TeSEdit_Hint, dest);
  }
};

QTEST_GUILESS_MAIN(GsmTest)
#include "tst_gsm.moc"
