#include "ui/WakeUpAlarmsWindow.h"

#include "guest/WakeUpAlarms.h"
#include "support/Shell.h"
#include "ui/Named.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

WakeUpAlarmsWindow::WakeUpAlarmsWindow(TForm_WakeUpAlarms &logic, QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint), m_logic(logic) {
  setObjectName(u"TForm_WakeUpAlarms"_s);
  setWindowTitle(u"叫醒失败告警"_s);
  resize(560, 320);

  m_list = new QTableWidget(0, 4, this);
  m_list->setObjectName(u"WakeUpAlarms_Grid"_s);
  m_list->setHorizontalHeaderLabels({u"房间号"_s, u"分机号"_s, u"叫醒时间"_s, u"失败次数"_s});
  m_list->setSelectionBehavior(QAbstractItemView::SelectRows);
  m_list->setSelectionMode(QAbstractItemView::SingleSelection);
  m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
  m_list->horizontalHeader()->setStretchLastSection(true);
  m_list->verticalHeader()->hide();

  auto *acknowledge = NamedButton(u"Acknowledge_TeButton"_s, u"确认(&A)"_s, this);
  auto *acknowledgeAll = NamedButton(u"AcknowledgeAll_TeButton"_s, u"全部确认"_s, this);
  auto *close = NamedButton(u"Close_TeButton"_s, u"关闭"_s, this);
  acknowledge->setDefault(true);
  auto *keys = new QHBoxLayout;
  keys->addStretch(1);
  keys->addWidget(acknowledge);
  keys->addWidget(acknowledgeAll);
  keys->addWidget(close);
  auto *layout = new QVBoxLayout(this);
  layout->addWidget(m_list, 1);
  layout->addLayout(keys);

  connect(m_list, &QTableWidget::currentCellChanged, this,
          [this](int row) { m_logic.ItemIndex = row; });
  connect(acknowledge, &QPushButton::clicked, this,
          [this] { RunGuarded([this] { m_logic.AcknowledgeClick(); }); });
  connect(acknowledgeAll, &QPushButton::clicked, this,
          [this] { RunGuarded([this] { m_logic.AcknowledgeAllClick(); }); });
  connect(close, &QPushButton::clicked, this, [this] { m_logic.Close(); });
  connect(&m_logic, &TForm_WakeUpAlarms::alarmsChanged, this, &WakeUpAlarmsWindow::Refill);
  connect(&m_logic, &TFormLogic::shown, this, [this] {
    Refill();
    show();
    raise();
    activateWindow();
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);
  Refill();
}

void WakeUpAlarmsWindow::Refill() {
  const QList<TWakeUpAlarm> &alarms = m_logic.Alarms();
  const int current = m_logic.ItemIndex;
  const QSignalBlocker quiet(m_list);
  m_list->setRowCount(int(alarms.size()));
  for (int row = 0; row < alarms.size(); ++row) {
    const TWakeUpAlarm &a = alarms.at(row);
    const QStringList cells = {a.RoomNo, a.Ext, DateTimeToStr(a.MoringCallTime),
                               QString::number(a.Attempts)};
    for (int column = 0; column < cells.size(); ++column)
      m_list->setItem(row, column, new QTableWidgetItem(cells.at(column)));
  }
  if (current >= 0 && current < m_list->rowCount())
    m_list->setCurrentCell(current, 0);
}

void WakeUpAlarmsWindow::closeEvent(QCloseEvent *event) {
  m_logic.Close();
  event->accept();
}
