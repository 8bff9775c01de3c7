#include "directory/TaskEdit_Unit.h"

#include "directory/Tasks_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"

#include <QEventLoop>
#include <QPointer>
#include <QTimer>

using namespace Qt::StringLiterals;

TTaskEdit_Form::TTaskEdit_Form(TTasks_Form *tasks, QObject *parent)
    : TFormLogic("TTaskEdit_Form", parent), m_tasks(tasks) {}

void TTaskEdit_Form::SetTask(const TTaskType &task) {
  m_task = task;
  Title_TeSEdit = task.Title;
  Context_TeMemo = task.Context;
  Context_SelText.clear();
  contacter_TeEdit = task.contacters;
  LastTime_TeDateTimePicker = task.lastDateTime;
  CreateTime_TeDateTimePicker = task.createDatetime;
  finishTime_TeLabel =
      task.finishDateTime.IsZero() ? LangText(637) : DateTimeToStr(task.finishDateTime);
}

void TTaskEdit_Form::ShowAs(Mode mode) {
  EditMode = mode;
  if (mode == Mode::Edit)
    StayOnTop = true;
  Show();
}

void TTaskEdit_Form::finish_TeButtonClick() {
  m_task.Status = kTaskFinished;
  finishTime_TeLabel = DateTimeToStr(Now());
}

void TTaskEdit_Form::unfinish_TeButtonClick() {
  m_task.Status = kTaskUnfinished;
  finishTime_TeLabel = LangText(635);
}

void TTaskEdit_Form::save_TeButtonClick() {
  // A second press while the first save waits for the screens would store the
  // task twice.
  if (m_saving)
    return;
  if (Title_TeSEdit.trimmed().isEmpty()) {
    TheShell().Message(MessageKind::Warning, LangText(636));
    return;
  }
  TTaskType task = m_task;
  task.Title = Title_TeSEdit;
  task.Context = Context_TeMemo;
  task.contacters = contacter_TeEdit;
  task.lastDateTime = LastTime_TeDateTimePicker;
  task.createDatetime = CreateTime_TeDateTimePicker;
  if (task.Status == kTaskFinished) {
    TDateTime finished;
    if (TryStrToDateTime(finishTime_TeLabel, &finished))
      task.finishDateTime = finished;
  }

  TTaskGrid &grid = m_tasks->unfinishTask_AdvStringGrid;
  if (EditMode == Mode::Edit) {
    SetTaskRow(task, grid);
    m_tasks->UpdateTask(task);
  } else {
    task.ID = m_tasks->AddTask(task);
    AddTaskRow(task, grid);
  }
  m_task = task;

  // Let the screens show the saved row before the list moves under it; the
  // operator may act meanwhile, so nothing of the grid is held across the wait.
  m_saving = true;
  QPointer<TTaskEdit_Form> self(this);
  {
    QEventLoop wait;
    QTimer::singleShot(SaveSortDelayMs, &wait, &QEventLoop::quit);
    wait.exec();
  }
  if (!self)
    return;
  m_saving = false;
  m_tasks->unfinishTask_AdvStringGrid.SortByDeadline();
  Close();
}

void TTaskEdit_Form::TeButton1Click() {
  if (FindByName)
    FindByName(contacter_TeEdit);
}

void TTaskEdit_Form::TeButton5Click() {
  FindDialog1_FindText = Context_SelText;
  FindDialog1.SetText(Context_TeMemo);
  FindDialog1.MoveCaretToStart();
  FindDialog1_Visible = true;
}

bool TTaskEdit_Form::FindDialog1Find() {
  // The description may have been edited while the dialog was open.
  QString memo = Context_TeMemo;
  memo.replace(u"\r\n"_s, u"\n"_s);
  if (FindDialog1.Lines().join(u'\n') != memo)
    FindDialog1.SetText(Context_TeMemo);
  return FindDialog1.FindNext(FindDialog1_FindText);
}
