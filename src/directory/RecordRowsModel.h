#pragma once

#include "directory/RecordProtocol.h"

#include <QAbstractTableModel>

// The rows of the last recording query, with the columns the server sent: the
// console reads a few by name and shows all of them as they come.
class TRecordRowsModel : public QAbstractTableModel {
  Q_OBJECT

public:
  using QAbstractTableModel::QAbstractTableModel;

  void Load(RecordProtocol::Answer answer);
  void Clear();

  int RowCount() const { return int(m_rows.size()); }
  // The cell of a column by its name, matched without regard to case as the
  // server's store would; empty when the column or the row is missing.
  QString Value(int row, const QString &column) const;

  int rowCount(const QModelIndex &parent = {}) const override;
  int columnCount(const QModelIndex &parent = {}) const override;
  QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;

private:
  QStringList m_columns;
  QList<QStringList> m_rows;
};
