#include "guest/ExtGridModel.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
// * and ? over the whole cell, any character (slashes and line ends too).
QRegularExpression WildcardPattern(const QString &condition) {
  QString pattern;
  for (const QChar c : condition) {
    if (c == u'*')
      pattern += u".*"_s;
    else if (c == u'?')
      pattern += u'.';
    else
      pattern += QRegularExpression::escape(QString(c));
  }
  return QRegularExpression(QRegularExpression::anchoredPattern(pattern),
                            QRegularExpression::CaseInsensitiveOption |
                                QRegularExpression::DotMatchesEverythingOption);
}
} // namespace

TExtGridModel::TExtGridModel(QObject *parent) : QAbstractTableModel(parent) {
  // The grid is designed with one empty data row, which the first extension takes.
  AddSlot();
}

int TExtGridModel::rowCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : ShownCount();
}

int TExtGridModel::columnCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : kColumnCount;
}

QVariant TExtGridModel::data(const QModelIndex &index, int role) const {
  const int slot = index.isValid() ? SlotAt(index.row()) : -1;
  if (slot < 0)
    return {};
  const Row &r = m_rows[size_t(slot)];
  const int column = index.column();
  switch (role) {
  case Qt::DisplayRole:
  case Qt::EditRole:
    return column == ColCheck ? QVariant() : QVariant(r.Cells[size_t(column)]);
  case Qt::CheckStateRole:
    if (column != ColCheck)
      return {};
    return r.Check == u"TRUE"_s ? Qt::Checked : Qt::Unchecked;
  case CheckTextRole:
    return column == ColCheck ? QVariant(r.Check) : QVariant();
  case ColourRole:
    return column == ColMoringTime ? QVariant(r.MoringColour) : QVariant();
  default:
    return {};
  }
}

bool TExtGridModel::setData(const QModelIndex &index, const QVariant &value, int role) {
  const int slot = index.isValid() ? SlotAt(index.row()) : -1;
  if (slot < 0)
    return false;
  if (index.column() == ColCheck && role == Qt::CheckStateRole) {
    SetCheck(slot, value.toInt() == Qt::Checked ? u"TRUE"_s : u"FALSE"_s);
    return true;
  }
  if (index.column() == ColRoomNo && role == Qt::EditRole) {
    const Row &r = m_rows[size_t(slot)];
    const QString text = value.toString();
    if (r.Id < 0 || !RoomNoEdited || !RoomNoEdited(r.Id, text))
      return false;
    SetCell(slot, ColRoomNo, text);
    return true;
  }
  return false;
}

QVariant TExtGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount)
    return {};
  if (role == Qt::DisplayRole || role == Qt::EditRole)
    return m_titles[size_t(section)];
  return {};
}

bool TExtGridModel::setHeaderData(int section, Qt::Orientation orientation,
                                  const QVariant &value, int role) {
  if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount ||
      (role != Qt::DisplayRole && role != Qt::EditRole))
    return false;
  m_titles[size_t(section)] = value.toString();
  emit headerDataChanged(orientation, section, section);
  return true;
}

Qt::ItemFlags TExtGridModel::flags(const QModelIndex &index) const {
  if (!index.isValid())
    return Qt::NoItemFlags;
  Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (index.column() == ColCheck)
    f |= Qt::ItemIsUserCheckable;
  else if (index.column() == ColRoomNo)
    f |= Qt::ItemIsEditable;
  return f;
}

void TExtGridModel::sort(int column, Qt::SortOrder order) {
  if (column <= ColCheck || column >= kColumnCount)
    return;
  emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  const QModelIndexList before = persistentIndexList();
  QList<int> beforeSlots;
  for (const QModelIndex &i : before)
    beforeSlots << SlotAt(i.row());

  const auto less = [&](int a, int b) {
    const QString &x = m_rows[size_t(a)].Cells[size_t(column)];
    const QString &y = m_rows[size_t(b)].Cells[size_t(column)];
    if (column == ColID) {
      bool okX = false;
      bool okY = false;
      const int nx = x.toInt(&okX);
      const int ny = y.toInt(&okY);
      if (okX && okY)
        return nx < ny;
      return okX && !okY; // empty IDs go last
    }
    return x < y;
  };
  if (order == Qt::AscendingOrder)
    std::stable_sort(m_order.begin(), m_order.end(), less);
  else
    std::stable_sort(m_order.begin(), m_order.end(), [&](int a, int b) { return less(b, a); });
  m_sortColumn = column;
  m_sortOrder = order;
  Rebuild();

  QModelIndexList after;
  for (int i = 0; i < before.size(); ++i) {
    const int row = beforeSlots[i] < 0 ? -1 : ShownRowOf(beforeSlots[i]);
    after << (row < 0 ? QModelIndex() : index(row, before[i].column()));
  }
  changePersistentIndexList(before, after);
  emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
  emit currentRowChanged(CurrentRow());
}

int TExtGridModel::AddSlot() {
  const int slot = int(m_rows.size());
  m_rows.push_back(Row{});
  m_rows.back().Cells.fill(QString());
  m_order.push_back(slot);
  m_shownPos.push_back(-1);
  if (Passes(m_rows.back())) {
    const int row = ShownCount();
    beginInsertRows({}, row, row);
    m_shown.push_back(slot);
    m_shownPos[size_t(slot)] = row;
    endInsertRows();
  }
  return slot;
}

int TExtGridModel::SlotOfId(int id) const {
  return m_slotOfId.value(id, -1);
}

