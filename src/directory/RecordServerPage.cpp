#include "directory/RecordServerPage.h"

#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

TRecordServerPage::TRecordServerPage(QObject *parent) : QObject(parent) {
  TeSEdit_RecordIP = SysConfig().RecordIP;
  const QDate today = QDate::currentDate();
  DateTimePicker_RecordStart_Date = TDateTime::FromDate(today);
  DateTimePicker_RecordEnd_Date = TDateTime::FromDate(today);
  DateTimePicker_RecordEnd_Time = TDateTime::FromTime(QTime(23, 59, 59));
  connect(&HTTPChannel, &TRecordChannel::afterConnect, this, &TRecordServerPage::AfterConnect);
  connect(&HTTPChannel, &TRecordChannel::exception, this, &TRecordServerPage::ChannelException);
  connect(&HTTPChannel, &TRecordChannel::answered, this, &TRecordServerPage::Answered);
}

void TRecordServerPage::LoggedInAs(const QString &number) {
  Edit_Caller = number;
  Edit_Caller_Enabled = true;
  Edit_Caller_Hint = u"非管理员此项不可编辑"_s;
  CheckBox_Caller_Enabled = true;
  emit changed();
}

void TRecordServerPage::ProcessRecordInfo(const QString &code, const QString &address) {
  LMDSimpleLabel_RecordRetCode = code;
  if (code == u"1000"_s) {
    TeSEdit_RecordIP = address;
    TeButton_RecordSearch_Enabled = true;
    TeSpeedButton_RecordAdmin_Enabled = true;
  } else {
    TeSEdit_RecordIP.clear();
    TeButton_RecordSearch_Enabled = false;
  }
  emit changed();
}

void TRecordServerPage::TeButton_Connect2RecServerClick() {
  if (Connected || HTTPChannel.Busy()) {
    // The key reads "中断连接" now: the operator ends it.
    HTTPChannel.Abort();
    SetConnected(false);
    LMDSimpleLabel_status = u"连接中断"_s;
    emit changed();
    return;
  }
  TeSEdit_RecordIP = TeSEdit_RecordIP.trimmed();
  if (SysConfig().RecordIP != TeSEdit_RecordIP) {
    SysConfig().RecordIP = TeSEdit_RecordIP;
    SaveConfig(SysConfig());
  }
  HTTPChannel.SetTarget(RecordProtocol::QueryTarget(TeSEdit_RecordIP, QueryPort));
  StaticText_RecordMsg = u"录音服务器URL:%1"_s.arg(HTTPChannel.Target());
  // Until the server answers, the key can take the attempt back.
  TeButton_Connect2RecServer_Caption = u"中断连接"_s;
  HTTPChannel.Connect();
  emit changed();
}

void TRecordServerPage::SetConnected(bool connected) {
  Connected = connected;
  TeButton_Connect2RecServer_Caption = connected ? u"中断连接"_s : u"连接"_s;
}

void TRecordServerPage::AfterConnect() {
  SetConnected(true);
  StaticText_RecordMsg = u"录音服务器连接成功!"_s;
  LMDSimpleLabel_status = u"连接成功！"_s;
  TeButton_RecordSearch_Enabled = true;
  emit changed();
}

void TRecordServerPage::ChannelException(const QString &reason) {
  WriteLog(u"录音服务器 %1: %2"_s.arg(HTTPChannel.Target(), reason));
  SetConnected(false);
  StaticText_RecordMsg = u"录音服务器连接异常!!!"_s;
  LMDSimpleLabel_status = u"连接中断"_s;
  emit changed();
}

TRecordServerPage::Statement TRecordServerPage::BuildStatement() const {
  Statement s;
  if (Edit_Caller.trimmed().isEmpty())
    return s;
  // Each value is a parameter: a quote in the number searches for a quote.
  s.Text = u"select *,time(strftime('%s',connectTime)-strftime('%s',startTime),'unixepoch')"
           u" as 通话时长 from Record_Table where 1=1 "_s;
  const auto at = [](TDateTime date, TDateTime time) {
    return QString(DateToStr(date) + u' ' + TimeToStr(time));
  };
  if (CheckBox_RecordStart) {
    s.Text += u"and (connectTime>=:from) "_s;
    s.Params[u"from"_s] = at(DateTimePicker_RecordStart_Date, DateTimePicker_RecordStart_Time);
  }
  if (CheckBox_RecordEnd) {
    s.Text += u"and (startTime<=:to) "_s;
    s.Params[u"to"_s] = at(DateTimePicker_RecordEnd_Date, DateTimePicker_RecordEnd_Time);
  }
  if (CheckBox_ExactNo && !Edit_ExactNo.trimmed().isEmpty()) {
    s.Text += u" and ((caller=:number) or (called=:number))  "_s;
    s.Params[u"number"_s] = Edit_ExactNo.trimmed();
  }
  if (CheckBox_LikeNo) {
    s.Text += u" and ((called like :pattern) or (caller like :pattern))  "_s;
    s.Params[u"pattern"_s] = QString(u'%' + Edit_LikeNo + u'%');
  }
  // Our own: the desk's own calls only, when the operator ticks the box.
  if (CheckBox_Caller) {
    s.Text += u" and ((caller=:own) or (called=:own))  "_s;
    s.Params[u"own"_s] = Edit_Caller.trimmed();
  }
  s.Text += u" order by connectTime desc  "_s;
  return s;
}

void TRecordServerPage::TeButton_RecordSearchClick() {
  const Statement s = BuildStatement();
  if (s.Text.isEmpty())
    return;
  RecordServerQuery(s);
  RecordResultTag = 1;
  emit changed();
}

void TRecordServerPage::RecordServerQuery(const Statement &statement) {
  // The search goes to the address the page shows, connected to or not.
  HTTPChannel.SetTarget(RecordProtocol::QueryTarget(TeSEdit_RecordIP.trimmed(), QueryPort));
  HTTPChannel.Query(statement.Text, statement.Params);
}

void TRecordServerPage::Answered(const RecordProtocol::Answer &answer) {
  if (!answer.Error.isEmpty()) {
    // The server refused the statement: its reason is the operator's, the rows stay.
    WriteLog(u"录音服务器拒绝查询: %1"_s.arg(answer.Error));
    StaticText_RecordMsg = answer.Error;
    emit changed();
    return;
  }
  if (answer.ShortRows || answer.LongRows)
    WriteLog(u"录音服务器: %1 行缺少字段, %2 行多出字段"_s.arg(answer.ShortRows)
                 .arg(answer.LongRows));
  DBGridEh_Record.Load(answer);
  emit changed();
}

void TRecordServerPage::DBGridEh_RecordDblClick(int row) {
  if (row < 0 || row >= DBGridEh_Record.RowCount())
    return;
  const QString shortDir = DBGridEh_Record.Value(row, u"shortDir"_s);
  const QString file = DBGridEh_Record.Value(row, u"VoiceFileName"_s);
  const QString host = TeSEdit_RecordIP.trimmed();
  if (RecordProtocol::SourceText(host, shortDir, file, FilePort).isEmpty()) {
    TheShell().Message(MessageKind::Error, LangFormat(431, {QString()}));
    return;
  }
  emit playRequested(RecordProtocol::SourceUrl(host, shortDir, file, FilePort),
                     DBGridEh_Record.Value(row, u"caller"_s) + u"-->>"_s +
                         DBGridEh_Record.Value(row, u"called"_s));
}
