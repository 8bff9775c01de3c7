#pragma once

#include <QByteArray>
#include <QString>

// JSON written straight as text, for answers too large to build as QJsonObject
// trees first: 3072 rooms cost a tree tens of milliseconds, the text a few.
// The writer puts the commas; the caller keeps the nesting right.
class TJsonText {
public:
  explicit TJsonText(qsizetype reserve = 256) { m_out.reserve(reserve); }

  TJsonText &BeginObject() { return Open('{'); }
  TJsonText &EndObject() { return Close('}'); }
  TJsonText &BeginArray() { return Open('['); }
  TJsonText &EndArray() { return Close(']'); }
  // A member's name; its value follows.
  TJsonText &Key(const char *name);
  TJsonText &String(const QString &text);
  TJsonText &Number(qint64 n);
  TJsonText &Bool(bool b);
  TJsonText &Null();

  const QByteArray &Text() const { return m_out; }

private:
  TJsonText &Open(char c);
  TJsonText &Close(char c);
  void Value();

  QByteArray m_out;
  bool m_first = true; // no comma before the next value or member
};
