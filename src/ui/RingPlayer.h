#pragma once

#include <QObject>
#include <QUrl>

class QSoundEffect;

// The ring of an incoming call: the program folder's sound/ring.wav (the
// shipped one when the folder has none), looped until the call stops ringing.
// Where the machine has no audio output the ring stays silent: the display's
// blink and the board's colour still tell the operator.
class RingPlayer : public QObject {
  Q_OBJECT

public:
  explicit RingPlayer(QObject *parent = nullptr);
  ~RingPlayer() override;

  // The sound file as resolved now; a house may put its own ring in the folder.
  static QUrl Source();

  void Start();
  void Stop();
  // The sound once through, for an alarm, beside (not instead of) a call's ring.
  void PlayOnce();
  bool Ringing() const { return m_ringing; }

private:
  QSoundEffect *m_effect = nullptr; // made on the first ring that has a device
  QSoundEffect *m_once = nullptr;   // the alarms' single ring
  bool m_ringing = false;
  bool m_toldSilent = false;
};
