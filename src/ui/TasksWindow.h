#pragma once

#include <QWidget>

class MemoFindDialog;
class QDateTimeEdit;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTableView;
class TTaskEdit_Form;
class TTasks_Form;

// The task list: the open (or finished) tasks with their deadline colours, and
// the keys to filter, add, delete, sort and open one for editing.
class TasksWindow : public QWidget {
  Q_OBJECT

public:
  TasksWindow(TTasks_Form &tasks, QWidget *parent = nullptr);

  // The toolbar's "事务管理" shows and hides the list.
  void Toggle();

private:
  TTasks_Form &m_tasks;
  QTableView *m_grid;
};

// One task: title, description with its search, related contact with its card,
// deadline and the dates it was made and finished; save, finish.
class TaskEditWindow : public QWidget {
  Q_OBJECT

public:
  TaskEditWindow(TTaskEdit_Form &edit, QWidget *parent = nullptr);

private:
  void FromLogic();
  void ToLogic();

  TTaskEdit_Form &m_edit;
  QLineEdit *m_title;
  QPlainTextEdit *m_context;
  QLineEdit *m_contacter;
  QDateTimeEdit *m_deadline;
  QLabel *m_created;
  QLabel *m_finished;
  MemoFindDialog *m_find;
};
