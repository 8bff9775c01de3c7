#include "guest/WakeUpAlarms.h"

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"
#include "guest/ExtsView.h"
#include "guest/MoringCall.h"
#include "guest/Nodisturb.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QTimer>

using namespace Qt::StringLiterals;

namespace {
constexpr double kMinute = 1.0 / (24 * 60);
// A retry the exchange never rang stops holding back the daily wake-up after this.
constexpr double kRetryHold = 15 * kMinute;

QString RoomText(const QString &roomNo, const QString &ext) {
  return roomNo.isEmpty() ? u"分机 %1"_s.arg(ext) : u"房间 %1 (分机 %2)"_s.arg(roomNo, ext);
}
} // namespace

TForm_WakeUpAlarms::TForm_WakeUpAlarms(TCallControlDev &table, TNetModule &net, QObject *parent)
    : TFormLogic("TForm_WakeUpAlarms", parent), m_table(table), m_net(net) {}

QString TForm_WakeUpAlarms::StatusText() const {
  return m_alarms.isEmpty() ? QString() : u"叫醒失败: %1"_s.arg(m_alarms.size());
}

void TForm_WakeUpAlarms::Reload() {
  RunGuarded([this] { m_alarms = WakeUpAlarmStore::Open(); });
  ItemIndex = m_alarms.isEmpty() ? -1 : qBound(0, ItemIndex, int(m_alarms.size()) - 1);
  emit alarmsChanged();
}

int TForm_WakeUpAlarms::IndexOfRoom(int id) const {
  for (int i = 0; i < m_alarms.size(); ++i) {
    if (m_alarms.at(i).PortID == id)
      return i;
  }
  return -1;
}

bool TForm_WakeUpAlarms::RetryPending(int id) const {
  const int i = IndexOfRoom(id);
  if (i < 0 || m_alarms.at(i).RetryTime.IsZero())
    return false;
  return Now().Value <= m_alarms.at(i).RetryTime.Value + kRetryHold;
}

int TForm_WakeUpAlarms::ResultSeen(const TExt_Record &room, TDateTime wakeTime, int state) {
  const int index = IndexOfRoom(room.ID);
  if (state != 2) {
    if (index < 0)
      return 1;
    const TWakeUpAlarm answered = m_alarms.at(index);
    WriteLog(u"Wake-up answered by %1 at attempt %2: its alarm is cleared"_s.arg(
                 RoomText(answered.RoomNo, answered.Ext))
                 .arg(answered.Attempts + 1));
    Acknowledge({answered.ID}, QString::fromUtf16(WakeUpAlarmStore::kByAnswer));
    return answered.Attempts + 1;
  }

  if (!SysConfig().WakeFollowUp)
    return index >= 0 ? m_alarms.at(index).Attempts + 1 : 1;
  TWakeUpAlarm alarm;
  if (index >= 0) {
    alarm = m_alarms.at(index);
  } else {
    alarm.PortID = room.ID;
    alarm.CreateTime = Now();
  }
  alarm.RoomNo = room.RoomNo;
  alarm.Ext = room.TelNos;
  alarm.MoringCallTime = wakeTime;
  alarm.Attempts += 1;
  alarm.RetryTime = TDateTime();
  const TSysConfig &c = SysConfig();
  const bool retry = c.WakeRetry != 0 && alarm.Attempts <= c.WakeRetryMax;
  if (retry)
    alarm.RetryTime = TDateTime(Now().Value + c.WakeRetryMinutes * kMinute);
  // The alarm counts even when the store refuses it: the operator still sees it
  // for this run, and the error says why it won't outlive a restart.
  RunGuarded([&] { WakeUpAlarmStore::Save(alarm); });
  if (index >= 0)
    m_alarms[index] = alarm;
  else
    m_alarms << alarm;
  if (ItemIndex < 0)
    ItemIndex = 0;

  const QString who = RoomText(alarm.RoomNo, alarm.Ext);
  QString text = u"%1 %2 的叫醒无人接听 (第 %3 次)"_s.arg(who, DateTimeToStr(wakeTime))
                     .arg(alarm.Attempts);
  if (retry)
    text += u"，%1 再次叫醒"_s.arg(alarm.RetryTime.Time().toString(u"hh:mm"_s));
  WriteLog(u"Wake-up not answered: "_s + text);
  TheShell().Balloon(u"叫醒失败"_s, text, 10, BalloonIcon::Warning);
  if (index < 0)
    TheShell().RingOnce(); // a new alarm; later attempts are counted quietly
  emit alarmRaised(room.ID);
  emit alarmsChanged();
  if (retry) {
    // Sent once the refresh that saw the failure is over, so the retry's own
    // refresh doesn't run inside it.
    const int id = room.ID;
    const TDateTime when = alarm.RetryTime;
    QTimer::singleShot(0, this, [this, id, when] { SendRetry(id, when); });
  }
  return alarm.Attempts;
}

