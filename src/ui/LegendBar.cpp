#include "ui/LegendBar.h"

#include "devices/CallControlDev.h"
#include "devices/PhoneBoard.h"
#include "ui/StatusColours.h"

#include <QColorDialog>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {
// The order the operator reads them in: idle first, out of service second, then
// the call states.
constexpr int kLegendOrder[] = {1, 0, 2, 4, 5, 6, 8, 3, 7};

class LegendPanel : public QWidget {
public:
  LegendPanel(TLegendBar &bar, int tag) : QWidget(&bar), m_bar(bar), m_tag(tag) {
    setObjectName(LegendPanelName(tag));
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
  }

  QSize sizeHint() const override {
    const QFontMetrics fm(font());
    return QSize(qMax(56, fm.horizontalAdvance(ExtensionStatusText(m_tag)) + 16), fm.height() + 10);
  }
  QSize minimumSizeHint() const override { return sizeHint(); }

protected:
  void paintEvent(QPaintEvent *) override {
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor fill = ToQColor(m_bar.Table().Colours[size_t(m_tag)], palette());
    p.setPen(QPen(fill.darker(150), 1));
    p.setBrush(fill);
    p.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    const int luma = (299 * fill.red() + 587 * fill.green() + 114 * fill.blue()) / 1000;
    p.setPen(luma >= 140 ? QColor(24, 24, 28) : QColor(250, 250, 250));
    p.drawText(rect(), Qt::AlignCenter, ExtensionStatusText(m_tag));
  }
  void mouseDoubleClickEvent(QMouseEvent *event) override {
    if (event->button() == Qt::LeftButton)
      m_bar.EditColour(m_tag);
  }

private:
  TLegendBar &m_bar;
  int m_tag;
};
} // namespace

TLegendBar::TLegendBar(TCallControlDev &table, TPhoneBoard &board, QWidget *parent)
    : QWidget(parent), m_table(table), m_board(board) {
  ChooseColour = [](const QColor &initial, QWidget *owner) {
    return QColorDialog::getColor(initial, owner);
  };
  auto *layout = new QHBoxLayout(this);
  layout->setContentsMargins(4, 2, 4, 2);
  layout->setSpacing(6);
  for (int tag : kLegendOrder)
    layout->addWidget(new LegendPanel(*this, tag));
  layout->addStretch(1);
  // A loaded layout brings its own colours.
  connect(&m_board, &TPhoneBoard::boardChanged, this, qOverload<>(&QWidget::update));
}

void TLegendBar::Retranslate() {
  for (QWidget *panel : findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
    panel->updateGeometry();
  update();
}

void TLegendBar::EditColour(int tag) {
  if (tag < 0 || tag >= kStatusColourCount || !ChooseColour)
    return;
  const QColor chosen = ChooseColour(ToQColor(m_table.Colours[size_t(tag)], palette()), this);
  if (!chosen.isValid())
    return;
  m_board.LegendColourChosen(tag, FromQColor(chosen));
  update();
}
