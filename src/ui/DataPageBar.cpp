#include "ui/DataPageBar.h"

#include "guest/DataPage.h"
#include "guest/RecordGrid.h"
#include "support/FormLogic.h"
#include "ui/Named.h"

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPainter>
#include <QStyle>
#include <QStyledItemDelegate>

using namespace Qt::StringLiterals;

TDataPageBar::TDataPageBar(TFrame_DataPage &frame, TFormLogic *language, QWidget *parent)
    : QWidget(parent), m_frame(frame) {
  setObjectName(u"Frame_DataPage"_s);
  auto *row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  m_result = NamedLabel(u"Label_searchResult"_s, frame.Label_searchResult, this);
  row->addWidget(m_result);
  row->addStretch(1);
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    void (TFrame_DataPage::*Click)();
  } kKeys[] = {{u"Frame_DataPage_Label4", u"首页", &TFrame_DataPage::Label4Click},
               {u"Frame_DataPage_Label5", u"上一页", &TFrame_DataPage::Label5Click},
               {u"Frame_DataPage_Label6", u"下一页", &TFrame_DataPage::Label6Click},
               {u"Frame_DataPage_Label7", u"末页", &TFrame_DataPage::Label7Click}};
  // The keys carry the bar's name before their own: the main window has labels
  // Label4 to Label7 of its own (the recordings page), and the language texts
  // find controls by name anywhere below the window.
  for (int i = 0; i < 4; ++i) {
    m_keys[i] = NamedButton(QString::fromUtf16(kKeys[i].Name), QString::fromUtf16(kKeys[i].Text),
                            this);
    m_keys[i]->setFlat(true);
    const auto click = kKeys[i].Click;
    connect(m_keys[i], &QPushButton::clicked, this, [this, click] { (m_frame.*click)(); });
    row->addWidget(m_keys[i]);
    if (i == 1) {
      m_pages = Named<QComboBox>(u"ComboBox_PageIndex"_s, this);
      m_pages->setMinimumContentsLength(4);
      connect(m_pages, &QComboBox::activated, this,
              [this](int index) { m_frame.SelectPage(index); });
      row->addWidget(m_pages);
    }
  }
  if (language) {
    const auto apply = [this](const QString &control, TextProperty property, int index,
                              const QString &text) {
      if (control == u"Frame_DataPage"_s && property == TextProperty::Item && index >= 0 &&
          index < 4 && !text.isEmpty())
        m_keys[index]->setText(text);
    };
    for (int i = 0; i < 4; ++i)
      apply(u"Frame_DataPage"_s, TextProperty::Item, i,
            language->ControlText(u"Frame_DataPage"_s, TextProperty::Item, i));
    connect(language, &TFormLogic::controlTextChanged, this, apply);
  }
  connect(&frame, &TFrame_DataPage::changed, this, &TDataPageBar::Refresh);
  Refresh();
}

void TDataPageBar::Refresh() {
  m_result->setText(m_frame.Label_searchResult);
  const QSignalBlocker quiet(m_pages);
  QStringList shown;
  for (int i = 0; i < m_pages->count(); ++i)
    shown << m_pages->itemText(i);
  if (shown != m_frame.ComboBox_PageIndex_Items) {
    m_pages->clear();
    m_pages->addItems(m_frame.ComboBox_PageIndex_Items);
  }
  m_pages->setCurrentIndex(m_frame.ComboBox_PageIndex_ItemIndex);
}

namespace {
// Draws the picture a cell names beside its text.
class IconDelegate : public QStyledItemDelegate {
public:
  using QStyledItemDelegate::QStyledItemDelegate;

protected:
  void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    const QString icon = index.data(TRecordGridModel::IconRole).toString();
    if (icon.isEmpty())
      return;
    QStyle *style = QApplication::style();
    option->icon = style->standardIcon(icon == u"woken"_s ? QStyle::SP_DialogApplyButton
                                                          : QStyle::SP_DialogCancelButton);
    option->features |= QStyleOptionViewItem::HasDecoration;
  }
};
} // namespace

TRecordGridView::TRecordGridView(const QString &name, TRecordGridModel &model,
                                 const QString &emptyText, QWidget *parent)
    : QTableView(parent), m_model(model), m_emptyText(emptyText) {
  setObjectName(name);
  setModel(&model);
  setItemDelegate(new IconDelegate(this));
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setAlternatingRowColors(true);
  setWordWrap(false);
  verticalHeader()->hide();
  horizontalHeader()->setStretchLastSection(true);
  horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
  for (int c = 0; c < model.columnCount(); ++c)
    setColumnWidth(c, 150);
  // The operator's row is the one the menus act on.
  connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex &current) { m_model.CurrentRow = current.row(); });
  connect(&model, &QAbstractItemModel::modelReset, this, [this] {
    if (m_model.CurrentRow >= 0)
      selectRow(m_model.CurrentRow);
  });
}

void TRecordGridView::paintEvent(QPaintEvent *event) {
  QTableView::paintEvent(event);
  if (m_emptyText.isEmpty() || m_model.RowCount() > 0)
    return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(viewport()->rect(), Qt::AlignCenter, m_emptyText);
}
