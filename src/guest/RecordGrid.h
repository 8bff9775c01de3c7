#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

#include <functional>

class TADOQuery;

// One column of a record view: the stored field, its title, and how a stored
// text is shown (as it stands when no function is given).
struct TRecordColumn {
  QString Field;
  QString Title;
  std::function<QString(const QString &stored)> Show;
  // A small picture beside the text, by name; empty for none.
  std::function<QString(const QString &stored)> Icon;
  // A date column: the export shows it as the grid does.
  bool Date = false;

  QString Text(const QString &stored) const { return Show ? Show(stored) : stored; }
};

// The rows of one page of a record view, read-only, one row selected at a time.
// The page is copied out of its query when opened: 50 rows cost nothing, and the
// view never moves the query's cursor while it paints.
class TRecordGridModel : public QAbstractTableModel {
  Q_OBJECT

public:
  // The picture name of a cell, for the screens to draw.
  static constexpr int IconRole = Qt::UserRole + 1;
  // The stored text of a cell, before Show.
  static constexpr int StoredRole = Qt::UserRole + 2;

  explicit TRecordGridModel(QList<TRecordColumn> columns, QObject *parent = nullptr);

  const QList<TRecordColumn> &Columns() const { return m_columns; }

  void Load(TADOQuery &query);
  void Clear();

  int RowCount() const { return int(m_rows.size()); }
  QString Stored(int row, const QString &field) const; // empty outside the page
  QString Shown(int row, int column) const;

  // The row the operator's menu acts on; -1 for none.
  int CurrentRow = -1;

  int rowCount(const QModelIndex &parent = {}) const override;
  int columnCount(const QModelIndex &parent = {}) const override;
  QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;
  bool setHeaderData(int section, Qt::Orientation orientation, const QVariant &value,
                     int role = Qt::EditRole) override;

private:
  QList<TRecordColumn> m_columns;
  QList<QStringList> m_rows; // stored texts, one per column
};
