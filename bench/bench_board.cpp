// A full repaint of the visible board with 3072 devices listed, at the top and
// in the middle of the list (where the paint walks past half the board first).
#include "devices/PhoneBoard.h"
#include "ui/BoardView.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>

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
