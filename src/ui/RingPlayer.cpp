#include "ui/RingPlayer.h"

#include "support/Log.h"
#include "support/Paths.h"

#include <QAudioDevice>
#include <QMediaDevices>
#include <QSoundEffect>

using namespace Qt::StringLiterals;

RingPlayer::RingPlayer(QObject *parent) : QObject(parent) {}

RingPlayer::~RingPlayer() = default;

QUrl RingPlayer::Source() {
  const QString file = AppFileOrShipped(u"sound/ring.wav"_s);
  // A shipped copy lives in the program's resources.
  return file.startsWith(u':') ? QUrl(u"qrc"_s + file) : QUrl::fromLocalFile(file);
}

void RingPlayer::Start() {
  m_ringing = true;
  if (QMediaDevices::audioOutputs().isEmpty()) {
    if (!m_toldSilent)
      WriteLog(u"No audio output: the ring is silent"_s);
    m_toldSilent = true;
    return;
  }
  if (!m_effect) {
    m_effect = new QSoundEffect(this);
    m_effect->setLoopCount(QSoundEffect::Infinite);
    connect(m_effect, &QSoundEffect::statusChanged, this, [this] {
      if (m_effect->status() == QSoundEffect::Error)
        WriteLog(u"The ring sound can't be played: "_s + m_effect->source().toString());
    });
  }
  // Resolved at each ring, so a file put in the folder during the shift counts.
  const QUrl source = Source();
  if (m_effect->source() != source)
    m_effect->setSource(source);
  if (!m_effect->isPlaying())
    m_effect->play();
}

void RingPlayer::Stop() {
  m_ringing = false;
  if (m_effect)
    m_effect->stop();
}

void RingPlayer::PlayOnce() {
  if (QMediaDevices::audioOutputs().isEmpty())
    return;
  if (!m_once)
    m_once = new QSoundEffect(this);
  const QUrl source = Source();
  if (m_once->source() != source)
    m_once->setSource(source);
  m_once->setLoopCount(1);
  m_once->play();
}
