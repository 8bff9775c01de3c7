#include "directory/StoreServerLink.h"

#include <QAtomicInt>
#include <QSqlError>
#include <QStringList>

using namespace Qt::StringLiterals;

bool SetServerParameters(QSqlDatabase &db, const TStoreServer &s, int timeoutSeconds,
                         QString *problem, const QString &moreOptions) {
  // The driver joins its options with ';' into the connection text unquoted.
  if (s.Service.contains(u';')) {
    if (problem)
      *problem = u"服务名不能含有分号：%1"_s.arg(s.Service);
    return false;
  }
  db.setHostName(s.Host);
  db.setPort(s.PortIsSet() ? s.Port : -1);
  db.setDatabaseName(s.Database);
  db.setUserName(s.User);
  db.setPassword(s.Password);
  QString options = u"connect_timeout=%1"_s.arg(qMax(1, timeoutSeconds));
  if (!moreOptions.isEmpty())
    options += u';' + moreOptions;
  if (!s.Service.isEmpty()) {
    QString quoted = s.Service;
    quoted.replace(u'\\', u"\\\\"_s).replace(u'\'', u"\\'"_s);
    options += u";service='"_s + quoted + u'\'';
  }
  db.setConnectOptions(options);
  return true;
}

TServerProbe ProbeStoreServer(const TStoreServer &server, int timeoutSeconds) {
  if (!QSqlDatabase::isDriverAvailable(u"QPSQL"_s))
    return {false, u"这台电脑缺少 PostgreSQL 数据库驱动（Debian 软件包 libqt6sql6-psql）"_s};
  static QAtomicInt serial;
  const QString name = u"StoreServerProbe%1"_s.arg(serial.fetchAndAddRelaxed(1));
  TServerProbe probe;
  {
    QSqlDatabase db = QSqlDatabase::addDatabase(u"QPSQL"_s, name);
    if (!SetServerParameters(db, server, timeoutSeconds, &probe.Words)) {
    } else if (!db.open()) {
      probe.Words = ServerProblemInWords(db.lastError().text(), server, timeoutSeconds);
    } else {
      probe.Reached = true;
      probe.Words = ServerReadyInWords(db.tables().contains(u"maininfo"_s, Qt::CaseInsensitive));
    }
    db.close();
  }
  QSqlDatabase::removeDatabase(name);
  return probe;
}

QString ServerProblemInWords(const QString &driverText, const TStoreServer &s, int timeoutSeconds) {
  const QString host = s.Host.isEmpty() ? u"本机"_s : s.Host;
  const QString text = driverText.simplified();
  const auto has = [&](const char *part) {
    return text.contains(QLatin1StringView(part), Qt::CaseInsensitive);
  };
  QString words;
  if (has("password authentication failed") || has("authentication failed"))
    words = u"用户名或密码不对：服务器拒绝了用户 %1"_s.arg(s.User);
  else if (has("no password supplied"))
    words = u"服务器要求密码：请填写密码"_s;
  else if (has("role") && has("does not exist"))
    words = u"服务器上没有用户 %1"_s.arg(s.User);
  else if (has("database") && has("does not exist"))
    words = u"服务器上没有数据库 %1：请先在服务器上建立它"_s.arg(s.Database);
  else if (has("definition of service") || has("service file"))
    words = u"找不到服务名 %1：pg_service.conf 里没有这一项"_s.arg(s.Service);
  else if (has("no pg_hba.conf entry"))
    words = u"服务器不允许这台电脑连接（请在服务器的 pg_hba.conf 里放行）"_s;
  else if (has("could not translate host name") || has("Name or service not known"))
    words = u"找不到主机 %1：请检查主机名"_s.arg(host);
  else if (has("timeout expired") || has("timed out"))
    words =
        u"%1 在 %2 秒内没有应答：地址不对，或网络、防火墙挡住了"_s.arg(host).arg(timeoutSeconds);
  else if (has("Connection refused") || has("No such file or directory"))
    words = u"%1 上没有数据库服务在运行（连接被拒绝）：请检查主机和端口"_s.arg(host);
  else if (has("too many clients") || has("starting up") || has("shutting down"))
    words = u"数据库服务器现在不接受连接，请稍后再试"_s;
  else
    words = u"无法连接数据库服务器"_s;
  return text.isEmpty() ? words : words + u"\n(" + text + u')';
}

QString ServerReadyInWords(bool hasConsoleTables) {
  return hasConsoleTables ? u"连接成功：数据库里已有本系统的数据"_s
                          : u"连接成功：数据库还是空的。下次启动时会建立数据表；"
                            u"本机已有的数据可以先用 trunkdesk --copy-store 复制过去"_s;
}
