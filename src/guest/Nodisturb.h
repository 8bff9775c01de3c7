#pragma once

#include "devices/ExtRecord.h"
#include "support/TDateTime.h"

#include <array>

class TCallControlDev;
class TExtsView;
class TNetModule;

// Do-not-disturb of the guest rooms: the commands for the current row, for a
// given room, and the console's own time windows, which the exchange knows
// nothing of and the 30-second tick carries out.
class TNodisturb {
public:
  TNodisturb(TCallControlDev &table, TNetModule &net, TExtsView &exts);

  // Writes the room's three windows to Exts, then sends its mode.
  void Execute_Nodisturb_SingleTask_Pro(const TExt_Record &vExt);
  // Only the Exts write of the three windows.
  void StoreWindows(const TExt_Record &vExt);
  // The mode for the grid's current row; a single command ends a running
  // do-not-disturb batch.
  void Execute_Nodisturb_SingleTask(int mode);
  // The first room of a batch; each answer then steps the walk.
  void Execute_Nodisturb_MultiTask(int mode);
  // The tick's command for a given room.
  void Execute_Nodisturb_SingleTask2(int id, int mode);

  // The grid's actions: on is "calls from inside and outside barred".
  void Action_Nodisturb_On();
  void Action_Nodisturb_Off();
  void Action_Nodisturb_On_MultiTask();
  void Action_Nodisturb_Off_MultiTask();

  // The tick's part for one room: each checked window switches the room on
  // while the time of day is inside it and off while it is outside. It reads
  // the device's memory only, and sends only when the state should change.
  void RunNoDisturbWindows(int id);

  // Strictly after the start and strictly before the end, by time of day;
  // times within 1 ms count as equal. A window whose start is later than its
  // end (one that crosses midnight) is never inside.
  static bool InsideWindow(TDateTime now, TDateTime start, TDateTime end);

  // A room's three windows, in their order.
  struct Window {
    bool Checked;
    TDateTime Start, End;
  };
  static std::array<Window, 3> WindowsOf(const TExt_Record &l);

private:
  void Send(int id, int mode, bool multiTask);

  TCallControlDev &m_table;
  TNetModule &m_net;
  TExtsView &m_exts;
};
