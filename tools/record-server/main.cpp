// trunkdesk-recordserver: the reference recording server as a program, for a
// desk whose exchange has no recording server of its own, and for demos.
#include "RecordServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace {

constexpr int kDemoRows = 300;

void Say(const QString &line) {
  QTextStream(stdout) << line << Qt::endl;
}

int Complain(const QString &line) {
  QTextStream(stderr) << line << Qt::endl;
  return 1;
}

// A port from the command line, or -1.
int PortOf(const QCommandLineParser &parser, const QString &option) {
  bool ok = false;
  const int port = parser.value(option).toInt(&ok);
  return ok && port >= 0 && port <= 65535 ? port : -1;
}

// Whether Record_Table of the store at `path` has no rows (or doesn't exist yet).
bool StoreIsEmpty(const QString &path) {
  const QString name = u"record-store-count"_s;
  bool empty = true;
  {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
    db.setDatabaseName(path);
    QSqlQuery q(db);
    if (db.open() && q.exec(u"select 1 from Record_Table limit 1"_s))
      empty = !q.next();
  }
  QSqlDatabase::removeDatabase(name);
  return empty;
}

} // namespace

int main(int argc, char *argv[]) {
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(u"trunkdesk-recordserver"_s);

  QCommandLineParser parser;
  parser.setApplicationDescription(
      u"The reference recording server: answers consoles' searches of Record_Table at "
      "http://<listen>:<port>/bin and serves the sound files from a folder on the file port."_s);
  parser.addHelpOption();
  parser.addOptions({
      {u"store"_s, u"The SQLite file holding Record_Table (made when missing)."_s, u"file"_s,
       u"recordings.db"_s},
      {u"files"_s, u"The folder the sound files are served from."_s, u"dir"_s, u"records"_s},
      {u"listen"_s,
       u"The address to listen on. The default serves this machine only; give 0.0.0.0 "
       "to serve the consoles of the network."_s,
       u"addr"_s, u"127.0.0.1"_s},
      {u"port"_s, u"The protocol's port."_s, u"n"_s, u"9004"_s},
      {u"file-port"_s, u"The sound files' port."_s, u"n"_s, u"8097"_s},
      {u"demo"_s,
       u"Fill an empty store with demo recordings and tone WAVs (%1 rows unless "
       "a count follows); without --store, into a fresh folder of the temporary area."_s.arg(
           kDemoRows)},
  });
  parser.addPositionalArgument(u"rows"_s, u"With --demo: how many demo rows."_s, u"[rows]"_s);
  parser.process(app);

  const bool demo = parser.isSet(u"demo"_s);
  const QStringList rest = parser.positionalArguments();
  int rows = kDemoRows;
  if (!rest.isEmpty()) {
    bool ok = false;
    rows = rest.first().toInt(&ok);
    if (!demo || rest.size() > 1 || !ok || rows < 0 || rows > 10000000)
      return Complain(u"Only --demo takes a count: the number of demo rows."_s);
  }
  const QHostAddress address(parser.value(u"listen"_s));
  if (address.isNull())
    return Complain(u"--listen wants an IP address, e.g. 127.0.0.1 or 0.0.0.0"_s);
  const int port = PortOf(parser, u"port"_s);
  const int filePort = PortOf(parser, u"file-port"_s);
  if (port < 0 || filePort < 0)
    return Complain(u"--port and --file-port want a number from 0 to 65535"_s);

  QString store = parser.value(u"store"_s);
  QString files = parser.value(u"files"_s);
  // A demo without a store of its own works in one folder of the temporary
  // area, made afresh each time, so runs ended by Ctrl+C don't pile up copies
  // and the rows are always of the last days.
  if (demo && !parser.isSet(u"store"_s)) {
    const QDir scratch(QDir::temp().filePath(u"trunkdesk-recordserver-demo"_s));
    store = scratch.filePath(u"recordings.db"_s);
    for (const QString &suffix : {u""_s, u"-wal"_s, u"-shm"_s})
      QFile::remove(store + suffix);
    if (!scratch.mkpath(u"."_s))
      return Complain(u"Cannot make the demo's folder "_s + scratch.path());
    if (!parser.isSet(u"files"_s))
      files = scratch.filePath(u"records"_s);
  }
  store = QDir(store).absolutePath();
  files = QDir(files).absolutePath();

  RecordServer server;
  const bool fill = demo && StoreIsEmpty(store);
  if (!server.OpenStore(store))
    return Complain(server.Error());
  server.SetFileRoot(files);
  if (fill && !server.FillDemo(rows))
    return Complain(server.Error());
  if (!server.Listen(address, quint16(port), quint16(filePort)))
    return Complain(server.Error());

  const QString host = address.toString();
  Say(u"Recordings store: %1%2"_s.arg(store, fill ? u" (%1 demo rows)"_s.arg(rows) : QString()));
  Say(u"Sound files from: %1"_s.arg(files));
  Say(u"Searches at http://%1:%2/bin, sound files at http://%1:%3/"_s.arg(
      host, QString::number(server.QueryPort()), QString::number(server.FilePort())));
  return app.exec();
}
