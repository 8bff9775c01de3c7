// Language packs: loading, the start/first-show/switch rules, the applied table,
// and the shipped packs' completeness.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "support/FormLogic.h"
#include "support/IniFile.h"
#include "support/LanguagePack.h"
#include "support/LanguageTable.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/TextFile.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
void WritePacks(const TestHome &home) {
  home.Write(u"ini/lang_chinese.lan"_s, "[Public]\nstr_10=中文\nstr_742=空闲\n");
  home.Write(u"ini/lang_English.lan"_s, "[Public]\nstr_10=English\nstr_742=Idle\n");
}

IniFile ShippedPack(const QString &name) {
  IniFile ini;
  ini.Load(SourcePath(u"resources/ini/"_s + name));
  return ini;
}

// Every key the product code asks for by number.
QSet<int> KeysUsedByCode() {
  QSet<int> keys;
  const QRegularExpression use(uR"(\bLang(?:Text|Format)\(\s*(\d+))"_s);
  QDirIterator it(SourcePath(u"src"_s), {u"*.cpp"_s, u"*.h"_s}, QDir::Files,
                  QDirIterator::Subdirectories);
  while (it.hasNext()) {
    QFile file(it.next());
    if (!file.open(QIODevice::ReadOnly))
      continue;
    const QString text = QString::fromUtf8(file.readAll());
    for (const QRegularExpressionMatch &m : use.globalMatch(text))
      keys.insert(m.captured(1).toInt());
  }
  return keys;
}

// The sequence of conversions in a format text, e.g. "%s %d" -> "sd".
QString Conversions(const QString &text) {
  QString out;
  static const QRegularExpression conv(uR"(%(%|-?\d*(?:\.\d+)?[sdufxSDUFX]))"_s);
  for (const QRegularExpressionMatch &m : conv.globalMatch(text)) {
    if (m.captured(1) != u"%"_s)
      out += m.captured(1).right(1).toLower();
  }
  return out;
}
} // namespace

class LanguageTest : public QObject {
  Q_OBJECT

private slots:
  void barRule_data() {
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("shown");
    QTest::newRow("leading blanks kept") << QByteArray("|  Hello") << u"  Hello"_s;
    QTest::newRow("two bytes stay") << QByteArray("|a") << u"|a"_s;
    QTest::newRow("bar alone stays") << QByteArray("|") << u"|"_s;
    QTest::newRow("bar and a Chinese character") << QByteArray("|中") << u"中"_s;
    QTest::newRow("no bar") << QByteArray("Hello") << u"Hello"_s;
    QTest::newRow("bar inside") << QByteArray("a|b") << u"a|b"_s;
  }
  void barRule() {
    QFETCH(QByteArray, value);
    QFETCH(QString, shown);
    TestHome home;
    home.Write(u"ini/p.lan"_s, "[Public]\nstr_5=" + value + "\n");
    TLanguage_Pack pack;
    QVERIFY(pack.LoadLanguageFile(home.File(u"ini/p.lan"_s)));
    QCOMPARE(pack.Str(5), shown);
  }

  void missingKeysAndFilesShowNull() {
    TestHome home;
    home.Write(u"ini/p.lan"_s, "[Public]\nstr_1=one\n[Other]\nstr_300=not here\n");
    TLanguage_Pack pack;
    pack.LoadLanguageFile(home.File(u"ini/p.lan"_s));
    QCOMPARE(pack.Str(1), u"one"_s);
    QCOMPARE(pack.Str(300), u"(Null)"_s);
    QCOMPARE(pack.Str(1001), u"(Null)"_s);
    QCOMPARE(pack.Str(-1), u"(Null)"_s);
    QVERIFY(!pack.LoadLanguageFile(home.File(u"ini/none.lan"_s)));
    QCOMPARE(pack.Str(1), u"(Null)"_s); // a reload replaces every text
  }

