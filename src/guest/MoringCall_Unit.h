#pragma once

#include "support/FormLogic.h"
#include "support/TDateTime.h"

#include <QStringList>

class TCallControlDev;
class TExtsView;
class TNetModule;

// The wake-up dialog of one extension: switch, date, hour, minute and mode of
// the next wake-up, and the daily wake-up the console itself repeats. The
// screens show it while Visible() and forward the keys.
class TMoringCall_Form : public TFormLogic {
  Q_OBJECT

public:
  TMoringCall_Form(TCallControlDev &table, TNetModule &net, TExtsView &exts,
                   QObject *parent = nullptr);

  QString Caption;
  QString TelNos_StaticText;
  // Item 0 is off, item 1 on; the off item reads as the off text of every pack.
  QStringList MoCall_Flag_TeSComboBox_Items;
  int MoCall_Flag_TeSComboBox_ItemIndex = 0;
  QString MoCall_Flag_TeSComboBox_Text() const;
  TDateTime MoCallDate_TeDateTimePicker; // the date part counts
  int MoCall_Hour_TeSpinEdit = 7;
  int MoCall_Minute_TeSpinEdit = 30;
  QStringList TeSComboBox_MoringCallMode_Items; // modes 1..3
  int TeSComboBox_MoringCallMode_ItemIndex = 0;
  bool TeCheckBox_MoringCall_isEveryDay = false;
  TDateTime TeDateTimePicker_MoringCall_EveryDayTime; // the time of day counts
  // The two apply keys follow the exchange's bar on guest-room actions.
  bool TeButton1_Enabled = true;
  bool TeButton_MoringCallSet_Multi_Enabled = true;
  // Set while the batch key applies; the walk over the checked rows steps on it.
  bool MultiApply = false;

  // tefxButton_MoringCall: opens on the grid's current row.
  void tefxButton_MoringCallClick();
  // Opens for a device (the board's menu, the grid's wake-up columns): fills
  // the controls from the device, asks the exchange, shows the window.
  void OpenFor(int id);
  void FormShow();
  // The exchange's answer to the query: "" for no wake-up, mode 1..3.
  void MoringCallAnswered(const QString &callTime, int mode);
  void TeButton1Click(); // apply
  void TeButton_MoringCallSet_MultiClick();
  void TeButton2Click(); // cancel
  void SetServiceAllowed(bool allowed);

  // What an apply sends and keeps for one room: the wake-up on at `When` in
  // `Mode` (1..3), or off; and the daily wake-up the console repeats itself.
  struct TWakeUpChange {
    int ID = -1;
    bool On = false;
    TDateTime When;
    int Mode = 1;
    bool Daily = false;
    TDateTime DailyTime; // the time of day counts
  };
  // The one apply of a wake-up, for the dialog's key and the automation API:
  // the packet to the exchange, the device's record, the room's row of Exts
  // and the grid row. False (logged) for an unknown device. A store error rises
  // as EDatabaseError after the packet went.
  bool ApplyWakeUp(const TWakeUpChange &change);

signals:
  // The batch key sent its first room; the walk goes on from the answers.
  void batchStarted();

private:
  void Apply();
  TDateTime WakeTimeOfControls() const;
  // A wake-up into a room's do-not-disturb goes out only if the operator says
  // so; true when nothing is in the way or the answer is to go on.
  bool ConfirmDndConflicts(const QList<int> &ids, TDateTime when);
  bool m_conflictsConfirmed = false; // the batch key asked already

  TCallControlDev &m_table;
  TNetModule &m_net;
  TExtsView &m_exts;
};
