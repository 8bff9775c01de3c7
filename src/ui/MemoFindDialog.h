#pragma once

#include <QDialog>

#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QGroupBox;
class TMemoFind;

// The find dialog over a memo: a search text, the direction, match case and
// whole word, and a find-next key. It stays open beside the memo (non-modal);
// each press searches once from the memo's caret and selects the hit in the
// memo, so the next press goes on behind it. The search itself is TMemoFind's;
// the dialog keeps it on the memo's present text and caret.
class MemoFindDialog : public QDialog {
  Q_OBJECT

public:
  MemoFindDialog(TMemoFind &find, QPlainTextEdit *memo, QWidget *parent);

  // One search for a text; by default TMemoFind's own. A window whose logic
  // keeps the search text itself forwards to that logic here.
  std::function<bool(const QString &text)> FindNext;

  // Shows the dialog with a search text, the memo's caret at its start, and the
  // dialog's lower edge on the memo's upper edge.
  void Open(const QString &text);

private:
  void FindNextClicked();
  void SelectHit();
  void TakeTexts();

  TMemoFind &m_find;
  QPlainTextEdit *m_memo;
  QLabel *m_textLabel;
  QLineEdit *m_text;
  QGroupBox *m_direction;
  QRadioButton *m_up;
  QRadioButton *m_down;
  QCheckBox *m_matchCase;
  QCheckBox *m_wholeWord;
  QPushButton *m_findNext;
  QPushButton *m_cancel;
};
