#pragma once

#include <QString>

// What the logic asks of the person at the desk. The screens implement it with
// real dialogs, the tray and sound; tests use a recording fake. Nothing below the
// screens shows anything except through here.
enum class BalloonIcon { None = 0, Info = 1, Warning = 2, Error = 3 };
enum class MessageKind { Information, Warning, Error };

class Shell {
public:
  virtual ~Shell() = default;

  // A tray balloon; the console uses 10 seconds as a rule.
  virtual void Balloon(const QString &title, const QString &text, int seconds,
                       BalloonIcon icon) = 0;
  // A message the operator must acknowledge.
  virtual void Message(MessageKind kind, const QString &text) = 0;
  // A yes/no question; true for yes.
  virtual bool Question(const QString &text) = 0;
  // An open-file dialog; an empty result means cancelled.
  virtual QString ChooseOpenFile(const QString &filter, const QString &startPath) = 0;
};

// The process-wide shell. Until one is installed, a quiet one that writes to the
// log and answers "no" stands in, so the logic never meets a null pointer.
Shell &TheShell();
// Installs a shell (not owned); nullptr restores the quiet one.
void SetShell(Shell *shell);
