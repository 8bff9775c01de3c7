#include "support/TextFile.h"

#include "support/TextCodec.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

bool LooksLikeText(const QString &decoded) {
  qsizetype bad = 0;
  for (const QChar c : decoded) {
    const char16_t u = c.unicode();
    if ((u < 0x20 && u != u'\t' && u != u'\n' && u != u'\r' && u != u'\f') || u == 0x7f ||
        u == QChar::ReplacementCharacter)
      ++bad;
  }
  return bad * 10 <= decoded.size();
}

TextFileStatus ReadTextFile(const QString &path, QByteArray *bytes) {
  bytes->clear();
  const QFileInfo info(path);
  if (!info.exists())
    return TextFileStatus::Missing;
  if (info.isDir())
    return TextFileStatus::Unreadable;
  if (info.size() > kMaxTextFileBytes)
    return TextFileStatus::TooLarge;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly))
    return TextFileStatus::Unreadable;
  // The size is asked again while reading: the file may be a device or still growing.
  QByteArray content = file.read(kMaxTextFileBytes + 1);
  if (content.size() > kMaxTextFileBytes)
    return TextFileStatus::TooLarge;
  if (!LooksLikeText(DecodeFileText(content)))
    return TextFileStatus::NotText;
  *bytes = std::move(content);
  return TextFileStatus::Read;
}

QString TextFileProblem(TextFileStatus status, const QString &path) {
  switch (status) {
  case TextFileStatus::TooLarge:
    return u"%1 is larger than 1 MB and was not read"_s.arg(QFileInfo(path).fileName());
  case TextFileStatus::NotText:
    return u"%1 is not a text file and was not read"_s.arg(QFileInfo(path).fileName());
  case TextFileStatus::Unreadable:
    return u"%1 cannot be read"_s.arg(QFileInfo(path).fileName());
  default:
    return QString();
  }
}

QString ReplacementPath(const QString &path) {
  return path + u".new"_s;
}
