// The whole console built inside the test, as main() builds it: the start and
// first show, leaving the login dialog at once, the live language switch, and
// the toolbar's windows. Driven through objectNames.
#include "app/ConsoleProcess.h"
#include "app/ConsoleScreens.h"
#include "common/TestHome.h"
#include "console/Main_Form.h"
#include "directory/DirectoryPages.h"
#include "support/LanguagePack.h"
#include "support/Settings.h"
#include "support/Shell.h"
#include "ui/LoginDialog.h"
#include "ui/MainWindow.h"
#include "ui/FrontDeskKeys.h"
#include "ui/TasksWindow.h"
#include "ui/WidgetShell.h"

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QShortcut>
#include <QTableWidget>
#include <QTextBrowser>
#include <QTabWidget>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// One console on a fresh home, with a headless shell: nobody answers its
// questions, which count as No.
struct Console {
  TestHome home;
  WidgetShell shell{true};
  ConsoleProcess process;
  std::unique_ptr<ConsoleScreens> screens;

  explicit Console(const QByteArray &sysIni = {}) {
    SetShell(&shell);
    if (!sysIni.isEmpty())
      home.Write(u"ini/sys.ini"_s, sysIni);
    if (process.Start(home.Path(), false, 0)) {
      screens = std::make_unique<ConsoleScreens>(process, shell);
      screens->Show();
    }
  }
  ~Console() {
    screens.reset();
    SetShell(nullptr);
  }
  TMainWindow &Window() { return screens->Window(); }
  template <typename W> W *Find(const QString &name) { return Window().findChild<W *>(name); }
};

QString TabText(QTabWidget *tabs, const QString &page) {
  for (int i = 0; i < tabs->count(); ++i)
    if (tabs->widget(i)->objectName() == page)
      return tabs->tabText(i);
  return QString();
}
} // namespace

class ScreensTest : public QObject {
  Q_OBJECT

private slots:
  void firstShowPutsTheLoginDialogUpOverTheCompanyPanel() {
    Console c;
    QVERIFY(c.screens);
    QVERIFY(c.Window().isVisible());
    QVERIFY(c.Window().windowTitle().endsWith(u"Trunkdesk ver5.2"_s));
    // The link was never up: the dialog is modal, the board page is in front,
    // the log page is absent without debugging.
    QVERIFY(c.screens->Login().isVisible());
    QVERIFY(c.screens->Login().isModal());
    auto *pages = c.Find<QTabWidget>(u"UserMain_TePageControl"_s);
    QCOMPARE(pages->currentWidget()->objectName(), u"Branchs_TeTabSheet"_s);
    QVERIFY(TabText(pages, u"LogMemo"_s).isEmpty());
  }

  void leavingTheLoginDialogAtFirstShowEndsWithoutTheQuestion() {
    Console c;
    QVERIFY(c.screens);
    auto *leave = c.screens->Login().findChild<QAbstractButton *>(u"TeButton2"_s);
    QVERIFY(leave);
    leave->click();
    // A question would have been answered No by the headless shell and kept
    // the session; the console is closed, so none was asked.
    QVERIFY(c.process.Closed());
    QVERIFY(c.home.Read(u"ini/sys.ini"_s).size() > 0); // the settings were saved on the way out
  }