  void garbagePackLoadsWhatItCan() {
    TestHome home;
    QByteArray junk("[Public\nstr_1=one\n");
    junk += QByteArray("\x00\xFF\xFE\n", 4);
    junk += "str_2\n=x\nstr_3=";
    junk += QByteArray(100000, 'z') + "\nstr_4=four\n";
    home.Write(u"ini/p.lan"_s, junk);
    TLanguage_Pack pack;
    pack.LoadLanguageFile(home.File(u"ini/p.lan"_s));
    QCOMPARE(pack.Str(1), u"one"_s);
    QCOMPARE(pack.Str(2), u"(Null)"_s);
    QCOMPARE(pack.Str(3).size(), 100000);
    QCOMPARE(pack.Str(4), u"four"_s);
  }

  void oversizePackIsNotRead() {
    TestHome home;
    home.Write(u"ini/p.lan"_s,
               "[Public]\nstr_1=one\nstr_2=" + QByteArray(kMaxTextFileBytes, 'z') + "\n");
    RecordingShell shell;
    TLanguage_Pack pack;
    QVERIFY(!pack.LoadLanguageFile(home.File(u"ini/p.lan"_s)));
    QCOMPARE(pack.Str(1), u"(Null)"_s);
    QCOMPARE(shell.Messages.size(), 1);
  }

