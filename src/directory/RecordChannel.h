#pragma once

#include "directory/RecordProtocol.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>

#include <QNetworkReply>

// The channel to a recording server: one request at a time over HTTP, never
// waiting. The desk keeps answering calls while a slow server thinks; a server
// that never answers is given up after TimeoutMs.
class TRecordChannel : public QObject {
  Q_OBJECT

public:
  explicit TRecordChannel(QObject *parent = nullptr);

  // "http://<host>:9004/bin"; set at each connect.
  void SetTarget(const QString &target) { m_target = target; }
  QString Target() const { return m_target; }

  // Asks the server who it is; afterConnect or exception follows.
  void Connect();
  // Sends one statement; answered or exception follows. A request still out is
  // dropped: the operator's latest search is the one that counts.
  void Query(const QString &statement, const QVariantMap &params);
  // Drops the request still out, if any; nothing follows from it.
  void Abort();
  bool Busy() const { return m_reply != nullptr; }

  int TimeoutMs = 15000;

signals:
  void afterConnect();
  // The server's answer in the protocol: rows, or the server's refusal in Error.
  void answered(const RecordProtocol::Answer &answer);
  // No answer in the protocol: the server away, refusing, broken or too slow.
  void exception(const QString &reason);

private:
  enum class Kind { Connect, Query };
  void Send(Kind kind, QNetworkReply *reply);
  void Finished(QNetworkReply *reply, Kind kind);

  QNetworkAccessManager m_net;
  QString m_target;
  QPointer<QNetworkReply> m_reply;
  bool m_tooLarge = false;
};
