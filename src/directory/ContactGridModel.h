#pragma once

#include "directory/Query.h"

#include <QAbstractTableModel>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>

// The result grid of the contact searches over its query. The grid shows name,
// extension, company, position, telephone and e-mail; the titles carry the sort
// mark of the last sorted column. The query's current row is the grid's current
// row, so the page's buttons and the double click read the contact from the query.
class TContactGridModel : public QAbstractTableModel {
  Q_OBJECT

public:
  static constexpr int kColumnCount = 6;
  static const std::array<QString, kColumnCount> FieldNames; // the columns of MainInfo shown
  // A row's contact ID, for the view's double click and menus.
  static constexpr int ContactIdRole = Qt::UserRole;

  explicit TContactGridModel(QObject *parent = nullptr);

  TADOQuery MainInfo_ADOQuery{QStringLiteral("MainInfo_ADOQuery")};

  // Runs a statement into the grid. An error leaves the grid closed and rises.
  void OpenSQL(const QString &sql);
  void CloseQuery();
  // Closes and opens the same statement again.
  void Reopen();
  // Reads the rows again, staying on the same contact where it can.
  void RefreshQuery();
  // Deletes the current row from the table and the grid.
  void DeleteCurrent();
  bool Active() const { return MainInfo_ADOQuery.Active(); }

  // The grid's current row (0-based), -1 when the grid is closed or empty.
  int CurrentRow() const;
  void SetCurrentRow(int row);
  // TeSpeedButton2..5: first, previous, next, last.
  void First();
  void Prior();
  void Next();
  void Last();

  // Column titles as shown; PlainTitle is a title without a sort mark.
  std::array<QString, kColumnCount> Titles;
  static QString PlainTitle(int column);
  void ResetTitles();
  void SetTitle(int column, const QString &title);

  int rowCount(const QModelIndex &parent = QModelIndex()) const override;
  int columnCount(const QModelIndex &parent = QModelIndex()) const override;
  QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;

signals:
  void currentRowChanged(int row);

private:
  // Takes the shown columns out of the query after it was opened or changed.
  void Reload();

  struct Row {
    std::array<QString, kColumnCount> Cells;
    int ID = 0;
  };
  QList<Row> m_rows;
};
