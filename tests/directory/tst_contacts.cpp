// The contact book on a real store: saving, new, delete, copy and paste, links,
// the searches with what an operator may type into them, the sort titles, the
// call lists following a changed contact, and the memo's find dialog.
#include "common/RecordingShell.h"
#include "common/PgStore.h"
#include "common/TestHome.h"
#include "directory/DirectoryPages.h"
#include "directory/MemoFind.h"
#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"

#include "common/StoreFixture.h"
#include <QSignalSpy>
#include <QSqlQuery>

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
struct Book {
  TestHome home;
  RecordingShell shell;
  bool packLoaded = (home.UseChinese(), true); // before the pages take their texts
  TDirectoryPages pages;

  Book() { Sys_DM().DataModuleCreate(); }

  // A contact written past the code under test.
  int Store(const QString &name, const QString &phone, const QString &mobile = {},
            const QString &company = {}) {
    return StoreContact(name, phone, mobile, company);
  }

  QStringList Column(const QString &sql) {
    QSqlQuery q(StoreConnection());
    QStringList values;
    if (q.exec(sql))
      while (q.next())
        values << q.value(0).toString();
    return values;
  }

  QStringList GridNames() {
    QStringList names;
    for (int r = 0; r < pages.MainInfo_DBAdvStringGrid.rowCount(); ++r)
      names << pages.MainInfo_DBAdvStringGrid.index(r, 0).data().toString();
    return names;
  }

  TLmdlistItemRam Row(const QString &number, const QString &contactId) {
    TLmdlistItemRam item;
    item.Number = number;
    item.Time = u"2024-3-5 09:07:02"_s;
    item.RowNo = u"7"_s;
    item.ContactID = contactId;
    return item;
  }
};
} // namespace

