#include "app/CopyStoreCommand.h"

#include "app/CommandLine.h"
#include "directory/StoreCopy.h"
#include "support/Paths.h"
#include "support/Settings.h"

#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;

int CopyStoreCommand(const TCommandLine &cl) {
  // The home only matters for "pg:", the server its sys.ini names.
  SetAppPath(cl.Home.isEmpty() ? QCoreApplication::applicationDirPath() : cl.Home);
  LoadConfig(SysConfig());
  QString error;
  const auto from = ParseStorePlace(cl.CopyFrom, SysConfig(), &error);
  const auto to = from ? ParseStorePlace(cl.CopyTo, SysConfig(), &error) : std::nullopt;
  if (!from || !to) {
    std::fprintf(stderr, "trunkdesk: --copy-store: %s\n", qUtf8Printable(error));
    return 1;
  }
  TStoreCopyOptions options;
  options.Replace = cl.Replace;
  options.Progress = [](const QString &line) {
    std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
  };
  error = CopyStore(*from, *to, options);
  if (!error.isEmpty()) {
    std::fprintf(stderr, "trunkdesk: %s\n", qUtf8Printable(error));
    return 1;
  }
  std::printf("Done: %s now holds a copy of %s\n", qUtf8Printable(to->Describe()),
              qUtf8Printable(from->Describe()));
  return 0;
}
