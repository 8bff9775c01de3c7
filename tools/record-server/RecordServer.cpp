#include "RecordServer.h"

#include "DemoRecordings.h"
#include "FileServer.h"
#include "HttpAnswer.h"
#include "RecordQuery.h"

#include <QAbstractHttpServer>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QHttpServerRequest>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QTcpSocket>
#include <QTimer>

#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {

// A request body is at most 64 KiB; past a few MiB the connection is cut
// instead of read to its end. A file request has no body at all.
constexpr qint64 kQueryRequestCap = 4 * 1024 * 1024;
constexpr qint64 kFileRequestCap = 64 * 1024;

const QString kTimeFormat = u"yyyy-MM-dd hh:mm:ss"_s;

QString MethodName(QHttpServerRequest::Method method) {
  switch (method) {
  case QHttpServerRequest::Method::Get:
    return u"GET"_s;
  case QHttpServerRequest::Method::Post:
    return u"POST"_s;
  default:
    return u"other"_s;
  }
}

sqlite3 *NativeHandle(const QSqlDatabase &db) {
  const QVariant handle = db.driver()->handle();
  if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
    return nullptr;
  return *static_cast<sqlite3 *const *>(handle.data());
}

} // namespace

// The protocol's port: everything goes to RecordServer::HandleBin.
class QueryHttpServer : public QAbstractHttpServer {
public:
  explicit QueryHttpServer(RecordServer *owner) : Owner(owner) {}

protected:
  bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override {
    Owner->HandleBin(request, socket);
    return true;
  }
  void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override {
    Owner->HandleBin(request, socket);
  }

private:
  RecordServer *Owner;
};

RecordServer::RecordServer(QObject *parent)
    : QObject(parent), StoreConnection(u"record-store-%1"_s.arg(quintptr(this), 0, 16)),
      QueryConnection(u"record-query-%1"_s.arg(quintptr(this), 0, 16)) {}

RecordServer::~RecordServer() {
  Queries.reset();
  Files.reset();
  CloseStore();
}

QString RecordServer::Error() const {
  return ErrorText;
}

bool RecordServer::Fail(const QString &error) {
  ErrorText = error;
  return false;
}

void RecordServer::CloseStore() {
  StoreOpen = false;
  QueryDb = nullptr;
  for (const QString &name : {StoreConnection, QueryConnection}) {
    if (QSqlDatabase::contains(name)) {
      QSqlDatabase::database(name, false).close();
      QSqlDatabase::removeDatabase(name);
    }
  }
}

bool RecordServer::OpenStore(const QString &path) {
  CloseStore();
  QString error;
  {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, StoreConnection);
    db.setDatabaseName(path);
    db.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=2000"_s);
    QSqlQuery q(db);
    if (!db.open())
      error = db.lastError().text();
    // Consoles read while the demo or a recorder writes: the write-ahead log
    // keeps readers and the writer out of each other's way.
    else if (!q.exec(u"PRAGMA journal_mode=WAL"_s) ||
             !q.exec(u"create table if not exists Record_Table (ID integer primary key, "
                     "startTime text, connectTime text, caller text, called text, "
                     "shortDir text, VoiceFileName text, channel integer)"_s) ||
             !q.exec(u"create index if not exists Record_Table_connectTime "
                     "on Record_Table(connectTime)"_s))
      error = q.lastError().text();
  }
  if (error.isEmpty()) {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, QueryConnection);
    db.setDatabaseName(path);
    db.setConnectOptions(u"QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=2000"_s);
    if (!db.open())
      error = db.lastError().text();
    else if (!(QueryDb = NativeHandle(db)))
      error = u"the SQLite driver gives no handle"_s;
    else
      RecordQuery::InstallReadOnlyGuard(QueryDb);
  }
  if (!error.isEmpty()) {
    CloseStore();
    return Fail(u"cannot use %1 as the recordings store: %2"_s.arg(path, error));
  }
  StoreOpen = true;
  return true;
}

void RecordServer::SetFileRoot(const QString &dir) {
  FileRoot = dir;
  if (Files)
    Files->SetRoot(dir);
}

bool RecordServer::Listen(const QHostAddress &address, quint16 queryPort, quint16 filePort) {
  Queries = std::make_unique<QueryHttpServer>(this);
  Files = std::make_unique<RecordFileServer>();
  Files->SetRoot(FileRoot);
  QString error;
  QueryPortNo = HttpAnswer::Listen(*Queries, address, queryPort, kQueryRequestCap, &error);
  FilePortNo =
      QueryPortNo ? HttpAnswer::Listen(*Files, address, filePort, kFileRequestCap, &error) : 0;
  if (!QueryPortNo || !FilePortNo) {
    Queries.reset();
    Files.reset();
    QueryPortNo = FilePortNo = 0;
    return Fail(error);
  }
  return true;
}

quint16 RecordServer::QueryPort() const {
  return QueryPortNo;
}

quint16 RecordServer::FilePort() const {
  return FilePortNo;
}

void RecordServer::SetAnswerDelay(int ms) {
  AnswerDelay = std::max(ms, 0);
}

void RecordServer::SetAnswering(bool on) {
  Answering = on;
}

