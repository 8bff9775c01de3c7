// Who is calling: the lookup that fills the call page, the rows of the incoming
// and logged calls, and how a new call is announced.
#include "directory/DirectoryPages.h"

#include "directory/JetSql.h"
#include "directory/PopMsg_Form.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace {
// The caller's last seven characters as right() takes them.
QString LastSeven(const QString &number) {
  QString text = number;
  text.remove(QChar(0)); // as the statement text has it
  qsizetype from = text.size();
  for (int n = 0; n < 7 && from > 0; ++n) {
    --from;
    if (text[from].isLowSurrogate() && from > 0 && text[from - 1].isHighSurrogate())
      --from;
  }
  return text.mid(from);
}

// Only the two number fields have keys.
bool KeyedField(const QString &field) {
  return field.compare(u"phone1"_s, Qt::CaseInsensitive) == 0 ||
         field.compare(u"mobilePhone"_s, Qt::CaseInsensitive) == 0;
}

// The contacts that may match: those holding the tail's key (the store keeps a
// key for every run of seven characters of a number, every part of a shorter
// one, lowered as like folds letters), and those with a number too long to
// have keys. The full condition still decides.
QString KeyedContacts(const QString &n) {
  return u"ID in (select ContactID from CallerKeys where Key in (lower(right('"_s + n +
         u"',7)), '"_s + QString::fromUtf16(TSys_DM::kCallerKeyLong) + u"')) and "_s;
}
} // namespace

QString CallerLookupSQL(const QString &field, const QString &number, LookupPlan plan) {
  // Both forms hold the caller's last seven characters anywhere in the stored
  // number; the length test keeps an internal extension from matching an
  // outside number that happens to contain it. The shortest stored number wins.
  const QString n = SqlText(number);
  // Counted as len() counts the stored number.
  const QString length = StoredLength(number) < 7 ? u"<=6"_s : u">6"_s;
  const QString condition = u"( ( ( "_s + field + u" like '%'&right('"_s + n +
                            u"',7)&'%' ) and ( len(phone1)"_s + length +
                            u" ) ) or ( ( mobilePhone like '%'&right('"_s + n +
                            u"',7)&'%' ) ) and ( len(mobilePhone)"_s + length + u" ) )"_s;
  // The key table can't answer a tail that like would read as a pattern (% or
  // _), nor an empty one, which every short number contains.
  const QString tail = LastSeven(number);
  if (plan == LookupPlan::Plain || !KeyedField(field) || tail.isEmpty() ||
      tail.contains(u'%') || tail.contains(u'_'))
    return u"select * from maininfo where "_s + condition + u" order by len("_s + field + u")"_s;
  // Reading every row, the engine keeps the rows of one length in the order of
  // their IDs; read through the keys it must be told.
  return u"select * from maininfo where "_s + KeyedContacts(n) + condition + u" order by len("_s +
         field + u"), ID"_s;
}

QString CallTailSQL(const QString &field, const QString &number, LookupPlan plan) {
  const QString n = SqlText(number);
  const QString condition = u"(right("_s + field + u",7)=right('"_s + n +
                            u"',7)) or (right(mobilePhone,7)=right('"_s + n + u"',7)) "_s;
  // An empty tail matches the empty numbers, which have no key.
  if (plan == LookupPlan::Plain || !KeyedField(field) || LastSeven(number).isEmpty())
    return u"select * from maininfo where "_s + condition;
  return u"select * from maininfo where "_s + KeyedContacts(n) + u"("_s + condition +
         u") order by ID"_s;
}

void TDirectoryPages::ShowCallerInfo(const QString &field, const QString &number) {
  Sys_DM().OpenSQL(CallerLookupSQL(field, number), Select_ADOQuery);
  TADOQuery &q = Select_ADOQuery;
  q.First();
  if (q.Eof()) {
    CON_Name_LMDEdit.clear();
    CON_Company_LMDEdit.clear();
    CON_MobilePhone_LMDEdit.clear();
    CON_Address_LMDEdit.clear();
    CON_Fax_LMDEdit.clear();
    CON_Email_LMDEdit.clear();
    CON_Web_LMDEdit.clear();
    CON_QQ_LMDEdit.clear();
    CON_MSN_LMDEdit.clear();
    CON_Duty_LMDEdit.clear();
    CON_Memo_Memo.clear();
    Con_GrpName_TeSComboBox.clear();
    CON_Phone1_LMDEdit = number;
    CurrentConID = -1;
    ConEdit_LMDButton_Caption = LangText(275);
    emit cardsChanged();
    return;
  }
  CON_Name_LMDEdit = q.AsString(u"name"_s);
  CON_Phone1_LMDEdit = q.AsString(u"Phone1"_s);
  CON_Company_LMDEdit = q.AsString(u"Company"_s);
  CON_MobilePhone_LMDEdit = q.AsString(u"MobilePhone"_s);
  CON_Address_LMDEdit = q.AsString(u"Address"_s);
  CON_Fax_LMDEdit = q.AsString(u"Fax"_s);
  CON_Email_LMDEdit = q.AsString(u"E_mail"_s);
  CON_Web_LMDEdit = q.AsString(u"WEB"_s);
  CON_QQ_LMDEdit = q.AsString(u"QQ"_s);
  CON_MSN_LMDEdit = q.AsString(u"MSN"_s);
  CON_Duty_LMDEdit = q.AsString(u"Duty"_s);
  Con_IDCard_TeSEdit = q.AsString(u"IDCard"_s);
  Con_GrpName_TeSComboBox = q.AsString(u"GrpName"_s);
  CON_Memo_Memo = q.AsString(u"Memo"_s);
  CurrentConID = q.AsInteger(u"ID"_s);
  ConEdit_LMDButton_Caption = LangText(276);
  emit cardsChanged();
}

