// Runs a fuzz target once over each file of the folders or files given, so the
// suite keeps every corpus input and every fixed fault's input passing without
// needing clang. A crash or hang fails the test as it would fail the fuzzer.
#include "FuzzTarget.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <cstdio>

int main(int argc, char **argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  QStringList files;
  for (int i = 1; i < argc; ++i) {
    const QString path = QString::fromLocal8Bit(argv[i]);
    if (QFileInfo(path).isDir()) {
      QDirIterator it(path, QDir::Files, QDirIterator::Subdirectories);
      while (it.hasNext())
        files << it.next();
    } else if (QFileInfo::exists(path)) {
      files << path;
    }
  }
  std::sort(files.begin(), files.end());
  for (const QString &path : files) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
      std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
      return 1;
    }
    const QByteArray bytes = file.readAll();
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.constData()),
                           size_t(bytes.size()));
  }
  std::printf("%lld inputs ran clean\n", static_cast<long long>(files.size()));
  return files.isEmpty() ? 1 : 0;
}
