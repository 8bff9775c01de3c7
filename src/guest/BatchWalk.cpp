#include "guest/BatchWalk.h"

#include "guest/ExtsView.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {
constexpr int kStepTimeoutMs = 10000;
constexpr int kVoiceMailClearTag = 11;
} // namespace

TBatchWalk::TBatchWalk(TExtsView &exts, QObject *parent) : QObject(parent), m_exts(exts) {
  Timer_MultiProcess.setObjectName(u"Timer_MultiProcess"_s);
  Timer_MultiProcess.setSingleShot(true);
  Timer_MultiProcess.setInterval(kStepTimeoutMs);
  connect(&Timer_MultiProcess, &QTimer::timeout, this, &TBatchWalk::Timer_MultiProcessTimer);
}

int TBatchWalk::FirstSelected() {
  const int id = m_exts.Ext_NextSelected(1);
  if (id < 0)
    TheShell().Message(MessageKind::Warning, u"警告提示:请先选择!"_s);
  return id;
}

void TBatchWalk::SendFirst(const QString &what, int id, const std::function<void(int)> &send) {
  if (SysParam().MyID == kNoSession)
    WriteLog(
        u"Batch %1 not started: no session with the exchange (first ID %2)"_s.arg(what).arg(id));
  send(id);
  emit stepSent(id);
}

void TBatchWalk::Step(const std::function<void(int)> &send) {
  Timer_MultiProcess.stop();
  // The grid counts its title as row 0: the current shown row r is row r + 1,
  // and the walk goes on from the row below it.
  const int next = m_exts.Ext_NextSelected(m_exts.AdvStringGrid_Exts.CurrentRow() + 2);
  if (next < 0) {
    TheShell().Message(MessageKind::Information, u"提示:批量修改成功完成！"_s);
    emit finished();
    return;
  }
  // Answers that came meanwhile may move the walk on before this step sends;
  // the step still sends for the room it found.
  QCoreApplication::processEvents();
  Timer_MultiProcess.start();
  send(next);
  emit stepSent(next);
}

void TBatchWalk::Timer_MultiProcessTimer() {
  Timer_MultiProcess.stop();
  LMDCaptionPanel_MultiProcess_Visible = false;
  WriteLog(u"Batch step timed out at ID %1"_s.arg(m_exts.Ext_CurrentID()));
  TheShell().Message(MessageKind::Error, u"网络错误:批量修改超时!"_s);
  emit timedOut();
}

void TBatchWalk::StartVoiceMailClear(int firstId, const std::function<void(int)> &send) {
  Timer_MultiProcess.start();
  LMDCaptionPanel_MultiProcess_Tag = kVoiceMailClearTag;
  LMDCaptionPanel_MultiProcess_Caption = u"批量处理->%1"_s.arg(u"清除留言"_s);
  // Started afresh, so an earlier batch's time-out can't cut this one short.
  Timer_MultiProcess.stop();
  Timer_MultiProcess.start();
  SendFirst(u"voice-mail clear"_s, firstId, send);
}
