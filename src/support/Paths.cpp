#include "support/Paths.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace {
QString &AppPathStore() {
  static QString path;
  return path;
}

QString WithSlash(QString folder) {
  folder.replace(u'\\', u'/');
  if (!folder.endsWith(u'/'))
    folder += u'/';
  return folder;
}
} // namespace

QString AppPath() {
  return AppPathStore();
}

void SetAppPath(const QString &folder) {
  AppPathStore() = WithSlash(QDir(folder).absolutePath());
}

QString ResolveNoCase(const QString &folder, const QString &relative) {
  QString rel = relative;
  rel.replace(u'\\', u'/');
  const QStringList parts = rel.split(u'/', Qt::SkipEmptyParts);
  QString current = WithSlash(folder);
  for (qsizetype i = 0; i < parts.size(); ++i) {
    const QString &part = parts[i];
    const bool last = i == parts.size() - 1;
    QString found;
    if (QFileInfo::exists(current + part)) {
      found = part;
    } else {
      const QDir dir(current);
      const QStringList entries =
          dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
      for (const QString &entry : entries) {
        if (entry.compare(part, Qt::CaseInsensitive) == 0) {
          found = entry;
          break;
        }
      }
    }
    if (found.isEmpty()) {
      // Nothing matches from here on: keep the rest as spelled.
      return current + parts.mid(i).join(u'/');
    }
    current += found;
    if (!last)
      current += u'/';
  }
  return current;
}

QString AppFile(const QString &relative) {
  return ResolveNoCase(AppPath(), relative);
}

namespace {
QString &ShippedRootStore() {
  static QString root;
  return root;
}
} // namespace

void SetShippedRoot(const QString &root) {
  ShippedRootStore() = root;
}

QString AppFileOrShipped(const QString &relative) {
  const QString home = AppFile(relative);
  if (QFileInfo::exists(home) || ShippedRootStore().isEmpty())
    return home;
  const QString shipped = ResolveNoCase(ShippedRootStore(), relative);
  return QFileInfo::exists(shipped) ? shipped : home;
}

QStringList SeedHome(const QString &shippedRoot, const QString &home, QStringList *failed) {
  QStringList copied;
  const QString root = WithSlash(shippedRoot);
  QDirIterator it(shippedRoot, QDir::Files, QDirIterator::Subdirectories);
  while (it.hasNext()) {
    const QString source = it.next();
    const QString relative = source.mid(root.size());
    const QString target = ResolveNoCase(home, relative);
    if (QFileInfo::exists(target))
      continue;
    const bool ok = QDir().mkpath(QFileInfo(target).absolutePath()) && QFile::copy(source, target);
    if (ok) {
      // Files copied out of the program's resources arrive read-only; the
      // operator and the console must be able to change them.
      QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                        QFile::ReadOther);
      copied << relative;
    } else if (failed) {
      *failed << relative;
    }
  }
  return copied;
}

QString SettingsFilePath() {
  return AppFile(QStringLiteral("ini/sys.ini"));
}
