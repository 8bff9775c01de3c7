#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

// The two-line display of the operator's own extension: two buffers of 41
// characters (20, a carriage return, 20). The first holds the text; the second
// the same, or blanks where the text blinks. Timer2 swaps them every 500 ms.
class TDisplay : public QObject {
  Q_OBJECT

public:
  static constexpr int kLineLength = 20;
  static constexpr int kBufferLength = 41;

  explicit TDisplay(QObject *parent = nullptr);

  // Puts text on the display. Text of 40 characters or more leaves it as it was.
  // The text is taken by value: showing it first clears the clock's own text box,
  // which may be where the text came from.
  void ShowDisplay(QString text, bool blink);

  // Character writes of the local console device: one place of both buffers
  // (a blank into the second while blinking), and clearing a stretch.
  void PutAt(int position, QChar c, bool blink);
  void Clear(int from, int to); // positions from..to-1 become blanks, the CR stays

  const QString &Buffer1() const { return m_buffers[0]; }
  const QString &Buffer2() const { return m_buffers[1]; }
  // What memo1 shows now.
  const QString &Memo1() const { return m_memo1; }

  QTimer Timer2;
  void Timer2Timer(); // swaps the shown buffer

  static QString BlankBuffer();

signals:
  // ShowDisplay first stops the idle clock and clears its text box.
  void aboutToShow();
  void memo1Changed(const QString &text);

private:
  void SetMemo1(const QString &text);

  QString m_buffers[2];
  QString m_memo1;
  int m_tag = 0;
};
