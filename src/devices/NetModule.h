#pragma once

#include <QString>

// The sender of the device requests. It remembers what was last asked and of
// whom, so that a batch can ask again for the next room by the same code.
class TNetModule {
public:
  enum Code {
    QueryDevice = 1,
    MoringCallSet = 2,    // DstID, CallTime, MoringMode
    MoringCallCancel = 3, // DstID
    MoringCallQuery = 4,  // DstID
    SetSrvClass = 5,
    QuerySrvClassName = 6
  };

  int LastCommand = 0;
  int NextID = 0;
  int SrvClassIndex = 0;
  QString CallTime;
  int MoringMode = 0;
  int DstID = 0;
  int SrvDstID = 0;
  int SrvClass = 0;
  bool MultiTask = false;
  int NodisturbTarget = 0;

  // Sends a request by its code. Without a session nothing goes and the code
  // isn't remembered either, so a batch never repeats what never went out.
  void Send(int code);

  // The do-not-disturb command for one extension (type 24, sub-code 152).
  // `command` is the wire value (NoDisturbCommandOf), kept as LastCommand so
  // that a batch repeats it.
  void Send_NodisturbCtrl(int id, int command);
  // Clears the room's waiting voice messages. A batch never repeats it by
  // code, so LastCommand stays what it was.
  void Send_VoiceMailClear(int id);

private:
  void SendMoringCall(int code);
};

// A type 24 control packet: the sub-code at 12, a device or switch at 16 and,
// in the 20-byte form, a value at 18. Nothing goes without a session.
void SendDeviceControl(quint16 subCode, int length, quint16 at16, quint16 at18 = 0);

// The wire value of a do-not-disturb mode: the exchange numbers "outside
// calls only" 4, not 3. Anything unknown is "off".
int NoDisturbCommandOf(int mode);

// The MixData word of an extension, read as its named parts.
int NoDisturbModeOf(quint16 mixData);
int VoiceMailOf(quint16 mixData);
int MoringCallDelayFlagOf(quint16 mixData);
int MoringCallAnswerFlagOf(quint16 mixData);
int MixData2MoringCallMode(quint16 mixData);
bool LoggedOnOf(quint16 mixData);
