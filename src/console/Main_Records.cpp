// The record views of the main window: the exchange's call records on their
// page and the wake-up log window, opened from the extension list.
#include "console/Main_Form.h"

#include "guest/ExtsView.h"
#include "guest/MoringCallLog_Unit.h"
#include "directory/RecordServerPage.h"
#include "guest/PBXRecords.h"
#include "link/Public_Unit.h"
#include "support/Shell.h"

void TMain_Form::WireRecords() {
  m_pbxRecords = std::make_unique<TPBXRecords>();
  m_moringCallLog = std::make_unique<TForm_MoringCallLog>();
  m_recordServer = std::make_unique<TRecordServerPage>();
  TExtsView &exts = *m_extsView;
  connect(&exts, &TExtsView::recordSearchRequested, m_pbxRecords.get(),
          [this] { m_pbxRecords->SpeedButton_FindClick(); });
  connect(&exts, &TExtsView::moringCallLogRequested, m_moringCallLog.get(),
          [this](const QString &ext) { m_moringCallLog->ShowForExt(ext); });
}

void TMain_Form::AskRecordInfo() {
  SendRecordServerQuery(); // sent only with a session of our own
}

void TMain_Form::tefxButton_MCallRecordClick() {
  m_moringCallLog->ShowAndSearch();
}
