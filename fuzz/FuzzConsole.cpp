#include "FuzzConsole.h"

#include "FuzzHome.h"

#include "link/SysParam.h"
#include "support/Settings.h"

#include <cstdlib>

ConsoleProcess &FuzzConsole() {
  // Never destroyed, like the application object (see FuzzHome).
  static ConsoleProcess *console = [] {
    auto *process = new ConsoleProcess;
    if (!process->Start(FuzzHome::Path(), false, 0))
      std::abort();
    return process;
  }();
  return *console;
}

void FuzzConsoleOpenSession() {
  FuzzConsole();
  SysConfig().Host = QStringLiteral("127.0.0.1");
  SysParam().MyID = 2;
}
