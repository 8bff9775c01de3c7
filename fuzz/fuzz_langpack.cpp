// A language pack: any bytes load, and every text formats with values without
// reading past its conversions.
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "support/LanguagePack.h"

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzHome::Write(QStringLiteral("ini/lang_fuzz.lan"),
                  QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
  TLanguage_Pack pack;
  pack.LoadLanguageFile(FuzzHome::Path() + QStringLiteral("ini/lang_fuzz.lan"));
  // The texts that take values, and any text used as a format.
  for (int key : {0, 331, 364, 394, 727, 1000})
    FormatText(pack.Str(key), {QStringLiteral("8001"), 12, -3, 2.5});
  FormatText(pack.Str(1), {});
  return 0;
}
