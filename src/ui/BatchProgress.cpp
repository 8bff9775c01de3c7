#include "ui/BatchProgress.h"

#include "devices/CallControlDev.h"
#include "guest/BatchWalk.h"
#include "ui/Named.h"

#include <QHBoxLayout>
#include <QLabel>

using namespace Qt::StringLiterals;

BatchProgress::BatchProgress(TBatchWalk &walk, TCallControlDev &table, QWidget *parent)
    : QWidget(parent), m_table(table) {
  setObjectName(u"LMDCaptionPanel_MultiProcess"_s);
  m_title = NamedLabel(u"TeLabel_Title_MultiProcess"_s, u"批量处理中:"_s, this);
  m_room = NamedLabel(u"TeLabel_Msg_MultiProcess"_s, QString(), this);
  auto *row = new QHBoxLayout(this);
  row->setContentsMargins(6, 0, 6, 0);
  row->addWidget(m_title);
  row->addWidget(m_room);
  hide();

  m_linger.setSingleShot(true);
  m_linger.setInterval(kLingerMs);
  connect(&m_linger, &QTimer::timeout, this, &QWidget::hide);
  connect(&walk, &TBatchWalk::stepSent, this, &BatchProgress::StepSent);
  connect(&walk, &TBatchWalk::finished, this, [this] {
    m_linger.stop();
    hide();
  });
  connect(&walk, &TBatchWalk::timedOut, this, [this] {
    m_linger.stop();
    hide();
  });
}

void BatchProgress::StepSent(int id) {
  const TPhoneTis *p = m_table.Device(id);
  m_room->setText(p ? p->TelNos : QString::number(id));
  show();
  m_linger.start();
}
