#pragma once

#include "directory/CallListModel.h"
#include "directory/ContactGridModel.h"
#include "directory/ContactRecord.h"
#include "directory/MemoFind.h"
#include "directory/Query.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <array>
#include <functional>

class TForm_PopMsg;

// The main window's directory pages: the caller's card (call page), the contact
// card (contact page), the contact search with its result grid, the three call
// lists and the list of current incoming calls. It holds what those controls
// show and the handlers they forward to; the main form's logic owns one and
// wires the call events and the dial operation into it. Split by concern:
// DirectoryPages_Contacts.cpp (the contact card), DirectoryPages_Search.cpp (the
// searches and the grid), DirectoryPages_Caller.cpp (lookup, incoming calls and
// the pop-up), DirectoryPages_CallLog.cpp (the stored call log and its lists).
class TDirectoryPages : public QObject {
  Q_OBJECT

public:
  // The pages the handlers may bring to the front.
  enum class Page { Con_TeTabSheet, Mat_TeTabSheet, Find_TeTabSheet };
  Q_ENUM(Page)

  explicit TDirectoryPages(QObject *parent = nullptr);
  ~TDirectoryPages() override;

  // What the main form supplies. Empty functions mean "not there yet": nothing
  // dials, every call counts as still ringing, the console has no extension.
  std::function<void(const QString &number)> DialNumber;
  std::function<bool()> CallStillRinging; // the present call is still in state 2
  std::function<QString()> OwnExtension;  // the console's own extension
  TForm_PopMsg *Form_PopMsg = nullptr;

  // The queries of the pages, on the store's one connection.
  TADOQuery Select_ADOQuery{QStringLiteral("Select_ADOQuery")};
  TADOQuery select2_ADOQuery{QStringLiteral("select2_ADOQuery")};
  TADOQuery Excute_ADOQuery{QStringLiteral("Excute_ADOQuery")};

  // ---- the call page (DirectoryPages_Caller.cpp) ----
  QString CON_Name_LMDEdit;
  QString CON_Phone1_LMDEdit;
  QString CON_Company_LMDEdit;
  QString CON_Company_SelText; // the selected part of the company edit
  QString CON_MobilePhone_LMDEdit;
  QString CON_MobilePhone_SelText;
  QString CON_Address_LMDEdit;
  QString CON_Fax_LMDEdit;
  QString CON_Email_LMDEdit;
  QString CON_Web_LMDEdit;
  QString CON_QQ_LMDEdit;
  QString CON_MSN_LMDEdit;
  QString CON_Duty_LMDEdit;
  QString CON_Memo_Memo;
  QString Con_IDCard_TeSEdit;
  QString Con_GrpName_TeSComboBox;
  QStringList Con_GrpName_TeSComboBox_Items;
  QString ConEdit_LMDButton_Caption;
  qint32 CurrentConID = -1;

  void ShowCallerInfo(const QString &field, const QString &number);
  void InsertCallItem(const QString &field, const QString &number, int rowNo, TCallListModel &list);
  void AppendCallItem(const QString &field, const QString &number, int rowNo, TCallListModel &list);
  void RemoveIncomingItem(const QString &number);
  void LoadCallItem(const QString &field, const QString &number, int rowNo, TCallListModel &list,
                    TDateTime when);
  void ConEdit_LMDButtonClick();
  // After a language switch: the captions that tell a state (which shared
  // field shows, whether the caller is known) in the new language's words.
  void RetranslateCaptions();

  // How a ringing call is announced is the call handling's; these are the ways
  // it can ask for here.
  // IncomStyle 0: the main window comes back and, while the call still rings,
  // the call page shows the caller.
  void ShowIncomingDirect(const QString &number);
  // The tray balloon was clicked: as IncomStyle 0.
  void BalloonClick();
  void ShowPopMsg(const QString &number);

  // The external action with the number of the call copied for it.
  QString APICallNumber;
  void TeSpeedButton_APIExcuteClick();

  // ---- the contact page (DirectoryPages_Contacts.cpp) ----
  QString MAT_Name_LMDEdit;
  QString MAT_BranchTel_LMDEdit;
  QString Mat_BranchTel_TeSComboBox;
  QString MAT_Phone1_LMDEdit;
  QString MAT_Company_LMDEdit;
  QString MAT_Company_SelText;
  QString MAT_MobilePhone_LMDEdit;
  QString MAT_MobilePhone_SelText;
  QString MAT_Addres_LMDEdit;
  QString MAT_Fax_LMDEdit;
  QString MAT_Email_LMDEdit;
  QString MAT_WEB_LMDEdit;
  QString MAT_QQ_LMDEdit;
  QString MAT_MSN_LMDEdit;
  QString MAT_Duty_LMDEdit;
  QString Mat_Memo_Memo;
  QString Mat_IDCard_TeSEdit;
  QString Mat_GrpName_TeSComboBox;
  QStringList Mat_GrpName_TeSComboBox_Items;

