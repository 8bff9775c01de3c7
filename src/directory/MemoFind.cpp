#include "directory/MemoFind.h"

#include "support/LanguagePack.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

TMemoFind::TMemoFind(const QString &text) {
  SetText(text);
}

void TMemoFind::SetText(const QString &text) {
  QString normal = text;
  normal.replace(u"\r\n"_s, u"\n"_s);
  m_lines = normal.split(u'\n');
  CaretLine = std::min(CaretLine, int(m_lines.size()) - 1);
  CaretColumn = 0;
}

void TMemoFind::MoveCaretToStart() {
  CaretLine = 0;
  CaretColumn = 0;
}

int TMemoFind::PositionOf(int line, int column) const {
  int position = 0;
  for (int i = 0; i < line; ++i)
    position += int(m_lines[i].size()) + 2;
  return position + column;
}

bool TMemoFind::FindNext(const QString &searchText) {
  // A whole word is the word with a blank on either side.
  const QString wanted = WholeWord ? u' ' + searchText.trimmed() + u' ' : searchText;
  const Qt::CaseSensitivity cs = MatchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
  if (!wanted.isEmpty()) {
    if (Down) {
      for (int line = CaretLine; line < m_lines.size(); ++line) {
        const int from = line == CaretLine ? CaretColumn : 0;
        const qsizetype hit = m_lines[line].indexOf(wanted, from, cs);
        if (hit >= 0) {
          FoundLine = line;
          FoundColumn = int(hit);
          SelStart = PositionOf(line, FoundColumn);
          SelLength = int(wanted.size());
          CaretLine = line;
          CaretColumn = FoundColumn + SelLength;
          return true;
        }
      }
    } else {
      for (int line = CaretLine; line >= 0; --line) {
        const QString &text = m_lines[line];
        qsizetype hit = -1;
        if (line == CaretLine) {
          // Only a hit that ends at or before the caret lies above it.
          const qsizetype last = CaretColumn - wanted.size();
          hit = last < 0 ? -1 : text.lastIndexOf(wanted, last, cs);
        } else {
          hit = text.lastIndexOf(wanted, -1, cs);
        }
        if (hit >= 0) {
          FoundLine = line;
          FoundColumn = int(hit);
          SelStart = PositionOf(line, FoundColumn);
          SelLength = int(wanted.size());
          CaretLine = line;
          CaretColumn = FoundColumn;
          return true;
        }
      }
    }
  }
  TheShell().Message(MessageKind::Information, LangText(Down ? 271 : 272));
  return false;
}
