// The contact searches, the result grid's sort, and what the grid's row does:
// load the contact card, delete, hand the name to the tasks.
#include "directory/DirectoryPages.h"

#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

namespace {
// "%text%" for a pattern between double quotes.
QString DqPattern(const QString &text) {
  return u"%"_s + SqlTextDq(text) + u"%"_s;
}

struct FindBox {
  bool Checked;
  const QString *Text;
  const char *Column;
};

QString CombinedSQL(const char *start, const char *joiner, const QList<FindBox> &boxes) {
  QString sql = QString::fromLatin1(start);
  // The clauses follow each other without a blank: "...)and (...".
  for (const FindBox &box : boxes) {
    if (box.Checked && !box.Text->isEmpty())
      sql += QString::fromLatin1(joiner) + u" ("_s + QString::fromLatin1(box.Column) +
             u" like \""_s + DqPattern(*box.Text) + u"\")"_s;
  }
  return sql;
}

// The clauses both combined searches offer, in their order. The e-mail clause
// names "Email", a column the book doesn't have; the engine answers it with an
// error the operator sees. Kept so the combined searches read as they always have.
QList<FindBox> CommonClauses(const TDirectoryPages &p) {
  return {{p.Find_Name_Check, &p.Find_Name_ComboBox, "name"},
          {p.Find_Phone1_Check, &p.Find_Phone1_ComboBox, "Phone1"},
          {p.Find_Company_Check, &p.Find_Company_ComboBox, "Company"},
          {p.Find_Address_Check, &p.Find_Address_ComboBox, "Address"},
          {p.Find_MobilePhone_Check, &p.Find_MobilePhone_ComboBox, "MobilePhone"},
          {p.Find_Fax_Check, &p.Find_Fax_ComboBox, "Fax"},
          {p.Find_Duty_Check, &p.Find_Duty_ComboBox, "Duty"},
          {p.Find_Email_Check, &p.Find_Email_LMDEdit, "Email"}};
}
} // namespace

void TDirectoryPages::RunNamedSearch(const QString &sql) {
  MainInfo_DBAdvStringGrid.OpenSQL(sql);
  LastMainInfoSQL = sql;
  MainInfo_DBAdvStringGrid.ResetTitles();
}

void TDirectoryPages::FindName_TeButtonClick() {
  if (Find_Name_TeSComboBox.isEmpty())
    return;
  RunNamedSearch(u"select * from Maininfo where Name like \""_s + DqPattern(Find_Name_TeSComboBox) +
                 u"\""_s);
}

void TDirectoryPages::find_BranchTel_TeButtonClick() {
  if (Find_BranchTel_TeSComboBox.isEmpty())
    return;
  RunNamedSearch(u"select * from Maininfo where BranchTel like \""_s +
                 DqPattern(Find_BranchTel_TeSComboBox) + u"\""_s);
}

void TDirectoryPages::findGrpname_TeButtonClick() {
  if (Find_GrpName_TeSComboBox.isEmpty())
    return;
  RunNamedSearch(u"select * from Maininfo where GrpName = \""_s +
                 SqlTextDq(Find_GrpName_TeSComboBox) + u"\""_s);
}

void TDirectoryPages::RunCompanySearch(const QString &text, const QString &selected) {
  const QString company = (selected.isEmpty() ? text : selected).trimmed();
  if (company.isEmpty())
    return;
  const QString sql =
      u"select * from Maininfo where (company like '%"_s + SqlText(company) + u"%') "_s;
  ShowSearchFromCard(sql);
}

void TDirectoryPages::ShowSearchFromCard(const QString &sql) {
  MainInfo_DBAdvStringGrid.OpenSQL(sql);
  // An empty result is not worth sorting later: the last search that found
  // something stays the one a title click sorts.
  if (MainInfo_ADOQuery.IsEmpty())
    return;
  LastMainInfoSQL = sql;
  // The key was pressed on a card or in a task: the rows are on another page.
  emit pageRequested(Page::Find_TeTabSheet);
}

void TDirectoryPages::LMDButton27Click() {
  RunCompanySearch(MAT_Company_LMDEdit, MAT_Company_SelText);
}

void TDirectoryPages::LMDButton31Click() {
  RunCompanySearch(CON_Company_LMDEdit, CON_Company_SelText);
}

void TDirectoryPages::FindByName(const QString &name) {
  const QString sql =
      u"select * from Maininfo where (name like '%"_s + SqlText(name.trimmed()) + u"%') "_s;
  ShowSearchFromCard(sql);
}

QString TDirectoryPages::AndSearchSQL() const {
  QList<FindBox> clauses = CommonClauses(*this);
  clauses.append({Find_IDCard_Check, &Find_IDCard_TeSEdit, "IDCard"});
  return CombinedSQL("select * from Maininfo where (1=1) ", "and", clauses);
}

QString TDirectoryPages::OrSearchSQL() const {
  // The "or" search has no identity-card clause.
  return CombinedSQL("select * from Maininfo where (1<>1) ", "or", CommonClauses(*this));
}

