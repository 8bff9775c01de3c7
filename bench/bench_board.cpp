// A full repaint of the visible board with 3072 devices listed, at the top and
// in the middle of the list (where the paint walks past half the board first),
// beside the same boxes and lines painted plainly;
// and a live status stream of 1,000 changes a second into a shown board, its
// process CPU beside a bare receiver of the same stream in the same run.
#include "devices/DeviceEvents.h"
#include "devices/PhoneBoard.h"
#include "link/Public_Unit.h"
#include "ui/BoardView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QImage>
#include <QPainter>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <ctime>
#include <vector>

using namespace Qt::StringLiterals;

namespace {
// Every kind of panel the board shows, in turn.
void FillBoard(TCallControlDev &table) {
  static const TColor kColours[] = {clBtnFace, 0xFF0000, 0x008000, 0xFFFFFF, clInfoBk, 0x000000};
  static const char16_t *const kGlyphs[] = {
      u"LoginOn_SpeedButton",          u"LoginOff_SpeedButton",
      u"LoginOnNodisturb_SpeedButton", u"LoginOnNodisturb_In_SpeedButton",
      u"Template_TrunkSpeedButton",    u"image/lstrunk_error.bmp"};
  for (int id = 0; id < kDeviceCount; ++id) {
    table.AddPanel(id);
    TPhonePanel &p = table.Record(id).Panel;
    p.Colour = kColours[id % 6];
    p.TelNosLabel = u"[%1]"_s.arg(8000 + id);
    p.StatusLabel = u"[空闲]"_s;
    p.NameLabel = u"客房 %1 张先生"_s.arg(id);
    p.PhoneButtonGlyph = QString::fromUtf16(kGlyphs[id % 6]);
    if (id % 10 == 9) {
      p.TelNosVisible = p.PhoneButtonVisible = false;
      p.ModuleIconsVisible = true;
      p.SignalIcon = u"SpeedButton_Signal%1"_s.arg(id % 6);
      p.SimIcon = u"SpeedButton_SimCard"_s;
      p.NetTypeIcon = u"SpeedButton_NetType_GSM"_s;
      p.PinLockIcon = u"SpeedButton_Pin_Lock"_s;
    }
  }
}

struct FullBoard {
  TCallControlDev table;
  TNetModule net;
  TPhoneBoard board{table, net};
  TBoardView view{table, board, nullptr};
  QImage image;

  explicit FullBoard(QSize size) {
    FillBoard(table);
    view.resize(size);
    view.show();
    QCoreApplication::processEvents();
    image = QImage(view.viewport()->size(), QImage::Format_ARGB32_Premultiplied);
  }
  void Paint() { view.viewport()->render(&image); }
};
} // namespace

static void BM_RepaintVisibleBoard(benchmark::State &state) {
  FullBoard b(QSize(1280, 800));
  b.table.ScrollY = int(state.range(0)) * (b.table.Record(kDeviceCount - 1).Top / 2);
  b.view.SyncFromTable();
  for (auto _ : state) {
    b.Paint();
    benchmark::DoNotOptimize(b.image.constBits());
  }
  state.counters["listed"] = b.table.PanelCount();
  state.counters["columns"] = b.table.Columns;
}
BENCHMARK(BM_RepaintVisibleBoard)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The floor: the same panels in sight painted straight on the same image as
// filled boxes with their three lines, no fitting, no icons, no cache.
static void BM_RepaintVisibleBoardFloor(benchmark::State &state) {
  FullBoard b(QSize(1280, 800));
  TCallControlDev &t = b.table;
  t.ScrollY = int(state.range(0)) * (t.Record(kDeviceCount - 1).Top / 2);
  const int height = b.image.height();
  for (auto _ : state) {
    QPainter painter(&b.image);
    painter.fillRect(b.image.rect(), Qt::white);
    for (int id = 0; id < kDeviceCount; ++id) {
      const TPhoneTis &r = t.Record(id);
      const int top = r.Top - t.ScrollY;
      if (top + t.PanelHeight < 0 || top > height)
        continue;
      const QRect box(r.Left, top, t.PanelWidth, t.PanelHeight);
      painter.fillRect(box, QColor::fromRgb(QRgb(r.Panel.Colour)));
      painter.drawText(box.adjusted(2, 2, -2, -38), r.Panel.TelNosLabel);
      painter.drawText(box.adjusted(2, 20, -2, -20), r.Panel.StatusLabel);
      painter.drawText(box.adjusted(2, 38, -2, -2), r.Panel.NameLabel);
    }
    painter.end();
    benchmark::DoNotOptimize(b.image.constBits());
  }
}
BENCHMARK(BM_RepaintVisibleBoardFloor)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

