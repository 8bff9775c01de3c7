// The automation API against a desk of 3072 rooms logged in to the simulated
// exchange on loopback, each figure beside its floor in the same run:
// - GET /api/v1/rooms, beside the same number of bytes answered by a bare
//   HTTP server on the same thread (goal: under 20 ms);
// - 1,000 wake-up PUTs over four keep-alive connections until the exchange
//   has every packet, beside 1,000 bare HTTP round trips (goal: under 2 s);
// - 100 event subscribers while the desk's status changes 5,000 times in a
//   second: the main thread's time spent publishing, beside the same with a
//   single subscriber, and every event delivered (the fan-out must not cost
//   the main thread per subscriber).
#include "BenchDesk.h"

#include "HttpAnswer.h"
#include "api/ApiEvents.h"
#include "api/ApiServer.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"

#include <QAbstractHttpServer>
#include <QCoreApplication>
#include <QHttpServerRequest>
#include <QTcpSocket>
#include <QThread>

#include <benchmark/benchmark.h>

#include <atomic>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {
constexpr int kRooms = 3072;
const QByteArray kToken = "bench-token-0123456789";

struct ApiDesk : Desk {
  TApiServer api{*main};
  ApiDesk() : Desk(kRooms) {
    if (ready)
      ready = api.Start(QHostAddress::LocalHost, 0, kToken, nullptr) != 0;
  }
};

ApiDesk &TheDesk() {
  static ApiDesk desk;
  return desk;
}

// Answers every request with the same body: the floor of an HTTP exchange.
class BareServer : public QAbstractHttpServer {
public:
  QByteArray Body;
  quint16 Port = HttpAnswer::Listen(*this, QHostAddress::LocalHost, 0, 1 << 20, nullptr);

protected:
  bool handleRequest(const QHttpServerRequest &, QTcpSocket *socket) override {
    HttpAnswer::Write(socket, {200, "application/json", Body, {}}, false);
    return true;
  }
  void missingHandler(const QHttpServerRequest &, QTcpSocket *) override {}
};

// A keep-alive client that sends one request and waits for its whole answer.
struct Client {
  QTcpSocket socket;
  explicit Client(quint16 port) {
    socket.connectToHost(QHostAddress::LocalHost, port);
    socket.waitForConnected(5000);
  }
  void Send(const QByteArray &method, const QByteArray &path, const QByteArray &body = {}) {
    socket.write(method + ' ' + path + " HTTP/1.1\r\nHost: bench\r\nAuthorization: Bearer " +
                 kToken + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" +
                 body);
  }
  QByteArray in;
  qsizetype LastLength = 0;
  // The status of the answer once it is whole, else 0.
  int Answered() {
    in += socket.readAll();
    const qsizetype head = in.indexOf("\r\n\r\n");
    if (head < 0)
      return 0;
    const qsizetype at = in.indexOf("Content-Length: ");
    const qsizetype length = in.mid(at + 16, in.indexOf("\r\n", at) - at - 16).toLongLong();
    if (in.size() < head + 4 + length)
      return 0;
    const int status = in.mid(9, 3).toInt();
    LastLength = length;
    in.remove(0, head + 4 + length);
    return status;
  }
  int Ask(const QByteArray &method, const QByteArray &path, const QByteArray &body = {}) {
    Send(method, path, body);
    int status = 0;
    RunUntil([&] { return (status = Answered()) != 0; }, 10000);
    return status;
  }
};

