#include "link/Display.h"

TDisplay::TDisplay(QObject *parent) : QObject(parent) {
  m_buffers[0] = m_buffers[1] = BlankBuffer();
  m_memo1 = m_buffers[0];
  Timer2.setObjectName(QStringLiteral("Timer2"));
  Timer2.setInterval(500);
  connect(&Timer2, &QTimer::timeout, this, &TDisplay::Timer2Timer);
}

QString TDisplay::BlankBuffer() {
  return QString(kLineLength, u' ') + u'\r' + QString(kLineLength, u' ');
}

void TDisplay::ShowDisplay(QString text, bool blink) {
  emit aboutToShow();
  const qsizetype n = text.size();
  if (n >= 2 * kLineLength)
    return;
  QString shown = BlankBuffer();
  // The first 20 characters fill line one; from the 21st on they go to line two,
  // one place further on, past the carriage return.
  for (qsizetype i = 0; i < n; ++i)
    shown[i < kLineLength ? i : i + 1] = text[i];
  m_buffers[0] = shown;
  m_buffers[1] = blink ? BlankBuffer() : shown;
  if (Timer2.isActive())
    SetMemo1(m_buffers[0]);
}

void TDisplay::Timer2Timer() {
  m_tag = 1 - m_tag;
  SetMemo1(m_buffers[m_tag]);
}

void TDisplay::SetMemo1(const QString &text) {
  if (text == m_memo1)
    return;
  m_memo1 = text;
  emit memo1Changed(text);
}

void TDisplay::PutAt(int position, QChar c, bool blink) {
  if (position < 0 || position >= kBufferLength)
    return;
  m_buffers[0][position] = c;
  m_buffers[1][position] = blink ? QChar(u' ') : c;
  if (Timer2.isActive())
    SetMemo1(m_buffers[m_tag]);
}

void TDisplay::Clear(int from, int to) {
  for (int i = qMax(0, from); i < qMin(to, kBufferLength); ++i) {
    const QChar blank = i == kLineLength ? QChar(u'\r') : QChar(u' ');
    m_buffers[0][i] = blank;
    m_buffers[1][i] = blank;
  }
  if (Timer2.isActive())
    SetMemo1(m_buffers[m_tag]);
}
