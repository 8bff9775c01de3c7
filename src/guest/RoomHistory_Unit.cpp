#include "guest/RoomHistory_Unit.h"

#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"

using namespace Qt::StringLiterals;

TForm_RoomHistory::TForm_RoomHistory(QObject *parent)
    : TFormLogic("TForm_RoomHistory", parent), Grid_RoomHistory(Columns()) {
  Frame_DataPage.OpenPage = [this](const QString &sql) {
    Sys_DM().OpenSQL(sql, ADOQuery_RoomHistory);
    Grid_RoomHistory.Load(ADOQuery_RoomHistory);
  };
  Frame_DataPage.ClearPage = [this] {
    ADOQuery_RoomHistory.Close();
    Grid_RoomHistory.Clear();
  };
}

QString TForm_RoomHistory::BuildCondition() const {
  return u"(Ext like '%%1%')"_s.arg(SqlLikeText(Edit_Ext.trimmed()));
}

void TForm_RoomHistory::SpeedButton_FindClick() {
  Frame_DataPage.Search(QString::fromUtf16(kTableName), BuildCondition());
}

void TForm_RoomHistory::ShowForExt(const QString &ext) {
  Show();
  Edit_Ext = ext;
  emit boxesChanged();
  SpeedButton_FindClick();
}

QList<TRecordColumn> TForm_RoomHistory::Columns() {
  TRecordColumn time{u"ActTime"_s, u"时间"_s, {}, {}};
  time.Date = true;
  return {time,
          {u"RoomNo"_s, u"房间号"_s, {}, {}},
          {u"Ext"_s, u"分机号"_s, {}, {}},
          {u"Action"_s, u"操作"_s, {}, {}},
          {u"Operator"_s, u"操作员分机"_s, {}, {}}};
}
