#pragma once

#include <QObject>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

#include <memory>

class ExchangeSim;
class RecordServer;

// `trunkdesk --demo`: a small hotel's exchange inside the console's own process,
// on loopback, and a throwaway program folder whose settings log in to it. Rooms
// change state, calls ring in now and then, call records arrive, and a recording
// server holds calls to search and play: a newcomer sees a working console with
// one command. An operator with a real exchange starts
// the console without it.
class DemoExchange : public QObject {
  Q_OBJECT

public:
  DemoExchange();
  ~DemoExchange() override;

  // The automation API of the demonstration desk: curl it with this token.
  static constexpr quint16 kDemoApiPort = 5010;
  static constexpr char kDemoApiToken[] = "demo-token-0123456789";

  // Starts the exchange and writes the home's settings; false if it can't listen.
  bool Start();
  QString Home() const { return m_home.path(); }
  quint16 EventPort() const { return m_eventPort; }

private:
  void RingSomeone();
  // A recording server with a few hundred calls on its usual ports; false
  // (and the exchange knows of none) when they are taken.
  bool StartRecordings();

  QTemporaryDir m_home;
  std::unique_ptr<ExchangeSim> m_sim;
  std::unique_ptr<RecordServer> m_records;
  quint16 m_eventPort = 0;
  QTimer m_calls;
  int m_callNo = 0;
};
