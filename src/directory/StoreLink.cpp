#include "directory/StoreLink.h"

#include "directory/SysDM_Unit.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QCoreApplication>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {
QString Channel() {
  return QString::fromUtf16(TStoreLink::kChannel);
}

// The server's words for "this statement ran inside a transaction that had
// already failed": the connection itself is fine.
constexpr char16_t kInFailedTransaction[] = u"25P02";

const QStringList kSharedTables = {u"exts"_s, u"maininfo"_s, u"pbxconrecords"_s, u"task_table"_s};
} // namespace

TStoreLink::TStoreLink() {
  m_retry.setSingleShot(true);
  connect(&m_retry, &QTimer::timeout, this, &TStoreLink::TryReconnect);
  m_watch.setInterval(kWatchMs);
  connect(&m_watch, &QTimer::timeout, this, [this] {
    if (m_attached && !m_away && !StoreConnection().isOpen())
      GoAway(u"the server closed the connection"_s);
  });
  m_changesTimer.setSingleShot(true);
  m_changesTimer.setInterval(kChangesDelayMs);
  connect(&m_changesTimer, &QTimer::timeout, this, [this] {
    QStringList tables(m_changed.begin(), m_changed.end());
    m_changed.clear();
    tables.sort();
    emit tablesChanged(tables);
  });
}

TStoreLink::~TStoreLink() {
  if (m_probe)
    m_probe->wait();
}

QString TStoreLink::ConnectOptions() {
  return u"keepalives=1;keepalives_idle=5;keepalives_interval=2;keepalives_count=3;"
         u"tcp_user_timeout=5000"_s;
}

void TStoreLink::StopWithTheApplication() {
  // The link outlives the application (it is part of the process-wide data
  // module): its timers stop while the event loop's thread still has them.
  if (QCoreApplication *app = QCoreApplication::instance())
    connect(app, &QObject::destroyed, this, &TStoreLink::StopTimers, Qt::UniqueConnection);
}

void TStoreLink::StopTimers() {
  m_watch.stop();
  m_retry.stop();
  m_changesTimer.stop();
}

void TStoreLink::Attach() {
  m_attached = true;
  StopWithTheApplication();
  m_watch.start();
  QSqlDatabase db = StoreConnection();
  QSqlQuery q(db);
  // Another desk's lock is waited for a moment, not a shift; a statement
  // that runs away is stopped by the server.
  q.exec(u"SET lock_timeout = '5s'"_s);
  q.exec(u"SET statement_timeout = '60s'"_s);
  QSqlDriver *driver = db.driver();
  connect(driver, &QSqlDriver::notification, this, &TStoreLink::OnNotification,
          Qt::UniqueConnection);
  if (!driver->subscribedToNotifications().contains(Channel()) &&
      !driver->subscribeToNotification(Channel()))
    WriteLog(u"Store: other desks' changes can't be followed: "_s + driver->lastError().text());
}

void TStoreLink::Reset() {
  m_watch.stop();
  m_retry.stop();
  m_changesTimer.stop();
  m_changed.clear();
  if (m_probe) {
    m_probe->wait();
    m_probe.reset();
  }
  m_ownWrites.clear();
  m_attached = false;
  m_retryMs = kFirstRetryMs;
  if (m_away) {
    m_away = false;
    emit awayChanged(false);
  }
}

bool TStoreLink::CheckLost() {
  if (Sys_DM().Target() != SqlTarget::Postgres)
    return false;
  if (m_away)
    return true;
  // A store refused at start was closed on purpose; nothing to reconnect.
  if (!m_attached)
    return false;
  QSqlDatabase db = StoreConnection();
  QString reason = u"the connection is closed"_s;
  if (db.isOpen()) {
    QSqlQuery q(db);
    if (q.exec(u"SELECT 1"_s) || q.lastError().nativeErrorCode() == kInFailedTransaction)
      return false;
    reason = q.lastError().text().trimmed();
  }
  GoAway(reason);
  return true;
}

void TStoreLink::GoAway(const QString &reason) {
  m_away = true;
  m_attached = false;
  m_watch.stop();
  m_lastReason = reason;
  // Closed, so that nothing else waits on a dead line; the records that
  // arrive meanwhile see a closed store and are kept.
  StoreConnection().close();
  WriteLog(u"Store: the connection to the database server %1 is lost (%2); retrying"_s.arg(
      Sys_DM().FileName(), reason));
  TheShell().Message(
      MessageKind::Warning,
      u"与共享数据库(%1)的连接中断了。控制台按现在显示的继续工作; 呼叫记录暂存在本机, 数据库恢复后"
      u"写入。控制台会自动重新连接。"_s.arg(Sys_DM().FileName()));
  Sys_DM().PendingWrites().Close();
  emit awayChanged(true);
  m_retryMs = kFirstRetryMs;
  m_retry.start(m_retryMs);
}

