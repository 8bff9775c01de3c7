// A batch over 300 checked rooms against the simulated exchange on loopback:
// the time from the batch key to the success message, beside the floor of 300
// lock-step round trips of the same request over the same link in the same
// run. The walk should stay within 3x of that floor.
// Check-out of 200 checked rooms likewise, beside 200 x 4 lock-step round
// trips of its four requests (class, voice mail, do-not-disturb, wake-up);
// within 4x of that floor.
#include "BenchDesk.h"

#include "devices/DeviceEvents.h"
#include "devices/NetModule.h"
#include "guest/FrontDesk.h"
#include "guest/Hint_Form.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {
constexpr int kRooms = 300;

Desk &TheDesk() {
  static Desk desk(kRooms);
  return desk;
}
} // namespace

// The floor: one service class change after the other, each sent when the
// previous answer has been handled (a single change's answer shows a message).
static void BM_LockStepFloor300(benchmark::State &state) {
  Desk &d = TheDesk();
  if (!d.ready) {
    state.SkipWithError("the console did not log in");
    return;
  }
  TNetModule &net = d.main->NetModule();
  for (auto _ : state) {
    double total = 0;
    for (int id = 0; id < kRooms; ++id) {
      const double s = d.Until(1, [&] {
        net.SrvDstID = id;
        net.SrvClass = 1;
        net.Send(TNetModule::SetSrvClass);
      });
      if (s < 0) {
        state.SkipWithError("an answer did not come");
        return;
      }
      total += s;
    }
    state.SetIterationTime(total);
  }
}
BENCHMARK(BM_LockStepFloor300)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

// The batch key of the service class dialog over all 300 checked rooms.
static void BM_BatchSrvClass300(benchmark::State &state) {
  Desk &d = TheDesk();
  if (!d.ready) {
    state.SkipWithError("the console did not log in");
    return;
  }
  d.main->ExtsView().N27Click(); // check every row
  THint_Form &hint = d.main->Hint_Form();
  for (auto _ : state) {
    hint.OpenFor(0, false);
    hint.srvClass_TeComboBox_ItemIndex = 1;
    const double s = d.Until(1, [&] { hint.TeButton_srvClsApply_MultiClick(); });
    if (s < 0 || d.LastMessage != u"提示:批量修改成功完成！"_s) {
      state.SkipWithError("the batch did not end with its success message");
      return;
    }
    state.SetIterationTime(s);
  }
}
BENCHMARK(BM_BatchSrvClass300)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

namespace {
constexpr int kCheckOutRooms = 200;
constexpr int kVacantClass = 4;
} // namespace

// The floor of a check-out: its four requests for each room, each sent when
// the console has dispatched the previous answer.
static void BM_LockStepFloorCheckOut200(benchmark::State &state) {
  Desk &d = TheDesk();
  if (!d.ready) {
    state.SkipWithError("the console did not log in");
    return;
  }
  TNetModule &net = d.main->NetModule();
  TDeviceEvents &events = d.main->DeviceEvents();
  const auto saved = events.FrontDeskAnswer;
  QEventLoop loop;
  events.FrontDeskAnswer = [&](int, const char *) {
    loop.quit();
    return true;
  };
  const std::function<void(int)> requests[] = {
      [&](int id) {
        net.SrvDstID = id;
        net.SrvClass = kVacantClass;
        net.Send(TNetModule::SetSrvClass);
      },
      [&](int id) { net.Send_VoiceMailClear(id); },
      [&](int id) { net.Send_NodisturbCtrl(id, NoDisturbCommandOf(0)); },
      [&](int id) {
        net.DstID = id;
        net.Send(TNetModule::MoringCallCancel);
      }};
  for (auto _ : state) {
    QElapsedTimer clock;
    clock.start();
    for (int id = 0; id < kCheckOutRooms; ++id) {
      for (const auto &send : requests) {
        send(id);
        loop.exec();
      }
    }
    state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
  }
  events.FrontDeskAnswer = saved;
}
BENCHMARK(BM_LockStepFloorCheckOut200)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

// Check-out of 200 checked rooms, from the key to the success message: the
// exchange's four requests a room and each room's store rows.
static void BM_CheckOut200(benchmark::State &state) {
  Desk &d = TheDesk();
  if (!d.ready ||
      !QTest::qWaitFor([&] { return d.main->DeviceEvents().SrvClassNames.rowCount() > 0; })) {
    state.SkipWithError("the console did not log in");
    return;
  }
  SysConfig().VacantClass = kVacantClass;
  TExtsView &exts = d.main->ExtsView();
  TExtGridModel &g = exts.AdvStringGrid_Exts;
  exts.N29Click();
  for (int id = 0; id < kCheckOutRooms; ++id)
    g.SetCheck(g.SlotOfId(id), u"TRUE"_s);
  for (auto _ : state) {
    const double s = d.Until(1, [&] { d.main->FrontDesk().CheckOut(true); });
    if (s < 0 || d.LastMessage != u"提示:批量修改成功完成！"_s) {
      state.SkipWithError("the check-out did not end with its success message");
      return;
    }
    state.SetIterationTime(s);
  }
}
BENCHMARK(BM_CheckOut200)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv) {
  return RunDeskBenchmarks(argc, argv, [] { return &TheDesk(); });
}
