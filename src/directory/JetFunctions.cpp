#include "directory/JetFunctions.h"

#include "directory/JetSql.h"
#include "support/TDateTime.h"

#include <QString>

#include <cmath>
#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {
QString ArgText(sqlite3_value *v) {
  const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(v));
  return text ? QString::fromUtf8(text, sqlite3_value_bytes(v)) : QString();
}

void ResultText(sqlite3_context *ctx, const QString &text) {
  const QByteArray utf8 = text.toUtf8();
  sqlite3_result_text(ctx, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
}

// A stored date (text) or a Jet day count (number) as a TDateTime; false for
// NULL or text that is no date.
bool ArgDate(sqlite3_value *v, TDateTime *out) {
  switch (sqlite3_value_type(v)) {
  case SQLITE_INTEGER:
  case SQLITE_FLOAT:
    *out = TDateTime(sqlite3_value_double(v));
    return true;
  case SQLITE_TEXT:
    return TryStrToDateTime(ArgText(v), out);
  default:
    return false;
  }
}

// right(text, n): the last n characters, counted as len() counts them, so a
// character outside the basic plane is never cut in half.
void JetRight(sqlite3_context *ctx, int, sqlite3_value **argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
    sqlite3_result_null(ctx);
    return;
  }
  const QString text = ArgText(argv[0]);
  qsizetype n = qMax(0, sqlite3_value_int(argv[1]));
  qsizetype from = text.size();
  while (n > 0 && from > 0) {
    --from;
    if (text[from].isLowSurrogate() && from > 0 && text[from - 1].isHighSurrogate())
      --from;
    --n;
  }
  ResultText(ctx, text.mid(from));
}

// format(date, "yyyy-mm-dd hh:nn:ss"): Jet's date tokens, where "mm" after an
// hour means minutes. Anything that is no date comes back as its text.
QString FormatJetDate(TDateTime value, const QString &format) {
  const QDateTime dt = value.ToQDateTime();
  QString out;
  for (const JetDatePart &p : ParseJetDatePattern(format)) {
    const auto number = [&](int v) {
      return QString::number(v).rightJustified(p.run >= 2 ? 2 : 1, u'0');
    };
    switch (p.field) {
    case JetDatePart::Year:
      out += p.run >= 4 ? QString::number(dt.date().year())
                        : QString::number(dt.date().year() % 100).rightJustified(2, u'0');
      break;
    case JetDatePart::Month:
      out += number(dt.date().month());
      break;
    case JetDatePart::Day:
      out += number(dt.date().day());
      break;
    case JetDatePart::Hour:
      // A difference of more than a day still shows its hours of the day only.
      out += number(dt.time().hour());
      break;
    case JetDatePart::Minute:
      out += number(dt.time().minute());
      break;
    case JetDatePart::Second:
      out += number(dt.time().second());
      break;
    case JetDatePart::Text:
      out += p.text;
      break;
    }
  }
  return out;
}

void JetFormat(sqlite3_context *ctx, int argc, sqlite3_value **argv) {
  if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
    sqlite3_result_null(ctx);
    return;
  }
  TDateTime value;
  if (argc < 2 || !ArgDate(argv[0], &value)) {
    ResultText(ctx, ArgText(argv[0]));
    return;
  }
  ResultText(ctx, FormatJetDate(value, ArgText(argv[1])));
}

// cdate(x): a date, stored form.
void JetCDate(sqlite3_context *ctx, int, sqlite3_value **argv) {
  TDateTime value;
  if (!ArgDate(argv[0], &value)) {
    sqlite3_result_null(ctx);
    return;
  }
  ResultText(ctx, FormatFull(value));
}

// a - b in days.
void JetDateSub(sqlite3_context *ctx, int, sqlite3_value **argv) {
  TDateTime a;
  TDateTime b;
  if (!ArgDate(argv[0], &a) || !ArgDate(argv[1], &b)) {
    sqlite3_result_null(ctx);
    return;
  }
  sqlite3_result_double(ctx, a - b);
}

// dateDiff(interval, a, b): how many interval boundaries lie from a to b; for
// 'd' the calendar days between the two dates, whatever their times of day.
void JetDateDiff(sqlite3_context *ctx, int, sqlite3_value **argv) {
  TDateTime a;
  TDateTime b;
  if (!ArgDate(argv[1], &a) || !ArgDate(argv[2], &b)) {
    sqlite3_result_null(ctx);
    return;
  }
  const QString interval = ArgText(argv[0]).toLower();
  const QDateTime qa = a.ToQDateTime();
  const QDateTime qb = b.ToQDateTime();
  qint64 result = 0;
  if (interval == u"yyyy"_s) {
    result = qb.date().year() - qa.date().year();
  } else if (interval == u"m"_s) {
    result = (qb.date().year() - qa.date().year()) * 12 + qb.date().month() - qa.date().month();
  } else if (interval == u"h"_s) {
    result = qint64(std::floor(b.Value * 24)) - qint64(std::floor(a.Value * 24));
  } else if (interval == u"n"_s) {
    result = qint64(std::floor(b.Value * 1440)) - qint64(std::floor(a.Value * 1440));
  } else if (interval == u"s"_s) {
    result = qa.secsTo(qb);
  } else {
    result = qa.date().daysTo(qb.date());
  }
  sqlite3_result_int64(ctx, result);
}
} // namespace

