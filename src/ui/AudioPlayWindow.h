#pragma once

#include "directory/AudioPlay_Form.h"

#include <QWidget>

#include <memory>

class QLabel;
class QPushButton;
class QSlider;

// The player window of a recording (TAudioPlay_Form) over Qt's media player:
// the position and length, a seek bar, pause and resume, and the volume.
// Closing it stops the sound and lets the source go.
class TAudioPlayWindow : public QWidget {
  Q_OBJECT

public:
  explicit TAudioPlayWindow(QWidget *parent = nullptr);
  ~TAudioPlayWindow() override;

  TAudioPlay_Form &Form() { return *m_form; }
  // Plays a recording, or says why it can't on a machine without sound.
  void Play(const QUrl &source, const QString &caption);

protected:
  void closeEvent(QCloseEvent *event) override;

private:
  void Refresh();

  std::unique_ptr<TMediaOutput> m_output;
  std::unique_ptr<TAudioPlay_Form> m_form;
  QLabel *m_position = nullptr;
  QLabel *m_length = nullptr;
  QLabel *m_status = nullptr;
  QSlider *m_seek = nullptr;
  QSlider *m_volume = nullptr;
  QPushButton *m_pause = nullptr;
};
