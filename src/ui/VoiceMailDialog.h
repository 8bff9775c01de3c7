#pragma once

#include <QDialog>

class QLabel;
class QPushButton;
class TForm_VoiceMail_Set;

// The voice-mail dialog over TForm_VoiceMail_Set: whether messages wait for
// the room, and the keys that clear them for it or for every checked room.
// Modal over the console without a nested event loop.
class VoiceMailDialog : public QDialog {
  Q_OBJECT

public:
  explicit VoiceMailDialog(TForm_VoiceMail_Set &logic, QWidget *parent = nullptr);

  void Refresh();
  // Only the apply keys, which the exchange bars and frees while edits stand.
  void RefreshKeys();

public slots:
  void reject() override;

private:
  TForm_VoiceMail_Set &m_logic;
  QLabel *m_state;
  QPushButton *m_apply;
  QPushButton *m_multi;
};