bool RegisterJetFunctions(sqlite3 *db) {
  constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
  return sqlite3_create_function_v2(db, "jet_right", 2, flags, nullptr, JetRight, nullptr, nullptr,
                                    nullptr) == SQLITE_OK &&
         sqlite3_create_function_v2(db, "jet_format", -1, flags, nullptr, JetFormat, nullptr,
                                    nullptr, nullptr) == SQLITE_OK &&
         sqlite3_create_function_v2(db, "jet_cdate", 1, flags, nullptr, JetCDate, nullptr, nullptr,
                                    nullptr) == SQLITE_OK &&
         sqlite3_create_function_v2(db, "jet_datesub", 2, flags, nullptr, JetDateSub, nullptr,
                                    nullptr, nullptr) == SQLITE_OK &&
         sqlite3_create_function_v2(db, "jet_datediff", 3, flags, nullptr, JetDateDiff, nullptr,
                                    nullptr, nullptr) == SQLITE_OK;
}

QStringList PostgresJetFunctions() {
  return {
      // Dates are kept as the console writes them, "yyyy-MM-dd hh:mm:ss";
      // compared byte by byte that text orders as time does, whatever the
      // server's collation.
      u"DO $$ BEGIN CREATE DOMAIN datetext AS text COLLATE \"C\"; "
      u"EXCEPTION WHEN duplicate_object THEN NULL; END $$"_s,
      // A stored text as a time; NULL for text that is no date, as the
      // functions on SQLite answer.
      u"CREATE OR REPLACE FUNCTION jet_date(text) RETURNS timestamp LANGUAGE plpgsql "
      u"IMMUTABLE AS $$ BEGIN RETURN $1::timestamp(0); "
      u"EXCEPTION WHEN others THEN RETURN NULL; END $$"_s,
      // A negative count gives the empty text, as on SQLite, where
      // PostgreSQL's own right() would drop characters from the front.
      u"CREATE OR REPLACE FUNCTION jet_right(text, integer) RETURNS text LANGUAGE sql "
      u"IMMUTABLE AS $$ SELECT right($1, greatest($2, 0)) $$"_s,
      // The pattern arrives as to_char's (the translator rewrote it); a value
      // that is no date comes back as its text.
      u"CREATE OR REPLACE FUNCTION jet_format(text, text) RETURNS text LANGUAGE sql "
      u"IMMUTABLE AS $$ SELECT coalesce(to_char(jet_date($1), $2), $1) $$"_s,
      // Days since the zero date as the stored form, rounded to the second.
      u"CREATE OR REPLACE FUNCTION jet_cdate(double precision) RETURNS text LANGUAGE sql "
      u"IMMUTABLE AS $$ SELECT to_char(timestamp '1899-12-30' + round($1 * 86400) * "
      u"interval '1 second', 'YYYY-MM-DD HH24:MI:SS') $$"_s,
      u"CREATE OR REPLACE FUNCTION jet_datesub(text, text) RETURNS double precision "
      u"LANGUAGE sql IMMUTABLE AS $$ SELECT extract(epoch FROM (jet_date($1) - jet_date($2)))"
      u"::double precision / 86400 $$"_s,
      // Boundaries crossed from the first date to the second; 'd' counts
      // calendar days whatever the times of day.
      u"CREATE OR REPLACE FUNCTION jet_datediff(text, text, text) RETURNS bigint "
      u"LANGUAGE sql IMMUTABLE AS $$ SELECT (CASE lower($1) "
      u"WHEN 'yyyy' THEN extract(year FROM b) - extract(year FROM a) "
      u"WHEN 'm' THEN (extract(year FROM b) - extract(year FROM a)) * 12 "
      u"+ extract(month FROM b) - extract(month FROM a) "
      u"WHEN 'h' THEN floor(extract(epoch FROM b) / 3600) - floor(extract(epoch FROM a) / 3600) "
      u"WHEN 'n' THEN floor(extract(epoch FROM b) / 60) - floor(extract(epoch FROM a) / 60) "
      u"WHEN 's' THEN extract(epoch FROM b) - extract(epoch FROM a) "
      u"ELSE b::date - a::date END)::bigint "
      u"FROM (SELECT jet_date($2) AS a, jet_date($3) AS b) d $$"_s,
  };
}
