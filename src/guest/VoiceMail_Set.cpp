#include "guest/VoiceMail_Set.h"

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"
#include "guest/BatchWalk.h"
#include "guest/ExtsView.h"
#include "support/Log.h"

using namespace Qt::StringLiterals;

TForm_VoiceMail_Set::TForm_VoiceMail_Set(TCallControlDev &table, TNetModule &net, TExtsView &exts,
                                         TBatchWalk &walk, QObject *parent)
    : TFormLogic("TForm_VoiceMail_Set", parent), m_table(table), m_net(net), m_exts(exts),
      m_walk(walk) {
  Caption = u"留言设置"_s;
}

void TForm_VoiceMail_Set::tefxButton_VoiceMail_SetClick() {
  const int id = m_exts.Ext_CurrentID();
  if (id >= 0)
    OpenFor(id);
}

void TForm_VoiceMail_Set::OpenFor(int id) {
  const TPhoneTis *p = m_table.Device(id);
  if (!p) {
    WriteLog(u"Voice-mail dialog not opened: no device %1"_s.arg(id));
    return;
  }
  Target = id;
  Caption = u"%1-留言操作"_s.arg(p->TelNos);
  TeLabel_State = p->VoiceMail >= 1 ? u"有"_s : u"无"_s;
  Show();
}

void TForm_VoiceMail_Set::TeButton_VoiceMail_ApplyClick() {
  if (!TeButton_VoiceMail_Apply_Enabled)
    return;
  MultiApply = false;
  m_net.Send_VoiceMailClear(Target);
  Close();
}

void TForm_VoiceMail_Set::TeButton_VoiceMail_ApplyMultiClick() {
  if (!TeButton_VoiceMail_ApplyMulti_Enabled)
    return;
  const int id = m_walk.FirstSelected();
  if (id < 0)
    return;
  // The exchange's answers to a clear never step the walk: the first room is
  // cleared and the time-out ends the batch.
  m_walk.StartVoiceMailClear(id, [this](int first) { m_net.Send_VoiceMailClear(first); });
  Close();
}

void TForm_VoiceMail_Set::TeButton2Click() {
  Close();
}

void TForm_VoiceMail_Set::SetServiceAllowed(bool allowed) {
  TeButton_VoiceMail_Apply_Enabled = allowed;
  TeButton_VoiceMail_ApplyMulti_Enabled = allowed;
}
