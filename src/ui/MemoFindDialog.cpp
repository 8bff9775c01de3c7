#include "ui/MemoFindDialog.h"

#include "directory/MemoFind.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"
#include "ui/Named.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScreen>
#include <QTextBlock>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
// The packs have no texts for this dialog, which stands in for the desktop's own
// find dialog; it speaks the console's language as that one spoke the desktop's.
struct DialogText {
  const char16_t *Chinese;
  const char16_t *English;
};
QString Text(const DialogText &t) {
  return QString::fromUtf16(LanguagePack().LangID == 1 ? t.English : t.Chinese);
}
constexpr DialogText kTitle{u"查找", u"Find"};
constexpr DialogText kFindWhat{u"查找内容(&N):", u"Fi&nd what:"};
constexpr DialogText kFindNext{u"查找下一个(&F)", u"&Find next"};
constexpr DialogText kCancel{u"取消", u"Cancel"};
constexpr DialogText kDirection{u"方向", u"Direction"};
constexpr DialogText kUp{u"向上(&U)", u"&Up"};
constexpr DialogText kDown{u"向下(&D)", u"&Down"};
constexpr DialogText kMatchCase{u"区分大小写(&C)", u"Match &case"};
constexpr DialogText kWholeWord{u"全字匹配(&W)", u"Match &whole word"};
} // namespace

MemoFindDialog::MemoFindDialog(TMemoFind &find, QPlainTextEdit *memo, QWidget *parent)
    : QDialog(parent, Qt::Tool), m_find(find), m_memo(memo) {
  setObjectName(u"FindDialog1"_s);
  setModal(false);
  FindNext = [this](const QString &text) { return m_find.FindNext(text); };

  m_textLabel = NamedLabel(u"FindText_Label"_s, QString(), this);
  m_text = NamedEdit(u"FindText_Edit"_s, this);
  m_textLabel->setBuddy(m_text);
  m_direction = Named<QGroupBox>(u"Direction_GroupBox"_s, this);
  m_up = Named<QRadioButton>(u"Up_RadioButton"_s, m_direction);
  m_down = Named<QRadioButton>(u"Down_RadioButton"_s, m_direction);
  auto *directions = new QHBoxLayout(m_direction);
  directions->addWidget(m_up);
  directions->addWidget(m_down);
  m_matchCase = Named<QCheckBox>(u"MatchCase_CheckBox"_s, this);
  m_wholeWord = Named<QCheckBox>(u"WholeWord_CheckBox"_s, this);
  m_findNext = NamedButton(u"FindNext_Button"_s, QString(), this);
  m_findNext->setDefault(true); // Enter in the text box finds the next hit
  m_cancel = NamedButton(u"Cancel_Button"_s, QString(), this);

  auto *grid = new QGridLayout(this);
  grid->addWidget(m_textLabel, 0, 0);
  grid->addWidget(m_text, 0, 1, 1, 2);
  grid->addWidget(m_matchCase, 1, 0, 1, 2);
  grid->addWidget(m_wholeWord, 2, 0, 1, 2);
  grid->addWidget(m_direction, 1, 2, 2, 1);
  auto *keys = new QVBoxLayout;
  keys->addWidget(m_findNext);
  keys->addWidget(m_cancel);
  keys->addStretch(1);
  grid->addLayout(keys, 0, 3, 3, 1);
  grid->setColumnStretch(1, 1);

  connect(m_findNext, &QPushButton::clicked, this, &MemoFindDialog::FindNextClicked);
  connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
  connect(m_text, &QLineEdit::textChanged, this,
          [this](const QString &text) { m_findNext->setEnabled(!text.isEmpty()); });
  TakeTexts();
}

void MemoFindDialog::TakeTexts() {
  setWindowTitle(Text(kTitle));
  m_textLabel->setText(Text(kFindWhat));
  m_direction->setTitle(Text(kDirection));
  m_up->setText(Text(kUp));
  m_down->setText(Text(kDown));
  m_matchCase->setText(Text(kMatchCase));
  m_wholeWord->setText(Text(kWholeWord));
  m_findNext->setText(Text(kFindNext));
  m_cancel->setText(Text(kCancel));
}

void MemoFindDialog::Open(const QString &text) {
  TakeTexts();
  m_text->setText(text);
  m_findNext->setEnabled(!text.isEmpty());
  m_down->setChecked(m_find.Down);
  m_up->setChecked(!m_find.Down);
  m_matchCase->setChecked(m_find.MatchCase);
  m_wholeWord->setChecked(m_find.WholeWord);
  QTextCursor start(m_memo->document());
  m_memo->setTextCursor(start);

  adjustSize();
  show();
  // Above the memo so the hits stay in sight: lower edge on the memo's upper edge.
  const QPoint memoTop = m_memo->mapToGlobal(QPoint(0, 0));
  int top = memoTop.y() - frameGeometry().height();
  if (const QScreen *screen = m_memo->screen())
    top = std::max(top, screen->availableGeometry().top()); // never above the screen
  move(memoTop.x(), top);
  raise();
  activateWindow();
  m_text->setFocus();
  m_text->selectAll();
}

void MemoFindDialog::FindNextClicked() {
  // The memo may have been edited, or its caret moved, since the last search:
  // the search goes on from what the operator sees.
  const QString memoText = m_memo->toPlainText();
  if (m_find.Lines().join(u'\n') != memoText)
    m_find.SetText(memoText);
  const QTextCursor caret = m_memo->textCursor();
  m_find.CaretLine = caret.blockNumber();
  m_find.CaretColumn = caret.positionInBlock();
  m_find.Down = m_down->isChecked();
  m_find.MatchCase = m_matchCase->isChecked();
  m_find.WholeWord = m_wholeWord->isChecked();
  bool found = false;
  RunGuarded([&] { found = FindNext(m_text->text()); });
  if (found)
    SelectHit();
}

void MemoFindDialog::SelectHit() {
  const QTextBlock line = m_memo->document()->findBlockByNumber(m_find.FoundLine);
  if (!line.isValid())
    return;
  const int start = line.position() + m_find.FoundColumn;
  const int end = start + m_find.SelLength;
  // The caret ends where the search goes on: behind the hit going down, in
  // front of it going up.
  QTextCursor hit(m_memo->document());
  hit.setPosition(m_find.Down ? start : end);
  hit.setPosition(m_find.Down ? end : start, QTextCursor::KeepAnchor);
  m_memo->setTextCursor(hit);
  m_memo->ensureCursorVisible();
}
