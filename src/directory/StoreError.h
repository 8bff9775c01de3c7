#pragma once

#include <QString>

#include <stdexcept>

// A database statement that failed. Nothing in the store catches it: it ends the
// handler that ran the statement, and the application-wide handler shows its
// text to the operator while the console goes on.
class EDatabaseError : public std::runtime_error {
public:
  explicit EDatabaseError(const QString &message)
      : std::runtime_error(message.toUtf8().toStdString()), m_message(message) {}
  const QString &Message() const { return m_message; }

private:
  QString m_message;
};
