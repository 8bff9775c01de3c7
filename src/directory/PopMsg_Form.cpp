#include "directory/PopMsg_Form.h"

#include "support/Clock.h"

using namespace Qt::StringLiterals;

TForm_PopMsg::TForm_PopMsg(QObject *parent) : TFormLogic("TForm_PopMsg", parent) {}

void TForm_PopMsg::ShowPopMsg(const QString &number) {
  Caption = u"新来电:"_s + number;
  ActivePage = TabPage::sTabSheet_Incoming;
  Label_Incoming = number;
  Label_Time = DateTimeToStr(Now());
  Show();
}
