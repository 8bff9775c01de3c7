#pragma once

#include "app/ConsoleProcess.h"

// The whole console's logic as the program builds it (store, device table,
// event channel, window logics), once per process, with a session open so the
// handlers act as they do for a logged-in operator.
ConsoleProcess &FuzzConsole();
// Before each input: the session stands open again (a fuzzed packet may have
// closed it) and the exchange is 127.0.0.1.
void FuzzConsoleOpenSession();
