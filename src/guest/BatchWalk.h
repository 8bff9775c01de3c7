#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

class TExtsView;

// The walk of a batch over the checked rows of the extension grid. A batch is
// no queue: the first checked room is sent by the dialog's batch key, and each
// answer of the exchange moves the grid's current row on to the next checked
// room and sends the same command again, until no checked row is left. The
// kinds (service class, wake-up, do-not-disturb) differ only in the command
// each step sends; the answer handlers call Step while their batch runs.
class TBatchWalk : public QObject {
  Q_OBJECT

public:
  explicit TBatchWalk(TExtsView &exts, QObject *parent = nullptr);

  // The time-out of one step: armed by every step that sends, from the second
  // room on. The first room of a batch is not guarded.
  QTimer Timer_MultiProcess;
  // The progress panel. It is never shown; its Tag 11 marks a running clear of
  // voice mail.
  bool LMDCaptionPanel_MultiProcess_Visible = false;
  int LMDCaptionPanel_MultiProcess_Tag = 0;
  QString LMDCaptionPanel_MultiProcess_Caption;
  QString TeLabel_Msg_MultiProcess;

  // The batch key: the first checked row becomes current and its ID comes
  // back; with none checked the operator is warned and -1 comes back.
  int FirstSelected();
  // The batch key's first send. Without a session nothing goes and nobody is
  // told, as no answer will come; the log says why.
  void SendFirst(const QString &what, int id, const std::function<void(int id)> &send);
  // One step on an answer of a running batch: the next checked row below the
  // current one gets `send`, or the walk ends with the success message.
  void Step(const std::function<void(int id)> &send);
  void Timer_MultiProcessTimer();
  // The batch clear of voice mail: marks the panel and arms the time-out
  // before its one packet goes.
  void StartVoiceMailClear(int firstId, const std::function<void(int id)> &send);

signals:
  void stepSent(int id);
  void finished();
  void timedOut();

private:
  TExtsView &m_exts;
};
