#pragma once

#include <QString>
#include <QtGlobal>

// The console's state record. `SysParam` is live; `LastSysParam` is the copy
// made after each packet, so a handler can compare and see a transition (which
// is how a finished call learns what kind of call it was).
struct TNetPhone_SysParam {
  quint8 Connected = 0;
  quint8 LoggedIn = 0;
  quint8 PulseSeen = 0;
  quint16 MyID = 65535; // 65535: no session, and nothing but a login goes out
  QString MyTelNo;
  QString CallerNo;
  QString CalledNo;
  QString Password;
  quint8 CallState = 0;
  quint8 LoginDone = 0;
  QString DialBuffer;
  // The current contact and its two working strings join here with the contact book.
  quint8 LogAsDialOut = 0;
  quint16 GsmModule = 0;
  quint16 GsmBusy = 0;
  QString GsmNumber;
  QString RecordRetCode;
  QString LastCallerNo;
};

TNetPhone_SysParam &SysParam();
TNetPhone_SysParam &LastSysParam();
