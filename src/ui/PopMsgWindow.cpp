#include "ui/PopMsgWindow.h"

#include "directory/PopMsg_Form.h"
#include "ui/LanguageBinding.h"

#include <QCloseEvent>
#include <QFormLayout>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

PopMsgWindow::PopMsgWindow(TForm_PopMsg &logic, QWidget *parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                          Qt::WindowDoesNotAcceptFocus),
      m_logic(logic) {
  setObjectName(u"TForm_PopMsg"_s);
  setAttribute(Qt::WA_ShowWithoutActivating);
  setFocusPolicy(Qt::NoFocus);

  // Frameless, so it draws its own title line with a close key.
  auto *frame = new QFrame(this);
  frame->setObjectName(u"PopMsg_Frame"_s);
  frame->setFrameShape(QFrame::Box);
  frame->setStyleSheet(u"#PopMsg_Frame { border: 1px solid palette(mid); }"
                       u"#Caption_Label { font-weight: bold; }"_s);

  m_caption = new QLabel(frame);
  m_caption->setObjectName(u"Caption_Label"_s);
  auto *closeKey = new QToolButton(frame);
  closeKey->setObjectName(u"Close_ToolButton"_s);
  closeKey->setText(u"✕"_s);
  closeKey->setAutoRaise(true);
  closeKey->setFocusPolicy(Qt::NoFocus);
  connect(closeKey, &QToolButton::clicked, this, &QWidget::close);
  auto *titleRow = new QHBoxLayout;
  titleRow->addWidget(m_caption, 1);
  titleRow->addWidget(closeKey);

  // The incoming-call page; its tab headers are never shown.
  auto *pages = new QStackedWidget(frame);
  pages->setObjectName(u"PageControl1"_s);
  auto *incomingPage = new QWidget;
  incomingPage->setObjectName(u"sTabSheet_Incoming"_s);
  m_incoming = new QLabel(incomingPage);
  m_incoming->setObjectName(u"Label_Incoming"_s);
  m_incoming->setTextInteractionFlags(Qt::TextSelectableByMouse);
  QFont big = m_incoming->font();
  big.setPointSizeF(big.pointSizeF() * 1.5);
  big.setBold(true);
  m_incoming->setFont(big);
  m_time = new QLabel(incomingPage);
  m_time->setObjectName(u"Label_Time"_s);
  auto *incomingTitle = new QLabel(u"来电号码:"_s, incomingPage);
  incomingTitle->setObjectName(u"Label_IncomingTitle"_s);
  auto *timeTitle = new QLabel(u"来电时间:"_s, incomingPage);
  timeTitle->setObjectName(u"Label_TimeTitle"_s);
  auto *fields = new QFormLayout(incomingPage);
  fields->addRow(incomingTitle, m_incoming);
  fields->addRow(timeTitle, m_time);
  pages->addWidget(incomingPage);

  auto *inner = new QVBoxLayout(frame);
  inner->setContentsMargins(10, 6, 6, 10);
  inner->addLayout(titleRow);
  inner->addWidget(pages);
  auto *outer = new QVBoxLayout(this);
  outer->setContentsMargins(0, 0, 0, 0);
  outer->addWidget(frame);

  BindLanguage(m_logic, this);

  connect(&m_logic, &TFormLogic::shown, this, [this] {
    Refresh();
    PlaceInCorner();
    show();
    raise();
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);

  setMinimumWidth(260);
  Refresh();
  if (m_logic.Visible()) {
    PlaceInCorner();
    show();
  }
}

void PopMsgWindow::Refresh() {
  setWindowTitle(m_logic.Caption);
  m_caption->setText(m_logic.Caption);
  m_incoming->setText(m_logic.Label_Incoming);
  m_time->setText(m_logic.Label_Time);
}

void PopMsgWindow::PlaceInCorner() {
  adjustSize();
  QScreen *screen = QGuiApplication::primaryScreen();
  if (!screen)
    return;
  // The available area leaves out the task bar, wherever the desktop puts it.
  const QRect free = screen->availableGeometry();
  const QSize size = frameGeometry().size();
  move(free.right() - size.width() + 1, free.bottom() - size.height() + 1);
}

void PopMsgWindow::closeEvent(QCloseEvent *event) {
  // Closing it is the logic's close; its signal hides this window.
  if (m_logic.Visible())
    m_logic.Close();
  event->accept();
}
