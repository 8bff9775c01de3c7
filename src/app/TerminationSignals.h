#pragma once

#include <QObject>

// SIGTERM, SIGINT and SIGHUP must close the console the silent way, so that no
// setting is lost when the desktop session or a service manager stops it. A
// signal handler may do almost nothing, so it only writes a byte to a pipe that
// the event loop watches.
class TerminationSignals : public QObject {
  Q_OBJECT

public:
  // Call as early as possible, before the application object exists: a signal
  // that comes during start-up waits in the pipe until the event loop runs.
  static bool Install();

  explicit TerminationSignals(QObject *parent = nullptr);

signals:
  void terminationRequested(int signalNumber);
};
