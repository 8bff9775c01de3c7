// The INI reader and writer behind sys.ini and the language packs: any text
// reads, every key reads back, and a write keeps the other lines.
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "support/IniFile.h"
#include "support/TextCodec.h"

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
  IniFile ini;
  ini.SetText(DecodeFileText(bytes));
  ini.ReadString(QStringLiteral("host"), QStringLiteral("IP"), QString());
  ini.ReadInteger(QStringLiteral("System"), QStringLiteral("Debug"), 0);
  ini.ReadBool(QStringLiteral("Lang"), QStringLiteral("LangID"), false);
  const qsizetype before = ini.LineCount();
  ini.WriteString(QStringLiteral("host"), QStringLiteral("IP"), QStringLiteral("10.0.0.1"));
  ini.WriteInteger(QStringLiteral("New section"), QStringLiteral("Key"), -1);
  // A write changes or adds its own lines only.
  if (ini.LineCount() < before ||
      ini.ReadString(QStringLiteral("host"), QStringLiteral("IP"), QString()) !=
          QStringLiteral("10.0.0.1"))
    std::abort();
  IniFile again;
  again.SetText(ini.Text());
  if (again.ReadInteger(QStringLiteral("New section"), QStringLiteral("Key"), 0) != -1)
    std::abort();
  return 0;
}
