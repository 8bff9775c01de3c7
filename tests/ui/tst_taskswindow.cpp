// The task list window over its logic: a stored task is listed, a double click
// opens it for editing with its fields filled.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "directory/SysDM_Unit.h"
#include "directory/TaskEdit_Unit.h"
#include "directory/Tasks_Unit.h"
#include "support/Clock.h"
#include "ui/TasksWindow.h"

#include <QLineEdit>
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
};

QTEST_MAIN(TasksWindowTest)
#include "tst_taskswindow.moc"
