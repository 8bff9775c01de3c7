#pragma once

#include "guest/FrontDesk.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QHostAddress>
#include <QHttpServerRequest>
#include <QJsonObject>
#include <QObject>
#include <QPointer>

#include <memory>

class QTcpSocket;
class TApiEvents;
class TMain_Form;
class TUDPMainForm;
struct TSysConfig;

// The automation API inside the console: rooms and wake-ups over HTTP + JSON,
// and a WebSocket of events, for the hotel's own systems. Every change goes
// through the logic the dialogs use, so the exchange sees the same packets and
// the store the same writes. Requests are served on the main thread, like the
// dialogs; the events go out to their subscribers from a thread of their own.
//
// A change the exchange answers (class, voice mail, check-in, check-out) runs
// as the front desk's one-room sequence, and its HTTP answer waits for the
// exchange's: the caller learns whether it happened.
class TApiServer : public QObject {
  Q_OBJECT

public:
  static constexpr qint64 kMaxBodyBytes = 64 * 1024;
  // Connections at once (event subscribers included) and how long one may
  // sit without a byte either way before it is closed.
  static constexpr int kMaxConnections = 256;
  int IdleMs = 30000; // taken at Start

  explicit TApiServer(TMain_Form &main, QObject *parent = nullptr);
  ~TApiServer() override;

  // Why these settings don't let the API start; empty when they do (or when
  // it is simply off: check ApiEnabled first).
  static QString Refusal(const TSysConfig &c);
  // Listens on address:port (0: any free port). The port, or 0 and *error.
  quint16 Start(const QHostAddress &address, quint16 port, const QByteArray &token,
                QString *error);
  quint16 Port() const { return m_port; }
  TApiEvents &Events() { return *m_events; }
  // The exchange's call records as they arrive go out as events too.
  void WatchCallRecords(TUDPMainForm &udp);

  // One HTTP request, answered on its socket.
  void Serve(const QHttpServerRequest &request, QTcpSocket *socket);

private:
  struct Reply {
    int Status = 200;
    QJsonObject Body; // empty for 204
    bool Deferred = false; // answered when the running sequence ends
    QByteArray Text; // a body written as text already; Body is then unused
  };
  Reply Route(const QHttpServerRequest &request);
  void Write(QTcpSocket *socket, const Reply &reply, bool close);
  Reply Rooms();
  Reply Room(const QString &ext);
  Reply Classes();
  Reply RoomJsonOf(int id) const;
  // The room writes (ApiRoomWrites.cpp): each checks the room, its body, then
  // Ready, before anything is sent or stored.
  Reply RoomWrite(int id, const QString &what, QHttpServerRequest::Method method,
                  const QByteArray &body);
  Reply Ready() const;
  Reply WakeUp(int id, const QByteArray &body, bool set);
  Reply Dnd(int id, const QByteArray &body);
  Reply Memo(int id, const QByteArray &body);
  Reply Sequence(int id, TFrontDesk::Action action, const QByteArray &body);
  void SequenceEnded(int id, TFrontDesk::Action action, TFrontDesk::Outcome outcome,
                     const QString &why);
  bool Authorized(const QByteArray &authorization) const;
  int DeviceOfExt(const QString &ext) const;
  bool BatchRunning() const;
  void StatusSeen(int id);
  void Publish(QJsonObject event); // nothing before Start

  class Http;
  TMain_Form &m_main;
  std::unique_ptr<Http> m_http;
  std::unique_ptr<TApiEvents> m_events;
  QByteArray m_expected; // "Bearer <token>"
  quint16 m_port = 0;
  bool m_walkRunning = false;
  QElapsedTimer m_walkStep; // since the walk's last send
  QHash<int, int> m_lastStatus; // device -> status last published
  // The request that waits for the front desk's sequence.
  struct Waiting {
    QPointer<QTcpSocket> Socket;
    bool Close = false;
    int Id = -1;
  };
  Waiting m_waiting;
};

// Starts the API when [Api] enables it; a refusal goes to the log and to the
// operator as a notice. Null when the API doesn't run. `udp`, when given,
// feeds the call records to the events.
std::unique_ptr<TApiServer> StartConfiguredApi(TMain_Form &main, TUDPMainForm *udp = nullptr);
