#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

// The console's side of the recording protocol (docs/recording-protocol.md):
// a statement with named parameters goes out as JSON, rows come back as JSON.
// Nothing here touches the network, so every answer a server could send is
// tested without one.
namespace RecordProtocol {

inline constexpr int kVersion = 1;
inline constexpr quint16 kQueryPort = 9004;
inline constexpr quint16 kFilePort = 8097;
// An answer larger than this is refused unread: 5,000 rows are about 1 MB, and
// parsing tens of megabytes would hold the desk up for no use.
inline constexpr qint64 kMaxAnswerBytes = 16 * 1024 * 1024;

// The address the statements go to: "http://<host>:9004/bin".
QString QueryTarget(const QString &host, quint16 port = kQueryPort);

// The JSON body of one query.
QByteArray EncodeQuery(const QString &statement, const QVariantMap &params);

struct Answer {
  bool Readable = false; // the body was a JSON answer at all
  QString Error;       // empty when the rows are good
  QStringList Columns; // in the server's order
  QList<QStringList> Rows;
  int ShortRows = 0; // rows that had fewer cells than columns (padded)
  int LongRows = 0;  // rows that had more (cut)
};

// Reads an answer. A body that isn't the protocol gives an Answer whose Error
// says so; cells are kept as text, null as empty.
Answer DecodeAnswer(const QByteArray &body);

// Where a recording plays from: with a folder, the server's file port; without
// one, the stored name as it stands (a local path or a full URL). Empty when
// there is nothing to play.
QString SourceText(const QString &host, const QString &shortDir, const QString &voiceFileName,
                   quint16 filePort = kFilePort);
// The same source as a URL a player opens: the folder and name are path text,
// so blanks, '#' and Chinese characters reach the server as they are.
QUrl SourceUrl(const QString &host, const QString &shortDir, const QString &voiceFileName,
               quint16 filePort = kFilePort);

} // namespace RecordProtocol
