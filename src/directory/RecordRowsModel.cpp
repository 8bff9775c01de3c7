#include "directory/RecordRowsModel.h"

void TRecordRowsModel::Load(RecordProtocol::Answer answer) {
  beginResetModel();
  m_columns = std::move(answer.Columns);
  m_rows = std::move(answer.Rows);
  endResetModel();
}

void TRecordRowsModel::Clear() {
  beginResetModel();
  m_columns.clear();
  m_rows.clear();
  endResetModel();
}

QString TRecordRowsModel::Value(int row, const QString &column) const {
  const qsizetype c = m_columns.indexOf(column, 0);
  const qsizetype at = c >= 0 ? c : [&] {
    for (qsizetype i = 0; i < m_columns.size(); ++i)
      if (m_columns[i].compare(column, Qt::CaseInsensitive) == 0)
        return i;
    return qsizetype(-1);
  }();
  if (at < 0 || row < 0 || row >= m_rows.size())
    return QString();
  return m_rows[row].value(at);
}

int TRecordRowsModel::rowCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : int(m_rows.size());
}

int TRecordRowsModel::columnCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : int(m_columns.size());
}

QVariant TRecordRowsModel::data(const QModelIndex &index, int role) const {
  if (role != Qt::DisplayRole || !index.isValid())
    return {};
  return m_rows[index.row()].value(index.column());
}

QVariant TRecordRowsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
    return {};
  return m_columns.value(section);
}