class ContactsTest : public QObject {
  Q_OBJECT

private slots:
  void savingNeedsANameOrATelephone_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("phone");
    QTest::addColumn<bool>("stored");
    QTest::newRow("name only") << u"张三"_s << QString() << true;
    QTest::newRow("telephone only") << QString() << u"8123"_s << true;
    QTest::newRow("neither") << QString() << QString() << false;
  }
  void savingNeedsANameOrATelephone() {
    QFETCH(QString, name);
    QFETCH(QString, phone);
    QFETCH(bool, stored);
    Book b;
    b.pages.MAT_Name_LMDEdit = name;
    b.pages.MAT_Phone1_LMDEdit = phone;
    b.pages.MAT_Company_LMDEdit = u"Acme"_s;
    b.pages.MatRecordChanged();
    b.pages.LMDButton26Click();
    QCOMPARE(b.Column(u"select Company from MainInfo"_s).size(), stored ? 1 : 0);
    QCOMPARE(b.shell.Messages.size(), 1);
    QCOMPARE(b.shell.Messages[0].Text, LangText(stored ? 264 : 262));
    QCOMPARE(b.pages.CurrentMatID == -1, !stored);
    QCOMPARE(b.pages.MatChanged, !stored);
  }

  void changingAStoredContact() {
    Book b;
    const int id = b.Store(u"李四"_s, u"02150001234"_s);
    b.pages.FindByName(u"李四"_s);
    b.pages.MainInfo_DBAdvStringGridDblClick(0);
    QCOMPARE(b.pages.CurrentMatID, id);
    QVERIFY(!b.pages.MatChanged);

    // Saving an unchanged contact writes nothing and shows nothing.
    b.pages.LMDButton26Click();
    QVERIFY(b.shell.Messages.isEmpty());

    b.pages.MAT_Duty_LMDEdit = u"经理"_s;
    b.pages.MatRecordChanged();
    b.pages.LMDButton26Click();
    QCOMPARE(b.Column(u"select Duty from MainInfo"_s), QStringList{u"经理"_s});
    QCOMPARE(b.shell.Messages.last().Text, LangText(267));
    // The open grid shows the change.
    QCOMPARE(b.pages.MainInfo_DBAdvStringGrid.index(0, 3).data().toString(), u"经理"_s);

    b.pages.MAT_Name_LMDEdit.clear();
    b.pages.MAT_Phone1_LMDEdit.clear();
    b.pages.MatRecordChanged();
    b.pages.LMDButton26Click();
    QCOMPARE(b.shell.Messages.last().Text, LangText(265));
    QCOMPARE(b.Column(u"select Name from MainInfo"_s), QStringList{u"李四"_s});
  }

  // Whatever the operator types into a field is stored and read back as typed.
  void awkwardTextIsStoredAsText_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("quote") << u"O'Brien"_s;
    QTest::newRow("double quote") << u"say \"hi\""_s;
    QTest::newRow("percent") << u"50%"_s;
    QTest::newRow("hash") << u"#2024-01-01#"_s;
    QTest::newRow("bracket") << u"a]b[c"_s;
    QTest::newRow("semicolon") << u"x'); delete from MainInfo; --"_s;
  }
  void awkwardTextIsStoredAsText() {
    QFETCH(QString, text);
    Book b;
    TDirectoryPages &p = b.pages;
    for (QString *field :
         {&p.MAT_Name_LMDEdit, &p.MAT_BranchTel_LMDEdit, &p.MAT_Phone1_LMDEdit,
          &p.MAT_Company_LMDEdit, &p.MAT_MobilePhone_LMDEdit, &p.MAT_Addres_LMDEdit,
          &p.MAT_Fax_LMDEdit, &p.MAT_Email_LMDEdit, &p.MAT_WEB_LMDEdit, &p.MAT_QQ_LMDEdit,
          &p.MAT_MSN_LMDEdit, &p.MAT_Duty_LMDEdit, &p.Mat_Memo_Memo, &p.Mat_IDCard_TeSEdit,
          &p.Mat_GrpName_TeSComboBox})
      *field = text;
    p.LMDButton26Click();
    const int id = p.CurrentMatID;
    QVERIFY(id > 0);
    p.LMDButton25Click();
    QCOMPARE(p.MAT_Name_LMDEdit, QString());

    p.FindByName(text);
    QCOMPARE(p.MainInfo_DBAdvStringGrid.rowCount(), 1);
    p.MainInfo_DBAdvStringGridDblClick(0);
    QCOMPARE(p.CurrentMatID, id);
    for (const QString &field :
         {p.MAT_Name_LMDEdit, p.MAT_BranchTel_LMDEdit, p.Mat_BranchTel_TeSComboBox,
          p.MAT_Phone1_LMDEdit, p.MAT_Company_LMDEdit, p.MAT_MobilePhone_LMDEdit,
          p.MAT_Addres_LMDEdit, p.MAT_Fax_LMDEdit, p.MAT_Email_LMDEdit, p.MAT_WEB_LMDEdit,
          p.MAT_QQ_LMDEdit, p.MAT_MSN_LMDEdit, p.MAT_Duty_LMDEdit, p.Mat_IDCard_TeSEdit,
          p.Mat_GrpName_TeSComboBox})
      QCOMPARE(field, text);
    // Saving writes the card's own memo (the copy command takes the call page's).
    QCOMPARE(p.Mat_Memo_Memo, text);
    QCOMPARE(p.Mat_GrpName_TeSComboBox_Items, QStringList{text});
  }

  // Each search box finds the one contact holding the text, and the statement is
  // never broken or steered by it.
  void everySearchBoxSearchesForWhatWasTyped_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("quote") << u"O'B"_s;
    QTest::newRow("double quote") << u"\"q\""_s;
    QTest::newRow("percent") << u"5%"_s;
    QTest::newRow("hash") << u"#1#"_s;
    QTest::newRow("bracket") << u"]x["_s;
    QTest::newRow("semicolon") << u"a; delete from MainInfo"_s;
    QTest::newRow("steering") << u"' or '1'='1"_s;
    QTest::newRow("function text") << u"cdate(a-b)"_s;
    QTest::newRow("outside the basic plane") << u"\U0001D7D8\U0001F600"_s;
  }
  void everySearchBoxSearchesForWhatWasTyped() {
    QFETCH(QString, text);
    Book b;
    TDirectoryPages &p = b.pages;
    // The wanted contact holds the text in every searched field.
    p.MAT_Name_LMDEdit = u"W"_s + text;
    p.MAT_BranchTel_LMDEdit = text;
    p.MAT_Phone1_LMDEdit = text;
    p.MAT_Company_LMDEdit = text;
    p.MAT_Addres_LMDEdit = text;
    p.MAT_MobilePhone_LMDEdit = text;
    p.MAT_Fax_LMDEdit = text;
    p.MAT_Duty_LMDEdit = text;
    p.Mat_IDCard_TeSEdit = text;
    p.Mat_GrpName_TeSComboBox = text;
    p.LMDButton26Click();
    p.LMDButton25Click();
    b.Store(u"Other"_s, u"777"_s, u"888"_s, u"Plain"_s);

    const auto found = [&](const char *what) {
      if (b.GridNames() != QStringList{u"W"_s + text})
        qWarning("%s found %s", what, qPrintable(b.GridNames().join(u',')));
      return b.GridNames() == QStringList{u"W"_s + text};
    };

    p.Find_Name_TeSComboBox = text;
    p.Find_Name_TeSComboBoxChange();
    QVERIFY(found("name"));
    p.MainInfo_DBAdvStringGrid.CloseQuery();
    p.Find_BranchTel_TeSComboBox = text;
    p.find_BranchTel_TeButtonClick();
    QVERIFY(found("extension"));
    p.MainInfo_DBAdvStringGrid.CloseQuery();
    p.Find_GrpName_TeSComboBox = text;
    p.findGrpname_TeButtonClick();
    QVERIFY(found("group"));
    p.MainInfo_DBAdvStringGrid.CloseQuery();
    // The searches started from a card or a task bring the search page forward.
    QSignalSpy toSearch(&p, &TDirectoryPages::pageRequested);
    p.MAT_Company_LMDEdit = u"  "_s + text + u"  "_s;
    p.LMDButton27Click();
    QVERIFY(found("company, contact page"));
    p.MainInfo_DBAdvStringGrid.CloseQuery();
    p.CON_Company_LMDEdit = u"unrelated"_s;
    p.CON_Company_SelText = text;
    p.LMDButton31Click();
    QVERIFY(found("company, call page"));
    p.MainInfo_DBAdvStringGrid.CloseQuery();
    p.FindByName(text);
    QVERIFY(found("FindByName"));
    QCOMPARE(toSearch.count(), 3);
    QCOMPARE(toSearch.last().at(0).value<TDirectoryPages::Page>(),
             TDirectoryPages::Page::Find_TeTabSheet);

    // The combined searches, one box at a time and all boxes but e-mail together.
    struct Box {
      bool *Check;
      QString *Text;
      bool InOr;
    };
    const QList<Box> boxes = {{&p.Find_Name_Check, &p.Find_Name_ComboBox, true},
                              {&p.Find_Phone1_Check, &p.Find_Phone1_ComboBox, true},
                              {&p.Find_Company_Check, &p.Find_Company_ComboBox, true},
                              {&p.Find_Address_Check, &p.Find_Address_ComboBox, true},
                              {&p.Find_MobilePhone_Check, &p.Find_MobilePhone_ComboBox, true},
                              {&p.Find_Fax_Check, &p.Find_Fax_ComboBox, true},
                              {&p.Find_Duty_Check, &p.Find_Duty_ComboBox, true},
                              {&p.Find_IDCard_Check, &p.Find_IDCard_TeSEdit, false}};
    for (const Box &box : boxes) {
      *box.Check = true;
      *box.Text = text;
      p.MainInfo_DBAdvStringGrid.CloseQuery();
      p.LMDButton28Click();
      QVERIFY(found("and"));
      if (box.InOr) {
        p.MainInfo_DBAdvStringGrid.CloseQuery();
        p.LMDButton38Click();
        QVERIFY(found("or"));
      }
      *box.Check = false;
    }
    for (const Box &box : boxes)
      *box.Check = true;
    p.LMDButton28Click();
    QVERIFY(found("and, all boxes"));
    QCOMPARE(b.shell.Messages.size(), 1); // the "added" note, no error
    QCOMPARE(b.shell.Messages[0].Text, LangText(264));
    QCOMPARE(b.Column(u"select count(*) from MainInfo"_s), QStringList{u"2"_s});
  }

  // A NUL can't be stored or searched for; it is dropped from both, so the text
  // around it is stored and found, and the statement is never cut short.
  void nulInTypedTextIsDropped() {
    Book b;
    TDirectoryPages &p = b.pages;
    const QString typed = u"ab"_s + QChar(0) + u"cd"_s;
    p.MAT_Name_LMDEdit = typed;
    p.LMDButton26Click();
    QCOMPARE(b.Column(u"select Name from MainInfo"_s), QStringList{u"abcd"_s});
    p.Find_Name_TeSComboBox = typed;
    p.FindName_TeButtonClick();
    QCOMPARE(b.GridNames(), QStringList{u"abcd"_s});
    p.FindByName(u"b"_s + QChar(0) + u"c"_s);
    QCOMPARE(b.GridNames(), QStringList{u"abcd"_s});
    QCOMPARE(b.shell.Messages.size(), 1); // the "added" note, no error
  }

  void combinedSearchStatements() {
    Book b;
    TDirectoryPages &p = b.pages;
    p.Find_Name_Check = true;
    p.Find_Name_ComboBox = u"张"_s;
    p.Find_Phone1_Check = true; // ticked but empty: no clause
    p.Find_Duty_Check = false;
    p.Find_Duty_ComboBox = u"经理"_s; // text but not ticked: no clause
    p.Find_IDCard_Check = true;
    p.Find_IDCard_TeSEdit = u"110"_s;
    QCOMPARE(p.AndSearchSQL(), u"select * from Maininfo where (1=1) and (name like \"%张%\")and "
                               u"(IDCard like \"%110%\")"_s);
    QCOMPARE(p.OrSearchSQL(), u"select * from Maininfo where (1<>1) or (name like \"%张%\")"_s);
  }

  // The e-mail box names a column the book doesn't have: the operator sees the
  // engine's error and the console goes on.
  void emailClauseErrorReachesTheOperator() {
    Book b;
    b.Store(u"A"_s, u"1"_s);
    TDirectoryPages &p = b.pages;
    p.Find_Name_TeSComboBox = u"A"_s;
    p.FindName_TeButtonClick();
    const QString before = p.LastMainInfoSQL;
    p.Find_Email_Check = true;
    p.Find_Email_LMDEdit = u"a@b"_s;
    p.LMDButton28Click();
    QCOMPARE(b.shell.Messages.size(), 1);
    QCOMPARE(b.shell.Messages[0].Kind, MessageKind::Error);
    QVERIFY(b.shell.Messages[0].Text.contains(u"Email"_s, Qt::CaseInsensitive));
    QVERIFY(!p.MainInfo_DBAdvStringGrid.Active());
    QCOMPARE(p.LastMainInfoSQL, before);
    p.LMDButton38Click();
    QCOMPARE(b.shell.Messages.size(), 2);
  }

  void sortTitlesAndDirections() {
    Book b;
    b.Store(u"Bob"_s, u"2"_s);
    b.Store(u"Ann"_s, u"1"_s);
    b.Store(u"Cid"_s, u"3"_s);
    b.Store(u"Zed"_s, u"9"_s);
    TDirectoryPages &p = b.pages;
    TContactGridModel &grid = p.MainInfo_DBAdvStringGrid;

    // A closed grid has nothing to sort.
    p.MainInfo_DBAdvStringGridCanSort(0);
    QCOMPARE(grid.Titles[0], LangText(353));
    QVERIFY(!grid.Active());

    // A sort keeps the search's rows.
    p.Find_Name_TeSComboBox = u"d"_s;
    p.FindName_TeButtonClick();
    p.MainInfo_DBAdvStringGridCanSort(0);
    QCOMPARE(b.GridNames(), (QStringList{u"Cid"_s, u"Zed"_s}));
    p.MainInfo_DBAdvStringGridCanSort(0);
    QCOMPARE(b.GridNames(), (QStringList{u"Zed"_s, u"Cid"_s}));

    p.Find_Name_TeSComboBox = u"%"_s;
    p.FindName_TeButtonClick();
    const QString search = p.LastMainInfoSQL;
    QCOMPARE(grid.Titles[0], LangText(353));
    p.MainInfo_DBAdvStringGridCanSort(0);
    QCOMPARE(grid.Titles[0], LangText(352) + LangText(353));
    QCOMPARE(b.GridNames(), (QStringList{u"Ann"_s, u"Bob"_s, u"Cid"_s, u"Zed"_s}));
    p.MainInfo_DBAdvStringGridCanSort(0);
    QCOMPARE(grid.Titles[0], u"▼"_s + LangText(353));
    QCOMPARE(b.GridNames(), (QStringList{u"Zed"_s, u"Cid"_s, u"Bob"_s, u"Ann"_s}));
    QCOMPARE(p.LastMainInfoSQL, search); // never takes the order

    // Another column resets the first one's title.
    p.MainInfo_DBAdvStringGridCanSort(4);
    QCOMPARE(grid.Titles[0], LangText(353));
    QCOMPARE(grid.Titles[4], LangText(352) + LangText(357));
    QCOMPARE(grid.Titles[5], u"E-Mail"_s);
    QCOMPARE(b.GridNames(), (QStringList{u"Ann"_s, u"Bob"_s, u"Cid"_s, u"Zed"_s}));

    // A new search resets the titles but not the flags: column 0 sorted up last
    // and now goes down.
    p.MainInfo_DBAdvStringGridCanSort(0);
    QCOMPARE(b.GridNames().first(), u"Ann"_s);
    p.FindName_TeButtonClick();
    QCOMPARE(grid.Titles[0], LangText(353));
    p.MainInfo_DBAdvStringGridCanSort(0);
    QCOMPARE(b.GridNames().first(), u"Zed"_s);

    // A company search that finds nothing leaves the last search to sort.
    p.MAT_Company_LMDEdit = u"nobody"_s;
    p.LMDButton27Click();
    QCOMPARE(grid.rowCount(), 0);
    QCOMPARE(p.LastMainInfoSQL, search);
  }

  void newContactAsksToSaveAChangedCard_data() {
    QTest::addColumn<bool>("changed");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("saved");
    QTest::addColumn<bool>("cleared");
    QTest::newRow("unchanged") << false << false << false << false << true;
    QTest::newRow("changed, yes") << true << true << true << true << false;
    QTest::newRow("changed, no") << true << false << true << false << true;
  }
  void newContactAsksToSaveAChangedCard() {
    QFETCH(bool, changed);
    QFETCH(bool, answer);
    QFETCH(bool, asked);
    QFETCH(bool, saved);
    QFETCH(bool, cleared);
    Book b;
    b.shell.Answer = answer;
    b.pages.MAT_Name_LMDEdit = u"王五"_s;
    b.pages.MatChanged = changed;
    b.pages.LMDButton25Click();
    QCOMPARE(b.shell.Questions, asked ? QStringList{LangText(270)} : QStringList{});
    QCOMPARE(b.Column(u"select Name from MainInfo"_s).size(), saved ? 1 : 0);
    QCOMPARE(b.pages.MAT_Name_LMDEdit.isEmpty(), cleared);
    if (cleared)
      QCOMPARE(b.pages.CurrentMatID, -1);
  }

  void deletingAContact_data() {
    QTest::addColumn<bool>("fromMenu");
    QTest::addColumn<bool>("answer");
    QTest::newRow("button, no") << false << false;
    QTest::newRow("button, yes") << false << true;
    QTest::newRow("menu, yes") << true << true;
  }
  void deletingAContact() {
    QFETCH(bool, fromMenu);
    QFETCH(bool, answer);
    Book b;
    TDirectoryPages &p = b.pages;
    const int id = b.Store(u"赵六"_s, u"02150001234"_s);
    b.Store(u"钱七"_s, u"5555"_s);
    p.FindByName(u"赵六"_s);
    p.MainInfo_DBAdvStringGridDblClick(0);
    TLmdlistItemRam bound = b.Row(u"50001234"_s, QString::number(id));
    bound.Name = u"赵六"_s;
    p.Incomed_LMDListBox.Add(bound);
    p.dialOut_LMDListBox.Add(b.Row(u"50001234"_s, u"-1"_s));

    b.shell.Answer = answer;
    fromMenu ? p.N3Click() : p.TeSpeedButton6Click();
    QCOMPARE(b.shell.Questions, QStringList{LangFormat(fromMenu ? 332 : 348, {u"赵六"_s})});
    QCOMPARE(b.Column(u"select Name from MainInfo order by ID"_s),
             answer ? QStringList{u"钱七"_s} : (QStringList{u"赵六"_s, u"钱七"_s}));
    QCOMPARE(p.MainInfo_DBAdvStringGrid.rowCount(), answer ? 0 : 1);
    QCOMPARE(p.CurrentMatID, answer ? -1 : id);
    QCOMPARE(p.MAT_Name_LMDEdit.isEmpty(), answer);
    QCOMPARE(p.Incomed_LMDListBox.Item(0).Name.isEmpty(), answer);
    QCOMPARE(p.Incomed_LMDListBox.Item(0).ContactID.isEmpty(), answer);
    QCOMPARE(p.Incomed_LMDListBox.Item(0).Number, u"50001234"_s);
    QCOMPARE(p.dialOut_LMDListBox.Item(0).ContactID, u"-1"_s);
  }

  void copyAndPaste() {
    Book b;
    TDirectoryPages &p = b.pages;
    p.MAT_Name_LMDEdit = u"甲"_s;
    p.MAT_Phone1_LMDEdit = u"111"_s;
    p.MAT_MobilePhone_LMDEdit = u"13900001111"_s;
    p.MAT_Company_LMDEdit = u"公司"_s;
    p.MAT_Addres_LMDEdit = u"路1号"_s;
    p.MAT_QQ_LMDEdit = u"12345"_s;
    p.MAT_MSN_LMDEdit = u"a@msn"_s;
    p.Mat_Memo_Memo = u"card memo"_s;
    p.CON_Memo_Memo = u"call memo"_s;
    p.CurrentMatID = 5;
    p.N4Click();
    QCOMPARE(p.MatHoldRecord.Memo, u"call memo"_s);

    p.ClearMatFields();
    p.CurrentMatID = -1;
    p.MAT_Name_LMDEdit = u"乙"_s;
    p.MAT_QQ_LMDEdit = u"999"_s;
    p.N8Click();
    QCOMPARE(p.CurrentMatID, -1);
    QCOMPARE(p.MAT_Name_LMDEdit, u"乙"_s);
    QCOMPARE(p.MAT_Phone1_LMDEdit, QString());
    QCOMPARE(p.MAT_MobilePhone_LMDEdit, QString());
    QCOMPARE(p.MAT_QQ_LMDEdit, QString());
    QCOMPARE(p.MAT_MSN_LMDEdit, QString());
    QCOMPARE(p.MAT_Company_LMDEdit, u"公司"_s);
    QCOMPARE(p.MAT_Addres_LMDEdit, u"路1号"_s);
    QCOMPARE(p.Mat_Memo_Memo, u"call memo"_s);
    QVERIFY(p.MatChanged);
    for (const QString &f : {p.MatHoldRecord.Name, p.MatHoldRecord.Phone1,
                             p.MatHoldRecord.MobilePhone, p.MatHoldRecord.QQ, p.MatHoldRecord.MSN})
      QVERIFY(f.isEmpty());
  }

  void linksOfTheSharedField_data() {
    QTest::addColumn<QString>("entry");
    QTest::addColumn<int>("tag");
    QTest::addColumn<QString>("opened");
    QTest::newRow("e-mail") << LangText(268) << 0 << u"mailto:a@b.cn"_s;
    QTest::newRow("web") << LangText(269) << 1 << u"http://www.b.cn"_s;
    QTest::newRow("first messenger") << u"QQ"_s << 2 << u"http://im.host/msgrd?V=1&Uin=12345"_s;
    QTest::newRow("second messenger") << u"MSN"_s << 3 << QString();
  }
  void linksOfTheSharedField() {
    QFETCH(QString, entry);
    QFETCH(int, tag);
    QFETCH(QString, opened);
    Book b;
    // The data rows were built before the pack loaded; take the captions again.
    if (tag < 2)
      entry = LangText(268 + tag);
    TDirectoryPages &p = b.pages;
    p.ImLinkHost = u"im.host"_s;
    p.MAT_Email_LMDEdit = p.CON_Email_LMDEdit = u"a@b.cn"_s;
    p.MAT_WEB_LMDEdit = p.CON_Web_LMDEdit = u"www.b.cn"_s;
    p.MAT_QQ_LMDEdit = p.CON_QQ_LMDEdit = u"12345"_s;
    p.MAT_MSN_LMDEdit = p.CON_MSN_LMDEdit = u"m@msn"_s;
    p.ok1Click(entry);
    p.ok2Click(entry);
    QCOMPARE(p.Inernet_LMDButton_Tag, tag);
    QCOMPARE(p.Con_Inernet_LMDButton_Tag, tag);
    QCOMPARE(p.Inernet_LMDButton_Caption, entry);
    p.Inernet_LMDButtonClick();
    p.Con_Inernet_LMDButtonClick();
    QCOMPARE(b.shell.Opened, opened.isEmpty() ? QStringList() : (QStringList{opened, opened}));

    // An empty edit opens nothing.
    b.shell.Opened.clear();
    p.MAT_Email_LMDEdit.clear();
    p.MAT_WEB_LMDEdit.clear();
    p.MAT_QQ_LMDEdit.clear();
    p.Inernet_LMDButtonClick();
    QVERIFY(b.shell.Opened.isEmpty());
  }

  void numberMatching_data() {
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("phone");
    QTest::addColumn<QString>("mobile");
    QTest::addColumn<bool>("matches");
    QTest::newRow("long in long") << u"50001234"_s << u"02150001234"_s << QString() << true;
    QTest::newRow("short tail, long candidate")
        << u"1234"_s << u"02150001234"_s << QString() << false;
    QTest::newRow("two short") << u"123"_s << u"8123"_s << QString() << true;
    QTest::newRow("long number, short candidate")
        << u"13900008123"_s << u"8123"_s << QString() << false;
    QTest::newRow("mobile") << u"013900001111"_s << u"8123"_s << u"13900001111"_s << true;
    QTest::newRow("last seven only") << u"99990001111"_s << QString() << u"13900001111"_s << true;
    QTest::newRow("different") << u"13900001112"_s << QString() << u"13900001111"_s << false;
  }
  void numberMatching() {
    QFETCH(QString, number);
    QFETCH(QString, phone);
    QFETCH(QString, mobile);
    QFETCH(bool, matches);
    TMaininfoRecord c;
    c.Phone1 = phone;
    c.MobilePhone = mobile;
    QCOMPARE(NumberMatchesContact(number, c), matches);
  }

  void callListsFollowContacts() {
    Book b;
    TDirectoryPages &p = b.pages;
    TCallListModel &lists = p.lostIncom_LMDListBox;
    lists.Add(b.Row(u"50001234"_s, QString())); // free, matches
    lists.Add(b.Row(u"1234"_s, QString()));     // free, tail too short
    lists.Add(b.Row(u"50001234"_s, u"-1"_s));   // built during the run
    p.Incomed_LMDListBox.Add(b.Row(u"50001234"_s, QString()));

    p.MAT_Name_LMDEdit = u"孙八"_s;
    p.MAT_Phone1_LMDEdit = u"02150001234"_s;
    p.MAT_Company_LMDEdit = u"公司"_s;
    p.LMDButton26Click();
    const QString id = QString::number(p.CurrentMatID);
    QCOMPARE(lists.Item(0).Name, u"孙八"_s);
    QCOMPARE(lists.Item(0).Telephone, u"02150001234"_s);
    QCOMPARE(lists.Item(0).Company, u"公司"_s);
    QCOMPARE(lists.Item(0).ContactID, id);
    QCOMPARE(lists.Item(0).Time, u"2024-3-5 09:07:02"_s);
    QCOMPARE(lists.Item(1).Name, QString());
    QCOMPARE(lists.Item(2).Name, QString());
    QCOMPARE(lists.Item(2).ContactID, u"-1"_s);
    QCOMPARE(p.Incomed_LMDListBox.Item(0).Name, u"孙八"_s);

    // A new name reaches the bound rows.
    p.MAT_Name_LMDEdit = u"孙九"_s;
    p.MatRecordChanged();
    p.LMDButton26Click();
    QCOMPARE(lists.Item(0).Name, u"孙九"_s);

    // A number that no longer matches sets the bound row free; it keeps its
    // number and time.
    lists.Add(b.Row(u"0007777"_s, QString())); // free, will match the new number
    p.MAT_Phone1_LMDEdit = u"02160007777"_s;
    p.MatRecordChanged();
    p.LMDButton26Click();
    const TLmdlistItemRam freed = lists.Item(0);
    QCOMPARE(freed.Name, QString());
    QCOMPARE(freed.Telephone, QString());
    QCOMPARE(freed.Company, QString());
    QCOMPARE(freed.ContactID, QString());
    QCOMPARE(freed.Number, u"50001234"_s);
    QCOMPARE(freed.Time, u"2024-3-5 09:07:02"_s);
    QCOMPARE(lists.Item(3).Name, u"孙九"_s);
    QCOMPARE(lists.Item(3).ContactID, id);
  }

  void groupNamesFillTheThreeLists() {
    Book b;
    QSqlQuery q(StoreConnection());
    QVERIFY(q.exec(u"INSERT INTO MainInfo (Name, GrpName) VALUES ('a','客户'),('b',''),"
                   u"('c',NULL),('d','供应商'),('e','客户')"_s));
    b.pages.RefreshGroupNames();
    const QStringList expected =
        b.Column(u"SELECT DISTINCT GrpName FROM MainInfo WHERE GrpName <> '' ORDER BY GrpName"_s);
    QCOMPARE(expected.size(), 2);
    QCOMPARE(b.pages.Mat_GrpName_TeSComboBox_Items, expected);
    QCOMPARE(b.pages.Con_GrpName_TeSComboBox_Items, expected);
    QCOMPARE(b.pages.Find_GrpName_TeSComboBox_Items, expected);
  }

  void gridRowToTasksAndMobileMenu() {
    Book b;
    TDirectoryPages &p = b.pages;
    QVERIFY(!p.N12_Enabled());
    b.Store(u"周"_s, u"1"_s);
    p.FindByName(u"周"_s);
    QVERIFY(p.N12_Enabled());
    QSignalSpy task(&p, &TDirectoryPages::taskContactChosen);
    p.N12Click();
    QCOMPARE(task.size(), 1);
    QCOMPARE(task[0][0].toString(), u"周"_s);

    QStringList dialled;
    p.DialNumber = [&](const QString &n) { dialled << n; };
    QSignalSpy sms(&p, &TDirectoryPages::smsRequested);
    p.CON_MobilePhone_LMDEdit = u" 013900001111 "_s;
    p.CON_MobilePhone_SelText = u"13900001111"_s;
    p.Mobile_PopupMenu_Tag = 0;
    p.N14Click();
    p.N13Click();
    QCOMPARE(sms[0][0].toString(), u"13900001111"_s);
    QCOMPARE(dialled, (QStringList{u" 013900001111 "_s, u"13900001111"_s}));
    dialled.clear();
    p.MAT_MobilePhone_LMDEdit = u"0123456789"_s; // ten: the 0 stays
    p.Mobile_PopupMenu_Tag = 1;
    p.N14Click();
    p.N13Click();
    QCOMPARE(sms[1][0].toString(), u"0123456789"_s);
    QCOMPARE(dialled, QStringList{u"0123456789"_s});
  }

  void memoFind() {
    Book b;
    TDirectoryPages &p = b.pages;
    p.Mat_Memo_Memo = u"Call Bob back\nbob's fax\nAsk bob about the bobsled"_s;
    p.LMDButton29Click(u"bob"_s);
    TMemoFind &find = p.FindDialog1;
    QVERIFY(p.FindDialog1Find());
    QCOMPARE(find.SelStart, 5);
    QVERIFY(p.FindDialog1Find());
    QCOMPARE(find.SelStart, 15); // 13 characters and a line end of two
    find.MatchCase = true;
    p.FindDialog1_FindText = u"Bob"_s;
    QVERIFY(!p.FindDialog1Find());
    QCOMPARE(b.shell.Messages.last().Text, LangText(271));

    find.MatchCase = false;
    find.WholeWord = true;
    p.LMDButton29Click(u" bob "_s);
    QVERIFY(p.FindDialog1Find());
    QCOMPARE(find.FoundLine, 0);
    QVERIFY(p.FindDialog1Find());
    QCOMPARE(find.FoundLine, 2);
    QCOMPARE(find.FoundColumn, 3);
    QCOMPARE(find.SelLength, 5);

    // Upward from behind the last hit.
    find.WholeWord = false;
    find.Down = false;
    p.FindDialog1_FindText = u"bob"_s;
    const std::pair<int, int> upward[] = {{2, 4}, {1, 0}, {0, 5}};
    for (const auto &[line, column] : upward) {
      QVERIFY(p.FindDialog1Find());
      QCOMPARE(find.FoundLine, line);
      QCOMPARE(find.FoundColumn, column);
    }
    QVERIFY(!p.FindDialog1Find());
    QCOMPARE(b.shell.Messages.last().Text, LangText(272));
  }

  // The screens show the cards again when told; what they are told last must
  // be the operation's end state, or a field set after the signal stays unseen.
  void cardChangesReachTheScreens_data() {
    QTest::addColumn<int>("operation");
    const char *const names[] = {"known caller",
                                 "unknown caller",
                                 "caller to contact card",
                                 "grid double click",
                                 "new",
                                 "save a new contact",
                                 "paste",
                                 "messenger choice",
                                 "delete the card's contact"};
    for (int i = 0; i < int(std::size(names)); ++i)
      QTest::newRow(names[i]) << i;
  }
  void cardChangesReachTheScreens() {
    QFETCH(int, operation);
    Book b;
    b.shell.Answer = true;
    TDirectoryPages &p = b.pages;
    const int id = b.Store(u"李雷"_s, u"02150001111"_s, u"13900001111"_s, u"海港"_s);
    p.FindByName(u"李"_s);
    const auto state = [&p] {
      TMaininfoRecord r;
      p.GetMatRecord(r);
      TMaininfoRecord c;
      p.GetConRecord(c);
      return QStringList{r.Name,
                         r.Phone1,
                         r.MobilePhone,
                         r.QQ,
                         p.Mat_Memo_Memo,
                         QString::number(p.CurrentMatID),
                         c.Name,
                         c.Phone1,
                         p.ConEdit_LMDButton_Caption,
                         p.Inernet_LMDButton_Caption,
                         p.Con_Inernet_LMDButton_Caption,
                         p.Mat_GrpName_TeSComboBox_Items.join(u'|')};
    };
    QStringList told;
    connect(&p, &TDirectoryPages::cardsChanged, &p, [&] { told = state(); });
    switch (operation) {
    case 0:
      p.ShowCallerInfo(u"Phone1"_s, u"13900001111"_s);
      break;
    case 1:
      p.ShowCallerInfo(u"Phone1"_s, u"8000"_s);
      break;
    case 2:
      p.ShowCallerInfo(u"Phone1"_s, u"13900001111"_s);
      p.ConEdit_LMDButtonClick();
      break;
    case 3:
      p.MainInfo_DBAdvStringGridDblClick(0);
      break;
    case 4:
      p.MAT_Name_LMDEdit = u"typed"_s;
      p.LMDButton25Click();
      break;
    case 5:
      p.MAT_Name_LMDEdit = u"新人"_s;
      p.Mat_GrpName_TeSComboBox = u"VIP"_s;
      p.LMDButton26Click();
      break;
    case 6:
      p.MAT_Company_LMDEdit = u"公司"_s;
      p.N4Click();
      p.MAT_Name_LMDEdit = u"乙"_s;
      p.N8Click();
      break;
    case 7:
      p.ok1Click(u"QQ"_s);
      p.ok2Click(LangText(269));
      break;
    case 8:
      p.MainInfo_DBAdvStringGridDblClick(0);
      QCOMPARE(p.CurrentMatID, id);
      p.TeSpeedButton6Click();
      break;
    }
    QVERIFY(!told.isEmpty());
    QCOMPARE(told, state());
  }
};

QTEST_GUILESS_MAIN(ContactsTest)
#include "tst_contacts.moc"
