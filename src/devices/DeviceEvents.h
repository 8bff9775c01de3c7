#pragma once

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"

#include <QObject>
#include <QStringListModel>
#include <QTimer>

#include <functional>

// Keeps the device table true: the answers to the console's own requests (the
// lock-step enumeration, service classes, wake-up answers) and the exchange's
// live status datagrams.
class TDeviceEvents : public QObject {
  Q_OBJECT

public:
  TDeviceEvents(TCallControlDev &table, TNetModule &net, QObject *parent = nullptr);

  // The TCP answers, each given the dispatcher's zero-filled 2048-byte copy.
  void processPacketFromSocket_OtherTIS(const char *work);
  void processPacketFromSocket_SrvClass(const char *work);
  void processPacketFromSocket_SrvClassName(const char *work);
  void processPacketFromSocket_MoringCall(const char *work);
  void processPacketFromSocket_VoiceMail(const char *work);
  void processPacketFromSocket_Other(const char *work);

  // A status datagram's record (at most 108 bytes are read; the rest are zeros).
  void Device_UpdateStatus(const char *record, int length);
  void refreshMixShow(int id, quint16 mixData);
  void ShowModule(int id, qint16 signal, quint16 flags, quint16 state, const QString &moduleType);

  // "YYYYMMDDHHNN", blanks left out; empty (or no date at all) is none.
  static TDateTime ParseWakeUpText(const QString &text);

  // The service class names, "1:name" ..., for the service class dialog.
  QStringListModel SrvClassNames;
  bool RefrshPhones_tefxButton_Enabled = true;
  QTimer Timer_ExcuteAction;

  // Batches of the guest-room dialogs step on these answers; the dialogs say
  // whether one runs and walk it. Until they are there, no batch runs.
  std::function<bool()> SrvClassBatchRunning;
  std::function<bool()> MoringCallBatchRunning;
  std::function<void()> StepSrvClassBatch;
  std::function<void(int code)> StepMoringCallBatch;
  std::function<void()> StepNoDisturbBatch;
  // A check-in or check-out in progress takes the answers to its own requests
  // (types 22, 24/152, 35, 40) before anything else; true when it took one.
  // With none running every answer goes where it always went.
  std::function<bool(int type, const char *work)> FrontDeskAnswer;

signals:
  void Ext_AddRow(int id);    // an extension was reported: a grid row
  void Ext_UpdateRow(int id); // its grid row shows new state
  void enumerationFinished();
  // The exchange's list of service class names is complete.
  void srvClassNamesLoaded();
  void panelChanged(int id);
  // A wake-up query's answer for the wake-up dialog: the text ("" for none) and
  // the mode 1..3.
  void moringCallAnswered(const QString &callTime, int mode);
  // Type 24 notices 137, 144 and 145 for the panel actions and call lists.
  void deviceNotice(int subCode, const QByteArray &work);

private:
  void SetColour(TPhoneTis &p, int entry);
  void ExtensionFromMix(TPhoneTis &p, quint16 mixData);

  TCallControlDev &m_table;
  TNetModule &m_net;
};
