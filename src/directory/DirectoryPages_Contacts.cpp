// The contact card: reading and filling it, saving, new, copy and paste, the
// shared messenger field and its links, and how a changed contact reaches the
// call lists.
#include "directory/DirectoryPages.h"

#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QUrl>

using namespace Qt::StringLiterals;

TDirectoryPages::TDirectoryPages(QObject *parent) : QObject(parent) {
  ConEdit_LMDButton_Caption = LangText(275);
  Inernet_LMDButton_Caption = LangText(268);
  Con_Inernet_LMDButton_Caption = LangText(268);
}

TDirectoryPages::~TDirectoryPages() = default;

namespace {
QString ImCaption(int tag) {
  switch (tag) {
  case TDirectoryPages::ImWeb:
    return LangText(269);
  case TDirectoryPages::ImQQ:
    return u"QQ"_s;
  case TDirectoryPages::ImMSN:
    return u"MSN"_s;
  default:
    return LangText(268);
  }
}
} // namespace

void TDirectoryPages::RetranslateCaptions() {
  Inernet_LMDButton_Caption = ImCaption(Inernet_LMDButton_Tag);
  Con_Inernet_LMDButton_Caption = ImCaption(Con_Inernet_LMDButton_Tag);
  ConEdit_LMDButton_Caption = LangText(CurrentConID == -1 ? 275 : 276);
  emit cardsChanged();
}

void TDirectoryPages::ClearMatFields() {
  MAT_Name_LMDEdit.clear();
  MAT_BranchTel_LMDEdit.clear();
  Mat_BranchTel_TeSComboBox.clear();
  MAT_Phone1_LMDEdit.clear();
  MAT_Company_LMDEdit.clear();
  MAT_Company_SelText.clear();
  MAT_MobilePhone_LMDEdit.clear();
  MAT_MobilePhone_SelText.clear();
  MAT_Addres_LMDEdit.clear();
  MAT_Fax_LMDEdit.clear();
  MAT_Email_LMDEdit.clear();
  MAT_WEB_LMDEdit.clear();
  MAT_QQ_LMDEdit.clear();
  MAT_MSN_LMDEdit.clear();
  MAT_Duty_LMDEdit.clear();
  Mat_Memo_Memo.clear();
  Mat_IDCard_TeSEdit.clear();
  Mat_GrpName_TeSComboBox.clear();
  MatChanged = false;
  emit cardsChanged();
}

TMaininfoRecord TDirectoryPages::ReadMatPage() const {
  TMaininfoRecord r;
  r.ID = CurrentMatID;
  r.Name = MAT_Name_LMDEdit;
  r.BranchTel = MAT_BranchTel_LMDEdit;
  r.Phone1 = MAT_Phone1_LMDEdit;
  r.MobilePhone = MAT_MobilePhone_LMDEdit;
  r.Address = MAT_Addres_LMDEdit;
  r.Company = MAT_Company_LMDEdit;
  r.E_Mail = MAT_Email_LMDEdit;
  r.Web = MAT_WEB_LMDEdit;
  r.QQ = MAT_QQ_LMDEdit;
  r.MSN = MAT_MSN_LMDEdit;
  r.Duty = MAT_Duty_LMDEdit;
  r.Fax = MAT_Fax_LMDEdit;
  r.IDCard = Mat_IDCard_TeSEdit;
  r.Memo = Mat_Memo_Memo;
  r.GrpName = Mat_GrpName_TeSComboBox;
  // Postal code, group type and birthday have no control: the card writes them
  // empty and zero.
  return r;
}

void TDirectoryPages::GetMatRecord(TMaininfoRecord &record) const {
  record = ReadMatPage();
  // The copy command has always carried the call page's memo, so a contact made
  // from a caller keeps the notes taken during the call.
  record.Memo = CON_Memo_Memo;
}

