#include "directory/AudioPlay_Form.h"

#include "support/Log.h"

#include <QTime>

using namespace Qt::StringLiterals;

TAudioPlay_Form::TAudioPlay_Form(TMediaOutput &output, QObject *parent)
    : QObject(parent), m_output(output) {
  Timer.setInterval(250);
  connect(&Timer, &QTimer::timeout, this, &TAudioPlay_Form::TimerTimer);
}

QString TAudioPlay_Form::TimeText(qint64 ms) {
  return QTime(0, 0).addMSecs(int(qBound(qint64(0), ms, qint64(86399999)))).toString(u"hh:mm:ss"_s);
}

void TAudioPlay_Form::Play(const QUrl &source, const QString &caption) {
  m_source = source;
  StatusText.clear();
  Paused = false;
  m_output.SetVolume(Volume);
  m_output.SetSource(source);
  m_output.Play();
  Caption = caption;
  Timer.start();
  TimerTimer();
}

void TAudioPlay_Form::PauseClick() {
  if (m_source.isEmpty())
    return;
  Paused = !Paused;
  if (Paused)
    m_output.Pause();
  else
    m_output.Play();
  emit changed();
}

void TAudioPlay_Form::SeekTo(qint64 ms) {
  const qint64 length = m_output.Duration();
  m_output.SetPosition(qBound(qint64(0), ms, length > 0 ? length : ms));
  TimerTimer();
}

void TAudioPlay_Form::SetVolume(int percent) {
  Volume = qBound(0, percent, 100);
  m_output.SetVolume(Volume);
  emit changed();
}

void TAudioPlay_Form::TimerTimer() {
  StaticText_StartTime = TimeText(m_output.Position());
  StaticText_TimeLong = u' ' + TimeText(m_output.Duration());
  emit changed();
}

void TAudioPlay_Form::MediaError(const QString &text) {
  WriteLog(u"录音播放失败 %1: %2"_s.arg(m_source.toDisplayString(), text));
  StatusText = text;
  emit changed();
}

void TAudioPlay_Form::FormClose() {
  Timer.stop();
  m_output.Stop();
  m_output.SetSource(QUrl());
  m_source.clear();
  Paused = false;
  emit changed();
}
