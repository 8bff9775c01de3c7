// The demo's recordings: a few short tone WAVs and rows that point at them.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace DemoRecordings {

// A WAV of `seconds` of two tones taking turns, 8 kHz, 16-bit, mono.
QByteArray ToneWav(int seconds, double firstHz, double secondHz);

struct Clip {
  QString ShortDir;
  QString FileName;
  int Seconds;
  double FirstHz;
  double SecondHz;
};
// The demo's sound files; some names hold blanks and Chinese characters, as
// real recorders write them.
QList<Clip> Clips();

} // namespace DemoRecordings