namespace {
double ProcessCpuMs() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

// An extension's live status: busy or idle by turns, so every datagram changes
// the panel's colour, glyph and status line; the name is the extension's own.
QByteArray StatusDatagram(int id, int turn) {
  QByteArray d(108, '\0');
  PutU16(d.data(), 6, 24);
  PutU16(d.data(), 8, quint16(id));
  PutU16(d.data(), 12, 136);
  PutU16(d.data(), 14, quint16(AnalogExtension));
  PutU16(d.data(), 16, quint16(turn % 2 ? 1 : 7));
  PutU16(d.data(), 22, quint16(turn & 0x1FC1));
  PutText(d.data(), 62, 40, u"客房 %1 张先生"_s.arg(id));
  return d;
}

// Feeds `datagrams` to the device events at `perSecond` from the event loop, as
// the receive path does, and returns the process CPU it took. A late tick
// catches up, so every run handles the same stream.
double RunStream(TDeviceEvents &events, const std::vector<QByteArray> &datagrams, int perSecond) {
  QEventLoop loop;
  QTimer tick;
  tick.setTimerType(Qt::PreciseTimer);
  tick.setInterval(1);
  QElapsedTimer clock;
  std::size_t sent = 0;
  QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
    const auto due = std::min(datagrams.size(), std::size_t(clock.elapsed() * perSecond / 1000));
    for (; sent < due; ++sent)
      events.Device_UpdateStatus(datagrams[sent].constData(), int(datagrams[sent].size()));
    if (sent == datagrams.size())
      loop.quit();
  });
  const double start = ProcessCpuMs();
  clock.start();
  tick.start();
  loop.exec();
  QCoreApplication::processEvents(); // the last repaint belongs to the stream
  return ProcessCpuMs() - start;
}

struct PaintCounter : QObject {
  int Paints = 0;
  bool eventFilter(QObject *, QEvent *e) override {
    Paints += e->type() == QEvent::Paint;
    return false;
  }
};
} // namespace

// 1,000 status changes a second for 3 seconds. Arg 0: the stream spreads over
// all 3072 devices, most of them off screen; arg 1: every change hits a panel
// in sight (the worst case). First the bare receiver (the device table alone),
// then the same stream with the board shown.
static void BM_StatusStreamIntoBoard(benchmark::State &state) {
  constexpr int kPerSecond = 1000;
  constexpr int kSeconds = 3;
  const bool visibleOnly = state.range(0) != 0;
  for (auto _ : state) {
    FullBoard b(QSize(1280, 800));
    for (int id = 0; id < kDeviceCount; ++id)
      b.table.Record(id).DevType = AnalogExtension;
    std::vector<int> targets;
    for (int id = 0; id < kDeviceCount; ++id) {
      if (!visibleOnly || b.view.viewport()->rect().intersects(b.view.PanelRect(id)))
        targets.push_back(id);
    }
    std::vector<QByteArray> datagrams;
    for (int i = 0; i < kPerSecond * kSeconds; ++i)
      datagrams.push_back(StatusDatagram(targets[std::size_t(i * 7919) % targets.size()], i));

    TNetModule net;
    TDeviceEvents bare(b.table, net);
    const double bareMs = RunStream(bare, datagrams, kPerSecond);

    TDeviceEvents live(b.table, net);
    b.view.ConnectEvents(live);
    PaintCounter paints;
    b.view.viewport()->installEventFilter(&paints);
    const double boardMs = RunStream(live, datagrams, kPerSecond);

    state.counters["bare_cpu_ms"] = bareMs;
    state.counters["board_cpu_ms"] = boardMs;
    state.counters["ratio"] = boardMs / bareMs;
    state.counters["paints"] = paints.Paints;
    state.counters["targets"] = double(targets.size());
  }
}
BENCHMARK(BM_StatusStreamIntoBoard)
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

int main(int argc, char **argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  // "--png FILE": one frame of the board as the benchmark paints it, for a look.
  const QStringList args = app.arguments();
  if (const qsizetype at = args.indexOf(u"--png"_s); at >= 0 && at + 1 < args.size()) {
    FullBoard b(QSize(1280, 800));
    b.Paint();
    return b.image.save(args[at + 1]) ? 0 : 1;
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
