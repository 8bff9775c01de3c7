// Wire text, file text and the console's date-time.
#include "support/Clock.h"
#include "support/TDateTime.h"
#include "support/TextCodec.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TextTest : public QObject {
  Q_OBJECT

private slots:
  void gbkBytesAreTheExchangeOnes() {
    // "张三" in GBK is D5 C5 C8 FD; plain digits stay single bytes.
    QCOMPARE(ToGbk(u"张三"_s), QByteArray("\xD5\xC5\xC8\xFD"));
    QCOMPARE(ToGbk(u"8001"_s), QByteArray("8001"));
    QCOMPARE(FromGbk(QByteArray("\xD5\xC5\xC8\xFD")), u"张三"_s);
  }

  void fixedFieldKeepsRoomForItsEnd_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("expected"); // the whole field

    QTest::newRow("short number") << u"801"_s << 6 << QByteArray("801\0\0\0", 6);
    QTest::newRow("exactly size-1") << u"12345"_s << 6 << QByteArray("12345\0", 6);
    QTest::newRow("too long is cut") << u"1234567"_s << 6 << QByteArray("12345\0", 6);
    // 20 digits into a 20-byte field: the last digit gives way to the NUL.
    QTest::newRow("20-digit number")
        << u"13800138000123456789"_s << 20 << QByteArray("1380013800012345678\0", 20);
    // Two Chinese characters need four bytes; with room for three, only one fits
    // whole, and no half character goes out.
    QTest::newRow("cut on a character") << u"张三"_s << 4 << QByteArray("\xD5\xC5\0\0", 4);
    QTest::newRow("mixed cut") << u"a张三"_s << 5 << QByteArray("a\xD5\xC5\0\0", 5);
    QTest::newRow("NUL inside text ends it")
        << u"12\u0000 34"_s << 6 << QByteArray("12\0\0\0\0", 6);
    QTest::newRow("empty") << QString() << 3 << QByteArray("\0\0\0", 3);
  }
  void fixedFieldKeepsRoomForItsEnd() {
    QFETCH(QString, text);
    QFETCH(int, size);
    QFETCH(QByteArray, expected);
    QByteArray field(size, '\x55');
    WriteFixedText(field.data(), size, text);
    QCOMPARE(field, expected);
  }

  void fieldWithoutNulEndsAtFieldEnd() {
    const QByteArray full("12345678");
    QCOMPARE(ReadFixedText(full.constData(), 8), u"12345678"_s);
    QCOMPARE(ReadFixedText(full.constData(), 4), u"1234"_s);
    const QByteArray withNul("12\0garbage", 10);
    QCOMPARE(ReadFixedText(withNul.constData(), 10), u"12"_s);
    QCOMPARE(ReadFixedText(withNul.constData(), 0), QString());
  }

  void fileTextIsUtf8OrGbk_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("utf-8") << QByteArray("\xE5\xBC\xA0\xE4\xB8\x89") << u"张三"_s;
    QTest::newRow("utf-8 with BOM") << QByteArray("\xEF\xBB\xBF\xE5\xBC\xA0") << u"张"_s;
    QTest::newRow("gbk from a Windows console") << QByteArray("\xD5\xC5\xC8\xFD") << u"张三"_s;
    QTest::newRow("ascii") << QByteArray("host=1.2.3.4") << u"host=1.2.3.4"_s;
    QTest::newRow("empty") << QByteArray() << QString();
  }
  void fileTextIsUtf8OrGbk() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    QCOMPARE(DecodeFileText(bytes), expected);
  }

  void utf8Validity_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("valid");
    QTest::newRow("ascii") << QByteArray("abc") << true;
    QTest::newRow("chinese") << QByteArray("\xE4\xB8\xAD") << true;
    QTest::newRow("four bytes") << QByteArray("\xF0\x9F\x93\x9E") << true;
    QTest::newRow("gbk pair") << QByteArray("\xD6\xD0") << false;
    QTest::newRow("cut at the end") << QByteArray("a\xE4\xB8") << false;
    QTest::newRow("overlong slash") << QByteArray("\xC0\xAF") << false;
    QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80") << false;
    QTest::newRow("stray continuation") << QByteArray("\x80") << false;
  }
  void utf8Validity() {
    QFETCH(QByteArray, bytes);
    QFETCH(bool, valid);
    QCOMPARE(IsValidUtf8(bytes), valid);
  }

  void invalidBytesNeverThrowOrVanishWhole() {
    // Neither valid UTF-8 nor sensible GBK: decoding still returns text of some
    // length and does not crash.
    const QByteArray junk("\xFF\xFE\x80\x00\x81", 5);
    const QString text = DecodeFileText(junk);
    QVERIFY(!text.isEmpty());
  }

  void dateTimeIsDaysSince1899_data() {
    QTest::addColumn<QDateTime>("moment");
    QTest::addColumn<double>("value");
    QTest::newRow("epoch") << QDateTime(QDate(1899, 12, 30), QTime(0, 0)) << 0.0;
    QTest::newRow("noon next day") << QDateTime(QDate(1899, 12, 31), QTime(12, 0)) << 1.5;
    QTest::newRow("2000-01-01") << QDateTime(QDate(2000, 1, 1), QTime(0, 0)) << 36526.0;
    QTest::newRow("06:00") << QDateTime(QDate(2026, 11, 22), QTime(6, 0)) << 46348.25;
  }
  void dateTimeIsDaysSince1899() {
    QFETCH(QDateTime, moment);
    QFETCH(double, value);
    QCOMPARE(TDateTime::FromQDateTime(moment).Value, value);
    QCOMPARE(TDateTime(value).ToQDateTime(), moment);
  }

  void lastMillisecondStaysOnItsDay() {
    const QDateTime late(QDate(2026, 11, 22), QTime(23, 59, 59, 999));
    const TDateTime t = TDateTime::FromQDateTime(late);
    QCOMPARE(t.Date(), QDate(2026, 11, 22));
    QCOMPARE(t.Time(), QTime(23, 59, 59, 999));
  }

  void formats_data() {
    QTest::addColumn<QDateTime>("moment");
    QTest::addColumn<QString>("full");
    QTest::addColumn<QString>("cFormat");
    QTest::newRow("with time") << QDateTime(QDate(2026, 3, 4), QTime(7, 5, 9))
                               << u"2026-03-04 07:05:09"_s << u"2026-03-04 07:05:09"_s;
    QTest::newRow("midnight drops the time")
        << QDateTime(QDate(2026, 3, 4), QTime(0, 0)) << u"2026-03-04 00:00:00"_s << u"2026-03-04"_s;
  }
  void formats() {
    QFETCH(QDateTime, moment);
    QFETCH(QString, full);
    QFETCH(QString, cFormat);
    const TDateTime t = TDateTime::FromQDateTime(moment);
    QCOMPARE(FormatFull(t), full);
    QCOMPARE(DateTimeToStr(t), cFormat);
    QCOMPARE(DateToStr(t), moment.date().toString(u"yyyy-MM-dd"_s));
    QCOMPARE(TimeToStr(t), moment.time().toString(u"hh:mm:ss"_s));
  }

  void parsing_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QDateTime>("moment");
    QTest::newRow("full") << u"2026-11-22 06:30:00"_s << true
                          << QDateTime(QDate(2026, 11, 22), QTime(6, 30));
    QTest::newRow("no seconds") << u"2026-11-22 06:30"_s << true
                                << QDateTime(QDate(2026, 11, 22), QTime(6, 30));
    QTest::newRow("date") << u" 2026-11-22 "_s << true
                          << QDateTime(QDate(2026, 11, 22), QTime(0, 0));
    QTest::newRow("garbage") << u"tomorrow"_s << false << QDateTime();
    QTest::newRow("bad day") << u"2026-02-30"_s << false << QDateTime();
  }
  void parsing() {
    QFETCH(QString, text);
    QFETCH(bool, ok);
    QFETCH(QDateTime, moment);
    TDateTime t(-1.0);
    QCOMPARE(TryStrToDateTime(text, &t), ok);
    if (ok)
      QCOMPARE(t.ToQDateTime(), moment);
    else
      QCOMPARE(t.Value, -1.0);
  }

  void timeOfDayAloneAndEquality() {
    TDateTime t;
    QVERIFY(TryStrToDateTime(u"07:15"_s, &t));
    QCOMPARE(t.Time(), QTime(7, 15));
    QVERIFY(t.Value < 1.0);
    const TDateTime a = TDateTime::FromQDateTime(QDateTime(QDate(2026, 1, 1), QTime(7, 0)));
    QVERIFY(a.SameAs(a + 0.5 / 86400000.0));
    QVERIFY(!a.SameAs(a + 2.0 / 86400000.0));
    QCOMPARE(a.TimePart().Time(), QTime(7, 0));
    QCOMPARE(a.DatePart().ToQDateTime(), QDateTime(QDate(2026, 1, 1), QTime(0, 0)));
  }

  void clockCanBeSet() {
    const QDateTime fixed(QDate(2026, 11, 22), QTime(6, 59, 59));
    SetClock([fixed] { return fixed; });
    QCOMPARE(CurrentDateTime(), fixed);
    QCOMPARE(Now().ToQDateTime(), fixed);
    SetClock({});
    QVERIFY(qAbs(CurrentDateTime().secsTo(QDateTime::currentDateTime())) < 5);
  }
};

QTEST_GUILESS_MAIN(TextTest)
#include "tst_text.moc"
