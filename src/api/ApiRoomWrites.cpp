// The room writes of the automation API. Each goes through the logic the
// desk's own dialog uses. The order of the checks is the contract: the room
// (404), the body (400), then whether the exchange can take it now (503, 403,
// 409); only then is anything sent or stored.
#include "api/ApiServer.h"

#include "api/ApiBody.h"
#include "api/ApiEvents.h"
#include "api/ApiRooms.h"
#include "console/Main_Form.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "directory/StoreError.h"
#include "guest/BatchWalk.h"
#include "guest/ExtsView.h"
#include "guest/MemoSet.h"
#include "guest/MoringCall_Unit.h"
#include "guest/Nodisturb_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Settings.h"

#include <QJsonObject>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace {
QJsonObject Error(const QString &message) {
  return {{u"error"_s, message}};
}

// Longer memos are refused rather than cut; the grid shows a line of it.
constexpr int kMemoMax = 2000;
} // namespace

TApiServer::Reply TApiServer::RoomWrite(int id, const QString &what,
                                        QHttpServerRequest::Method method,
                                        const QByteArray &body) {
  using Method = QHttpServerRequest::Method;
  const Reply wrongMethod{405, Error(u"method not allowed here"_s)};
  if (what == u"wakeup"_s) {
    if (method != Method::Put && method != Method::Delete)
      return wrongMethod;
    return WakeUp(id, body, method == Method::Put);
  }
  if (what == u"dnd"_s)
    return method == Method::Put ? Dnd(id, body) : wrongMethod;
  if (what == u"memo"_s)
    return method == Method::Put ? Memo(id, body) : wrongMethod;
  if (what == u"class"_s)
    return method == Method::Put ? Sequence(id, TFrontDesk::Action::SetClass, body) : wrongMethod;
  if (what == u"voicemail"_s)
    return method == Method::Delete ? Sequence(id, TFrontDesk::Action::ClearVoiceMail, body)
                                    : wrongMethod;
  if (what == u"checkin"_s)
    return method == Method::Post ? Sequence(id, TFrontDesk::Action::CheckIn, body) : wrongMethod;
  if (what == u"checkout"_s)
    return method == Method::Post ? Sequence(id, TFrontDesk::Action::CheckOut, body) : wrongMethod;
  return {404, Error(u"no such resource"_s)};
}

bool TApiServer::BatchRunning() const {
  // The first room of a batch has no time-out of its own: a walk whose
  // answer never came counts as over after one step's time-out, so the API
  // isn't shut out for good.
  const QTimer &stepTimeout = m_main.BatchWalk().Timer_MultiProcess;
  return stepTimeout.isActive() ||
         (m_walkRunning && m_walkStep.isValid() && m_walkStep.elapsed() < stepTimeout.interval());
}

TApiServer::Reply TApiServer::Ready() const {
  // Nothing goes and nothing is stored unless the exchange can take it now.
  if (SysParam().Connected == 0 || SysParam().MyID == kNoSession)
    return {503, Error(u"the exchange link is down; nothing was sent"_s)};
  if (!m_main.ServiceAllowed)
    return {403, Error(u"the exchange bars guest-room actions at this console"_s)};
  if (BatchRunning() || m_main.FrontDesk().Running())
    return {409, Error(u"a batch or a check-in/out is running; try again when it is over"_s)};
  return {0, {}};
}

