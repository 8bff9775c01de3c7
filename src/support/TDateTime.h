#pragma once

#include <QDateTime>
#include <QString>

// The console's date-time: days since 1899-12-30 as a double, the fraction being
// the time of day. 0 means "none". Stored dates, the wake-up and do-not-disturb
// windows and the record searches all do their arithmetic on this value, so
// "now - 7 days" and "the time of day" are plain sums.
struct TDateTime {
  double Value = 0.0;

  constexpr TDateTime() = default;
  constexpr explicit TDateTime(double value) : Value(value) {}

  static TDateTime FromQDateTime(const QDateTime &dt);
  static TDateTime FromDate(const QDate &date);
  static TDateTime FromTime(const QTime &time); // a time of day alone: 0 <= value < 1
  QDateTime ToQDateTime() const;
  QDate Date() const;
  QTime Time() const;

  bool IsZero() const { return Value == 0.0; }
  TDateTime DatePart() const; // midnight of the same day
  TDateTime TimePart() const; // the time of day alone

  // Two times closer than 1 ms count as equal.
  bool SameAs(TDateTime other) const;

  friend constexpr bool operator<(TDateTime a, TDateTime b) { return a.Value < b.Value; }
  friend constexpr bool operator==(TDateTime a, TDateTime b) { return a.Value == b.Value; }
  friend constexpr TDateTime operator+(TDateTime a, double days) {
    return TDateTime(a.Value + days);
  }
  friend constexpr TDateTime operator-(TDateTime a, double days) {
    return TDateTime(a.Value - days);
  }
  friend constexpr double operator-(TDateTime a, TDateTime b) { return a.Value - b.Value; }
};

// The console's fixed formats.
inline constexpr char16_t kShortDateFormat[] = u"yyyy-MM-dd";
inline constexpr char16_t kLongTimeFormat[] = u"hh:mm:ss";
inline constexpr char16_t kFullDateTimeFormat[] = u"yyyy-MM-dd hh:mm:ss";

QString DateToStr(TDateTime value);     // "yyyy-MM-dd"
QString TimeToStr(TDateTime value);     // "hh:mm:ss"
QString DateTimeToStr(TDateTime value); // the "c" format: the time is left off at midnight
QString FormatFull(TDateTime value);    // always "yyyy-MM-dd hh:mm:ss"

// Reads "yyyy-MM-dd", "yyyy-MM-dd hh:mm", "yyyy-MM-dd hh:mm:ss" or "hh:mm[:ss]".
// Returns false and leaves *out alone when the text is none of them.
bool TryStrToDateTime(const QString &text, TDateTime *out);
