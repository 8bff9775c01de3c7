// The local console device's text stream: display bytes, lamps, hook state and
// clock as hex fields.
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "link/DeviceLink.h"
#include "link/Display.h"

#include <QDateTime>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  TDisplay display;
  TDeviceLink device(display);
  // The device speaks single-byte text; every byte reaches the parser as one character.
  const QString text = QString::fromLatin1(reinterpret_cast<const char *>(data), qsizetype(size));
  if (device.Parse(text))
    device.AfterParse(QDateTime(QDate(2026, 11, 23), QTime(8, 0)));
  for (int lamp = 0; lamp < 8; ++lamp)
    device.TrunkLampMode(lamp);
  device.LedTimerTimer();
  FuzzHome::ForgetLog();
  return 0;
}
