// The task list: its store, the grid, saving, the deadline colours, the counts in
// the tray balloon, the contact link and the description search.
#include "common/RecordingShell.h"
#include "common/PgStore.h"
#include "common/TestHome.h"
#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"
#include "directory/TaskEdit_Unit.h"
#include "directory/Tasks_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"

#include <QAbstractItemModelTester>
#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(TTaskColour)

namespace {
const QDateTime kPresent(QDate(2024, 5, 15), QTime(10, 0, 0));

TDateTime At(const QString &text) {
  TDateTime value;
  TryStrToDateTime(text, &value);
  return value;
}

// A program folder with a fresh store, the English texts and the clock standing
// at kPresent.
struct Desk {
  TestHome home;
  RecordingShell shell;
  Desk() {
    home.CopyShipped(u"ini/lang_English.lan"_s);
    LanguagePack().LoadLanguageFile(AppFile(u"ini/lang_English.lan"_s));
    SetClock([] { return kPresent; });
    Sys_DM().DataModuleCreate();
  }
};

TTaskType Task(const QString &title, const QString &deadline, qint32 status = kTaskUnfinished) {
  TTaskType t;
  t.Title = title;
  t.lastDateTime = At(deadline);
  t.createDatetime = At(u"2024-05-01 08:00:00"_s);
  t.Status = status;
  if (status == kTaskFinished)
    t.finishDateTime = At(u"2024-05-10 09:30:00"_s);
  return t;
}

int StoredInt(const QString &sql) {
  TADOQuery q;
  Sys_DM().OpenSQL(sql, q);
  return q.AsInteger(q.FieldNames().value(0));
}

// A new task typed into the edit window and saved.
void SaveNew(TTasks_Form &tasks, const QString &title, const QString &deadline) {
  tasks.TeSpeedButton1Click();
  TTaskEdit_Form &edit = tasks.EditForm();
  edit.Title_TeSEdit = title;
  edit.LastTime_TeDateTimePicker = At(deadline);
  edit.save_TeButtonClick();
}

QStringList ShownTitles(const TTaskGrid &grid) {
  QStringList titles;
  for (int row = 0; row < grid.rowCount(); ++row)
    titles << grid.Cell(row, TTaskGrid::ColTitle);
  return titles;
}
} // namespace