void TDirectoryPages::ConEdit_LMDButtonClick() {
  emit pageRequested(Page::Mat_TeTabSheet);
  LMDButton25Click();
  TMaininfoRecord record;
  GetConRecord(record);
  SetMatRecord(record);
  CurrentMatID = CurrentConID;
  MatChanged = false;
  emit cardsChanged();
}

TLmdlistItemRam TDirectoryPages::BuildLiveCallItem(const QString &field, const QString &number,
                                                   int rowNo) {
  RemoveIncomingItem(number);
  // The lists match on the last seven characters exactly, a quicker and
  // stricter test than the call page's lookup.
  Sys_DM().OpenSQL(CallTailSQL(field, number), Select_ADOQuery);
  TLmdlistItemRam item;
  item.Number = number;
  item.Time = CallItemTime(Now());
  item.RowNo = QString::number(rowNo);
  item.ContactID = u"-1"_s;
  TADOQuery &q = Select_ADOQuery;
  if (!q.IsEmpty()) {
    q.First();
    item.Name = q.AsString(u"name"_s);
    item.Telephone = q.AsString(u"phone1"_s);
    item.Mobile = q.AsString(u"MobilePhone"_s);
    item.Company = q.AsString(u"Company"_s);
    q.Close();
  }
  return item;
}

void TDirectoryPages::InsertCallItem(const QString &field, const QString &number, int rowNo,
                                     TCallListModel &list) {
  const TLmdlistItemRam item = BuildLiveCallItem(field, number, rowNo);
  list.Insert(0, item);
}

void TDirectoryPages::AppendCallItem(const QString &field, const QString &number, int rowNo,
                                     TCallListModel &list) {
  const TLmdlistItemRam item = BuildLiveCallItem(field, number, rowNo);
  list.Add(item);
}

void TDirectoryPages::RemoveIncomingItem(const QString &number) {
  for (int i = 0; i < Incomings_LMDListBox.Count(); ++i) {
    if (Incomings_LMDListBox.Item(i).Number == number) {
      Incomings_LMDListBox.Delete(i);
      return;
    }
  }
}

void TDirectoryPages::LoadCallItem(const QString &field, const QString &number, int rowNo,
                                   TCallListModel &list, TDateTime when) {
  TLmdlistItemRam item;
  item.Time = CallItemTime(when);
  item.RowNo = QString::number(rowNo);
  item.ContactID = u"-1"_s;
  // A call without a number is logged as "?": there is nobody to look up.
  if (number.isEmpty() || number == u"?"_s) {
    item.Number = u"?"_s;
    list.Insert(0, item);
    return;
  }
  item.Number = number;
  Sys_DM().OpenSQL(CallerLookupSQL(field, number), Select_ADOQuery);
  TADOQuery &q = Select_ADOQuery;
  if (!q.IsEmpty()) {
    q.First();
    item.Name = q.AsString(u"name"_s);
    item.Telephone = q.AsString(u"phone1"_s);
    item.Mobile = q.AsString(u"MobilePhone"_s);
    item.Company = q.AsString(u"Company"_s);
    item.ContactID = q.AsString(u"ID"_s);
  }
  list.Insert(0, item);
}

void TDirectoryPages::ShowIncomingDirect(const QString &number) {
  emit restoreMainWindowRequested();
  const bool ringing = CallStillRinging ? CallStillRinging() : true;
  if (ringing && !number.isEmpty()) {
    ShowCallerInfo(u"Phone1"_s, number);
    emit pageRequested(Page::Con_TeTabSheet);
  }
}

void TDirectoryPages::BalloonClick() {
  ShowIncomingDirect(APICallNumber);
}

void TDirectoryPages::ShowPopMsg(const QString &number) {
  if (Form_PopMsg)
    Form_PopMsg->ShowPopMsg(number);
}

void TDirectoryPages::TeSpeedButton_APIExcuteClick() {
  const QString link = SysConfig().LinkURL;
  if (link.trimmed().isEmpty()) {
    TheShell().Message(MessageKind::Error, u"请先设置外部连接程序！"_s);
    return;
  }
  const QString ext = OwnExtension ? OwnExtension() : QString();
  if (!link.contains(u".exe"_s, Qt::CaseSensitive)) {
    // The values go into the address encoded, so a crafted caller number can't
    // add parameters of its own.
    const auto enc = [](const QString &v) {
      return QString::fromLatin1(QUrl::toPercentEncoding(v));
    };
    TheShell().Open(link + u"?TelNos="_s + enc(ext) + u'_' + enc(APICallNumber), QString());
  } else {
    TheShell().Open(link, ext + u'_' + APICallNumber);
  }
}
