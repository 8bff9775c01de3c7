#include "directory/JetSql.h"

#include "support/TDateTime.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
struct Token {
  enum Kind { Space, Word, Number, String, Ident, Other } kind;
  QString text;
};

bool IsWordChar(QChar c) {
  return c.isLetterOrNumber() || c == u'_';
}

// A #...# literal of the console's formats, times possibly with doubled colons
// (the escaping a parameter-checking query layer expects), as stored text.
QString DateLiteral(QString body) {
  body.replace(u"::"_s, u":"_s);
  TDateTime value;
  if (TryStrToDateTime(body, &value))
    return u'\'' + FormatFull(value) + u'\'';
  return u'\'' + body.trimmed().replace(u'\'', u"''"_s) + u'\'';
}

QList<Token> Tokenize(const QString &sql) {
  QList<Token> tokens;
  const qsizetype n = sql.size();
  qsizetype i = 0;
  while (i < n) {
    const QChar c = sql[i];
    qsizetype j = i + 1;
    if (c.isSpace()) {
      while (j < n && sql[j].isSpace())
        ++j;
      tokens.append({Token::Space, sql.mid(i, j - i)});
    } else if (c == u'\'' || c == u'"') {
      // A quoted string; the quote doubled inside stands for itself.
      QString value;
      while (j < n) {
        if (sql[j] == c) {
          if (j + 1 < n && sql[j + 1] == c) {
            value += c;
            j += 2;
            continue;
          }
          ++j;
          break;
        }
        value += sql[j++];
      }
      tokens.append({Token::String, u'\'' + value.replace(u'\'', u"''"_s) + u'\''});
    } else if (c == u'#') {
      const qsizetype close = sql.indexOf(u'#', i + 1);
      if (close < 0) {
        tokens.append({Token::Other, c});
      } else {
        tokens.append({Token::String, DateLiteral(sql.mid(i + 1, close - i - 1))});
        j = close + 1;
      }
    } else if (c == u'[') {
      const qsizetype close = sql.indexOf(u']', i + 1);
      j = close < 0 ? n : close + 1;
      tokens.append({Token::Ident, sql.mid(i, j - i)});
    } else if (c.isDigit()) {
      while (j < n && (sql[j].isDigit() || sql[j] == u'.'))
        ++j;
      tokens.append({Token::Number, sql.mid(i, j - i)});
    } else if (IsWordChar(c)) {
      while (j < n && IsWordChar(sql[j]))
        ++j;
      tokens.append({Token::Word, sql.mid(i, j - i)});
    } else {
      tokens.append({Token::Other, c});
    }
    i = j;
  }
  return tokens;
}

qsizetype NextSolid(const QList<Token> &t, qsizetype i) {
  while (i < t.size() && t[i].kind == Token::Space)
    ++i;
  return i;
}

bool WordIs(const Token &t, const char *word) {
  return t.kind == Token::Word && t.text.compare(QLatin1StringView(word), Qt::CaseInsensitive) == 0;
}

// The Jet functions the console uses, by the names they run under on SQLite.
QString FunctionName(const QString &word) {
  const QString w = word.toLower();
  if (w == u"right"_s)
    return u"jet_right"_s;
  if (w == u"len"_s)
    return u"length"_s;
  if (w == u"format"_s)
    return u"jet_format"_s;
  if (w == u"cdate"_s)
    return u"jet_cdate"_s;
  if (w == u"datediff"_s)
    return u"jet_datediff"_s;
  return QString();
}

// Column types of Jet DDL as SQLite understands them. A date column keeps
// "DATE" in its declared type, which is how the cursor knows to read it as one.
QString ColumnType(const QString &word) {
  const QString w = word.toLower();
  if (w == u"memo"_s)
    return u"TEXT"_s;
  if (w == u"date"_s)
    return u"DATETEXT"_s;
  if (w == u"bit"_s)
    return u"INTEGER"_s;
  return QString();
}

// The Jet pattern of format() as to_char's: the fields jet_format reads on
// SQLite, every other character quoted so that to_char takes it literally.
QString ToCharPattern(const QString &format) {
  QString out;
  for (const JetDatePart &p : ParseJetDatePattern(format)) {
    const auto field = [&](const char *name) {
      out += (p.run >= 2 ? QString() : u"FM"_s) + QLatin1StringView(name);
    };
    switch (p.field) {
    case JetDatePart::Year:
      out += p.run >= 4 ? u"YYYY"_s : u"YY"_s;
      break;
    case JetDatePart::Month:
      field("MM");
      break;
    case JetDatePart::Day:
      field("DD");
      break;
    case JetDatePart::Hour:
      field("HH24");
      break;
    case JetDatePart::Minute:
      field("MI");
      break;
    case JetDatePart::Second:
      field("SS");
      break;
    case JetDatePart::Text:
      out += u'"' + QString(p.text).replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s) + u'"';
      break;
    }
  }
  return out;
}

