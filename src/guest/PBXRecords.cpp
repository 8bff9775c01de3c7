#include "guest/PBXRecords.h"

#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"
#include "guest/RecordExport.h"
#include "support/Clock.h"

using namespace Qt::StringLiterals;

namespace {
// The date literal of one bound: " and (startTime>=#date time#) ".
QString DateBound(const char16_t *op, TDateTime date, TDateTime time) {
  return u" and (startTime%1#%2 %3#) "_s.arg(QString::fromUtf16(op), DateToStr(date),
                                             EscapeColons(TimeToStr(time)));
}
} // namespace

TPBXRecords::TPBXRecords(QObject *parent)
    : QObject(parent), DBGridEh_PBXConRecords(Columns()) {
  TeSComboBox_RecType_Items = {u"(全部)"_s,     u"1-呼叫中放弃"_s, u"2-无应答"_s,
                               u"3-放弃呼叫"_s, u"4-用户忙 "_s,    u"5-通话结束 "_s,
                               u"6 无应答转移 "_s, u"7 忙转转移 "_s, u"8 前转"_s};
  // Newest first by the time the grid shows, then by arrival among calls of the
  // same second: the store's record index has this order, so a page of a date
  // window reads its 50 rows from the window's newest end instead of sorting
  // every row of it. A record that reached the store late (a long call, whose
  // record comes at its end; records kept while the store was busy) stands at
  // its start time, not above the calls that came in meanwhile.
  Frame_DataPage.PageOrder = u"startTime desc, ID desc"_s;
  Frame_DataPage.OpenPage = [this](const QString &sql) {
    Sys_DM().OpenSQL(sql, ADOQuery_PBXConRecords);
    DBGridEh_PBXConRecords.Load(ADOQuery_PBXConRecords);
  };
  Frame_DataPage.ClearPage = [this] {
    ADOQuery_PBXConRecords.Close();
    DBGridEh_PBXConRecords.Clear();
  };
  FormCreate();
}

void TPBXRecords::FormCreate() {
  const TDateTime today = Now().DatePart();
  DateTimePicker_start_Date = today;
  DateTimePicker_start_Time = TDateTime();
  DateTimePicker_End_Date = today;
  DateTimePicker_End_Time = TDateTime::FromTime(QTime(23, 59, 59));
}

QString TPBXRecords::PBX_BuildCondition() const {
  QString c = u"(1=1) "_s;
  if (CheckBox_Telnos) {
    const QString t = SqlLikeText(Edit_PBXCon_TelNos);
    switch (PBXFindMode) {
    case FindEither:
      c += u" and ( (Caller like '%%1%' ) or (Called like '%%2%') ) "_s.arg(t, t);
      break;
    case FindCaller:
      c += u" and ( (Caller = '%1' )  ) "_s.arg(SqlText(Edit_PBXCon_TelNos));
      break;
    case FindCalled:
      c += u" and ( (Called = '%1' )  ) "_s.arg(SqlText(Edit_PBXCon_TelNos));
      break;
    default:
      break;
    }
  }
  if (CheckBox_Start)
    c += DateBound(u">=", DateTimePicker_start_Date, DateTimePicker_start_Time);
  if (CheckBox_End)
    c += DateBound(u"<=", DateTimePicker_End_Date, DateTimePicker_End_Time);
  if (TeSComboBox_RecType_ItemIndex >= 1)
    c += u" and (RecType=%1) "_s.arg(TeSComboBox_RecType_ItemIndex);
  return c;
}

void TPBXRecords::SpeedButton_FindClick() {
  Frame_DataPage.Search(QString::fromUtf16(kTableName), PBX_BuildCondition());
  PBXFindMode = FindEither;
}

void TPBXRecords::N24Click() {
  RelatedSearch(FindCaller, u"Caller"_s);
}

void TPBXRecords::MenuItem8Click() {
  RelatedSearch(FindCalled, u"Called"_s);
}

// The other calls of this number, within the same dates, of every type.
void TPBXRecords::RelatedSearch(int mode, const QString &field) {
  const TRecordGridModel &grid = DBGridEh_PBXConRecords;
  if (grid.CurrentRow < 0 || grid.CurrentRow >= grid.RowCount())
    return;
  PBXFindMode = mode;
  Edit_PBXCon_TelNos = grid.Stored(grid.CurrentRow, field);
  CheckBox_Telnos = true;
  TeSComboBox_RecType_ItemIndex = 0;
  emit boxesChanged();
  SpeedButton_FindClick();
}

void TPBXRecords::ExportClick() {
  if (Frame_DataPage.TableName.isEmpty())
    SpeedButton_FindClick();
  RunRecordExport(Frame_DataPage, DBGridEh_PBXConRecords.Columns(), u"PBXConRecords"_s);
}

QString TPBXRecords::IOFlagText(const QString &stored) {
  if (stored == u"0"_s)
    return u"呼入"_s;
  if (stored == u"1"_s)
    return u"呼出"_s;
  return stored;
}

QString TPBXRecords::RecTypeText(const QString &stored) {
  static const QStringList texts = {u"0-正常通话"_s,   u"1-呼叫中放弃"_s, u"2-无应答"_s,
                                    u"3-放弃呼叫"_s,   u"4-用户忙"_s,     u"5-通话结束"_s,
                                    u"6-无应答转移"_s, u"7-忙转转移"_s,   u"8-前转"_s};
  bool ok = false;
  const int type = stored.toInt(&ok);
  return ok && type >= 0 && type < texts.size() ? texts[type] : u"?"_s;
}

QList<TRecordColumn> TPBXRecords::Columns() {
  TRecordColumn startTime{u"startTime"_s, u"时间"_s, {}, {}};
  startTime.Date = true;
  return {{u"Caller"_s, u"分机号"_s, {}, {}},
          {u"Called"_s, u"呼叫号码"_s, {}, {}},
          startTime,
          {u"IOFlag"_s, u"呼叫方向"_s, &TPBXRecords::IOFlagText, {}},
          {u"RecType"_s, u"通话类型"_s, &TPBXRecords::RecTypeText, {}}};
}
