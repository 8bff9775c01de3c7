#pragma once

#include "support/Shell.h"

#include <QList>
#include <QString>

// Stands in for the person at the desk: records what the console shows and
// answers questions as told. Installs itself for its lifetime.
class RecordingShell final : public Shell {
public:
  struct Shown {
    MessageKind Kind;
    QString Text;
  };
  struct BalloonShown {
    QString Title;
    QString Text;
    int Seconds;
    BalloonIcon Icon;
  };

  RecordingShell() { SetShell(this); }
  ~RecordingShell() override { SetShell(nullptr); }

  void Balloon(const QString &title, const QString &text, int seconds, BalloonIcon icon) override {
    Balloons.append({title, text, seconds, icon});
  }
  void Message(MessageKind kind, const QString &text) override { Messages.append({kind, text}); }
  bool Question(const QString &text) override {
    Questions.append(text);
    return Answer;
  }
  QString ChooseOpenFile(const QString &filter, const QString &) override {
    FileFilters.append(filter);
    return FileToChoose;
  }
  QString ChooseSaveFile(const QString &filter, const QString &suggested) override {
    FileFilters.append(filter);
    SuggestedSaves.append(suggested);
    return FileToSave;
  }

  void Open(const QString &target, const QString &parameters) override {
    Opened.append(target + (parameters.isEmpty() ? QString() : u' ' + parameters));
  }

  void HintAt(const QString &title, const QString &text, int ms, int x, int y) override {
    Hints.append({title, text, ms, x, y});
  }
  void RingStart() override {
    Ringing = true;
    ++RingStarts;
  }
  void RingStop() override { Ringing = false; }
  void RingOnce() override { ++RingOnces; }

  struct HintShown {
    QString Title;
    QString Text;
    int Ms;
    int X;
    int Y;
  };
  QList<HintShown> Hints;
  QList<Shown> Messages;
  bool Ringing = false;
  int RingStarts = 0;
  int RingOnces = 0;
  QStringList Opened; // "target parameters"
  QList<BalloonShown> Balloons;
  QStringList Questions;
  QStringList FileFilters;
  bool Answer = false;
  QString FileToChoose;
  QStringList SuggestedSaves;
  QString FileToSave;
};
