#pragma once

#include "directory/Query.h"
#include "guest/DataPage.h"
#include "guest/RecordGrid.h"
#include "support/TDateTime.h"

#include <QObject>
#include <QStringList>

// The page of the exchange's call records ("交换机呼叫记录"): the search boxes,
// the paged grid, the related search from a row's number, and the export. Rows
// come from the UDP channel, which asks for a fresh search after each one.
class TPBXRecords : public QObject {
  Q_OBJECT

public:
  explicit TPBXRecords(QObject *parent = nullptr);

  static constexpr char16_t kTableName[] = u"PBXConRecords";

  // The search boxes. The three checks are on from the start.
  bool CheckBox_Telnos = true;
  QString Edit_PBXCon_TelNos;
  bool CheckBox_Start = true;
  TDateTime DateTimePicker_start_Date; // the date part is read
  TDateTime DateTimePicker_start_Time; // the time of day is read
  bool CheckBox_End = true;
  TDateTime DateTimePicker_End_Date;
  TDateTime DateTimePicker_End_Time;
  QStringList TeSComboBox_RecType_Items;
  int TeSComboBox_RecType_ItemIndex = 0; // 0 is all types, n is type n

  // How the number box is matched: in part against either number, or the
  // caller or the called number exactly (set by the related search).
  enum FindMode { FindEither = 0, FindCaller = 1, FindCalled = 2 };
  int PBXFindMode = FindEither;

  TFrame_DataPage Frame_DataPage;
  TADOQuery ADOQuery_PBXConRecords{QStringLiteral("ADOQuery_PBXConRecords")};
  TRecordGridModel DBGridEh_PBXConRecords;

  // The date boxes at their start values: today, from 00:00:00 to 23:59:59.
  void FormCreate();

  QString PBX_BuildCondition() const;
  // The search key, the start-up search and the UDP channel's refresh.
  void SpeedButton_FindClick();
  // "关联记录查询" on the caller (N24) and the called number (MenuItem8) of the
  // grid's current row.
  void N24Click();
  void MenuItem8Click();
  // Our own: the whole result of the last search to a CSV file the operator picks.
  void ExportClick();

  static QString IOFlagText(const QString &stored);
  static QString RecTypeText(const QString &stored);
  static QList<TRecordColumn> Columns();

signals:
  // The related search wrote into the boxes; the screens show them again.
  void boxesChanged();

private:
  void RelatedSearch(int mode, const QString &field);
};
