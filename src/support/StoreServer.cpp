#include "support/StoreServer.h"

#include "support/Settings.h"

using namespace Qt::StringLiterals;

TStoreServer TStoreServer::FromConfig(const TSysConfig &c) {
  return {c.DBHost, c.DBPort, c.DBDatabase, c.DBUser, c.DBPassword, c.DBService};
}

void TStoreServer::ToConfig(TSysConfig &c) const {
  c.DBDriver = u"QPSQL"_s;
  c.DBHost = Host;
  c.DBPort = Port;
  c.DBDatabase = Database;
  c.DBUser = User;
  c.DBPassword = Password;
  c.DBService = Service;
}

QString TStoreServer::Describe() const {
  QString text = User.isEmpty() ? QString() : User + u'@';
  text += Host.isEmpty() ? u"localhost"_s : Host;
  if (PortIsSet())
    text += u':' + QString::number(Port);
  text += u'/' + Database;
  if (!Service.isEmpty())
    text += u" (service "_s + Service + u')';
  return text;
}
