#pragma once

#include "directory/TaskModel.h"
#include "support/FormLogic.h"

#include <functional>

class TTasks_Form;

// The find dialog of a memo: what to look for and how.
struct TMemoFindOptions {
  QString FindText;
  bool Down = true;
  bool MatchCase = false;
  bool WholeWord = false;
};

// A memo's text with its caret and selection, counted in characters of the text
// (a line end is one character).
struct TMemoCaret {
  int SelStart = 0;
  int SelLength = 0;
};

// One press of the find dialog's "find next" on a memo: searches line by line
// from the caret, down or up, and on a hit selects the found text so that the
// next press goes on behind it. Case counts only when asked. A whole-word search
// looks for the trimmed text between blanks. Returns false when the search ran
// off the end (or the start) without a hit; the caret then stays.
bool FindInMemo(const QString &text, const TMemoFindOptions &options, TMemoCaret &caret);

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
  TMemoCaret Context_Caret;
  QString contacter_TeEdit;
  TDateTime LastTime_TeDateTimePicker;
  TDateTime CreateTime_TeDateTimePicker;
  QString finishTime_TeLabel;

  // The description search's dialog.
  bool FindDialog1_Visible = false;
  TMemoFindOptions FindDialog1;

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
  void FindDialog1Find();

private:
  TTasks_Form *m_tasks;
  TTaskType m_task;
  bool m_saving = false;
};
