#include "support/Clock.h"

namespace {
ClockSource &Source() {
  static ClockSource source;
  return source;
}
} // namespace

QDateTime CurrentDateTime() {
  const ClockSource &source = Source();
  return source ? source() : QDateTime::currentDateTime();
}

qint64 CurrentMSecsSinceEpoch() {
  const ClockSource &source = Source();
  return source ? source().toMSecsSinceEpoch() : QDateTime::currentMSecsSinceEpoch();
}

TDateTime Now() {
  return TDateTime::FromQDateTime(CurrentDateTime());
}

void SetClock(ClockSource source) {
  Source() = std::move(source);
}
