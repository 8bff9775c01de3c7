#include "ui/DeviceTestPanelView.h"

#include "console/DeviceTestPanel.h"
#include "ui/Named.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QShortcut>

using namespace Qt::StringLiterals;

DeviceTestPanelView::DeviceTestPanelView(TDeviceTestPanel &logic, QWidget *owner)
    : QWidget(owner, Qt::Tool), m_logic(logic) {
  setObjectName(u"Panel2"_s);
  setWindowTitle(u"Panel2"_s);
  m_text = NamedEdit(u"LMDEdit1"_s, this);
  m_hook = NamedLabel(u"HookCaption"_s, QString(), this);
  auto *parse = NamedButton(u"LMDButton1"_s, u"Parse"_s, this);
  auto *bytes = NamedButton(u"LMDButton3"_s, u"Bytes"_s, this);

  auto *grid = new QGridLayout(this);
  grid->addWidget(m_text, 0, 0, 1, 8);
  for (int bit = 0; bit < 8; ++bit) {
    // Lamps are shown, not switched: the device sets them.
    m_lit[size_t(bit)] = new QCheckBox(QString::number(bit), this);
    m_blink[size_t(bit)] = new QCheckBox(QString::number(bit), this);
    m_lit[size_t(bit)]->setEnabled(false);
    m_blink[size_t(bit)]->setEnabled(false);
    grid->addWidget(m_lit[size_t(bit)], 1, bit);
    grid->addWidget(m_blink[size_t(bit)], 2, bit);
  }
  grid->addWidget(m_hook, 3, 0, 1, 4);
  grid->addWidget(parse, 3, 6);
  grid->addWidget(bytes, 3, 7);

  connect(m_text, &QLineEdit::textChanged, this, [this](const QString &t) { m_logic.LMDEdit1 = t; });
  connect(parse, &QPushButton::clicked, this, [this] { m_logic.LMDButton1Click(); });
  connect(bytes, &QPushButton::clicked, this, [this] { m_logic.LMDButton3Click(); });
  connect(&m_logic, &TDeviceTestPanel::changed, this, &DeviceTestPanelView::Refresh);
  auto *toggle = new QShortcut(QKeySequence(u"Ctrl+Shift+F12"_s), owner);
  connect(toggle, &QShortcut::activated, this, [this] { setVisible(!isVisible()); });
  hide();
}

void DeviceTestPanelView::Refresh() {
  for (int bit = 0; bit < 8; ++bit) {
    m_lit[size_t(bit)]->setChecked(m_logic.LMDCheckGroup1[size_t(bit)]);
    m_blink[size_t(bit)]->setChecked(m_logic.LMDCheckGroup2[size_t(bit)]);
  }
  m_hook->setText(m_logic.HookCaption);
}
