#pragma once

#include "support/FormLogic.h"
#include "support/TDateTime.h"

#include <QStringList>

class TBatchWalk;
class TCallControlDev;
class TExtsView;
class TNodisturb;

// The do-not-disturb dialog of one room: the mode the exchange holds, and the
// three daily windows the console switches the room by.
class TForm_Nodisturb : public TFormLogic {
  Q_OBJECT

public:
  TForm_Nodisturb(TCallControlDev &table, TExtsView &exts, TNodisturb &nodisturb, TBatchWalk &walk,
                  QObject *parent = nullptr);

  QString Caption;
  int Target = -1;
  QStringList TeComboBox_Nodisturb_Items; // modes 0..3
  int TeComboBox_Nodisturb_ItemIndex = 0;
  bool TeCheckBox_Time1 = false;
  bool TeCheckBox_Time2 = false;
  bool TeCheckBox_Time3 = false;
  TDateTime TeDateTimePicker_Time1_Start; // the time of day counts
  TDateTime TeDateTimePicker_Time1_End;
  TDateTime TeDateTimePicker_Time2_Start;
  TDateTime TeDateTimePicker_Time2_End;
  TDateTime TeDateTimePicker_Time3_Start;
  TDateTime TeDateTimePicker_Time3_End;
  // Under the windows: how the console reads them, so that a window across
  // midnight, which never switches on, surprises nobody.
  QString TeLabel_Hint;
  bool TeButton_Nodisturb_Apply_Enabled = true;
  bool TeButton_Nodisturb_ApplyMulti_Enabled = true;
  bool MultiApply = false;

  // tefxButton_Nodisturb_Ctrl: opens on the grid's current row.
  void tefxButton_Nodisturb_CtrlClick();
  void OpenFor(int id);
  void TeButton_Nodisturb_ApplyClick();
  void TeButton_Nodisturb_ApplyMultiClick();
  void TeButton2Click(); // cancel
  void SetServiceAllowed(bool allowed);

  // The automation API's apply to one room, whatever row the grid is on: the
  // dialog's fields as they stand (filled by OpenFor's rules or by the
  // caller) into the device, the windows into Exts, then the mode to the
  // exchange. False (logged) for an unknown device; a store error rises as
  // EDatabaseError before anything is sent.
  bool ApplyTo(int id);

private:
  // The dialog's mode and windows into the device and the row it last showed.
  bool WriteInto(int id);

  TCallControlDev &m_table;
  TExtsView &m_exts;
  TNodisturb &m_nodisturb;
  TBatchWalk &m_walk;
};