// format(x, 'pattern'): a quoted pattern as the call's second argument becomes
// to_char's pattern. A pattern that is no literal is left as it is.
void RewriteFormatPatterns(QList<Token> &t) {
  for (qsizetype i = 0; i < t.size(); ++i) {
    if (!WordIs(t[i], "format"))
      continue;
    const qsizetype open = NextSolid(t, i + 1);
    if (open >= t.size() || t[open].text != u"("_s)
      continue;
    int depth = 0;
    for (qsizetype j = open + 1; j < t.size(); ++j) {
      if (t[j].kind != Token::Other)
        continue;
      if (t[j].text == u"("_s) {
        ++depth;
      } else if (t[j].text == u")"_s) {
        if (depth-- == 0)
          break;
      } else if (t[j].text == u","_s && depth == 0) {
        const qsizetype arg = NextSolid(t, j + 1);
        const qsizetype after = NextSolid(t, arg + 1);
        if (arg < t.size() && t[arg].kind == Token::String && after < t.size() &&
            t[after].text == u")"_s) {
          const QString pattern = t[arg].text.mid(1, t[arg].text.size() - 2).replace(u"''"_s, u"'"_s);
          t[arg].text = u'\'' + ToCharPattern(pattern).replace(u'\'', u"''"_s) + u'\'';
        }
        break;
      }
    }
  }
}

// A [name] as PostgreSQL should see it: quoted, so that a reserved word still
// names a column, and lower-case, so that it is the same column as the plain
// spelling the other statements use.
QString PostgresName(const QString &bracketed) {
  QString name = bracketed.mid(1, bracketed.size() - (bracketed.endsWith(u']') ? 2 : 1));
  return u'"' + name.toLower().replace(u'"', u"\"\""_s) + u'"';
}

// Column types of Jet DDL on PostgreSQL. A date column is the datetext domain
// the schema step creates: the same "yyyy-MM-dd hh:mm:ss" text as on SQLite,
// ordered byte by byte, so every reader and writer of the store sees the one
// form, comparisons with date literals order as time does, and the cursor
// knows the column as a date by its type's name.
QString PostgresColumnType(const QString &word) {
  const QString w = word.toLower();
  if (w == u"memo"_s)
    return u"text"_s;
  if (w == u"date"_s)
    return u"datetext"_s;
  if (w == u"bit"_s)
    return u"smallint"_s;
  return QString();
}

// TOP n after SELECT [DISTINCT] becomes LIMIT n at the end of that SELECT: at the
// parenthesis that closes its level, or at the end of the statement.
void MoveTopToLimit(QList<Token> &t) {
  for (qsizetype i = 0; i < t.size(); ++i) {
    if (!WordIs(t[i], "select"))
      continue;
    qsizetype k = NextSolid(t, i + 1);
    if (k < t.size() && WordIs(t[k], "distinct"))
      k = NextSolid(t, k + 1);
    if (k >= t.size() || !WordIs(t[k], "top"))
      continue;
    const qsizetype num = NextSolid(t, k + 1);
    if (num >= t.size() || t[num].kind != Token::Number)
      continue;
    const QString limit = t[num].text;
    // Find where this SELECT ends.
    int depth = 0;
    qsizetype end = t.size();
    for (qsizetype j = num + 1; j < t.size(); ++j) {
      if (t[j].kind != Token::Other)
        continue;
      if (t[j].text == u"("_s) {
        ++depth;
      } else if (t[j].text == u")"_s) {
        if (depth == 0) {
          end = j;
          break;
        }
        --depth;
      } else if (t[j].text == u";"_s && depth == 0) {
        end = j;
        break;
      }
    }
    t.insert(end, {Token::Other, u" LIMIT "_s + limit + u' '});
    t[k].text.clear();
    t[num].text.clear();
  }
}

