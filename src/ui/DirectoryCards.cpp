#include "ui/DirectoryCards.h"

#include "directory/DirectoryPages.h"
#include "support/Shell.h"
#include "ui/DirectoryBinding.h"
#include "ui/MemoFindDialog.h"
#include "ui/Named.h"

#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <array>

using namespace Qt::StringLiterals;

namespace {
// A group box of a card that asks the logic for the present group names each
// time it drops down, so a group typed on the other card is offered at once.
class GroupComboBox : public QComboBox {
public:
  using QComboBox::QComboBox;
  std::function<void()> BeforeDropDown;

  void showPopup() override {
    if (BeforeDropDown)
      BeforeDropDown();
    QComboBox::showPopup();
  }
};

enum class Kind {
  Line,      // a plain edit
  Company,   // an edit whose label is the company search key
  Mobile,    // an edit with a key that calls or texts the number
  Group,     // the group box
  Shared,    // the place of e-mail, web, QQ and MSN
  ContactNo, // the contact's number in the book, shown only
  Memo,      // the notes, across the card's width
};

struct Field {
  Kind What;
  const char16_t *Label; // the label's name; the company's is its search key's
  const char16_t *Text;  // its text until the language texts are applied
  const char16_t *Control;
  PagesText Value;
  int Line;
  int Side; // 0 the left pair of columns, 1 the right
};

// The four fields that take turns on one place of a card; the button in front
// tells which one shows and opens its link, the switch key's menu chooses.
struct SharedPlace {
  const char16_t *Place; // where the four edits lie on top of each other
  const char16_t *Button;
  QString TDirectoryPages::*Caption;
  int TDirectoryPages::*Tag;
  PagesHandler Open;
  const char16_t *Switch;
  const char16_t *SwitchText;
  const char16_t *Menu;
  std::array<const char16_t *, 4> Entries; // e-mail, web, QQ, MSN, in the tags' order
  void (TDirectoryPages::*Choose)(const QString &entryCaption);
  std::array<const char16_t *, 4> Edits;
  std::array<PagesText, 4> Values;
};

struct Card {
  const char16_t *Page;
  const char16_t *Title;
  bool MarksChange; // typing on it marks the contact changed
  int MobileTag;    // which card the mobile menu acts on
  QList<Field> Fields;
  PagesHandler CompanySearch;
  PagesText CompanySelection;
  const char16_t *MobileKey;
  PagesText MobileSelection;
  PagesList GroupItems;
  PagesHandler GroupDropDown;
  SharedPlace Shared;
};

using P = TDirectoryPages;
constexpr std::array<const char16_t *, 4> kSharedEntryTexts{u"电邮", u"网址", u"QQ", u"MSN"};

// Both cards keep the caller's fields in the same places, so the eye finds them
// at once after "添加联系人" carries a caller over.
const Card kCallCard{
    u"Con_TeTabSheet",
    u"通话用户信息",
    false,
    0,
    {{Kind::Line, u"LMDSimpleLabel1", u"姓    名:", u"CON_Name_LMDEdit", &P::CON_Name_LMDEdit, 0,
      0},
     {Kind::Company, u"LMDButton31", u"单位", u"CON_Company_LMDEdit", &P::CON_Company_LMDEdit, 0,
      1},
     {Kind::Line, u"LMDSimpleLabel2", u"电    话:", u"CON_Phone1_LMDEdit", &P::CON_Phone1_LMDEdit,
      1, 0},
     {Kind::Mobile, u"LMDSimpleLabel3", u"手    机:", u"CON_MobilePhone_LMDEdit",
      &P::CON_MobilePhone_LMDEdit, 1, 1},
     {Kind::Line, u"LMDSimpleLabel4", u"地    址:", u"CON_Address_LMDEdit", &P::CON_Address_LMDEdit,
      2, 0},
     {Kind::Line, u"LMDSimpleLabel5", u"传    真:", u"CON_Fax_LMDEdit", &P::CON_Fax_LMDEdit, 2, 1},
     {Kind::Shared, nullptr, nullptr, nullptr, nullptr, 3, 0},
     {Kind::Line, u"LMDSimpleLabel6", u"职    务:", u"CON_Duty_LMDEdit", &P::CON_Duty_LMDEdit, 3,
      1},
     {Kind::Group, u"LMDSimpleLabel7", u"组    别:", u"Con_GrpName_TeSComboBox",
      &P::Con_GrpName_TeSComboBox, 4, 0},
     {Kind::Line, u"LMDSimpleLabel8", u"身份证号:", u"Con_IDCard_TeSEdit", &P::Con_IDCard_TeSEdit,
      4, 1},
     {Kind::Memo, u"LMDSimpleLabel9", u"备    注:", u"CON_Memo_Memo", &P::CON_Memo_Memo, 5, 0}},
    &P::LMDButton31Click,
    &P::CON_Company_SelText,
    u"LMDButton32",
    &P::CON_MobilePhone_SelText,
    &P::Con_GrpName_TeSComboBox_Items,
    &P::Con_GrpName_TeSComboBoxDropDown,
    {u"Con_Internet_StackedWidget",
     u"Con_Inernet_LMDButton",
     &P::Con_Inernet_LMDButton_Caption,
     &P::Con_Inernet_LMDButton_Tag,
     &P::Con_Inernet_LMDButtonClick,
     u"LMDButton41",
     u"切换",
     u"Con_IM_PopupMenu",
     {u"ok2", u"MenuItem2", u"QQ2", u"MSN2"},
     &P::ok2Click,
     {u"CON_Email_LMDEdit", u"CON_Web_LMDEdit", u"CON_QQ_LMDEdit", u"CON_MSN_LMDEdit"},
     {&P::CON_Email_LMDEdit, &P::CON_Web_LMDEdit, &P::CON_QQ_LMDEdit, &P::CON_MSN_LMDEdit}}};

const Card kContactCard{
    u"Mat_TeTabSheet",
    u"基本信息",
    true,
    1,
    {{Kind::Line, u"LMDSimpleLabel11", u"姓    名:", u"MAT_Name_LMDEdit", &P::MAT_Name_LMDEdit, 0,
      0},
     {Kind::Company, u"LMDButton27", u"单位", u"MAT_Company_LMDEdit", &P::MAT_Company_LMDEdit, 0,
      1},
     {Kind::Line, u"LMDSimpleLabel13", u"电    话:", u"MAT_Phone1_LMDEdit", &P::MAT_Phone1_LMDEdit,
      1, 0},
     {Kind::Mobile, u"LMDSimpleLabel14", u"手    机:", u"MAT_MobilePhone_LMDEdit",
      &P::MAT_MobilePhone_LMDEdit, 1, 1},
     {Kind::Line, u"LMDSimpleLabel15", u"地    址:", u"MAT_Addres_LMDEdit", &P::MAT_Addres_LMDEdit,
      2, 0},
     {Kind::Line, u"LMDSimpleLabel16", u"传    真:", u"MAT_Fax_LMDEdit", &P::MAT_Fax_LMDEdit, 2, 1},
     {Kind::Shared, nullptr, nullptr, nullptr, nullptr, 3, 0},
     {Kind::Line, u"LMDSimpleLabel17", u"职    务:", u"MAT_Duty_LMDEdit", &P::MAT_Duty_LMDEdit, 3,
      1},
     {Kind::Group, u"LMDSimpleLabel18", u"组    别:", u"Mat_GrpName_TeSComboBox",
      &P::Mat_GrpName_TeSComboBox, 4, 0},
     {Kind::Line, u"LMDSimpleLabel19", u"身份证号:", u"Mat_IDCard_TeSEdit", &P::Mat_IDCard_TeSEdit,
      4, 1},
     {Kind::Line, u"LMDSimpleLabel12", u"分 机 号:", u"MAT_BranchTel_LMDEdit",
      &P::MAT_BranchTel_LMDEdit, 5, 0},
     {Kind::ContactNo, u"LMDSimpleLabel21", u"联系人编号:", u"CurrentMatID_Label", nullptr, 5, 1},
     {Kind::Memo, u"LMDSimpleLabel20", u"备    注:", u"Mat_Memo_Memo", &P::Mat_Memo_Memo, 6, 0}},
    &P::LMDButton27Click,
    &P::MAT_Company_SelText,
    u"LMDButton34",
    &P::MAT_MobilePhone_SelText,
    &P::Mat_GrpName_TeSComboBox_Items,
    &P::Mat_GrpName_TeSComboBoxDropDown,
    {u"Mat_Internet_StackedWidget",
     u"Inernet_LMDButton",
     &P::Inernet_LMDButton_Caption,
     &P::Inernet_LMDButton_Tag,
     &P::Inernet_LMDButtonClick,
     u"LMDButton37",
     u"切换",
     u"IM_PopupMenu",
     {u"ok1", u"heloo1", u"QQ1", u"MSN1"},
     &P::ok1Click,
     {u"MAT_Email_LMDEdit", u"MAT_WEB_LMDEdit", u"MAT_QQ_LMDEdit", u"MAT_MSN_LMDEdit"},
     {&P::MAT_Email_LMDEdit, &P::MAT_WEB_LMDEdit, &P::MAT_QQ_LMDEdit, &P::MAT_MSN_LMDEdit}}};

// What a card builder leaves for the card's own keys.
struct BuiltCard {
  QWidget *Page;
  QPlainTextEdit *Memo;
  QVBoxLayout *MemoSide; // under the memo's label
  QHBoxLayout *Keys;     // the card's keys, right-aligned at its foot
  QWidget *LastInChain;  // the tab order's last control so far
};

void SharedPlaceControls(TDirectoryPages &pages, const Card &card, QWidget *page,
                         const std::function<void()> &edited, QGridLayout *grid, int line,
                         QList<QWidget *> &chain) {
  const SharedPlace &s = card.Shared;
  auto *button = NamedButton(Utf16(s.Button), QString(), page);
  BindCaption(button, pages, s.Caption);
  KeepFocusOnClick(button);
  OnClick(button, pages, s.Open);
  auto *stack = Named<QStackedWidget>(Utf16(s.Place), page);
  for (size_t i = 0; i < s.Edits.size(); ++i) {
    QLineEdit *edit = NamedEdit(Utf16(s.Edits[i]), stack);
    BindLineEdit(edit, pages, s.Values[i], edited);
    stack->addWidget(edit);
    chain.append(edit);
  }
  stack->setCurrentIndex(pages.*s.Tag);
  auto *menu = Named<QMenu>(Utf16(s.Menu), page);
  for (size_t i = 0; i < s.Entries.size(); ++i) {
    // The entry's caption, as the language in force shows it, tells which field.
    QAction *entry = AddMenuEntry(menu, Utf16(s.Entries[i]), Utf16(kSharedEntryTexts[i]), {});
    QObject::connect(entry, &QAction::triggered, page, [&pages, entry, choose = s.Choose] {
      RunGuarded([&] { (pages.*choose)(entry->text()); });
    });
  }
  auto *switchKey = NamedButton(Utf16(s.Switch), Utf16(s.SwitchText), page);
  KeepFocusOnClick(switchKey);
  switchKey->setMenu(menu);
  QObject::connect(&pages, &TDirectoryPages::cardsChanged, stack,
                   [&pages, &s, stack] { stack->setCurrentIndex(pages.*s.Tag); });
  auto *cell = new QHBoxLayout;
  cell->addWidget(stack, 1);
  cell->addWidget(switchKey);
  grid->addWidget(button, line, 0);
  grid->addLayout(cell, line, 1);
  chain.append(switchKey);
}

QWidget *MakeMobileKey(TDirectoryPages &pages, const Card &card, QWidget *page) {
  auto *key = NamedButton(Utf16(card.MobileKey), u"呼 叫"_s, page);
  KeepFocusOnClick(key); // the number's selected part is what gets dialled
  auto *menu = Named<QMenu>(u"Mobile_PopupMenu"_s, page);
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    PagesHandler Run;
  } kEntries[] = {{u"N13", u"呼叫...", &P::N13Click}, {u"N14", u"发送短信", &P::N14Click}};
  for (const auto &e : kEntries)
    AddMenuEntry(menu, Utf16(e.Name), Utf16(e.Text), [&pages, tag = card.MobileTag, run = e.Run] {
      pages.Mobile_PopupMenu_Tag = tag;
      (pages.*run)();
    });
  key->setMenu(menu);
  return key;
}

