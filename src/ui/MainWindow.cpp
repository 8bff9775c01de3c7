#include "ui/MainWindow.h"

#include "console/Main_Form.h"
#include "link/SysParam.h"
#include "directory/DirectoryPages.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/Shell.h"
#include "ui/DeviceTestPanelView.h"
#include "ui/DirectoryView.h"
#include "ui/Named.h"
#include "directory/RecordServerPage.h"
#include "directory/SysDM_Unit.h"
#include "ui/RecordingsPage.h"
#include "ui/RecordsPage.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMetaEnum>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// A key of the phone column: named, and tall enough to hit at a glance.
QPushButton *Key(const QString &name, const QString &text, QWidget *parent) {
  QPushButton *b = NamedButton(name, text, parent);
  b->setMinimumHeight(34);
  return b;
}

// A call list: the view's selection and current row are the model's, so the
// logic's handlers act on what the operator marked. The Delete key and the
// menu's delete entry remove the selected rows after the operator's yes; a
// double click opens the row's caller; the menu's other entry dials back.
class CallListView : public QTableView {
public:
  CallListView(TCallListModel &list, TDirectoryPages &pages, bool stored, QWidget *parent)
      : QTableView(parent), m_list(list), m_pages(pages), m_stored(stored) {
    connect(this, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex &index) {
      SyncSelection();
      RunGuarded([&] { m_pages.OpenCallItem(m_list, index.row()); });
    });
  }

  // The list's menu: its dial-back and delete entries, named as the language
  // texts address them.
  void SetMenu(const QString &menuName, const QString &dialName, const QString &dialText,
               void (TDirectoryPages::*dial)(), const QString &deleteName,
               void (TDirectoryPages::*remove)()) {
    auto *menu = new QMenu(this);
    menu->setObjectName(menuName);
    auto add = [this, menu](const QString &name, const QString &text, auto handler) {
      menu->addAction(text, this,
                      [this, handler] {
                        SyncSelection();
                        RunGuarded([&] { (m_pages.*handler)(); });
                      })
          ->setObjectName(name);
    };
    add(dialName, dialText, dial);
    add(deleteName, u"删除"_s, remove);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QWidget::customContextMenuRequested, menu, [this, menu](const QPoint &at) {
      if (indexAt(at).isValid())
        menu->popup(viewport()->mapToGlobal(at));
    });
  }

protected:
  void keyPressEvent(QKeyEvent *event) override {
    if (event->key() == Qt::Key_Delete && m_stored) {
      SyncSelection();
      RunGuarded([this] { m_pages.DeleteSelectedCallItems(m_list); });
      return;
    }
    QTableView::keyPressEvent(event);
  }

private:
  void SyncSelection() {
    for (int row = 0; row < m_list.Count(); ++row)
      m_list.SetSelected(row, selectionModel()->isRowSelected(row, QModelIndex()));
    m_list.ItemIndex = currentIndex().isValid() ? currentIndex().row() : -1;
  }

  TCallListModel &m_list;
  TDirectoryPages &m_pages;
  bool m_stored;
};

// A call list named as the language texts address it. `stored` lists have the
// log table behind their rows, so the Delete key removes rows there too.
CallListView *CallList(const QString &name, TCallListModel &list, TDirectoryPages &pages,
                       QWidget *parent, bool stored) {
  auto *v = new CallListView(list, pages, stored, parent);
  v->setObjectName(name);
  v->setModel(&list);
  v->setSelectionBehavior(QAbstractItemView::SelectRows);
  v->setSelectionMode(QAbstractItemView::ExtendedSelection);
  v->verticalHeader()->hide();
  v->horizontalHeader()->setStretchLastSection(true);
  v->setAlternatingRowColors(true);
  v->setWordWrap(false); // one line a call: a time never breaks in two
  return v;
}
} // namespace

