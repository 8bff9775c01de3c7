#include "directory/CallListModel.h"

#include <algorithm>

using namespace Qt::StringLiterals;

TCallListModel::TCallListModel(const QString &name, QObject *parent)
    : QAbstractTableModel(parent), Headers{u"姓 名"_s, u"来电号码"_s, u"电话号码"_s,
                                           u"手 机"_s, u"单 位"_s,    u"来电时间"_s} {
  setObjectName(name);
}

QList<TLmdlistItemRam> TCallListModel::Items() const {
  QList<TLmdlistItemRam> items;
  items.reserve(m_rows.size());
  for (const Row &row : m_rows)
    items.append(row.Item);
  return items;
}

void TCallListModel::Insert(int index, const TLmdlistItemRam &item) {
  index = std::clamp(index, 0, Count());
  beginInsertRows(QModelIndex(), index, index);
  m_rows.insert(index, Row{item, false});
  if (ItemIndex >= index)
    ++ItemIndex;
  endInsertRows();
}

void TCallListModel::Add(const TLmdlistItemRam &item) {
  Insert(Count(), item);
}

void TCallListModel::Replace(int index, const TLmdlistItemRam &item) {
  m_rows[index].Item = item;
  emit dataChanged(this->index(index, 0), this->index(index, kColumnCount - 1));
}

void TCallListModel::Delete(int index) {
  beginRemoveRows(QModelIndex(), index, index);
  m_rows.removeAt(index);
  if (ItemIndex == index)
    ItemIndex = -1;
  else if (ItemIndex > index)
    --ItemIndex;
  endRemoveRows();
}

void TCallListModel::Clear() {
  beginResetModel();
  m_rows.clear();
  ItemIndex = -1;
  endResetModel();
}

void TCallListModel::SetSelected(int index, bool selected) {
  m_rows[index].Selected = selected;
}

int TCallListModel::SelCount() const {
  return int(std::count_if(m_rows.begin(), m_rows.end(), [](const Row &r) { return r.Selected; }));
}

int TCallListModel::rowCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : Count();
}

int TCallListModel::columnCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QVariant TCallListModel::data(const QModelIndex &index, int role) const {
  if (!index.isValid() || index.row() >= Count())
    return {};
  const TLmdlistItemRam &item = Item(index.row());
  if (role == ItemTextRole)
    return item.Text();
  if (role != Qt::DisplayRole)
    return {};
  switch (index.column()) {
  case 0:
    return item.Name;
  case 1:
    return item.Number;
  case 2:
    return item.Telephone;
  case 3:
    return item.Mobile;
  case 4:
    return item.Company;
  case 5:
    return item.Time;
  default:
    return {};
  }
}

QVariant TCallListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
      section >= kColumnCount)
    return {};
  return Headers[size_t(section)];
}

bool TCallListModel::setHeaderData(int section, Qt::Orientation orientation, const QVariant &value,
                                   int role) {
  if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount ||
      (role != Qt::EditRole && role != Qt::DisplayRole))
    return false;
  Headers[size_t(section)] = value.toString();
  emit headerDataChanged(orientation, section, section);
  return true;
}
