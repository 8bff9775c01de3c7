#include "support/TDateTime.h"

#include <cmath>

namespace {
constexpr qint64 kMsPerDay = 86400000;

qint64 EpochJulianDay() {
  static const qint64 jd = QDate(1899, 12, 30).toJulianDay();
  return jd;
}

// Whole milliseconds since the epoch; rounding here keeps 23:59:59.999 from
// becoming the next day through floating-point noise.
qint64 ToMs(double value) {
  return qint64(std::llround(value * double(kMsPerDay)));
}
} // namespace

TDateTime TDateTime::FromQDateTime(const QDateTime &dt) {
  if (!dt.isValid())
    return TDateTime();
  const qint64 days = dt.date().toJulianDay() - EpochJulianDay();
  return TDateTime(double(days) + double(dt.time().msecsSinceStartOfDay()) / double(kMsPerDay));
}

TDateTime TDateTime::FromDate(const QDate &date) {
  if (!date.isValid())
    return TDateTime();
  return TDateTime(double(date.toJulianDay() - EpochJulianDay()));
}

TDateTime TDateTime::FromTime(const QTime &time) {
  if (!time.isValid())
    return TDateTime();
  return TDateTime(double(time.msecsSinceStartOfDay()) / double(kMsPerDay));
}

QDateTime TDateTime::ToQDateTime() const {
  return QDateTime(Date(), Time());
}

QDate TDateTime::Date() const {
  const qint64 ms = ToMs(Value);
  const qint64 days = ms >= 0 ? ms / kMsPerDay : -((-ms + kMsPerDay - 1) / kMsPerDay);
  return QDate::fromJulianDay(EpochJulianDay() + days);
}

QTime TDateTime::Time() const {
  qint64 ms = ToMs(Value) % kMsPerDay;
  if (ms < 0)
    ms += kMsPerDay;
  return QTime::fromMSecsSinceStartOfDay(int(ms));
}

TDateTime TDateTime::DatePart() const {
  return FromDate(Date());
}
TDateTime TDateTime::TimePart() const {
  return FromTime(Time());
}

bool TDateTime::SameAs(TDateTime other) const {
  return std::fabs(Value - other.Value) * double(kMsPerDay) < 1.0;
}

QString DateToStr(TDateTime value) {
  return value.Date().toString(QStringView(kShortDateFormat));
}

QString TimeToStr(TDateTime value) {
  return value.Time().toString(QStringView(kLongTimeFormat));
}

QString DateTimeToStr(TDateTime value) {
  if (value.Time() == QTime(0, 0))
    return DateToStr(value);
  return FormatFull(value);
}

QString FormatFull(TDateTime value) {
  return value.ToQDateTime().toString(QStringView(kFullDateTimeFormat));
}

bool TryStrToDateTime(const QString &text, TDateTime *out) {
  const QString t = text.trimmed();
  // The console's own format first; then the forms a hand or another program
  // writes: hours without their zero, slashes, one-digit months and days.
  static const char16_t *const kDateTimeFormats[] = {
      u"yyyy-MM-dd hh:mm:ss", u"yyyy-MM-dd hh:mm", u"yyyy-MM-dd", u"yyyy-M-d h:m:s",
      u"yyyy-M-d h:m",        u"yyyy-M-d",         u"yyyy/M/d h:m:s", u"yyyy/M/d h:m", u"yyyy/M/d"};
  for (const char16_t *format : kDateTimeFormats) {
    const QDateTime dt = QDateTime::fromString(t, QStringView(format));
    if (dt.isValid()) {
      *out = TDateTime::FromQDateTime(dt);
      return true;
    }
  }
  static const char16_t *const kTimeFormats[] = {u"hh:mm:ss", u"hh:mm", u"h:mm:ss", u"h:mm"};
  for (const char16_t *format : kTimeFormats) {
    const QTime time = QTime::fromString(t, QStringView(format));
    if (time.isValid()) {
      *out = TDateTime::FromTime(time);
      return true;
    }
  }
  return false;
}
