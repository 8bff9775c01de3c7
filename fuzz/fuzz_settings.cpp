// sys.ini as the console reads it at start and writes it at close.
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "support/Settings.h"

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzHome::Write(QStringLiteral("ini/sys.ini"),
                  QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
  TSysConfig config;
  LoadConfig(config);
  SaveConfig(config);
  TSysConfig again;
  LoadConfig(again);
  FuzzHome::ForgetLog();
  return 0;
}
