// The reference recording server: the table of recordings in an SQLite file,
// answered over the recording protocol (docs/recording-protocol.md) at /bin,
// and the sound files served by plain HTTP from a folder.
#pragma once

#include <QHostAddress>
#include <QObject>
#include <QString>

#include <memory>

class QHttpServerRequest;
struct sqlite3;
class QTcpSocket;
class QueryHttpServer;
class RecordFileServer;

class RecordServer : public QObject {
  Q_OBJECT
public:
  explicit RecordServer(QObject *parent = nullptr);
  ~RecordServer() override;

  // Opens (creating when missing) the SQLite file holding Record_Table. False with Error() set.
  bool OpenStore(const QString &path);
  // The folder sound files are served from.
  void SetFileRoot(const QString &dir);
  // Listens for the protocol (queryPort, path /bin) and the files (filePort).
  // Port 0 picks a free one. False with Error() set.
  bool Listen(const QHostAddress &address, quint16 queryPort = 9004, quint16 filePort = 8097);
  quint16 QueryPort() const;
  quint16 FilePort() const;

  // Fills the store with `rows` demo recordings over the last days and writes
  // the short tone WAVs they point to under the file root. The talk time of a
  // row (connectTime - startTime) is its file's length.
  bool FillDemo(int rows);
  // Adds one row; returns its ID or -1.
  qint64 AddRecording(const QString &startTime, const QString &connectTime, const QString &caller,
                      const QString &called, const QString &shortDir, const QString &voiceFileName);

  // A slow server: every /bin answer goes this many ms late.
  void SetAnswerDelay(int ms);
  // false: /bin requests are accepted and never answered.
  void SetAnswering(bool on);

  QString Error() const;

private:
  friend class QueryHttpServer;
  void HandleBin(const QHttpServerRequest &request, QTcpSocket *socket);
  void CloseStore();
  bool Fail(const QString &error);

  QString StoreConnection;
  QString QueryConnection;
  bool StoreOpen = false;
  sqlite3 *QueryDb = nullptr; // read-only, guarded: see RecordQuery.h
  quint16 QueryPortNo = 0;
  quint16 FilePortNo = 0;
  QString FileRoot;
  QString ErrorText;
  int AnswerDelay = 0;
  bool Answering = true;
  std::unique_ptr<QueryHttpServer> Queries;
  std::unique_ptr<RecordFileServer> Files;
};
