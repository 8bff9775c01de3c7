#include "guest/FrontDesk.h"

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"
#include "directory/SysDM_Unit.h"
#include "guest/BatchWalk.h"
#include "guest/ExtsView.h"
#include "guest/MoringCall.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

namespace {
constexpr int kMailboxUnreachable = 65535;
constexpr int kNoDisturbAnswer = 152;
} // namespace

TFrontDesk::TFrontDesk(TCallControlDev &table, TNetModule &net, TExtsView &exts, TBatchWalk &walk,
                       QObject *parent)
    : QObject(parent), m_table(table), m_net(net), m_exts(exts), m_walk(walk) {
  connect(&m_walk, &TBatchWalk::timedOut, this, [this] {
    if (m_running && !m_quiet)
      Stop(u"交换机没有应答"_s, Outcome::NoAnswer);
  });
}

QString TFrontDesk::ActionText(Action action) {
  switch (action) {
  case Action::CheckIn:
    return u"入住"_s;
  case Action::CheckOut:
    return u"退房"_s;
  case Action::SetClass:
    return u"服务级别设置"_s;
  case Action::ClearVoiceMail:
    return u"清除留言"_s;
  }
  return {};
}

int TFrontDesk::SettingsClass(Action action) const {
  if (action == Action::CheckIn)
    return SysConfig().OccupiedClass;
  if (action == Action::CheckOut)
    return SysConfig().VacantClass;
  return -1;
}

QString TFrontDesk::ClassItem(int srvClass) const {
  const QStringList items = SrvClassItems ? SrvClassItems() : QStringList();
  const QString prefix = u"%1:"_s.arg(srvClass + 1);
  for (const QString &item : items) {
    if (item.startsWith(prefix))
      return item;
  }
  return {};
}

QString TFrontDesk::Refusal(Action action) const {
  return RefusalFor(action, SettingsClass(action));
}

QString TFrontDesk::RefusalFor(Action action, int srvClass) const {
  const QString what = ActionText(action);
  if (m_running)
    return u"正在办理%1,请等它结束。"_s.arg(ActionText(m_action));
  if (SysParam().MyID == kNoSession)
    return u"没有连接交换机: 房间没有%1,什么都没有改变。"_s.arg(what);
  if (action == Action::ClearVoiceMail)
    return {};
  const QString which = action == Action::CheckIn    ? u"入住服务级别"_s
                        : action == Action::CheckOut ? u"空房服务级别"_s
                                                     : u"服务级别"_s;
  if (srvClass < 0)
    return u"还没有设置%1: 请在 系统设置 的\"前台\"页选择。"_s.arg(which);
  if (!SrvClassItems || SrvClassItems().isEmpty())
    return u"交换机的服务级别还没有读到,请稍后再%1。"_s.arg(what);
  if (ClassItem(srvClass).isEmpty())
    return u"%1 %2 不在交换机的服务级别中: 请在 系统设置 的\"前台\"页重新选择。"_s.arg(which)
        .arg(srvClass + 1);
  if (action == Action::SetClass)
    return {};
  if (!m_exts.ADOQuery_Exts.Active() || !m_exts.ADOQuery_Exts.HasField(u"GuestName"_s))
    return u"数据库不能记录客人: 房间没有%1,日志里有原因。"_s.arg(what);
  return {};
}

bool TFrontDesk::CheckOut(bool checkedRooms) {
  return Start(Action::CheckOut, checkedRooms);
}

bool TFrontDesk::AskAndCheckOut(bool checkedRooms) {
  // A check-out that can't run says why before it asks anything.
  const QString refusal = Refusal(Action::CheckOut);
  if (!refusal.isEmpty()) {
    TheShell().Message(MessageKind::Warning, refusal);
    return false;
  }
  QString rooms;
  if (checkedRooms) {
    const TExtGridModel &g = m_exts.AdvStringGrid_Exts;
    int count = 0;
    for (int row = 0; row < g.ShownCount(); ++row)
      count += g.Check(g.SlotAt(row)) == u"TRUE"_s ? 1 : 0;
    if (count == 0) {
      TheShell().Message(MessageKind::Warning, u"警告提示:请先选择!"_s);
      return false;
    }
    rooms = u"选中的 %1 个房间"_s.arg(count);
  } else {
    const int id = m_exts.Ext_CurrentID();
    if (id < 0) {
      TheShell().Message(MessageKind::Warning, u"警告提示:请先选择!"_s);
      return false;
    }
    rooms = u"房间 "_s + RoomText(id);
  }
  if (!TheShell().Question(u"%1退房?\n叫醒和每天叫醒取消,免打扰关闭并清除时段,留言清除,备注和客人"
                           u"姓名清空,服务级别改为 %2。"_s.arg(rooms, ClassItem(SysConfig().VacantClass))))
    return false;
  return CheckOut(checkedRooms);
}

