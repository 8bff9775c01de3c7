#include "directory/RecordRowsModel.h"

using namespace Qt::StringLiterals;

namespace {
int IndexOf(const QStringList &names, const QString &name) {
  for (qsizetype i = 0; i < names.size(); ++i)
    if (names[i].compare(name, Qt::CaseInsensitive) == 0)
      return int(i);
  return -1;
}
} // namespace

TRecordRowsModel::TRecordRowsModel(QObject *parent)
    : QAbstractTableModel(parent),
      m_titles{u"接通时间"_s, u"开始时间"_s, u"主叫号码"_s, u"被叫号码"_s, u"录音目录"_s, u"录音文件"_s},
      m_columns(KnownColumns()), m_source(KnownColumns().size(), -1) {}

const QStringList &TRecordRowsModel::KnownColumns() {
  static const QStringList kKnown{u"connectTime"_s, u"startTime"_s, u"caller"_s,
                                  u"called"_s,      u"shortDir"_s,  u"VoiceFileName"_s};
  return kKnown;
}

void TRecordRowsModel::Load(const RecordProtocol::Answer &answer) {
  beginResetModel();
  m_columns = KnownColumns();
  m_source.fill(-1, m_columns.size());
  for (qsizetype i = 0; i < answer.Columns.size(); ++i) {
    const QString &name = answer.Columns[i];
    const int known = IndexOf(KnownColumns(), name);
    if (known >= 0 && m_source[known] < 0) {
      m_source[known] = i;
    } else {
      m_columns.append(name);
      m_source.append(i);
    }
  }
  m_rows = answer.Rows;
  endResetModel();
}

void TRecordRowsModel::Clear() {
  Load({});
}

int TRecordRowsModel::ColumnOf(const QString &name) const {
  return IndexOf(m_columns, name);
}

QString TRecordRowsModel::Value(int row, const QString &column) const {
  const int c = ColumnOf(column);
  if (c < 0 || row < 0 || row >= m_rows.size())
    return QString();
  return m_rows[row].value(m_source[c]);
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
  return m_rows[index.row()].value(m_source[index.column()]);
}

QVariant TRecordRowsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
    return {};
  return section < m_titles.size() ? m_titles[section] : m_columns.value(section);
}

bool TRecordRowsModel::setHeaderData(int section, Qt::Orientation orientation,
                                     const QVariant &value, int role) {
  if (orientation != Qt::Horizontal || section < 0 || section >= m_titles.size() ||
      (role != Qt::DisplayRole && role != Qt::EditRole))
    return false;
  m_titles[section] = value.toString();
  emit headerDataChanged(orientation, section, section);
  return true;
}