TMainWindow::TMainWindow(TMain_Form &main, QWidget *parent) : QMainWindow(parent), m_main(main) {
  setObjectName(u"TMain_Form"_s);
  setWindowTitle(main.Caption);
  resize(1366, 768);
  BuildMenuAndToolbar();

  // The working pages: the board, the caller's card, contacts, search, log.
  m_pages = new QTabWidget(this);
  m_pages->setObjectName(u"UserMain_TePageControl"_s);
  m_boardPage = new QWidget(m_pages);
  m_boardPage->setObjectName(u"Branchs_TeTabSheet"_s);
  m_boardPage->setLayout(new QVBoxLayout);
  m_boardPage->layout()->setContentsMargins(0, 0, 0, 0);
  m_pages->addTab(m_boardPage, u"分机状态"_s);
  for (QWidget *page : BuildDirectoryPages(main.Pages(), m_pages))
    m_pages->addTab(page, page->windowTitle());
  QWidget *records = BuildRecordsPage(main, m_pages);
  m_pages->addTab(records, records->windowTitle());
  QWidget *recordings = BuildRecordingsPage(main.RecordServer(), m_pages);
  m_pages->addTab(recordings, recordings->windowTitle());
  // The directory's handlers bring their page to the front by its name.
  connect(&main.Pages(), &TDirectoryPages::pageRequested, this, [this](TDirectoryPages::Page page) {
    const QString name =
        QString::fromLatin1(QMetaEnum::fromType<TDirectoryPages::Page>().valueToKey(int(page)));
    if (auto *w = m_pages->findChild<QWidget *>(name))
      m_pages->setCurrentWidget(w);
  });
  m_log = new QPlainTextEdit(m_pages);
  m_log->setObjectName(u"LogMemo"_s);
  m_log->setReadOnly(true);
  m_log->setMaximumBlockCount(TLogMemo::kMaxLines);
  for (const QString &line : LogMemo().Lines())
    m_log->appendPlainText(line);
  connect(&LogMemo(), &TLogMemo::lineAdded, m_log, &QPlainTextEdit::appendPlainText);
  connect(&LogMemo(), &TLogMemo::cleared, m_log, &QPlainTextEdit::clear);
  if (SysConfig().Debug != 0)
    m_pages->addTab(m_log, u"Log"_s);
  else
    m_log->hide();

  auto *right = new QSplitter(Qt::Vertical, this);
  right->addWidget(m_pages);
  right->addWidget(BuildCallLists());
  right->setStretchFactor(0, 4);
  right->setStretchFactor(1, 1);

  // The phone column keeps its width like a desk phone; the pages take the rest.
  auto *central = new QWidget(this);
  auto *row = new QHBoxLayout(central);
  row->setContentsMargins(6, 6, 6, 0);
  // Where the phone stands, the company's panel shows while no session is up.
  m_front = new QStackedWidget(central);
  m_front->setObjectName(u"Front_Stack"_s);
  m_front->setFixedWidth(330);
  m_front->addWidget(BuildPhoneColumn());
  m_front->addWidget(BuildCompanyPanel());
  row->addWidget(m_front);
  row->addWidget(right, 1);
  setCentralWidget(central);

  // Status bar: own extension, session state, clock; and the in-window notice.
  m_notice = new QLabel(this);
  m_notice->setObjectName(u"Notice"_s);
  m_notice->setStyleSheet(u"QLabel { background: #fff4c2; padding: 2px 8px; }"_s);
  m_notice->hide();
  m_noticeTimer.setSingleShot(true);
  connect(&m_noticeTimer, &QTimer::timeout, m_notice, &QLabel::hide);
  m_statusExt = new QLabel(this);
  m_statusSession = new QLabel(this);
  m_statusClock = new QLabel(this);
  statusBar()->addWidget(m_notice, 1);
  statusBar()->addPermanentWidget(m_statusExt);
  statusBar()->addPermanentWidget(m_statusSession);
  statusBar()->addPermanentWidget(m_statusClock);
  // The shared database away: said once in a message, shown here until it is back.
  auto *storeAway = new QLabel(u"共享数据库连接中断, 正在重连"_s, this);
  storeAway->setObjectName(u"StoreAway"_s);
  storeAway->setStyleSheet(u"QLabel { color: #a00000; padding: 0 6px; }"_s);
  storeAway->setVisible(Sys_DM().Link().Away());
  statusBar()->addPermanentWidget(storeAway);
  connect(&Sys_DM().Link(), &TStoreLink::awayChanged, storeAway, &QWidget::setVisible);
  auto *clock = new QTimer(this);
  connect(clock, &QTimer::timeout, this, &TMainWindow::RefreshStatus);
  clock->start(1000);

  connect(&main, &TMain_Form::captionChanged, this, &QWidget::setWindowTitle);
  connect(&main.Display(), &TDisplay::memo1Changed, m_display, &QLabel::setText);
  connect(&main, &TMain_Form::callControlChanged, this, &TMainWindow::RefreshCallControl);
  connect(&main, &TMain_Form::frontChanged, this, [this] {
    m_front->setCurrentIndex(m_main.Front == TMain_Form::FrontPanel::Company_TePanel ? 1 : 0);
  });
  RefreshCallControl();
  RefreshStatus();
  new DeviceTestPanelView(main.DeviceTestPanel(), this);
}