bool TFrontDesk::CheckIn(const CheckInValues &values, bool checkedRooms) {
  m_values = values;
  m_values.GuestName = values.GuestName.simplified();
  if (m_values.GuestName.size() > kGuestNameMax) {
    TheShell().Message(MessageKind::Warning,
                       u"客人姓名太长: 最多 %1 个字,现在是 %2 个。"_s.arg(kGuestNameMax)
                           .arg(m_values.GuestName.size()));
    return false;
  }
  if (m_values.WakeUpMode < 1 || m_values.WakeUpMode > 3)
    m_values.WakeUpMode = 1;
  return Start(Action::CheckIn, checkedRooms);
}

bool TFrontDesk::Start(Action action, bool checkedRooms) {
  const QString refusal = Refusal(action);
  if (!refusal.isEmpty()) {
    WriteLog(u"%1 not started: %2"_s.arg(ActionText(action), refusal));
    TheShell().Message(MessageKind::Warning, refusal);
    return false;
  }
  const int first = checkedRooms ? m_walk.FirstSelected() : m_exts.Ext_CurrentID();
  if (first < 0) {
    if (!checkedRooms)
      TheShell().Message(MessageKind::Warning, u"警告提示:请先选择!"_s);
    return false;
  }
  Begin(action, SettingsClass(action), checkedRooms, false);
  StartRoom(first);
  m_walk.SendFirst(ActionText(action), first, [this](int) { SendStep(); });
  return true;
}

QString TFrontDesk::StartQuietly(Action action, int id, const CheckInValues &values,
                                 int srvClass) {
  if (srvClass < 0)
    srvClass = SettingsClass(action);
  if (QString refusal = RefusalFor(action, srvClass); !refusal.isEmpty())
    return refusal;
  if (!m_table.Device(id))
    return u"没有这个分机"_s;
  m_values = values;
  m_values.GuestName = values.GuestName.simplified();
  if (m_values.GuestName.size() > kGuestNameMax)
    return u"客人姓名太长: 最多 %1 个字"_s.arg(kGuestNameMax);
  Begin(action, srvClass, false, true);
  StartRoom(id);
  WriteLog(u"%1 of %2 started by the automation API"_s.arg(ActionText(action), RoomText(id)));
  SendStep();
  return {};
}

void TFrontDesk::Begin(Action action, int srvClass, bool checkedRooms, bool quiet) {
  m_action = action;
  m_checkedRooms = checkedRooms;
  m_quiet = quiet;
  m_class = srvClass;
  m_roomsDone.clear();
  m_running = true;
}

// A quiet sequence keeps out of the batch's timer, whose time-out speaks to
// the operator; it has its own of the same length.
QTimer &TFrontDesk::StepTimer() {
  if (!m_quiet)
    return m_walk.Timer_MultiProcess;
  if (!m_quietTimer) {
    m_quietTimer = new QTimer(this);
    m_quietTimer->setSingleShot(true);
    m_quietTimer->setInterval(m_walk.Timer_MultiProcess.interval());
    connect(m_quietTimer, &QTimer::timeout, this, [this] {
      if (m_running && m_quiet)
        Stop(u"交换机没有应答"_s, Outcome::NoAnswer);
    });
  }
  return *m_quietTimer;
}

void TFrontDesk::Say(MessageKind kind, const QString &text) const {
  if (!m_quiet)
    TheShell().Message(kind, text);
}