void RoomsGet(benchmark::State &state, bool bare) {
  ApiDesk &d = TheDesk();
  if (!d.ready) {
    state.SkipWithError("the console did not log in");
    return;
  }
  BareServer floor;
  Client api(d.api.Port());
  if (api.Ask("GET", "/api/v1/rooms") != 200) {
    state.SkipWithError("GET /api/v1/rooms failed");
    return;
  }
  Client client(bare ? floor.Port : d.api.Port());
  floor.Body = QByteArray(api.LastLength, 'x'); // as many bytes as the rooms are
  for (auto _ : state) {
    if (client.Ask("GET", "/api/v1/rooms") != 200)
      state.SkipWithError("GET failed");
  }
}
void BM_RoomsGet3072(benchmark::State &state) {
  RoomsGet(state, false);
}
void BM_RoomsGet3072_BareFloor(benchmark::State &state) {
  RoomsGet(state, true);
}
BENCHMARK(BM_RoomsGet3072)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_RoomsGet3072_BareFloor)->Unit(benchmark::kMillisecond)->MinTime(2);

// 1,000 requests spread over four connections, each sending its next when
// its answer came; with the API, until the exchange got every wake-up too.
void Puts(benchmark::State &state, bool bare) {
  ApiDesk &d = TheDesk();
  if (!d.ready) {
    state.SkipWithError("the console did not log in");
    return;
  }
  BareServer floor;
  floor.Body = "{}";
  const QByteArray time =
      QDateTime::currentDateTime().addDays(1).toString(u"yyyy-MM-ddT07:00"_s).toLatin1();
  const QByteArray body = R"({"time":")" + time + R"(","mode":1})";
  for (auto _ : state) {
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 4; ++i)
      clients.push_back(std::make_unique<Client>(bare ? floor.Port : d.api.Port()));
    d.sim.ClearReceived();
    QElapsedTimer clock;
    clock.start();
    int sent = 0;
    int answered = 0;
    int failed = 0;
    const auto next = [&](Client &c) {
      c.Send("PUT", "/api/v1/rooms/" + QByteArray::number(8001 + sent % kRooms) + "/wakeup", body);
      ++sent;
    };
    for (auto &c : clients)
      next(*c);
    RunUntil(
        [&] {
          for (auto &c : clients) {
            if (const int status = c->Answered()) {
              ++answered;
              failed += status == 200 ? 0 : 1;
              if (sent < 1000)
                next(*c);
            }
          }
          return answered == 1000;
        },
        60000);
    const auto packets = [&] {
      const QList<SimPacket> got = d.sim.Received();
      return int(std::count_if(got.begin(), got.end(), [](const SimPacket &p) {
        return p.TypeCode == 35 && p.Fields.value(u"Sub"_s).toInt() == 1;
      }));
    };
    if (!bare && !RunUntil([&] { return packets() == 1000; }, 30000))
      state.SkipWithError("the exchange did not get every wake-up");
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    if (failed)
      state.SkipWithError("a PUT failed");
  }
}
void BM_WakeUpPuts1000(benchmark::State &state) {
  Puts(state, false);
}
void BM_WakeUpPuts1000_BareFloor(benchmark::State &state) {
  Puts(state, true);
}
BENCHMARK(BM_WakeUpPuts1000)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WakeUpPuts1000_BareFloor)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

// Subscribers on a thread of their own, as separate programs would be: each
// does the handshake and counts the text frames it gets.
class Subscribers : public QObject {
public:
  std::atomic<qint64> Frames{0};
  std::atomic<int> Ready{0};
  void Open(quint16 port, int count) {
    for (int i = 0; i < count; ++i) {
      auto *s = new QTcpSocket(this);
      auto *in = new QByteArray;
      connect(s, &QObject::destroyed, [in] { delete in; });
      connect(s, &QTcpSocket::connected, s, [s] {
        s->write("GET /api/v1/events HTTP/1.1\r\nHost: bench\r\nUpgrade: websocket\r\n"
                 "Connection: Upgrade\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
                 "Sec-WebSocket-Version: 13\r\nAuthorization: Bearer " +
                 kToken + "\r\n\r\n");
      });
      connect(s, &QTcpSocket::readyRead, s, [this, s, in] {
        *in += s->readAll();
        if (in->startsWith("HTTP/1.1 101")) {
          in->remove(0, in->indexOf("\r\n\r\n") + 4);
          ++Ready;
        }
        qsizetype at = 0;
        while (in->size() - at >= 2) {
          qsizetype length = quint8(in->at(at + 1)) & 0x7F;
          qsizetype head = 2;
          if (length == 126) {
            if (in->size() - at < 4)
              break;
            length = (quint8(in->at(at + 2)) << 8) | quint8(in->at(at + 3));
            head = 4;
          }
          if (in->size() - at < head + length)
            break;
          at += head + length;
          ++Frames;
        }
        in->remove(0, at);
      });
      s->connectToHost(QHostAddress::LocalHost, port);
    }
  }
};

