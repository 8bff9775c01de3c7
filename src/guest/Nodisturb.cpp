#include "guest/Nodisturb.h"

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"
#include "guest/ExtsView.h"
#include "support/Clock.h"
#include "support/Log.h"

using namespace Qt::StringLiterals;

TNodisturb::TNodisturb(TCallControlDev &table, TNetModule &net, TExtsView &exts)
    : m_table(table), m_net(net), m_exts(exts) {}

bool TNodisturb::InsideWindow(TDateTime now, TDateTime start, TDateTime end) {
  const TDateTime t = now.TimePart();
  const TDateTime s = start.TimePart();
  const TDateTime e = end.TimePart();
  return s < t && !t.SameAs(s) && t < e && !t.SameAs(e);
}

std::array<TNodisturb::Window, 3> TNodisturb::WindowsOf(const TExt_Record &l) {
  return {{{l.NoDisturb_Time1_Checked, l.NoDisturb_Time1_Start, l.NoDisturb_Time1_End},
           {l.NoDisturb_Time2_Checked, l.NoDisturb_Time2_Start, l.NoDisturb_Time2_End},
           {l.NoDisturb_Time3_Checked, l.NoDisturb_Time3_Start, l.NoDisturb_Time3_End}}};
}

void TNodisturb::Send(int id, int mode, bool multiTask) {
  m_net.NodisturbTarget = id;
  m_net.MultiTask = multiTask;
  m_net.Send_NodisturbCtrl(id, NoDisturbCommandOf(mode));
}

void TNodisturb::Execute_Nodisturb_SingleTask_Pro(const TExt_Record &vExt) {
  StoreWindows(vExt);
  Execute_Nodisturb_SingleTask(vExt.NoDisturbMode);
}

void TNodisturb::StoreWindows(const TExt_Record &vExt) {
  // Checks, starts, ends: the order the room's row has always been written in.
  m_exts.Exts_Write(vExt.ID, [&vExt](TADOQuery &q) {
    q.SetBoolean(u"NoDisturb_Time1_Checked"_s, vExt.NoDisturb_Time1_Checked);
    q.SetBoolean(u"NoDisturb_Time2_Checked"_s, vExt.NoDisturb_Time2_Checked);
    q.SetBoolean(u"NoDisturb_Time3_Checked"_s, vExt.NoDisturb_Time3_Checked);
    q.SetDateTime(u"NoDisturb_Time1_Start"_s, vExt.NoDisturb_Time1_Start);
    q.SetDateTime(u"NoDisturb_Time2_Start"_s, vExt.NoDisturb_Time2_Start);
    q.SetDateTime(u"NoDisturb_Time3_Start"_s, vExt.NoDisturb_Time3_Start);
    q.SetDateTime(u"NoDisturb_Time1_End"_s, vExt.NoDisturb_Time1_End);
    q.SetDateTime(u"NoDisturb_Time2_End"_s, vExt.NoDisturb_Time2_End);
    q.SetDateTime(u"NoDisturb_Time3_End"_s, vExt.NoDisturb_Time3_End);
  });
}

void TNodisturb::Execute_Nodisturb_SingleTask(int mode) {
  const int id = m_exts.Ext_CurrentID();
  if (id >= 0)
    Send(id, mode, false);
}

void TNodisturb::Execute_Nodisturb_MultiTask(int mode) {
  const int id = m_exts.Ext_CurrentID();
  if (id >= 0)
    Send(id, mode, true);
}

void TNodisturb::Execute_Nodisturb_SingleTask2(int id, int mode) {
  Send(id, mode, false);
}

void TNodisturb::Action_Nodisturb_On() {
  Execute_Nodisturb_SingleTask(1);
}
void TNodisturb::Action_Nodisturb_Off() {
  Execute_Nodisturb_SingleTask(0);
}
void TNodisturb::Action_Nodisturb_On_MultiTask() {
  Execute_Nodisturb_MultiTask(1);
}
void TNodisturb::Action_Nodisturb_Off_MultiTask() {
  Execute_Nodisturb_MultiTask(0);
}

void TNodisturb::RunNoDisturbWindows(int id) {
  const TPhoneTis *d = m_table.Device(id);
  if (!d)
    return;
  const auto windows = WindowsOf(d->LastExt);
  const TDateTime now = Now();
  // The mode changes only when the exchange reports it, so all three windows
  // test the same value within one tick.
  for (const auto &w : windows) {
    if (!w.Checked)
      continue;
    if (InsideWindow(now, w.Start, w.End)) {
      if (d->NoDisturbMode == 0)
        Execute_Nodisturb_SingleTask2(id, 1);
    } else if (d->NoDisturbMode != 0) {
      Execute_Nodisturb_SingleTask2(id, 0);
    }
  }
}
