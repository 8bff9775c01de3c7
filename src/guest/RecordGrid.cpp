#include "guest/RecordGrid.h"

#include "directory/Query.h"

TRecordGridModel::TRecordGridModel(QList<TRecordColumn> columns, QObject *parent)
    : QAbstractTableModel(parent), m_columns(std::move(columns)) {}

void TRecordGridModel::Load(TADOQuery &query) {
  beginResetModel();
  m_rows.clear();
  for (query.First(); !query.Eof(); query.Next()) {
    QStringList row;
    row.reserve(m_columns.size());
    for (const TRecordColumn &c : m_columns)
      row << query.AsString(c.Field);
    m_rows << row;
  }
  CurrentRow = m_rows.isEmpty() ? -1 : 0;
  endResetModel();
}

void TRecordGridModel::Clear() {
  beginResetModel();
  m_rows.clear();
  CurrentRow = -1;
  endResetModel();
}

QString TRecordGridModel::Stored(int row, const QString &field) const {
  if (row < 0 || row >= m_rows.size())
    return QString();
  for (int c = 0; c < m_columns.size(); ++c) {
    if (m_columns[c].Field.compare(field, Qt::CaseInsensitive) == 0)
      return m_rows[row][c];
  }
  return QString();
}

QString TRecordGridModel::Shown(int row, int column) const {
  if (row < 0 || row >= m_rows.size() || column < 0 || column >= m_columns.size())
    return QString();
  return m_columns[column].Text(m_rows[row][column]);
}

int TRecordGridModel::rowCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : int(m_rows.size());
}

int TRecordGridModel::columnCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : int(m_columns.size());
}

QVariant TRecordGridModel::data(const QModelIndex &index, int role) const {
  if (!index.isValid() || index.row() >= m_rows.size() || index.column() >= m_columns.size())
    return {};
  const TRecordColumn &c = m_columns[index.column()];
  const QString &stored = m_rows[index.row()][index.column()];
  switch (role) {
  case Qt::DisplayRole:
    return c.Text(stored);
  case StoredRole:
    return stored;
  case IconRole:
    return c.Icon ? c.Icon(stored) : QString();
  default:
    return {};
  }
}

QVariant TRecordGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
      section >= m_columns.size())
    return QAbstractTableModel::headerData(section, orientation, role);
  return m_columns[section].Title;
}

// The language texts land here when the pack is applied.
bool TRecordGridModel::setHeaderData(int section, Qt::Orientation orientation,
                                     const QVariant &value, int role) {
  if (orientation != Qt::Horizontal || section < 0 || section >= m_columns.size() ||
      (role != Qt::DisplayRole && role != Qt::EditRole) || value.toString().isEmpty())
    return false;
  m_columns[section].Title = value.toString();
  emit headerDataChanged(orientation, section, section);
  return true;
}
