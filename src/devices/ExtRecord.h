#pragma once

#include "support/TDateTime.h"

#include <QString>

// One extension row of the guest-room list: the live device part (following the
// exchange) joined with the room part kept in the Exts table. A device keeps the
// row as it was last shown, so the next refresh can tell what changed.
struct TExt_Record {
  int ID = 0;
  int DevType = 0;
  QString TelNos;
  int SrvClass = 0;
  TDateTime MoringCallTime;
  int Status = 0; // stays 0 on the record made when a row is first added
  QString RoomNo;
  QString Memo;
  QString LeaveMessage; // carried, never shown
  int NoDisturbMode = 0;
  int VoiceMail = 0;
  int MoringCallAnswerFlag = 0;
  int MoringCallDelayFlag = 0;
  int MoringCallMode = 0;
  bool LiveUpdate = false; // only a live status event logs wake-up results
  bool NoDisturb_Time1_Checked = false;
  bool NoDisturb_Time2_Checked = false;
  bool NoDisturb_Time3_Checked = false;
  TDateTime NoDisturb_Time1_Start;
  TDateTime NoDisturb_Time2_Start;
  TDateTime NoDisturb_Time3_Start;
  TDateTime NoDisturb_Time1_End;
  TDateTime NoDisturb_Time2_End;
  TDateTime NoDisturb_Time3_End;
  bool MoringCall_isEveryDay = false;
  TDateTime MoringCall_EveryDay_Time;
  int MoringCall_Mode = 0;
  // The front desk's own columns: who stays in the room, and whether it is let.
  QString GuestName;
  bool Occupied = false;
};
