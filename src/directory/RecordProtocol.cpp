#include "directory/RecordProtocol.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace RecordProtocol {

QString QueryTarget(const QString &host, quint16 port) {
  return u"http://%1:%2/bin"_s.arg(host).arg(port);
}

QByteArray EncodeQuery(const QString &statement, const QVariantMap &params) {
  QJsonObject body;
  body.insert(u"version"_s, kVersion);
  body.insert(u"statement"_s, statement);
  body.insert(u"params"_s, QJsonObject::fromVariantMap(params));
  return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

namespace {
QString CellText(const QJsonValue &cell) {
  switch (cell.type()) {
  case QJsonValue::String:
    return cell.toString();
  case QJsonValue::Double: {
    // Whole numbers (IDs, channels) read as integers, not as "1e+06".
    const double d = cell.toDouble();
    const qint64 whole = qint64(d);
    return double(whole) == d ? QString::number(whole) : QString::number(d);
  }
  case QJsonValue::Bool:
    return cell.toBool() ? u"1"_s : u"0"_s;
  default:
    return QString(); // null, and nested values no column can hold
  }
}
} // namespace

Answer DecodeAnswer(const QByteArray &body) {
  Answer a;
  QJsonParseError parse;
  const QJsonDocument doc = QJsonDocument::fromJson(body, &parse);
  if (parse.error != QJsonParseError::NoError || !doc.isObject()) {
    a.Error = u"录音服务器的应答无法识别"_s;
    return a;
  }
  a.Readable = true;
  const QJsonObject root = doc.object();
  a.Error = root.value(u"error"_s).toString();
  if (!a.Error.isEmpty())
    return a;
  const QJsonValue columns = root.value(u"columns"_s);
  const QJsonValue rows = root.value(u"rows"_s);
  if (!columns.isArray() || !rows.isArray()) {
    a.Error = u"录音服务器的应答无法识别"_s;
    return a;
  }
  for (const QJsonValue &c : columns.toArray())
    a.Columns.append(c.toString());
  const QJsonArray rowArray = rows.toArray();
  const qsizetype width = a.Columns.size();
  a.Rows.reserve(rowArray.size());
  for (const QJsonValue &r : rowArray) {
    const QJsonArray cells = r.toArray();
    QStringList row;
    row.reserve(width);
    for (qsizetype i = 0; i < width && i < cells.size(); ++i)
      row.append(CellText(cells.at(i)));
    if (cells.size() < width) {
      ++a.ShortRows;
      row.resize(width);
    } else if (cells.size() > width) {
      ++a.LongRows;
    }
    a.Rows.append(std::move(row));
  }
  return a;
}

QString SourceText(const QString &host, const QString &shortDir, const QString &voiceFileName,
                   quint16 filePort) {
  if (!shortDir.isEmpty())
    return u"http://"_s + host + u':' + QString::number(filePort) + u'/' + shortDir + u'/' +
           voiceFileName;
  return voiceFileName;
}

QUrl SourceUrl(const QString &host, const QString &shortDir, const QString &voiceFileName,
               quint16 filePort) {
  if (!shortDir.isEmpty()) {
    QUrl url;
    url.setScheme(u"http"_s);
    url.setHost(host);
    url.setPort(filePort);
    url.setPath(u'/' + shortDir + u'/' + voiceFileName, QUrl::DecodedMode);
    return url;
  }
  if (voiceFileName.isEmpty())
    return QUrl();
  // "http://..." or "file:..." as it stands; anything else, "d:\rec\1.wav" among
  // them (a one-letter "scheme" is a drive), is a path on this machine.
  const QUrl given(voiceFileName);
  if (given.isValid() && given.scheme().size() > 1)
    return given;
  return QUrl::fromLocalFile(voiceFileName);
}

} // namespace RecordProtocol
