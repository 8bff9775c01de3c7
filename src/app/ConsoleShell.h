#pragma once

#include "support/Shell.h"

// The shell while no window of the console stands: what would be a dialog or a
// balloon goes to standard error and the log, and questions are answered "no",
// so an unattended start never waits for a person who isn't there.
class ConsoleShell final : public Shell {
public:
  void Balloon(const QString &title, const QString &text, int seconds, BalloonIcon icon) override;
  void Message(MessageKind kind, const QString &text) override;
  bool Question(const QString &text) override;
  QString ChooseOpenFile(const QString &filter, const QString &startPath) override;
  void Open(const QString &target, const QString &parameters) override;
  void HintAt(const QString &title, const QString &text, int ms, int x, int y) override;
  void RingStart() override;
  void RingStop() override;
};
