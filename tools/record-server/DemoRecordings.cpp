#include "DemoRecordings.h"

#include <QtEndian>

#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;

namespace DemoRecordings {

namespace {

constexpr int kRate = 8000;

void PutU32(QByteArray &out, quint32 v) {
  char bytes[4];
  qToLittleEndian(v, bytes);
  out.append(bytes, 4);
}
void PutU16(QByteArray &out, quint16 v) {
  char bytes[2];
  qToLittleEndian(v, bytes);
  out.append(bytes, 2);
}

} // namespace

QByteArray ToneWav(int seconds, double firstHz, double secondHz) {
  const int samples = kRate * std::max(seconds, 0);
  const quint32 dataBytes = quint32(samples) * 2;
  QByteArray wav;
  wav.reserve(44 + int(dataBytes));
  wav.append("RIFF");
  PutU32(wav, 36 + dataBytes);
  wav.append("WAVEfmt ");
  PutU32(wav, 16);
  PutU16(wav, 1); // PCM
  PutU16(wav, 1); // mono
  PutU32(wav, kRate);
  PutU32(wav, kRate * 2);
  PutU16(wav, 2);
  PutU16(wav, 16);
  wav.append("data");
  PutU32(wav, dataBytes);
  constexpr int kFade = kRate / 100; // 10 ms each side of a tone, so it doesn't click
  constexpr int kTurn = kRate / 2;   // each tone sounds half a second
  for (int i = 0; i < samples; ++i) {
    const int inTurn = i % kTurn;
    const double hz = (i / kTurn) % 2 ? secondHz : firstHz;
    const double gain = std::min({1.0, double(inTurn) / kFade, double(kTurn - inTurn) / kFade});
    const double v = 0.3 * gain * std::sin(2 * std::numbers::pi * hz * i / kRate);
    PutU16(wav, quint16(qint16(std::lround(v * 32767))));
  }
  return wav;
}

QList<Clip> Clips() {
  return {
      {u"demo"_s, u"8001-13800000001.wav"_s, 3, 440, 660},
      {u"demo"_s, u"front desk 8002.wav"_s, 4, 523, 659},
      {u"前台 录音"_s, u"叫醒 8003.wav"_s, 5, 392, 494},
      {u"前台 录音"_s, u"客房 服务.wav"_s, 6, 349, 440},
      {u"demo"_s, u"长途 call 8005.wav"_s, 7, 587, 740},
      {u"demo"_s, u"conference.wav"_s, 8, 330, 415},
  };
}

} // namespace DemoRecordings
