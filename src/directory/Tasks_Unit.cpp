#include "directory/Tasks_Unit.h"

#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"
#include "directory/TaskEdit_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

TTasks_Form::TTasks_Form(QObject *parent)
    : TFormLogic("TTasks_Form", parent), m_edit(new TTaskEdit_Form(this, this)) {
  ColWidths.fill(kDefaultColWidth);
}

TTasks_Form::~TTasks_Form() = default;

qint32 TTasks_Form::AddTask(const TTaskType &task) {
  Excute_ADOQuery.SQL =
      u"insert into Task_Table "
      u"(title,contacters,context,creater,status,createDatetime,finishDatetime,lastDateTime) "
      u"values('%1','%2','%3','%4',%5,'%6','%7','%8') "_s.arg(
          SqlText(task.Title), SqlText(task.contacters), SqlText(task.Context),
          SqlText(task.creater), QString::number(task.Status), FormatFull(task.createDatetime),
          FormatFull(task.finishDateTime), FormatFull(task.lastDateTime));
  Excute_ADOQuery.ExecSQL();
  Sys_DM().OpenSQL(u"select max(ID) as maxID from Task_Table"_s, Select_ADOQuery);
  return Select_ADOQuery.AsInteger(u"maxID"_s);
}

void TTasks_Form::UpdateTask(const TTaskType &task) {
  Excute_ADOQuery.SQL =
      u"update Task_Table set title='%1',contacters='%2',context='%3',creater='%4',status=%5,"
      u"createDatetime='%6',finishDatetime='%7',lastDateTime='%8' where (ID=%9)"_s.arg(
          SqlText(task.Title), SqlText(task.contacters), SqlText(task.Context),
          SqlText(task.creater), QString::number(task.Status), FormatFull(task.createDatetime),
          FormatFull(task.finishDateTime), FormatFull(task.lastDateTime), QString::number(task.ID));
  Excute_ADOQuery.ExecSQL();
}

void TTasks_Form::DeleteTask(qint32 id) {
  Excute_ADOQuery.SQL = u"delete from Task_Table where ID=%1"_s.arg(id);
  Excute_ADOQuery.ExecSQL();
}

void TTasks_Form::LoadTasks() {
  Sys_DM().OpenSQL(u"select * from Task_Table where (status=0 or status=1) order by lastDateTime"_s,
                   Select_ADOQuery);
  for (Select_ADOQuery.First(); !Select_ADOQuery.Eof(); Select_ADOQuery.Next()) {
    TTaskType task;
    task.ID = Select_ADOQuery.AsInteger(u"ID"_s);
    task.Title = Select_ADOQuery.AsString(u"Title"_s);
    task.Context = Select_ADOQuery.AsString(u"Context"_s);
    task.createDatetime = Select_ADOQuery.AsDateTime(u"createDateTime"_s);
    task.lastDateTime = Select_ADOQuery.AsDateTime(u"LastDateTime"_s);
    task.finishDateTime = Select_ADOQuery.AsDateTime(u"FinishDateTime"_s);
    task.Status = Select_ADOQuery.AsInteger(u"Status"_s);
    task.creater = Select_ADOQuery.AsString(u"creater"_s);
    task.contacters = Select_ADOQuery.AsString(u"contacters"_s);
    AddTaskRow(task, unfinishTask_AdvStringGrid);
  }
  Select_ADOQuery.Close();
  // The list opens on what is still to do.
  unfinishTask_AdvStringGrid.SetFilter(u"0"_s);
}

