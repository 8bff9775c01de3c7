#include "directory/ContactGridModel.h"

#include "support/LanguagePack.h"

using namespace Qt::StringLiterals;

const std::array<QString, TContactGridModel::kColumnCount> TContactGridModel::FieldNames = {
    u"name"_s, u"BranchTel"_s, u"company"_s, u"Duty"_s, u"phone1"_s, u"E_Mail"_s};

TContactGridModel::TContactGridModel(QObject *parent) : QAbstractTableModel(parent) {
  setObjectName(u"MainInfo_DBAdvStringGrid"_s);
  ResetTitles();
}

QString TContactGridModel::PlainTitle(int column) {
  // The last column has no text of its own in the packs.
  return column == kColumnCount - 1 ? u"E-Mail"_s : LangText(353 + column);
}

void TContactGridModel::ResetTitles() {
  for (int c = 0; c < kColumnCount; ++c)
    Titles[size_t(c)] = PlainTitle(c);
  emit headerDataChanged(Qt::Horizontal, 0, kColumnCount - 1);
}

void TContactGridModel::SetTitle(int column, const QString &title) {
  Titles[size_t(column)] = title;
  emit headerDataChanged(Qt::Horizontal, column, column);
}

void TContactGridModel::OpenSQL(const QString &sql) {
  MainInfo_ADOQuery.Close();
  MainInfo_ADOQuery.SQL = sql;
  try {
    MainInfo_ADOQuery.Open();
  } catch (...) {
    Reload();
    throw;
  }
  Reload();
}

void TContactGridModel::CloseQuery() {
  MainInfo_ADOQuery.Close();
  Reload();
}

void TContactGridModel::Reopen() {
  OpenSQL(MainInfo_ADOQuery.SQL);
}

void TContactGridModel::RefreshQuery() {
  MainInfo_ADOQuery.Refresh();
  Reload();
}

void TContactGridModel::DeleteCurrent() {
  MainInfo_ADOQuery.Delete();
  Reload();
}

int TContactGridModel::CurrentRow() const {
  if (!MainInfo_ADOQuery.Active() || MainInfo_ADOQuery.IsEmpty())
    return -1;
  return MainInfo_ADOQuery.RecNo() - 1;
}

void TContactGridModel::SetCurrentRow(int row) {
  if (row < 0 || row >= int(m_rows.size()) || row == CurrentRow())
    return;
  MainInfo_ADOQuery.SetRecNo(row + 1);
  emit currentRowChanged(CurrentRow());
}

void TContactGridModel::First() {
  if (!Active())
    return;
  MainInfo_ADOQuery.First();
  emit currentRowChanged(CurrentRow());
}

void TContactGridModel::Prior() {
  if (!Active())
    return;
  MainInfo_ADOQuery.Prior();
  emit currentRowChanged(CurrentRow());
}

void TContactGridModel::Next() {
  if (!Active())
    return;
  MainInfo_ADOQuery.Next();
  emit currentRowChanged(CurrentRow());
}

void TContactGridModel::Last() {
  if (!Active())
    return;
  MainInfo_ADOQuery.Last();
  emit currentRowChanged(CurrentRow());
}

void TContactGridModel::Reload() {
  beginResetModel();
  m_rows.clear();
  TADOQuery &q = MainInfo_ADOQuery;
  if (q.Active() && !q.IsEmpty()) {
    const int keep = q.RecNo();
    m_rows.reserve(q.RecordCount());
    for (q.First(); !q.Eof(); q.Next()) {
      Row row;
      for (int c = 0; c < kColumnCount; ++c)
        row.Cells[size_t(c)] = q.AsString(FieldNames[size_t(c)]);
      row.ID = q.AsInteger(u"ID"_s);
      m_rows.append(row);
    }
    q.SetRecNo(keep);
  }
  endResetModel();
  emit currentRowChanged(CurrentRow());
}

int TContactGridModel::rowCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : int(m_rows.size());
}

int TContactGridModel::columnCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QVariant TContactGridModel::data(const QModelIndex &index, int role) const {
  if (!index.isValid() || index.row() >= int(m_rows.size()) || index.column() >= kColumnCount)
    return {};
  const Row &row = m_rows.at(index.row());
  if (role == Qt::DisplayRole)
    return row.Cells[size_t(index.column())];
  if (role == ContactIdRole)
    return row.ID;
  return {};
}

QVariant TContactGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
      section >= kColumnCount)
    return {};
  return Titles[size_t(section)];
}
