#pragma once

#include "directory/ContactRecord.h"

#include <QAbstractTableModel>
#include <QList>
#include <QString>

#include <array>

// One of the call lists under the call log page (missed, answered, dialled) or
// the list of current incoming calls. Rows are TLmdlistItemRam; the list shows
// their first six fields as columns and keeps the operator's selection, since
// deleting and dialling back act on what is selected.
class TCallListModel : public QAbstractTableModel {
  Q_OBJECT

public:
  static constexpr int kColumnCount = 6; // name, number, telephone, mobile, company, time
  // The whole row in its text form; the view copies this.
  static constexpr int ItemTextRole = Qt::UserRole;

  explicit TCallListModel(const QString &name, QObject *parent = nullptr);

  QString Name() const { return objectName(); }

  int Count() const { return int(m_rows.size()); }
  const TLmdlistItemRam &Item(int index) const { return m_rows.at(index).Item; }
  QList<TLmdlistItemRam> Items() const;
  void Insert(int index, const TLmdlistItemRam &item);
  void Add(const TLmdlistItemRam &item);
  void Replace(int index, const TLmdlistItemRam &item);
  void Delete(int index);
  void Clear();

  // The operator's selection; the view keeps it in step.
  bool Selected(int index) const { return m_rows.at(index).Selected; }
  void SetSelected(int index, bool selected);
  int SelCount() const;
  // The row with the focus, -1 for none.
  int ItemIndex = -1;

  // Section texts; the language packs may replace them.
  std::array<QString, kColumnCount> Headers;

  int rowCount(const QModelIndex &parent = QModelIndex()) const override;
  int columnCount(const QModelIndex &parent = QModelIndex()) const override;
  QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation,
                      int role = Qt::DisplayRole) const override;
  // The language texts set the section titles through the view.
  bool setHeaderData(int section, Qt::Orientation orientation, const QVariant &value,
                     int role = Qt::EditRole) override;

private:
  struct Row {
    TLmdlistItemRam Item;
    bool Selected = false;
  };
  QList<Row> m_rows;
};
