#include "SimCalls.h"

using namespace Qt::StringLiterals;

SimCall::SimCall(QObject *parent) : QObject(parent) {
  DialTimer.setSingleShot(true);
  AnswerTimer.setSingleShot(true);
  connect(&DialTimer, &QTimer::timeout, this, &SimCall::DialComplete);
  connect(&AnswerTimer, &QTimer::timeout, this, &SimCall::AnswerByFarEnd);
}

QString SimCall::StateName(quint8 state) {
  switch (state) {
  case OutOfService:
    return u"out of service"_s;
  case Idle:
    return u"idle"_s;
  case Ringing:
    return u"ringing"_s;
  case CallBack:
    return u"call back"_s;
  case Dialling:
    return u"off hook, dialling"_s;
  case Calling:
    return u"calling out"_s;
  case ToHangUp:
    return u"to hang up"_s;
  case Connected:
    return u"connected"_s;
  default:
    return u"state %1"_s.arg(state);
  }
}

void SimCall::SetLine(qint16 line) {
  // An idle extension reports its own line at once; a call keeps the line it came on.
  OwnLine = line;
  if (Now.State == Idle)
    Now.Line = line;
}

bool SimCall::OffHook() {
  switch (Now.State) {
  case Idle:
    Digits.clear();
    Enter(Dialling, {}, false);
    return true;
  case Ringing:
    Enter(Connected, Now.Caller, false);
    return true;
  case CallBack:
    // The exchange rings the console back once the party it wanted is free:
    // lifting the handset now calls that party.
    Enter(Calling, Now.Caller, true);
    return true;
  default:
    return false;
  }
}

bool SimCall::OnHook() {
  if (Now.State == Idle)
    return false;
  // The handset down ends everything, a held call included.
  Holding = false;
  Held.clear();
  ToIdle();
  return true;
}

bool SimCall::Dial(const QString &digits) {
  // Digits in any other state are tones on a call already made: nothing moves.
  if (Now.State != Dialling || digits.isEmpty())
    return false;
  Digits += digits;
  if (DialCompleteAfter == 0)
    DialComplete();
  else
    DialTimer.start(DialCompleteAfter);
  return true;
}

bool SimCall::PhoneCommand(quint16 code) {
  const quint8 state = Now.State;
  switch (code) {
  case Query:
  case AskState:
    emit stateRepeated(Now);
    return true;
  case Hold:
    // One call on hold at a time; the console's dial tone is for the consult call.
    if (state != Connected || Holding)
      return false;
    Holding = true;
    Held = Now.Caller;
    HeldLogAsDialOut = Now.LogAsDialOut;
    Digits.clear();
    Enter(Dialling, {}, false);
    return true;
  case Transfer:
    // The held party and the dialled one are put together; the console's
    // extension is free.
    if (state != Dialling && state != Connected)
      return false;
    Holding = false;
    Held.clear();
    ToIdle();
    return true;
  case Cancel:
    if (state == Dialling || state == Calling || state == ToHangUp ||
        (state == Connected && Holding)) {
      if (Holding)
        ResumeHeld();
      else
        ToIdle();
      return true;
    }
    return false;
  case Conference:
    // There is nobody to join without a held call.
    if (!Holding || (state != Dialling && state != Calling && state != Connected))
      return false;
    if (state == Dialling) {
      ResumeHeld(); // nobody dialled yet: the held party alone comes back
    } else {
      const QString held = Held;
      Holding = false;
      Held.clear();
      Enter(Connected, Now.Caller, Now.LogAsDialOut, held);
    }
    return true;
  default:
    return false;
  }
}

bool SimCall::Ring(const QString &caller, int line) {
  if (Now.State != Idle)
    return false;
  Now.Line = line < 0 ? OwnLine : static_cast<qint16>(line);
  Enter(Ringing, caller, false);
  return true;
}

bool SimCall::RingBack(const QString &caller) {
  if (Now.State != Idle)
    return false;
  Enter(CallBack, caller, false);
  return true;
}

bool SimCall::AnswerByFarEnd() {
  if (Now.State != Calling)
    return false;
  Enter(Connected, Now.Caller, Now.LogAsDialOut);
  return true;
}

bool SimCall::HangUpByFarEnd() {
  if (Now.State != Calling && Now.State != Connected)
    return false;
  Enter(ToHangUp, Now.Caller, Now.LogAsDialOut);
  return true;
}

bool SimCall::GiveUp(QString *caller) {
  if (Now.State != Ringing && Now.State != CallBack)
    return false;
  if (caller)
    *caller = Now.Caller;
  ToIdle();
  return true;
}

void SimCall::Enter(quint8 state, const QString &caller, bool logAsDialOut, const QString &called) {
  if (state != Dialling)
    DialTimer.stop();
  if (state != Calling)
    AnswerTimer.stop();
  Now.State = state;
  Now.Caller = caller;
  Now.Called = called;
  Now.LogAsDialOut = logAsDialOut;
  emit stateChanged(Now);
  if (state == Calling && AnswerAfter == 0)
    AnswerByFarEnd();
  else if (state == Calling && AnswerAfter > 0)
    AnswerTimer.start(AnswerAfter);
}

void SimCall::ToIdle() {
  Now.Line = OwnLine;
  Digits.clear();
  Enter(Idle, {}, false);
}

void SimCall::DialComplete() {
  if (Now.State != Dialling || Digits.isEmpty())
    return;
  // The number dialled is the party called; the console logs the call as dialled.
  Enter(Calling, Digits, true);
}

void SimCall::ResumeHeld() {
  const QString held = Held;
  Holding = false;
  Held.clear();
  Enter(Connected, held, HeldLogAsDialOut);
}
