#pragma once

#include "support/FormLogic.h"
#include "support/TDateTime.h"

class TCallControlDev;
class TFrontDesk;

// The check-in dialog ("入住"): the guest's name, the class the room takes
// (the house's setting, shown, not chosen here), and an optional memo and
// wake-up. Its keys check in the current room or every checked one.
class TForm_CheckIn : public TFormLogic {
  Q_OBJECT

public:
  TForm_CheckIn(TCallControlDev &table, TFrontDesk &desk, QObject *parent = nullptr);

  QString Caption;
  int Target = -1;
  QString Edit_GuestName;
  QString Label_OccupiedClass; // the class item, or why there is none
  QString Edit_Memo;
  bool CheckBox_WakeUp = false;
  TDateTime DateTimePicker_WakeUp;
  int ComboBox_WakeUpMode_ItemIndex = 0; // modes 1..3
  bool TeButton_CheckIn_Apply_Enabled = true;

  void OpenFor(int id);
  void TeButton_CheckIn_ApplyClick();      // this room; closes once it started
  void TeButton_CheckIn_ApplyMultiClick(); // the checked rooms
  void TeButton_CheckIn_CancelClick();
  void SetServiceAllowed(bool allowed);

private:
  void Apply(bool checkedRooms);

  TCallControlDev &m_table;
  TFrontDesk &m_desk;
};
