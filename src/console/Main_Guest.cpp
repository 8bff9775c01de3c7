// The guest-room half of the main window: the extension list and the wake-up
// dialog, fed by the device monitor's events and its 30-second tick.
#include "console/Main_Form.h"

#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "guest/ExtFind_Form.h"
#include "guest/ExtsView.h"
#include "guest/MoringCall_Unit.h"
#include "support/Log.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

void TMain_Form::WireGuest() {
  m_extsView = std::make_unique<TExtsView>(*m_devices, *m_netModule);
  m_moringCall = std::make_unique<TMoringCall_Form>(*m_devices, *m_netModule, *m_extsView);
  m_extFind = std::make_unique<TForm_ExtFind>(*m_extsView);
  TExtsView &exts = *m_extsView;
  TDeviceEvents &events = *m_deviceEvents;

  exts.LocatePanel = [this](const QString &number) { return FindExtension(number); };
  exts.SrvClassItems = [&events] { return events.SrvClassNames.stringList(); };
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
  connect(this, &TMain_Form::serviceAllowedChanged, m_moringCall.get(),
          &TMoringCall_Form::SetServiceAllowed);
}

void TMain_Form::OpenMoringCall(int id) {
  m_moringCall->OpenFor(id);
}

void TMain_Form::LanguageApplied() {
  m_extsView->Ext_SetColumnTitles();
}
