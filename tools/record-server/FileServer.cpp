#include "FileServer.h"

#include "HttpAnswer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHttpServerRequest>
#include <QStringDecoder>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace RecordFiles {

QString FileForPath(const QString &root, const QByteArray &encodedPath) {
  const QByteArray raw = QByteArray::fromPercentEncoding(encodedPath);
  if (raw.contains('\0') || raw.contains('\\'))
    return {};
  QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
  const QString path = utf8.decode(raw);
  if (utf8.hasError())
    return {};
  const QStringList segments = path.split(u'/', Qt::SkipEmptyParts);
  if (segments.isEmpty())
    return {};
  for (const QString &segment : segments) {
    if (segment == u"."_s || segment == u".."_s)
      return {};
  }
  QString base = QFileInfo(root).canonicalFilePath();
  if (base.isEmpty())
    return {};
  if (!base.endsWith(u'/'))
    base += u'/';
  const QString real = QFileInfo(base + segments.join(u'/')).canonicalFilePath();
  if (real.isEmpty() || !real.startsWith(base) || !QFileInfo(real).isFile())
    return {};
  return real;
}

namespace {

// A count of bytes from the start of `text`; -1 when it isn't one.
qint64 Offset(QByteArrayView text) {
  if (text.isEmpty() || text.size() > 18)
    return -1;
  for (const char c : text) {
    if (c < '0' || c > '9')
      return -1;
  }
  return text.toLongLong();
}

} // namespace

ByteRange ParseRange(const QByteArray &header, qint64 size) {
  const QByteArray asked = header.trimmed();
  constexpr QByteArrayView kUnit = "bytes=";
  if (!asked.startsWith(kUnit) || asked.contains(','))
    return {};
  const QByteArrayView range = QByteArrayView(asked).sliced(kUnit.size()).trimmed();
  const qsizetype dash = range.indexOf('-');
  if (dash < 0)
    return {};
  const QByteArrayView from = range.first(dash).trimmed();
  const QByteArrayView to = range.sliced(dash + 1).trimmed();
  ByteRange r{ByteRange::Kind::Part, 0, size - 1};
  if (from.isEmpty()) { // the last n bytes
    const qint64 n = Offset(to);
    if (n < 0)
      return {};
    if (n == 0 || size == 0)
      return {ByteRange::Kind::Unsatisfiable};
    r.First = std::max<qint64>(0, size - n);
    return r;
  }
  r.First = Offset(from);
  const qint64 last = to.isEmpty() ? std::max(size - 1, r.First) : Offset(to);
  if (r.First < 0 || last < r.First)
    return {};
  if (r.First >= size)
    return {ByteRange::Kind::Unsatisfiable};
  r.Last = std::min(last, size - 1);
  return r;
}

} // namespace RecordFiles

namespace {

// The request's path for the log: decoded, one line, not too long.
QString LoggedPath(const QByteArray &encodedPath) {
  QString path = QString::fromUtf8(QByteArray::fromPercentEncoding(encodedPath)).left(300);
  for (QChar &c : path) {
    if (c.unicode() < 0x20 || c.unicode() == 0x7f)
      c = u'?';
  }
  return path;
}

QByteArray ContentTypeOf(const QString &file) {
  const QString suffix = QFileInfo(file).suffix().toLower();
  if (suffix == u"wav"_s)
    return "audio/wav";
  if (suffix == u"mp3"_s)
    return "audio/mpeg";
  if (suffix == u"ogg"_s)
    return "audio/ogg";
  return "application/octet-stream";
}

} // namespace

bool RecordFileServer::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) {
  using RecordFiles::ByteRange;
  const bool head = request.method() == QHttpServerRequest::Method::Head;
  const QByteArray path = request.url().path(QUrl::FullyEncoded).toUtf8();
  HttpAnswer::Answer answer;
  answer.HeadOnly = head;
  answer.Headers << qMakePair(QByteArray("Accept-Ranges"), QByteArray("bytes"));
  QString note;

  const QString file = RecordFiles::FileForPath(Root, path);
  QFile data(file);
  if (!head && request.method() != QHttpServerRequest::Method::Get) {
    answer.Status = 405;
    answer.Headers << qMakePair(QByteArray("Allow"), QByteArray("GET, HEAD"));
  } else if (file.isEmpty() || !data.open(QIODevice::ReadOnly)) {
    answer.Status = 404;
  } else if (data.size() > RecordFiles::kMaxFileBytes) {
    answer.Status = 404;
    note = u" (over %1 bytes, not served)"_s.arg(RecordFiles::kMaxFileBytes);
  } else {
    const qint64 size = data.size();
    const ByteRange range = RecordFiles::ParseRange(request.value("range"), size);
    answer.ContentType = ContentTypeOf(file);
    if (range.Is == ByteRange::Kind::Unsatisfiable) {
      answer.Status = 416;
      answer.ContentType.clear();
      answer.Headers << qMakePair(QByteArray("Content-Range"),
                                  "bytes */" + QByteArray::number(size));
    } else if (range.Is == ByteRange::Kind::Part) {
      answer.Status = 206;
      data.seek(range.First);
      answer.Body = data.read(range.Last - range.First + 1);
      answer.Headers << qMakePair(QByteArray("Content-Range"),
                                  "bytes " + QByteArray::number(range.First) + '-' +
                                      QByteArray::number(range.Last) + '/' +
                                      QByteArray::number(size));
    } else {
      answer.Body = data.readAll();
    }
  }
  const char *method = head                                                  ? "HEAD"
                       : request.method() == QHttpServerRequest::Method::Get ? "GET"
                                                                             : "other";
  qInfo().noquote() << u"%1 %2 %3 %4 bytes from %5%6"_s.arg(
      QString::fromLatin1(method), LoggedPath(path), QString::number(answer.Status),
      QString::number(answer.Body.size()), request.remoteAddress().toString(), note);
  HttpAnswer::Write(socket, answer, HttpAnswer::WantsClose(request));
  return true;
}

void RecordFileServer::missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) {
  HttpAnswer::Write(socket, {404}, HttpAnswer::WantsClose(request));
}