  void startRule_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("langId");
    QTest::newRow("no setting") << QByteArray() << u"中文"_s << 0;
    QTest::newRow("0 Chinese") << QByteArray("[Lang]\nLangID=0\n") << u"中文"_s << 0;
    QTest::newRow("1 English") << QByteArray("[lang]\nlangid=1\n") << u"English"_s << 1;
    QTest::newRow("2 is Chinese, kept") << QByteArray("[Lang]\nLangID=2\n") << u"中文"_s << 2;
    QTest::newRow("junk is 0") << QByteArray("[Lang]\nLangID=en\n") << u"中文"_s << 0;
  }
  void startRule() {
    QFETCH(QByteArray, file);
    QFETCH(QString, text);
    QFETCH(int, langId);
    TestHome home;
    WritePacks(home);
    home.Write(u"ini/sys.ini"_s, file);
    LanguageStart();
    QCOMPARE(LangText(10), text);
    QCOMPARE(LanguagePack().LangID, langId);
  }

  // File names are found whatever their case, as a folder from Windows has them.
  void packFoundWhateverItsCase() {
    TestHome home;
    home.Write(u"INI/Lang_Chinese.LAN"_s, "[Public]\nstr_10=found\n");
    LanguageStart();
    QCOMPARE(LangText(10), u"found"_s);
  }

  void firstShowRule_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("langId");
    QTest::newRow("0") << QByteArray("[Lang]\nLangID=0\n") << u"中文"_s << 0;
    QTest::newRow("1") << QByteArray("[Lang]\nLangID=1\n") << u"English"_s << 1;
    QTest::newRow("2 means English here") << QByteArray("[Lang]\nLangID=2\n") << u"English"_s << 1;
  }
  void firstShowRule() {
    QFETCH(QByteArray, file);
    QFETCH(QString, text);
    QFETCH(int, langId);
    TestHome home;
    WritePacks(home);
    home.Write(u"ini/sys.ini"_s, file);
    LanguageStart();
    LoadConfig(SysConfig());
    LanguageFirstShow();
    QCOMPARE(LangText(10), text);
    QCOMPARE(LanguagePack().LangID, langId);
    QCOMPARE(ExtStatusNames()[1], LangText(742));
  }

  void switchingLoadsOnlyWhenTheLanguageChanges() {
    TestHome home;
    WritePacks(home);
    LanguageStart();
    QCOMPARE(LangText(10), u"中文"_s);
    // The menu choice of the language in force reads no file: a changed file on
    // disk must not show.
    home.Write(u"ini/lang_chinese.lan"_s, "[Public]\nstr_10=changed\n");
    QVERIFY(!SelectLanguage(0));
    QCOMPARE(LangText(10), u"中文"_s);

    QVERIFY(SelectLanguage(1));
    QCOMPARE(LangText(10), u"English"_s);
    QCOMPARE(LanguagePack().LangID, 1);
    QCOMPARE(ExtStatusNames()[1], u"Idle"_s);
    QVERIFY(!SelectLanguage(1));

    QVERIFY(SelectLanguage(0));
    QCOMPARE(LangText(10), u"changed"_s);
    QCOMPARE(ExtStatusNames()[1], u"(Null)"_s);
  }

  void chosenLanguageReachesTheFileAtSave() {
    TestHome home;
    WritePacks(home);
    LanguageStart();
    SelectLanguage(1);
    SaveConfig(SysConfig());
    QVERIFY(home.Read(u"ini/sys.ini"_s).contains("[Lang]\nLangID=1\n"));
  }

  void applyLanguageReachesEveryLiveWindow() {
    TestHome home;
    home.CopyShipped(u"ini/lang_chinese.lan"_s);
    home.CopyShipped(u"ini/lang_English.lan"_s);
    LanguageStart();
    const TLanguageRow *row = nullptr;
    for (const TLanguageRow &r : LanguageTable()) {
      if (QLatin1StringView(r.Form) == "Tsysset_Form"_L1) {
        row = &r;
        break;
      }
    }
    QVERIFY(row);
    TFormLogic first("Tsysset_Form");
    auto second = std::make_unique<TFormLogic>("Tsysset_Form");
    TFormLogic other("SomeOtherForm");
    QSignalSpy changed(&first, &TFormLogic::controlTextChanged);
    QVERIFY(SelectLanguage(1));
    const QString control = QLatin1StringView(row->Control);
    QCOMPARE(first.ControlText(control, row->Property, row->Index), LangText(row->Key));
    QCOMPARE(second->ControlText(control, row->Property, row->Index), LangText(row->Key));
    QVERIFY(!changed.isEmpty());
    QVERIFY(other.ControlText(control, row->Property, row->Index).isEmpty());
    second.reset(); // a window that is gone is left alone
    QVERIFY(SelectLanguage(0));
    QCOMPARE(first.ControlText(control, row->Property, row->Index), LangText(row->Key));
  }

  void formatText_data() {
    QTest::addColumn<QString>("format");
    QTest::addColumn<QVariantList>("args");
    QTest::addColumn<QString>("expected");
    QTest::newRow("string and number")
        << u"%s rang %d times"_s << QVariantList{u"8001"_s, 3} << u"8001 rang 3 times"_s;
    QTest::newRow("percent") << u"100%% %s"_s << QVariantList{u"done"_s} << u"100% done"_s;
    QTest::newRow("width") << u"[%5d][%-3s]"_s << QVariantList{42, u"a"_s} << u"[   42][a  ]"_s;
    QTest::newRow("precision") << u"%.1f %.2s"_s << QVariantList{2.26, u"abc"_s} << u"2.3 ab"_s;
    QTest::newRow("hex") << u"%x"_s << QVariantList{255} << u"FF"_s;
    QTest::newRow("zero-padded") << u"%.2d:%.2d"_s << QVariantList{7, -3} << u"07:-03"_s;
    QTest::newRow("too few values keep the rest")
        << u"%s and %s"_s << QVariantList{u"one"_s} << u"one and %s"_s;
    QTest::newRow("text where a number goes") << u"%d"_s << QVariantList{u"x"_s} << u"x"_s;
    QTest::newRow("unknown conversion") << u"%q %s"_s << QVariantList{u"v"_s} << u"%q v"_s;
    QTest::newRow("trailing percent") << u"50%"_s << QVariantList{} << u"50%"_s;
    QTest::newRow("carriage return value")
        << u"%s%s"_s << QVariantList{u"a"_s, u"\r"_s} << u"a\r"_s;
  }
  void formatText() {
    QFETCH(QString, format);
    QFETCH(QVariantList, args);
    QFETCH(QString, expected);
    QString result;
    switch (args.size()) {
    case 0:
      result = FormatText(format, {});
      break;
    case 1:
      result = FormatText(format, {args[0]});
      break;
    default:
      result = FormatText(format, {args[0], args[1]});
      break;
    }
    QCOMPARE(result, expected);
  }

  // --- the shipped packs ---

  void shippedPacksDefineTheSameKeys() {
    const IniFile zh = ShippedPack(u"lang_chinese.lan"_s);
    const IniFile en = ShippedPack(u"lang_English.lan"_s);
    int defined = 0;
    for (int key = 0; key < kLanguageStringCount; ++key) {
      const QString name = u"str_%1"_s.arg(key);
      const bool inZh = zh.Value(u"Public"_s, name).has_value();
      const bool inEn = en.Value(u"Public"_s, name).has_value();
      if (inZh != inEn)
        QFAIL(qPrintable(name + u" is in only one pack"_s));
      if (inZh) {
        ++defined;
        QVERIFY2(!zh.Value(u"Public"_s, name)->isEmpty(), qPrintable(name));
        QVERIFY2(!en.Value(u"Public"_s, name)->isEmpty(), qPrintable(name));
      }
    }
    QVERIFY(defined >= 197);
  }

  void everyKeyTheCodeUsesIsInBothPacks() {
    TLanguage_Pack zh;
    TLanguage_Pack en;
    QVERIFY(zh.LoadLanguageFile(SourcePath(u"resources/ini/lang_chinese.lan"_s)));
    QVERIFY(en.LoadLanguageFile(SourcePath(u"resources/ini/lang_English.lan"_s)));
    QSet<int> keys = KeysUsedByCode();
    QVERIFY(keys.contains(527)); // the scan itself works
    for (const TLanguageRow &row : LanguageTable())
      keys.insert(row.Key);
    for (int key : keys) {
      QVERIFY2(zh.Str(key) != u"(Null)"_s, qPrintable(u"Chinese pack lacks str_%1"_s.arg(key)));
      QVERIFY2(en.Str(key) != u"(Null)"_s, qPrintable(u"English pack lacks str_%1"_s.arg(key)));
    }
  }

  void formatKeysTakeTheSameValuesInBothPacks() {
    TLanguage_Pack zh;
    TLanguage_Pack en;
    zh.LoadLanguageFile(SourcePath(u"resources/ini/lang_chinese.lan"_s));
    en.LoadLanguageFile(SourcePath(u"resources/ini/lang_English.lan"_s));
    for (int key = 0; key < kLanguageStringCount; ++key) {
      QVERIFY2(Conversions(zh.Str(key)) == Conversions(en.Str(key)),
               qPrintable(u"str_%1: \"%2\" vs \"%3\""_s.arg(key).arg(zh.Str(key), en.Str(key))));
    }
    // The wake-up dialog compares a control's text with this one: the same in both.
    QCOMPARE(zh.Str(674), en.Str(674));
  }

  void tableKeysRiseAndNeverTakeAMessageKey() {
    const auto table = LanguageTable();
    QVERIFY(table.size() >= 2);
    QCOMPARE(table[0].Key, 2);
    QCOMPARE(QLatin1StringView(table[0].Control), "TeSpeedButton14"_L1);
    QCOMPARE(table[0].Property, TextProperty::Hint);
    QCOMPARE(table[1].Key, 3);
    QCOMPARE(table[1].Property, TextProperty::Caption);
    const QSet<int> messages = KeysUsedByCode();
    QSet<QString> places;
    int last = 1;
    for (const TLanguageRow &row : table) {
      QVERIFY2(row.Key > last, qPrintable(u"str_%1 out of order"_s.arg(row.Key)));
      QVERIFY2(row.Key <= 1000, qPrintable(u"str_%1"_s.arg(row.Key)));
      QVERIFY2(!messages.contains(row.Key), qPrintable(u"str_%1 is a message"_s.arg(row.Key)));
      const QString place =
          u"%1/%2/%3/%4"_s.arg(QLatin1StringView(row.Form), QLatin1StringView(row.Control))
              .arg(int(row.Property))
              .arg(row.Index);
      QVERIFY2(!places.contains(place), qPrintable(place + u" set twice"_s));
      places.insert(place);
      last = row.Key;
    }
  }
};

QTEST_GUILESS_MAIN(LanguageTest)
#include "tst_language.moc"
