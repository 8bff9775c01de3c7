#include "directory/TaskEdit_Unit.h"

#include "directory/Tasks_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"

#include <QEventLoop>
#include <QPointer>
#include <QTimer>

using namespace Qt::StringLiterals;

bool FindInMemo(const QString &text, const TMemoFindOptions &options, TMemoCaret &caret) {
  const QString pattern =
      options.WholeWord ? u' ' + options.FindText.trimmed() + u' ' : options.FindText;
  if (pattern.isEmpty())
    return false;
  const Qt::CaseSensitivity cs = options.MatchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
  const QStringList lines = text.split(u'\n');
  QList<int> lineStart;
  int offset = 0;
  for (const QString &line : lines) {
    lineStart.append(offset);
    offset += int(line.size()) + 1;
  }

  // The line and column the search starts from: behind the selection going down,
  // ahead of it going up.
  const int from = std::clamp(options.Down ? caret.SelStart + caret.SelLength : caret.SelStart, 0,
                              int(text.size()));
  int line = 0;
  while (line + 1 < lines.size() && lineStart[line + 1] <= from)
    ++line;
  const int column = from - lineStart[line];

  auto hit = [&](int atLine, qsizetype atColumn) {
    caret.SelStart = lineStart[atLine] + int(atColumn);
    caret.SelLength = int(pattern.size());
    return true;
  };

  if (options.Down) {
    for (int l = line; l < lines.size(); ++l) {
      const qsizetype at = lines[l].indexOf(pattern, l == line ? column : 0, cs);
      if (at >= 0)
        return hit(l, at);
    }
    return false;
  }
  for (int l = line; l >= 0; --l) {
    qsizetype at = -1;
    if (l != line)
      at = lines[l].lastIndexOf(pattern, cs);
    else if (column - pattern.size() >= 0) // the hit must end before the caret
      at = lines[l].lastIndexOf(pattern, column - pattern.size(), cs);
    if (at >= 0)
      return hit(l, at);
  }
  return false;
}

TTaskEdit_Form::TTaskEdit_Form(TTasks_Form *tasks, QObject *parent)
    : TFormLogic("TTaskEdit_Form", parent), m_tasks(tasks) {}

void TTaskEdit_Form::SetTask(const TTaskType &task) {
  m_task = task;
  Title_TeSEdit = task.Title;
  Context_TeMemo = task.Context;
  Context_Caret = {};
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
  FindDialog1.FindText = Context_TeMemo.mid(Context_Caret.SelStart, Context_Caret.SelLength);
  Context_Caret = {};
  FindDialog1_Visible = true;
}

void TTaskEdit_Form::FindDialog1Find() {
  if (FindDialog1.FindText.isEmpty())
    return;
  if (!FindInMemo(Context_TeMemo, FindDialog1, Context_Caret))
    TheShell().Message(MessageKind::Information, LangText(FindDialog1.Down ? 271 : 272));
}