void TDirectoryPages::GetConRecord(TMaininfoRecord &record) const {
  record = TMaininfoRecord{};
  record.ID = CurrentConID;
  record.Name = CON_Name_LMDEdit;
  record.Phone1 = CON_Phone1_LMDEdit;
  record.MobilePhone = CON_MobilePhone_LMDEdit;
  record.Address = CON_Address_LMDEdit;
  record.Company = CON_Company_LMDEdit;
  record.E_Mail = CON_Email_LMDEdit;
  record.Web = CON_Web_LMDEdit;
  record.QQ = CON_QQ_LMDEdit;
  record.MSN = CON_MSN_LMDEdit;
  record.Duty = CON_Duty_LMDEdit;
  record.Fax = CON_Fax_LMDEdit;
  record.IDCard = Con_IDCard_TeSEdit;
  record.Memo = CON_Memo_Memo;
  record.GrpName = Con_GrpName_TeSComboBox;
}

void TDirectoryPages::SetMatRecord(const TMaininfoRecord &r) {
  // Filling the edits is a change of the card, as typing would be; whoever
  // loads a stored contact clears the flag afterwards.
  const TMaininfoRecord before = ReadMatPage();
  MAT_Name_LMDEdit = r.Name;
  MAT_BranchTel_LMDEdit = r.BranchTel;
  Mat_BranchTel_TeSComboBox = r.BranchTel;
  MAT_Phone1_LMDEdit = r.Phone1;
  MAT_MobilePhone_LMDEdit = r.MobilePhone;
  MAT_Addres_LMDEdit = r.Address;
  MAT_Company_LMDEdit = r.Company;
  MAT_Email_LMDEdit = r.E_Mail;
  MAT_WEB_LMDEdit = r.Web;
  MAT_QQ_LMDEdit = r.QQ;
  MAT_MSN_LMDEdit = r.MSN;
  MAT_Duty_LMDEdit = r.Duty;
  MAT_Fax_LMDEdit = r.Fax;
  Mat_IDCard_TeSEdit = r.IDCard;
  Mat_Memo_Memo = r.Memo;
  Mat_GrpName_TeSComboBox = r.GrpName;
  CurrentMatID = r.ID;
  NoteMatShown();
  const TMaininfoRecord after = ReadMatPage();
  if (before.Name != after.Name || before.BranchTel != after.BranchTel ||
      before.Phone1 != after.Phone1 || before.MobilePhone != after.MobilePhone ||
      before.Address != after.Address || before.Company != after.Company ||
      before.E_Mail != after.E_Mail || before.Web != after.Web || before.QQ != after.QQ ||
      before.MSN != after.MSN || before.Duty != after.Duty || before.Fax != after.Fax ||
      before.IDCard != after.IDCard || before.Memo != after.Memo || before.GrpName != after.GrpName)
    MatChanged = true;
  emit cardsChanged();
}

void TDirectoryPages::SetContactColumns(TADOQuery &q, const TMaininfoRecord &r) {
  q.SetString(u"Name"_s, r.Name);
  q.SetString(u"BranchTel"_s, r.BranchTel);
  q.SetString(u"phone1"_s, r.Phone1);
  q.SetString(u"MobilePhone"_s, r.MobilePhone);
  q.SetString(u"Address"_s, r.Address);
  q.SetString(u"Company"_s, r.Company);
  q.SetString(u"E_Mail"_s, r.E_Mail);
  q.SetString(u"Web"_s, r.Web);
  q.SetString(u"QQ"_s, r.QQ);
  q.SetString(u"MSN"_s, r.MSN);
  q.SetString(u"Duty"_s, r.Duty);
  q.SetDateTime(u"Birthday"_s, r.Birthday);
  q.SetString(u"Fax"_s, r.Fax);
  q.SetString(u"Postalcode"_s, r.Postalcode);
  q.SetString(u"Memo"_s, r.Memo);
  q.SetString(u"GroupType"_s, r.GroupType);
  q.SetString(u"IDCard"_s, r.IDCard);
  q.SetString(u"GrpName"_s, r.GrpName);
}

