#pragma once

#include "directory/Query.h"
#include "guest/DataPage.h"
#include "guest/RecordGrid.h"
#include "support/FormLogic.h"
#include "support/TDateTime.h"

#include <QStringList>

// The wake-up log window ("叫醒记录"): which rooms were woken and which did not
// answer. It stays on top and leaves the main window usable; the front desk
// opens it from its key or from one room's menu.
class TForm_MoringCallLog : public TFormLogic {
  Q_OBJECT

public:
  explicit TForm_MoringCallLog(QObject *parent = nullptr);

  static constexpr char16_t kTableName[] = u"MoringCallLog";
  // What the grid says when the search found nothing.
  static constexpr char16_t kEmptyText[] = u"无数据显示";

  TDateTime cxDateEdit_Start;
  TDateTime cxDateEdit_End; // shown and kept, but it bounds nothing
  QString cxTextEdit_Ext;
  QString cxTextEdit_RoomNo;
  QStringList cxComboBox_State_Items;
  int cxComboBox_State_ItemIndex = -1; // 1 woken, 2 not; anything else all

  TFrame_DataPage Frame_DataPage;
  TADOQuery ADOQuery_MoringCallLog{QStringLiteral("ADOQuery_MoringCallLog")};
  TRecordGridModel cxGrid_MoringCallLog;

  // The boxes at their start: the last seven days up to half a day ahead, no
  // number, no room, every state.
  void FormCreate();

  QString MoringCallLog_BuildCondition() const;
  void SpeedButton_FindClick();
  // The main window's key: the window with the boxes as they are.
  void ShowAndSearch();
  // One room's menu: the window on that extension (a number holding it matches
  // too, as the search is by part).
  void ShowForExt(const QString &ext);
  // Our own: the whole result of the last search to a CSV file.
  void ExportClick();

  static QString StateText(const QString &stored);
  static QString StateIcon(const QString &stored);
  static QList<TRecordColumn> Columns();

signals:
  void boxesChanged();
};