TApiServer::Reply TApiServer::WakeUp(int id, const QByteArray &body, bool set) {
  TPhoneTis &p = *m_main.CallControlDev().Device(id);
  TMoringCall_Form::TWakeUpChange change;
  change.ID = id;
  change.Mode = qBound(1, p.LastExt.MoringCall_Mode, 3);
  change.DailyTime = p.LastExt.MoringCall_EveryDay_Time;
  if (set) {
    TWakeUpBody wake;
    const QString why = ParseWakeUpBody(body, Now(), &wake);
    if (!why.isEmpty())
      return {400, Error(why)};
    change.On = true;
    change.When = wake.When;
    change.Mode = wake.Mode;
    change.Daily = wake.Daily;
    if (wake.Daily)
      change.DailyTime = wake.When.TimePart();
  }
  if (const Reply ready = Ready(); ready.Status != 0)
    return ready;
  // As the dialog opened afresh: an earlier batch's mark must not make the
  // exchange's answer walk the checked rows again.
  m_main.MoringCall_Form().MultiApply = false;
  WriteLog(u"API: wake-up of %1 %2"_s.arg(p.TelNos, set ? DateTimeToStr(change.When) : u"off"_s));
  try {
    m_main.MoringCall_Form().ApplyWakeUp(change);
  } catch (const EDatabaseError &e) {
    WriteLog(u"API: wake-up of %1 sent but not stored: %2"_s.arg(p.TelNos, e.Message()));
    return {500, Error(u"sent to the exchange, but the room's settings were not stored"_s)};
  }
  if (!set)
    return {204, {}};
  return RoomJsonOf(id);
}

TApiServer::Reply TApiServer::Dnd(int id, const QByteArray &body) {
  TDndBody dnd;
  if (const QString why = ParseDndBody(body, &dnd); !why.isEmpty())
    return {400, Error(why)};
  if (const Reply ready = Ready(); ready.Status != 0)
    return ready;
  // The dialog's fields as the room has them, then what the body changes.
  TForm_Nodisturb &f = m_main.Form_Nodisturb();
  const TExt_Record &l = m_main.CallControlDev().Device(id)->LastExt;
  f.TeComboBox_Nodisturb_ItemIndex = dnd.Mode;
  bool *checks[3] = {&f.TeCheckBox_Time1, &f.TeCheckBox_Time2, &f.TeCheckBox_Time3};
  TDateTime *starts[3] = {&f.TeDateTimePicker_Time1_Start, &f.TeDateTimePicker_Time2_Start,
                          &f.TeDateTimePicker_Time3_Start};
  TDateTime *ends[3] = {&f.TeDateTimePicker_Time1_End, &f.TeDateTimePicker_Time2_End,
                        &f.TeDateTimePicker_Time3_End};
  const bool roomChecks[3] = {l.NoDisturb_Time1_Checked, l.NoDisturb_Time2_Checked,
                              l.NoDisturb_Time3_Checked};
  const TDateTime roomStarts[3] = {l.NoDisturb_Time1_Start, l.NoDisturb_Time2_Start,
                                   l.NoDisturb_Time3_Start};
  const TDateTime roomEnds[3] = {l.NoDisturb_Time1_End, l.NoDisturb_Time2_End,
                                 l.NoDisturb_Time3_End};
  for (int i = 0; i < 3; ++i) {
    const bool given = dnd.HasWindows;
    *checks[i] = given ? dnd.Windows[i].On : roomChecks[i];
    *starts[i] = given ? dnd.Windows[i].Start : roomStarts[i];
    *ends[i] = given ? dnd.Windows[i].End : roomEnds[i];
  }
  WriteLog(u"API: do-not-disturb of %1 to mode %2"_s.arg(m_main.CallControlDev().Device(id)->TelNos)
               .arg(dnd.Mode));
  try {
    f.ApplyTo(id);
  } catch (const EDatabaseError &e) {
    WriteLog(u"API: do-not-disturb of %1 not stored: %2"_s.arg(id).arg(e.Message()));
    return {500, Error(u"the room's windows were not stored; nothing was sent"_s)};
  }
  return RoomJsonOf(id);
}

