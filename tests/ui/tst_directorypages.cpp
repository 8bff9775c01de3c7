// The directory pages as the operator meets them, driven through objectNames:
// typing and saving a contact, finding it, sorting and opening it from the grid,
// a caller's lookup reaching the call card, the shared messenger field, the
// mobile menus of the two cards, the memo's find dialog, and the language texts
// reaching every control.
#include "common/Controls.h"
#include "common/RecordingShell.h"
#include "common/StoreFixture.h"
#include "common/TestHome.h"
#include "directory/DirectoryPages.h"
#include "directory/SysDM_Unit.h"
#include "support/FormLogic.h"
#include "support/LanguagePack.h"
#include "ui/DirectoryView.h"
#include "ui/LanguageBinding.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableView>
#include <QTest>
#include <QTextBlock>

using namespace Qt::StringLiterals;

namespace {
// The three pages in a tab widget as the main window holds them.
struct Desk {
  TestHome home;
  RecordingShell shell;
  bool packLoaded = (home.UseChinese(), true); // before the pages take their texts
  bool storeOpen = (Sys_DM().DataModuleCreate(), true);
  TFormLogic mainForm{"TMain_Form"}; // whose texts a language switch sets
  TDirectoryPages pages;
  QTabWidget tabs;

  Desk() {
    for (QWidget *page : BuildDirectoryPages(pages, &tabs))
      tabs.addTab(page, page->windowTitle());
    QObject::connect(&pages, &TDirectoryPages::pageRequested, &tabs,
                     [this](TDirectoryPages::Page page) { tabs.setCurrentIndex(int(page)); });
    tabs.resize(1000, 480);
    tabs.show();
  }

  QWidget *Page(const QString &name) { return Control<QWidget>(&tabs, name); }
  QTableView *Grid() { return Control<QTableView>(&tabs, u"MainInfo_DBAdvStringGrid"_s); }
  QStringList GridColumn(int column) {
    QStringList cells;
    QAbstractItemModel *m = Grid()->model();
    for (int r = 0; r < m->rowCount(); ++r)
      cells << m->index(r, column).data().toString();
    return cells;
  }
  void SearchName(const QString &text) {
    auto *box = Control<QComboBox>(&tabs, u"Find_Name_TeSComboBox"_s);
    box->lineEdit()->clear();
    QTest::keyClicks(box->lineEdit(), text);
  }
};

bool HasChinese(const QString &text) {
  for (QChar c : text)
    if (c.unicode() >= 0x4E00 && c.unicode() <= 0x9FFF)
      return true;
  return false;
}
} // namespace

class DirectoryPagesTest : public QObject {
  Q_OBJECT

private slots:
  void typedContactIsSavedAndFound() {
    Desk d;
    QWidget *card = d.Page(u"Mat_TeTabSheet"_s);
    d.tabs.setCurrentWidget(card);
    QTest::keyClicks(Control<QLineEdit>(card, u"MAT_Name_LMDEdit"_s), u"Wang Fang"_s);
    QTest::keyClicks(Control<QLineEdit>(card, u"MAT_Phone1_LMDEdit"_s), u"02150001234"_s);
    QTest::keyClicks(Control<QComboBox>(card, u"Mat_GrpName_TeSComboBox"_s)->lineEdit(), u"VIP"_s);
    QTest::keyClicks(Control<QPlainTextEdit>(card, u"Mat_Memo_Memo"_s), u"prefers mornings"_s);
    QVERIFY(d.pages.MatChanged);
    QCOMPARE(d.pages.MAT_Name_LMDEdit, u"Wang Fang"_s);

    QTest::mouseClick(Control<QPushButton>(card, u"LMDButton26"_s), Qt::LeftButton);
    QCOMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages.first().Text, LangText(264));
    QVERIFY(d.pages.CurrentMatID > 0);
    // The card now shows the stored contact's number, and every group list the
    // new group.
    QCOMPARE(Control<QLabel>(card, u"CurrentMatID_Label"_s)->text(),
             QString::number(d.pages.CurrentMatID));
    QCOMPARE(Control<QComboBox>(&d.tabs, u"Find_GrpName_TeSComboBox"_s)->findText(u"VIP"_s), 0);