// The main thread's own CPU time: what it spent, not what the other threads
// on the two cores took from it meanwhile.
qint64 ThreadCpuNs() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return qint64(t.tv_sec) * 1000000000 + t.tv_nsec;
}

void Events(benchmark::State &state, int subscriberCount) {
  ApiDesk &d = TheDesk();
  if (!d.ready) {
    state.SkipWithError("the console did not log in");
    return;
  }
  QThread thread;
  auto *subscribers = new Subscribers;
  subscribers->moveToThread(&thread);
  thread.start();
  QMetaObject::invokeMethod(subscribers, [&] { subscribers->Open(d.api.Port(), subscriberCount); });
  if (!RunUntil([&] { return d.api.Events().Subscribers() == subscriberCount; }, 20000)) {
    state.SkipWithError("the subscribers did not connect");
  }
  TCallControlDev &table = d.main->CallControlDev();
  TDeviceEvents &events = d.main->DeviceEvents();
  qint64 publishNs = 0;
  qint64 maxLateNs = 0;
  qint64 expected = 0;
  int round = 0;
  for (auto _ : state) {
    const qint64 framesBefore = subscribers->Frames.load();
    // 5,000 changes in one second: five every millisecond, each one a new
    // status of a room.
    QElapsedTimer second;
    second.start();
    for (int ms = 0; ms < 1000; ++ms) {
      const qint64 due = qint64(ms) * 1000000;
      while (second.nsecsElapsed() < due)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
      maxLateNs = std::max(maxLateNs, second.nsecsElapsed() - due);
      const qint64 busy = ThreadCpuNs();
      for (int i = 0; i < 5; ++i) {
        const int id = (ms * 5 + i) % kRooms;
        int &status = table.Device(id)->Status;
        status = status % 7 + 1; // never the status it had

        emit events.Ext_UpdateRow(id);
      }
      publishNs += ThreadCpuNs() - busy;
    }
    ++round;
    expected += qint64(5000) * subscriberCount;
    const qint64 want = framesBefore + qint64(5000) * subscriberCount;
    RunUntil([&] { return subscribers->Frames.load() >= want; }, 30000);
    state.SetIterationTime(double(second.nsecsElapsed()) / 1e9);
  }
  state.counters["main_cpu_ms_per_s"] = double(publishNs) / 1e6 / double(round);
  state.counters["max_late_ms"] = double(maxLateNs) / 1e6;
  state.counters["delivered_pct"] =
      100.0 * double(subscribers->Frames.load()) / double(std::max<qint64>(expected, 1));
  QMetaObject::invokeMethod(subscribers, [subscribers] { delete subscribers; },
                            Qt::BlockingQueuedConnection);
  thread.quit();
  thread.wait();
  RunUntil([&] { return d.api.Events().Subscribers() == 0; }, 10000);
}
void BM_Events100Subscribers(benchmark::State &state) {
  Events(state, 100);
}
void BM_Events1Subscriber_Floor(benchmark::State &state) {
  Events(state, 1);
}
BENCHMARK(BM_Events100Subscribers)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Events1Subscriber_Floor)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);
} // namespace

int main(int argc, char **argv) {
  return RunDeskBenchmarks(argc, argv, [] { return &TheDesk(); });
}