// The paged query's NOT IN (SELECT TOP ...) form, which SQLite would answer by
// building the whole excluded set, becomes the same rows by LIMIT and OFFSET.
// Both halves must read the same table, condition and order; the order is a
// plain list of columns and directions.
QString RewritePageQuery(const QString &jet) {
  static const QRegularExpression page(
      uR"(^\s*SELECT\s+TOP\s+(\d+)\s+\*\s+FROM\s+(\w+)\s+WHERE\s+\((.*)\)\s+and\s+\(id\s+NOT\s+IN\s*\(\s*SELECT\s+TOP\s+(\d+)\s+id\s+FROM\s+(\w+)\s+where\s+\((.*)\)\s+ORDER\s+BY\s+([\w\s,]+?)\s*\)\s*\)\s*ORDER\s+BY\s+([\w\s,]+?)\s*$)"_s,
      QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
  const QRegularExpressionMatch m = page.match(jet);
  if (!m.hasMatch() || m.captured(2).compare(m.captured(5), Qt::CaseInsensitive) != 0 ||
      m.captured(3) != m.captured(6) ||
      m.captured(7).simplified().compare(m.captured(8).simplified(), Qt::CaseInsensitive) != 0)
    return jet;
  return u"SELECT * FROM %1 WHERE (%2) ORDER BY %3 LIMIT %4 OFFSET %5"_s.arg(
      m.captured(2), m.captured(3), m.captured(8).simplified(), m.captured(1), m.captured(4));
}

// cdate(a - b): the difference of two dates, which SQLite can't take of the
// stored text, becomes jet_cdate(jet_datesub(a, b)). Worked on tokens, so the
// same characters inside a quoted value stay what they are.
void RewriteDateDifference(QList<Token> &t) {
  const auto operand = [&](qsizetype i) {
    return i < t.size() && (t[i].kind == Token::Word || t[i].kind == Token::Ident ||
                            t[i].kind == Token::String || t[i].kind == Token::Number);
  };
  const auto other = [&](qsizetype i, QStringView text) {
    return i < t.size() && t[i].kind == Token::Other && t[i].text == text;
  };
  for (qsizetype i = 0; i < t.size(); ++i) {
    if (!WordIs(t[i], "cdate"))
      continue;
    const qsizetype open = NextSolid(t, i + 1);
    const qsizetype a = NextSolid(t, open + 1);
    const qsizetype minus = NextSolid(t, a + 1);
    const qsizetype b = NextSolid(t, minus + 1);
    const qsizetype close = NextSolid(t, b + 1);
    if (!other(open, u"(") || !operand(a) || !other(minus, u"-") || !operand(b) ||
        !other(close, u")"))
      continue;
    t[i].text = u"jet_cdate"_s;
    t[open].text = u"(jet_datesub("_s;
    t[minus].text = u","_s;
    t[close].text = u"))"_s;
  }
}
} // namespace

QString TranslateJet(const QString &jetText, SqlTarget target) {
  const bool pg = target == SqlTarget::Postgres;
  const QString jet = RewritePageQuery(jetText);
  QList<Token> t = Tokenize(jet);
  // Before the date difference is rewritten: that merges parentheses into
  // longer tokens, and the pattern is found by counting them.
  if (pg)
    RewriteFormatPatterns(t);
  RewriteDateDifference(t);
  const qsizetype first = NextSolid(t, 0);
  const bool ddl = first < t.size() && (WordIs(t[first], "create") || WordIs(t[first], "alter"));

  for (qsizetype i = 0; i < t.size(); ++i) {
    Token &tok = t[i];
    if (tok.kind == Token::Other && tok.text == u"&"_s) {
      tok.text = u"||"_s;
    } else if (pg && tok.kind == Token::Ident) {
      tok.text = PostgresName(tok.text);
    } else if (pg && tok.kind == Token::Word && !ddl &&
               (WordIs(tok, "like") || WordIs(tok, "true") || WordIs(tok, "false"))) {
      // The file's like ignores case; the server's needs ilike for that, which
      // costs it a good deal more. A pattern without a letter (numbers, the
      // empty '%%' of an unused box) has no case to ignore.
      // Only a pattern that is one string: one joined with more may have any.
      const qsizetype next = NextSolid(t, i + 1);
      const qsizetype after = next < t.size() ? NextSolid(t, next + 1) : t.size();
      const bool joined = after < t.size() && (t[after].text == u"&"_s ||
                                               t[after].text == u"||"_s || t[after].text == u"+"_s);
      const bool caseless = next < t.size() && t[next].kind == Token::String && !joined &&
                            std::none_of(t[next].text.cbegin(), t[next].text.cend(),
                                         [](QChar c) { return c.isLetter(); });
      tok.text = WordIs(tok, "like") ? (caseless ? u"like"_s : u"ilike"_s)
                 : WordIs(tok, "true") ? u"1"_s
                                       : u"0"_s;
    } else if (tok.kind == Token::Word) {
      const qsizetype next = NextSolid(t, i + 1);
      const bool call = next < t.size() && t[next].text == u"("_s;
      if (call) {
        const QString name = FunctionName(tok.text);
        if (!name.isEmpty())
          tok.text = name;
      }
      if (ddl) {
        if (WordIs(tok, "identity") && call) {
          // "integer IDENTITY (1,1) [PRIMARY KEY]" is SQLite's auto-numbered key.
          qsizetype close = next;
          while (close < t.size() && t[close].text != u")"_s)
            t[close++].text.clear();
          if (close < t.size())
            t[close].text.clear();
          tok.text = pg ? u"GENERATED BY DEFAULT AS IDENTITY PRIMARY KEY"_s
                        : u"PRIMARY KEY AUTOINCREMENT"_s;
          qsizetype after = NextSolid(t, close + 1);
          if (after < t.size() && WordIs(t[after], "primary")) {
            const qsizetype key = NextSolid(t, after + 1);
            if (key < t.size() && WordIs(t[key], "key")) {
              t[after].text.clear();
              t[key].text.clear();
            }
          }
        } else if (pg && call && (WordIs(tok, "varchar") || WordIs(tok, "char"))) {
          // SQLite never held a text to its declared length; a server would
          // refuse a longer caller number, and a call record must still be
          // stored. So text of any length, as before.
          qsizetype close = next;
          while (close < t.size() && t[close].text != u")"_s)
            t[close++].text.clear();
          if (close < t.size())
            t[close].text.clear();
          tok.text = u"text"_s;
        } else if (!call || WordIs(tok, "date")) {
          const QString type = pg ? PostgresColumnType(tok.text) : ColumnType(tok.text);
          if (!type.isEmpty())
            tok.text = type;
        }
      }
    }
  }
  if (ddl) {
    // A table constraint naming the key again would be a second primary key.
    for (qsizetype i = 0; i < t.size(); ++i) {
      if (!WordIs(t[i], "constraint"))
        continue;
      const qsizetype name = NextSolid(t, i + 1);
      const qsizetype primary = NextSolid(t, name + 1);
      if (primary >= t.size() || !WordIs(t[primary], "primary"))
        continue;
      qsizetype j = primary;
      while (j < t.size() && t[j].text != u")"_s)
        t[j++].text.clear();
      if (j < t.size())
        t[j].text.clear();
      t[i].text.clear();
      t[name].text.clear();
      // and the comma before it
      for (qsizetype k = i - 1; k >= 0; --k) {
        if (t[k].kind == Token::Space)
          continue;
        if (t[k].text == u","_s)
          t[k].text.clear();
        break;
      }
    }
  }
  MoveTopToLimit(t);

  QString out;
  for (const Token &tok : t)
    out += tok.text;
  return out;
}