void TDirectoryPages::AddMainInfo(const TMaininfoRecord &record) {
  if (record.Name.isEmpty() && record.Phone1.isEmpty()) {
    TheShell().Message(MessageKind::Warning, LangText(262));
    return;
  }
  Sys_DM().OpenSQL(u"select * from maininfo where (1=2)"_s, Select_ADOQuery);
  Select_ADOQuery.Append();
  SetContactColumns(Select_ADOQuery, record);
  Select_ADOQuery.Post();
  CurrentMatID = Select_ADOQuery.AsInteger(u"ID"_s);
  NoteMatShown();

  TMaininfoRecord stored = record;
  stored.ID = CurrentMatID;
  UpdateCallLists(ListUpdate::Added, stored);
  TheShell().Message(MessageKind::Information, LangText(264));
  MatChanged = false;
  Select_ADOQuery.Close();
}

void TDirectoryPages::UpdateMainInfo(const TMaininfoRecord &record, qint32 id) {
  if (record.Name.isEmpty() && record.Phone1.isEmpty()) {
    TheShell().Message(MessageKind::Warning, LangText(265));
    return;
  }
  Sys_DM().OpenSQL(u"select * from maininfo where ID=%1"_s.arg(id), Select_ADOQuery);
  const bool versioned = Sys_DM().Target() == SqlTarget::Postgres &&
                         Select_ADOQuery.HasField(u"RowVersion"_s) && !Select_ADOQuery.IsEmpty();
  const qint64 found = versioned ? Select_ADOQuery.Value(u"RowVersion"_s).toLongLong() : -1;
  const bool overtaken =
      versioned && id == CurrentMatID && MatShownVersion >= 0 && found != MatShownVersion;
  Select_ADOQuery.Edit();
  SetContactColumns(Select_ADOQuery, record);
  Select_ADOQuery.Post();
  if (versioned) {
    // The server's trigger counted the save one up.
    Sys_DM().Link().NoteOwnWrite(u"MainInfo"_s, id, found + 1);
    if (id == CurrentMatID)
      MatShownVersion = found + 1;
  }
  if (overtaken) {
    Sys_DM().Link().AnnounceOverwrite(u"MainInfo"_s, id, found);
    WriteLog(u"Contact %1 (%2) saved over another desk's change"_s.arg(id).arg(record.Name));
    TheShell().Message(MessageKind::Warning,
                       u"联系人\u201c%1\u201d在这里显示之后被另一个前台改过了; 您的保存替换了那次修改。"_s
                           .arg(record.Name));
  }

  TMaininfoRecord stored = record;
  stored.ID = id;
  UpdateCallLists(ListUpdate::Changed, stored);
  TheShell().Message(MessageKind::Information, LangText(267));
  MatChanged = false;
  Select_ADOQuery.Close();
}

void TDirectoryPages::LMDButton26Click() {
  const TMaininfoRecord record = ReadMatPage();
  if (CurrentMatID == -1) {
    AddMainInfo(record);
    if (MainInfo_DBAdvStringGrid.Active()) {
      MainInfo_DBAdvStringGrid.Reopen();
      MainInfo_DBAdvStringGrid.Last();
    }
    RefreshGroupNames();
  } else if (MatChanged) {
    UpdateMainInfo(record, CurrentMatID);
    if (MainInfo_DBAdvStringGrid.Active())
      MainInfo_DBAdvStringGrid.RefreshQuery();
    RefreshGroupNames();
  }
  emit cardsChanged(); // a new contact's ID
}

void TDirectoryPages::LMDButton25Click() {
  if (MatChanged && TheShell().Question(LangText(270))) {
    LMDButton26Click();
    return;
  }
  ClearMatFields();
  CurrentMatID = -1;
  emit cardsChanged();
}

void TDirectoryPages::FillGroupNames(QStringList &items) {
  items.clear();
  Sys_DM().OpenSQL(u"SELECT DISTINCT GrpName FROM MainInfo order by GrpName"_s, select2_ADOQuery);
  for (select2_ADOQuery.First(); !select2_ADOQuery.Eof(); select2_ADOQuery.Next()) {
    const QString name = select2_ADOQuery.AsString(u"GrpName"_s);
    if (!name.isEmpty())
      items.append(name);
  }
  select2_ADOQuery.Close();
}

void TDirectoryPages::RefreshGroupNames() {
  FillGroupNames(Mat_GrpName_TeSComboBox_Items);
  FillGroupNames(Con_GrpName_TeSComboBox_Items);
  FillGroupNames(Find_GrpName_TeSComboBox_Items);
  emit cardsChanged();
}

