// Who is calling: the lookup behind the call page, the rows of incoming calls,
// the ways a call is announced, the pop-up and the external program.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "directory/DirectoryPages.h"
#include "directory/PopMsg_Form.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include "common/PgStore.h"
#include "common/StoreFixture.h"
#include "directory/Query.h"
#include "support/Log.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {
struct Desk {
  TestHome home;
  RecordingShell shell;
  bool packLoaded = (home.UseChinese(), true);
  TDirectoryPages pages;
  TForm_PopMsg pop;

  Desk() {
    Sys_DM().DataModuleCreate();
    pages.Form_PopMsg = &pop;
    SetClock([] { return QDateTime(QDate(2024, 3, 5), QTime(9, 7, 2)); });
  }

  int Store(const QString &name, const QString &phone, const QString &mobile = {},
            const QString &company = {}) {
    return StoreContact(name, phone, mobile, company, u"110"_s, u"note"_s);
  }
};
} // namespace

namespace {
using NumberMaker = std::function<QString(QRandomGenerator &)>;

QString Pick(QRandomGenerator &r, const QString &alphabet, int length) {
  QString out;
  for (int i = 0; i < length; ++i) {
    // An alphabet may hold pairs (characters outside the basic plane) as one
    // entry between '|'s.
    const QStringList entries = alphabet.split(u'|');
    out += entries[r.bounded(int(entries.size()))];
  }
  return out;
}

QString Digits(QRandomGenerator &r, int length) {
  return Pick(r, u"0|1|2|3|8|9"_s, length); // few digits: many shared runs and ties
}

// The IDs a statement answers, in its order.
QList<int> Answer(const QString &sql) {
  TADOQuery q;
  q.SQL = sql;
  q.Open();
  QList<int> ids;
  for (q.First(); !q.Eof(); q.Next())
    ids << q.AsInteger(u"ID"_s);
  return ids;
}

// What a caller may dial for a stored number: the number, longer, its tail,
// a part of it, other letters' case, or anything at all. Cut by characters,
// never inside a pair.
QString Probe(QRandomGenerator &r, const QString &stored) {
  const QList<uint> c = stored.toUcs4();
  const int n = int(c.size());
  const auto text = [](QList<uint> part) {
    return QString::fromUcs4(reinterpret_cast<const char32_t *>(part.constData()), part.size());
  };
  switch (r.bounded(7)) {
  case 0:
    return stored;
  case 1:
    return Digits(r, 3) + stored;
  case 2:
    return text(c.mid(qMax(0, n - 1 - r.bounded(7))));
  case 3:
    return text(c.mid(r.bounded(n + 1), 7));
  case 4:
    return stored.toUpper();
  case 5:
    return text(c.mid(0, n - 1));
  default:
    return Digits(r, r.bounded(12));
  }
}
} // namespace

Q_DECLARE_METATYPE(NumberMaker)

