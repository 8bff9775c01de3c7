#pragma once

#include <QList>
#include <QString>

// The console's statements are written in the Jet dialect; the store runs them on
// SQLite. TranslateJet is the one place that bridges the two: TOP, "..." strings,
// #date# literals (with the doubled colons of escaped times), &, IDENTITY, the
// Jet column types, and the functions right, len, format, cdate and dateDiff.
//
// A shared store runs the same statements on PostgreSQL. Its differences from the
// SQLite text: [names] become lower-case quoted names (PostgreSQL folds plain
// names to lower case, so both spellings meet); like becomes ilike, since Jet's
// like ignores case and PostgreSQL's does not; a date column is datetext (text
// in the stored form, as on SQLite; see PostgresJetFunctions);
// IDENTITY is an identity column that still takes a given ID (a copied store
// keeps its IDs); Bit is smallint, because the cursor writes 0 and 1 and the
// statements compare with numbers, which a boolean column refuses (True and
// False in a statement become 1 and 0 for the same reason); format's Jet pattern
// becomes to_char's. Date literals become the stored text, as on SQLite. The
// functions run as SQL functions the schema step creates (PostgresJetFunctions).
enum class SqlTarget { Sqlite, Postgres };
QString TranslateJet(const QString &jet, SqlTarget target = SqlTarget::Sqlite);

// One piece of a Jet date pattern ("yyyy-mm-dd hh:nn:ss"): a field, or text
// shown as it stands. "m" after an hour field means minutes. Run is how many
// times the letter stood: 1 unpadded, 2 or more two digits (yyyy: four).
struct JetDatePart {
  enum Field { Text, Year, Month, Day, Hour, Minute, Second } field;
  qsizetype run;
  QString text;
};
QList<JetDatePart> ParseJetDatePattern(const QString &pattern);

// A value put into statement text between single quotes: its quotes doubled, so
// that a quote in a search box or a caller number is searched for as a quote and
// can neither break nor steer the statement. A NUL is dropped: no stored text
// holds one, and the engine would end the statement there.
QString SqlText(const QString &value);

// Text as the store keeps it: no NUL, and half of a character outside the
// basic plane becomes the replacement character. SqlText and the cursor's
// text fields both go through it, so a stored text is found by itself.
QString StorableText(const QString &value);

// For a value between double quotes (the Jet string form some statements use).
QString SqlTextDq(const QString &value);

// A value put into a LIKE pattern: quotes doubled as above. Jet's LIKE through the
// engine treats % and _ as wildcards; the console's searches put % around the
// text, and a % typed by the operator stays a wildcard as it always was.
inline QString SqlLikeText(const QString &value) {
  return SqlText(value);
}

// True when the text holds more than one statement (a ';' outside quotes that is
// not the last character, or a NUL anywhere). The store refuses such text.
bool HasSecondStatement(const QString &sql);

// The length of a text as the store's len() and right() count it: in
// characters, a character outside the basic plane counting once.
qsizetype StoredLength(const QString &text);
