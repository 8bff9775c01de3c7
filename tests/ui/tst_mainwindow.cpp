// The main window, driven through objectNames: the call lists' Delete key,
// double click and call-back entry, and the quit question.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Main_Form.h"
#include "directory/DirectoryPages.h"
#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "ui/MainWindow.h"

#include <QAction>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

class MainWindowTest : public QObject {
  Q_OBJECT

private slots:
  void deleteKeyRemovesTheSelectedCalls() {
    TestHome home;
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    RecordingShell shell;
    shell.Answer = true; // yes to the question
    TMain_Form main;
    TMainWindow window(main);
    window.show();
    TDirectoryPages &p = main.Pages();
    for (int i = 0; i < 4; ++i) {
      const qint32 id = p.AddConRecord(u"800%1"_s.arg(i), 1);
      p.InsertCallItem(u"Phone1"_s, u"800%1"_s.arg(i), id, p.lostIncom_LMDListBox);
    }
    auto *view = window.findChild<QTableView *>(u"lostIncom_LMDListBox"_s);
    QVERIFY(view);
    view->setFocus();
    for (int row : {0, 1, 3})
      view->selectionModel()->select(view->model()->index(row, 0),
                                     QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keyClick(view, Qt::Key_Delete);
    QCOMPARE(shell.Questions.size(), 1);
    QCOMPARE(p.lostIncom_LMDListBox.Count(), 1);
    TADOQuery left;
    Sys_DM().OpenSQL(u"select * from conRecords"_s, left);
    QCOMPARE(left.RecordCount(), 1);
  }

  void noToTheQuitQuestionKeepsTheWindow() {
    TestHome home;
    home.UseChinese();
    RecordingShell shell;
    shell.Answer = false;
    TMain_Form main;
    TMainWindow window(main);
    window.CloseHandler = [&main] { return main.FormCloseQuery(); };
    window.show();
    QVERIFY(!window.close());
    QVERIFY(window.isVisible());
    QCOMPARE(shell.Questions, QStringList{LangText(333)});
  }

  void doubleClickAndDialBackShowTheRowsCaller() {
    TestHome home;
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    RecordingShell shell;
    TMain_Form main;
    TMainWindow window(main);
    window.show();
    TDirectoryPages &p = main.Pages();
    QStringList dialled;
    p.DialNumber = [&dialled](const QString &number) { dialled << number; };
    for (const QString &number : {u"8101"_s, u"8102"_s})
      p.InsertCallItem(u"Phone1"_s, number, p.AddConRecord(number, 1), p.lostIncom_LMDListBox);
    auto *view = window.findChild<QTableView *>(u"lostIncom_LMDListBox"_s);
    QVERIFY(view);
    // Rows are newest first: row 0 is 8102.
    const QRect cell = view->visualRect(view->model()->index(1, 1));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, cell.center());
    QCOMPARE(p.CON_Phone1_LMDEdit, u"8101"_s);
    QVERIFY(dialled.isEmpty());

    view->setCurrentIndex(view->model()->index(0, 0));
    auto *callBack = window.findChild<QAction *>(u"MenuItem6"_s);
    QVERIFY(callBack);
    callBack->trigger();
    QCOMPARE(dialled, QStringList{u"8102"_s});
    QCOMPARE(p.CON_Phone1_LMDEdit, u"8102"_s);
  }
};

QTEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"
