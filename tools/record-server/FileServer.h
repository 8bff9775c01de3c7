// The sound files of the recordings by plain HTTP: GET /<shortDir>/<VoiceFileName>
// below one folder, with byte ranges so a player can seek.
#pragma once

#include <QAbstractHttpServer>
#include <QByteArray>
#include <QString>

namespace RecordFiles {

// Files past this are not served: recordings are minutes, not hours.
inline constexpr qint64 kMaxFileBytes = 64LL * 1024 * 1024;

// The file below `root` that the percent-encoded request path names, or empty
// when it names none the server may serve: a `.` or `..` segment, a backslash,
// a NUL, text that isn't UTF-8, a folder, or a place outside the root (also
// through a link).
QString FileForPath(const QString &root, const QByteArray &encodedPath);

// A Range header against a file of `size` bytes. Anything but one well-formed
// byte range asks for the whole file, as HTTP lets a server do.
struct ByteRange {
  enum class Kind { Whole, Part, Unsatisfiable };
  Kind Is = Kind::Whole;
  qint64 First = 0;
  qint64 Last = -1;
};
ByteRange ParseRange(const QByteArray &header, qint64 size);

} // namespace RecordFiles

class RecordFileServer : public QAbstractHttpServer {
  Q_OBJECT
public:
  explicit RecordFileServer(QObject *parent = nullptr) : QAbstractHttpServer(parent) {}
  void SetRoot(const QString &dir) { Root = dir; }

protected:
  bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
  void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;

private:
  QString Root;
};
