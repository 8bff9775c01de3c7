#pragma once

#include "support/FormLogic.h"

#include <QString>

// The pop-up that tells of a new call when the operator chose it as the way of
// announcing calls. It stands above every window, a minimised console included,
// in the lower right corner of the screen above the task bar, and stays until
// the operator closes it. It never takes the focus from the program in use.
class TForm_PopMsg : public TFormLogic {
  Q_OBJECT

public:
  explicit TForm_PopMsg(QObject *parent = nullptr);

  enum class TabPage { sTabSheet_Incoming };

  QString Caption;
  TabPage ActivePage = TabPage::sTabSheet_Incoming;
  QString Label_Incoming; // the caller's number
  QString Label_Time;     // when the call came

  void ShowPopMsg(const QString &number);
};