  qint32 CurrentMatID = -1;
  bool MatChanged = false;
  // On a shared store, the version the shown contact had when this desk read
  // it (-1: none, or a file store). A save that finds a later one was
  // overtaken by another desk: it still wins, and the operator is told.
  qint64 MatShownVersion = -1;
  void NoteMatShown();
  // Another desk's later save replaced this desk's save of a contact.
  void ContactOverwritten(qint32 id);
  // Another desk changed contacts: the open search grid and the group names
  // read again.
  void ContactsChangedElsewhere();
  TMaininfoRecord MatHoldRecord; // what N4 copied

  // A field of the page was edited (the view calls this on every change).
  void MatRecordChanged() { MatChanged = true; }

  void AddMainInfo(const TMaininfoRecord &record);
  void UpdateMainInfo(const TMaininfoRecord &record, qint32 id);
  void ClearMatFields();
  void GetMatRecord(TMaininfoRecord &record) const;
  void GetConRecord(TMaininfoRecord &record) const;
  void SetMatRecord(const TMaininfoRecord &record);
  void RefreshGroupNames();
  // The two group boxes of the cards fill themselves again as they drop down.
  void Mat_GrpName_TeSComboBoxDropDown();
  void Con_GrpName_TeSComboBoxDropDown();

  // The find dialog over the card's memo: LMDButton29 opens it with the memo's
  // selection, each press of its button (FindDialog1Find) finds the next hit.
  TMemoFind FindDialog1;
  QString FindDialog1_FindText;
  void LMDButton29Click(const QString &memoSelection);
  bool FindDialog1Find();

  void LMDButton26Click(); // save
  void LMDButton25Click(); // new
  void N4Click();          // copy
  void N8Click();          // paste

  // The shared place of e-mail, web and the two messengers: which one shows.
  enum ImTag { ImEmail = 0, ImWeb = 1, ImQQ = 2, ImMSN = 3 };
  QString Inernet_LMDButton_Caption;
  int Inernet_LMDButton_Tag = ImEmail;
  QString Con_Inernet_LMDButton_Caption;
  int Con_Inernet_LMDButton_Tag = ImEmail;
  void ok1Click(const QString &entryCaption); // IM_PopupMenu, contact page
  void ok2Click(const QString &entryCaption); // Con_IM_PopupMenu, call page
  void Inernet_LMDButtonClick();
  void Con_Inernet_LMDButtonClick();
  // The host of the first messenger network's web chat link; empty opens nothing.
  QString ImLinkHost;

  // Mobile_PopupMenu: Tag 0 the call page, 1 the contact page.
  int Mobile_PopupMenu_Tag = 0;
  void N14Click(); // send an SMS
  void N13Click(); // dial the mobile

  // ---- the search page and the grid (DirectoryPages_Search.cpp) ----
  TContactGridModel MainInfo_DBAdvStringGrid;
  TADOQuery &MainInfo_ADOQuery = MainInfo_DBAdvStringGrid.MainInfo_ADOQuery;
  QString LastMainInfoSQL;
  std::array<int, TContactGridModel::kColumnCount> SortDirection{};

  QString Find_Name_TeSComboBox;
  QString Find_BranchTel_TeSComboBox;
  QString Find_GrpName_TeSComboBox;
  QStringList Find_GrpName_TeSComboBox_Items;
  void FindName_TeButtonClick();
  void Find_Name_TeSComboBoxChange() { FindName_TeButtonClick(); }
  void find_BranchTel_TeButtonClick();
  void Find_BranchTel_TeSComboBoxChange() { find_BranchTel_TeButtonClick(); }
  void findGrpname_TeButtonClick();
  void LMDButton27Click(); // the company of the contact page
  void LMDButton31Click(); // the company of the call page
  void FindByName(const QString &name);

  // The combined search's boxes.
  bool Find_Name_Check = false;
  QString Find_Name_ComboBox;
  bool Find_Phone1_Check = false;
  QString Find_Phone1_ComboBox;
  bool Find_Company_Check = false;
  QString Find_Company_ComboBox;
  bool Find_Address_Check = false;
  QString Find_Address_ComboBox;
  bool Find_MobilePhone_Check = false;
  QString Find_MobilePhone_ComboBox;
  bool Find_Fax_Check = false;
  QString Find_Fax_ComboBox;
  bool Find_Duty_Check = false;
  QString Find_Duty_ComboBox;
  bool Find_Email_Check = false;
  QString Find_Email_LMDEdit;
  bool Find_IDCard_Check = false;
  QString Find_IDCard_TeSEdit;
  void LMDButton28Click(); // and
  void LMDButton38Click(); // or
  // The statements the two buttons run, for the boxes as they stand.
  QString AndSearchSQL() const;
  QString OrSearchSQL() const;

