#pragma once

#include "directory/Query.h"
#include "directory/TaskModel.h"
#include "support/FormLogic.h"

#include <array>

class TTaskEdit_Form;

// How many open tasks fall due today, are overdue, and fall due later.
struct TTaskCounts {
  int Today = 0;
  int Overdue = 0;
  int Later = 0;
};

// The task window: the operator's list of tasks, coloured by deadline. It owns
// its edit window. Failures of the store aren't caught here: they end the handler
// and reach the operator through the application-wide handler.
class TTasks_Form : public TFormLogic {
  Q_OBJECT

public:
  explicit TTasks_Form(QObject *parent = nullptr);
  ~TTasks_Form() override;

  TTaskEdit_Form &EditForm() { return *m_edit; }

  TTaskGrid unfinishTask_AdvStringGrid;
  // Widths of the grid's columns; the deadline is twice as wide as the rest.
  static constexpr int kDefaultColWidth = 64;
  std::array<int, TTaskGrid::ColumnCount> ColWidths{};

  TADOQuery Excute_ADOQuery{QStringLiteral("Excute_ADOQuery")};
  TADOQuery Select_ADOQuery{QStringLiteral("Select_ADOQuery")};

  // The store.
  qint32 AddTask(const TTaskType &task); // returns the new ID
  void UpdateTask(const TTaskType &task);
  void DeleteTask(qint32 id);
  void LoadTasks();
  TTaskCounts CountTasks(TDateTime date, qint32 status);

  void FormCreate();
  void init_TeSpeedButtonClick(); // the grid afresh from the store
  void TeButton2Click();          // "未完成事务": the open tasks
  void TeButton1Click();          // "已完成事务": the finished tasks
  void TeSpeedButton1Click();     // new task
  void TeSpeedButton2Click();     // delete the current task
  void TeSpeedButton3Click();     // sort by deadline
  // A double click on a data row opens the current task for editing.
  void unfinishTask_AdvStringGridDblClick(int row);

  // The contact book's "设为事务关联对象": the contact's name becomes the related
  // contact of the task being edited, or else of the current task in the list.
  void LinkContact(const QString &name);

  // A click on the tray icon: how the open tasks stand today, in a balloon.
  void TrayIconClick();

private:
  TTaskEdit_Form *m_edit; // a child of this window
};
