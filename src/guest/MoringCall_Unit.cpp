#include "guest/MoringCall_Unit.h"

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"
#include "guest/ExtsView.h"
#include "guest/MoringCall.h"
#include "guest/WakeUpAlarms.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Settings.h"
#include "support/LanguageTable.h"
#include "support/Log.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

namespace {
const QString kFlagCombo = u"MoCall_Flag_TeSComboBox"_s;
} // namespace

TMoringCall_Form::TMoringCall_Form(TCallControlDev &table, TNetModule &net, TExtsView &exts,
                                   QObject *parent)
    : TFormLogic("TMoringCall_Form", parent), m_table(table), m_net(net), m_exts(exts) {
  // The on/off items are the table's texts of this window, as ApplyLanguage
  // would set them, and follow every later language switch below.
  MoCall_Flag_TeSComboBox_Items = {QString(), QString()};
  for (const TLanguageRow &row : LanguageTable()) {
    if (QLatin1StringView(row.Form) == QLatin1StringView(FormName()) &&
        QLatin1StringView(row.Control) == kFlagCombo && row.Property == TextProperty::Item &&
        row.Index >= 0 && row.Index < 2)
      MoCall_Flag_TeSComboBox_Items[row.Index] = LanguagePack().Str(row.Key);
  }
  TeSComboBox_MoringCallMode_Items = {u"Default普通"_s, u"Chinese中文"_s, u"English英文"_s};
  MoCallDate_TeDateTimePicker = Now().DatePart() + 1.0;
  TeDateTimePicker_MoringCall_EveryDayTime = TDateTime::FromTime(QTime(7, 0));
  // The on/off items follow the language like every other text of the window.
  connect(this, &TFormLogic::controlTextChanged, this,
          [this](const QString &control, TextProperty property, int index, const QString &text) {
            if (control == kFlagCombo && property == TextProperty::Item && index >= 0 &&
                index < MoCall_Flag_TeSComboBox_Items.size())
              MoCall_Flag_TeSComboBox_Items[index] = text;
          });
}

QString TMoringCall_Form::MoCall_Flag_TeSComboBox_Text() const {
  const int i = MoCall_Flag_TeSComboBox_ItemIndex;
  return i >= 0 && i < MoCall_Flag_TeSComboBox_Items.size() ? MoCall_Flag_TeSComboBox_Items.at(i)
                                                            : QString();
}

void TMoringCall_Form::tefxButton_MoringCallClick() {
  const int id = m_exts.Ext_CurrentID();
  if (id >= 0)
    OpenFor(id);
}

void TMoringCall_Form::OpenFor(int id) {
  const TPhoneTis *p = m_table.Device(id);
  if (!p) {
    WriteLog(u"Wake-up dialog not opened: no device %1"_s.arg(id));
    return;
  }
  TelNos_StaticText = p->TelNos;
  Caption = LangFormat(331, {p->TelNos});
  m_net.DstID = id;
  TeCheckBox_MoringCall_isEveryDay = p->LastExt.MoringCall_isEveryDay;
  TeDateTimePicker_MoringCall_EveryDayTime = p->LastExt.MoringCall_EveryDay_Time;
  // The stored mode counts from 1 and the items from 0, so until the answer
  // comes the list stands one item further down; a mode past the list selects
  // nothing, as a list does.
  const int item = p->LastExt.MoringCall_Mode;
  TeSComboBox_MoringCallMode_ItemIndex =
      item >= 0 && item < TeSComboBox_MoringCallMode_Items.size() ? item : -1;
  FormShow();
  m_net.Send(TNetModule::MoringCallQuery);
  Show();
}

void TMoringCall_Form::FormShow() {
  MultiApply = false;
}

void TMoringCall_Form::MoringCallAnswered(const QString &callTime, int mode) {
  if (callTime.trimmed().isEmpty()) {
    MoCall_Flag_TeSComboBox_ItemIndex = 0;
    MoCallDate_TeDateTimePicker = Now().DatePart() + 1.0;
    MoCall_Hour_TeSpinEdit = 7;
    MoCall_Minute_TeSpinEdit = 30;
    TeSComboBox_MoringCallMode_ItemIndex = 0;
    return;
  }
  TDateTime when;
  try {
    when = MoringCallText2DateTime(callTime);
  } catch (const EConvertError &) {
    WriteLog(u"Wake-up answer dropped: time text not understood [%1]"_s.arg(callTime));
    return;
  }
  MoCallDate_TeDateTimePicker = when.DatePart();
  MoCall_Hour_TeSpinEdit = callTime.trimmed().mid(8, 2).toInt();
  MoCall_Minute_TeSpinEdit = callTime.trimmed().mid(10, 2).toInt();
  MoCall_Flag_TeSComboBox_ItemIndex = 1;
  TeSComboBox_MoringCallMode_ItemIndex = (mode >= 1 && mode <= 3 ? mode : 1) - 1;
}

void TMoringCall_Form::TeButton1Click() {
  if (!TeButton1_Enabled)
    return;
  RunGuarded([this] { Apply(); });
}

