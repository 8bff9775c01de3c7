// The guest-room half of the main window: the extension list and the dialogs
// over its rooms, fed by the device monitor's events and its 30-second tick,
// and the batch walk that steps on the exchange's answers.
#include "console/Main_Form.h"

#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "guest/BatchKinds.h"
#include "guest/BatchWalk.h"
#include "guest/CheckIn_Form.h"
#include "guest/ExtFind_Form.h"
#include "guest/ExtsView.h"
#include "guest/FrontDesk.h"
#include "guest/Hint_Form.h"
#include "guest/MemoSet.h"
#include "guest/MoringCall_Unit.h"
#include "guest/Nodisturb.h"
#include "guest/Nodisturb_Form.h"
#include "guest/RoomHistory_Unit.h"
#include "guest/VoiceMail_Set.h"
#include "guest/WakeUpAlarms.h"
#include "support/Log.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

void TMain_Form::WireGuest() {
  m_extsView = std::make_unique<TExtsView>(*m_devices, *m_netModule);
  m_moringCall = std::make_unique<TMoringCall_Form>(*m_devices, *m_netModule, *m_extsView);
  m_extFind = std::make_unique<TForm_ExtFind>(*m_extsView);
  m_batchWalk = std::make_unique<TBatchWalk>(*m_extsView);
  m_nodisturb = std::make_unique<TNodisturb>(*m_devices, *m_netModule, *m_extsView);
  m_hintForm = std::make_unique<THint_Form>(*m_devices, *m_netModule, *m_extsView, *m_batchWalk);
  m_nodisturbForm =
      std::make_unique<TForm_Nodisturb>(*m_devices, *m_extsView, *m_nodisturb, *m_batchWalk);
  m_voiceMailForm =
      std::make_unique<TForm_VoiceMail_Set>(*m_devices, *m_netModule, *m_extsView, *m_batchWalk);
  m_memoSetForm = std::make_unique<TForm_MemoSet>(*m_devices, *m_extsView);
  m_frontDesk =
      std::make_unique<TFrontDesk>(*m_devices, *m_netModule, *m_extsView, *m_batchWalk);
  m_checkInForm = std::make_unique<TForm_CheckIn>(*m_devices, *m_frontDesk);
  m_roomHistory = std::make_unique<TForm_RoomHistory>();
  m_wakeUpAlarms = std::make_unique<TForm_WakeUpAlarms>(*m_devices, *m_netModule);
  TExtsView &exts = *m_extsView;
  TDeviceEvents &events = *m_deviceEvents;

  m_frontDesk->SrvClassItems = [&events] { return events.SrvClassNames.stringList(); };
  events.FrontDeskAnswer = [this](int type, const char *work) {
    return m_frontDesk->Answer(type, work);
  };
  exts.RoomInSequence = [this](int id) { return m_frontDesk->RoomInSequence(id); };
  connect(this, &TMain_Form::serviceAllowedChanged, m_checkInForm.get(),
          &TForm_CheckIn::SetServiceAllowed);

  // Front desk: every logged wake-up result goes past the alarms, which count
  // its attempt; the list's start-up search means the store is open, so the
  // alarms a restart kept are read then.
  TForm_WakeUpAlarms &alarms = *m_wakeUpAlarms;
  exts.MoringResultSeen = [&alarms](const TExt_Record &room, TDateTime when, int state) {
    return alarms.ResultSeen(room, when, state);
  };
  exts.WakeRetryPending = [&alarms](int id) { return alarms.RetryPending(id); };
  connect(&exts, &TExtsView::recordSearchRequested, &alarms, &TForm_WakeUpAlarms::Reload);

  exts.LocatePanel = [this](const QString &number) { return FindExtension(number); };
  exts.SrvClassItems = [&events] { return events.SrvClassNames.stringList(); };
  connect(&events, &TDeviceEvents::srvClassNamesLoaded, &exts, &TExtsView::Ext_RefreshSrvClassColumn);
  exts.RunNoDisturbWindows = [this](int id) { m_nodisturb->RunNoDisturbWindows(id); };
  WireBatchWalk(*m_batchWalk, events, *m_netModule, *m_hintForm, *m_moringCall);
  // A row that can't be read from the store ends that refresh only.
  connect(&events, &TDeviceEvents::Ext_AddRow, &exts,
          [&exts](int id) { RunGuarded([&] { exts.Ext_AddRow(id); }); });
  connect(&events, &TDeviceEvents::Ext_UpdateRow, &exts,
          [&exts](int id) { RunGuarded([&] { exts.Ext_UpdateRow(id); }); });
  connect(&events.Timer_ExcuteAction, &QTimer::timeout, &exts,
          [&exts] { RunGuarded([&] { exts.Timer_ExcuteActionTimer(); }); });
  connect(&events, &TDeviceEvents::moringCallAnswered, m_moringCall.get(),
          &TMoringCall_Form::MoringCallAnswered);
  connect(&exts, &TExtsView::moringCallRequested, this, &TMain_Form::OpenMoringCall);
  connect(&exts, &TExtsView::srvClassRequested, this, [this](int id) { OpenSrvClass(id, false); });
  connect(&exts, &TExtsView::nodisturbRequested, this, &TMain_Form::OpenNodisturb);
  connect(&exts, &TExtsView::voiceMailRequested, this, &TMain_Form::OpenVoiceMail);
  connect(&exts, &TExtsView::memoRequested, this, &TMain_Form::OpenMemoSet);
  // The exchange's bar on guest-room actions disables every apply key.
  connect(this, &TMain_Form::serviceAllowedChanged, m_moringCall.get(),
          &TMoringCall_Form::SetServiceAllowed);
  connect(this, &TMain_Form::serviceAllowedChanged, m_hintForm.get(),
          &THint_Form::SetServiceAllowed);
  connect(this, &TMain_Form::serviceAllowedChanged, m_nodisturbForm.get(),
          &TForm_Nodisturb::SetServiceAllowed);
  connect(this, &TMain_Form::serviceAllowedChanged, m_voiceMailForm.get(),
          &TForm_VoiceMail_Set::SetServiceAllowed);
  connect(this, &TMain_Form::serviceAllowedChanged, m_memoSetForm.get(),
          &TForm_MemoSet::SetServiceAllowed);
}

void TMain_Form::OpenMoringCall(int id) {
  m_moringCall->OpenFor(id);
}

void TMain_Form::OpenSrvClass(int id, bool modal) {
  m_hintForm->OpenFor(id, modal);
}

void TMain_Form::OpenNodisturb(int id) {
  m_nodisturbForm->OpenFor(id);
}

void TMain_Form::OpenVoiceMail(int id) {
  m_voiceMailForm->OpenFor(id);
}

void TMain_Form::OpenMemoSet(int id) {
  m_memoSetForm->OpenFor(id);
}

void TMain_Form::OpenCheckIn(int id) {
  m_checkInForm->OpenFor(id);
}

void TMain_Form::CheckOut(bool checkedRooms) {
  RunGuarded([&] { m_frontDesk->AskAndCheckOut(checkedRooms); });
}

void TMain_Form::OpenRoomHistory(const QString &ext) {
  RunGuarded([&] { m_roomHistory->ShowForExt(ext); });
}

void TMain_Form::LanguageApplied() {
  m_extsView->Ext_SetColumnTitles();
}
