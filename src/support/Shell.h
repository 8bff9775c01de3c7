#pragma once

#include <QString>

#include <exception>

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
  // A save-file dialog starting at a suggested path; an empty result means
  // cancelled. A shell that can't ask saves nothing.
  virtual QString ChooseSaveFile(const QString &filter, const QString &suggestedPath) {
    (void)filter;
    (void)suggestedPath;
    return QString();
  }
  // The desktop's "open" of a URL (mailto:, http://, ...) or a program with
  // parameters. Nothing here waits for it.
  virtual void Open(const QString &target, const QString &parameters) = 0;
  // A hint window at a point of the screen, gone after `ms`.
  virtual void HintAt(const QString &title, const QString &text, int ms, int x, int y) = 0;
  // The ring of an incoming call: one sound, started and stopped.
  virtual void RingStart() = 0;
  virtual void RingStop() = 0;
  // The ring sound played through once, for an alarm; a call's ring goes on
  // untouched. A shell without sound does nothing.
  virtual void RingOnce() {}
};

// The shell without a person, there until one is installed and for programs
// that have none (benchmarks, fuzzing): everything said goes to the log, every
// question is answered no, nothing is opened or rung.
class LogShell : public Shell {
public:
  void Balloon(const QString &title, const QString &text, int seconds, BalloonIcon icon) override;
  void Message(MessageKind kind, const QString &text) override;
  bool Question(const QString &text) override;
  QString ChooseOpenFile(const QString &filter, const QString &startPath) override;
  void Open(const QString &target, const QString &parameters) override;
  void HintAt(const QString &title, const QString &text, int ms, int x, int y) override;
  void RingStart() override {}
  void RingStop() override {}
};

// Marks an error the operator has already been told about in other words (the
// shared database went away: one message for the spell, not one per click).
// The handler logs such an error and shows nothing.
class ToldError {
public:
  virtual ~ToldError() = default;
};

// The application-wide handler: an error that ended an operation is shown to the
// operator as an error message and logged, and the console goes on.
void ApplicationHandleException(const std::exception &error);

// Runs an operation the way the console runs every handler: an error inside it
// ends it and goes to ApplicationHandleException.
template <typename F> void RunGuarded(F &&operation) {
  try {
    operation();
  } catch (const std::exception &error) {
    ApplicationHandleException(error);
  }
}

// The process-wide shell. Until one is installed, a quiet one that writes to the
// log and answers "no" stands in, so the logic never meets a null pointer.
Shell &TheShell();
// Installs a shell (not owned); nullptr restores the quiet one.
void SetShell(Shell *shell);