void TMainWindow::BuildMenuAndToolbar() {
  QMenu *tools = menuBar()->addMenu(u"工具"_s);
  tools->setObjectName(u"N1"_s);
  QAction *settings = tools->addAction(u"设置"_s, this, &TMainWindow::settingsRequested);
  settings->setObjectName(u"N6"_s);
  QMenu *language = tools->addMenu(u"语言"_s);
  language->setObjectName(u"N18"_s);
  QAction *chinese =
      language->addAction(u"中文简体"_s, this, [this] { emit languageRequested(0); });
  chinese->setObjectName(u"N19"_s);
  QAction *english = language->addAction(u"英语"_s, this, [this] { emit languageRequested(1); });
  english->setObjectName(u"N20"_s);
  QAction *quit = tools->addAction(u"退出"_s, this, &QWidget::close);
  quit->setObjectName(u"N5"_s);

  QToolBar *bar = addToolBar(u"TeToolBar1"_s);
  bar->setObjectName(u"TeToolBar1"_s);
  bar->setMovable(false);
  bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
  auto add = [bar](const QString &name, const QString &text, auto slot) {
    QAction *a = bar->addAction(text, slot);
    a->setObjectName(name);
    return a;
  };
  add(u"TeSpeedButton9"_s, u"重登录"_s, [this] { m_main.TeSpeedButton9Click(); });
  add(u"TeSpeedButton11"_s, u"注 销"_s, [this] { m_main.TeSpeedButton11Click(); });
  add(u"TeSpeedButton8"_s, u"短信通"_s, [this] { emit smsRequested(); });
  add(u"TeSpeedButton10"_s, u"事务管理"_s, [this] { emit tasksRequested(); });
  m_ringTone = add(u"RingTone_TeSpeedButton"_s, u"关铃声"_s,
                   [this] { m_main.RingTone_TeSpeedButtonClick(); });
  add(u"TeSpeedButton_APIExcute"_s, u"外部调用"_s,
      [this] { m_main.Pages().TeSpeedButton_APIExcuteClick(); });
  add(u"tefxButton_MCallRecord"_s, u"叫醒记录"_s,
      [this] { RunGuarded([this] { m_main.tefxButton_MCallRecordClick(); }); });

  // How a ringing call is announced: four choices, one checked.
  auto *popMenu = new QMenu(this);
  popMenu->setObjectName(u"IncomStyle_PopupMenu"_s);
  auto *group = new QActionGroup(popMenu);
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    int Style;
  } kStyles[] = {{u"N16", u"直接显示", 0},
                 {u"N17", u"泡泡显示", 1},
                 {u"N23", u"调用外部接口程序", 2},
                 {u"N26", u"弹窗风格_标准", 3}};
  for (const auto &s : kStyles) {
    QAction *a = popMenu->addAction(QString::fromUtf16(s.Text));
    a->setObjectName(QString::fromUtf16(s.Name));
    a->setCheckable(true);
    group->addAction(a);
    const int style = s.Style;
    const int current = SysConfig().IncomStyle;
    a->setChecked(style == (current >= 0 && current <= 3 ? current : 2));
    connect(a, &QAction::triggered, this, [style] { SysConfig().IncomStyle = style; });
  }
  auto *pop = new QToolButton(bar);
  pop->setObjectName(u"TeSpeedButton16"_s);
  pop->setText(u"来电弹屏"_s);
  pop->setMenu(popMenu);
  pop->setPopupMode(QToolButton::InstantPopup);
  bar->addWidget(pop);

  auto *spacer = new QWidget(bar);
  spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  bar->addWidget(spacer);
  QAction *host =
      add(u"HostIP_tefxButton"_s, QString(), [this] { m_main.HostIP_tefxButtonClick(); });
  connect(&m_main, &TMain_Form::captionChanged, host, [this, host] {
    host->setText(m_main.HostIP_tefxButton_Caption);
    host->setToolTip(m_main.HostIP_tefxButton_Hint);
  });
}

