// The console's own call log: storing a call, rebuilding the three lists from
// the latest hundred, deleting rows, opening and dialling back a logged number.
#include "directory/DirectoryPages.h"

#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

qint32 TDirectoryPages::AddConRecord(const QString &number, int state) {
  // Written at once so the list row can carry its ID; while the store is busy
  // the call waits with the other records and its row has no ID (-1) until the
  // lists are next loaded.
  return qint32(Sys_DM().PendingWrites().AppendNow(
      {u"conRecords"_s,
       {u"TelNos"_s, u"State"_s, u"DateTime"_s},
       {number.isEmpty() ? u"?"_s : number, state, FormatFull(Now())}}));
}

TCallListModel *TDirectoryPages::ListOfState(int state) {
  switch (state) {
  case 1:
    return &lostIncom_LMDListBox;
  case 2:
    return &Incomed_LMDListBox;
  case 3:
    return &dialOut_LMDListBox;
  default:
    return nullptr;
  }
}

void TDirectoryPages::LoadConRecords() {
  const int generation = ++m_loadGeneration;
  lostIncom_LMDListBox.Clear();
  Incomed_LMDListBox.Clear();
  dialOut_LMDListBox.Clear();

  // The window is the hundred latest of all states together.
  Sys_DM().OpenSQL(
      u"SELECT top 100 ID, TelNos, DateTime, State FROM conRecords order by DateTime desc"_s,
      select2_ADOQuery);
  struct Logged {
    int ID;
    QString TelNos;
    TDateTime When;
    int State;
  };
  // Taken out of the cursor first: the walk lets the operator work between rows,
  // and a search or a save in between may reuse the query.
  QList<Logged> rows;
  TADOQuery &q = select2_ADOQuery;
  for (q.Last(); !q.Bof(); q.Prior())
    rows.append({q.AsInteger(u"ID"_s), q.AsString(u"TelNos"_s), q.AsDateTime(u"DateTime"_s),
                 q.AsInteger(u"State"_s)});
  q.Close();

  // Oldest first, each put on top, so every list ends with the newest first.
  for (const Logged &row : rows) {
    if (TCallListModel *list = ListOfState(row.State))
      LoadCallItem(u"Phone1"_s, row.TelNos, row.ID, *list, row.When);
    QCoreApplication::processEvents();
    // A later rebuild (a second login while this one walks) owns the lists now.
    if (generation != m_loadGeneration)
      return;
  }
}

void TDirectoryPages::DeleteConRecord(const QString &column, const QString &value) {
  // The value is a row number the lists built; anything else goes in as text.
  bool isNumber = false;
  value.toLongLong(&isNumber);
  // A server refuses to compare the numbered ID with text that is no number,
  // where SQLite merely finds no row; the answer is the same: nothing goes.
  // And it compares a text column with a number only when the number is
  // quoted, which it then reads as the column's type, number or text.
  const bool server = Sys_DM().Target() == SqlTarget::Postgres;
  if (server && !isNumber && column.compare(u"ID"_s, Qt::CaseInsensitive) == 0)
    return;
  const QString literal = isNumber && !server ? value : u"'"_s + SqlText(value) + u"'"_s;
  Excute_ADOQuery.SQL = u"delete from conRecords where ("_s + column + u"="_s + literal + u")"_s;
  Excute_ADOQuery.ExecSQL();
}

void TDirectoryPages::DeleteSelectedCallItems(TCallListModel &list) {
  if (list.SelCount() == 0)
    return;
  if (!TheShell().Question(LangText(349)))
    return;
  int i = 0;
  while (i < list.Count()) {
    if (!list.Selected(i)) {
      ++i;
      continue;
    }
    if (list.Item(i).IsEmpty())
      break;
    DeleteConRecord(u"ID"_s, list.Item(i).RowNo);
    list.Delete(i); // the next row now stands at i
  }
}

void TDirectoryPages::OpenCallItem(TCallListModel &list, int row) {
  if (row < 0 || row >= list.Count())
    return;
  const QString number = list.Item(row).Number;
  if (list.SelCount() > 0 && number.isEmpty())
    return;
  ShowCallerInfo(u"Phone1"_s, number);
  emit pageRequested(Page::Con_TeTabSheet);
}

void TDirectoryPages::DialBackSelected(TCallListModel &list) {
  const int row = list.ItemIndex;
  if (row < 0 || row >= list.Count())
    return;
  const QString number = list.Item(row).Number;
  if (DialNumber)
    DialNumber(number);
  else
    WriteLog(u"No dial operation for "_s + number);
  ShowCallerInfo(u"Phone1"_s, number);
  emit pageRequested(Page::Con_TeTabSheet);
}
