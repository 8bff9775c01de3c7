#pragma once

#include <QObject>
#include <QTimer>
#include <QUrl>

// What the player window needs of a media player. The screens give it Qt's
// player and speakers; tests give it a stand-in, this machine having no sound.
class TMediaOutput {
public:
  virtual ~TMediaOutput() = default;
  virtual void SetSource(const QUrl &source) = 0; // empty: let go of the last one
  virtual void Play() = 0;
  virtual void Pause() = 0;
  virtual void Stop() = 0;
  virtual void SetPosition(qint64 ms) = 0;
  virtual void SetVolume(int percent) = 0;
  virtual qint64 Position() const = 0; // ms
  virtual qint64 Duration() const = 0; // ms; 0 while unknown
  virtual bool Playing() const = 0;
};

// The player window of a recording: its caption names the call, the timer shows
// where the sound is and how long it runs, and closing it lets the sound go.
class TAudioPlay_Form : public QObject {
  Q_OBJECT

public:
  explicit TAudioPlay_Form(TMediaOutput &output, QObject *parent = nullptr);

  QString Caption;
  QString StaticText_StartTime; // the position, "00:00:12"
  QString StaticText_TimeLong;  // the length, " 00:01:10"
  QString StatusText;           // why nothing plays, when it doesn't
  bool Paused = false;
  int Volume = 80;
  QTimer Timer;

  // Sets the source, which starts playback, and names the call.
  void Play(const QUrl &source, const QString &caption);
  void PauseClick(); // pauses, or goes on where it was
  void SeekTo(qint64 ms);
  void SetVolume(int percent);
  void TimerTimer();
  // The player could not open or play the source.
  void MediaError(const QString &text);
  void FormClose();

  qint64 Position() const { return m_output.Position(); }
  qint64 Duration() const { return m_output.Duration(); }

  static QString TimeText(qint64 ms);

signals:
  void changed();

private:
  TMediaOutput &m_output;
  QUrl m_source;
};