qint64 RecordServer::AddRecording(const QString &startTime, const QString &connectTime,
                                  const QString &caller, const QString &called,
                                  const QString &shortDir, const QString &voiceFileName) {
  if (!StoreOpen)
    return Fail(u"no recordings store is open"_s), -1;
  QSqlQuery q(QSqlDatabase::database(StoreConnection));
  q.prepare(u"insert into Record_Table (startTime, connectTime, caller, called, shortDir, "
            "VoiceFileName) values (?, ?, ?, ?, ?, ?)"_s);
  // An empty text is stored as one, not as NULL: consoles read shortDir "" as
  // "the name says where the file is".
  for (const QString &value : {startTime, connectTime, caller, called, shortDir, voiceFileName})
    q.addBindValue(value.isNull() ? u""_s : value);
  if (!q.exec())
    return Fail(q.lastError().text()), -1;
  return q.lastInsertId().toLongLong();
}

bool RecordServer::FillDemo(int rows) {
  if (!StoreOpen)
    return Fail(u"no recordings store is open"_s);
  if (FileRoot.isEmpty())
    return Fail(u"no folder for the sound files is set"_s);
  const QList<DemoRecordings::Clip> clips = DemoRecordings::Clips();
  for (const DemoRecordings::Clip &clip : clips) {
    QDir(FileRoot).mkpath(clip.ShortDir);
    QSaveFile file(FileRoot + u'/' + clip.ShortDir + u'/' + clip.FileName);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(DemoRecordings::ToneWav(clip.Seconds, clip.FirstHz, clip.SecondHz)) < 0 ||
        !file.commit())
      return Fail(u"cannot write %1: %2"_s.arg(file.fileName(), file.errorString()));
  }

  QSqlDatabase db = QSqlDatabase::database(StoreConnection);
  db.transaction();
  QSqlQuery q(db);
  q.prepare(u"insert into Record_Table (startTime, connectTime, caller, called, shortDir, "
            "VoiceFileName, channel) values (?, ?, ?, ?, ?, ?, ?)"_s);
  // The same rows each time, spread over the last week.
  QRandomGenerator random(20261123);
  const QDateTime now = QDateTime::currentDateTime();
  for (int i = 0; i < rows; ++i) {
    const DemoRecordings::Clip &clip = clips.at(random.bounded(int(clips.size())));
    const QDateTime start = now.addSecs(-qint64(random.bounded(7 * 24 * 3600)));
    const QString room = u"80%1"_s.arg(1 + random.bounded(16), 2, 10, QChar(u'0'));
    const QString outside = u"138%1"_s.arg(random.bounded(100000000), 8, 10, QChar(u'0'));
    const bool incoming = random.bounded(2) == 0;
    q.addBindValue(start.toString(kTimeFormat));
    q.addBindValue(start.addSecs(clip.Seconds).toString(kTimeFormat));
    q.addBindValue(incoming ? outside : room);
    q.addBindValue(incoming ? room : outside);
    q.addBindValue(clip.ShortDir);
    q.addBindValue(clip.FileName);
    q.addBindValue(1 + random.bounded(8));
    if (!q.exec()) {
      const QString error = q.lastError().text();
      db.rollback();
      return Fail(u"cannot add the demo recordings: %1"_s.arg(error));
    }
  }
  if (!db.commit())
    return Fail(u"cannot add the demo recordings: %1"_s.arg(db.lastError().text()));
  return true;
}

void RecordServer::HandleBin(const QHttpServerRequest &request, QTcpSocket *socket) {
  QElapsedTimer took;
  took.start();
  const QHttpServerRequest::Method method = request.method();
  RecordQuery::Result result;
  auto refuse = [&result](int status, const QString &error) {
    result = {status, RecordQuery::ErrorJson(error), 0, error};
  };
  if (request.url().path() != u"/bin"_s) {
    refuse(404, u"没有这个地址，录音查询在 /bin"_s);
  } else if (method == QHttpServerRequest::Method::Get) {
    result.Json =
        QJsonDocument(QJsonObject{{u"version"_s, RecordQuery::kVersion},
                                  {u"error"_s, QString()},
                                  {u"server"_s, QString::fromLatin1(
                                                    "trunkdesk-recordserver " TRUNKDESK_VERSION)}})
            .toJson(QJsonDocument::Compact);
  } else if (method != QHttpServerRequest::Method::Post) {
    refuse(405, u"只接受 GET 和 POST"_s);
  } else if (!StoreOpen) {
    refuse(500, u"录音记录库没有打开"_s);
  } else {
    result = RecordQuery::Answer(QueryDb, request.body());
  }

  QString line = u"%1 %2 %3 %4 rows %5 ms from %6"_s.arg(
      MethodName(method), request.url().path().left(100), QString::number(result.Status),
      QString::number(result.Rows), QString::number(took.elapsed()),
      request.remoteAddress().toString());
  if (!result.Error.isEmpty())
    line += u": "_s + result.Error;
  if (!Answering)
    line += u" (held, never answered)"_s;
  qInfo().noquote() << line;
  if (!Answering)
    return;

  const HttpAnswer::Answer answer{result.Status, "application/json; charset=utf-8", result.Json};
  const bool close = HttpAnswer::WantsClose(request);
  if (AnswerDelay > 0) {
    QTimer::singleShot(AnswerDelay, this, [socket = QPointer<QTcpSocket>(socket), answer, close] {
      HttpAnswer::Write(socket, answer, close);
    });
  } else {
    HttpAnswer::Write(socket, answer, close);
  }
}