QWidget *TMainWindow::BuildPhoneColumn() {
  auto *column = new QWidget(this);
  column->setObjectName(u"Dial_TeTabControl"_s);
  auto *layout = new QVBoxLayout(column);

  // The two-line display, like the desk phone's.
  m_display = new QLabel(m_main.Display().Memo1(), column);
  m_display->setObjectName(u"memo1"_s);
  QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  mono.setPointSize(15);
  mono.setBold(true);
  m_display->setFont(mono);
  m_display->setStyleSheet(
      u"QLabel { background: #102a1c; color: #9cff9c; padding: 8px; border-radius: 6px; }"_s);
  m_display->setMinimumHeight(72);
  layout->addWidget(m_display);

  // The dial box: Enter dials, and with keying dials each key goes as typed.
  m_dialBox = new QComboBox(column);
  m_dialBox->setObjectName(u"dial_TeSComboBox"_s);
  m_dialBox->setEditable(true);
  m_dialBox->setInsertPolicy(QComboBox::NoInsert);
  auto *dial = Key(u"dial_TeButton"_s, u"拨 号"_s, column);
  auto *dialRow = new QHBoxLayout;
  dialRow->addWidget(m_dialBox, 1);
  dialRow->addWidget(dial);
  layout->addLayout(dialRow);
  auto dialNow = [this] {
    m_main.dial_TeSComboBox_Text = m_dialBox->currentText();
    m_main.dial_TeSComboBox_SelText = m_dialBox->lineEdit()->selectedText();
    m_main.dial_TeButtonClick();
    m_dialBox->clear();
    m_dialBox->addItems(m_main.dial_TeSComboBox_Items);
    m_dialBox->setCurrentIndex(-1);
  };
  connect(dial, &QPushButton::clicked, this, dialNow);
  connect(m_dialBox->lineEdit(), &QLineEdit::returnPressed, this, dialNow);
  connect(m_dialBox->lineEdit(), &QLineEdit::textEdited, this, [this](const QString &text) {
    if (!text.isEmpty() && SysConfig().isAGMode)
      m_main.dial_TeSComboBoxKeyPress(text.back());
  });

  // The waiting number's count-down, with its cancel key.
  m_msgPanel = new QWidget(column);
  m_msgPanel->setObjectName(u"Msg_Panel"_s);
  m_msgPanel->setAttribute(Qt::WA_StyledBackground);
  m_msgPanel->setStyleSheet(u"#Msg_Panel { background: #fff4c2; border-radius: 4px; }"_s);
  auto *msgRow = new QHBoxLayout(m_msgPanel);
  msgRow->setContentsMargins(6, 2, 2, 2);
  m_msgText = NamedLabel(u"Msg_TeLabel"_s, QString(), m_msgPanel);
  m_msgText->setWordWrap(true);
  msgRow->addWidget(m_msgText, 1);
  auto *cancel = NamedButton(u"TeButton1"_s, u"取消"_s, m_msgPanel);
  connect(cancel, &QPushButton::clicked, this, [this] { m_main.Msg_TeButton1Click(); });
  msgRow->addWidget(cancel);
  m_msgPanel->hide();
  layout->addWidget(m_msgPanel);

  // The keypad: 1..9, *, 0, #.
  auto *pad = new QGridLayout;
  const QString keys = u"123456789*0#"_s;
  const int codes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 10, 12};
  for (int i = 0; i < 12; ++i) {
    auto *k = Key(u"Key_%1"_s.arg(codes[i]), keys.mid(i, 1), column);
    const int code = codes[i];
    connect(k, &QPushButton::clicked, this, [this, code] { m_main.DialOneDigit(code); });
    pad->addWidget(k, i / 3, i % 3);
  }
  layout->addLayout(pad);

  // The call-control keys.
  auto *control = new QGridLayout;
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    void (TMain_Form::*Click)();
  } kKeys[] = {{u"LMDButton18", u"保 持", &TMain_Form::HoldClick},
               {u"LMDButton17", u"会 议", &TMain_Form::ConferenceClick},
               {u"LMDButton20", u"转 移", &TMain_Form::TransferClick},
               {u"LMDButton21", u"取 消", &TMain_Form::LMDButton21Click},
               {u"LMDButton22", u"查 询", &TMain_Form::QueryClick},
               {u"tefxSpeedButton2", u"转到号码", &TMain_Form::tefxSpeedButton2Click}};
  for (int i = 0; i < 6; ++i) {
    auto *k = Key(QString::fromUtf16(kKeys[i].Name), QString::fromUtf16(kKeys[i].Text), column);
    const auto click = kKeys[i].Click;
    connect(k, &QPushButton::clicked, this, [this, click] {
      if (click == &TMain_Form::tefxSpeedButton2Click)
        m_main.dial_TeSComboBox_Text = m_dialBox->currentText();
      (m_main.*click)();
    });
    control->addWidget(k, i / 3, i % 3);
  }
  layout->addLayout(control);

  // The hook keys, behind the mode key.
  m_ctrlMode = Key(u"CtrlMode_tefxButton"_s, m_main.CtrlMode_Caption, column);
  m_offhook = Key(u"Offhook_tefxButton"_s, u"摘机"_s, column);
  m_onhook = Key(u"Onhook_tefxButton"_s, u"挂机"_s, column);
  connect(m_ctrlMode, &QPushButton::clicked, this, [this] { m_main.CtrlMode_tefxButtonClick(); });
  connect(m_offhook, &QPushButton::clicked, this, [this] { m_main.Offhook_tefxButtonClick(); });
  connect(m_onhook, &QPushButton::clicked, this, [this] { m_main.Onhook_tefxButtonClick(); });
  auto *hook = new QHBoxLayout;
  hook->addWidget(m_ctrlMode);
  hook->addWidget(m_offhook);
  hook->addWidget(m_onhook);
  layout->addLayout(hook);

  // Do-not-disturb of the console's own extension.
  auto *dnd = new QHBoxLayout;
  auto *dndOn = Key(u"tefxButton5"_s, u"免打扰开"_s, column);
  auto *dndOff = Key(u"tefxButton6"_s, u"免打扰关"_s, column);
  connect(dndOn, &QPushButton::clicked, this, [this] { m_main.tefxButton5Click(); });
  connect(dndOff, &QPushButton::clicked, this, [this] { m_main.tefxButton6Click(); });
  dnd->addWidget(dndOn);
  dnd->addWidget(dndOff);
  layout->addLayout(dnd);

  // The calls ringing now.
  layout->addWidget(NamedLabel(u"TeAdvancedLabel3"_s, u"最新来电"_s, column));
  CallListView *ringing = CallList(u"Incomings_LMDListBox"_s, m_main.Pages().Incomings_LMDListBox,
                                   m_main.Pages(), column, false);
  // The column is narrow: who, from where and when; the card shows the rest.
  for (int c : {2, 3, 4})
    ringing->setColumnHidden(c, true);
  ringing->setColumnWidth(0, 64);
  ringing->setColumnWidth(1, 104);
  layout->addWidget(ringing, 1);
  return column;
}