  void languageSwitchesLiveAcrossTheWindows() {
    Console c;
    QVERIFY(c.screens);
    c.screens->Login().hide();
    auto *pages = c.Find<QTabWidget>(u"UserMain_TePageControl"_s);
    auto *lists = c.Find<QTabWidget>(u"ConRecords_TePageControl"_s);
    auto *missed = c.Find<QTableView>(u"lostIncom_LMDListBox"_s);
    auto *english = c.Find<QAction>(u"N20"_s);
    auto *chinese = c.Find<QAction>(u"N19"_s);
    QVERIFY(pages && lists && missed && english && chinese);
    const QString boardZh = TabText(pages, u"Branchs_TeTabSheet"_s);
    // The contact card shows the web address in the shared field.
    c.process.Main()->Pages().ok1Click(LangText(269));
    auto *shared = c.Find<QAbstractButton>(u"Inernet_LMDButton"_s);
    QVERIFY(shared);
    QCOMPARE(shared->text(), LangText(269));
    const QString header0Zh = missed->model()->headerData(0, Qt::Horizontal).toString();

    english->trigger();
    QCOMPARE(TabText(pages, u"Branchs_TeTabSheet"_s), LangText(107));
    QVERIFY(TabText(pages, u"Branchs_TeTabSheet"_s) != boardZh);
    QVERIFY(TabText(lists, u"Lost_TeTabSheet"_s).contains(u"issed"_s));
    QVERIFY(missed->model()->headerData(0, Qt::Horizontal).toString() != header0Zh);
    QCOMPARE(c.Find<QAbstractButton>(u"tefxButton7"_s)->text(), u"Locate"_s);
    // The shared field still shows the web address, and says so in English.
    QCOMPARE(shared->text(), LangText(269));
    // A window that is open follows as well as the main one.
    QCOMPARE(c.screens->Login().findChild<QAbstractButton *>(u"Login_TeButton"_s)->text(),
             LangText(783));

    chinese->trigger();
    QCOMPARE(TabText(pages, u"Branchs_TeTabSheet"_s), boardZh);
    QCOMPARE(missed->model()->headerData(0, Qt::Horizontal).toString(), header0Zh);
  }

  void englishFromTheFirstWindowWhenTheSettingsSaySo() {
    Console c("[Lang]\r\nLangID=1\r\n");
    QVERIFY(c.screens);
    QCOMPARE(c.screens->Login().findChild<QAbstractButton *>(u"Login_TeButton"_s)->text(),
             LangText(783));
    QVERIFY(LangText(783).contains(u"Log"_s, Qt::CaseInsensitive));
  }

  void tasksKeyShowsAndHidesTheTaskList() {
    Console c;
    QVERIFY(c.screens);
    c.screens->Login().hide();
    auto *key = c.Find<QAction>(u"TeSpeedButton10"_s);
    QVERIFY(key);
    key->trigger();
    QVERIFY(c.screens->Tasks().isVisible());
    key->trigger();
    QVERIFY(!c.screens->Tasks().isVisible());
  }

  // Two actions of one window on the same key make Qt fire neither: whatever
  // part of the console installs a key, no window may hold it twice.
  void frontDeskKeysAreInstalledOnceAndListed() {
    Console c;
    QVERIFY(c.screens);
    c.screens->Login().hide();
    QHash<QString, QString> taken; // "window/key" -> who
    const auto take = [&taken](QWidget *owner, const QKeySequence &key, const QString &who) {
      if (!owner || key.isEmpty())
        return;
      const QString slot = owner->window()->objectName() + u'/' + key.toString();
      QVERIFY2(!taken.contains(slot), qPrintable(slot + u": "_s + taken.value(slot) + u", "_s + who));
      taken.insert(slot, who);
    };
    for (QAction *a : c.Window().findChildren<QAction *>())
      for (const QKeySequence &key : a->shortcuts())
        take(qobject_cast<QWidget *>(a->parent()), key, a->objectName());
    for (QShortcut *s : c.Window().findChildren<QShortcut *>())
      take(s->parentWidget(), s->key(), s->objectName());
    QVERIFY(taken.contains(u"TMain_Form/Ctrl+R"_s));

    c.Find<QAction>(u"Key_Help"_s)->trigger();
    auto *list = c.Find<QTableWidget>(u"FrontDeskKeys_Table"_s);
    QVERIFY(list && list->isVisible());
    QCOMPARE(list->rowCount(), FrontDeskKeys().size());
    c.Find<QAction>(u"Key_ShiftReport"_s)->trigger();
    auto *report = c.Find<QTextBrowser>(u"ShiftReport_Text"_s);
    QVERIFY(report && report->isVisible());
    QVERIFY(report->toPlainText().contains(u"未来12小时的叫醒"_s));
  }
};

QTEST_MAIN(ScreensTest)
#include "tst_screens.moc"
