#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QHostAddress>
#include <QJsonObject>
#include <QObject>

#include <memory>

class QHttpServerRequest;
class QTcpSocket;
class TApiEvents;
class TMain_Form;
struct TSysConfig;

// The automation API inside the console: rooms and wake-ups over HTTP + JSON,
// and a WebSocket of events, for the hotel's own systems. Every change goes
// through the logic the dialogs use, so the exchange sees the same packets and
// the store the same writes. Runs on the main thread, like the dialogs.
class TApiServer : public QObject {
  Q_OBJECT

public:
  static constexpr qint64 kMaxBodyBytes = 64 * 1024;

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

  // One HTTP request, answered on its socket.
  void Serve(const QHttpServerRequest &request, QTcpSocket *socket);

private:
  struct Reply {
    int Status = 200;
    QJsonObject Body; // empty for 204
  };
  Reply Route(const QHttpServerRequest &request);
  Reply Rooms();
  Reply Room(const QString &ext);
  Reply WakeUp(const QString &ext, const QHttpServerRequest &request, bool set);
  bool Authorized(const QByteArray &authorization) const;
  int DeviceOfExt(const QString &ext) const;
  bool BatchRunning() const;
  void AcceptWebSockets();
  void StatusSeen(int id);

  class Http;
  TMain_Form &m_main;
  std::unique_ptr<Http> m_http;
  std::unique_ptr<TApiEvents> m_events;
  QByteArray m_expected; // "Bearer <token>"
  quint16 m_port = 0;
  bool m_walkRunning = false;
  QElapsedTimer m_walkStep; // since the walk's last send
  QHash<int, int> m_lastStatus; // device -> status last published
};

// Starts the API when [Api] enables it; a refusal goes to the log and to the
// operator as a notice. Null when the API doesn't run.
std::unique_ptr<TApiServer> StartConfiguredApi(TMain_Form &main);
