#pragma once

#include "support/FormLogic.h"

class TExtsView;

// The small find window: a number and its locate key, always on the board.
class TForm_ExtFind : public TFormLogic {
  Q_OBJECT

public:
  explicit TForm_ExtFind(TExtsView &exts, QObject *parent = nullptr);

  QString TeSComboBox_Ext_Text;
  void tefxButton7Click();

private:
  TExtsView &m_exts;
};
