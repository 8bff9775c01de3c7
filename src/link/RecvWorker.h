#pragma once

#include <QSemaphore>
#include <QThread>

#include <atomic>

class TExchangeLink;

// BMDThread_RecvSocketMsg: moves blocks from the ring to the main thread, one at a
// time, and waits there until the block has been walked. It does nothing else.
// It is woken when a block arrives, and looks again every millisecond anyway.
class TRecvWorker : public QThread {
  Q_OBJECT

public:
  explicit TRecvWorker(TExchangeLink *link);
  ~TRecvWorker() override;

  void Wake() { m_wake.release(); }
  // Ends the thread. Called on the main thread, it keeps serving the worker's
  // pending hand-over so the two can't wait on each other.
  void Stop();

protected:
  void run() override; // BMDThread_RecvSocketMsgExecute

private:
  TExchangeLink *m_link;
  QSemaphore m_wake;
  std::atomic<bool> m_stop{false};
};
