#pragma once

#include "directory/RecordChannel.h"
#include "directory/RecordRowsModel.h"
#include "support/TDateTime.h"

#include <QObject>
#include <QUrl>

// The recordings page ("录音记录"): the recording server's address from the
// exchange or the settings, the connect key, the search over the server's
// Record_Table and the grid of what it found. A double-click asks for a player.
class TRecordServerPage : public QObject {
  Q_OBJECT

public:
  explicit TRecordServerPage(QObject *parent = nullptr);

  // --- the page's controls, as the screen shows them ---
  QString TeSEdit_RecordIP;
  QString StaticText_RecordMsg;
  QString LMDSimpleLabel_status;
  QString LMDSimpleLabel_RecordRetCode;
  QString TeButton_Connect2RecServer_Caption = QStringLiteral("连接");
  bool TeButton_RecordSearch_Enabled = false;
  bool TeSpeedButton_RecordAdmin_Enabled = false;
  // The operator's own extension, filled at login; the search runs only when
  // it isn't blank. Ticked, the search keeps to calls of that extension.
  QString Edit_Caller;
  bool Edit_Caller_Enabled = false;
  QString Edit_Caller_Hint;
  bool CheckBox_Caller = false;
  bool CheckBox_Caller_Enabled = false;
  bool CheckBox_RecordStart = false; // connectTime from the date and time below
  TDateTime DateTimePicker_RecordStart_Date;
  TDateTime DateTimePicker_RecordStart_Time;
  bool CheckBox_RecordEnd = false; // startTime up to the date and time below
  TDateTime DateTimePicker_RecordEnd_Date;
  TDateTime DateTimePicker_RecordEnd_Time;
  bool CheckBox_ExactNo = false; // this number as caller or called, exactly
  QString Edit_ExactNo;
  bool CheckBox_LikeNo = false; // this text inside the caller or called number
  QString Edit_LikeNo;
  // Set to 1 once a query was made.
  int RecordResultTag = 0;
  bool Connected = false;
  TRecordRowsModel DBGridEh_Record;

  TRecordChannel HTTPChannel;
  // The server's two ports, fixed by the protocol; a test's server picks others.
  quint16 QueryPort = RecordProtocol::kQueryPort;
  quint16 FilePort = RecordProtocol::kFilePort;

  // The login's part: the own-extension box takes the number.
  void LoggedInAs(const QString &number);
  // The exchange's answer about the recording server: code "1000" and its address.
  void ProcessRecordInfo(const QString &code, const QString &address);
  // Connects, or breaks the connection when it is up.
  void TeButton_Connect2RecServerClick();
  void TeButton_RecordSearchClick();
  void DBGridEh_RecordDblClick(int row);

  struct Statement {
    QString Text;
    QVariantMap Params;
  };
  // The search as the boxes stand; empty Text when the number is blank.
  Statement BuildStatement() const;
  void RecordServerQuery(const Statement &statement);

signals:
  void changed();
  // Play `source`; the caption names the call.
  void playRequested(const QUrl &source, const QString &caption);

private:
  void AfterConnect();
  void ChannelException(const QString &reason);
  void Answered(const RecordProtocol::Answer &answer);
  void SetConnected(bool connected);
};
