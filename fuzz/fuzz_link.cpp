// Bytes from the exchange's TCP link: each read of up to the longest block goes
// through the arrival check into the ring, and from its slot through the walk,
// the dispatcher and every packet handler, with the real store behind them.
#include "FuzzConsole.h"
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "console/Main_Form.h"
#include "link/Public_Unit.h"

#include <QCoreApplication>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  FuzzConsole();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzConsoleOpenSession();
  TExchangeLink &link = FuzzConsole().Main()->Link();
  const char *bytes = reinterpret_cast<const char *>(data);
  for (size_t at = 0; at < size; at += size_t(kMaxReadLength)) {
    const int length = int(qMin<size_t>(size - at, size_t(kMaxReadLength)));
    const int slot = link.EnqueueRead(bytes + at, length);
    if (slot >= 0)
      link.Synchro_ProcessSocketDatas(slot);
  }
  // Handlers that post their work (store writes, refreshes) run it now.
  QCoreApplication::processEvents();
  FuzzHome::ForgetLog();
  return 0;
}