BuiltCard BuildCard(TDirectoryPages &pages, const Card &card, QWidget *parent) {
  auto *page = Named<QWidget>(Utf16(card.Page), parent);
  page->setWindowTitle(Utf16(card.Title));
  auto *grid = new QGridLayout;
  grid->setHorizontalSpacing(10);
  grid->setVerticalSpacing(6);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);
  std::function<void()> edited;
  if (card.MarksChange)
    edited = [&pages] { pages.MatRecordChanged(); };

  BuiltCard built{page, nullptr, nullptr, new QHBoxLayout, nullptr};
  QList<QWidget *> chain;
  for (const Field &f : card.Fields) {
    const int column = f.Side * 2;
    if (f.What == Kind::Shared) {
      SharedPlaceControls(pages, card, page, edited, grid, f.Line, chain);
      continue;
    }
    QWidget *label = nullptr;
    if (f.What == Kind::Company) {
      auto *search = NamedButton(Utf16(f.Label), Utf16(f.Text), page);
      KeepFocusOnClick(search); // it searches for the selected part of the name
      OnClick(search, pages, card.CompanySearch);
      label = search;
    } else {
      label = NamedLabel(Utf16(f.Label), Utf16(f.Text), page);
    }
    switch (f.What) {
    case Kind::Memo: {
      auto *memo = Named<QPlainTextEdit>(Utf16(f.Control), page);
      memo->setTabChangesFocus(true);
      BindMemo(memo, pages, f.Value, edited);
      auto *side = new QVBoxLayout;
      side->addWidget(label);
      side->addStretch(1);
      grid->addLayout(side, f.Line, 0);
      grid->addWidget(memo, f.Line, 1, 1, 3);
      grid->setRowStretch(f.Line, 1);
      built.Memo = memo;
      built.MemoSide = side;
      chain.append(memo);
      continue;
    }
    case Kind::Group: {
      auto *box = Named<GroupComboBox>(Utf16(f.Control), page);
      box->BeforeDropDown = [&pages, dropDown = card.GroupDropDown] {
        RunGuarded([&] { (pages.*dropDown)(); });
      };
      BindComboBox(box, pages, f.Value, card.GroupItems, edited);
      grid->addWidget(label, f.Line, column);
      grid->addWidget(box, f.Line, column + 1);
      chain.append(box);
      continue;
    }
    case Kind::ContactNo: {
      auto *number = NamedLabel(Utf16(f.Control), QString(), page);
      const auto show = [&pages, number] {
        // A new contact has no number until it is saved.
        number->setText(pages.CurrentMatID < 0 ? QString() : QString::number(pages.CurrentMatID));
      };
      show();
      QObject::connect(&pages, &TDirectoryPages::cardsChanged, number, show);
      grid->addWidget(label, f.Line, column);
      grid->addWidget(number, f.Line, column + 1);
      continue;
    }
    default:
      break;
    }
    QLineEdit *edit = NamedEdit(Utf16(f.Control), page);
    BindLineEdit(edit, pages, f.Value, edited);
    grid->addWidget(label, f.Line, column);
    chain.append(edit);
    if (f.What == Kind::Company)
      TrackSelection(edit, pages, card.CompanySelection);
    if (f.What == Kind::Mobile) {
      TrackSelection(edit, pages, card.MobileSelection);
      auto *cell = new QHBoxLayout;
      cell->addWidget(edit, 1);
      QWidget *key = MakeMobileKey(pages, card, page);
      cell->addWidget(key);
      grid->addLayout(cell, f.Line, column + 1);
      chain.append(key);
    } else {
      grid->addWidget(edit, f.Line, column + 1);
    }
  }
  // Down each pair of columns in turn would jump about; line by line it reads
  // like the card.
  for (qsizetype i = 1; i < chain.size(); ++i)
    QWidget::setTabOrder(chain[i - 1], chain[i]);
  built.LastInChain = chain.isEmpty() ? nullptr : chain.last();

  built.Keys->addStretch(1);
  auto *layout = new QVBoxLayout(page);
  layout->addLayout(grid, 1);
  layout->addLayout(built.Keys);
  return built;
}

