// The recordings page: 5,000 rows from the reference recording server on
// loopback, from the search key to the grid painted; beside it, in the same
// run, the bare HTTP exchange of the same statement (the server's work and the
// transfer, nothing parsed or shown) and the statement straight on the store.
#include "RecordServer.h"
#include "directory/RecordServerPage.h"

#include <QApplication>
#include <QHeaderView>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTableView>
#include <QTemporaryDir>
#include <QThread>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int kRows = 5000;

// The server on a thread of its own, as it would be on its own machine: the
// page's thread does only the console's work.
struct ServerThread {
  QTemporaryDir dir;
  QThread thread;
  QObject context; // lives on the thread: what the server's work is queued to
  RecordServer *server = nullptr;
  quint16 port = 0;
  ServerThread() {
    context.moveToThread(&thread);
    thread.start();
    QMetaObject::invokeMethod(
        &context, [this] {
          server = new RecordServer;
          server->OpenStore(dir.filePath(u"recordings.db"_s));
          server->SetFileRoot(dir.path());
          server->Listen(QHostAddress::LocalHost, 0, 0);
          for (int i = 0; i < kRows; ++i) {
            const QDateTime at = QDateTime(QDate(2026, 11, 1), QTime(8, 0)).addSecs(i * 97);
            server->AddRecording(at.toString(u"yyyy-MM-dd hh:mm:ss"_s),
                                 at.addSecs(30 + i % 300).toString(u"yyyy-MM-dd hh:mm:ss"_s),
                                 u"80%1"_s.arg(i % 100, 2, 10, QChar(u'0')),
                                 u"1380000%1"_s.arg(i, 4, 10, QChar(u'0')), u"20261101"_s,
                                 u"%1.wav"_s.arg(i));
          }
          port = server->QueryPort();
        },
        Qt::BlockingQueuedConnection);
  }
  ~ServerThread() {
    QMetaObject::invokeMethod(&context, [this] { delete server; }, Qt::BlockingQueuedConnection);
    thread.quit();
    thread.wait();
  }
};

ServerThread *g_server = nullptr; // made in main, after the application
ServerThread &Server() {
  return *g_server;
}

TRecordServerPage::Statement Search(TRecordServerPage &page) {
  page.Edit_Caller = u"8000"_s;
  page.CheckBox_LikeNo = true;
  page.Edit_LikeNo = u"80"_s;
  return page.BuildStatement();
}

void BM_RecordingsOnScreen(benchmark::State &state) {
  TRecordServerPage page;
  page.TeSEdit_RecordIP = u"127.0.0.1"_s;
  page.QueryPort = Server().port;
  Search(page);
  QTableView view;
  view.setModel(&page.DBGridEh_Record);
  view.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  view.resize(1200, 600);
  view.show();
  for (auto _ : state) {
    page.DBGridEh_Record.Clear();
    QSignalSpy reset(&page.DBGridEh_Record, &QAbstractItemModel::modelReset);
    page.TeButton_RecordSearchClick();
    if (!reset.wait(10000) || page.DBGridEh_Record.RowCount() != kRows)
      state.SkipWithError("no rows");
    view.repaint(); // on screen: laid out and painted
  }
}
BENCHMARK(BM_RecordingsOnScreen)->Unit(benchmark::kMillisecond)->UseRealTime();

// The floor: the same request, its answer read whole and dropped.
void BM_RecordingsBareHttp(benchmark::State &state) {
  TRecordServerPage page;
  const TRecordServerPage::Statement s = Search(page);
  QNetworkAccessManager net;
  net.setProxy(QNetworkProxy::NoProxy);
  const QUrl target(RecordProtocol::QueryTarget(u"127.0.0.1"_s, Server().port));
  for (auto _ : state) {
    QNetworkRequest request(target);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    QNetworkReply *reply = net.post(request, RecordProtocol::EncodeQuery(s.Text, s.Params));
    QSignalSpy done(reply, &QNetworkReply::finished);
    if (!done.wait(10000))
      state.SkipWithError("no answer");
    benchmark::DoNotOptimize(reply->readAll().size());
    delete reply;
  }
}
BENCHMARK(BM_RecordingsBareHttp)->Unit(benchmark::kMillisecond)->UseRealTime();

// The statement alone on the server's store, rows read and dropped.
void BM_RecordingsBareStatement(benchmark::State &state) {
  TRecordServerPage page;
  const TRecordServerPage::Statement s = Search(page);
  {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"bench"_s);
    db.setDatabaseName(Server().dir.filePath(u"recordings.db"_s));
    db.open();
    for (auto _ : state) {
      QSqlQuery q(db);
      q.prepare(s.Text);
      for (auto it = s.Params.begin(); it != s.Params.end(); ++it)
        q.bindValue(u':' + it.key(), it.value());
      q.exec();
      int rows = 0;
      while (q.next())
        ++rows;
      if (rows != kRows)
        state.SkipWithError("wrong row count");
    }
  }
  QSqlDatabase::removeDatabase(u"bench"_s);
}
BENCHMARK(BM_RecordingsBareStatement)->Unit(benchmark::kMillisecond)->UseRealTime();
} // namespace

int main(int argc, char **argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  ServerThread server;
  g_server = &server;
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