void TForm_WakeUpAlarms::SendRetry(int id, TDateTime when) {
  TPhoneTis *p = m_table.Device(id);
  if (!p)
    return;
  if (SysParam().MyID == kNoSession) {
    WriteLog(u"Wake-up retry for %1 not sent: no session with the exchange"_s.arg(p->TelNos));
    return;
  }
  const int mode = qBound(1, p->LastExt.MoringCall_Mode, 3);
  // The dialog's own request: the same fields of the sender, the same command.
  m_net.DstID = id;
  m_net.CallTime = MoringCallTimeText(when);
  m_net.MoringMode = mode;
  m_net.Send(TNetModule::MoringCallSet);
  p->MoringCallTime = when;
  WriteLog(u"Wake-up retry: %1 -> %2 moringCall_Mode:%3"_s.arg(p->TelNos, DateTimeToStr(when))
               .arg(mode));
}

void TForm_WakeUpAlarms::Acknowledge(const QList<qint32> &ids, const QString &by) {
  bool stored = true;
  RunGuarded([&] {
    stored = false;
    WakeUpAlarmStore::Acknowledge(ids, Now(), by);
    stored = true;
  });
  if (!stored)
    return; // still open in the store: it stays open here too
  if (ids.isEmpty())
    m_alarms.clear();
  else
    m_alarms.removeIf([&ids](const TWakeUpAlarm &a) { return ids.contains(a.ID); });
  ItemIndex = m_alarms.isEmpty() ? -1 : qBound(0, ItemIndex, int(m_alarms.size()) - 1);
  emit alarmsChanged();
}

void TForm_WakeUpAlarms::AcknowledgeClick() {
  if (ItemIndex < 0 || ItemIndex >= m_alarms.size())
    return;
  Acknowledge({m_alarms.at(ItemIndex).ID}, SysParam().MyTelNo);
}

void TForm_WakeUpAlarms::AcknowledgeAllClick() {
  if (!m_alarms.isEmpty())
    Acknowledge({}, SysParam().MyTelNo);
}

QString WakeUpDndConflict(const TPhoneTis &room, TDateTime when) {
  const TExt_Record &l = room.LastExt;
  const QString who = RoomText(l.RoomNo, room.TelNos);
  for (const auto &w : TNodisturb::WindowsOf(l)) {
    // The same reading as the tick's: a window that never switches on is no bar.
    if (w.Checked && TNodisturb::InsideWindow(when, w.Start, w.End))
      return u"%1: 叫醒时间在免打扰时段 %2-%3 内"_s.arg(
          who, w.Start.Time().toString(u"hh:mm"_s), w.End.Time().toString(u"hh:mm"_s));
  }
  const QStringList modes = TExtsView::NodisturbItems();
  if (room.NoDisturbMode > 0 && room.NoDisturbMode < modes.size())
    return u"%1: 正处于%2"_s.arg(who, modes.at(room.NoDisturbMode));
  return QString();
}