void TFrontDesk::StartRoom(int id) {
  m_room = id;
  m_stepsDone.clear();
  // The class goes first, as the step most often refused: a refusal then
  // leaves the room as it was.
  if (m_action == Action::CheckOut) {
    m_steps = {Step::ClassSet, Step::VoiceMailClear, Step::NoDisturbOff, Step::WakeCancel};
  } else if (m_action == Action::SetClass) {
    m_steps = {Step::ClassSet};
  } else if (m_action == Action::ClearVoiceMail) {
    m_steps = {Step::VoiceMailClear};
  } else {
    m_steps = {Step::ClassSet};
    if (m_values.WakeUp)
      m_steps.append(Step::WakeSet);
  }
}

void TFrontDesk::SendStep() {
  // Every request of a sequence is guarded, the room's first included.
  StepTimer().stop();
  StepTimer().start();
  const int id = m_room;
  switch (m_steps.first()) {
  case Step::ClassSet:
    m_net.SrvDstID = id;
    m_net.SrvClass = m_class;
    m_net.Send(TNetModule::SetSrvClass);
    break;
  case Step::VoiceMailClear:
    m_net.Send_VoiceMailClear(id);
    break;
  case Step::NoDisturbOff:
    m_net.NodisturbTarget = id;
    m_net.MultiTask = false;
    m_net.Send_NodisturbCtrl(id, NoDisturbCommandOf(0));
    break;
  case Step::WakeCancel:
    m_net.DstID = id;
    m_net.Send(TNetModule::MoringCallCancel);
    break;
  case Step::WakeSet:
    MoringCall_SetEveryDay(m_net, id, m_values.WakeUpMode, m_values.WakeUpTime);
    break;
  }
}

bool TFrontDesk::Answer(int type, const char *w) {
  if (!m_running || m_steps.isEmpty())
    return false;
  const Step step = m_steps.first();
  const int dst = GetU16(w, 16);
  const int sub = quint8(w[12]);
  switch (step) {
  case Step::ClassSet: {
    if (type != int(PacketType::SrvClassSet) || dst != m_room)
      return false;
    const QString reply = GetText(w, 18, 21);
    if (reply != u"000000"_s) {
      Stop(u"交换机拒绝了服务级别(%1)"_s.arg(reply));
      return true;
    }
    if (TPhoneTis *p = m_table.Device(m_room))
      p->SrvClass = m_class;
    break;
  }
  case Step::VoiceMailClear:
    if (type != int(PacketType::VoiceMailClear) || dst != m_room)
      return false;
    if (GetU16(w, 20) == kMailboxUnreachable) {
      Stop(u"错误提示:连接语音邮箱服务器失败!"_s);
      return true;
    }
    break;
  case Step::NoDisturbOff:
    // The exchange's answer to a do-not-disturb command isn't known to name
    // the room; the tick leaves this room alone meanwhile.
    if (type != int(PacketType::DeviceControl) || sub != kNoDisturbAnswer)
      return false;
    break;
  case Step::WakeCancel:
    if (type != int(PacketType::MoringCall) || sub != 3 || dst != m_room)
      return false;
    break;
  case Step::WakeSet:
    if (type != int(PacketType::MoringCall) || (sub != 1 && sub != 4) || dst != m_room)
      return false;
    break;
  }
  StepAnswered();
  return true;
}

void TFrontDesk::StepAnswered() {
  StepTimer().stop();
  m_stepsDone << StepText(m_steps.takeFirst());
  if (!m_steps.isEmpty()) {
    SendStep();
    return;
  }
  RoomDone();
}

void TFrontDesk::RoomDone() {
  try {
    CommitRoom();
  } catch (const std::exception &error) {
    Stop(u"数据库写入失败: "_s + QString::fromUtf8(error.what()), Outcome::NotStored);
    return;
  }
  m_roomsDone << RoomText(m_room);
  emit roomFinished(m_room, m_action, Outcome::Done, QString());
  if (!m_checkedRooms) {
    const QString summary = u"%1 done: %2, by %3"_s.arg(ActionText(m_action), m_roomsDone.first(),
                                                        SysParam().MyTelNo);
    m_running = false;
    WriteLog(summary);
    Say(MessageKind::Information, u"%1完成: %2"_s.arg(ActionText(m_action), m_roomsDone.first()));
    emit finished(summary);
    return;
  }
  bool sent = false;
  m_walk.Step([this, &sent](int id) {
    sent = true;
    StartRoom(id);
    SendStep();
  });
  if (!sent) {
    // The walk said its success; the log gets the rooms.
    const QString summary = u"%1 done for %2 rooms: %3, by %4"_s.arg(ActionText(m_action))
                                .arg(m_roomsDone.size())
                                .arg(m_roomsDone.join(u", "_s), SysParam().MyTelNo);
    m_running = false;
    WriteLog(summary);
    emit finished(summary);
  }
}