void TDirectoryPages::LMDButton28Click() {
  const QString sql = AndSearchSQL();
  RunGuarded([&] {
    RunNamedSearch(sql);
    MainInfo_DBAdvStringGrid.First();
  });
}

void TDirectoryPages::LMDButton38Click() {
  const QString sql = OrSearchSQL();
  RunGuarded([&] {
    RunNamedSearch(sql);
    MainInfo_DBAdvStringGrid.First();
  });
}

void TDirectoryPages::MainInfo_DBAdvStringGridCanSort(int column) {
  if (!MainInfo_DBAdvStringGrid.Active() || column < 0 || column >= TContactGridModel::kColumnCount)
    return;
  TContactGridModel &grid = MainInfo_DBAdvStringGrid;
  grid.ResetTitles();
  grid.CloseQuery();
  MainInfo_ADOQuery.SQL.clear();
  const QString field = TContactGridModel::FieldNames[size_t(column)];
  const QString plain = TContactGridModel::PlainTitle(column);
  int &direction = SortDirection[size_t(column)];
  QString sql;
  if (direction == 1) {
    grid.SetTitle(column, u"▼"_s + plain);
    sql = LastMainInfoSQL + u" order by "_s + field + u" Desc"_s;
    direction = 0;
  } else {
    grid.SetTitle(column, LangText(352) + plain);
    sql = LastMainInfoSQL + u" order by "_s + field + u" asc"_s;
    direction = 1;
  }
  grid.OpenSQL(sql);
}

void TDirectoryPages::MainInfo_DBAdvStringGridDblClick(int row) {
  TContactGridModel &grid = MainInfo_DBAdvStringGrid;
  if (!grid.Active() || row < 0 || row >= grid.rowCount())
    return;
  grid.SetCurrentRow(row);
  const TADOQuery &q = MainInfo_ADOQuery;
  MAT_Name_LMDEdit = q.AsString(u"name"_s);
  MAT_BranchTel_LMDEdit = q.AsString(u"BranchTel"_s);
  Mat_BranchTel_TeSComboBox = MAT_BranchTel_LMDEdit;
  MAT_Phone1_LMDEdit = q.AsString(u"Phone1"_s);
  MAT_Company_LMDEdit = q.AsString(u"Company"_s);
  MAT_MobilePhone_LMDEdit = q.AsString(u"MobilePhone"_s);
  MAT_Addres_LMDEdit = q.AsString(u"Address"_s);
  MAT_Fax_LMDEdit = q.AsString(u"Fax"_s);
  MAT_Email_LMDEdit = q.AsString(u"E_mail"_s);
  MAT_WEB_LMDEdit = q.AsString(u"WEB"_s);
  MAT_QQ_LMDEdit = q.AsString(u"QQ"_s);
  MAT_MSN_LMDEdit = q.AsString(u"MSN"_s);
  MAT_Duty_LMDEdit = q.AsString(u"Duty"_s);
  Mat_IDCard_TeSEdit = q.AsString(u"IDCard"_s);
  Mat_GrpName_TeSComboBox = q.AsString(u"GrpName"_s);
  Mat_Memo_Memo = q.AsString(u"Memo"_s);
  emit pageRequested(Page::Mat_TeTabSheet);
  CurrentMatID = q.AsInteger(u"ID"_s);
  MatShownVersion = q.HasField(u"RowVersion"_s) && Sys_DM().Target() == SqlTarget::Postgres
                        ? q.Value(u"RowVersion"_s).toLongLong()
                        : -1;
  MatChanged = false;
  emit cardsChanged();
}

void TDirectoryPages::DeleteGridContact(int questionKey) {
  TContactGridModel &grid = MainInfo_DBAdvStringGrid;
  if (!grid.Active() || MainInfo_ADOQuery.IsEmpty())
    return;
  const QString name = MainInfo_ADOQuery.AsString(u"Name"_s);
  if (!TheShell().Question(LangFormat(questionKey, {name})))
    return;
  TMaininfoRecord gone;
  gone.ID = MainInfo_ADOQuery.AsInteger(u"ID"_s);
  if (gone.ID == CurrentMatID) {
    ClearMatFields();
    CurrentMatID = -1;
    emit cardsChanged();
  }
  grid.DeleteCurrent();
  UpdateCallLists(ListUpdate::Deleted, gone);
}

void TDirectoryPages::TeSpeedButton6Click() {
  DeleteGridContact(348);
}

void TDirectoryPages::N3Click() {
  if (!MainInfo_DBAdvStringGrid.Active() || MainInfo_ADOQuery.IsEmpty() ||
      MainInfo_ADOQuery.AsString(u"ID"_s).isEmpty())
    return;
  DeleteGridContact(332);
}

bool TDirectoryPages::N12_Enabled() const {
  return MainInfo_DBAdvStringGrid.Active() && !MainInfo_ADOQuery.IsEmpty() &&
         !MainInfo_ADOQuery.AsString(u"Name"_s).isEmpty();
}

void TDirectoryPages::N12Click() {
  if (N12_Enabled())
    emit taskContactChosen(MainInfo_ADOQuery.AsString(u"Name"_s));
}
