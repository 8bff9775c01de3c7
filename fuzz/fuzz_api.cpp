// What a hotel's system sends the automation API: request bodies and the
// event stream's handshake and frames. The first byte picks the reader, the
// rest is the input. Nothing may crash; a body is either read or refused with
// a message; a frame masked with any key reads back as sent.
#include "FuzzHome.h"
#include "FuzzTarget.h"

#include "api/ApiBody.h"
#include "api/ApiRooms.h"
#include "api/WebSocketWire.h"
#include "support/TDateTime.h"

#include <QDateTime>

#include <cstdio>
#include <cstdlib>

namespace {
[[noreturn]] void Fail(const char *what) {
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

void Bodies(int which, const QByteArray &body) {
  const TDateTime now = TDateTime::FromQDateTime(QDateTime(QDate(2026, 11, 24), QTime(6, 0)));
  QString why;
  if (which == 0) {
    TWakeUpBody wake;
    why = ParseWakeUpBody(body, now, &wake);
    if (why.isEmpty() && (!(now < wake.When) || wake.Mode < 1 || wake.Mode > 3))
      Fail("a wake-up body read outside its ranges");
  } else if (which == 1) {
    TDndBody dnd;
    why = ParseDndBody(body, &dnd);
    if (why.isEmpty() && (dnd.Mode < 0 || dnd.Mode > 3))
      Fail("a do-not-disturb body read outside its ranges");
  } else {
    TApiBody b(body, {QStringLiteral("guest"), QStringLiteral("class")});
    const QString guest = b.Text(QStringLiteral("guest"), 60, true);
    const int srvClass = b.Integer(QStringLiteral("class"), 0, 15, -1);
    if (b.Ok() && (guest.size() > 60 || srvClass < -1 || srvClass > 15))
      Fail("a check-in body read outside its ranges");
    if (!b.Ok() && b.Error().isEmpty())
      Fail("a refused body without a message");
  }
}

void Frames(const QByteArray &bytes) {
  using namespace WebSocketWire;
  QByteArray in = bytes;
  QList<ClientFrame> frames;
  ReadClientFrames(in, frames, 4096);
  // The same bytes as one masked frame of a subscriber's read back as sent.
  if (bytes.size() < 4)
    return;
  const QByteArray key = bytes.left(4);
  const QByteArray payload = bytes.mid(4, 4000);
  QByteArray frame = Frame(TextFrame, payload);
  const qsizetype head = frame.size() - payload.size();
  frame[1] = char(quint8(frame.at(1)) | 0x80);
  frame.insert(head, key);
  for (qsizetype i = 0; i < payload.size(); ++i)
    frame[head + 4 + i] = char(payload.at(i) ^ key.at(i % 4));
  QList<ClientFrame> back;
  if (!ReadClientFrames(frame, back, 4096) || back.size() != 1 || back.at(0).Payload != payload ||
      !frame.isEmpty())
    Fail("a masked frame did not read back");
}

void Handshake(const QByteArray &head) {
  const WebSocketWire::HandshakeAnswer a =
      WebSocketWire::Answer(head, "/api/v1/events", "Bearer 0123456789abcdef");
  if (a.Status == 101 && !a.Reply.contains("Sec-WebSocket-Accept: "))
    Fail("a switching answer without its accept key");
  if (a.Status != 101 && a.Error.isEmpty())
    Fail("a refused handshake without a message");
}
} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
  FuzzHome::Start(argc, argv);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1)
    return 0;
  const QByteArray input(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));
  switch (data[0] % 5) {
  case 0:
  case 1:
  case 2:
    Bodies(data[0] % 5, input);
    break;
  case 3:
    Frames(input);
    break;
  default:
    Handshake(input);
    break;
  }
  FuzzHome::ForgetLog();
  return 0;
}
