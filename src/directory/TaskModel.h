#pragma once

#include "support/TDateTime.h"

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

// A task of the operator's list.
struct TTaskType {
  qint32 ID = 0;
  QString Title;
  QString Context; // the description
  qint32 Unused = 0;
  TDateTime createDatetime;
  TDateTime lastDateTime;   // the deadline
  TDateTime finishDateTime; // zero while unfinished
  qint32 Status = 0;        // kTaskUnfinished or kTaskFinished
  QString creater;
  QString contacters;
};

inline constexpr qint32 kTaskUnfinished = 0;
inline constexpr qint32 kTaskFinished = 1;

// How an open task's cells are coloured by its deadline; the screens turn these
// into colours. A finished task, or one whose deadline doesn't read as a date,
// keeps the grid's own colour.
enum class TTaskColour {
  Normal,  // the grid's colour
  InfoTip, // due this very moment: the desktop's tool-tip background
  Overdue, // kTaskOverdueRgb
  Ahead,   // kTaskAheadRgb
};
inline constexpr unsigned kTaskOverdueRgb = 0xFFCF88; // 255, 207, 136
inline constexpr unsigned kTaskAheadRgb = 0xC6D5EE;   // 198, 213, 238

// The colour of an open task whose deadline cell reads as the text given, at the
// present time; Normal for a finished task or a deadline that isn't a date.
TTaskColour TaskDeadlineColour(const QString &statusCell, const QString &deadlineCell,
                               TDateTime present);

// The balloon of a task's cell: the description's first 15 lines, and a line
// "..." when there were more, so a long description can't cover the desk.
inline constexpr int kTaskBalloonLines = 15;
QString TaskBalloonDescription(const QString &context);

// The task grid, unfinishTask_AdvStringGrid. Every task of the run lives here as
// text, one row each, whether the filter shows it or not: the window reads its
// tasks back from the cells. The columns are TaskColumn; only the title and the
// deadline are shown.
//
// The filter on the status column is applied when it is set; a row added or
// changed later stays shown until the next filter change, so a task the operator
// just finished doesn't vanish under his hand.
class TTaskGrid : public QAbstractTableModel {
  Q_OBJECT

public:
  enum TaskColumn {
    ColTitle = 0,
    ColDeadline = 1,
    ColStatus = 2,
    ColID = 3,
    ColFinish = 4,
    ColCreate = 5,
    ColUnused = 6,
    ColContacters = 7,
    ColContext = 8,
    ColumnCount = 9,
  };

  enum Role {
    ColourRole = Qt::UserRole + 1, // TTaskColour as int
    BalloonTitleRole,
    BalloonTextRole, // also given as Qt::ToolTipRole
  };

  explicit TTaskGrid(QObject *parent = nullptr);

  int rowCount(const QModelIndex &parent = QModelIndex()) const override;
  int columnCount(const QModelIndex &parent = QModelIndex()) const override;
  QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;

  static bool ColumnHidden(int column) { return column >= ColStatus; }

  // Back to the title row alone: every task gone, no filter, no current row.
  void Clear();
  void SetTitles(const QStringList &titles);

  // Rows are the shown rows, from 0.
  QString Cell(int row, int column) const;
  void SetCell(int row, int column, const QString &text);
  int AppendRow(const QStringList &cells); // shown at once; returns its row
  void RemoveShownRow(int row);
  int TotalRowCount() const { return int(m_rows.size()); } // shown or not

  // Shows only the rows whose status column holds the text; empty shows all.
  void SetFilter(const QString &status);
  QString Filter() const { return m_filter; }

  // Sorts every row by its deadline, earliest first, ties in their order. The
  // current row follows its task.
  void SortByDeadline();

  int CurrentRow() const { return m_current; } // -1 when none
  void SetCurrentRow(int row);

  TTaskColour RowColour(int row) const;

signals:
  void currentRowChanged(int row);

private:
  struct Row {
    QStringList Cells;
    bool Shown = true;
  };
  void RebuildShown();
  void AnnounceCurrentRow(int row);

  QList<Row> m_rows;
  QList<int> m_shown; // indexes into m_rows, in order
  QStringList m_titles;
  QString m_filter;
  int m_current = -1;
};

// A task into a new row at the end, which becomes the current row.
void AddTaskRow(const TTaskType &task, TTaskGrid &grid);
// Rewrites the current row with the task.
void SetTaskRow(const TTaskType &task, TTaskGrid &grid);
// Reads a shown row back; an empty or unreadable cell leaves its field zero.
void GetTaskRow(int row, const TTaskGrid &grid, TTaskType &task);
