// The task list window over its logic: a stored task is listed, a double click
// opens it for editing with its fields filled; the description's search.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "directory/SysDM_Unit.h"
#include "directory/TaskEdit_Unit.h"
#include "directory/Tasks_Unit.h"
#include "support/Clock.h"
#include "ui/TasksWindow.h"

#include <QDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

class TasksWindowTest : public QObject {
  Q_OBJECT

private slots:
  void aTaskIsListedAndOpens() {
    TestHome home;
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    RecordingShell shell;
    TTasks_Form tasks;
    tasks.FormCreate();
    TTaskType task;
    task.Title = u"305 退房前叫车"_s;
    task.createDatetime = Now();
    task.lastDateTime = Now() + 1.0;
    tasks.AddTask(task);

    TasksWindow window(tasks);
    TaskEditWindow edit(tasks.EditForm());
    window.Toggle();
    QVERIFY(window.isVisible());
    auto *grid = window.findChild<QTableView *>(u"unfinishTask_AdvStringGrid"_s);
    QVERIFY(grid);
    QCOMPARE(grid->model()->rowCount(), 1);
    const QRect cell = grid->visualRect(grid->model()->index(0, 0));
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, cell.center());
    QTRY_VERIFY(edit.isVisible());
    QCOMPARE(edit.findChild<QLineEdit *>(u"Title_TeSEdit"_s)->text(), u"305 退房前叫车"_s);
    window.Toggle();
    QVERIFY(!window.isVisible());
  }

  void theDescriptionSearchSelectsEachHitInTurn() {
    TestHome home;
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    RecordingShell shell;
    TTasks_Form tasks;
    TaskEditWindow edit(tasks.EditForm());
    edit.show();
    auto *memo = edit.findChild<QPlainTextEdit *>(u"Context_TeMemo"_s);
    QVERIFY(memo);
    memo->setPlainText(u"叫车 7:00\n早餐送房\n再叫车 7:30"_s);
    edit.findChild<QPushButton *>(u"TeButton5"_s)->click();
    auto *dialog = edit.findChild<QDialog *>();
    QVERIFY(dialog && dialog->isVisible());
    auto *text = dialog->findChild<QLineEdit *>(u"FindText_Edit"_s);
    text->setText(u"叫车"_s);
    auto *next = dialog->findChild<QPushButton *>(u"FindNext_Button"_s);
    QVERIFY(next);
    next->click();
    QCOMPARE(memo->textCursor().selectedText(), u"叫车"_s);
    QCOMPARE(memo->textCursor().blockNumber(), 0);
    next->click();
    QCOMPARE(memo->textCursor().selectedText(), u"叫车"_s);
    QCOMPARE(memo->textCursor().blockNumber(), 2);
  }
};

QTEST_MAIN(TasksWindowTest)
#include "tst_taskswindow.moc"