class TasksTest : public QObject {
  Q_OBJECT

private slots:
  void savedTaskComesBackWordForWord_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("plain") << u"Order flowers"_s;
    QTest::newRow("quotes") << u"Mr O'Brien's \"late\" checkout"_s;
    QTest::newRow("statement characters") << u"50% off #1 [vip]; drop table Task_Table --"_s;
    QTest::newRow("chinese") << u"给808房间送水果"_s;
  }
  void savedTaskComesBackWordForWord() {
    QFETCH(QString, text);
    Desk desk;
    TTasks_Form tasks;
    tasks.FormCreate();
    tasks.EditForm().SaveSortDelayMs = 0;
    tasks.TeSpeedButton1Click();
    TTaskEdit_Form &edit = tasks.EditForm();
    QCOMPARE(edit.CreateTime_TeDateTimePicker, Now());
    QCOMPARE(edit.LastTime_TeDateTimePicker, Now());
    QCOMPARE(edit.finishTime_TeLabel, LangText(637));
    edit.Title_TeSEdit = text;
    edit.Context_TeMemo = text + u"\nsecond line"_s;
    edit.contacter_TeEdit = text;
    edit.LastTime_TeDateTimePicker = At(u"2024-05-16 18:30:00"_s);
    edit.save_TeButtonClick();
    QVERIFY(desk.shell.Messages.isEmpty());
    QVERIFY(!edit.Visible());

    // The grid row carries the ID the store gave, the highest right after the insert.
    const int id = tasks.unfinishTask_AdvStringGrid.Cell(0, TTaskGrid::ColID).toInt();
    QVERIFY(id > 0);
    QCOMPARE(id, StoredInt(u"select max(ID) as maxID from Task_Table"_s));

    TTasks_Form reloaded;
    reloaded.FormCreate();
    QCOMPARE(reloaded.unfinishTask_AdvStringGrid.rowCount(), 1);
    TTaskType back;
    GetTaskRow(0, reloaded.unfinishTask_AdvStringGrid, back);
    QCOMPARE(back.ID, id);
    QCOMPARE(back.Title, text);
    QCOMPARE(back.Context, text + u"\nsecond line"_s);
    QCOMPARE(back.contacters, text);
    QCOMPARE(back.lastDateTime, At(u"2024-05-16 18:30:00"_s));
    QCOMPARE(back.createDatetime, Now());
    QVERIFY(back.finishDateTime.IsZero());
    QCOMPARE(back.Status, kTaskUnfinished);
  }

  void emptyTitleIsNotStored_data() {
    QTest::addColumn<QString>("title");
    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << u"   "_s;
  }
  void emptyTitleIsNotStored() {
    QFETCH(QString, title);
    Desk desk;
    TTasks_Form tasks;
    tasks.FormCreate();
    SaveNew(tasks, title, u"2024-05-16"_s);
    QCOMPARE(desk.shell.Messages.size(), 1);
    QCOMPARE(desk.shell.Messages[0].Kind, MessageKind::Warning);
    QCOMPARE(desk.shell.Messages[0].Text, LangText(636));
    QVERIFY(tasks.EditForm().Visible());
    QCOMPARE(tasks.unfinishTask_AdvStringGrid.TotalRowCount(), 0);
    QCOMPARE(StoredInt(u"select count(*) as n from Task_Table"_s), 0);
  }

  void loadShowsOpenTasksByDeadlineAndSaveSorts() {
    Desk desk;
    TTasks_Form tasks;
    tasks.AddTask(Task(u"later"_s, u"2024-05-20 09:00:00"_s));
    tasks.AddTask(Task(u"done"_s, u"2024-05-01 09:00:00"_s, kTaskFinished));
    tasks.AddTask(Task(u"sooner"_s, u"2024-05-17 09:00:00"_s));
    TTaskGrid &grid = tasks.unfinishTask_AdvStringGrid;
    QAbstractItemModelTester tester(&grid, QAbstractItemModelTester::FailureReportingMode::QtTest);
    tasks.FormCreate();
    QCOMPARE(ShownTitles(grid), (QStringList{u"sooner"_s, u"later"_s}));
    QCOMPARE(grid.CurrentRow(), 0);
    QCOMPARE(grid.headerData(TTaskGrid::ColDeadline, Qt::Horizontal), QVariant(LangText(610)));
    QCOMPARE(tasks.ColWidths[TTaskGrid::ColDeadline], 2 * tasks.ColWidths[TTaskGrid::ColTitle]);

    tasks.TeButton1Click();
    QCOMPARE(ShownTitles(grid), QStringList{u"done"_s});

    // A new task due first lands on top once saved, and stays the current row.
    tasks.TeButton2Click();
    SaveNew(tasks, u"first"_s, u"2024-05-15 12:00:00"_s); // the real wait before the sort
    QCOMPARE(ShownTitles(grid), (QStringList{u"first"_s, u"sooner"_s, u"later"_s}));
    QCOMPARE(grid.CurrentRow(), 0);
  }

  void finishedTaskStaysUntilTheFilterChanges() {
    Desk desk;
    TTasks_Form tasks;
    TTaskType task = Task(u"call back"_s, u"2024-05-14 09:00:00"_s);
    task.Context = u"room 808"_s;
    tasks.AddTask(task);
    tasks.FormCreate();
    TTaskGrid &grid = tasks.unfinishTask_AdvStringGrid;
    TTaskEdit_Form &edit = tasks.EditForm();
    edit.SaveSortDelayMs = 0;
    QCOMPARE(TTaskColour(grid.data(grid.index(0, 0), TTaskGrid::ColourRole).toInt()),
             TTaskColour::Overdue);
    QCOMPARE(grid.data(grid.index(0, 1), TTaskGrid::BalloonTitleRole), QVariant(u"call back"_s));
    QCOMPARE(grid.data(grid.index(0, 1), TTaskGrid::BalloonTextRole),
             QVariant(u"Details: room 808"_s));

    tasks.unfinishTask_AdvStringGridDblClick(0);
    QVERIFY(edit.Visible());
    QVERIFY(edit.StayOnTop);
    QCOMPARE(edit.EditMode, TTaskEdit_Form::Mode::Edit);
    edit.finish_TeButtonClick();
    QCOMPARE(edit.finishTime_TeLabel, u"2024-05-15 10:00:00"_s);
    edit.save_TeButtonClick();

    QCOMPARE(StoredInt(u"select status from Task_Table"_s), kTaskFinished);
    TADOQuery q;
    Sys_DM().OpenSQL(u"select FinishDateTime from Task_Table"_s, q);
    QCOMPARE(q.AsDateTime(u"FinishDateTime"_s), Now());
    // Still listed, now in the grid's own colour, until the filter is chosen again.
    QCOMPARE(ShownTitles(grid), QStringList{u"call back"_s});
    QCOMPARE(TTaskColour(grid.data(grid.index(0, 1), TTaskGrid::ColourRole).toInt()),
             TTaskColour::Normal);
    tasks.TeButton2Click();
    QCOMPARE(grid.rowCount(), 0);
    QCOMPARE(grid.CurrentRow(), -1);

    tasks.TeButton1Click();
    tasks.unfinishTask_AdvStringGridDblClick(0);
    QCOMPARE(edit.finishTime_TeLabel, u"2024-05-15 10:00:00"_s);
    edit.unfinish_TeButtonClick();
    QCOMPARE(edit.finishTime_TeLabel, LangText(635));
    edit.save_TeButtonClick();
    QCOMPARE(StoredInt(u"select status from Task_Table"_s), kTaskUnfinished);
  }

  void deadlineColours_data() {
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("deadline");
    QTest::addColumn<TTaskColour>("colour");
    QTest::newRow("open, past") << u"0"_s << u"2024-05-15 09:59:59"_s << TTaskColour::Overdue;
    QTest::newRow("open, ahead") << u"0"_s << u"2024-05-15 10:00:01"_s << TTaskColour::Ahead;
    QTest::newRow("open, this second")
        << u"0"_s << u"2024-05-15 10:00:00"_s << TTaskColour::InfoTip;
    QTest::newRow("open, midnight today is past")
        << u"0"_s << u"2024-05-15"_s << TTaskColour::Overdue;
    QTest::newRow("finished, past") << u"1"_s << u"2024-05-01 10:00:00"_s << TTaskColour::Normal;
    QTest::newRow("open, not a date") << u"0"_s << u"tomorrow"_s << TTaskColour::Normal;
  }
  void deadlineColours() {
    QFETCH(QString, status);
    QFETCH(QString, deadline);
    QFETCH(TTaskColour, colour);
    QCOMPARE(TaskDeadlineColour(status, deadline, TDateTime::FromQDateTime(kPresent)), colour);
  }

  void balloonCutsLongDescriptions_data() {
    QTest::addColumn<int>("lines");
    QTest::addColumn<QString>("lineEnd");
    QTest::addColumn<bool>("closingLineEnd");
    QTest::addColumn<bool>("cut");
    QTest::newRow("15 lines") << 15 << u"\n"_s << false << false;
    QTest::newRow("15 lines and a closing line end") << 15 << u"\n"_s << true << false;
    QTest::newRow("16 lines") << 16 << u"\n"_s << false << true;
    QTest::newRow("16 lines from a Windows memo") << 16 << u"\r\n"_s << false << true;
  }
  void balloonCutsLongDescriptions() {
    QFETCH(int, lines);
    QFETCH(QString, lineEnd);
    QFETCH(bool, closingLineEnd);
    QFETCH(bool, cut);
    QStringList all;
    for (int i = 1; i <= lines; ++i)
      all << u"line %1"_s.arg(i);
    QString context = all.join(lineEnd);
    if (closingLineEnd)
      context += lineEnd;
    QStringList expected = all.mid(0, kTaskBalloonLines);
    if (cut)
      expected << u"..."_s;
    QCOMPARE(TaskBalloonDescription(context), expected.join(u'\n'));
  }

  void countsCompareWholeDays() {
    Desk desk;
    TTasks_Form tasks;
    tasks.AddTask(Task(u"overdue"_s, u"2024-05-14 23:59:59"_s));
    tasks.AddTask(Task(u"today early"_s, u"2024-05-15 00:00:00"_s));
    tasks.AddTask(Task(u"today late"_s, u"2024-05-15 23:59:59"_s));
    tasks.AddTask(Task(u"tomorrow"_s, u"2024-05-16 00:00:00"_s));
    tasks.AddTask(Task(u"finished"_s, u"2024-05-10 12:00:00"_s, kTaskFinished));

    const TTaskCounts open = tasks.CountTasks(Now(), kTaskUnfinished);
    QCOMPARE(open.Today, 2);
    QCOMPARE(open.Overdue, 1);
    QCOMPARE(open.Later, 1);
    const TTaskCounts done = tasks.CountTasks(Now(), kTaskFinished);
    QCOMPARE(done.Today + done.Overdue + done.Later, 1);
    QCOMPARE(done.Overdue, 1);

    tasks.TrayIconClick();
    QCOMPARE(desk.shell.Balloons.size(), 1);
    const RecordingShell::BalloonShown &b = desk.shell.Balloons[0];
    QCOMPARE(b.Title, u"Task reminder"_s);
    QCOMPARE(b.Text, u"Open tasks:\nDue today: 2\nOverdue: 1\nDue later: 1"_s);
    QCOMPARE(b.Seconds, 10);
    QCOMPARE(b.Icon, BalloonIcon::Info);
  }

  void deleteAsksFirst_data() {
    QTest::addColumn<bool>("answer");
    QTest::newRow("no") << false;
    QTest::newRow("yes") << true;
  }
  void deleteAsksFirst() {
    QFETCH(bool, answer);
    Desk desk;
    TTasks_Form tasks;
    tasks.AddTask(Task(u"keep"_s, u"2024-05-16 09:00:00"_s));
    tasks.AddTask(Task(u"drop"_s, u"2024-05-17 09:00:00"_s));
    tasks.FormCreate();
    tasks.unfinishTask_AdvStringGrid.SetCurrentRow(1);
    desk.shell.Answer = answer;
    tasks.TeSpeedButton2Click();
    QCOMPARE(desk.shell.Questions, QStringList{LangText(613)});
    const QStringList expected =
        answer ? QStringList{u"keep"_s} : QStringList{u"keep"_s, u"drop"_s};
    QCOMPARE(ShownTitles(tasks.unfinishTask_AdvStringGrid), expected);
    QCOMPARE(StoredInt(u"select count(*) as n from Task_Table"_s), int(expected.size()));
    if (answer)
      QCOMPARE(tasks.unfinishTask_AdvStringGrid.CurrentRow(), 0);
  }

  void contactLinkGoesToTheWindowShowing_data() {
    QTest::addColumn<bool>("editShowing");
    QTest::addColumn<bool>("listShowing");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QString>("question");
    QTest::addColumn<QString>("editContact");
    QTest::addColumn<QString>("rowContact");
    const QString asked = u"Link “Li Lei” to the task “Airport pickup”?"_s;
    QTest::newRow("edit window, yes") << true << true << true << asked << u"Li Lei"_s << u"Han"_s;
    QTest::newRow("edit window, no") << true << true << false << asked << u"Han"_s << u"Han"_s;
    QTest::newRow("list, yes") << false << true << true << asked << QString() << u"Li Lei"_s;
    QTest::newRow("list, no") << false << true << false << asked << QString() << u"Han"_s;
    QTest::newRow("neither") << false << false << true << QString() << QString() << u"Han"_s;
  }
  void contactLinkGoesToTheWindowShowing() {
    QFETCH(bool, editShowing);
    QFETCH(bool, listShowing);
    QFETCH(bool, answer);
    QFETCH(QString, question);
    QFETCH(QString, editContact);
    QFETCH(QString, rowContact);
    Desk desk;
    TTasks_Form tasks;
    TTaskType task = Task(u"Airport pickup"_s, u"2024-05-16 09:00:00"_s);
    task.contacters = u"Han"_s;
    tasks.AddTask(task);
    tasks.FormCreate();
    if (listShowing)
      tasks.Show();
    if (editShowing)
      tasks.unfinishTask_AdvStringGridDblClick(0);
    desk.shell.Answer = answer;
    tasks.LinkContact(u"Li Lei"_s);
    QCOMPARE(desk.shell.Questions.value(0), question);
    if (editShowing)
      QCOMPARE(tasks.EditForm().contacter_TeEdit, editContact);
    QCOMPARE(tasks.unfinishTask_AdvStringGrid.Cell(0, TTaskGrid::ColContacters), rowContact);
  }

  void descriptionSearchWalksTheMemo() {
    Desk desk;
    TTasks_Form tasks;
    TTaskEdit_Form &edit = tasks.EditForm();
    edit.Context_TeMemo = u"Call Anna\nanna's room 12 anna\nANNA again"_s;
    edit.Context_SelText = u"anna"_s;
    edit.TeButton5Click();
    QVERIFY(edit.FindDialog1_Visible);
    QCOMPARE(edit.FindDialog1_FindText, u"anna"_s);
    QList<int> found;
    for (int press = 0; press < 10 && desk.shell.Messages.isEmpty(); ++press) {
      edit.FindDialog1Find();
      if (desk.shell.Messages.isEmpty())
        found << edit.FindDialog1.SelStart;
    }
    // Positions count two characters for each line end, as the memo's own do.
    QCOMPARE(found, (QList<int>{5, 11, 26, 32}));
    QCOMPARE(desk.shell.Messages[0].Text, LangText(271));

    // A description edited while the dialog stays open is searched as it now reads.
    desk.shell.Messages.clear();
    edit.Context_TeMemo = u"nothing here\nbut Anna"_s;
    edit.FindDialog1Find();
    QVERIFY(desk.shell.Messages.isEmpty());
    QCOMPARE(edit.FindDialog1.SelStart, 18);
  }

  void storeFailureReachesTheCaller() {
    Desk desk;
    TTasks_Form tasks;
    Sys_DM().Execute(u"drop table Task_Table"_s);
    QVERIFY_THROWS_EXCEPTION(EDatabaseError, tasks.FormCreate());
  }
};

QTEST_GUILESS_MAIN(TasksTest)
#include "tst_tasks.moc"
