#include "directory/TaskModel.h"

#include "support/Clock.h"
#include "support/LanguagePack.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
// A date cell: the console's format, empty for "none", so that reading it back
// gives zero again.
QString DateCell(TDateTime value) {
  return value.IsZero() ? QString() : DateTimeToStr(value);
}

TDateTime CellDate(const QString &text) {
  TDateTime value;
  TryStrToDateTime(text, &value);
  return value;
}

TDateTime DeadlineOf(const QStringList &cells) {
  return CellDate(cells.value(TTaskGrid::ColDeadline));
}
} // namespace

TTaskColour TaskDeadlineColour(const QString &statusCell, const QString &deadlineCell,
                               TDateTime present) {
  if (statusCell != u"0"_s)
    return TTaskColour::Normal;
  TDateTime deadline;
  if (!TryStrToDateTime(deadlineCell, &deadline))
    return TTaskColour::Normal;
  if (deadline.SameAs(present))
    return TTaskColour::InfoTip;
  return deadline < present ? TTaskColour::Overdue : TTaskColour::Ahead;
}

QString TaskBalloonDescription(const QString &context) {
  QString text = context;
  text.replace(u"\r\n"_s, u"\n"_s);
  QStringList lines = text.split(u'\n');
  // A closing line end doesn't start another line.
  if (lines.size() > 1 && lines.last().isEmpty())
    lines.removeLast();
  if (lines.size() <= kTaskBalloonLines)
    return lines.join(u'\n');
  lines = lines.mid(0, kTaskBalloonLines);
  lines.append(u"..."_s);
  return lines.join(u'\n');
}

TTaskGrid::TTaskGrid(QObject *parent) : QAbstractTableModel(parent) {}

int TTaskGrid::rowCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : int(m_shown.size());
}

int TTaskGrid::columnCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : ColumnCount;
}

QVariant TTaskGrid::data(const QModelIndex &index, int role) const {
  if (!index.isValid() || index.row() >= m_shown.size())
    return {};
  const QStringList &cells = m_rows[m_shown[index.row()]].Cells;
  switch (role) {
  case Qt::DisplayRole:
  case Qt::EditRole:
    return cells.value(index.column());
  case ColourRole:
    return int(RowColour(index.row()));
  case BalloonTitleRole:
    return cells.value(ColTitle);
  case BalloonTextRole:
  case Qt::ToolTipRole:
    return LangFormat(614, {TaskBalloonDescription(cells.value(ColContext))});
  default:
    return {};
  }
}

QVariant TTaskGrid::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
    return {};
  return m_titles.value(section);
}

void TTaskGrid::Clear() {
  beginResetModel();
  m_rows.clear();
  m_shown.clear();
  m_filter.clear();
  endResetModel();
  SetCurrentRow(-1);
}

