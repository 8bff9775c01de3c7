#include "api/ApiBody.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <cmath>

using namespace Qt::StringLiterals;

TApiBody::TApiBody(const QByteArray &body, const QStringList &fields) {
  QJsonParseError error{};
  const QJsonDocument doc = QJsonDocument::fromJson(body, &error);
  if (error.error != QJsonParseError::NoError) {
    Fail(u"body is not JSON: %1 at %2"_s.arg(error.errorString()).arg(error.offset));
    return;
  }
  if (!doc.isObject()) {
    Fail(u"body must be a JSON object"_s);
    return;
  }
  m_object = doc.object();
  // A misspelt field would otherwise be ignored and the caller never know.
  for (auto it = m_object.begin(); it != m_object.end(); ++it) {
    if (!fields.contains(it.key())) {
      Fail(u"unknown field \"%1\""_s.arg(it.key().left(40)));
      return;
    }
  }
}

void TApiBody::Fail(const QString &message) {
  if (m_error.isEmpty())
    m_error = message;
}

QString TApiBody::Text(const QString &name, int maxLength, bool required) {
  const QJsonValue v = m_object.value(name);
  if (v.isUndefined()) {
    if (required)
      Fail(u"\"%1\" is required"_s.arg(name));
    return {};
  }
  if (!v.isString()) {
    Fail(u"\"%1\" must be a string"_s.arg(name));
    return {};
  }
  const QString text = v.toString();
  if (text.size() > maxLength) {
    Fail(u"\"%1\" is longer than %2 characters"_s.arg(name).arg(maxLength));
    return {};
  }
  return text;
}

int TApiBody::Integer(const QString &name, int min, int max, int fallback, bool required) {
  const QJsonValue v = m_object.value(name);
  if (v.isUndefined()) {
    if (required)
      Fail(u"\"%1\" is required"_s.arg(name));
    return fallback;
  }
  const int n = WholeNumber(v);
  if (n < min || n > max) {
    Fail(u"\"%1\" must be a whole number from %2 to %3"_s.arg(name).arg(min).arg(max));
    return fallback;
  }
  return n;
}

bool TApiBody::Boolean(const QString &name, bool fallback) {
  const QJsonValue v = m_object.value(name);
  if (v.isUndefined())
    return fallback;
  if (!v.isBool()) {
    Fail(u"\"%1\" must be true or false"_s.arg(name));
    return fallback;
  }
  return v.toBool();
}

QJsonArray TApiBody::Array(const QString &name, int maxSize) {
  const QJsonValue v = m_object.value(name);
  if (v.isUndefined())
    return {};
  if (!v.isArray() || v.toArray().size() > maxSize) {
    Fail(u"\"%1\" must be a list of at most %2"_s.arg(name).arg(maxSize));
    return {};
  }
  return v.toArray();
}

int WholeNumber(const QJsonValue &value) {
  if (!value.isDouble())
    return -1;
  const double d = value.toDouble();
  if (!std::isfinite(d) || d != std::floor(d) || d < 0 || d > 2147483647.0)
    return -1;
  return int(d);
}
