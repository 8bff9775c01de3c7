// The main window, driven through objectNames: the call lists' Delete key, the
// quit question, and the language of the first show.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "core/console/Main_Form.h"
#include "core/link/SysParam.h"
#include "directory/DirectoryPages.h"
#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Settings.h"
#include "ui/LanguageBinding.h"
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

  void languageOneGivesEnglishFromTheFirstShow() {
    TestHome home;
    home.CopyShipped(u"ini/lang_chinese.lan"_s);
    home.CopyShipped(u"ini/lang_English.lan"_s);
    home.Write(u"ini/sys.ini"_s, "[Lang]\nLangID=1\n");
    RecordingShell shell;
    LanguageStart();
    TMain_Form main;
    main.FormCreate();
    TMainWindow window(main);
    BindLanguage(main, &window);
    main.FormShow();
    auto *relogin = window.findChild<QAction *>(u"TeSpeedButton9"_s);
    QVERIFY(relogin);
    QCOMPARE(LanguagePack().LangID, 1);
    QVERIFY2(relogin->text() != u"重登录"_s, qPrintable(relogin->text()));
    QCOMPARE(relogin->text(), main.ControlText(u"TeSpeedButton9"_s));
  }
};

QTEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"