QList<JetDatePart> ParseJetDatePattern(const QString &format) {
  QList<JetDatePart> parts;
  bool afterHour = false;
  for (qsizetype i = 0; i < format.size();) {
    const QChar c = format[i].toLower();
    qsizetype run = 1;
    while (i + run < format.size() && format[i + run].toLower() == c)
      ++run;
    JetDatePart::Field field = JetDatePart::Text;
    if (c == u'y')
      field = JetDatePart::Year;
    else if (c == u'm')
      field = afterHour ? JetDatePart::Minute : JetDatePart::Month;
    else if (c == u'n')
      field = JetDatePart::Minute;
    else if (c == u'd')
      field = JetDatePart::Day;
    else if (c == u'h')
      field = JetDatePart::Hour;
    else if (c == u's')
      field = JetDatePart::Second;
    parts.append({field, run, field == JetDatePart::Text ? format.mid(i, run) : QString()});
    // An hour makes the next "m" minutes; a year or a day ends that, while
    // seconds, minutes and text leave it as it was.
    if (c == u'h')
      afterHour = true;
    else if (c == u'y' || c == u'd')
      afterHour = false;
    i += run;
  }
  return parts;
}

QString StorableText(const QString &value) {
  QString v = value;
  v.remove(QChar(0));
  // Half of a character outside the basic plane: the engine would read the
  // next unit (a closing quote, say) as its other half and break the statement.
  for (qsizetype i = 0; i < v.size(); ++i) {
    const bool pairedHigh = v[i].isHighSurrogate() && i + 1 < v.size() && v[i + 1].isLowSurrogate();
    if (pairedHigh)
      ++i;
    else if (v[i].isSurrogate())
      v[i] = QChar::ReplacementCharacter;
  }
  return v;
}

QString SqlText(const QString &value) {
  return StorableText(value).replace(u'\'', u"''"_s);
}

QString SqlTextDq(const QString &value) {
  return StorableText(value).replace(u'"', u"\"\""_s);
}

qsizetype StoredLength(const QString &text) {
  qsizetype n = 0;
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (!(text[i].isLowSurrogate() && i > 0 && text[i - 1].isHighSurrogate()))
      ++n;
  }
  return n;
}

bool HasSecondStatement(const QString &sql) {
  // The engine ends a statement at a NUL; what followed it would be lost unseen.
  if (sql.contains(QChar(0)))
    return true;
  QChar quote;
  for (qsizetype i = 0; i < sql.size(); ++i) {
    const QChar c = sql[i];
    if (!quote.isNull()) {
      if (c == quote)
        quote = QChar();
      continue;
    }
    if (c == u'\'' || c == u'"') {
      quote = c;
    } else if (c == u';') {
      if (!QStringView(sql).mid(i + 1).trimmed().isEmpty())
        return true;
    }
  }
  return false;
}