QWidget *TMainWindow::BuildCompanyPanel() {
  auto *panel = new QWidget(this);
  panel->setObjectName(u"Company_TePanel"_s);
  auto *layout = new QVBoxLayout(panel);
  auto *image = new QLabel(panel);
  image->setObjectName(u"company_Image"_s);
  image->setAlignment(Qt::AlignCenter);
  // The house's own picture; a missing or broken file leaves the panel plain.
  const QPixmap picture(AppFileOrShipped(u"ini/company.jpg"_s));
  if (!picture.isNull())
    image->setPixmap(picture.scaledToWidth(300, Qt::SmoothTransformation));
  layout->addStretch(1);
  layout->addWidget(image);
  auto *url = NamedLabel(u"CompanyUrl_LMDSimpleLabel"_s, QString(), panel);
  url->setAlignment(Qt::AlignCenter);
  url->setWordWrap(true);
  url->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout->addWidget(url);
  layout->addStretch(1);
  return panel;
}

void TMainWindow::FirstShow() {
  // The address under the picture, and the window over the screen's free area.
  if (auto *url = findChild<QLabel *>(u"CompanyUrl_LMDSimpleLabel"_s))
    url->setText(SysConfig().CompanyURL);
  if (const QScreen *screen = this->screen())
    setGeometry(screen->availableGeometry());
}