class CallerLookupTest : public QObject {
  Q_OBJECT

private slots:
  void findsTheCaller_data() {
    QTest::addColumn<QString>("phone");
    QTest::addColumn<QString>("mobile");
    QTest::addColumn<QString>("number");
    QTest::addColumn<bool>("found");
    QTest::newRow("long in long") << u"00001111"_s << QString() << u"13900001111"_s << true;
    QTest::newRow("long, stored short") << u"1234"_s << QString() << u"13900001234"_s << false;
    QTest::newRow("internal") << u"8123"_s << QString() << u"8123"_s << true;
    QTest::newRow("internal, stored long") << u"02168123"_s << QString() << u"8123"_s << false;
    QTest::newRow("not anchored") << u"0213900001111999"_s << QString() << u"13900001111"_s << true;
    QTest::newRow("mobile") << u"8000"_s << u"13900001111"_s << u"013900001111"_s << true;
    QTest::newRow("six, stored seven") << u"0812345"_s << QString() << u"812345"_s << false;
    QTest::newRow("seven, stored six") << u"123456"_s << QString() << u"0123456"_s << false;
    QTest::newRow("quote") << u"12'45678"_s << QString() << u"12'45678"_s << true;
    QTest::newRow("percent") << u"1%345"_s << QString() << u"1%345"_s << true;
    QTest::newRow("hash") << u"#12#"_s << QString() << u"#12#"_s << true;
    QTest::newRow("bracket") << u"1]2[3"_s << QString() << u"1]2[3"_s << true;
    QTest::newRow("semicolon") << u"1;drop"_s << QString() << u"1;drop"_s << true;
    QTest::newRow("steering") << u"999"_s << QString() << u"') or ('1'='1"_s << false;
    // Characters outside the basic plane count once, on both sides.
    const QString six = u"\U0001D7D9\U0001D7DA\U0001D7DB\U0001D7DC\U0001D7DD\U0001D7DE"_s;
    QTest::newRow("six wide characters") << six << QString() << six << true;
    QTest::newRow("wide, long in long")
        << u"0\U0001D7D8"_s + six << QString() << u"9\U0001D7D8"_s + six << true;
    // Half of one: no store error, and the number as the console stores it is found.
    QTest::newRow("half a wide character")
        << u"1234567"_s + QChar(QChar::ReplacementCharacter) << QString()
        << u"1234567"_s + QChar(0xD835) << true;
  }
  void findsTheCaller() {
    QFETCH(QString, phone);
    QFETCH(QString, mobile);
    QFETCH(QString, number);
    QFETCH(bool, found);
    Desk d;
    const int id = d.Store(u"客户"_s, phone, mobile, u"公司"_s);
    TDirectoryPages &p = d.pages;
    p.Con_IDCard_TeSEdit = u"old"_s;
    p.ShowCallerInfo(u"Phone1"_s, number);
    QVERIFY(d.shell.Messages.isEmpty());
    if (found) {
      QCOMPARE(p.CurrentConID, id);
      QCOMPARE(p.CON_Name_LMDEdit, u"客户"_s);
      QCOMPARE(p.CON_Phone1_LMDEdit, phone); // the stored number, not the caller's
      QCOMPARE(p.CON_Company_LMDEdit, u"公司"_s);
      QCOMPARE(p.Con_IDCard_TeSEdit, u"110"_s);
      QCOMPARE(p.CON_Memo_Memo, u"note"_s);
      QCOMPARE(p.ConEdit_LMDButton_Caption, LangText(276));
    } else {
      QCOMPARE(p.CurrentConID, -1);
      QCOMPARE(p.CON_Name_LMDEdit, QString());
      QCOMPARE(p.CON_Phone1_LMDEdit, number);
      QCOMPARE(p.Con_IDCard_TeSEdit, u"old"_s);
      QCOMPARE(p.CON_Memo_Memo, QString());
      QCOMPARE(p.ConEdit_LMDButton_Caption, LangText(275));
    }
  }

