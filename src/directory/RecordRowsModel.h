#pragma once

#include "directory/RecordProtocol.h"

#include <QAbstractTableModel>

// The rows of the last recording query. The six columns the console knows come
// first under their titles (the language packs set them); every other column
// the server sends follows under its own name, the talk time among them.
class TRecordRowsModel : public QAbstractTableModel {
  Q_OBJECT

public:
  explicit TRecordRowsModel(QObject *parent = nullptr);

  static const QStringList &KnownColumns();

  void Load(const RecordProtocol::Answer &answer);
  void Clear();

  int RowCount() const { return int(m_rows.size()); }
  // A cell by its column's name, matched without regard to case as the
  // server's store does; empty when the column or the row is missing.
  QString Value(int row, const QString &column) const;

  int rowCount(const QModelIndex &parent = {}) const override;
  int columnCount(const QModelIndex &parent = {}) const override;
  QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;
  bool setHeaderData(int section, Qt::Orientation orientation, const QVariant &value,
                     int role = Qt::EditRole) override;

private:
  int ColumnOf(const QString &name) const;

  QStringList m_titles;      // of the known columns
  QStringList m_columns;     // shown: the known ones, then the server's others
  QList<qsizetype> m_source; // each shown column's place in a row; -1 for none
  QList<QStringList> m_rows; // as the server sent them
};
