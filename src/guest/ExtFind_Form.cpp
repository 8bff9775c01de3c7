#include "guest/ExtFind_Form.h"

#include "guest/ExtsView.h"

TForm_ExtFind::TForm_ExtFind(TExtsView &exts, QObject *parent)
    : TFormLogic("TForm_ExtFind", parent), m_exts(exts) {}

void TForm_ExtFind::tefxButton7Click() {
  const QString text = TeSComboBox_Ext_Text.trimmed();
  if (!text.isEmpty())
    m_exts.Ext_LocatePanel(text);
}
