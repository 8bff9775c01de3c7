#include "link/DeviceLink.h"

#include "link/Display.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QHash>
#include <QList>

using namespace Qt::StringLiterals;

namespace {
int HexDigit(QChar c) {
  const char16_t u = c.unicode();
  if (u >= u'0' && u <= u'9')
    return u - u'0';
  if (u >= u'A' && u <= u'F')
    return u - u'A' + 10;
  if (u >= u'a' && u <= u'f')
    return u - u'a' + 10;
  return -1;
}
} // namespace

bool TDeviceLink::Parse(const QString &text) {
  if (text.contains(u"$03"_s)) {
    m_display.ShowDisplay(u"Dev offline!!!"_s, true);
    return true;
  }
  if (text.contains(u"$02"_s)) {
    m_display.ShowDisplay(u"Dev Online."_s, false);
    return true;
  }
  const qsizetype start = text.indexOf(u"PDP"_s);
  if (start < 0)
    return false;
  qsizetype end = text.indexOf(u'\r', start);
  if (end < 0)
    end = text.size();
  const QString frame = text.mid(start, end - start);

  // Fields of three characters; the first is "PDP", the rest are bytes. A byte
  // is exactly two hex digits: a sign or a blank would make counts negative, and
  // a negative count walks backwards. Anything else ends the frame there.
  QList<int> bytes;
  for (qsizetype i = 3; i + 2 <= frame.size() && i < 3072; i += 3) {
    const int high = HexDigit(frame[i]);
    const int low = HexDigit(frame[i + 1]);
    if (high < 0 || low < 0) {
      WriteLog(u"Device frame ends at a field that is no byte: \"%1\""_s.arg(frame.mid(i, 2)));
      break;
    }
    bytes << (high << 4 | low);
  }
  if (bytes.size() < 2)
    return false;
  int sum = 0;
  for (qsizetype i = 0; i + 1 < bytes.size(); ++i)
    sum = (sum + bytes[i]) & 0xFF;
  if (((-sum) & 0xFF) != bytes.last()) {
    TheShell().Message(MessageKind::Warning, LangText(250));
    return false;
  }

  const int last = int(bytes.size()) - 1; // the checksum is no data
  int i = 1;
  auto take = [&](int k) { return i + k < last ? bytes[i + k] : 0; };
  while (i < last) {
    const int tag = bytes[i];
    switch (tag) {
    case 16:
      State.LedOn = quint8(take(1));
      State.LedFlash = quint8(take(2));
      i += 3;
      break;
    case 17:
      State.TrunkLedMask = {quint8(take(1)), quint8(take(2))};
      i += 5;
      break;
    case 18:
      State.Values18 = {take(1), take(2) << 4};
      i += 3;
      break;
    case 19:
      State.HookState = quint32(take(1) >> 4);
      if (State.HookState >= 1 && State.HookState <= 7)
        HookCaption = LangText(250 + int(State.HookState));
      i += 2;
      break;
    case 20:
      for (int k = 0; k < 7; ++k)
        State.Date[size_t(k)] = quint8(take(1 + k));
      DeviceTime = QDateTime(QDate(2000 + State.Date[0], State.Date[1], State.Date[2]),
                             QTime(State.Date[3], State.Date[4], State.Date[5]));
      i += 8;
      break;
    case 32:
      State.ModeValue = 19;
      i += 1;
      break;
    case 33:
    case 34:
    case 38:
    case 39:
      State.ModeValue = tag;
      i += 1;
      break;
    case 35: {
      const int row = take(1);
      const int count = take(2);
      State.DisplayCursor = quint8(row == 1 ? 0 : TDisplay::kLineLength + 1);
      DisplayBytes(bytes, i + 3, qMin(i + 3 + count, last));
      i += 3 + count;
      break;
    }
    case 40: {
      const int row = take(1);
      const int column = take(2);
      State.DisplayCursor = quint8(qBound(0, row == 1 ? column - 1 : column + 20, 40));
      DisplayBytes(bytes, i + 3, last);
      i = last;
      break;
    }
    default:
      i += 2; // an unknown tag and its one byte
      break;
    }
  }
  return true;
}

