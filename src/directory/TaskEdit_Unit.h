#pragma once

#include "directory/MemoFind.h"
#include "directory/TaskModel.h"
#include "support/FormLogic.h"

#include <functional>

class TTasks_Form;

// The task edit window: one task's title, description, related contact and
// dates. It works on a copy of the task it was given; saving writes the store
// and the task window's grid.
class TTaskEdit_Form : public TFormLogic {
  Q_OBJECT

public:
  enum class Mode { New, Edit };

  explicit TTaskEdit_Form(TTasks_Form *tasks, QObject *parent = nullptr);

  Mode EditMode = Mode::New;
  bool StayOnTop = false; // opened for editing, it stays above the other windows

  QString Title_TeSEdit;
  QString Context_TeMemo;
  QString Context_SelText; // the memo's selection, as the screen reports it
  QString contacter_TeEdit;
  TDateTime LastTime_TeDateTimePicker;
  TDateTime CreateTime_TeDateTimePicker;
  QString finishTime_TeLabel;

  // The description search: its dialog's text and options, and where it stands
  // in the memo.
  bool FindDialog1_Visible = false;
  QString FindDialog1_FindText;
  TMemoFind FindDialog1;

  // Shows the contact book's card of a name; the main form wires it.
  std::function<void(const QString &name)> FindByName;

  // How long a save lets the screens catch up before the list is sorted.
  int SaveSortDelayMs = 500;

  const TTaskType &Task() const { return m_task; }
  void SetTask(const TTaskType &task);
  void ShowAs(Mode mode);

  void finish_TeButtonClick();
  void unfinish_TeButtonClick();
  void save_TeButtonClick();
  void TeButton1Click(); // the related contact's card
  void TeButton5Click(); // "文本搜索"
  bool FindDialog1Find(); // true on a hit

private:
  TTasks_Form *m_tasks;
  TTaskType m_task;
  bool m_saving = false;
};
