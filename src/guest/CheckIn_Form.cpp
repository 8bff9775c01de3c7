#include "guest/CheckIn_Form.h"

#include "devices/CallControlDev.h"
#include "guest/FrontDesk.h"
#include "support/Clock.h"
#include "support/Settings.h"

using namespace Qt::StringLiterals;

TForm_CheckIn::TForm_CheckIn(TCallControlDev &table, TFrontDesk &desk, QObject *parent)
    : TFormLogic("TForm_CheckIn", parent), m_table(table), m_desk(desk) {}

void TForm_CheckIn::OpenFor(int id) {
  const TPhoneTis *p = m_table.Device(id);
  if (!p)
    return;
  Target = id;
  Caption = u"%1-入住"_s.arg(p->TelNos);
  Edit_GuestName.clear();
  Edit_Memo.clear();
  CheckBox_WakeUp = false;
  // Tomorrow at 7:30, as the wake-up dialog offers a room without one.
  DateTimePicker_WakeUp =
      TDateTime::FromQDateTime(QDateTime(Now().Date().addDays(1), QTime(7, 30)));
  ComboBox_WakeUpMode_ItemIndex = 0;
  const int srvClass = SysConfig().OccupiedClass;
  const QString item = m_desk.ClassItem(srvClass);
  Label_OccupiedClass = !item.isEmpty() ? item
                        : srvClass < 0  ? u"(未设置)"_s
                                        : u"%1:(交换机未提供)"_s.arg(srvClass + 1);
  Show();
}

void TForm_CheckIn::Apply(bool checkedRooms) {
  TFrontDesk::CheckInValues v;
  v.GuestName = Edit_GuestName;
  v.Memo = Edit_Memo.trimmed();
  v.WakeUp = CheckBox_WakeUp;
  v.WakeUpTime = DateTimePicker_WakeUp;
  v.WakeUpMode = ComboBox_WakeUpMode_ItemIndex + 1;
  // A refused start keeps the dialog open with what was typed.
  if (m_desk.CheckIn(v, checkedRooms))
    Close();
}

void TForm_CheckIn::TeButton_CheckIn_ApplyClick() {
  Apply(false);
}

void TForm_CheckIn::TeButton_CheckIn_ApplyMultiClick() {
  Apply(true);
}

void TForm_CheckIn::TeButton_CheckIn_CancelClick() {
  Close();
}

void TForm_CheckIn::SetServiceAllowed(bool allowed) {
  TeButton_CheckIn_Apply_Enabled = allowed;
}
