#include "ui/ExtFindWindow.h"

#include "guest/ExtFind_Form.h"
#include "support/Shell.h"
#include "ui/BoardView.h"
#include "ui/EscapeCloses.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>

using namespace Qt::StringLiterals;

ExtFindWindow::ExtFindWindow(TForm_ExtFind &logic, TBoardView *board, QWidget *parent)
    : QWidget(parent, Qt::Tool), m_logic(logic), m_board(board) {
  setObjectName(u"Form_ExtFind"_s);
  setWindowTitle(u"分机管理"_s);
  m_number = Named<QComboBox>(u"TeSComboBox_Ext"_s, this);
  m_number->setEditable(true);
  m_number->setInsertPolicy(QComboBox::NoInsert);
  m_number->setMinimumWidth(160);
  auto *locate = NamedButton(u"tefxButton7"_s, u"定位"_s, this);
  auto *row = new QHBoxLayout(this);
  row->addWidget(m_number, 1);
  row->addWidget(locate);
  BindLanguage(m_logic, this);

  const auto find = [this] {
    m_logic.TeSComboBox_Ext_Text = m_number->currentText();
    RunGuarded([this] { m_logic.tefxButton7Click(); });
    if (m_board)
      m_board->SyncFromTable();
  };
  connect(locate, &QPushButton::clicked, this, find);
  connect(m_number->lineEdit(), &QLineEdit::returnPressed, this, find);
  connect(&m_logic, &TFormLogic::shown, this, [this] {
    show();
    raise();
    activateWindow();
    m_number->setFocus();
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);
  EscapeCloses(this, [this] { m_logic.Close(); });
}
