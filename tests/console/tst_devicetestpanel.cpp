// The old local console device's hidden test panel: the text it takes, what the
// parse leaves on the lamps and the display, and the bytes it tells.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/DeviceTestPanel.h"
#include "link/Display.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"

#include <QTest>

using namespace Qt::StringLiterals;

class DeviceTestPanelTest : public QObject {
  Q_OBJECT

private slots:
  void sendHexPassesOverWhatIsNoHex_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("spaced") << u"12 ab FF"_s << QByteArray("\x12\xab\xff", 3);
    QTest::newRow("run together") << u"0a0B"_s << QByteArray("\x0a\x0b", 2);
    QTest::newRow("noise and signs") << u"x-1;2 g3"_s << QByteArray("\x12", 1);
    QTest::newRow("odd digit left over") << u"123"_s << QByteArray("\x12", 1);
    QTest::newRow("empty") << QString() << QByteArray();
  }
  void sendHexPassesOverWhatIsNoHex() {
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    QCOMPARE(TDeviceTestPanel::TMain_Form_SendHex(text), bytes);
  }

  void parseSetsLampsHookAndTheIdleClock() {
    TestHome home;
    home.UseChinese();
    SetClock([] { return QDateTime(QDate(2026, 11, 22), QTime(7, 5, 9)); });
    TDisplay display;
    TDeviceTestPanel panel(display);
    // Lamps 0 and 7 lit, lamp 1 blinking; hook state 1 (idle), no trunk lamp.
    panel.LMDEdit1 = u"PDP00 10 81 02 13 10 4A \r"_s;
    panel.LMDButton1Click();
    QVERIFY(panel.LMDCheckGroup1[0] && panel.LMDCheckGroup1[7] && !panel.LMDCheckGroup1[1]);
    QVERIFY(panel.LMDCheckGroup2[1] && !panel.LMDCheckGroup2[0]);
    QCOMPARE(panel.HookCaption, LangText(251));
    QCOMPARE(display.Buffer1().left(19), u"2026-11-22 07:05:09"_s);
    SetClock({});
  }

  void bytesAreTold() {
    RecordingShell shell;
    TDisplay display;
    TDeviceTestPanel panel(display);
    panel.LMDEdit1 = u"0A FF 03"_s;
    panel.LMDButton3Click();
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Text, u"userWndL:10 H:255 Length:3 "_s);
  }
};

QTEST_GUILESS_MAIN(DeviceTestPanelTest)
#include "tst_devicetestpanel.moc"
