#pragma once

#include <QString>
#include <QStringList>

// The find dialog over a contact's memo. The search runs line by line from the
// caret's line, down or up; a hit selects the text and the next search goes on
// behind it. Positions count two characters for each line end, as the memo's
// text does on the desk's PCs.
class TMemoFind {
public:
  explicit TMemoFind(const QString &text = QString());

  void SetText(const QString &text);
  QStringList Lines() const { return m_lines; }

  // The dialog's options.
  bool Down = true;
  bool MatchCase = false;
  bool WholeWord = false;

  // The caret, as a line and a column in it.
  int CaretLine = 0;
  int CaretColumn = 0;
  void MoveCaretToStart();

  // The selection after a hit, in the memo's positions.
  int SelStart = 0;
  int SelLength = 0;
  int FoundLine = -1;
  int FoundColumn = -1;

  // Searches once. On a hit selects it and returns true; running off the end
  // shows str_271, off the start str_272, and returns false.
  bool FindNext(const QString &searchText);

private:
  int PositionOf(int line, int column) const;

  QStringList m_lines;
};
