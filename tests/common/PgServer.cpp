#include "PgServer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QProcess>
#include <QTcpServer>

#ifdef Q_OS_UNIX
#include <pwd.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace {
// The newest installed server's programs: Debian keeps them out of PATH.
QString ServerBinDir() {
  const QString root = u"/usr/lib/postgresql"_s;
  QStringList versions = QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
  std::sort(versions.begin(), versions.end(),
            [](const QString &a, const QString &b) { return a.toInt() > b.toInt(); });
  for (const QString &v : versions) {
    const QString bin = root + u'/' + v + u"/bin"_s;
    if (QFile::exists(bin + u"/initdb"_s) && QFile::exists(bin + u"/pg_ctl"_s))
      return bin;
  }
  return QString();
}

int FreePort() {
  QTcpServer probe;
  return probe.listen(QHostAddress::LocalHost, 0) ? probe.serverPort() : 0;
}
} // namespace

bool PgServer::Run(const QString &program, const QStringList &arguments, int timeoutMs) {
  QProcess p;
  p.setProcessChannelMode(QProcess::MergedChannels);
  if (m_runAs.isEmpty())
    p.start(program, arguments);
  else
    p.start(u"runuser"_s, QStringList{u"-u"_s, m_runAs, u"--"_s, program} + arguments);
  const bool finished = p.waitForStarted(10000) && p.waitForFinished(timeoutMs);
  if (finished && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0)
    return true;
  m_error = u"%1 failed (%2): %3"_s.arg(QFileInfo(program).fileName(),
                                       finished ? u"exit code %1"_s.arg(p.exitCode())
                                                : p.errorString(),
                                       QString::fromLocal8Bit(p.readAll()).trimmed());
  if (!finished)
    p.kill();
  return false;
}

PgServer::PgServer() {
  m_bin = ServerBinDir();
  if (m_bin.isEmpty()) {
    m_error = u"No PostgreSQL server programs under /usr/lib/postgresql (package postgresql)"_s;
    return;
  }
  if (!m_dir.isValid()) {
    m_error = u"No temporary folder: "_s + m_dir.errorString();
    return;
  }
#ifdef Q_OS_UNIX
  if (geteuid() == 0) {
    const passwd *user = getpwnam("postgres");
    if (!user)
      user = getpwnam("nobody");
    if (!user || chown(QFile::encodeName(m_dir.path()).constData(), user->pw_uid, user->pw_gid) != 0) {
      m_error = u"Cannot hand the server's folder to an unprivileged user"_s;
      return;
    }
    m_runAs = QString::fromLocal8Bit(user->pw_name);
  }
#endif
  m_port = FreePort();
  if (m_port == 0) {
    m_error = u"No free port on 127.0.0.1"_s;
    return;
  }
  const QString data = m_dir.filePath(u"data"_s);
  if (!Run(m_bin + u"/initdb"_s,
           {u"-D"_s, data, u"-U"_s, User(), u"--auth=trust"_s, u"-E"_s, u"UTF8"_s,
            u"--locale=C.UTF-8"_s, u"--no-sync"_s},
           120000))
    return;
  {
    QFile hba(data + u"/pg_hba.conf"_s);
    QByteArray rules;
    if (hba.open(QIODevice::ReadOnly))
      rules = hba.readAll();
    hba.close();
    if (!hba.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        hba.write("host all " + PasswordUser().toUtf8() + " 127.0.0.1/32 scram-sha-256\n" + rules) <
            0) {
      m_error = u"Cannot write pg_hba.conf"_s;
      return;
    }
  }
  // fsync off: a test's server never outlives its test.
  m_options = u"-p %1 -k %2 -h 127.0.0.1 -F"_s.arg(m_port).arg(m_dir.path());
  if (!Start())
    return;
  m_running = true;
  if (!Run(m_bin + u"/createdb"_s,
           {u"-h"_s, Host(), u"-p"_s, QString::number(m_port), u"-U"_s, User(), Database()},
           60000))
    m_running = false;
}

PgServer::~PgServer() {
  Stop();
}

bool PgServer::Start() {
  const QString data = m_dir.filePath(u"data"_s);
  if (!Run(m_bin + u"/pg_ctl"_s,
           {u"-D"_s, data, u"-l"_s, m_dir.filePath(u"server.log"_s), u"-o"_s, m_options, u"-w"_s,
            u"-t"_s, u"60"_s, u"start"_s},
           90000)) {
    QFile log(m_dir.filePath(u"server.log"_s));
    if (log.open(QIODevice::ReadOnly))
      m_error += u"\n"_s + QString::fromLocal8Bit(log.readAll()).trimmed();
    return false;
  }
  return true;
}

bool PgServer::Stop() {
  if (m_bin.isEmpty() || !QFile::exists(m_dir.filePath(u"data/postmaster.pid"_s)))
    return true;
  return Run(m_bin + u"/pg_ctl"_s,
             {u"-D"_s, m_dir.filePath(u"data"_s), u"-m"_s, u"fast"_s, u"-w"_s, u"stop"_s}, 60000);
}