void TStoreLink::StartRetrying(const QString &reason) {
  StopWithTheApplication();
  m_away = true;
  m_lastReason = reason;
  m_retryMs = kFirstRetryMs;
  emit awayChanged(true);
  m_retry.start(m_retryMs);
}

QString TStoreLink::AwayText() const {
  return u"共享数据库(%1)暂时连接不上; 控制台会自动重新连接。"_s.arg(Sys_DM().FileName());
}

void TStoreLink::RetryNow() {
  if (m_away && !m_probe) {
    m_retry.stop();
    TryReconnect();
  }
}

void TStoreLink::TryReconnect() {
  if (m_probe || !m_away)
    return;
  const QSqlDatabase store = StoreConnection();
  struct Target {
    QString host, database, user, password, options;
    int port;
  } t{store.hostName(), store.databaseName(),   store.userName(),
      store.password(), store.connectOptions(), store.port()};
  m_probe.reset(QThread::create([this, t] {
    const QString name = u"trunkdesk_store_probe"_s;
    bool reachable = false;
    QString reason;
    {
      QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, name);
      db.setHostName(t.host);
      db.setPort(t.port);
      db.setDatabaseName(t.database);
      db.setUserName(t.user);
      db.setPassword(t.password);
      db.setConnectOptions(t.options);
      reachable = db.open();
      reason = db.lastError().text().trimmed();
      db.close();
    }
    QSqlDatabase::removeDatabase(name);
    QMetaObject::invokeMethod(
        this, [this, reachable, reason] { ProbeDone(reachable, reason); }, Qt::QueuedConnection);
  }));
  m_probe->start();
}

void TStoreLink::ProbeDone(bool reachable, const QString &reason) {
  if (!m_probe)
    return; // reset meanwhile
  m_probe->wait();
  m_probe.reset();
  if (!m_away)
    return;
  QString failure = reachable ? QString() : reason;
  if (reachable && Reopen)
    failure = Reopen();
  if (!failure.isEmpty()) {
    if (failure != m_lastReason)
      WriteLog(u"Store: the database server is still away (%1)"_s.arg(failure));
    m_lastReason = failure;
    m_retryMs = qMin(m_retryMs * 2, kLastRetryMs);
    m_retry.start(m_retryMs);
    return;
  }
  m_away = false;
  m_retryMs = kFirstRetryMs;
  const qint64 waiting = Sys_DM().PendingWrites().Waiting();
  WriteLog(u"Store: the database server %1 is back; %2 kept records are written"_s
               .arg(Sys_DM().FileName())
               .arg(waiting));
  TheShell().Balloon(u"共享数据库"_s,
                     u"共享数据库已恢复, 期间暂存的 %1 条记录正在写入。"_s.arg(waiting),
                     10, BalloonIcon::Info);
  emit awayChanged(false);
  Sys_DM().PendingWrites().Flush();
  // What other desks wrote meanwhile was announced to nobody here.
  emit tablesChanged(kSharedTables);
}

void TStoreLink::NoteOwnWrite(const QString &table, qint64 id, qint64 version) {
  m_ownWrites.insert(table.toLower() + u':' + QString::number(id), version);
}

void TStoreLink::AnnounceOverwrite(const QString &table, qint64 id, qint64 replacedVersion) {
  QSqlQuery q(StoreConnection());
  q.prepare(u"SELECT pg_notify(?, ?)"_s);
  q.addBindValue(Channel());
  q.addBindValue(u"overwritten:%1:%2:%3"_s.arg(table.toLower()).arg(id).arg(replacedVersion));
  if (!q.exec())
    WriteLog(u"Store: the overwrite could not be announced: "_s + q.lastError().text());
}

void TStoreLink::OnNotification(const QString &name, QSqlDriver::NotificationSource source,
                                const QVariant &payload) {
  if (name != Channel() || source == QSqlDriver::SelfSource)
    return;
  const QString text = payload.toString();
  if (text.startsWith(u"overwritten:"_s)) {
    const QStringList parts = text.split(u':');
    if (parts.size() != 4)
      return;
    const QString key = parts[1] + u':' + parts[2];
    const auto own = m_ownWrites.constFind(key);
    if (own != m_ownWrites.cend() && *own == parts[3].toLongLong())
      emit ownWriteOverwritten(parts[1], parts[2].toLongLong());
    return;
  }
  if (text.isEmpty())
    return;
  m_changed.insert(text.toLower());
  if (!m_changesTimer.isActive())
    m_changesTimer.start();
}
