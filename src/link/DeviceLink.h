#pragma once

#include <QDateTime>
#include <QString>

#include <array>

class TDisplay;

// The local console device: a handset that once sent the console a text stream
// of display and lamp data (bytes as two hex digits and a separator). No device
// stands behind it any more; the parser stays, reachable from the hidden test
// panel, because it keeps the display logic whole.
struct TDevDisplayState {
  quint8 LedOn = 0;
  quint8 LedFlash = 0;
  std::array<quint8, 2> TrunkLedMask{};
  quint32 HookState = 0;
  std::array<quint8, 7> Date{};
  quint8 DisplayCursor = 0;
  int ModeValue = 0;
  std::array<int, 2> Values18{};
  bool Blink = false;
};

class TDeviceLink {
public:
  explicit TDeviceLink(TDisplay &display) : m_display(display) {}

  TDevDisplayState State;
  // The device's clock, once a date tag came.
  QDateTime DeviceTime;
  // The hook picture's caption, str_251..str_257 by HookState.
  QString HookCaption;

  // Feeds one text; returns false when it held nothing usable or failed its check.
  bool Parse(const QString &text);

  // The eight trunk lamps: 0 off, 1 on, 2 slow blink, 3 fast blink.
  int TrunkLampMode(int lamp) const;
  // LedTimer's 100 ms step; returns whether each lamp is lit now.
  std::array<bool, 8> LedTimerTimer();

  // After a parse: lamps from the record, and at idle with no trunk lamp the
  // clock at the start of the display.
  void AfterParse(const QDateTime &now);

  // The command text a key of the pad would send ("p 1\r" ...); empty for none.
  static QString KeyPadCommand(const QString &key);

private:
  void DisplayBytes(const QList<int> &bytes, int from, int to);

  TDisplay &m_display;
  std::array<int, 8> m_ledCounters{};
  std::array<bool, 8> m_lit{};
};