QPushButton *CardKey(const BuiltCard &card, const QString &name, const QString &text,
                     TDirectoryPages &pages, PagesHandler handler) {
  QPushButton *key = NamedButton(name, text, card.Page);
  key->setMinimumWidth(96);
  OnClick(key, pages, handler);
  card.Keys->addWidget(key);
  return key;
}
} // namespace

QWidget *BuildCallCard(TDirectoryPages &pages, QWidget *parent) {
  const BuiltCard card = BuildCard(pages, kCallCard, parent);
  // "添加联系人" for an unknown caller, "修改联系人" for a known one.
  QPushButton *edit =
      CardKey(card, u"ConEdit_LMDButton"_s, QString(), pages, &P::ConEdit_LMDButtonClick);
  BindCaption(edit, pages, &P::ConEdit_LMDButton_Caption);
  QWidget::setTabOrder(card.LastInChain, edit);
  return card.Page;
}

QWidget *BuildContactCard(TDirectoryPages &pages, QWidget *parent) {
  const BuiltCard card = BuildCard(pages, kContactCard, parent);

  // The memo's find key under its label, and the find dialog above the memo.
  QPushButton *find = NamedButton(u"LMDButton29"_s, u"查 找"_s, card.Page);
  KeepFocusOnClick(find); // it starts from the memo's selection
  card.MemoSide->insertWidget(1, find);
  auto *dialog = new MemoFindDialog(pages.FindDialog1, card.Memo, card.Page);
  dialog->FindNext = [&pages](const QString &text) {
    pages.FindDialog1_FindText = text;
    return pages.FindDialog1Find();
  };
  QObject::connect(find, &QPushButton::clicked, card.Page, [&pages, memo = card.Memo] {
    QString selection = memo->textCursor().selectedText();
    selection.replace(QChar::ParagraphSeparator, u'\n');
    RunGuarded([&] { pages.LMDButton29Click(selection); });
  });
  QObject::connect(&pages, &TDirectoryPages::memoFindRequested, dialog,
                   [&pages, dialog] { dialog->Open(pages.FindDialog1_FindText); });

  QPushButton *add = CardKey(card, u"LMDButton25"_s, u"新 增"_s, pages, &P::LMDButton25Click);
  QPushButton *save = CardKey(card, u"LMDButton26"_s, u"保 存"_s, pages, &P::LMDButton26Click);
  QWidget::setTabOrder(card.LastInChain, add);
  QWidget::setTabOrder(add, save);

  // Copy and paste of a whole contact, from anywhere on the card that isn't an
  // edit with its own text menu.
  auto *menu = Named<QMenu>(u"Matn_PopupMenu"_s, card.Page);
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    PagesHandler Run;
  } kEntries[] = {{u"N4", u"复制", &P::N4Click}, {u"N8", u"粘贴", &P::N8Click}};
  for (const auto &e : kEntries)
    AddMenuEntry(menu, Utf16(e.Name), Utf16(e.Text), [&pages, run = e.Run] { (pages.*run)(); });
  card.Page->setContextMenuPolicy(Qt::CustomContextMenu);
  QObject::connect(
      card.Page, &QWidget::customContextMenuRequested, menu,
      [menu, page = card.Page](const QPoint &at) { menu->popup(page->mapToGlobal(at)); });
  return card.Page;
}