void TTaskGrid::SetTitles(const QStringList &titles) {
  m_titles = titles;
  emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

QString TTaskGrid::Cell(int row, int column) const {
  if (row < 0 || row >= m_shown.size())
    return {};
  return m_rows[m_shown[row]].Cells.value(column);
}

void TTaskGrid::SetCell(int row, int column, const QString &text) {
  if (row < 0 || row >= m_shown.size() || column < 0 || column >= ColumnCount)
    return;
  m_rows[m_shown[row]].Cells[column] = text;
  // The status and the deadline colour the whole row.
  emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

int TTaskGrid::AppendRow(const QStringList &cells) {
  Row r;
  r.Cells = cells;
  while (r.Cells.size() < ColumnCount)
    r.Cells.append(QString());
  r.Cells = r.Cells.mid(0, ColumnCount);
  const int row = int(m_shown.size());
  beginInsertRows(QModelIndex(), row, row);
  m_rows.append(r);
  m_shown.append(int(m_rows.size()) - 1);
  endInsertRows();
  return row;
}

void TTaskGrid::RemoveShownRow(int row) {
  if (row < 0 || row >= m_shown.size())
    return;
  beginRemoveRows(QModelIndex(), row, row);
  m_rows.removeAt(m_shown[row]);
  RebuildShown();
  endRemoveRows();
  if (m_current >= int(m_shown.size()))
    SetCurrentRow(int(m_shown.size()) - 1);
  else if (m_current > row)
    SetCurrentRow(m_current - 1);
}

void TTaskGrid::SetFilter(const QString &status) {
  beginResetModel();
  m_filter = status;
  for (Row &r : m_rows)
    r.Shown = status.isEmpty() || r.Cells.value(ColStatus) == status;
  RebuildShown();
  endResetModel();
  AnnounceCurrentRow(m_shown.isEmpty() ? -1 : 0);
}

void TTaskGrid::SortByDeadline() {
  const int currentStore = m_current >= 0 ? m_shown[m_current] : -1;
  emit layoutAboutToBeChanged();
  QList<TDateTime> deadlines;
  QList<int> order;
  for (int i = 0; i < m_rows.size(); ++i) {
    deadlines.append(DeadlineOf(m_rows[i].Cells));
    order.append(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return deadlines[a] < deadlines[b]; });
  QList<Row> sorted;
  QList<int> newStoreOf(m_rows.size());
  for (int i = 0; i < order.size(); ++i) {
    sorted.append(m_rows[order[i]]);
    newStoreOf[order[i]] = i;
  }
  const QList<int> shownBefore = m_shown;
  m_rows = sorted;
  RebuildShown();
  // The views' indexes follow their tasks.
  const QModelIndexList before = persistentIndexList();
  QModelIndexList after;
  for (const QModelIndex &idx : before) {
    const int store = newStoreOf[shownBefore[idx.row()]];
    after.append(index(int(m_shown.indexOf(store)), idx.column()));
  }
  changePersistentIndexList(before, after);
  emit layoutChanged();
  if (currentStore >= 0)
    AnnounceCurrentRow(int(m_shown.indexOf(newStoreOf[currentStore])));
}

void TTaskGrid::SetCurrentRow(int row) {
  if (row < -1 || row >= m_shown.size())
    row = -1;
  if (row == m_current)
    return;
  m_current = row;
  emit currentRowChanged(row);
}

TTaskColour TTaskGrid::RowColour(int row) const {
  return TaskDeadlineColour(Cell(row, ColStatus), Cell(row, ColDeadline), Now());
}

void TTaskGrid::AnnounceCurrentRow(int row) {
  // After a filter or a sort the old number may name another task: the views
  // learn the row even when its number stayed.
  m_current = row < -1 || row >= m_shown.size() ? -1 : row;
  emit currentRowChanged(m_current);
}

void TTaskGrid::RebuildShown() {
  m_shown.clear();
  for (int i = 0; i < m_rows.size(); ++i) {
    if (m_rows[i].Shown)
      m_shown.append(i);
  }
}

namespace {
QStringList TaskCells(const TTaskType &task) {
  QStringList cells(TTaskGrid::ColumnCount);
  cells[TTaskGrid::ColTitle] = task.Title;
  cells[TTaskGrid::ColDeadline] = DateCell(task.lastDateTime);
  cells[TTaskGrid::ColStatus] = QString::number(task.Status);
  cells[TTaskGrid::ColID] = QString::number(task.ID);
  cells[TTaskGrid::ColFinish] = DateCell(task.finishDateTime);
  cells[TTaskGrid::ColCreate] = DateCell(task.createDatetime);
  cells[TTaskGrid::ColContacters] = task.contacters;
  cells[TTaskGrid::ColContext] = task.Context;
  return cells;
}
} // namespace

void AddTaskRow(const TTaskType &task, TTaskGrid &grid) {
  grid.SetCurrentRow(grid.AppendRow(TaskCells(task)));
}

void SetTaskRow(const TTaskType &task, TTaskGrid &grid) {
  const int row = grid.CurrentRow();
  if (row < 0)
    return;
  const QStringList cells = TaskCells(task);
  for (int column = 0; column < cells.size(); ++column) {
    if (column != TTaskGrid::ColUnused)
      grid.SetCell(row, column, cells[column]);
  }
}

void GetTaskRow(int row, const TTaskGrid &grid, TTaskType &task) {
  task = TTaskType{};
  task.Title = grid.Cell(row, TTaskGrid::ColTitle);
  task.lastDateTime = CellDate(grid.Cell(row, TTaskGrid::ColDeadline));
  task.Status = grid.Cell(row, TTaskGrid::ColStatus).toInt();
  task.ID = grid.Cell(row, TTaskGrid::ColID).toInt();
  task.finishDateTime = CellDate(grid.Cell(row, TTaskGrid::ColFinish));
  task.createDatetime = CellDate(grid.Cell(row, TTaskGrid::ColCreate));
  task.contacters = grid.Cell(row, TTaskGrid::ColContacters);
  task.Context = grid.Cell(row, TTaskGrid::ColContext);
}
