#pragma once

#include "devices/DeviceTypes.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QRegularExpression>
#include <QString>

#include <array>
#include <functional>
#include <vector>

// The extension grid (AdvStringGrid_Exts) as the logic keeps it: twelve text
// columns, a check per row, the colour of the wake-up cell, a sort order, a
// filter and a current row. The views only show it.
//
// Two ways to name a row:
// - a slot: where the row is stored. Slots never move, whatever the sort or the
//   filter does, and every row has one, shown or hidden. Routines that must reach
//   hidden rows (the refresh of a row) work on slots.
// - a shown row: the model's row, 0-based, over the rows the filter shows, in
//   sort order. The walks that only see shown rows (select all, the batch walk,
//   the find, the tick) work on these. The grid's own numbering, with the title
//   in row 0, is the shown row + 1.
// A device ID finds its slot through a hash, so a sorted grid finds its row at
// once instead of comparing texts row by row.
class TExtGridModel : public QAbstractTableModel {
  Q_OBJECT

public:
  enum Column {
    ColHeader = 0,
    ColCheck = 1,
    ColID = 2,
    ColRoomNo = 3,
    ColTelNos = 4,
    ColSrvClass = 5,
    ColMoringTime = 6,
    ColMoringMode = 7,
    ColNodisturb = 8,
    ColVoiceMail = 9,
    ColMemo = 10,
    ColSpare = 11,
    kColumnCount = 12
  };
  // The background of a cell as the console's colour word (blue-green-red), for
  // the cells that have one (the wake-up column); the view turns it into a colour.
  static constexpr int ColourRole = Qt::UserRole + 1;
  // The check's state as the logic reads it: "TRUE", "FALSE", or "" while unset.
  static constexpr int CheckTextRole = Qt::UserRole + 2;
  static constexpr TColor kWhite = 0xFFFFFF;

  explicit TExtGridModel(QObject *parent = nullptr);

  // --- the item model the views show ---
  int rowCount(const QModelIndex &parent = QModelIndex()) const override;
  int columnCount(const QModelIndex &parent = QModelIndex()) const override;
  QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
  bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;
  bool setHeaderData(int section, Qt::Orientation orientation, const QVariant &value,
                     int role = Qt::EditRole) override;
  Qt::ItemFlags flags(const QModelIndex &index) const override;
  // Sorts by a title's column; the check column (and the row header) don't sort.
  void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

  // Column 3 is the room number: an edit asks here whether the store took it.
  // Unset or false, the cell keeps what it showed.
  std::function<bool(int id, const QString &roomNo)> RoomNoEdited;

  // --- rows by slot (shown or hidden) ---
  int SlotCount() const { return int(m_rows.size()); }
  int AddSlot(); // a new empty row at the end of the grid
  int SlotOfId(int id) const; // -1 when the device has no row
  QString Cell(int slot, int column) const;
  void SetCell(int slot, int column, const QString &text); // column 2 also indexes the ID
  QString Check(int slot) const;
  void SetCheck(int slot, const QString &state); // "TRUE" / "FALSE"
  TColor Colour(int slot, int column) const;
  void SetColour(int slot, int column, TColor colour);

  // --- shown rows ---
  int ShownCount() const { return int(m_shown.size()); }
  int SlotAt(int shownRow) const; // -1 outside
  int ShownRowOf(int slot) const; // -1 when hidden or unknown
  // The current row: a shown row, or -1 on an empty grid. A hidden current row
  // reads as the first shown one, as the grid moves its cursor off a hidden row.
  int CurrentRow() const;
  int CurrentSlot() const;
  void SetCurrentRow(int shownRow);
  void SetCurrentSlot(int slot);

  int SortColumn() const { return m_sortColumn; }
  Qt::SortOrder SortOrder() const { return m_sortOrder; }

  // The filter: one condition on one column. A condition with * or ? is a
  // wildcard pattern, any other the whole cell text; an empty one shows the rows
  // whose cell is empty.
  void SetFilter(int column, const QString &condition);
  void ClearFilter();
  bool Filtered() const { return m_filterColumn >= 0; }
  int FilterColumn() const { return m_filterColumn; }
  QString FilterCondition() const { return m_filterCondition; }

  bool ColumnHidden(int column) const;
  void SetColumnHidden(int column, bool hidden);

signals:
  void currentRowChanged(int shownRow);
  void columnHiddenChanged(int column, bool hidden);
  void filterChanged();

private:
  struct Row {
    std::array<QString, kColumnCount> Cells;
    QString Check;
    TColor MoringColour = kWhite;
    int Id = -1;
  };
  bool Passes(const Row &row) const;
  void Rebuild(); // the shown rows from the order and the filter
  void CellChanged(int slot, int column);

  std::vector<Row> m_rows;     // by slot
  std::vector<int> m_order;    // every slot, in grid order
  std::vector<int> m_shown;    // the shown slots, in grid order
  std::vector<int> m_shownPos; // slot -> shown row or -1
  QHash<int, int> m_slotOfId;
  std::array<QString, kColumnCount> m_titles;
  std::array<bool, kColumnCount> m_hidden{};
  int m_currentSlot = -1;
  int m_sortColumn = -1;
  Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
  int m_filterColumn = -1;
  QString m_filterCondition;
  bool m_filterWildcard = false;
  QRegularExpression m_filterPattern;
};
