#include "ui/TasksWindow.h"

#include "directory/TaskEdit_Unit.h"
#include "directory/TaskModel.h"
#include "directory/Tasks_Unit.h"
#include "support/Shell.h"
#include "ui/EscapeCloses.h"
#include "ui/LanguageBinding.h"
#include "ui/MemoFindDialog.h"
#include "ui/Named.h"

#include <QDateTimeEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// Deadline colours from the grid's colour role.
class DeadlineDelegate : public QStyledItemDelegate {
public:
  using QStyledItemDelegate::QStyledItemDelegate;

protected:
  void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    const auto colour = TTaskColour(index.data(TTaskGrid::ColourRole).toInt());
    const unsigned rgb = colour == TTaskColour::Overdue ? kTaskOverdueRgb
                         : colour == TTaskColour::Ahead ? kTaskAheadRgb
                                                        : 0;
    if (rgb)
      option->backgroundBrush = QColor::fromRgb(rgb);
  }
};

} // namespace

TasksWindow::TasksWindow(TTasks_Form &tasks, QWidget *parent)
    : QWidget(parent, Qt::Window), m_tasks(tasks) {
  setObjectName(u"TTasks_Form"_s);
  setWindowTitle(u"事务管理"_s);
  resize(520, 420);
  auto *layout = new QVBoxLayout(this);
  auto *keys = new QHBoxLayout;
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    void (TTasks_Form::*Click)();
  } kKeys[] = {{u"TeButton2", u"未完成事务", &TTasks_Form::TeButton2Click},
               {u"TeButton1", u"已完成事务", &TTasks_Form::TeButton1Click},
               {u"TeSpeedButton1", u"新建", &TTasks_Form::TeSpeedButton1Click},
               {u"TeSpeedButton2", u"删除", &TTasks_Form::TeSpeedButton2Click},
               {u"TeSpeedButton3", u"排序", &TTasks_Form::TeSpeedButton3Click},
               {u"init_TeSpeedButton", u"刷新", &TTasks_Form::init_TeSpeedButtonClick}};
  for (const auto &k : kKeys) {
    auto *b = NamedButton(QString::fromUtf16(k.Name), QString::fromUtf16(k.Text), this);
    const auto click = k.Click;
    connect(b, &QPushButton::clicked, this,
            [this, click] { RunGuarded([&] { (m_tasks.*click)(); }); });
    keys->addWidget(b);
  }
  keys->addStretch(1);
  layout->addLayout(keys);

  m_grid = new QTableView(this);
  m_grid->setObjectName(u"unfinishTask_AdvStringGrid"_s);
  m_grid->setModel(&tasks.unfinishTask_AdvStringGrid);
  m_grid->setItemDelegate(new DeadlineDelegate(m_grid));
  m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
  m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
  m_grid->verticalHeader()->hide();
  m_grid->horizontalHeader()->setStretchLastSection(true);
  for (int c = 0; c < int(tasks.ColWidths.size()); ++c)
    m_grid->setColumnWidth(c, tasks.ColWidths[size_t(c)]);
  layout->addWidget(m_grid, 1);
  connect(m_grid, &QTableView::clicked, this, [this](const QModelIndex &i) {
    m_tasks.unfinishTask_AdvStringGrid.SetCurrentRow(i.row());
  });
  connect(m_grid, &QTableView::doubleClicked, this, [this](const QModelIndex &i) {
    RunGuarded([&] { m_tasks.unfinishTask_AdvStringGridDblClick(i.row()); });
  });
  connect(&tasks, &TFormLogic::shown, this, &QWidget::show);
  connect(&tasks, &TFormLogic::closed, this, &QWidget::hide);
  EscapeCloses(this, [&tasks] { tasks.Close(); });
  BindLanguage(tasks, this);
}

void TasksWindow::Toggle() {
  if (isVisible()) {
    hide();
  } else {
    RunGuarded([this] { m_tasks.init_TeSpeedButtonClick(); });
    show();
    raise();
  }
}