void TFrontDesk::CommitRoom() {
  TPhoneTis *p = m_table.Device(m_room);
  if (m_action == Action::SetClass || m_action == Action::ClearVoiceMail) {
    // The class was taken into the device with the exchange's answer; the
    // voice mail shows cleared when the exchange's next status says so.
    if (p && m_action == Action::SetClass) {
      p->LiveUpdate = false;
      m_exts.Ext_UpdateRow(m_room);
    }
    return;
  }
  const bool in = m_action == Action::CheckIn;
  m_exts.Exts_Write(m_room, [&](TADOQuery &q) {
    q.SetString(u"GuestName"_s, in ? m_values.GuestName : QString());
    q.SetBoolean(u"Occupied"_s, in);
    if (!in) {
      q.SetString(u"Memo"_s, QString());
      q.SetBoolean(u"NoDisturb_Time1_Checked"_s, false);
      q.SetBoolean(u"NoDisturb_Time2_Checked"_s, false);
      q.SetBoolean(u"NoDisturb_Time3_Checked"_s, false);
      q.SetBoolean(u"MoringCall_isEveryDay"_s, false);
    } else if (!m_values.Memo.isEmpty()) {
      q.SetString(u"Memo"_s, m_values.Memo);
    }
  });
  if (p) {
    // As the wake-up dialog does: the time shows at once, before the
    // exchange's next status says it.
    if (!in)
      p->MoringCallTime = TDateTime();
    else if (m_values.WakeUp)
      p->MoringCallTime = m_values.WakeUpTime;
    p->LiveUpdate = false;
  }
  m_exts.Ext_UpdateRow(m_room);
  TRoomHistory row;
  row.ActTime = Now();
  row.RoomNo = p ? p->LastExt.RoomNo : QString();
  row.Ext = p ? p->TelNos : QString::number(m_room);
  row.Action = ActionText(m_action);
  row.Operator = SysParam().MyTelNo;
  Sys_DM().AddRoomHistory(row);
}

void TFrontDesk::Stop(const QString &why, Outcome outcome) {
  StepTimer().stop();
  m_running = false;
  const QString what = ActionText(m_action);
  const QString room = RoomText(m_room);
  const QString partial = m_stepsDone.isEmpty() ? u"没有改动"_s : m_stepsDone.join(u"、"_s);
  const QString summary =
      u"%1 stopped at %2 (%3): done on it: %4; rooms done before: %5 (%6), by %7"_s.arg(what, room,
                                                                                      why, partial)
          .arg(m_roomsDone.size())
          .arg(m_roomsDone.join(u", "_s), SysParam().MyTelNo);
  WriteLog(summary);
  QString text = u"%1没有完成: 房间 %2 %3。\n这个房间已做: %4,仍按原状态显示。"_s.arg(what, room,
                                                                                     why, partial);
  if (!m_roomsDone.isEmpty())
    text += u"\n已完成%1的房间: %2"_s.arg(what, m_roomsDone.join(u", "_s));
  Say(MessageKind::Error, text);
  emit roomFinished(m_room, m_action, outcome, why);
  emit finished(summary);
}

QString TFrontDesk::StepText(Step step) const {
  switch (step) {
  case Step::ClassSet:
    return u"服务级别"_s;
  case Step::VoiceMailClear:
    return u"清除留言"_s;
  case Step::NoDisturbOff:
    return u"取消免打扰"_s;
  case Step::WakeCancel:
    return u"取消叫醒"_s;
  case Step::WakeSet:
    return u"叫醒设置"_s;
  }
  return {};
}

QString TFrontDesk::RoomText(int id) const {
  const TPhoneTis *p = m_table.Device(id);
  if (!p)
    return QString::number(id);
  return p->LastExt.RoomNo.isEmpty() ? p->TelNos
                                     : u"%1(%2)"_s.arg(p->LastExt.RoomNo, p->TelNos);
}