void TMoringCall_Form::Apply() {
  const int id = m_net.DstID;
  if (!m_table.Device(id)) {
    WriteLog(u"Wake-up not applied: no device %1"_s.arg(id));
    return;
  }
  const bool off = MoCall_Flag_TeSComboBox_Text() == LangText(674);
  if (!off && !m_conflictsConfirmed && !ConfirmDndConflicts({id}, WakeTimeOfControls()))
    return;
  // The question let events run, and the tick shares the sender's fields.
  TWakeUpChange change;
  change.ID = id;
  change.On = !off;
  change.When = WakeTimeOfControls();
  change.Mode = TeSComboBox_MoringCallMode_ItemIndex + 1;
  change.Daily = TeCheckBox_MoringCall_isEveryDay;
  change.DailyTime = TeDateTimePicker_MoringCall_EveryDayTime;
  if (ApplyWakeUp(change))
    Close();
}

bool TMoringCall_Form::ApplyWakeUp(const TWakeUpChange &change) {
  const int id = change.ID;
  TPhoneTis *p = m_table.Device(id);
  if (!p) {
    WriteLog(u"Wake-up not applied: no device %1"_s.arg(id));
    return false;
  }
  const int mode = change.Mode;
  m_net.DstID = id;
  if (!change.On) {
    m_net.Send(TNetModule::MoringCallCancel);
    p->MoringCallTime = TDateTime();
  } else {
    m_net.CallTime = MoringCallTimeText(change.When);
    m_net.MoringMode = mode;
    m_net.Send(TNetModule::MoringCallSet);
    p->MoringCallTime = change.When;
  }
  // The daily wake-up is kept also when the wake-up was switched off: only the
  // check box ends it.
  p->LastExt.MoringCall_isEveryDay = change.Daily;
  p->LastExt.MoringCall_EveryDay_Time = change.DailyTime;
  p->LastExt.MoringCall_Mode = mode;
  m_exts.Exts_Write(id, [&change, mode](TADOQuery &q) {
    q.SetBoolean(u"MoringCall_isEveryDay"_s, change.Daily);
    q.SetDateTime(u"MoringCall_EveryDay_Time"_s, change.DailyTime);
    q.SetInteger(u"MoringCall_Mode"_s, mode);
  });
  // The operator's own change is no wake-up result.
  p->LiveUpdate = false;
  m_exts.Ext_UpdateRow(id);
  return true;
}

void TMoringCall_Form::TeButton_MoringCallSet_MultiClick() {
  if (!TeButton_MoringCallSet_Multi_Enabled)
    return;
  MultiApply = true;
  const int id = m_exts.Ext_NextSelected(1);
  if (id < 0) {
    TheShell().Message(MessageKind::Warning, u"警告提示:请先选择!"_s);
    return;
  }
  // One question for the whole batch, naming every room in the way.
  if (MoCall_Flag_TeSComboBox_Text() != LangText(674) &&
      !ConfirmDndConflicts(m_exts.Ext_SelectedIDs(), WakeTimeOfControls())) {
    MultiApply = false;
    return;
  }
  if (SysParam().MyID == kNoSession)
    WriteLog(u"Batch wake-up not started: no session with the exchange (first ID %1)"_s.arg(id));
  m_net.DstID = id;
  // The first checked room goes out as a single apply would send it; the walk
  // over the rest steps on the exchange's acknowledgements and joins here with
  // the batch tasks.
  m_conflictsConfirmed = true;
  TeButton1Click();
  m_conflictsConfirmed = false;
  emit batchStarted();
}

TDateTime TMoringCall_Form::WakeTimeOfControls() const {
  const QDate date = MoCallDate_TeDateTimePicker.Date();
  const QTime time(qBound(0, MoCall_Hour_TeSpinEdit, 23), qBound(0, MoCall_Minute_TeSpinEdit, 59));
  return TDateTime::FromQDateTime(QDateTime(date, time));
}

bool TMoringCall_Form::ConfirmDndConflicts(const QList<int> &ids, TDateTime when) {
  if (!SysConfig().WakeFollowUp)
    return true;
  QStringList reasons;
  for (const int id : ids) {
    if (const TPhoneTis *p = m_table.Device(id)) {
      const QString reason = WakeUpDndConflict(*p, when);
      if (!reason.isEmpty())
        reasons << reason;
    }
  }
  if (reasons.isEmpty())
    return true;
  const bool go = TheShell().Question(u"叫醒 %1 与免打扰冲突:\n%2\n\n仍然设置叫醒吗?"_s.arg(
      DateTimeToStr(when), reasons.join(u'\n')));
  WriteLog(u"Wake-up %1 despite do-not-disturb: %2"_s.arg(go ? u"set"_s : u"not set"_s,
                                                          reasons.join(u"; "_s)));
  return go;
}

void TMoringCall_Form::TeButton2Click() {
  Close();
}

void TMoringCall_Form::SetServiceAllowed(bool allowed) {
  TeButton1_Enabled = allowed;
  TeButton_MoringCallSet_Multi_Enabled = allowed;
}
