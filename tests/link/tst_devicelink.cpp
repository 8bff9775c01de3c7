// The local console device's stream: frames, checks, tags and display bytes.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "link/DeviceLink.h"
#include "link/Display.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// A frame as the device writes it: "PDP", each byte as two hex digits and a
// blank, the checksum last, then a carriage return.
QString Frame(const QList<int> &bytes) {
  QString text = u"PDP"_s;
  int sum = 0;
  for (int b : bytes) {
    text += u"%1 "_s.arg(b, 2, 16, QChar(u'0')).toUpper();
    sum = (sum + b) & 0xFF;
  }
  return text + u"%1 "_s.arg((-sum) & 0xFF, 2, 16, QChar(u'0')).toUpper() + u'\r';
}
} // namespace

class DeviceLinkTest : public QObject {
  Q_OBJECT

private slots:
  void onlineAndOffline() {
    TDisplay display;
    TDeviceLink device(display);
    QVERIFY(device.Parse(u"xx$03"_s));
    QCOMPARE(display.Buffer1().left(14), u"Dev offline!!!"_s);
    QCOMPARE(display.Buffer2(), TDisplay::BlankBuffer());
    QVERIFY(device.Parse(u"$02"_s));
    QCOMPARE(display.Buffer2().left(11), u"Dev Online."_s);
    QVERIFY(!device.Parse(u"nothing here"_s));
  }

  void badChecksumIsReported() {
    TestHome home;
    home.UseChinese();
    RecordingShell shell;
    TDisplay display;
    TDeviceLink device(display);
    QString frame = Frame({0, 16, 0xFF, 0x00});
    frame[frame.size() - 3] = u'0'; // spoil the checksum
    frame[frame.size() - 4] = u'0';
    QVERIFY(!device.Parse(frame));
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Text, LangText(250));
    QCOMPARE(int(device.State.LedOn), 0);
  }

  // Fields are unsigned hex: a signed one ends the frame with a log line instead
  // of looping, reading before the list, or making a character of a negative.
  void signedFieldEndsTheFrame_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("count -3") << u"PDP00 23 01 -3 DF "_s;
    QTest::newRow("count -F") << u"PDP00 23 01 -F EB "_s;
    QTest::newRow("display byte -2") << u"PDP00 28 01 01 -2 D8 "_s;
    QTest::newRow("plus sign") << u"PDP00 28 01 01 +2 D4 "_s;
  }
  void signedFieldEndsTheFrame() {
    QFETCH(QString, text);
    TestHome home;
    home.UseChinese();
    SysConfig().Debug = 1;
    RecordingShell shell;
    TDisplay display;
    TDeviceLink device(display);
    QVERIFY(!device.Parse(text));
    QCOMPARE(display.Buffer1(), TDisplay::BlankBuffer());
    const QStringList &log = LogMemo().Lines();
    QVERIFY(std::any_of(log.begin(), log.end(), [](const QString &line) {
      return line.contains(u"Device frame ends at a field that is no byte"_s);
    }));
  }

  void lampsHookAndDate() {
    TestHome home;
    home.UseChinese();
    TDisplay display;
    TDeviceLink device(display);
    QVERIFY(device.Parse(Frame({0,  16, 0x81, 0x02, 17, 0b0101, 0b0110, 0, 0,  19, 0x30,
                                20, 26, 11,   22,   6,  59,     30,     0, 99, 7})));
    QCOMPARE(int(device.State.LedOn), 0x81);
    QCOMPARE(int(device.State.LedFlash), 0x02);
    QCOMPARE(device.TrunkLampMode(0), 1); // first mask only
    QCOMPARE(device.TrunkLampMode(1), 2); // second only
    QCOMPARE(device.TrunkLampMode(2), 3); // both
    QCOMPARE(device.TrunkLampMode(3), 0);
    QCOMPARE(int(device.State.HookState), 3);
    QCOMPARE(device.HookCaption, LangText(253));
    QCOMPARE(device.DeviceTime, QDateTime(QDate(2026, 11, 22), QTime(6, 59, 30)));
  }

  void lampTimerBlinksSlowAndFast() {
    TDisplay display;
    TDeviceLink device(display);
    device.State.TrunkLedMask = {0b101, 0b110}; // lamp 0 on, 1 slow, 2 fast
    QList<bool> slow;
    QList<bool> fast;
    for (int tick = 0; tick < 20; ++tick) {
      const auto lit = device.LedTimerTimer();
      QVERIFY(lit[0]);
      QVERIFY(!lit[3]);
      slow << lit[1];
      fast << lit[2];
    }
    QCOMPARE(slow.indexOf(true), 9); // the tenth tick turns it on
    QCOMPARE(fast.indexOf(true), 3); // the fourth
  }

  void displayBytes() {
    TDisplay display;
    TDeviceLink device(display);
    // Tag 40: row 1, column 1, then "HI", jump to line two, blink on, "Z".
    QVERIFY(device.Parse(Frame({0, 40, 1, 1, 'H', 'I', 1, 7, 'Z'})));
    QCOMPARE(display.Buffer1().left(2), u"HI"_s);
    QCOMPARE(display.Buffer1().at(21), QChar(u'Z'));
    QCOMPARE(display.Buffer2().at(21), QChar(u' ')); // blinking
    QCOMPARE(display.Buffer1().at(20), QChar(u'\r'));
    // A cursor sequence to row 2, column 5, then "A"; then clear all.
    QVERIFY(device.Parse(Frame({0, 40, 1, 1, 12, 2, 5, 0, 'A'})));
    QCOMPARE(display.Buffer1().at(25), QChar(u'A'));
    QVERIFY(device.Parse(Frame({0, 40, 1, 1, 3})));
    QCOMPARE(display.Buffer1(), TDisplay::BlankBuffer());
  }

  void idleDeviceShowsTheClock() {
    TDisplay display;
    TDeviceLink device(display);
    device.State.HookState = 1;
    device.AfterParse(QDateTime(QDate(2026, 11, 22), QTime(7, 5, 9)));
    QCOMPARE(display.Buffer1().left(19), u"2026-11-22 07:05:09"_s);
    device.State.TrunkLedMask = {1, 0}; // a trunk lamp: no clock
    display.Clear(0, TDisplay::kBufferLength);
    device.AfterParse(QDateTime(QDate(2026, 11, 22), QTime(7, 5, 9)));
    QCOMPARE(display.Buffer1(), TDisplay::BlankBuffer());
  }

  void keyPadCommands_data() {
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("command");
    QTest::newRow("1") << u"SpeedButton1"_s << u"p 1\r"_s;
    QTest::newRow("0") << u"SpeedButton11"_s << u"p 10\r"_s;
    QTest::newRow("*") << u"SpeedButton10"_s << u"p 0xB\r"_s;
    QTest::newRow("#") << u"SpeedButton12"_s << u"p 0xC\r"_s;
    QTest::newRow("function 8") << u"LMDSpeedButton8"_s << u"p 0x28\r"_s;
    QTest::newRow("off hook") << u"HOOK_LMDButton:1"_s << u"p 0x11\r"_s;
    QTest::newRow("unknown") << u"Nothing"_s << QString();
  }
  void keyPadCommands() {
    QFETCH(QString, key);
    QFETCH(QString, command);
    QCOMPARE(TDeviceLink::KeyPadCommand(key), command);
  }
};

QTEST_GUILESS_MAIN(DeviceLinkTest)
#include "tst_devicelink.moc"
