// The INI reader and writer under the settings and the language packs.
#include "common/TestHome.h"
#include "support/IniFile.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

class IniFileTest : public QObject {
  Q_OBJECT

private slots:
  void namesCompareWithoutCase() {
    IniFile ini;
    ini.SetText(u"[User]\nuserName=8001\nPASSWORD=secret\n[HOST]\nip=10.0.0.1\n"_s);
    QCOMPARE(ini.ReadString(u"user"_s, u"USERNAME"_s, {}), u"8001"_s);
    QCOMPARE(ini.ReadString(u"User"_s, u"password"_s, {}), u"secret"_s);
    QCOMPARE(ini.ReadString(u"host"_s, u"IP"_s, {}), u"10.0.0.1"_s);
    QCOMPARE(ini.ReadString(u"host"_s, u"Port"_s, u"5003"_s), u"5003"_s);
  }

  void valuesAreTrimmedAndFirstKeyWins() {
    IniFile ini;
    ini.SetText(u"[a]\n  key  =  two words  \nkey=second\n"_s);
    QCOMPARE(ini.ReadString(u"a"_s, u"key"_s, {}), u"two words"_s);
  }

  void integersAndBooleans_data() {
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("decimal") << u"42"_s << 42;
    QTest::newRow("negative") << u"-3"_s << -3;
    QTest::newRow("hex dollar") << u"$1F"_s << 31;
    QTest::newRow("hex 0x") << u"0x10"_s << 16;
    QTest::newRow("garbage gives default") << u"abc"_s << 7;
    QTest::newRow("trailing junk gives default") << u"12abc"_s << 7;
    QTest::newRow("empty gives default") << QString() << 7;
    QTest::newRow("overflow gives default") << u"99999999999"_s << 7;
    QTest::newRow("double sign gives default") << u"--1"_s << 7;
  }
  void integersAndBooleans() {
    QFETCH(QString, value);
    QFETCH(int, expected);
    IniFile ini;
    ini.SetText(u"[s]\nk="_s + value + u"\n"_s);
    QCOMPARE(ini.ReadInteger(u"s"_s, u"k"_s, 7), expected);
    QCOMPARE(ini.ReadBool(u"s"_s, u"k"_s, true), expected != 0);
  }

  // Lines the reader can't use are skipped; what follows still loads.
  void garbageLoadsWhatItCan() {
    IniFile ini;
    ini.SetText(u"garbage line\n=no name\n[host\nIP=1.2.3.4\n]stray\n[User]\nno equals here\n"
                u"userName=8001\n;comment=1\n\u0000\u0001\u0002\n"_s);
    QCOMPARE(ini.ReadString(u"host"_s, u"IP"_s, {}), u"1.2.3.4"_s); // header without ']'
    QCOMPARE(ini.ReadString(u"User"_s, u"userName"_s, {}), u"8001"_s);
    QVERIFY(!ini.Value(u"User"_s, u";comment"_s));
  }

  void nulEndsALine() {
    IniFile ini;
    ini.SetText(u"[a]\nk=abc\u0000def\nnext=1\n"_s);
    QCOMPARE(ini.ReadString(u"a"_s, u"k"_s, {}), u"abc"_s);
    QCOMPARE(ini.ReadInteger(u"a"_s, u"next"_s, 0), 1);
  }

  void megabyteValueLoads() {
    const QString big(1024 * 1024, u'x');
    IniFile ini;
    ini.SetText(u"[a]\nbig="_s + big + u"\nafter=ok\n"_s);
    QCOMPARE(ini.ReadString(u"a"_s, u"big"_s, {}).size(), big.size());
    QCOMPARE(ini.ReadString(u"a"_s, u"after"_s, {}), u"ok"_s);
  }

  void writeKeepsEveryOtherLine() {
    IniFile ini;
    const QString original = u"; hand-written notes\n[host]\nIP=1.1.1.1\nMyOwnKey=keep me\n\n"
                             u"[Extra]\nfoo=bar\n"_s;
    ini.SetText(original);
    ini.WriteString(u"HOST"_s, u"ip"_s, u"2.2.2.2"_s);     // existing key, other spelling
    ini.WriteString(u"host"_s, u"Port"_s, u"5003"_s);      // new key in an existing section
    ini.WriteString(u"Record"_s, u"IP"_s, u"127.0.0.1"_s); // new section
    QCOMPARE(ini.Text(),
             u"; hand-written notes\n[host]\nip=2.2.2.2\nMyOwnKey=keep me\nPort=5003\n\n"
             u"[Extra]\nfoo=bar\n[Record]\nIP=127.0.0.1\n"_s);
  }

  void valueWithLineBreakStaysOnOneLine() {
    IniFile ini;
    ini.WriteString(u"Other"_s, u"LinkURL"_s, u"a\r\nb\nc"_s);
    ini.WriteString(u"Other"_s, u"Next"_s, u"1"_s);
    QCOMPARE(ini.Text(), u"[Other]\nLinkURL=a b c\nNext=1\n"_s);
  }

  void fileRoundTripKeepsCrLfAndIsOwnerOnly() {
    TestHome home;
    home.Write(u"ini/sys.ini"_s, "[host]\r\nIP=1.1.1.1\r\n");
    IniFile ini;
    QCOMPARE(ini.Load(home.File(u"ini/sys.ini"_s)), IniFile::LoadResult::Loaded);
    ini.WriteString(u"host"_s, u"Port"_s, u"5003"_s);
    QVERIFY(ini.Save(home.File(u"ini/sys.ini"_s), true));
    QCOMPARE(home.Read(u"ini/sys.ini"_s), QByteArray("[host]\r\nIP=1.1.1.1\r\nPort=5003\r\n"));
    // It may hold the operator's password: nobody but its owner reads it.
    const QFile::Permissions perms = QFile::permissions(home.File(u"ini/sys.ini"_s));
    QVERIFY(perms.testFlag(QFile::ReadOwner) && perms.testFlag(QFile::WriteOwner));
    QVERIFY(
        !(perms & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther)));
  }

  void gbkFileFromAWindowsConsoleReads() {
    TestHome home;
    home.Write(u"ini/sys.ini"_s, "[company]\r\ncaption=\xBB\xB6\xD3\xAD\r\n"); // 欢迎
    IniFile ini;
    ini.Load(home.File(u"ini/sys.ini"_s));
    QCOMPARE(ini.ReadString(u"company"_s, u"caption"_s, {}), u"欢迎"_s);
  }

  void missingAndUnreadableFiles() {
    TestHome home;
    IniFile ini;
    QCOMPARE(ini.Load(home.File(u"nothing.ini"_s)), IniFile::LoadResult::Missing);
    home.Write(u"adir/x"_s, "");
    QCOMPARE(ini.Load(home.File(u"adir"_s)), IniFile::LoadResult::Unreadable);
  }

  void saveIntoUnwritablePlaceFails() {
    TestHome home;
    home.Write(u"ini"_s, "a file where a folder should be");
    IniFile ini;
    ini.WriteString(u"a"_s, u"b"_s, u"c"_s);
    QString error;
    QVERIFY(!ini.Save(home.File(u"ini/sys.ini"_s), true, &error));
    QVERIFY(!error.isEmpty());
  }
};

QTEST_GUILESS_MAIN(IniFileTest)
#include "tst_inifile.moc"
