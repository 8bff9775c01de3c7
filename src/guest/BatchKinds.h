#pragma once

class TBatchWalk;
class TDeviceEvents;
class TMoringCall_Form;
class THint_Form;
class TNetModule;

// Hands the device monitor's answer handlers the one walk, with what each kind
// sends for the next room: the service class and wake-up dialogs say by their
// MultiApply whether their batch runs, do-not-disturb by TNetModule::MultiTask.
void WireBatchWalk(TBatchWalk &walk, TDeviceEvents &events, TNetModule &net, THint_Form &srvClass,
                   TMoringCall_Form &moringCall);