QString TExtGridModel::Cell(int slot, int column) const {
  if (slot < 0 || slot >= SlotCount() || column < 0 || column >= kColumnCount)
    return {};
  return m_rows[size_t(slot)].Cells[size_t(column)];
}

void TExtGridModel::SetCell(int slot, int column, const QString &text) {
  if (slot < 0 || slot >= SlotCount() || column < 0 || column >= kColumnCount)
    return;
  Row &r = m_rows[size_t(slot)];
  if (r.Cells[size_t(column)] == text)
    return;
  r.Cells[size_t(column)] = text;
  if (column == ColID) {
    if (r.Id >= 0 && m_slotOfId.value(r.Id, -1) == slot)
      m_slotOfId.remove(r.Id);
    bool ok = false;
    const int id = text.toInt(&ok);
    r.Id = ok ? id : -1;
    if (ok)
      m_slotOfId.insert(id, slot);
  }
  if (column == m_filterColumn) {
    // A cell under the filter decides whether its row is shown.
    const bool shown = m_shownPos[size_t(slot)] >= 0;
    if (shown != Passes(r)) {
      beginResetModel();
      Rebuild();
      endResetModel();
      emit currentRowChanged(CurrentRow());
      return;
    }
  }
  CellChanged(slot, column);
}

QString TExtGridModel::Check(int slot) const {
  return slot >= 0 && slot < SlotCount() ? m_rows[size_t(slot)].Check : QString();
}

void TExtGridModel::SetCheck(int slot, const QString &state) {
  if (slot < 0 || slot >= SlotCount() || m_rows[size_t(slot)].Check == state)
    return;
  m_rows[size_t(slot)].Check = state;
  CellChanged(slot, ColCheck);
}

TColor TExtGridModel::Colour(int slot, int column) const {
  if (slot < 0 || slot >= SlotCount() || column != ColMoringTime)
    return kWhite;
  return m_rows[size_t(slot)].MoringColour;
}

void TExtGridModel::SetColour(int slot, int column, TColor colour) {
  if (slot < 0 || slot >= SlotCount() || column != ColMoringTime ||
      m_rows[size_t(slot)].MoringColour == colour)
    return;
  m_rows[size_t(slot)].MoringColour = colour;
  CellChanged(slot, column);
}

int TExtGridModel::SlotAt(int shownRow) const {
  return shownRow >= 0 && shownRow < ShownCount() ? m_shown[size_t(shownRow)] : -1;
}

int TExtGridModel::ShownRowOf(int slot) const {
  return slot >= 0 && slot < SlotCount() ? m_shownPos[size_t(slot)] : -1;
}

int TExtGridModel::CurrentRow() const {
  if (m_shown.empty())
    return -1;
  const int row = ShownRowOf(m_currentSlot);
  return row < 0 ? 0 : row;
}

int TExtGridModel::CurrentSlot() const {
  return SlotAt(CurrentRow());
}

void TExtGridModel::SetCurrentRow(int shownRow) {
  const int slot = SlotAt(shownRow);
  if (slot < 0)
    return;
  SetCurrentSlot(slot);
}

void TExtGridModel::SetCurrentSlot(int slot) {
  if (slot < 0 || slot >= SlotCount() || slot == m_currentSlot)
    return;
  m_currentSlot = slot;
  emit currentRowChanged(CurrentRow());
}

void TExtGridModel::SetFilter(int column, const QString &condition) {
  if (column < 0 || column >= kColumnCount)
    return;
  beginResetModel();
  m_filterColumn = column;
  m_filterCondition = condition;
  m_filterWildcard = condition.contains(u'*') || condition.contains(u'?');
  if (m_filterWildcard)
    m_filterPattern = WildcardPattern(condition);
  Rebuild();
  endResetModel();
  emit filterChanged();
  emit currentRowChanged(CurrentRow());
}

void TExtGridModel::ClearFilter() {
  beginResetModel();
  m_filterColumn = -1;
  m_filterCondition.clear();
  m_filterWildcard = false;
  Rebuild();
  endResetModel();
  emit filterChanged();
  emit currentRowChanged(CurrentRow());
}

bool TExtGridModel::ColumnHidden(int column) const {
  return column >= 0 && column < kColumnCount && m_hidden[size_t(column)];
}

void TExtGridModel::SetColumnHidden(int column, bool hidden) {
  if (column < 0 || column >= kColumnCount || m_hidden[size_t(column)] == hidden)
    return;
  m_hidden[size_t(column)] = hidden;
  emit columnHiddenChanged(column, hidden);
}

bool TExtGridModel::Passes(const Row &row) const {
  if (m_filterColumn < 0)
    return true;
  const QString &cell = row.Cells[size_t(m_filterColumn)];
  if (m_filterWildcard)
    return m_filterPattern.match(cell).hasMatch();
  return cell.compare(m_filterCondition, Qt::CaseInsensitive) == 0;
}

void TExtGridModel::Rebuild() {
  m_shown.clear();
  std::fill(m_shownPos.begin(), m_shownPos.end(), -1);
  for (int slot : m_order) {
    if (Passes(m_rows[size_t(slot)])) {
      m_shownPos[size_t(slot)] = int(m_shown.size());
      m_shown.push_back(slot);
    }
  }
}

void TExtGridModel::CellChanged(int slot, int column) {
  const int row = ShownRowOf(slot);
  if (row < 0)
    return; // hidden rows change quietly; they show their state once the filter goes
  const QModelIndex i = index(row, column);
  emit dataChanged(i, i);
}
