#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

// A request body read as one JSON object with a fixed set of fields. Each read
// checks its field's type and range; the first thing wrong is kept as the
// message of the 400, and the reads after it answer their fallback.
class TApiBody {
public:
  TApiBody(const QByteArray &body, const QStringList &fields);

  bool Ok() const { return m_error.isEmpty(); }
  const QString &Error() const { return m_error; }
  bool Has(const QString &name) const { return m_object.contains(name); }

  QString Text(const QString &name, int maxLength, bool required = false);
  int Integer(const QString &name, int min, int max, int fallback, bool required = false);
  bool Boolean(const QString &name, bool fallback);
  QJsonArray Array(const QString &name, int maxSize);
  // Sets the message when none is set yet.
  void Fail(const QString &message);

private:
  QJsonObject m_object;
  QString m_error;
};

// Whole numbers of the API's query strings and JSON: -1 for anything else.
int WholeNumber(const QJsonValue &value);
