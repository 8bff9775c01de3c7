// One datagram from the exchange's address: status records into the device
// table and its panels, call records into the store.
#include "FuzzConsole.h"
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "devices/UDPServerMain.h"

#include <QCoreApplication>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  FuzzConsole();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzConsoleOpenSession();
  TUDPMainForm &udp = *FuzzConsole().Udp();
  udp.SetLoggedIn(true);
  udp.HandleDatagram(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)),
                     QStringLiteral("127.0.0.1"));
  QCoreApplication::processEvents();
  FuzzHome::ForgetLog();
  return 0;
}
