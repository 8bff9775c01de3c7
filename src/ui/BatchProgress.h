#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;
class TBatchWalk;
class TCallControlDev;

// The status bar's word that a batch is walking the checked rooms, and which
// room it sent for last. It only shows: the walk never waits for it, and it
// blocks no window. It goes when the walk ends or times out, and by itself a
// while after the last step, since a walk can also stop without a word (its
// first room unanswered, or the do-not-disturb tick taking its flag).
class BatchProgress : public QWidget {
  Q_OBJECT

public:
  BatchProgress(TBatchWalk &walk, TCallControlDev &table, QWidget *parent = nullptr);

  // A little longer than a step's own time-out.
  static constexpr int kLingerMs = 12000;

private:
  void StepSent(int id);

  TCallControlDev &m_table;
  QLabel *m_title;
  QLabel *m_room;
  QTimer m_linger;
};
