#pragma once

#include "directory/Query.h"
#include "guest/DataPage.h"
#include "guest/RecordGrid.h"
#include "support/FormLogic.h"

// The room history window ("入住退房记录"): which room was checked in or out,
// when and by which desk, newest first, paged by the record views' page bar.
class TForm_RoomHistory : public TFormLogic {
  Q_OBJECT

public:
  explicit TForm_RoomHistory(QObject *parent = nullptr);

  static constexpr char16_t kTableName[] = u"RoomHistory";

  QString Edit_Ext; // part of an extension's number; empty: every room
  TFrame_DataPage Frame_DataPage;
  TADOQuery ADOQuery_RoomHistory{QStringLiteral("ADOQuery_RoomHistory")};
  TRecordGridModel Grid_RoomHistory;

  QString BuildCondition() const;
  void SpeedButton_FindClick();
  // One room's menu: the window on that extension.
  void ShowForExt(const QString &ext);

  static QList<TRecordColumn> Columns();

signals:
  void boxesChanged();
};