  // The key table answers exactly as reading every contact would: the same
  // contacts, in the same order, after another program changed the book.
  void indexedAnswersAsThePlainStatement_data() {
    QTest::addColumn<NumberMaker>("make");
    QTest::addColumn<bool>("oldStore");
    QTest::newRow("digits, short and long") << NumberMaker([](QRandomGenerator &r) -> QString {
      return Digits(r, 2 + r.bounded(11));
    }) << false;
    QTest::newRow("spaces, dashes, +86") << NumberMaker([](QRandomGenerator &r) -> QString {
      const QString seps[] = {u" "_s, u"-"_s, QString()};
      return (r.bounded(2) ? u"+86 "_s : QString()) + Digits(r, 3) + seps[r.bounded(3)] +
             Digits(r, 4) + seps[r.bounded(3)] + Digits(r, r.bounded(5));
    }) << false;
    QTest::newRow("letters in either case") << NumberMaker([](QRandomGenerator &r) -> QString {
      return Pick(r, u"1|2|a|A|b|B|é|É|z"_s, 3 + r.bounded(8));
    }) << false;
    QTest::newRow("quotes and pattern characters") << NumberMaker([](QRandomGenerator &r) -> QString {
      return Pick(r, u"1|2|'|\"|%|_|[|]|#"_s, 2 + r.bounded(9));
    }) << false;
    QTest::newRow("40 to 80 characters") << NumberMaker([](QRandomGenerator &r) -> QString {
      return Digits(r, 38 + r.bounded(43));
    }) << false;
    QTest::newRow("outside the basic plane") << NumberMaker([](QRandomGenerator &r) -> QString {
      return Pick(r, u"1|2|\U0001D7D9|\U0001D7DA|😀"_s, 3 + r.bounded(8));
    }) << false;
    QTest::newRow("an older store gets its keys at start") << NumberMaker([](QRandomGenerator &r) -> QString {
      return Digits(r, 2 + r.bounded(11));
    }) << true;
  }
  void indexedAnswersAsThePlainStatement() {
    QFETCH(NumberMaker, make);
    QFETCH(bool, oldStore);
    Desk d;
    QRandomGenerator r(7);
    const auto number = [&]() -> QVariant {
      const int kind = r.bounded(10);
      return kind == 0 ? QVariant() : kind == 1 ? QVariant(QString()) : QVariant(make(r));
    };
    QSqlDatabase db = StoreConnection();
    QSqlQuery q(db);
    if (oldStore) { // a book written before the store kept keys
      const QStringList drops =
          TestStoreIsPg()
              ? QStringList{u"DROP TRIGGER MainInfo_CallerKeys ON MainInfo"_s,
                            u"DROP TABLE CallerKeys"_s}
              : QStringList{u"DROP TRIGGER MainInfo_CallerKeys_Insert"_s,
                            u"DROP TRIGGER MainInfo_CallerKeys_Update"_s,
                            u"DROP TRIGGER MainInfo_CallerKeys_Delete"_s,
                            u"DROP TABLE CallerKeys"_s};
      for (const QString &drop : drops)
        QVERIFY2(q.exec(drop), qPrintable(q.lastError().text()));
    }
    db.transaction();
    q.prepare(u"INSERT INTO MainInfo (Name, Phone1, MobilePhone) VALUES ('c', ?, ?)"_s);
    for (int i = 0; i < 1000; ++i) {
      q.addBindValue(number());
      q.addBindValue(number());
      QVERIFY(q.exec());
    }
    db.commit();
    if (oldStore) {
      SysConfig().Debug = 1;
      LogMemo().Clear();
      Sys_DM().DataModuleCreate();
      QCOMPARE(LogMemo().Lines().filter(u"caller index for 1000 contacts"_s).size(), 1);
      db = StoreConnection();
      q = QSqlQuery(db);
    }
    // Another program edits: new numbers, numbers swapped, contacts gone.
    QSqlQuery edit(db);
    for (int i = 0; i < 150; ++i) {
      const int id = 1 + r.bounded(1000);
      switch (i % 3) {
      case 0:
        edit.prepare(u"UPDATE MainInfo SET Phone1 = ? WHERE ID = ?"_s);
        edit.addBindValue(number());
        break;
      case 1:
        edit.prepare(u"UPDATE MainInfo SET Phone1 = MobilePhone, MobilePhone = Phone1 WHERE ID = ?"_s);
        break;
      default:
        edit.prepare(u"DELETE FROM MainInfo WHERE ID = ?"_s);
      }
      edit.addBindValue(id);
      QVERIFY2(edit.exec(), qPrintable(edit.lastError().text()));
    }

    QStringList stored;
    QVERIFY(q.exec(u"SELECT Phone1 FROM MainInfo WHERE length(Phone1) > 0 UNION ALL "
                   u"SELECT MobilePhone FROM MainInfo WHERE length(MobilePhone) > 0"_s));
    while (q.next())
      stored << q.value(0).toString();
    QStringList probes = {QString(), u"?"_s, u"%"_s, u"1_3"_s, u"0000000"_s};
    for (int i = 0; i < 100; ++i)
      probes << Probe(r, stored[r.bounded(int(stored.size()))]);
    int found = 0;
    // A server keeps no order among the plain statement's rows of one length
    // (SQLite reads them in ID order); there the same contacts must answer.
    const auto comparable = [](QList<int> ids) {
      if (TestStoreIsPg())
        std::sort(ids.begin(), ids.end());
      return ids;
    };
    for (const QString &n : std::as_const(probes)) {
      const QList<int> plain =
          comparable(Answer(CallerLookupSQL(u"Phone1"_s, n, LookupPlan::Plain)));
      QCOMPARE(comparable(Answer(CallerLookupSQL(u"Phone1"_s, n))), plain);
      QCOMPARE(comparable(Answer(CallTailSQL(u"Phone1"_s, n))),
               comparable(Answer(CallTailSQL(u"Phone1"_s, n, LookupPlan::Plain))));
      found += plain.isEmpty() ? 0 : 1;
    }
    QVERIFY(found > 30); // the probes found contacts, not only nothing
  }

  void shortestStoredNumberWins() {
    Desk d;
    d.Store(u"长"_s, u"02150001234"_s);
    d.Store(u"短"_s, u"50001234"_s);
    d.Store(u"中"_s, u"2150001234"_s);
    d.pages.ShowCallerInfo(u"Phone1"_s, u"13950001234"_s);
    QCOMPARE(d.pages.CON_Name_LMDEdit, u"短"_s);
  }

