#include "ui/AudioPlayWindow.h"

#include "ui/Named.h"

#include <QAudioDevice>
#include <QAudioOutput>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMediaDevices>
#include <QMediaPlayer>
#include <QSlider>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// The form's player over Qt's: sound to the desktop's default speakers.
class QtMediaOutput : public TMediaOutput {
public:
  QtMediaOutput() { m_player.setAudioOutput(&m_audio); }
  QMediaPlayer &Player() { return m_player; }

  void SetSource(const QUrl &source) override { m_player.setSource(source); }
  void Play() override { m_player.play(); }
  void Pause() override { m_player.pause(); }
  void Stop() override { m_player.stop(); }
  void SetPosition(qint64 ms) override { m_player.setPosition(ms); }
  void SetVolume(int percent) override { m_audio.setVolume(float(percent) / 100.0f); }
  qint64 Position() const override { return m_player.position(); }
  qint64 Duration() const override { return m_player.duration(); }
  bool Playing() const override {
    return m_player.playbackState() == QMediaPlayer::PlayingState;
  }

private:
  QAudioOutput m_audio;
  QMediaPlayer m_player;
};

// Where the machine has no sound output at all: nothing to play on, and some
// media back ends fall over building a pipeline without one.
class SilentOutput : public TMediaOutput {
public:
  void SetSource(const QUrl &) override {}
  void Play() override {}
  void Pause() override {}
  void Stop() override {}
  void SetPosition(qint64) override {}
  void SetVolume(int) override {}
  qint64 Position() const override { return 0; }
  qint64 Duration() const override { return 0; }
  bool Playing() const override { return false; }
};
} // namespace

TAudioPlayWindow::TAudioPlayWindow(QWidget *parent) : QWidget(parent, Qt::Window) {
  setObjectName(u"TAudioPlay_Form"_s);
  QtMediaOutput *output = nullptr;
  if (QMediaDevices::audioOutputs().isEmpty()) {
    m_output = std::make_unique<SilentOutput>();
  } else {
    output = new QtMediaOutput;
    m_output.reset(output);
  }
  m_form = std::make_unique<TAudioPlay_Form>(*m_output);
  resize(420, 130);

  m_position = NamedLabel(u"StaticText_StartTime"_s, {}, this);
  m_length = NamedLabel(u"StaticText_TimeLong"_s, {}, this);
  m_status = NamedLabel(u"StaticText_PlayStatus"_s, {}, this);
  m_status->setStyleSheet(u"color: #b00000"_s);
  m_seek = Named<QSlider>(u"TrackBar_Position"_s, Qt::Horizontal, this);
  m_volume = Named<QSlider>(u"TrackBar_Volume"_s, Qt::Horizontal, this);
  m_volume->setRange(0, 100);
  m_volume->setValue(m_form->Volume);
  m_volume->setMaximumWidth(100);
  m_volume->setToolTip(u"音量"_s);
  m_pause = NamedButton(u"Button_Pause"_s, u"暂停"_s, this);
  auto *stop = NamedButton(u"Button_Close"_s, u"关闭"_s, this);

  auto *layout = new QVBoxLayout(this);
  auto *times = new QHBoxLayout;
  times->addWidget(m_position);
  times->addWidget(m_seek, 1);
  times->addWidget(m_length);
  layout->addLayout(times);
  auto *keys = new QHBoxLayout;
  keys->addWidget(m_pause);
  keys->addWidget(stop);
  keys->addStretch(1);
  keys->addWidget(new QLabel(u"音量"_s, this));
  keys->addWidget(m_volume);
  layout->addLayout(keys);
  layout->addWidget(m_status);

  connect(m_form.get(), &TAudioPlay_Form::changed, this, &TAudioPlayWindow::Refresh);
  connect(m_pause, &QPushButton::clicked, this, [this] { m_form->PauseClick(); });
  connect(stop, &QPushButton::clicked, this, &QWidget::close);
  connect(m_volume, &QSlider::valueChanged, this, [this](int v) { m_form->SetVolume(v); });
  // Dragging the bar moves the sound where it is let go, not at every step.
  connect(m_seek, &QSlider::sliderReleased, this, [this] { m_form->SeekTo(m_seek->value()); });
  connect(m_seek, &QSlider::actionTriggered, this, [this](int action) {
    if (action != QSlider::SliderMove)
      QMetaObject::invokeMethod(this, [this] { m_form->SeekTo(m_seek->value()); },
                                Qt::QueuedConnection);
  });
  if (!output)
    return;
  QMediaPlayer &player = output->Player();
  connect(&player, &QMediaPlayer::errorOccurred, this,
          [this](QMediaPlayer::Error, const QString &text) { m_form->MediaError(text); });
  // The end of the sound shows as the end, not a frozen position.
  connect(&player, &QMediaPlayer::playbackStateChanged, this, [this] { m_form->TimerTimer(); });
}

TAudioPlayWindow::~TAudioPlayWindow() {
  m_form.reset(); // before the player it refers to
}

void TAudioPlayWindow::Play(const QUrl &source, const QString &caption) {
  m_form->Play(source, caption);
  if (dynamic_cast<SilentOutput *>(m_output.get()))
    m_form->MediaError(u"本机没有声音输出设备，无法播放"_s);
}

void TAudioPlayWindow::Refresh() {
  setWindowTitle(m_form->Caption);
  m_position->setText(m_form->StaticText_StartTime);
  m_length->setText(m_form->StaticText_TimeLong);
  m_status->setText(m_form->StatusText);
  m_status->setVisible(!m_form->StatusText.isEmpty());
  m_pause->setText(m_form->Paused ? u"继续"_s : u"暂停"_s);
  if (!m_seek->isSliderDown()) {
    const QSignalBlocker quiet(m_seek);
    m_seek->setRange(0, int(qMin<qint64>(m_form->Duration(), INT_MAX)));
    m_seek->setValue(int(qMin<qint64>(m_form->Position(), INT_MAX)));
  }
}

void TAudioPlayWindow::closeEvent(QCloseEvent *event) {
  m_form->FormClose();
  event->accept();
}
