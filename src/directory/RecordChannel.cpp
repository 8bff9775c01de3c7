#include "directory/RecordChannel.h"

#include <QJsonDocument>
#include <QNetworkProxy>
#include <QJsonObject>
#include <QNetworkReply>
#include <QNetworkRequest>

using namespace Qt::StringLiterals;

TRecordChannel::TRecordChannel(QObject *parent) : QObject(parent) {
  // A recording server sits on the local network; a proxy of the desktop's
  // would only stand between the desk and it.
  m_net.setProxy(QNetworkProxy::NoProxy);
}

namespace {
QNetworkRequest Request(const QString &target, int timeoutMs) {
  QNetworkRequest request{QUrl(target)};
  request.setTransferTimeout(timeoutMs);
  request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
  return request;
}
} // namespace

void TRecordChannel::Connect() {
  Abort();
  Send(Kind::Connect, m_net.get(Request(m_target, TimeoutMs)));
}

void TRecordChannel::Query(const QString &statement, const QVariantMap &params) {
  Abort();
  Send(Kind::Query,
       m_net.post(Request(m_target, TimeoutMs), RecordProtocol::EncodeQuery(statement, params)));
}

void TRecordChannel::Abort() {
  if (QNetworkReply *reply = m_reply) {
    m_reply = nullptr;
    reply->disconnect(this);
    reply->abort();
    reply->deleteLater();
  }
}

void TRecordChannel::Send(Kind kind, QNetworkReply *reply) {
  m_reply = reply;
  m_tooLarge = false;
  // An answer past the cap is cut off as it arrives, not after it filled memory.
  connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64 total) {
    if (received > RecordProtocol::kMaxAnswerBytes || total > RecordProtocol::kMaxAnswerBytes) {
      m_tooLarge = true;
      reply->abort();
    }
  });
  connect(reply, &QNetworkReply::finished, this, [this, reply, kind] { Finished(reply, kind); });
}

void TRecordChannel::Finished(QNetworkReply *reply, Kind kind) {
  reply->deleteLater();
  if (reply != m_reply)
    return;
  m_reply = nullptr;
  const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
  if (m_tooLarge) {
    emit exception(u"应答超过 %1 MB，已放弃"_s.arg(RecordProtocol::kMaxAnswerBytes >> 20));
    return;
  }
  if (status == 0) { // no HTTP at all: refused, unreachable, timed out
    emit exception(reply->error() == QNetworkReply::OperationCanceledError
                       ? u"录音服务器 %1 秒内没有应答"_s.arg(TimeoutMs / 1000)
                       : reply->errorString());
    return;
  }
  const QByteArray body = reply->isOpen() ? reply->readAll() : QByteArray();
  if (kind == Kind::Connect) {
    const QJsonObject hello = QJsonDocument::fromJson(body).object();
    const QString error = hello.value(u"error"_s).toString();
    if (status == 200 && hello.value(u"version"_s).isDouble() && error.isEmpty())
      emit afterConnect();
    else
      emit exception(u"HTTP %1: %2"_s.arg(status).arg(error.isEmpty() ? reply->errorString()
                                                                      : error));
    return;
  }
  const RecordProtocol::Answer answer = RecordProtocol::DecodeAnswer(body);
  // A refusal in the protocol (a statement the server won't run) is the server's
  // answer; anything else that isn't rows is a broken server.
  if (!answer.Readable || (status != 200 && answer.Error.isEmpty())) {
    emit exception(u"HTTP %1: %2"_s.arg(status).arg(
        answer.Error.isEmpty() ? reply->errorString() : answer.Error));
    return;
  }
  emit answered(answer);
}