void TDeviceLink::DisplayBytes(const QList<int> &bytes, int from, int to) {
  int pos = State.DisplayCursor;
  for (int k = from; k < to; ++k) {
    const int b = bytes[k];
    switch (b) {
    case 1:
      pos = pos < TDisplay::kLineLength ? TDisplay::kLineLength + 1 : 0;
      break;
    case 3:
      m_display.Clear(0, TDisplay::kBufferLength);
      pos = 0;
      break;
    case 5:
      m_display.Clear(pos, pos < TDisplay::kLineLength ? TDisplay::kLineLength
                                                       : TDisplay::kBufferLength);
      break;
    case 7:
      State.Blink = true;
      break;
    case 8:
      State.Blink = false;
      break;
    case 12: {
      const int row = k + 1 < to ? bytes[k + 1] : 0;
      const int column = k + 2 < to ? bytes[k + 2] : 0;
      pos = qBound(0, row == 1 ? column - 1 : column + 20, 40);
      k += 3;
      break;
    }
    default:
      m_display.PutAt(pos, QChar(b), State.Blink);
      pos = (pos + 1) % TDisplay::kBufferLength;
      break;
    }
  }
  State.DisplayCursor = quint8(pos);
}

int TDeviceLink::TrunkLampMode(int lamp) const {
  if (lamp < 0 || lamp > 7)
    return 0;
  const int first = (State.TrunkLedMask[0] >> lamp) & 1;
  const int second = (State.TrunkLedMask[1] >> lamp) & 1;
  return first + 2 * second;
}

std::array<bool, 8> TDeviceLink::LedTimerTimer() {
  for (int lamp = 0; lamp < 8; ++lamp) {
    int &count = m_ledCounters[size_t(lamp)];
    bool &lit = m_lit[size_t(lamp)];
    switch (TrunkLampMode(lamp)) {
    case 0:
      lit = false;
      break;
    case 1:
      lit = true;
      break;
    case 2:
      if (++count == 10)
        lit = !lit;
      if (count >= 20) {
        lit = !lit;
        count = 0;
      }
      break;
    default:
      if (++count == 4)
        lit = !lit;
      if (count >= 8) {
        lit = !lit;
        count = 0;
      }
      break;
    }
  }
  return m_lit;
}

void TDeviceLink::AfterParse(const QDateTime &now) {
  if (State.HookState != 1 || State.TrunkLedMask[0] != 0 || State.TrunkLedMask[1] != 0)
    return;
  const QString clock = FormatText(u"%04d-%.2d-%.2d %.2d:%.2d:%.2d"_s,
                                   {now.date().year(), now.date().month(), now.date().day(),
                                    now.time().hour(), now.time().minute(), now.time().second()});
  for (int k = 0; k < clock.size() && k < TDisplay::kLineLength; ++k)
    m_display.PutAt(k, clock[k], false);
}

QString TDeviceLink::KeyPadCommand(const QString &key) {
  static const QHash<QString, QString> commands = [] {
    QHash<QString, QString> c;
    for (int k = 1; k <= 9; ++k)
      c.insert(u"SpeedButton%1"_s.arg(k), u"p %1\r"_s.arg(k));
    c.insert(u"SpeedButton11"_s, u"p 10\r"_s);
    c.insert(u"SpeedButton10"_s, u"p 0xB\r"_s);
    c.insert(u"SpeedButton12"_s, u"p 0xC\r"_s);
    for (int k = 1; k <= 8; ++k)
      c.insert(u"LMDSpeedButton%1"_s.arg(k), u"p 0x2%1\r"_s.arg(k));
    c.insert(u"HOOK_LMDButton:1"_s, u"p 0x11\r"_s);
    c.insert(u"HOOK_LMDButton:0"_s, u"p 0x10\r"_s);
    return c;
  }();
  return commands.value(key);
}