TTaskCounts TTasks_Form::CountTasks(TDateTime date, qint32 status) {
  // dateDiff('d', deadline, date) counts the whole days from the deadline to the
  // date: 0 due that day, above 0 overdue, below 0 due later.
  auto count = [&](QLatin1StringView test) {
    Sys_DM().OpenSQL(u"select count(*) as Taskcount from Task_Table where "
                     u"(dateDiff('d',lastDateTime,'%1')%2) and (status=%3) "_s.arg(
                         DateToStr(date), test, QString::number(status)),
                     Select_ADOQuery);
    const int n = Select_ADOQuery.AsInteger(u"Taskcount"_s);
    Select_ADOQuery.Close();
    return n;
  };
  TTaskCounts counts;
  counts.Today = count("=0"_L1);
  counts.Later = count("<0"_L1);
  counts.Overdue = count(">0"_L1);
  return counts;
}

void TTasks_Form::FormCreate() {
  init_TeSpeedButtonClick();
}

void TTasks_Form::init_TeSpeedButtonClick() {
  unfinishTask_AdvStringGrid.Clear();
  unfinishTask_AdvStringGrid.SetTitles({LangText(609), LangText(610), LangText(611), u"ID"_s});
  ColWidths.fill(kDefaultColWidth);
  ColWidths[TTaskGrid::ColDeadline] = 2 * kDefaultColWidth;
  LoadTasks();
}

void TTasks_Form::TeButton2Click() {
  unfinishTask_AdvStringGrid.SetFilter(u"0"_s);
}

void TTasks_Form::TeButton1Click() {
  unfinishTask_AdvStringGrid.SetFilter(u"1"_s);
}

void TTasks_Form::TeSpeedButton1Click() {
  TTaskType task;
  task.createDatetime = Now();
  task.lastDateTime = task.createDatetime;
  m_edit->SetTask(task);
  m_edit->ShowAs(TTaskEdit_Form::Mode::New);
}

void TTasks_Form::TeSpeedButton2Click() {
  const int row = unfinishTask_AdvStringGrid.CurrentRow();
  if (row < 0)
    return;
  if (!TheShell().Question(LangText(613)))
    return;
  // The answer may have taken a while; the row is read again, not remembered.
  const int current = unfinishTask_AdvStringGrid.CurrentRow();
  if (current < 0)
    return;
  DeleteTask(unfinishTask_AdvStringGrid.Cell(current, TTaskGrid::ColID).toInt());
  unfinishTask_AdvStringGrid.RemoveShownRow(current);
}

void TTasks_Form::TeSpeedButton3Click() {
  unfinishTask_AdvStringGrid.SortByDeadline();
}

void TTasks_Form::unfinishTask_AdvStringGridDblClick(int row) {
  const int current = unfinishTask_AdvStringGrid.CurrentRow();
  if (row < 0 || current < 0)
    return;
  TTaskType task;
  GetTaskRow(current, unfinishTask_AdvStringGrid, task);
  m_edit->SetTask(task);
  m_edit->ShowAs(TTaskEdit_Form::Mode::Edit);
}

void TTasks_Form::LinkContact(const QString &name) {
  if (m_edit->Visible()) {
    if (TheShell().Question(LangFormat(358, {name, m_edit->Title_TeSEdit})))
      m_edit->contacter_TeEdit = name;
    return;
  }
  if (!Visible())
    return;
  const int row = unfinishTask_AdvStringGrid.CurrentRow();
  if (row < 0)
    return;
  const QString title = unfinishTask_AdvStringGrid.Cell(row, TTaskGrid::ColTitle);
  if (!TheShell().Question(LangFormat(359, {name, title})))
    return;
  // Only the list holds it until the task is next saved from the edit window.
  const int current = unfinishTask_AdvStringGrid.CurrentRow();
  if (current >= 0)
    unfinishTask_AdvStringGrid.SetCell(current, TTaskGrid::ColContacters, name);
}

void TTasks_Form::TrayIconClick() {
  const TTaskCounts counts = CountTasks(Now(), kTaskUnfinished);
  const QString lineEnd = u"\n"_s;
  TheShell().Balloon(
      LangText(335),
      LangFormat(334, {lineEnd, counts.Today, lineEnd, counts.Overdue, lineEnd, counts.Later}), 10,
      BalloonIcon::Info);
}
