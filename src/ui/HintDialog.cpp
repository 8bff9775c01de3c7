#include "ui/HintDialog.h"

#include "guest/Hint_Form.h"
#include "support/Shell.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"
#include "ui/RoomDialogLayout.h"
#include "ui/ShowCentred.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

HintDialog::HintDialog(THint_Form &logic, QWidget *parent) : QDialog(parent), m_logic(logic) {
  setObjectName(u"THint_Form"_s);

  m_telNos = NamedLabel(u"TelNos_LMDLabel"_s, QString(), this);
  m_telNos->setTextInteractionFlags(Qt::TextSelectableByMouse);
  m_class = Named<QComboBox>(u"srvClass_TeComboBox"_s, this);
  m_class->setMinimumContentsLength(12);
  auto *form = new QFormLayout;
  form->addRow(m_telNos);
  form->addRow(NamedLabel(u"SrvClass_TeLabel"_s, u"服务级别:"_s, this), m_class);

  m_apply = NamedButton(u"srvClsApply_TeButton"_s, u"应用..."_s, this);
  m_apply->setDefault(true); // Enter applies; Escape closes
  m_multi = NamedButton(u"TeButton_srvClsApply_Multi"_s, u"批量应用..."_s, this);
  auto *close = NamedButton(u"TeButton2"_s, u"X"_s, this);
  close->setToolTip(u"关闭"_s);
  close->setMaximumWidth(40); // a close mark, not a third word
  auto *keys = RoomDialogKeys(m_apply, m_multi, close);

  auto *outer = RoomDialogFrame(this);
  outer->addLayout(form);
  outer->addSpacing(6);
  outer->addLayout(keys);
  setMinimumWidth(340);

  BindLanguage(m_logic, this);

  connect(m_apply, &QPushButton::clicked, this, [this] {
    m_logic.srvClass_TeComboBox_ItemIndex = m_class->currentIndex();
    RunGuarded([this] { m_logic.srvClsApply_TeButtonClick(); });
  });
  connect(m_multi, &QPushButton::clicked, this, [this] {
    m_logic.srvClass_TeComboBox_ItemIndex = m_class->currentIndex();
    RunGuarded([this] { m_logic.TeButton_srvClsApply_MultiClick(); });
  });
  connect(close, &QPushButton::clicked, this, &HintDialog::reject);
  connect(&m_logic, &TFormLogic::shown, this, &HintDialog::OnShown);
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);
  Refresh();
}

void HintDialog::OnShown() {
  Refresh();
  // Modality takes effect at the show: a dialog already up from the grid is
  // taken down first when the board asks for it modally, and the other way.
  const Qt::WindowModality modality = m_logic.Modal ? Qt::WindowModal : Qt::NonModal;
  if (windowModality() != modality) {
    hide();
    setWindowModality(modality);
  }
  // From the board the place follows at once (PlaceAt); until then, and
  // from the grid, the middle of the screen.
  ShowCentred(this);
}

void HintDialog::PlaceAt(QPoint global) {
  adjustSize();
  QRect place(global, size());
  if (const QScreen *screen = parentWidget() ? parentWidget()->screen() : this->screen()) {
    const QRect area = screen->availableGeometry();
    place.moveLeft(qBound(area.left(), place.left(), qMax(area.left(), area.right() - width())));
    place.moveTop(qBound(area.top(), place.top(), qMax(area.top(), area.bottom() - height())));
  }
  move(place.topLeft());
}

void HintDialog::Refresh() {
  // The language's title when one was applied; the logic's own before.
  const QString title = m_logic.ControlText(u"THint_Form"_s);
  setWindowTitle(title.isEmpty() ? m_logic.Caption : title);
  m_telNos->setText(m_logic.TelNos_LMDLabel);
  m_class->clear();
  m_class->addItems(m_logic.srvClass_TeComboBox_Items);
  m_class->setCurrentIndex(m_logic.srvClass_TeComboBox_ItemIndex);
  RefreshKeys();
}

void HintDialog::RefreshKeys() {
  m_apply->setEnabled(m_logic.srvClsApply_TeButton_Enabled);
  m_multi->setEnabled(m_logic.TeButton_srvClsApply_Multi_Enabled);
}

void HintDialog::reject() {
  RunGuarded([this] { m_logic.TeButton2Click(); });
  hide();
}