void TDirectoryPages::Mat_GrpName_TeSComboBoxDropDown() {
  FillGroupNames(Mat_GrpName_TeSComboBox_Items);
  emit cardsChanged();
}

void TDirectoryPages::Con_GrpName_TeSComboBoxDropDown() {
  FillGroupNames(Con_GrpName_TeSComboBox_Items);
  emit cardsChanged();
}

void TDirectoryPages::LMDButton29Click(const QString &memoSelection) {
  FindDialog1.SetText(Mat_Memo_Memo);
  FindDialog1_FindText = memoSelection;
  FindDialog1.MoveCaretToStart();
  emit memoFindRequested();
}

bool TDirectoryPages::FindDialog1Find() {
  return FindDialog1.FindNext(FindDialog1_FindText);
}

void TDirectoryPages::N4Click() {
  GetMatRecord(MatHoldRecord);
}

void TDirectoryPages::N8Click() {
  // A paste makes a new contact like the copied one: who it is stays as the card
  // had it, and the personal messenger numbers don't come along.
  const qint32 id = CurrentMatID;
  const QString name = MAT_Name_LMDEdit;
  const QString phone = MAT_Phone1_LMDEdit;
  const QString mobile = MAT_MobilePhone_LMDEdit;
  MatHoldRecord.Name.clear();
  MatHoldRecord.Phone1.clear();
  MatHoldRecord.MobilePhone.clear();
  MatHoldRecord.QQ.clear();
  MatHoldRecord.MSN.clear();
  SetMatRecord(MatHoldRecord);
  CurrentMatID = id;
  MAT_Name_LMDEdit = name;
  MAT_Phone1_LMDEdit = phone;
  MAT_MobilePhone_LMDEdit = mobile;
  emit cardsChanged();
}

namespace {
int ImTagOf(const QString &caption, int current) {
  if (caption == LangText(268))
    return TDirectoryPages::ImEmail;
  if (caption == LangText(269))
    return TDirectoryPages::ImWeb;
  if (caption == u"QQ"_s)
    return TDirectoryPages::ImQQ;
  if (caption == u"MSN"_s)
    return TDirectoryPages::ImMSN;
  return current;
}

// What a press of the shared field's button opens; empty for nothing.
QString ImTarget(int tag, const QString &email, const QString &web, const QString &qq,
                 const QString &host) {
  switch (tag) {
  case TDirectoryPages::ImEmail:
    return email.isEmpty() ? QString() : u"mailto:"_s + email;
  case TDirectoryPages::ImWeb:
    return web.isEmpty() ? QString() : u"http://"_s + web;
  case TDirectoryPages::ImQQ:
    // The number goes into the link's query encoded, so it can only be a number.
    if (qq.isEmpty() || host.isEmpty())
      return QString();
    return u"http://"_s + host + u"/msgrd?V=1&Uin="_s +
           QString::fromLatin1(QUrl::toPercentEncoding(qq));
  default:
    return QString(); // the second network has no web link
  }
}
} // namespace

void TDirectoryPages::ok1Click(const QString &entryCaption) {
  Inernet_LMDButton_Caption = entryCaption;
  Inernet_LMDButton_Tag = ImTagOf(entryCaption, Inernet_LMDButton_Tag);
  emit cardsChanged();
}

void TDirectoryPages::ok2Click(const QString &entryCaption) {
  Con_Inernet_LMDButton_Caption = entryCaption;
  Con_Inernet_LMDButton_Tag = ImTagOf(entryCaption, Con_Inernet_LMDButton_Tag);
  emit cardsChanged();
}

void TDirectoryPages::Inernet_LMDButtonClick() {
  const QString target = ImTarget(Inernet_LMDButton_Tag, MAT_Email_LMDEdit, MAT_WEB_LMDEdit,
                                  MAT_QQ_LMDEdit, ImLinkHost);
  if (!target.isEmpty())
    TheShell().Open(target, QString());
}