    d.SearchName(u"Fang"_s);
    QCOMPARE(d.GridColumn(0), QStringList{u"Wang Fang"_s});
    QCOMPARE(d.Grid()->currentIndex().row(), 0);
    TADOQuery stored;
    Sys_DM().OpenSQL(u"select * from MainInfo"_s, stored);
    QCOMPARE(stored.AsString(u"Memo"_s), u"prefers mornings"_s);
    QCOMPARE(stored.AsString(u"GrpName"_s), u"VIP"_s);
  }

  void titleClickSortsAndTheCursorFollowsTheGrid() {
    Desk d;
    d.tabs.setCurrentWidget(d.Page(u"Find_TeTabSheet"_s));
    for (const QString &name : {u"Bo"_s, u"Al"_s, u"Cy"_s})
      StoreContact(name, u"8100"_s);
    d.SearchName(u"%"_s);
    QCOMPARE(d.GridColumn(0).size(), 3);
    QHeaderView *titles = d.Grid()->horizontalHeader();
    const QPoint onName(titles->sectionViewportPosition(0) + 10, titles->height() / 2);

    QTest::mouseClick(titles->viewport(), Qt::LeftButton, {}, onName);
    QCOMPARE(d.GridColumn(0), (QStringList{u"Al"_s, u"Bo"_s, u"Cy"_s}));
    const QString plain = TContactGridModel::PlainTitle(0);
    QCOMPARE(d.Grid()->model()->headerData(0, Qt::Horizontal).toString(), LangText(352) + plain);

    QTest::mouseClick(titles->viewport(), Qt::LeftButton, {}, onName);
    QCOMPARE(d.GridColumn(0), (QStringList{u"Cy"_s, u"Bo"_s, u"Al"_s}));
    QCOMPARE(d.Grid()->model()->headerData(0, Qt::Horizontal).toString(), u"▼"_s + plain);

    // The row the keys and menus act on is the one the grid shows as current.
    QTest::mouseClick(Control<QPushButton>(&d.tabs, u"TeSpeedButton5"_s), Qt::LeftButton);
    QCOMPARE(d.Grid()->currentIndex().row(), 2);
    const QRect middle = d.Grid()->visualRect(d.Grid()->model()->index(1, 2));
    QTest::mouseClick(d.Grid()->viewport(), Qt::LeftButton, {}, middle.center());
    QCOMPARE(d.pages.MainInfo_DBAdvStringGrid.CurrentRow(), 1);
    QCOMPARE(d.pages.MainInfo_ADOQuery.AsString(u"Name"_s), u"Bo"_s);
  }

  void gridRowOpensOnTheContactCard() {
    Desk d;
    StoreContact(u"Li Lei"_s, u"8101"_s, u"13900001111"_s, u"Harbour Hotel"_s, QString(),
                 u"line one\nline two"_s);
    d.tabs.setCurrentWidget(d.Page(u"Find_TeTabSheet"_s));
    d.SearchName(u"Li"_s);
    QTableView *grid = d.Grid();
    const QRect row = grid->visualRect(grid->model()->index(0, 0));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, row.center());

    QWidget *card = d.Page(u"Mat_TeTabSheet"_s);
    QCOMPARE(d.tabs.currentWidget(), card);
    QCOMPARE(Control<QLineEdit>(card, u"MAT_Name_LMDEdit"_s)->text(), u"Li Lei"_s);
    QCOMPARE(Control<QLineEdit>(card, u"MAT_MobilePhone_LMDEdit"_s)->text(), u"13900001111"_s);
    QCOMPARE(Control<QLineEdit>(card, u"MAT_Company_LMDEdit"_s)->text(), u"Harbour Hotel"_s);
    QCOMPARE(Control<QPlainTextEdit>(card, u"Mat_Memo_Memo"_s)->toPlainText(),
             u"line one\nline two"_s);
    // Showing a stored contact is no change of it; the operator's typing is.
    QVERIFY(!d.pages.MatChanged);
    QTest::keyClicks(Control<QLineEdit>(card, u"MAT_Fax_LMDEdit"_s), u"5"_s);
    QVERIFY(d.pages.MatChanged);

    // "新 增" after the change asks first; "no" empties every edit of the card.
    QTest::mouseClick(Control<QPushButton>(card, u"LMDButton25"_s), Qt::LeftButton);
    QCOMPARE(d.shell.Questions, QStringList{LangText(270)});
    for (QLineEdit *edit : card->findChildren<QLineEdit *>())
      QVERIFY2(edit->text().isEmpty(), qPrintable(edit->objectName()));
    QVERIFY(Control<QPlainTextEdit>(card, u"Mat_Memo_Memo"_s)->toPlainText().isEmpty());
  }

  void callerLookupFillsTheCallCard_data() {
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("phone");
    QTest::addColumn<int>("captionKey");
    QTest::newRow("known") << u"13900001111"_s << u"Li Lei"_s << u"02150001111"_s << 276;
    QTest::newRow("unknown") << u"13800009999"_s << QString() << u"13800009999"_s << 275;
  }
  void callerLookupFillsTheCallCard() {
    QFETCH(QString, number);
    QFETCH(QString, name);
    QFETCH(QString, phone);
    QFETCH(int, captionKey);
    Desk d;
    StoreContact(u"Li Lei"_s, u"02150001111"_s, u"13900001111"_s, u"Harbour Hotel"_s);
    QWidget *card = d.Page(u"Con_TeTabSheet"_s);
    // What the previous call left must go when the next caller is unknown.
    QTest::keyClicks(Control<QLineEdit>(card, u"CON_Company_LMDEdit"_s), u"old"_s);

    d.pages.ShowCallerInfo(u"Phone1"_s, number);
    QCOMPARE(Control<QLineEdit>(card, u"CON_Name_LMDEdit"_s)->text(), name);
    QCOMPARE(Control<QLineEdit>(card, u"CON_Phone1_LMDEdit"_s)->text(), phone);
    QCOMPARE(Control<QLineEdit>(card, u"CON_Company_LMDEdit"_s)->text(),
             name.isEmpty() ? QString() : u"Harbour Hotel"_s);
    auto *addOrEdit = Control<QPushButton>(card, u"ConEdit_LMDButton"_s);
    QCOMPARE(addOrEdit->text(), LangText(captionKey));

    // The caller goes over to the contact card, as a new contact or an edit.
    QTest::mouseClick(addOrEdit, Qt::LeftButton);
    QWidget *contact = d.Page(u"Mat_TeTabSheet"_s);
    QCOMPARE(d.tabs.currentWidget(), contact);
    QCOMPARE(Control<QLineEdit>(contact, u"MAT_Phone1_LMDEdit"_s)->text(), phone);
    QCOMPARE(Control<QLabel>(contact, u"CurrentMatID_Label"_s)->text().isEmpty(), name.isEmpty());
  }

  void sharedFieldFollowsItsMenu_data() {
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("edit");
    QTest::addColumn<QString>("button");
    QTest::newRow("call card, web") << u"Con_TeTabSheet"_s << u"MenuItem2"_s << u"CON_Web_LMDEdit"_s
                                    << u"Con_Inernet_LMDButton"_s;
    QTest::newRow("call card, QQ")
        << u"Con_TeTabSheet"_s << u"QQ2"_s << u"CON_QQ_LMDEdit"_s << u"Con_Inernet_LMDButton"_s;
    QTest::newRow("contact card, MSN")
        << u"Mat_TeTabSheet"_s << u"MSN1"_s << u"MAT_MSN_LMDEdit"_s << u"Inernet_LMDButton"_s;
  }
  void sharedFieldFollowsItsMenu() {
    QFETCH(QString, page);
    QFETCH(QString, entry);
    QFETCH(QString, edit);
    QFETCH(QString, button);
    Desk d;
    QWidget *card = d.Page(page);
    d.tabs.setCurrentWidget(card);
    QAction *choice = Control<QAction>(card, entry);
    choice->trigger();
    auto *shown = Control<QLineEdit>(card, edit);
    QCOMPARE(qobject_cast<QStackedWidget *>(shown->parentWidget())->currentWidget(), shown);
    QVERIFY(shown->isVisible());
    QCOMPARE(Control<QPushButton>(card, button)->text(), choice->text());
  }

  void mobileMenuActsOnItsOwnCard() {
    Desk d;
    QStringList sms;
    QObject::connect(&d.pages, &TDirectoryPages::smsRequested,
                     [&sms](const QString &number) { sms << number; });
    QWidget *call = d.Page(u"Con_TeTabSheet"_s);
    QWidget *contact = d.Page(u"Mat_TeTabSheet"_s);
    QTest::keyClicks(Control<QLineEdit>(call, u"CON_MobilePhone_LMDEdit"_s), u"13900001111"_s);
    QTest::keyClicks(Control<QLineEdit>(contact, u"MAT_MobilePhone_LMDEdit"_s), u"13700002222"_s);
    Control<QAction>(contact, u"N14"_s)->trigger();
    Control<QAction>(call, u"N14"_s)->trigger();
    QCOMPARE(sms, (QStringList{u"13700002222"_s, u"13900001111"_s}));
  }

  void memoFindSelectsTheHitAboveTheMemo() {
    Desk d;
    QWidget *card = d.Page(u"Mat_TeTabSheet"_s);
    d.tabs.setCurrentWidget(card);
    auto *memo = Control<QPlainTextEdit>(card, u"Mat_Memo_Memo"_s);
    QTest::keyClicks(memo, u"call back Tuesday"_s);
    QTest::keyClick(memo, Qt::Key_Return);
    QTest::keyClicks(memo, u"then call the desk"_s);
    QTextCursor word(memo->document());
    word.setPosition(0);
    word.setPosition(4, QTextCursor::KeepAnchor);
    memo->setTextCursor(word); // "call" selected

    QTest::mouseClick(Control<QPushButton>(card, u"LMDButton29"_s), Qt::LeftButton);
    auto *dialog = Control<QDialog>(card, u"FindDialog1"_s);
    QVERIFY(dialog->isVisible());
    QCOMPARE(Control<QLineEdit>(dialog, u"FindText_Edit"_s)->text(), u"call"_s);
    QCOMPARE(dialog->frameGeometry().bottom() + 1, memo->mapToGlobal(QPoint(0, 0)).y());

    auto *next = Control<QPushButton>(dialog, u"FindNext_Button"_s);
    QTest::mouseClick(next, Qt::LeftButton);
    QCOMPARE(memo->textCursor().selectionStart(), 0);
    QTest::mouseClick(next, Qt::LeftButton);
    QCOMPARE(memo->textCursor().selectedText(), u"call"_s);
    QCOMPARE(memo->textCursor().block().blockNumber(), 1);
    QCOMPARE(memo->textCursor().selectionStart(), 23);
    // Typed while the dialog is open, and found from where the caret stands.
    memo->moveCursor(QTextCursor::End);
    QTest::keyClicks(memo, u" to call"_s);
    QTextCursor behindHit(memo->document());
    behindHit.setPosition(27);
    memo->setTextCursor(behindHit);
    QTest::mouseClick(next, Qt::LeftButton);
    QCOMPARE(memo->textCursor().selectionStart(), memo->toPlainText().size() - 4);
    QTest::mouseClick(next, Qt::LeftButton);
    QCOMPARE(d.shell.Messages.size(), 1);
    QCOMPARE(d.shell.Messages.first().Text, LangText(271));
  }

  void englishReachesEveryControl() {
    Desk d;
    // A sorted grid keeps its mark through the switch.
    StoreContact(u"Al"_s, u"8100"_s);
    d.SearchName(u"Al"_s);
    d.pages.MainInfo_DBAdvStringGridCanSort(0);
    d.pages.MainInfo_DBAdvStringGridCanSort(0);
    BindLanguage(d.mainForm, &d.tabs);
    d.home.CopyShipped(u"ini/lang_English.lan"_s);
    QVERIFY(SelectLanguage(1));
    // The cards show the logic's fields again after the switch; a caption the
    // logic took in the other language must not come back with them.
    d.pages.ShowCallerInfo(u"Phone1"_s, u"8000"_s);
    QStringList chinese;
    for (int i = 0; i < d.tabs.count(); ++i)
      if (HasChinese(d.tabs.tabText(i)))
        chinese << d.tabs.widget(i)->objectName();
    for (QWidget *w : d.tabs.findChildren<QWidget *>()) {
      if (w->window() != &d.tabs) // the find dialog takes its texts as it opens
        continue;
      QString text;
      if (auto *label = qobject_cast<QLabel *>(w))
        text = label->text();
      else if (auto *button = qobject_cast<QAbstractButton *>(w))
        text = button->text();
      else if (auto *edit = qobject_cast<QLineEdit *>(w))
        text = edit->placeholderText();
      if (HasChinese(text))
        chinese << w->objectName() + u": "_s + text;
    }
    for (QAction *action : d.tabs.findChildren<QAction *>())
      if (HasChinese(action->text()))
        chinese << action->objectName() + u": "_s + action->text();
    for (int c = 0; c < d.Grid()->model()->columnCount(); ++c)
      if (HasChinese(d.Grid()->model()->headerData(c, Qt::Horizontal).toString()))
        chinese << u"MainInfo_DBAdvStringGrid title %1"_s.arg(c);
    QVERIFY2(chinese.isEmpty(), qPrintable(chinese.join(u"; "_s)));
    QVERIFY(d.Grid()->model()->headerData(0, Qt::Horizontal).toString().startsWith(u"▼"_s));
    QCOMPARE(Control<QCheckBox>(&d.tabs, u"Find_IDCard_Check"_s)->text(), u"ID card"_s);
  }
};

QTEST_MAIN(DirectoryPagesTest)
#include "tst_directorypages.moc"