QWidget *TMainWindow::BuildCallLists() {
  auto *tabs = new QTabWidget(this);
  tabs->setObjectName(u"ConRecords_TePageControl"_s);
  TDirectoryPages &p = m_main.Pages();
  // Each list on a page of its own name, which the language texts address,
  // with its menu: dial back and delete.
  using Handler = void (TDirectoryPages::*)();
  const struct {
    const char16_t *Page;
    const char16_t *List;
    const char16_t *Caption;
    TCallListModel *Model;
    const char16_t *Menu;
    const char16_t *Dial;
    const char16_t *DialText;
    Handler DialBack;
    const char16_t *Delete;
    Handler Remove;
  } kLists[] = {{u"Lost_TeTabSheet", u"lostIncom_LMDListBox", u"未接来电", &p.lostIncom_LMDListBox,
                 u"lostIncom_PopupMenu", u"MenuItem6", u"回叫", &TDirectoryPages::MenuItem6Click,
                 u"MenuItem7", &TDirectoryPages::MenuItem7Click},
                {u"Incomed_TeTabSheet", u"Incomed_LMDListBox", u"已接来电", &p.Incomed_LMDListBox,
                 u"incomed_PopupMenu", u"MenuItem1", u"回叫", &TDirectoryPages::MenuItem1Click,
                 u"MenuItem5", &TDirectoryPages::MenuItem5Click},
                {u"DialOut_TeTabSheet", u"dialOut_LMDListBox", u"已拨电话", &p.dialOut_LMDListBox,
                 u"dialOut_PopupMenu", u"N10", u"重拨", &TDirectoryPages::N10Click, u"N11",
                 &TDirectoryPages::N11Click}};
  for (const auto &l : kLists) {
    auto *page = new QWidget(tabs);
    page->setObjectName(QString::fromUtf16(l.Page));
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *view = CallList(QString::fromUtf16(l.List), *l.Model, p, page, true);
    view->SetMenu(QString::fromUtf16(l.Menu), QString::fromUtf16(l.Dial),
                  QString::fromUtf16(l.DialText), l.DialBack, QString::fromUtf16(l.Delete),
                  l.Remove);
    layout->addWidget(view);
    tabs->addTab(page, QString::fromUtf16(l.Caption));
  }
  return tabs;
}

void TMainWindow::SetBoard(QWidget *board) {
  m_boardPage->layout()->addWidget(board);
}

void TMainWindow::ShowNotice(const QString &title, const QString &text, int seconds) {
  QString flat = text;
  flat.replace(u'\r', u"  "_s);
  m_notice->setText(u"<b>"_s + title.toHtmlEscaped() + u"</b>  "_s + flat.toHtmlEscaped());
  m_notice->show();
  m_noticeTimer.start(seconds * 1000);
}

void TMainWindow::RefreshCallControl() {
  m_ctrlMode->setText(m_main.CtrlMode_Caption);
  m_offhook->setEnabled(m_main.HookKeys_Enabled);
  m_onhook->setEnabled(m_main.HookKeys_Enabled);
  m_msgPanel->setVisible(m_main.Msg_Panel_Visible);
  m_msgText->setText(m_main.Msg_Panel_Caption + u"  "_s + m_main.Msg_TeLabel);
  if (!m_main.RingTone_Caption.isEmpty())
    m_ringTone->setText(m_main.RingTone_Caption);
}

void TMainWindow::RefreshStatus() {
  const TNetPhone_SysParam &sp = SysParam();
  m_statusExt->setText(sp.MyTelNo.isEmpty() ? u"—"_s : sp.MyTelNo);
  // Live or not is what the desk needs to know at a glance.
  const QString state = m_main.SessionStateText();
  m_statusSession->setText(m_main.StatusLine.isEmpty() ? state
                                                       : m_main.StatusLine + u"  |  "_s + state);
  m_statusClock->setText(CurrentDateTime().toString(u"yyyy-MM-dd hh:mm:ss"_s));
}

void TMainWindow::closeEvent(QCloseEvent *event) {
  if (!CloseHandler || CloseHandler())
    event->accept();
  else
    event->ignore(); // No keeps the session
}

void TMainWindow::changeEvent(QEvent *event) {
  QMainWindow::changeEvent(event);
  // Hidden after the state change has been handled, so that showNormal()
  // brings the window back as it was.
  if (event->type() == QEvent::WindowStateChange && MinimiseToTray && isMinimized())
    QTimer::singleShot(0, this, &QWidget::hide);
}
