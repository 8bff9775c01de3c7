// The modules below the screens must build without a display: no file outside
// src/ui and src/app may include a header of Qt's GUI, widget or media modules.
#include "common/TestHome.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLibraryInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QStringList kScreenModules{
    u"QtGui"_s,       u"QtWidgets"_s,       u"QtMultimedia"_s,   u"QtMultimediaWidgets"_s,
    u"QtOpenGL"_s,    u"QtOpenGLWidgets"_s, u"QtPrintSupport"_s, u"QtSvg"_s,
    u"QtSvgWidgets"_s};

// Every header name those modules install, e.g. "QWidget", "qpixmap.h".
QSet<QString> ScreenHeaders() {
  QSet<QString> names;
  const QString root = QLibraryInfo::path(QLibraryInfo::HeadersPath);
  for (const QString &module : kScreenModules) {
    const QDir dir(root + u'/' + module);
    for (const QString &entry : dir.entryList(QDir::Files))
      names.insert(entry);
  }
  return names;
}

QStringList Offences(const QString &file, const QSet<QString> &screenHeaders) {
  // An ordinary string: moc misreads a raw string that holds an include line.
  static const QRegularExpression include(u"^\\s*#\\s*include\\s*[<\"]([^>\"]+)[>\"]"_s,
                                          QRegularExpression::MultilineOption);
  QFile f(file);
  if (!f.open(QIODevice::ReadOnly))
    return {};
  QStringList found;
  for (const QRegularExpressionMatch &m : include.globalMatch(QString::fromUtf8(f.readAll()))) {
    const QString header = m.captured(1);
    const QString module = header.section(u'/', 0, 0);
    const QString name = header.section(u'/', -1);
    if ((header.contains(u'/') && kScreenModules.contains(module)) ||
        (!header.contains(u'/') && screenHeaders.contains(name)))
      found << header;
  }
  return found;
}
} // namespace

class BoundariesTest : public QObject {
  Q_OBJECT

private slots:
  void theScanKnowsWidgetHeaders() {
    const QSet<QString> headers = ScreenHeaders();
    QVERIFY(headers.contains(u"QWidget"_s));
    QVERIFY(headers.contains(u"QPixmap"_s));
    QVERIFY(!headers.contains(u"QString"_s));
  }

  void onlyScreensIncludeScreenHeaders() {
    const QSet<QString> headers = ScreenHeaders();
    const QString src = SourcePath(u"src"_s);
    QStringList offences;
    QDirIterator it(src, {u"*.h"_s, u"*.hpp"_s, u"*.cpp"_s}, QDir::Files,
                    QDirIterator::Subdirectories);
    int scanned = 0;
    while (it.hasNext()) {
      const QString file = it.next();
      const QString relative = file.mid(src.size() + 1);
      if (relative.startsWith(u"ui/"_s) || relative.startsWith(u"app/"_s))
        continue;
      ++scanned;
      for (const QString &header : Offences(file, headers))
        offences << relative + u" includes "_s + header;
    }
    QVERIFY(scanned > 0);
    QVERIFY2(offences.isEmpty(), qPrintable(offences.join(u"\n"_s)));
  }
};

QTEST_GUILESS_MAIN(BoundariesTest)
#include "tst_boundaries.moc"