TApiServer::Reply TApiServer::Memo(int id, const QByteArray &body) {
  TApiBody b(body, {u"memo"_s});
  const QString memo = b.Text(u"memo"_s, kMemoMax, true);
  if (!b.Ok())
    return {400, Error(b.Error())};
  // The memo is the desk's own note: the exchange never hears of it, so only
  // the store has to be there.
  try {
    m_main.Form_MemoSet().WriteMemo(id, TForm_MemoSet::MemoText(memo));
  } catch (const EDatabaseError &e) {
    WriteLog(u"API: memo of %1 not stored: %2"_s.arg(id).arg(e.Message()));
    return {500, Error(u"the memo was not stored"_s)};
  }
  return RoomJsonOf(id);
}

TApiServer::Reply TApiServer::Sequence(int id, TFrontDesk::Action action, const QByteArray &body) {
  using Action = TFrontDesk::Action;
  TFrontDesk::CheckInValues values;
  int srvClass = -1;
  const int classes = m_main.DeviceEvents().SrvClassNames.rowCount();
  const int lastClass = qMax(0, classes - 1);
  if (action == Action::SetClass || action == Action::CheckIn) {
    TApiBody b(body, action == Action::CheckIn ? QStringList{u"guest"_s, u"class"_s}
                                               : QStringList{u"class"_s});
    values.GuestName = b.Text(u"guest"_s, TFrontDesk::kGuestNameMax, action == Action::CheckIn)
                           .simplified();
    srvClass = b.Integer(u"class"_s, 0, lastClass, -1, action == Action::SetClass);
    if (!b.Ok())
      return {400, Error(classes == 0 && b.Has(u"class"_s)
                             ? u"the exchange has not sent its service classes yet"_s
                             : b.Error())};
  } else if (!body.trimmed().isEmpty() && body.trimmed() != "{}") {
    return {400, Error(u"this request takes no body"_s)};
  }
  if (const Reply ready = Ready(); ready.Status != 0)
    return ready;
  const QString refusal = m_main.FrontDesk().StartQuietly(action, id, values, srvClass);
  if (!refusal.isEmpty()) {
    WriteLog(u"API: %1 of %2 refused: %3"_s.arg(TFrontDesk::ActionText(action)).arg(id).arg(refusal));
    return {409, Error(refusal)};
  }
  m_waiting.Id = id;
  return {0, {}, true};
}

void TApiServer::SequenceEnded(int id, TFrontDesk::Action action, TFrontDesk::Outcome outcome,
                               const QString &why) {
  using Outcome = TFrontDesk::Outcome;
  const TPhoneTis *p = m_main.CallControlDev().Device(id);
  if (action == TFrontDesk::Action::CheckIn || action == TFrontDesk::Action::CheckOut) {
    QJsonObject event{{u"type"_s, action == TFrontDesk::Action::CheckIn ? u"room.checkin"_s
                                                                       : u"room.checkout"_s},
                      {u"id"_s, id},
                      {u"ext"_s, p ? p->TelNos : QString()},
                      {u"room"_s, p ? p->LastExt.RoomNo : QString()},
                      {u"done"_s, outcome == Outcome::Done}};
    if (outcome != Outcome::Done)
      event.insert(u"error"_s, why);
    else if (action == TFrontDesk::Action::CheckIn && p)
      event.insert(u"guest"_s, p->LastExt.GuestName);
    Publish(event);
  }
  if (m_waiting.Id != id)
    return;
  const QPointer<QTcpSocket> socket = m_waiting.Socket;
  const bool close = m_waiting.Close;
  m_waiting = {};
  if (!socket)
    return;
  Reply reply;
  switch (outcome) {
  case Outcome::Done:
    reply = action == TFrontDesk::Action::ClearVoiceMail ? Reply{204, {}} : RoomJsonOf(id);
    break;
  case Outcome::Refused:
    reply = {502, Error(u"the exchange refused: "_s + why)};
    break;
  case Outcome::NoAnswer:
    reply = {504, Error(u"the exchange did not answer: "_s + why)};
    break;
  case Outcome::NotStored:
    reply = {500, Error(u"done at the exchange, but not stored: "_s + why)};
    break;
  }
  Write(socket, reply, close);
}
