#include "guest/Nodisturb_Form.h"

#include "devices/CallControlDev.h"
#include "guest/BatchWalk.h"
#include "guest/ExtsView.h"
#include "guest/Nodisturb.h"
#include "support/Log.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

TForm_Nodisturb::TForm_Nodisturb(TCallControlDev &table, TExtsView &exts, TNodisturb &nodisturb,
                                 TBatchWalk &walk, QObject *parent)
    : TFormLogic("TForm_Nodisturb", parent), m_table(table), m_exts(exts), m_nodisturb(nodisturb),
      m_walk(walk) {
  Caption = u"免打扰设置"_s;
  TeComboBox_Nodisturb_Items = TExtsView::NodisturbItems();
  TeLabel_Hint = u"时间段内每30秒自动开启内外线免打扰，时间段外自动关闭；"
                 u"开始时间须早于结束时间，跨越午夜的时间段不会开启。"_s;
}

void TForm_Nodisturb::tefxButton_Nodisturb_CtrlClick() {
  const int id = m_exts.Ext_CurrentID();
  if (id >= 0)
    OpenFor(id);
}

void TForm_Nodisturb::OpenFor(int id) {
  const TPhoneTis *p = m_table.Device(id);
  if (!p) {
    WriteLog(u"Do-not-disturb dialog not opened: no device %1"_s.arg(id));
    return;
  }
  Target = id;
  Caption = u"%1-免打扰设置"_s.arg(p->TelNos);
  TeComboBox_Nodisturb_ItemIndex = p->NoDisturbMode;
  const TExt_Record &l = p->LastExt;
  TeCheckBox_Time1 = l.NoDisturb_Time1_Checked;
  TeCheckBox_Time2 = l.NoDisturb_Time2_Checked;
  TeCheckBox_Time3 = l.NoDisturb_Time3_Checked;
  TeDateTimePicker_Time1_Start = l.NoDisturb_Time1_Start;
  TeDateTimePicker_Time1_End = l.NoDisturb_Time1_End;
  TeDateTimePicker_Time2_Start = l.NoDisturb_Time2_Start;
  TeDateTimePicker_Time2_End = l.NoDisturb_Time2_End;
  TeDateTimePicker_Time3_Start = l.NoDisturb_Time3_Start;
  TeDateTimePicker_Time3_End = l.NoDisturb_Time3_End;
  Show();
}

bool TForm_Nodisturb::WriteInto(int id) {
  TPhoneTis *p = m_table.Device(id);
  if (!p) {
    WriteLog(u"Do-not-disturb not applied: no device %1"_s.arg(id));
    return false;
  }
  const int mode = qBound(0, TeComboBox_Nodisturb_ItemIndex, 3);
  p->NoDisturbMode = mode;
  TExt_Record &l = p->LastExt;
  l.ID = id;
  l.NoDisturbMode = mode;
  l.NoDisturb_Time1_Checked = TeCheckBox_Time1;
  l.NoDisturb_Time2_Checked = TeCheckBox_Time2;
  l.NoDisturb_Time3_Checked = TeCheckBox_Time3;
  l.NoDisturb_Time1_Start = TeDateTimePicker_Time1_Start;
  l.NoDisturb_Time1_End = TeDateTimePicker_Time1_End;
  l.NoDisturb_Time2_Start = TeDateTimePicker_Time2_Start;
  l.NoDisturb_Time2_End = TeDateTimePicker_Time2_End;
  l.NoDisturb_Time3_Start = TeDateTimePicker_Time3_Start;
  l.NoDisturb_Time3_End = TeDateTimePicker_Time3_End;
  return true;
}

void TForm_Nodisturb::TeButton_Nodisturb_ApplyClick() {
  if (!TeButton_Nodisturb_Apply_Enabled)
    return;
  MultiApply = false;
  if (!WriteInto(Target))
    return;
  const TExt_Record vExt = m_table.Device(Target)->LastExt;
  // A row the store won't take is reported and the dialog stays open.
  bool done = false;
  RunGuarded([&] {
    m_nodisturb.Execute_Nodisturb_SingleTask_Pro(vExt);
    done = true;
  });
  if (done)
    Close();
}

bool TForm_Nodisturb::ApplyTo(int id) {
  MultiApply = false;
  if (!WriteInto(id))
    return false;
  const TExt_Record vExt = m_table.Device(id)->LastExt;
  m_nodisturb.StoreWindows(vExt);
  m_nodisturb.Execute_Nodisturb_SingleTask2(id, vExt.NoDisturbMode);
  return true;
}

void TForm_Nodisturb::TeButton_Nodisturb_ApplyMultiClick() {
  if (!TeButton_Nodisturb_ApplyMulti_Enabled)
    return;
  MultiApply = false;
  const int id = m_walk.FirstSelected();
  if (id < 0)
    return;
  // The mode goes to every checked room; the windows stay in the first room's
  // memory only, and no room's Exts row changes.
  if (!WriteInto(id))
    return;
  m_walk.SendFirst(u"do-not-disturb"_s, id, [this](int) {
    m_nodisturb.Execute_Nodisturb_MultiTask(TeComboBox_Nodisturb_ItemIndex);
  });
  Close();
}

void TForm_Nodisturb::TeButton2Click() {
  Close();
}

void TForm_Nodisturb::SetServiceAllowed(bool allowed) {
  TeButton_Nodisturb_Apply_Enabled = allowed;
  TeButton_Nodisturb_ApplyMulti_Enabled = allowed;
}