TaskEditWindow::TaskEditWindow(TTaskEdit_Form &edit, QWidget *parent)
    : QWidget(parent, Qt::Window), m_edit(edit) {
  setObjectName(u"TTaskEdit_Form"_s);
  setWindowTitle(u"事务"_s);
  resize(440, 400);
  m_title = NamedEdit(u"Title_TeSEdit"_s, this);
  m_context = Named<QPlainTextEdit>(u"Context_TeMemo"_s, this);
  m_contacter = NamedEdit(u"contacter_TeEdit"_s, this);
  m_deadline = Named<QDateTimeEdit>(u"LastTime_TeDateTimePicker"_s, this);
  m_deadline->setCalendarPopup(true);
  m_deadline->setDisplayFormat(u"yyyy-MM-dd hh:mm"_s);
  m_created = NamedLabel(u"CreateTime_TeDateTimePicker"_s, QString(), this);
  m_finished = NamedLabel(u"finishTime_TeLabel"_s, QString(), this);

  // The description's search, and the related contact's card in the contact book.
  auto *search = NamedButton(u"TeButton5"_s, u"文本搜索"_s, this);
  auto *card = NamedButton(u"TeButton1"_s, u"查看联系人"_s, this);
  m_find = new MemoFindDialog(edit.FindDialog1, m_context, this);
  m_find->FindNext = [this](const QString &text) {
    m_edit.FindDialog1_FindText = text;
    ToLogic();
    return m_edit.FindDialog1Find();
  };
  connect(search, &QPushButton::clicked, this, [this] {
    ToLogic();
    m_edit.Context_SelText = m_context->textCursor().selectedText();
    m_edit.TeButton5Click();
    m_find->Open(m_edit.FindDialog1_FindText);
  });
  connect(card, &QPushButton::clicked, this, [this] {
    ToLogic();
    RunGuarded([this] { m_edit.TeButton1Click(); });
  });

  auto *form = new QGridLayout;
  const auto label = [this](const char16_t *name, const char16_t *text) {
    return NamedLabel(QString::fromUtf16(name), QString::fromUtf16(text), this);
  };
  form->addWidget(label(u"Title_TeLabel", u"标    题:"), 0, 0);
  form->addWidget(m_title, 0, 1, 1, 2);
  form->addWidget(label(u"Context_TeLabel", u"内    容:"), 1, 0, Qt::AlignTop);
  form->addWidget(m_context, 1, 1, 1, 2);
  form->addWidget(search, 2, 2, Qt::AlignRight);
  form->addWidget(label(u"contacter_TeLabel", u"关 联 人:"), 3, 0);
  form->addWidget(m_contacter, 3, 1);
  form->addWidget(card, 3, 2);
  form->addWidget(label(u"LastTime_TeLabel", u"截止时间:"), 4, 0);
  form->addWidget(m_deadline, 4, 1, 1, 2);
  form->addWidget(label(u"CreateTime_TeLabel", u"创建时间:"), 5, 0);
  form->addWidget(m_created, 5, 1, 1, 2);
  form->addWidget(label(u"FinishTimeTitle_TeLabel", u"完成时间:"), 6, 0);
  form->addWidget(m_finished, 6, 1, 1, 2);
  form->setColumnStretch(1, 1);
  form->setRowStretch(1, 1);
  auto *layout = new QVBoxLayout(this);
  layout->addLayout(form, 1);
  auto *keys = new QHBoxLayout;
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    void (TTaskEdit_Form::*Click)();
  } kKeys[] = {{u"save_TeButton", u"保 存", &TTaskEdit_Form::save_TeButtonClick},
               {u"finish_TeButton", u"标注为完成", &TTaskEdit_Form::finish_TeButtonClick},
               {u"unfinish_TeButton", u"标注为未完成", &TTaskEdit_Form::unfinish_TeButtonClick}};
  for (const auto &k : kKeys) {
    auto *b = NamedButton(QString::fromUtf16(k.Name), QString::fromUtf16(k.Text), this);
    const auto click = k.Click;
    connect(b, &QPushButton::clicked, this, [this, click] {
      ToLogic();
      RunGuarded([&] { (m_edit.*click)(); });
      FromLogic();
    });
    keys->addWidget(b);
  }
  keys->addStretch(1);
  layout->addLayout(keys);
  connect(&edit, &TFormLogic::shown, this, [this] {
    FromLogic();
    show();
    raise();
  });
  connect(&edit, &TFormLogic::closed, this, &QWidget::hide);
  EscapeCloses(this, [&edit] { edit.Close(); });
  BindLanguage(edit, this);
}

void TaskEditWindow::FromLogic() {
  m_title->setText(m_edit.Title_TeSEdit);
  m_context->setPlainText(m_edit.Context_TeMemo);
  m_contacter->setText(m_edit.contacter_TeEdit);
  const QDateTime created = m_edit.CreateTime_TeDateTimePicker.ToQDateTime();
  m_created->setText(created.isValid() ? created.toString(u"yyyy-MM-dd hh:mm"_s) : QString());
  m_finished->setText(m_edit.finishTime_TeLabel);
  const QDateTime deadline = m_edit.LastTime_TeDateTimePicker.ToQDateTime();
  m_deadline->setDateTime(deadline.isValid() ? deadline : QDateTime::currentDateTime());
}

void TaskEditWindow::ToLogic() {
  m_edit.Title_TeSEdit = m_title->text();
  m_edit.Context_TeMemo = m_context->toPlainText();
  m_edit.contacter_TeEdit = m_contacter->text();
  m_edit.LastTime_TeDateTimePicker = TDateTime::FromQDateTime(m_deadline->dateTime());
}
