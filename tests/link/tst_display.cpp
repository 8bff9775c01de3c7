// The two-line display: where text lands, the blink, and the 40-character limit.
#include "link/Display.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class DisplayTest : public QObject {
  Q_OBJECT

private slots:
  void layout_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("line1");
    QTest::addColumn<QString>("line2");
    const QString blank(20, u' ');
    QTest::newRow("short") << u"Dial:"_s << u"Dial:"_s.leftJustified(20) << blank;
    QTest::newRow("twenty") << QString(20, u'a') << QString(20, u'a') << blank;
    QTest::newRow("twenty-one") << QString(20, u'a') + u'b' << QString(20, u'a')
                                << u"b"_s.leftJustified(20);
    QTest::newRow("thirty-nine") << QString(20, u'a') + QString(19, u'b') << QString(20, u'a')
                                 << QString(19, u'b') + u' ';
    QTest::newRow("empty") << QString() << blank << blank;
  }
  void layout() {
    QFETCH(QString, text);
    QFETCH(QString, line1);
    QFETCH(QString, line2);
    TDisplay d;
    d.ShowDisplay(text, false);
    QCOMPARE(d.Buffer1(), line1 + u'\r' + line2);
    QCOMPARE(d.Buffer1().size(), TDisplay::kBufferLength);
    QCOMPARE(d.Buffer2(), d.Buffer1());
  }

  void fortyCharactersLeaveTheDisplayAsItWas() {
    TDisplay d;
    QSignalSpy stopClock(&d, &TDisplay::aboutToShow);
    d.ShowDisplay(u"8001"_s, false);
    const QString before = d.Buffer1();
    d.ShowDisplay(QString(40, u'x'), false);
    QCOMPARE(d.Buffer1(), before);
    QCOMPARE(stopClock.size(), 2); // the clock stops even so
  }

  void blinkSwapsWithBlanks() {
    TDisplay d;
    d.Timer2.start();
    d.ShowDisplay(u"OutService!"_s, true);
    QCOMPARE(d.Memo1(), d.Buffer1()); // shown at once while Timer2 runs
    QCOMPARE(d.Buffer2(), TDisplay::BlankBuffer());
    d.Timer2Timer();
    QCOMPARE(d.Memo1(), TDisplay::BlankBuffer());
    d.Timer2Timer();
    QCOMPARE(d.Memo1(), d.Buffer1());
  }

  void nothingShowsUntilTimer2Runs() {
    TDisplay d;
    d.ShowDisplay(u"8001"_s, false);
    QCOMPARE(d.Memo1(), TDisplay::BlankBuffer());
  }
};

QTEST_GUILESS_MAIN(DisplayTest)
#include "tst_display.moc"