void TDirectoryPages::Con_Inernet_LMDButtonClick() {
  const QString target = ImTarget(Con_Inernet_LMDButton_Tag, CON_Email_LMDEdit, CON_Web_LMDEdit,
                                  CON_QQ_LMDEdit, ImLinkHost);
  if (!target.isEmpty())
    TheShell().Open(target, QString());
}

void TDirectoryPages::N14Click() {
  QString mobile =
      (Mobile_PopupMenu_Tag == 0 ? CON_MobilePhone_LMDEdit : MAT_MobilePhone_LMDEdit).trimmed();
  // A long-distance prefix in front of a mobile number is not part of it.
  if (mobile.size() > 10 && mobile.startsWith(u'0'))
    mobile.remove(0, 1);
  emit smsRequested(mobile);
}

void TDirectoryPages::N13Click() {
  if (!DialNumber)
    return;
  const bool callPage = Mobile_PopupMenu_Tag == 0;
  const QString &text = callPage ? CON_MobilePhone_LMDEdit : MAT_MobilePhone_LMDEdit;
  const QString &selected = callPage ? CON_MobilePhone_SelText : MAT_MobilePhone_SelText;
  // On the call page the whole number goes first and the selection after it: two
  // dial requests in a row, which is how operators have learned to use it.
  if (callPage)
    DialNumber(text);
  DialNumber(selected.isEmpty() ? text : selected);
}

void TDirectoryPages::UpdateCallLists(ListUpdate kind, const TMaininfoRecord &contact) {
  UpdateCallList(lostIncom_LMDListBox, kind, contact);
  UpdateCallList(Incomed_LMDListBox, kind, contact);
  UpdateCallList(dialOut_LMDListBox, kind, contact);
}

void TDirectoryPages::UpdateCallList(TCallListModel &list, ListUpdate kind,
                                     const TMaininfoRecord &contact) {
  for (int i = 0; i < list.Count(); ++i) {
    TLmdlistItemRam item = list.Item(i);
    bool isNumber = false;
    const bool bound = item.ContactID.trimmed().toInt(&isNumber) == contact.ID && isNumber;
    const bool free = item.ContactID.isEmpty();
    switch (kind) {
    case ListUpdate::Added:
      // A row built during the run holds "-1", not nothing, and stays as built.
      if (!free || !NumberMatchesContact(item.Number, contact))
        continue;
      item.Fill(contact, true);
      break;
    case ListUpdate::Changed:
      if (bound) {
        if (NumberMatchesContact(item.Number, contact))
          item.Fill(contact, true);
        else
          item.Empty();
      } else if (free && NumberMatchesContact(item.Number, contact)) {
        item.Fill(contact, true);
      } else {
        continue;
      }
      break;
    case ListUpdate::Deleted:
      if (!bound)
        continue;
      item.Empty();
      break;
    }
    list.Replace(i, item);
  }
}

void TDirectoryPages::NoteMatShown() {
  MatShownVersion = -1;
  if (CurrentMatID < 0 || Sys_DM().Target() != SqlTarget::Postgres)
    return;
  TADOQuery q;
  Sys_DM().OpenSQL(u"select RowVersion from MainInfo where ID=%1"_s.arg(CurrentMatID), q);
  if (!q.IsEmpty())
    MatShownVersion = q.Value(u"RowVersion"_s).toLongLong();
}

void TDirectoryPages::ContactOverwritten(qint32 id) {
  TADOQuery q;
  Sys_DM().OpenSQL(u"select Name from MainInfo where ID=%1"_s.arg(id), q);
  const QString name = q.IsEmpty() ? QString::number(id) : q.AsString(u"Name"_s);
  WriteLog(u"Contact %1 (%2): this desk's save was replaced by another desk's"_s.arg(id).arg(name));
  TheShell().Message(MessageKind::Warning,
                     u"您对联系人\u201c%1\u201d的修改已被另一个前台后来的保存替换。"_s.arg(name));
}

void TDirectoryPages::ContactsChangedElsewhere() {
  if (MainInfo_DBAdvStringGrid.Active())
    MainInfo_DBAdvStringGrid.Reopen();
  RefreshGroupNames();
}
