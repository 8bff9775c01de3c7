#include "guest/BatchKinds.h"

#include "devices/DeviceEvents.h"
#include "guest/BatchWalk.h"
#include "guest/Hint_Form.h"
#include "guest/MoringCall_Unit.h"

void WireBatchWalk(TBatchWalk &walk, TDeviceEvents &events, TNetModule &net, THint_Form &srvClass,
                   TMoringCall_Form &moringCall) {
  // Each step repeats the kind's last command with the values it went out
  // with; only the room changes.
  events.SrvClassBatchRunning = [&srvClass] { return srvClass.MultiApply; };
  events.StepSrvClassBatch = [&walk, &net] {
    walk.Step([&net](int id) {
      net.SrvDstID = id;
      net.Send(TNetModule::SetSrvClass);
    });
  };
  events.MoringCallBatchRunning = [&moringCall] { return moringCall.MultiApply; };
  events.StepMoringCallBatch = [&walk, &net](int code) {
    walk.Step([&net, code](int id) {
      net.DstID = id;
      net.Send(code);
    });
  };
  events.StepNoDisturbBatch = [&walk, &net] {
    walk.Step([&net](int id) {
      net.NodisturbTarget = id;
      net.Send_NodisturbCtrl(id, net.LastCommand);
    });
  };
}
