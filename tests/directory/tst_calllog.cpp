// The console's own call log on a real store: storing calls, rebuilding the
// three lists from the latest hundred, deleting selected rows, opening and
// dialling back a logged number.
#include "common/RecordingShell.h"
#include "common/PgStore.h"
#include "common/TestHome.h"
#include "directory/DirectoryPages.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"

#include <QSignalSpy>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
struct Log {
  TestHome home;
  RecordingShell shell;
  bool packLoaded = (home.UseChinese(), true);
  TDirectoryPages pages;

  Log() {
    Sys_DM().DataModuleCreate();
    At(QDateTime(QDate(2024, 3, 5), QTime(9, 0, 0)));
  }

  void At(const QDateTime &when) {
    SetClock([when] { return when; });
  }

  // Rows written past the code under test, a minute apart from 08:00 on.
  void Fill(int count, const std::function<int(int)> &stateOf) {
    QSqlDatabase db = StoreConnection();
    db.transaction();
    QSqlQuery q(db);
    q.prepare(u"INSERT INTO conRecords (TelNos, DateTime, State) VALUES (?,?,?)"_s);
    for (int i = 0; i < count; ++i) {
      q.addBindValue(u"800%1"_s.arg(i, 4, 10, QLatin1Char('0')));
      q.addBindValue(QDateTime(QDate(2024, 3, 5), QTime(8, 0))
                         .addSecs(60 * i)
                         .toString(u"yyyy-MM-dd hh:mm:ss"_s));
      q.addBindValue(stateOf(i));
      q.exec();
    }
    db.commit();
  }

  QStringList Stored(const QString &sql) {
    QSqlQuery q(StoreConnection());
    QStringList values;
    if (q.exec(sql))
      while (q.next())
        values << q.value(0).toString();
    return values;
  }
};
} // namespace

class CallLogTest : public QObject {
  Q_OBJECT

private slots:
  void storingACall_data() {
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("stored");
    QTest::newRow("number") << u"13900001111"_s << u"13900001111"_s;
    QTest::newRow("no number") << QString() << u"?"_s;
    QTest::newRow("quote") << u"1'2"_s << u"1'2"_s;
    QTest::newRow("percent, hash, bracket") << u"%#]"_s << u"%#]"_s;
    QTest::newRow("second statement")
        << u"1; delete from conRecords"_s << u"1; delete from conRecords"_s;
  }
  void storingACall() {
    QFETCH(QString, number);
    QFETCH(QString, stored);
    Log l;
    l.Fill(3, [](int) { return 1; });
    const int id = l.pages.AddConRecord(number, 2);
    QCOMPARE(id, 4);
    QCOMPARE(l.pages.AddConRecord(u"1"_s, 3), 5);
    QCOMPARE(l.Stored(u"select TelNos || '/' || State || '/' || DateTime || '/' || "
                      u"coalesce(Memo, 'none') from conRecords where ID=4"_s),
             QStringList{stored + u"/2/2024-03-05 09:00:00/none"_s});
  }

  void theListsShowTheLatestHundred() {
    Log l;
    TDirectoryPages &p = l.pages;
    // 300 calls; every tenth of another state that shows nowhere.
    l.Fill(300, [](int i) { return i % 10 == 9 ? 4 : 1 + i % 3; });
    p.lostIncom_LMDListBox.Add({});
    p.LoadConRecords();
    const int shown = p.lostIncom_LMDListBox.Count() + p.Incomed_LMDListBox.Count() +
                      p.dialOut_LMDListBox.Count();
    QCOMPARE(shown, 90);
    // Newest on top, oldest of the window at the bottom.
    QCOMPARE(p.dialOut_LMDListBox.Item(0).Number, u"8000296"_s);
    QCOMPARE(p.dialOut_LMDListBox.Item(0).RowNo, u"297"_s);
    QCOMPARE(p.dialOut_LMDListBox.Item(0).Time, u"2024-3-5 12:56:00"_s);
    QCOMPARE(p.Incomed_LMDListBox.Item(p.Incomed_LMDListBox.Count() - 1).Number, u"8000202"_s);
    QCOMPARE(p.lostIncom_LMDListBox.Item(0).Number, u"8000297"_s);
  }

  void loggedRowsNameTheirContacts() {
    Log l;
    TDirectoryPages &p = l.pages;
    QSqlQuery q(StoreConnection());
    QVERIFY(
        q.exec(u"INSERT INTO MainInfo (Name, Phone1, Company) VALUES ('丁', '8123', '丁公司')"_s));
    const int contact = q.lastInsertId().toInt();
    p.AddConRecord(u"8123"_s, 1);
    l.At(QDateTime(QDate(2024, 3, 5), QTime(9, 30, 0)));
    p.AddConRecord(QString(), 1);
    p.LoadConRecords();
    QCOMPARE(p.lostIncom_LMDListBox.Count(), 2);
    const TLmdlistItemRam named = p.lostIncom_LMDListBox.Item(1);
    QCOMPARE(named.Name, u"丁"_s);
    QCOMPARE(named.Company, u"丁公司"_s);
    QCOMPARE(named.ContactID, QString::number(contact));
    // No number: "?" and nothing looked up, even with a contact holding "?".
    QVERIFY(q.exec(u"INSERT INTO MainInfo (Name, Phone1) VALUES ('问', '?')"_s));
    p.LoadConRecords();
    const TLmdlistItemRam unknown = p.lostIncom_LMDListBox.Item(0);
    QCOMPARE(unknown.Number, u"?"_s);
    QCOMPARE(unknown.Name, QString());
    QCOMPARE(unknown.Telephone, QString());
    QCOMPARE(unknown.ContactID, u"-1"_s);
    QCOMPARE(unknown.Time, u"2024-3-5 09:30:00"_s);
  }

