#include "link/RecvWorker.h"

#include "link/ExchangeLink.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

TRecvWorker::TRecvWorker(TExchangeLink *link) : m_link(link) {
  setObjectName(QStringLiteral("BMDThread_RecvSocketMsg"));
}

TRecvWorker::~TRecvWorker() {
  Stop();
}

void TRecvWorker::Stop() {
  if (!isRunning())
    return;
  m_stop = true;
  m_wake.release();
  const QDeadlineTimer deadline(5000);
  while (!wait(10) && !deadline.hasExpired())
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

void TRecvWorker::run() {
  TSocketBlockQueue &queue = m_link->Queue();
  while (!m_stop) {
    const int read = queue.ReadIndex.load();
    if (read != queue.WriteIndex.load()) {
      // The walk runs on the main thread; this thread waits for it. Whatever the
      // walk does, the slot is done with afterwards.
      QMetaObject::invokeMethod(
          m_link, [this, read] { m_link->Synchro_ProcessSocketDatas(read); },
          Qt::BlockingQueuedConnection);
      queue.ReadIndex.store((read + 1) % TSocketBlockQueue::kSlots);
      continue;
    }
    // Sleeps until the arrival event (or Stop) releases it: an idle console's
    // worker costs no wake-ups at all.
    m_wake.acquire();
  }
}
