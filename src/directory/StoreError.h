#pragma once

#include "support/Shell.h"

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

// A statement that could not run because the shared database server is away.
// The operator was told once when it went; each operation it ends is logged.
class EStoreAway : public EDatabaseError, public ToldError {
public:
  using EDatabaseError::EDatabaseError;
};