  void deletingSelectedRows_data() {
    QTest::addColumn<QList<int>>("selected");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<QStringList>("left");
    const QStringList all = {u"5"_s, u"4"_s, u"3"_s, u"2"_s, u"1"_s};
    QTest::newRow("nothing selected") << QList<int>{} << true << false << all;
    QTest::newRow("answered no") << QList<int>{1} << false << true << all;
    QTest::newRow("three adjacent")
        << QList<int>{1, 2, 3} << true << true << QStringList{u"5"_s, u"1"_s};
    QTest::newRow("first and last")
        << QList<int>{0, 4} << true << true << QStringList{u"4"_s, u"3"_s, u"2"_s};
  }
  void deletingSelectedRows() {
    QFETCH(QList<int>, selected);
    QFETCH(bool, answer);
    QFETCH(bool, asked);
    QFETCH(QStringList, left);
    Log l;
    TDirectoryPages &p = l.pages;
    l.Fill(5, [](int) { return 3; });
    p.LoadConRecords();
    TCallListModel &list = p.dialOut_LMDListBox;
    for (int row : selected)
      list.SetSelected(row, true);
    l.shell.Answer = answer;
    p.DeleteSelectedCallItems(list);
    QCOMPARE(l.shell.Questions, asked ? QStringList{LangText(349)} : QStringList());
    QStringList rows;
    for (const TLmdlistItemRam &item : list.Items())
      rows << item.RowNo;
    QCOMPARE(rows, left);
    QCOMPARE(l.Stored(u"select ID from conRecords order by ID desc"_s), left);
  }

  void anEmptySelectedRowEndsTheWalk() {
    Log l;
    TDirectoryPages &p = l.pages;
    l.Fill(3, [](int) { return 2; });
    p.LoadConRecords();
    TCallListModel &list = p.Incomed_LMDListBox;
    list.Insert(1, TLmdlistItemRam{});
    for (int row = 0; row < list.Count(); ++row)
      list.SetSelected(row, true);
    l.shell.Answer = true;
    p.DeleteSelectedCallItems(list);
    QCOMPARE(list.Count(), 3);
    QVERIFY(list.Item(0).IsEmpty());
    QCOMPARE(l.Stored(u"select ID from conRecords order by ID"_s), (QStringList{u"1"_s, u"2"_s}));
  }

  void deleteConRecordTakesTextAsText() {
    Log l;
    l.Fill(3, [](int) { return 1; });
    l.pages.DeleteConRecord(u"ID"_s, u"2"_s);
    l.pages.DeleteConRecord(u"ID"_s, u"1 or 1=1"_s);
    l.pages.DeleteConRecord(u"TelNos"_s, u"8000002"_s);
    QCOMPARE(l.Stored(u"select ID from conRecords"_s), QStringList{u"1"_s});
  }

  void openingAndDiallingBack() {
    Log l;
    TDirectoryPages &p = l.pages;
    l.Fill(2, [](int) { return 1; });
    p.LoadConRecords();
    QStringList dialled;
    p.DialNumber = [&](const QString &n) { dialled << n; };
    QSignalSpy page(&p, &TDirectoryPages::pageRequested);
    TCallListModel &list = p.lostIncom_LMDListBox;

    p.OpenCallItem(list, 1);
    QCOMPARE(p.CON_Phone1_LMDEdit, u"8000000"_s);
    QCOMPARE(page.size(), 1);
    QCOMPARE(page[0][0].value<TDirectoryPages::Page>(), TDirectoryPages::Page::Con_TeTabSheet);

    p.DialBackSelected(list); // no current row
    QVERIFY(dialled.isEmpty());
    list.ItemIndex = 0;
    list.SetSelected(0, true);
    p.DialBackSelected(list);
    QCOMPARE(dialled, QStringList{u"8000001"_s});
    QCOMPARE(p.CON_Phone1_LMDEdit, u"8000001"_s);
    QCOMPARE(page.size(), 2);

    // A selected list and a row without a number: nothing happens.
    list.Insert(0, TLmdlistItemRam{});
    p.OpenCallItem(list, 0);
    QCOMPARE(page.size(), 2);
  }

  // The operator may work while the lists fill; a second rebuild started in
  // between owns the lists, and the first one stops.
  void aRebuildDuringARebuild() {
    Log l;
    TDirectoryPages &p = l.pages;
    l.Fill(20, [](int) { return 1; });
    bool nested = false;
    QObject context;
    connect(&p.lostIncom_LMDListBox, &QAbstractItemModel::rowsInserted, &context, [&] {
      if (!nested) {
        nested = true;
        QMetaObject::invokeMethod(
            &context, [&] { p.LoadConRecords(); }, Qt::QueuedConnection);
      }
    });
    p.LoadConRecords();
    QVERIFY(nested);
    QCOMPARE(p.lostIncom_LMDListBox.Count(), 20);
    QCOMPARE(p.lostIncom_LMDListBox.Item(0).Number, u"8000019"_s);
  }
};

QTEST_GUILESS_MAIN(CallLogTest)
#include "tst_calllog.moc"
