#pragma once

#include "support/FormLogic.h"

class TBatchWalk;
class TCallControlDev;
class TExtsView;
class TNetModule;

// The voice-mail dialog ("留言设置"): whether messages wait for the room, and
// the key that has the exchange clear them.
class TForm_VoiceMail_Set : public TFormLogic {
  Q_OBJECT

public:
  TForm_VoiceMail_Set(TCallControlDev &table, TNetModule &net, TExtsView &exts, TBatchWalk &walk,
                      QObject *parent = nullptr);

  QString Caption;
  int Target = -1;
  QString TeLabel_State; // "有" or "无"
  bool TeButton_VoiceMail_Apply_Enabled = true;
  bool TeButton_VoiceMail_ApplyMulti_Enabled = true;
  bool MultiApply = false;

  // tefxButton_VoiceMail_Set: opens on the grid's current row.
  void tefxButton_VoiceMail_SetClick();
  void OpenFor(int id);
  // The grid shows the room cleared only when the exchange reports it.
  void TeButton_VoiceMail_ApplyClick();
  void TeButton_VoiceMail_ApplyMultiClick();
  void TeButton2Click(); // cancel
  void SetServiceAllowed(bool allowed);

private:
  TCallControlDev &m_table;
  TNetModule &m_net;
  TExtsView &m_exts;
  TBatchWalk &m_walk;
};
