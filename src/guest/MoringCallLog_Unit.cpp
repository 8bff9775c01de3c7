#include "guest/MoringCallLog_Unit.h"

#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"
#include "guest/RecordExport.h"
#include "support/Clock.h"

using namespace Qt::StringLiterals;

TForm_MoringCallLog::TForm_MoringCallLog(QObject *parent)
    : TFormLogic("TForm_MoringCallLog", parent), cxGrid_MoringCallLog(Columns()) {
  cxComboBox_State_Items = {u"(全部)"_s, u"叫醒成功"_s, u"叫醒失败"_s};
  Frame_DataPage.OpenPage = [this](const QString &sql) {
    Sys_DM().OpenSQL(sql, ADOQuery_MoringCallLog);
    cxGrid_MoringCallLog.Load(ADOQuery_MoringCallLog);
  };
  Frame_DataPage.ClearPage = [this] {
    ADOQuery_MoringCallLog.Close();
    cxGrid_MoringCallLog.Clear();
  };
  FormCreate();
}

void TForm_MoringCallLog::FormCreate() {
  const TDateTime now = Now();
  cxDateEdit_Start = now - 7;
  cxDateEdit_End = now + 0.5;
  cxTextEdit_Ext.clear();
  cxTextEdit_RoomNo.clear();
  cxComboBox_State_ItemIndex = -1;
}

QString TForm_MoringCallLog::MoringCallLog_BuildCondition() const {
  // The end box takes no part: the search has always run from the start date
  // on, and the desk is used to that.
  QString c = u"(1=1) "_s;
  c += u" and (MoringCallTime>=#%1 %2#) "_s.arg(DateToStr(cxDateEdit_Start),
                                                 EscapeColons(TimeToStr(cxDateEdit_Start)));
  c += u" and ( (Ext like '%%1%' )  ) "_s.arg(SqlLikeText(cxTextEdit_Ext));
  c += u" and ( (RoomNo like '%%1%' )  ) "_s.arg(SqlLikeText(cxTextEdit_RoomNo));
  if (cxComboBox_State_ItemIndex == 1 || cxComboBox_State_ItemIndex == 2)
    c += u" and ( (State =%1 )  ) "_s.arg(cxComboBox_State_ItemIndex);
  return c;
}

void TForm_MoringCallLog::SpeedButton_FindClick() {
  Frame_DataPage.Search(QString::fromUtf16(kTableName), MoringCallLog_BuildCondition());
}

void TForm_MoringCallLog::ShowAndSearch() {
  Show();
  SpeedButton_FindClick();
}

void TForm_MoringCallLog::ShowForExt(const QString &ext) {
  Show();
  cxTextEdit_Ext = ext;
  emit boxesChanged();
  SpeedButton_FindClick();
}

void TForm_MoringCallLog::ExportClick() {
  if (Frame_DataPage.TableName.isEmpty())
    SpeedButton_FindClick();
  RunRecordExport(Frame_DataPage, cxGrid_MoringCallLog.Columns(), u"MoringCallLog"_s);
}

QString TForm_MoringCallLog::StateText(const QString &stored) {
  if (stored == u"1"_s)
    return u"叫醒成功"_s;
  if (stored == u"2"_s)
    return u"叫醒失败"_s;
  return stored;
}

QString TForm_MoringCallLog::StateIcon(const QString &stored) {
  if (stored == u"1"_s)
    return u"woken"_s;
  if (stored == u"2"_s)
    return u"not-woken"_s;
  return QString();
}

QList<TRecordColumn> TForm_MoringCallLog::Columns() {
  TRecordColumn time{u"MoringCallTime"_s, u"叫醒设定时间"_s, {}, {}};
  time.Date = true;
  return {{u"ID"_s, u"ID"_s, {}, {}},
          {u"RoomNo"_s, u"房间号"_s, {}, {}},
          {u"Ext"_s, u"分机号"_s, {}, {}},
          time,
          {u"State"_s, u"叫醒结果"_s, &TForm_MoringCallLog::StateText,
           &TForm_MoringCallLog::StateIcon},
          // Which try of the room's wake-up this was, once the follow-up counts
          // them; empty on rows from before.
          {u"Attempt"_s, u"第几次"_s, {}, {}}};
}
