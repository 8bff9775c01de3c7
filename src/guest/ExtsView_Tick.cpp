// The 30-second tick over the guest rooms: the do-not-disturb windows, then the
// daily wake-ups, which the exchange doesn't know and so hears again each time.
#include "devices/CallControlDev.h"
#include "guest/ExtsView.h"
#include "guest/MoringCall.h"
#include "support/Clock.h"
#include "support/Log.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

using namespace Qt::StringLiterals;

namespace {
void WaitWithEvents(int ms) {
  const QDeadlineTimer deadline(ms);
  do {
    QCoreApplication::processEvents(QEventLoop::AllEvents,
                                    int(qMax<qint64>(1, deadline.remainingTime())));
  } while (!deadline.hasExpired());
}
} // namespace

void TExtsView::Timer_ExcuteActionTimer() {
  // The tick lets events in between rooms, which may sort, filter or add rows:
  // it walks the devices the filter showed when it began, never row numbers.
  std::vector<int> ids;
  const TExtGridModel &g = AdvStringGrid_Exts;
  ids.reserve(size_t(g.ShownCount()));
  for (int row = 0; row < g.ShownCount(); ++row) {
    bool ok = false;
    const int id = g.Cell(g.SlotAt(row), TExtGridModel::ColID).toInt(&ok);
    if (ok)
      ids.push_back(id);
  }
  for (int id : ids) {
    if (RoomInSequence && RoomInSequence(id))
      continue;
    // Do-not-disturb windows first; they come with their own dialog.
    if (RunNoDisturbWindows)
      RunNoDisturbWindows(id);

    const TPhoneTis *p = m_table.Device(id);
    if (!p || !p->LastExt.MoringCall_isEveryDay)
      continue;
    if (WakeRetryPending && WakeRetryPending(id)) {
      WriteLog(u"定时叫醒 myportid:%1 held: a retry of a failed wake-up is pending"_s.arg(id));
      continue;
    }
    const TExt_Record &ext = p->LastExt;
    if (LogEnabled())
      WriteLog(u"定时叫醒 myportid:%1 ->%2"_s.arg(id).arg(
          DateTimeToStr(ext.MoringCall_EveryDay_Time)));
    MoringCall_SetEveryDay(m_net, id, ext.MoringCall_Mode,
                           MoringCallNextEveryDay(Now(), ext.MoringCall_EveryDay_Time));
    if (TickYields)
      WaitWithEvents(10);
  }
}
