#pragma once

#include "devices/ExtRecord.h"
#include "directory/Query.h"
#include "guest/ExtGridModel.h"

#include <QHash>
#include <QObject>
#include <QStringList>

#include <functional>

class TCallControlDev;
class TNetModule;

// The front desk's list of guest-room extensions on the extensions page: each
// grid row joins a device of the exchange with its row of the Exts table. This
// is the one place that paints a row and notices wake-up results; the room
// dialogs and the 30-second tick enter through it.
class TExtsView : public QObject {
  Q_OBJECT

public:
  TExtsView(TCallControlDev &table, TNetModule &net, QObject *parent = nullptr);

  TExtGridModel AdvStringGrid_Exts;
  // Opened once, kept open: the room part of every row is read and written here.
  TADOQuery ADOQuery_Exts{QStringLiteral("ADOQuery_Exts")};

  // The page control of the extensions page: the board, or this list.
  enum ExtViewPage { TeSTabsheet_Panel = 0, TeSTabsheet_Listview = 1 };
  int TeSPageControl_ExtView_ActivePage = TeSTabsheet_Panel;

  // At the main window's first show: the board's tab, the titles, the query.
  void ExtsView_Init();
  // The column titles in the language in force; again after a switch.
  void Ext_SetColumnTitles();

  // A device reported by the enumeration gets a row; the first extension takes
  // the grid's empty row.
  void Ext_AddRow(int id);
  // A device changed: its row shows it, hidden or not. No row, nothing changes.
  void Ext_UpdateRow(int id);
  // The join and paint of one row, given by its slot (TExtGridModel::SlotOfId).
  void Ext_RefreshRecord(TExt_Record vExt, int vRow);
  // The exchange's class names came after the rows were first painted: column
  // 5 of every row, hidden or not, takes its text from them. Only that column,
  // so no wake-up result is judged again.
  void Ext_RefreshSrvClassColumn();
  // The device ID of the current row; -1 (logged) when that row has none.
  int Ext_CurrentID() const;
  // From the grid row fromRow (1 is the first, as the title is row 0) on, the
  // first shown row that is checked becomes current; its ID, or -1.
  int Ext_NextSelected(int fromRow);
  // The IDs of the checked rows the filter shows, in grid order; the current
  // row stays where it is.
  QList<int> Ext_SelectedIDs() const;
  // Makes current the first shown row with exactly this number.
  bool Ext_LocateRow(const QString &telNos);
  // Shows the extension on the board; the board's own find does it.
  int Ext_LocatePanel(const QString &telNos);
  std::function<int(const QString &telNos)> LocatePanel;

  // Items of the lists whose texts columns 5 and 8 show. The service classes
  // are the exchange's once it has sent them, the dialog's design items before.
  std::function<QStringList()> SrvClassItems;
  static QStringList DefaultSrvClassItems();
  static QStringList NodisturbItems();
  static QString MoringModeText(int mode);
  // The spare column 11 shows who stays in a room: empty while it is vacant.
  // It stays hidden, as it always was, until the house sets up its front desk.
  static QString GuestText(const TExt_Record &ext);
  void ShowGuestColumn(bool shown);

  // Moves ADOQuery_Exts to the port's row; false for a port the table lacks.
  bool LocateExts(int id);
  // Locate, edit, set, post: the one way rows of Exts are written. A store error
  // rises as EDatabaseError, and the cursor keeps what it held before.
  void Exts_Write(int id, const std::function<void(TADOQuery &)> &setFields);

  // Another desk changed rooms of the shared store: the rows read their room
  // names, notes and guests again. Only those: the devices' state is this
  // desk's own, and no wake-up result is judged again.
  void Exts_SharedChanged();

  // The find box above the page.
  QString TeSComboBox_Ext_Text;
  QStringList TeSComboBox_Ext_Items; // newest first
  void tefxButton_ExtFindClick();    // also Enter in the box
  void tefxButton_Ext_CancelFilterClick();

  // Cell edits and clicks, by shown row (0-based, the model's row) and column.
  // Column 3 writes the room number at once; a store error reaches the operator
  // and the cell keeps its text.
  bool AdvStringGrid_ExtsCellValidate(int row, int column, const QString &text);
  void AdvStringGrid_ExtsDblClickCell(int row, int column);

  // PopupMenu_Ext; calling and transferring (N21, N22) are the main window's.
  void N27Click(); // check all shown rows
  void N28Click(); // invert the checks of the shown rows
  void N29Click(); // clear the checks of the shown rows
  void N25Click(); // the wake-up log of the current row

  // The 30-second tick over the shown rows: first the do-not-disturb windows of
  // a row, then its daily wake-up.
  void Timer_ExcuteActionTimer();
  // The do-not-disturb windows of one device, run first on each row of the tick.
  std::function<void(int id)> RunNoDisturbWindows;
  // Front desk: a wake-up result as it is logged (state 1 answered, 2 not);
  // the answer is the attempt it belongs to, kept in the log row (0: none).
  std::function<int(const TExt_Record &room, TDateTime wakeTime, int state)> MoringResultSeen;
  // Front desk: a room waiting for a retry of a failed wake-up; the tick leaves
  // its daily wake-up alone meanwhile, so the retry isn't overwritten.
  std::function<bool(int id)> WakeRetryPending;
  // The pause after each daily wake-up that lets the window breathe; a
  // benchmark turns it off to measure the tick's own work.
  bool TickYields = true;
  // A room in the middle of a check-in or check-out is left out of the tick:
  // its windows or daily wake-up would undo what the sequence has just sent.
  std::function<bool(int id)> RoomInSequence;

signals:
  // A double click asks for the dialog of its column.
  void moringCallRequested(int id); // columns 6 and 7
  void srvClassRequested(int id);   // column 5
  void nodisturbRequested(int id);  // column 8
  void voiceMailRequested(int id);  // column 9
  void memoRequested(int id);       // column 10
  // The record views: their first search at start, and the wake-up log of one
  // extension's number (N25).
  void recordSearchRequested();
  void moringCallLogRequested(const QString &ext);
  // A wake-up result as it is logged (state 1 answered, 2 not), for whoever
  // reports results beyond the grid and the log.
  void moringResultLogged(int id, const QString &ext, const QString &roomNo, TDateTime wakeTime,
                          int state);

private:
  QStringList CurrentSrvClassItems() const;
  TExt_Record RecordOf(int id, bool withStatus) const;
  void ReadExts(TExt_Record &vExt);
  void LogMoringResults(const TExt_Record &vExt, const TExt_Record &last);
  void SetChecks(const std::function<QString(const QString &)> &next);

  TCallControlDev &m_table;
  TNetModule &m_net;
  QHash<int, int> m_extsRecNo; // port -> row of ADOQuery_Exts
};