  void incomingRowsAndTheSimplerMatch() {
    Desk d;
    TDirectoryPages &p = d.pages;
    d.Store(u"甲"_s, u"02150001234"_s, u"13900001111"_s, u"公司"_s);
    TCallListModel &in = p.Incomings_LMDListBox;
    p.InsertCallItem(u"Phone1"_s, u"50001234"_s, -1, in); // seven last characters equal
    p.InsertCallItem(u"Phone1"_s, u"1234"_s, -1, in);     // not
    QCOMPARE(in.Count(), 2);
    QCOMPARE(in.Item(0).Text(), u"|1234||||2024-3-5 09:07:02|-1|-1"_s);
    const TLmdlistItemRam known = in.Item(1);
    QCOMPARE(known.Name, u"甲"_s);
    QCOMPARE(known.Telephone, u"02150001234"_s);
    QCOMPARE(known.Mobile, u"13900001111"_s);
    QCOMPARE(known.Company, u"公司"_s);
    QCOMPARE(known.ContactID, u"-1"_s); // a live row names no contact, found or not

    // The same number again: one row, first, with the new time.
    SetClock([] { return QDateTime(QDate(2024, 3, 5), QTime(10, 0, 0)); });
    p.InsertCallItem(u"Phone1"_s, u"50001234"_s, -1, in);
    QCOMPARE(in.Count(), 2);
    QCOMPARE(in.Item(0).Number, u"50001234"_s);
    QCOMPARE(in.Item(0).Time, u"2024-3-5 10:00:00"_s);

    // A queue event appends; a row of another list also clears the incoming one.
    p.AppendCallItem(u"Phone1"_s, u"777"_s, 12, in);
    QCOMPARE(in.Item(in.Count() - 1).RowNo, u"12"_s);
    p.InsertCallItem(u"Phone1"_s, u"1234"_s, 40, p.Incomed_LMDListBox);
    QCOMPARE(in.Count(), 2);
    QCOMPARE(p.Incomed_LMDListBox.Item(0).RowNo, u"40"_s);
    p.RemoveIncomingItem(u"777"_s);
    QCOMPARE(in.Count(), 1);

    // Awkward numbers make rows like any other.
    for (const QString &n : {u"'"_s, u"%"_s, u"#"_s, u"]"_s, u";"_s, u"' or 1=1 --"_s})
      p.InsertCallItem(u"Phone1"_s, n, -1, in);
    QCOMPARE(in.Count(), 7);
    QCOMPARE(in.Item(0).Name, QString());
    QVERIFY(d.shell.Messages.isEmpty());
  }

  void editingTheCallerOnTheContactPage() {
    Desk d;
    TDirectoryPages &p = d.pages;
    const int id = d.Store(u"乙"_s, u"8123"_s);
    QSignalSpy pages(&p, &TDirectoryPages::pageRequested);

    p.CON_Memo_Memo = u"call notes"_s;
    p.ShowCallerInfo(u"Phone1"_s, u"13900009999"_s);
    p.CON_Memo_Memo = u"call notes"_s;
    p.ConEdit_LMDButtonClick();
    QCOMPARE(pages.last()[0].value<TDirectoryPages::Page>(), TDirectoryPages::Page::Mat_TeTabSheet);
    QCOMPARE(p.CurrentMatID, -1);
    QCOMPARE(p.MAT_Phone1_LMDEdit, u"13900009999"_s);
    QCOMPARE(p.Mat_Memo_Memo, u"call notes"_s);
    QVERIFY(!p.MatChanged);
    p.LMDButton26Click(); // a new contact
    QCOMPARE(d.shell.Messages.last().Text, LangText(264));

    p.ShowCallerInfo(u"Phone1"_s, u"8123"_s);
    p.ConEdit_LMDButtonClick();
    QCOMPARE(p.CurrentMatID, id);
    QCOMPARE(p.MAT_Name_LMDEdit, u"乙"_s);
    QVERIFY(!p.MatChanged);
  }

  void externalProgram_data() {
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("opened");
    QTest::addColumn<bool>("refused");
    QTest::newRow("web address") << u"http://crm.local/in"_s << u"13900001111"_s
                                 << u"http://crm.local/in?TelNos=8001_13900001111"_s << false;
    QTest::newRow("program") << u"C:/crm/pop.exe"_s << u"13900001111"_s
                             << u"C:/crm/pop.exe 8001_13900001111"_s << false;
    QTest::newRow("upper-case EXE is an address")
        << u"C:/crm/POP.EXE"_s << u"1"_s << u"C:/crm/POP.EXE?TelNos=8001_1"_s << false;
    QTest::newRow("crafted number stays one value")
        << u"http://crm.local/in"_s << u"1&x=2#y"_s
        << u"http://crm.local/in?TelNos=8001_1%26x%3D2%23y"_s << false;
    QTest::newRow("blank setting") << u"   "_s << u"1"_s << QString() << true;
  }
  void externalProgram() {
    QFETCH(QString, link);
    QFETCH(QString, number);
    QFETCH(QString, opened);
    QFETCH(bool, refused);
    Desk d;
    SysConfig().LinkURL = link;
    d.pages.OwnExtension = [] { return u"8001"_s; };
    d.pages.APICallNumber = number;
    d.pages.TeSpeedButton_APIExcuteClick();
    QCOMPARE(d.shell.Opened, refused ? QStringList() : QStringList{opened});
    QCOMPARE(d.shell.Messages.size(), refused ? 1 : 0);
    if (refused)
      QCOMPARE(d.shell.Messages[0].Text, u"请先设置外部连接程序！"_s);
    if (refused)
      QCOMPARE(d.shell.Messages[0].Kind, MessageKind::Error);
  }
};

QTEST_GUILESS_MAIN(CallerLookupTest)
#include "tst_callerlookup.moc"
