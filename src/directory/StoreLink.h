#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QSqlDriver>
#include <QString>
#include <QTimer>

#include <functional>
#include <memory>

class QThread;

// The desk's hold on a shared store through a shift: it notices when the
// server goes away, says so once, and reconnects by itself with a growing
// pause between tries; and it passes on what other desks change, so that the
// open views can read again. Nothing here knows a window: the upper layers
// subscribe to the signals. On a file store it stays idle.
//
// A try to reconnect never waits on the main thread for a server that doesn't
// answer: a first connection is made on a thread of its own, and only when
// that one succeeds is the store's own connection opened again.
class TStoreLink : public QObject {
  Q_OBJECT

public:
  static constexpr int kFirstRetryMs = 1000;
  static constexpr int kLastRetryMs = 30000;
  // Changes of one moment (a burst of call records) are announced together.
  static constexpr int kChangesDelayMs = 100;
  // How often an idle desk looks whether the driver has closed the
  // connection (it does when the server ends it or keepalives find the line
  // dead); a look costs no statement.
  static constexpr int kWatchMs = 2000;
  // The one channel the schema's triggers notify: the payload is the table's
  // name in lower case, or an overwrite note (see AnnounceOverwrite).
  static constexpr char16_t kChannel[] = u"trunkdesk_changes";

  TStoreLink();
  ~TStoreLink() override;

  // Every connection to the server: a server that doesn't answer costs
  // seconds, never minutes (the time-out of a connect), and a dead line is
  // noticed by keepalives and the TCP timeout (the libpq options) rather than
  // by waiting forever.
  static constexpr int kConnectTimeoutSeconds = 3;
  static QString ConnectOptions();

  // After each open of the server's connection: the session's limits and the
  // subscription to other desks' changes.
  void Attach();
  // The store closes or opens anew: no retries, no subscription, not away.
  void Reset();

  bool Away() const { return m_away; }
  // A statement on the server failed. True when the reason is that the
  // server is gone: the connection is then closed, the operator told (once
  // for the spell), and the tries to reconnect begin.
  bool CheckLost();
  // The server could not be reached at start: the same tries begin.
  void StartRetrying(const QString &reason);
  // The words for an operation that can't run while the server is away.
  QString AwayText() const;
  // The pause before the next try; it doubles after each failure.
  int RetryMs() const { return m_retryMs; }
  // Tries at once (the operator's "reconnect now", and tests).
  void RetryNow();

  // Given by the store: opens its connection again and checks it; empty when
  // the store is usable, else the reason.
  std::function<QString()> Reopen;

  // A row version this desk wrote. When another desk's later save replaces
  // exactly that version, it announces so and this desk hears of it.
  void NoteOwnWrite(const QString &table, qint64 id, qint64 version);
  void AnnounceOverwrite(const QString &table, qint64 id, qint64 replacedVersion);

signals:
  void awayChanged(bool away);
  // Tables (lower case) another desk wrote to.
  void tablesChanged(const QStringList &tables);
  // A save of this desk was replaced by another desk's later save.
  void ownWriteOverwritten(const QString &table, qint64 id);

private slots:
  void StopTimers();

private:
  void StopWithTheApplication();
  void GoAway(const QString &reason);
  void TryReconnect();
  void ProbeDone(bool reachable, const QString &reason);
  void OnNotification(const QString &name, QSqlDriver::NotificationSource source,
                      const QVariant &payload);

  bool m_away = false;
  bool m_attached = false; // the connection was opened and is in use
  int m_retryMs = kFirstRetryMs;
  QString m_lastReason;
  QTimer m_retry;
  QTimer m_watch;
  QTimer m_changesTimer;
  QSet<QString> m_changed;
  std::unique_ptr<QThread> m_probe;
  QHash<QString, qint64> m_ownWrites; // "table:id" -> the version this desk wrote
};