  // TeSpeedButton2..5 walk the grid's rows.
  void TeSpeedButton2Click() { MainInfo_DBAdvStringGrid.First(); }
  void TeSpeedButton3Click() { MainInfo_DBAdvStringGrid.Prior(); }
  void TeSpeedButton4Click() { MainInfo_DBAdvStringGrid.Next(); }
  void TeSpeedButton5Click() { MainInfo_DBAdvStringGrid.Last(); }

  void MainInfo_DBAdvStringGridCanSort(int column);
  // A double click on a grid row: the contact to the contact page.
  void MainInfo_DBAdvStringGridDblClick(int row);
  void TeSpeedButton6Click(); // delete the grid's current contact
  void N3Click();             // the same from the grid's menu
  bool N12_Enabled() const;
  void N12Click(); // make the grid's contact a task's contact

  // ---- the call log (DirectoryPages_CallLog.cpp) ----
  TCallListModel lostIncom_LMDListBox{QStringLiteral("lostIncom_LMDListBox")};
  TCallListModel Incomed_LMDListBox{QStringLiteral("Incomed_LMDListBox")};
  TCallListModel dialOut_LMDListBox{QStringLiteral("dialOut_LMDListBox")};
  TCallListModel Incomings_LMDListBox{QStringLiteral("Incomings_LMDListBox")};

  qint32 AddConRecord(const QString &number, int state);
  void LoadConRecords();
  void DeleteConRecord(const QString &column, const QString &value);
  void DeleteSelectedCallItems(TCallListModel &list);
  // The list of a stored state (1 missed, 2 answered, 3 dialled); nullptr else.
  TCallListModel *ListOfState(int state);
  // A double click on a row of one of the three lists.
  void OpenCallItem(TCallListModel &list, int row);
  // N10 (dialled), MenuItem6 (missed), MenuItem1 (answered): call the selected number.
  void DialBackSelected(TCallListModel &list);
  // The lists' menus and the Delete key (46) on any of the three.
  void N11Click() { DeleteSelectedCallItems(dialOut_LMDListBox); }
  void MenuItem7Click() { DeleteSelectedCallItems(lostIncom_LMDListBox); }
  void MenuItem5Click() { DeleteSelectedCallItems(Incomed_LMDListBox); }
  void N10Click() { DialBackSelected(dialOut_LMDListBox); }
  void MenuItem6Click() { DialBackSelected(lostIncom_LMDListBox); }
  void MenuItem1Click() { DialBackSelected(Incomed_LMDListBox); }
  void CallListKeyDown(TCallListModel &list, int key) {
    if (key == 46)
      DeleteSelectedCallItems(list);
  }

signals:
  void pageRequested(TDirectoryPages::Page page);
  void restoreMainWindowRequested();
  void smsRequested(const QString &number);
  void taskContactChosen(const QString &name);
  // The memo's find dialog is to show, its lower edge on the memo's upper edge.
  void memoFindRequested();
  // An operation changed what the cards or the search boxes show (their texts,
  // lists, captions or the contact on the page); the screens show the fields
  // again. Typing into a control writes its field and raises nothing.
  void cardsChanged();

private:
  // The page read as saving writes it: unlike GetMatRecord, with its own memo.
  TMaininfoRecord ReadMatPage() const;
  void SetContactColumns(TADOQuery &query, const TMaininfoRecord &record);
  TLmdlistItemRam BuildLiveCallItem(const QString &field, const QString &number, int rowNo);
  void DeleteGridContact(int questionKey);

  enum class ListUpdate { Added, Changed, Deleted };
  void UpdateCallLists(ListUpdate kind, const TMaininfoRecord &contact);
  void UpdateCallList(TCallListModel &list, ListUpdate kind, const TMaininfoRecord &contact);

  void FillGroupNames(QStringList &items);
  void RunCompanySearch(const QString &text, const QString &selected);
  // A search started away from the search page: the grid, and the page to the
  // front when it found rows.
  void ShowSearchFromCard(const QString &sql);
  void RunNamedSearch(const QString &sql);

  int m_loadGeneration = 0;
};

// How a lookup statement reads the contacts: through the store's key table
// (what the console runs), or every row (the same answer, kept to check the
// first against and to measure it by).
enum class LookupPlan { Indexed, Plain };

// The caller-lookup statement for a number: numbers of seven characters and more
// seek stored numbers longer than six, shorter ones only short stored numbers.
QString CallerLookupSQL(const QString &field, const QString &number,
                        LookupPlan plan = LookupPlan::Indexed);

// The call lists' stricter match: a stored number whose last seven characters
// are the number's.
QString CallTailSQL(const QString &field, const QString &number,
                    LookupPlan plan = LookupPlan::Indexed);
