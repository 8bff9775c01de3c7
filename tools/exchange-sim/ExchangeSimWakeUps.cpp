// The exchange's own clock and the wake-up calls it rings by it.
#include "ExchangeSim.h"

using namespace Qt::StringLiterals;

namespace {
// Extension statuses a wake-up call moves through.
constexpr quint8 kIdle = 1;
constexpr quint8 kRungBack = 3;
constexpr quint8 kTalking = 7;
// A wake-up found this late (the exchange was off, or the time was set in the
// past) is not worth waking anyone for.
constexpr qint64 kLateLimitSecs = 3600;
constexpr int kMinRingMs = 4000;
constexpr int kMaxRingMs = 12000;

// "YYYYMMDDHHNN" and anything after it; an invalid time for anything else.
QDateTime WakeUpTime(const QString &text) {
  return QDateTime::fromString(text.left(12), u"yyyyMMddHHmm"_s);
}
} // namespace

void ExchangeSim::SetClock(Clock clock) {
  BaseClock = std::move(clock);
}

void ExchangeSim::SetClockTo(const QDateTime &at) {
  ClockOffsetMs = 0;
  ClockOffsetMs = Now().msecsTo(at);
}

QDateTime ExchangeSim::Now() const {
  const QDateTime base = BaseClock ? BaseClock() : QDateTime::currentDateTime();
  return base.addMSecs(ClockOffsetMs);
}

bool ExchangeSim::SetWakeUpResult(int id, WakeUpResult result, int ringMs) {
  const SimDevice *d = DeviceSet.Find(id);
  if (!d || !SimDeviceTypes::IsExtension(d->Type))
    return false;
  WakeUpPlans.insert(id, WakeUpPlan{result, ringMs});
  return true;
}

void ExchangeSim::SetWakeUpCheckPeriod(int ms) {
  WakeUpTimer.start(std::max(ms, 1));
}

void ExchangeSim::RingDueWakeUps() {
  const QDateTime now = Now();
  for (const int id : DeviceSet.Ids()) {
    SimDevice *d = DeviceSet.Find(id);
    if (d->WakeUp.isEmpty() || !SimDeviceTypes::IsExtension(d->Type) ||
        WakeUpCalls.contains(id))
      continue;
    const QDateTime due = WakeUpTime(d->WakeUp);
    if (!due.isValid() || due > now || due.secsTo(now) > kLateLimitSecs)
      continue;
    const WakeUpPlan plan = WakeUpPlans.value(id);
    const bool answer = plan.Result == WakeUpResult::Answer ||
                        (plan.Result == WakeUpResult::Random && Random.bounded(4) != 0);
    const int ringMs = plan.RingMs >= 0 ? plan.RingMs : Random.bounded(kMinRingMs, kMaxRingMs + 1);
    WakeUpCalls.insert(id, d->WakeUp);
    d->Status = kRungBack;
    PushStatus(id);
    emit wakeUpRinging(id);
    QTimer::singleShot(ringMs, this, [this, id, answer] { EndWakeUpRing(id, answer); });
  }
}

// The answer flag lives only while the room talks: the console logs a result
// for every event that carries the flag after one that carried the time, so
// the flag and the time leave together in the event that ends the call.
void ExchangeSim::EndWakeUpRing(int id, bool answered) {
  SimDevice *d = DeviceSet.Find(id);
  if (!d || !WakeUpCalls.contains(id))
    return;
  if (answered) {
    d->MixData |= SimMix::WakeUpAnswered;
    d->Status = kTalking;
    PushStatus(id);
    QTimer::singleShot(WakeUpTalk, this, [this, id] { EndWakeUpCall(id, true); });
  } else {
    EndWakeUpCall(id, false);
  }
}

void ExchangeSim::EndWakeUpCall(int id, bool answered) {
  SimDevice *d = DeviceSet.Find(id);
  if (!d || !WakeUpCalls.contains(id))
    return;
  // The console may have set the next day's time during the call; that one stays.
  if (d->WakeUp == WakeUpCalls.take(id))
    d->WakeUp.clear();
  d->MixData &= static_cast<quint16>(~SimMix::WakeUpAnswered);
  d->Status = kIdle;
  PushStatus(id);
  emit wakeUpEnded(id, answered);
}
