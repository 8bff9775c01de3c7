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

private:
  void SendMoringCall(int code);
};

// The MixData word of an extension, read as its named parts.
int NoDisturbModeOf(quint16 mixData);
int VoiceMailOf(quint16 mixData);
int MoringCallDelayFlagOf(quint16 mixData);
int MoringCallAnswerFlagOf(quint16 mixData);
int MixData2MoringCallMode(quint16 mixData);
bool LoggedOnOf(quint16 mixData);
